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
    /// A dialog with an empty password box.
    explicit frmEnterPassword(QWidget* parent = nullptr);

    /// The prompt.

    QLabel* Label1 = nullptr;
    /// The password, shown as dots.
    QLineEdit* txtPassword = nullptr;
};

}  // namespace meridex::ui
