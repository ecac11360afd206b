#pragma once
#include <meridex/ui/Export.h>

#include <QDialog>

class QHBoxLayout;
class QPushButton;

namespace meridex::ui {

/// The small modal dialog with `cmdOK` and `cmdCancel`: both only hide the dialog, `cmdCancel`
/// sets the cancelled flag and `cmdOK` clears it. Enter acts as `cmdOK`; Escape and the frame's
/// close box act as `cmdCancel`. The opener shows it with exec(), then reads Cancelled() and the fields.
class MERIDEX_UI_EXPORT CancellableDialog : public QDialog {
    Q_OBJECT
public:
    /// A dialog named objectName, with its two buttons made (not yet laid out: see ButtonRow).
    CancellableDialog(const QString& objectName, QWidget* parent = nullptr);

    /// True when the dialog was last closed by cancelling.
    bool Cancelled() const noexcept { return cancelled_; }

    /// OK: clears the cancelled flag and hides the dialog.
    void cmdOK_Click();
    /// Cancel: sets the cancelled flag and hides the dialog.
    void cmdCancel_Click();

    /// Escape and every other way out that QDialog knows count as Cancel.
    void reject() override;

protected:
    /// The row of `cmdOK` and `cmdCancel`, right-aligned, for the subclass's layout; made after the
    /// fields, it puts the two buttons last in the Tab order, so the focus starts in the first field.
    QHBoxLayout* ButtonRow();
    /// The close box counts as Cancel.
    void closeEvent(QCloseEvent* event) override;
    /// Return presses OK, Escape Cancel.
    void keyPressEvent(QKeyEvent* event) override;

    /// The OK button.

    QPushButton* cmdOK = nullptr;
    /// The Cancel button.
    QPushButton* cmdCancel = nullptr;

private:
    void Finish(int result);

    bool cancelled_ = false;
    bool finishing_ = false;
};

}  // namespace meridex::ui
