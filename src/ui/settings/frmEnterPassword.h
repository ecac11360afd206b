#pragma once
#include <meridex/ui/Export.h>
#include <meridex/ui/frame/CancellableDialog.h>

class QLabel;
class QLineEdit;

namespace meridex::ui {

/// The enter-password dialog ("Enter Password"): `Label1` "Enter Password", `txtPassword` (tooltip
/// "Enter a password"), `cmdOK` and `cmdCancel`. The opener compares the entry.
class MERIDEX_UI_EXPORT frmEnterPassword : public CancellableDialog {
    Q_OBJECT
public:
    explicit frmEnterPassword(QWidget* parent = nullptr);

    QLabel* Label1 = nullptr;
    QLineEdit* txtPassword = nullptr;
};

}  // namespace meridex::ui
