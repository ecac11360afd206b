#include <meridex/ui/QtUserInterface.h>

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include <meridex/ui/settings/frmEnterPassword.h>
#include <meridex/ui/settings/frmSetPassword.h>
#include <meridex/ui/settings/frmV4InputBox.h>

namespace meridex::ui {
namespace {

QString FromUtf8(const std::string& text) { return QString::fromStdString(text); }

// The window a prompt is placed over: the open modal dialog, else the active window.
QWidget* Owner() {
    if (QWidget* modal = QApplication::activeModalWidget()) return modal;
    return QApplication::activeWindow();
}

QMessageBox::Icon IconOf(MessageIcon icon) {
    switch (icon) {
    case MessageIcon::Critical: return QMessageBox::Critical;
    case MessageIcon::Question: return QMessageBox::Question;
    case MessageIcon::Exclamation: return QMessageBox::Warning;
    case MessageIcon::Information: return QMessageBox::Information;
    case MessageIcon::None: break;
    }
    return QMessageBox::NoIcon;
}

struct ButtonSet {
    QList<QMessageBox::StandardButton> buttons;
    QMessageBox::StandardButton escape;
};

ButtonSet ButtonsOf(MessageButtons buttons) {
    switch (buttons) {
    case MessageButtons::OK: return {{QMessageBox::Ok}, QMessageBox::Ok};
    case MessageButtons::OKCancel: return {{QMessageBox::Ok, QMessageBox::Cancel}, QMessageBox::Cancel};
    case MessageButtons::YesNo: return {{QMessageBox::Yes, QMessageBox::No}, QMessageBox::No};
    case MessageButtons::YesNoCancel:
        return {{QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel}, QMessageBox::Cancel};
    }
    return {{QMessageBox::Ok}, QMessageBox::Ok};
}

MessageResult ResultOf(int button) {
    switch (button) {
    case QMessageBox::Cancel: return MessageResult::Cancel;
    case QMessageBox::Yes: return MessageResult::Yes;
    case QMessageBox::No: return MessageResult::No;
    default: return MessageResult::OK;
    }
}

QString Shown(const std::string& text) {
    QString shown = FromUtf8(text);
    shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    return shown;
}

QString Caption(const std::string& caption) {
    return FromUtf8(caption.empty() ? UserInterface::DefaultCaption() : caption);
}

}  // namespace

std::unique_ptr<QMessageBox> QtUserInterface::MessageBoxFor(const std::string& text, MessageButtons buttons,
                                                             MessageIcon icon, const std::string& caption,
                                                             MessageDefaultButton defaultButton, QWidget* owner) {
    auto box = std::make_unique<QMessageBox>(IconOf(icon), Caption(caption), Shown(text), QMessageBox::NoButton, owner);
    box->setObjectName(QStringLiteral("MessageBox"));
    const ButtonSet set = ButtonsOf(buttons);
    for (QMessageBox::StandardButton button : set.buttons) box->addButton(button);
    const auto index = static_cast<qsizetype>(defaultButton);
    box->setDefaultButton(set.buttons.value(index < set.buttons.size() ? index : 0));
    box->setEscapeButton(set.escape);
    return box;
}

MessageResult QtUserInterface::MessageBox(const std::string& text, MessageButtons buttons, MessageIcon icon,
                                          const std::string& caption, MessageDefaultButton defaultButton) {
    const std::unique_ptr<QMessageBox> box = MessageBoxFor(text, buttons, icon, caption, defaultButton, Owner());
    box->exec();
    return ResultOf(box->standardButton(box->clickedButton()));
}

std::optional<std::string> QtUserInterface::InputBox(const std::string& prompt, const std::string& title,
                                                     const InputBoxOptions& options) {
    frmV4InputBox form(Owner());
    if (!title.empty()) form.setWindowTitle(FromUtf8(title));
    form.lblPrompt->setText(FromUtf8(prompt));
    form.txtInput->setToolTip(FromUtf8(options.toolTip));
    form.setNumbersOnly(options.numbersOnly);
    form.setMaxLength(options.maxLength);
    form.txtInput->setText(FromUtf8(options.defaultText));
    form.exec();
    if (form.Cancelled()) return std::nullopt;
    return form.txtInput->text().toStdString();
}

std::string QtUserInterface::SetPassword() {
    for (;;) {
        frmSetPassword form(Owner());
        form.exec();
        if (form.Cancelled()) return {};
        if (form.txtPassword->text() == form.txtPassword2->text()) return form.txtPassword->text().toStdString();
        MessageBox("Passwords don't match", MessageButtons::OK, MessageIcon::Information, {});
    }
}

std::unique_ptr<QMessageBox> QtUserInterface::ChooseBoxFor(const std::string& text,
                                                            const std::vector<std::string>& choices, MessageIcon icon,
                                                            const std::string& caption, int defaultChoice,
                                                            QWidget* owner) {
    auto box = std::make_unique<QMessageBox>(IconOf(icon), Caption(caption), Shown(text), QMessageBox::NoButton, owner);
    box->setObjectName(QStringLiteral("MessageBox"));
    QPushButton* chosenByEnter = nullptr;
    for (std::size_t i = 0; i < choices.size(); ++i) {
        QPushButton* button = box->addButton(FromUtf8(choices[i]), QMessageBox::ActionRole);
        button->setProperty("choice", static_cast<int>(i));
        if (static_cast<int>(i) == defaultChoice) chosenByEnter = button;
    }
    if (chosenByEnter) box->setDefaultButton(chosenByEnter);
    return box;
}

std::optional<int> QtUserInterface::Choose(const std::string& text, const std::vector<std::string>& choices,
                                           MessageIcon icon, const std::string& caption, int defaultChoice) {
    const std::unique_ptr<QMessageBox> box = ChooseBoxFor(text, choices, icon, caption, defaultChoice, Owner());
    box->exec();
    const QAbstractButton* clicked = box->clickedButton();
    const QVariant chosen = clicked ? clicked->property("choice") : QVariant();
    if (!chosen.isValid()) return std::nullopt;
    return chosen.toInt();
}

std::optional<std::string> QtUserInterface::SaveFileName(const std::string& title, const std::string& suggestedPath) {
    const QString path = QFileDialog::getSaveFileName(Owner(), FromUtf8(title), FromUtf8(suggestedPath), {}, nullptr,
                                                      QFileDialog::DontUseNativeDialog);
    if (path.isEmpty()) return std::nullopt;
    return QDir::toNativeSeparators(path).toStdString();
}

bool QtUserInterface::EnterPassword(const std::string& password) {
    frmEnterPassword form(Owner());
    form.exec();
    if (form.Cancelled()) return false;
    return form.txtPassword->text() == FromUtf8(password);
}

}  // namespace meridex::ui
