#include <meridex/ui/settings/frmV4InputBox.h>

#include <QLabel>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

namespace meridex::ui {

frmV4InputBox::frmV4InputBox(QWidget* parent) : CancellableDialog(QStringLiteral("frmV4InputBox"), parent) {
    setWindowTitle(QStringLiteral("User Input"));
    lblPrompt = new QLabel(this);
    lblPrompt->setObjectName(QStringLiteral("lblPrompt"));
    lblPrompt->setWordWrap(true);
    txtInput = new QLineEdit(this);
    txtInput->setObjectName(QStringLiteral("txtInput"));
    lblPrompt->setBuddy(txtInput);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblPrompt);
    layout->addWidget(txtInput);
    layout->addSpacing(6);
    layout->addLayout(ButtonRow());
    setMinimumWidth(340);
}

void frmV4InputBox::setNumbersOnly(bool numbersOnly) {
    // The validator refuses every keystroke that is not a digit, as the edit control's digits-only style does.
    if (numbersOnly) {
        txtInput->setValidator(
            new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]*")), txtInput));
    } else {
        delete txtInput->validator();
        txtInput->setValidator(nullptr);
    }
}

bool frmV4InputBox::NumbersOnly() const { return txtInput->validator() != nullptr; }

void frmV4InputBox::setMaxLength(int maxLength) { txtInput->setMaxLength(maxLength > 0 ? maxLength : 32767); }

}  // namespace meridex::ui
