#pragma once
#include <meridex/ui/Export.h>
#include <meridex/ui/frame/CancellableDialog.h>

class QLabel;
class QLineEdit;

namespace meridex::ui {

/// The one-line input dialog: caption "User Input" until the opener gives its own, the prompt in
/// `lblPrompt`, the answer in `txtInput`, `cmdOK` and `cmdCancel` ("&Cancel").
class MERIDEX_UI_EXPORT frmV4InputBox : public CancellableDialog {
    Q_OBJECT
public:
    /// A dialog with an empty prompt and entry.
    explicit frmV4InputBox(QWidget* parent = nullptr);

    /// Only digits can be typed into `txtInput` when true.
    void setNumbersOnly(bool numbersOnly);
    /// True when only digits can be typed.
    bool NumbersOnly() const;
    /// The most characters `txtInput` takes; 0 or less means no limit.
    void setMaxLength(int maxLength);

    /// The prompt.

    QLabel* lblPrompt = nullptr;
    /// The entry.
    QLineEdit* txtInput = nullptr;
};

}  // namespace meridex::ui
