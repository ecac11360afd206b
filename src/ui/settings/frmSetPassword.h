#pragma once
#include <meridex/ui/Export.h>
#include <meridex/ui/frame/CancellableDialog.h>

class QLabel;
class QLineEdit;

namespace meridex::ui {

/// The set-password dialog ("Set Password"): `Label1` "Enter Password" over `txtPassword`,
/// `Label2` "Re-enter Password" over `txtPassword2`, `cmdOK` and `cmdCancel`. The opener compares
/// the two entries.
class MERIDEX_UI_EXPORT frmSetPassword : public CancellableDialog {
    Q_OBJECT
public:
    /// A dialog with two empty password boxes.
    explicit frmSetPassword(QWidget* parent = nullptr);

    /// The prompt of the first entry.

    QLabel* Label1 = nullptr;
    /// The new password, shown as dots.
    QLineEdit* txtPassword = nullptr;
    /// The prompt of the second entry.
    QLabel* Label2 = nullptr;
    /// The new password again, shown as dots.
    QLineEdit* txtPassword2 = nullptr;
};

}  // namespace meridex::ui
