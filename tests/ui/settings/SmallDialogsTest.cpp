// The small dialogs driven as a person would, through the facade's round trips with the real Qt prompts.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/ui/QtUserInterface.h>
#include <meridex/ui/settings/V4Dialogs.h>
#include <meridex/ui/settings/frmV4InputBox.h>

#include "DialogTest.h"

using namespace meridex;
using namespace meridex::test;

namespace {

std::shared_ptr<UserInterface> QtPrompts() { return std::make_shared<ui::QtUserInterface>(); }

}  // namespace

TEST(SmallDialogs, DigitsOnlyCanBeSwitchedOffAgain) {
    ui::frmV4InputBox form;
    ASSERT_TRUE(ShowActive(&form));
    form.setNumbersOnly(true);
    form.setNumbersOnly(false);
    EXPECT_FALSE(form.NumbersOnly());
    Type(form.txtInput, "a1");
    EXPECT_EQ(form.txtInput->text(), "a1");
}

TEST(SmallDialogs, SetPasswordShowsMismatchThenTheDialogAgain) {
    const ui::V4Dialogs dialogs(QtPrompts());
    const auto typePair = [](const char* first, const char* second) {
        return [=](QWidget* modal) {
            EXPECT_EQ(modal->objectName(), "frmSetPassword");
            Type(Child<QLineEdit>(modal, "txtPassword"), first);
            Type(Child<QLineEdit>(modal, "txtPassword2"), second);
            Click(Child<QPushButton>(modal, "cmdOK"));
        };
    };
    std::string password = "unset";
    ModalScript()
        .Then(typePair("abc", "ABC"))
        .Then([](QWidget* modal) {
            QMessageBox* box = AsMessageBox(modal);
            EXPECT_EQ(box->text(), "Passwords don't match");
            EXPECT_EQ(box->icon(), QMessageBox::Information);
            EXPECT_EQ(box->standardButtons(), QMessageBox::Ok);
            Answer(modal, QMessageBox::Ok);
        })
        .Then(typePair("abc", "abc"))
        .Run([&] { password = dialogs.SetPassword(); });
    EXPECT_EQ(password, "abc");
}

// A keyboard user over a host's window: the focus starts in the first field, so what is typed goes
// there; Tab moves to the next field; Enter (either key) is OK, Escape and the close box Cancel. Each
// row: the dialog, its caption, the fields typed, the last key (none: the close box), and what the
// facade returns (EnterPassword as "true" or "false"; it compares case-sensitively).
TEST(SmallDialogs, TheFocusStartsInTheFirstFieldAndEnterOrEscapeAnswers) {
    QWidget host;
    ASSERT_TRUE(ShowActive(&host));
    const ui::V4Dialogs dialogs(QtPrompts());
    const std::function<std::string()> name = [&] { return dialogs.InputBox("Name", "New Profile"); };
    // Digits only, at most four, with a tip.
    const std::function<std::string()> port = [&] {
        return dialogs.InputBox("Enter the port number", "Port", 4, true, "1 to 65535");
    };
    const std::function<std::string()> set = [&] { return dialogs.SetPassword(); };
    const std::function<std::string()> enter = [&] { return dialogs.EnterPassword("SECRET") ? "true" : "false"; };
    const QString longName(300, 'x');
    const struct {
        const char* dialog;
        const char* caption;
        QStringList fields;
        Qt::Key last;
        const std::function<std::string()>& call;
        std::string answer;
    } cases[] = {
        {"frmV4InputBox", "New Profile", {"Night Shift"}, Qt::Key_Return, name, "Night Shift"},
        {"frmV4InputBox", "New Profile", {longName}, Qt::Key_Return, name, longName.toStdString()},
        {"frmV4InputBox", "New Profile", {"typed, then cancelled"}, Qt::Key_Escape, name, ""},
        {"frmV4InputBox", "New Profile", {"typed, then closed"}, Qt::Key_unknown, name, ""},
        {"frmV4InputBox", "Port", {"9x0012"}, Qt::Key_Return, port, "9001"},
        {"frmSetPassword", "Set Password", {"abc", "abc"}, Qt::Key_Return, set, "abc"},
        {"frmSetPassword", "Set Password", {"abc", "abc"}, Qt::Key_Escape, set, ""},
        {"frmSetPassword", "Set Password", {"abc", "abc"}, Qt::Key_unknown, set, ""},
        {"frmEnterPassword", "Enter Password", {"SECRET"}, Qt::Key_Enter, enter, "true"},
        {"frmEnterPassword", "Enter Password", {"secret"}, Qt::Key_Return, enter, "false"},
        {"frmEnterPassword", "Enter Password", {"SECRET"}, Qt::Key_Escape, enter, "false"},
        {"frmEnterPassword", "Enter Password", {"SECRET"}, Qt::Key_unknown, enter, "false"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.dialog) + " " + c.fields.join(",").left(40).toStdString());
        std::string answer = "unset";
        ModalScript()
            .Then([&](QWidget* modal) {
                EXPECT_EQ(modal->objectName(), c.dialog);
                EXPECT_EQ(modal->windowTitle(), c.caption);
                if (auto* txtInput = modal->findChild<QLineEdit*>("txtInput")) {
                    EXPECT_EQ(txtInput->toolTip(), &c.call == &port ? "1 to 65535" : "");
                    EXPECT_EQ(Child<QLabel>(modal, "lblPrompt")->text(), &c.call == &port ? "Enter the port number" : "Name");
                }
                ASSERT_TRUE(QTest::qWaitForWindowActive(modal));
                for (int i = 0; i < c.fields.size(); ++i) {
                    QWidget* focus = QApplication::focusWidget();
                    if (!qobject_cast<QLineEdit*>(focus)) {
                        ADD_FAILURE() << "the focus is not in a field";
                        modal->close();
                        return;
                    }
                    // What is typed into a password field is not shown.
                    EXPECT_EQ(static_cast<QLineEdit*>(focus)->echoMode(),
                              &c.call == &set || &c.call == &enter ? QLineEdit::Password : QLineEdit::Normal);
                    QTest::keyClicks(focus, c.fields[i]);
                    if (i + 1 < c.fields.size()) QTest::keyClick(focus, Qt::Key_Tab);
                    else if (c.last != Qt::Key_unknown) QTest::keyClick(focus, c.last);
                    else modal->close();
                }
            })
            .Run([&] { answer = c.call(); });
        EXPECT_EQ(answer, c.answer);
    }
}

TEST(SmallDialogs, TheFacadePassesEverythingToTheInstalledInterface) {
    const auto recording = std::make_shared<RecordingUserInterface>();
    UserInterface::Install(recording);
    const ui::V4Dialogs dialogs;
    recording->QueueInput(std::nullopt);
    EXPECT_EQ(dialogs.InputBox("Prompt", "Caption", 12, true, "Tip"), "");
    ASSERT_EQ(recording->Inputs().size(), 1u);
    EXPECT_EQ(recording->Inputs()[0].title, "Caption");
    EXPECT_EQ(recording->Inputs()[0].options.maxLength, 12);
    EXPECT_TRUE(recording->Inputs()[0].options.numbersOnly);
    EXPECT_EQ(recording->Inputs()[0].options.toolTip, "Tip");
    recording->QueuePasswordEntry("pw");
    EXPECT_TRUE(dialogs.EnterPassword("pw"));
    UserInterface::Install(nullptr);
}
