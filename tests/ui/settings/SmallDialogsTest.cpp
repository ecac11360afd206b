// The small dialogs driven as a person would: captions, labels, keys, and the facade's round trips
// through the real Qt prompts.
#include <gtest/gtest.h>

#include <memory>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/ui/QtUserInterface.h>
#include <meridex/ui/settings/V4Dialogs.h>
#include <meridex/ui/settings/frmEnterPassword.h>
#include <meridex/ui/settings/frmSetPassword.h>
#include <meridex/ui/settings/frmV4InputBox.h>

#include "DialogTest.h"

using namespace meridex;
using namespace meridex::test;
using meridex::ui::frmEnterPassword;
using meridex::ui::frmSetPassword;
using meridex::ui::frmV4InputBox;

namespace {

std::shared_ptr<UserInterface> QtPrompts() { return std::make_shared<ui::QtUserInterface>(); }

}  // namespace

TEST(SmallDialogs, CaptionsLabelsTooltipsAndButtons) {
    frmV4InputBox input;
    EXPECT_EQ(input.windowTitle(), "User Input");
    Child<QLabel>(&input, "lblPrompt");
    Child<QLineEdit>(&input, "txtInput");
    EXPECT_EQ(Child<QPushButton>(&input, "cmdOK")->text(), "OK");
    EXPECT_EQ(Child<QPushButton>(&input, "cmdCancel")->text(), "&Cancel");

    frmSetPassword set;
    EXPECT_EQ(set.windowTitle(), "Set Password");
    EXPECT_EQ(Child<QLabel>(&set, "Label1")->text(), "Enter Password");
    EXPECT_EQ(Child<QLabel>(&set, "Label2")->text(), "Re-enter Password");
    EXPECT_EQ(Child<QLineEdit>(&set, "txtPassword")->echoMode(), QLineEdit::Password);
    EXPECT_EQ(Child<QLineEdit>(&set, "txtPassword2")->echoMode(), QLineEdit::Password);
    EXPECT_EQ(Child<QPushButton>(&set, "cmdCancel")->text(), "&Cancel");

    frmEnterPassword enter;
    EXPECT_EQ(enter.windowTitle(), "Enter Password");
    EXPECT_EQ(Child<QLabel>(&enter, "Label1")->text(), "Enter Password");
    EXPECT_EQ(Child<QLineEdit>(&enter, "txtPassword")->toolTip(), "Enter a password");
    EXPECT_EQ(Child<QLineEdit>(&enter, "txtPassword")->echoMode(), QLineEdit::Password);
    EXPECT_EQ(Child<QPushButton>(&enter, "cmdCancel")->text(), "&Cancel");
}

TEST(SmallDialogs, DigitsOnlyRefusesLettersAndMaxLengthHolds) {
    frmV4InputBox form;
    ASSERT_TRUE(ShowActive(&form));
    auto* txtInput = Child<QLineEdit>(&form, "txtInput");
    form.setNumbersOnly(true);
    Type(txtInput, "12ab3-4 5");
    EXPECT_EQ(txtInput->text(), "12345");

    form.setNumbersOnly(false);
    txtInput->clear();
    form.setMaxLength(4);
    Type(txtInput, "abcdef");
    EXPECT_EQ(txtInput->text(), "abcd");

    // No limit: a long name fits whole.
    form.setMaxLength(0);
    txtInput->clear();
    Type(txtInput, QString(300, 'x'));
    EXPECT_EQ(txtInput->text().size(), 300);
}

TEST(SmallDialogs, EnterIsOKAndEscapeIsCancelInThePasswordDialogs) {
    frmSetPassword set;
    ASSERT_TRUE(ShowActive(&set));
    Type(Child<QLineEdit>(&set, "txtPassword"), "abc");
    QTest::keyClick(Child<QLineEdit>(&set, "txtPassword"), Qt::Key_Return);
    EXPECT_FALSE(set.isVisible());
    EXPECT_FALSE(set.Cancelled());

    ASSERT_TRUE(ShowActive(&set));
    QTest::keyClick(Child<QLineEdit>(&set, "txtPassword2"), Qt::Key_Escape);
    EXPECT_FALSE(set.isVisible());
    EXPECT_TRUE(set.Cancelled());

    frmEnterPassword enter;
    ASSERT_TRUE(ShowActive(&enter));
    QTest::keyClick(Child<QLineEdit>(&enter, "txtPassword"), Qt::Key_Escape);
    EXPECT_TRUE(enter.Cancelled());
    ASSERT_TRUE(ShowActive(&enter));
    QTest::keyClick(Child<QLineEdit>(&enter, "txtPassword"), Qt::Key_Enter);
    EXPECT_FALSE(enter.isVisible());
    EXPECT_FALSE(enter.Cancelled());
}

TEST(SmallDialogs, TheCloseBoxCountsAsCancelAndHidesTheDialog) {
    for (auto make : {+[]() -> std::unique_ptr<ui::CancellableDialog> { return std::make_unique<frmV4InputBox>(); },
                      +[]() -> std::unique_ptr<ui::CancellableDialog> { return std::make_unique<frmSetPassword>(); },
                      +[]() -> std::unique_ptr<ui::CancellableDialog> { return std::make_unique<frmEnterPassword>(); }}) {
        const auto form = make();
        ASSERT_TRUE(ShowActive(form.get()));
        Click(Child<QPushButton>(form.get(), "cmdOK"));
        ASSERT_FALSE(form->Cancelled());
        ASSERT_TRUE(ShowActive(form.get()));
        form->close();
        EXPECT_FALSE(form->isVisible()) << form->objectName().toStdString();
        EXPECT_TRUE(form->Cancelled()) << form->objectName().toStdString();
    }
}

TEST(SmallDialogs, InputBoxRoundTripThroughTheQtPrompt) {
    const ui::V4Dialogs dialogs(QtPrompts());
    std::string answer;
    ModalScript()
        .Then([](QWidget* modal) {
            EXPECT_EQ(modal->objectName(), "frmV4InputBox");
            EXPECT_EQ(modal->windowTitle(), "Port");
            EXPECT_EQ(Child<QLabel>(modal, "lblPrompt")->text(), "Enter the port number");
            auto* txtInput = Child<QLineEdit>(modal, "txtInput");
            EXPECT_EQ(txtInput->toolTip(), "1 to 65535");
            Type(txtInput, "9x0012");
            Click(Child<QPushButton>(modal, "cmdOK"));
        })
        .Run([&] { answer = dialogs.InputBox("Enter the port number", "Port", 4, true, "1 to 65535"); });
    EXPECT_EQ(answer, "9001");

    ModalScript()
        .Then([](QWidget* modal) {
            Type(Child<QLineEdit>(modal, "txtInput"), "typed, then cancelled");
            Click(Child<QPushButton>(modal, "cmdCancel"));
        })
        .Run([&] { answer = dialogs.InputBox("Name", "New Profile"); });
    EXPECT_EQ(answer, "");
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

    ModalScript()
        .Then([](QWidget* modal) {
            Type(Child<QLineEdit>(modal, "txtPassword"), "abc");
            modal->close();
        })
        .Run([&] { password = dialogs.SetPassword(); });
    EXPECT_EQ(password, "");
}

TEST(SmallDialogs, EnterPasswordIsCaseSensitiveAndCancelIsFalse) {
    const ui::V4Dialogs dialogs(QtPrompts());
    const auto enter = [&](const QString& typed, const char* button) {
        bool right = false;
        ModalScript()
            .Then([&](QWidget* modal) {
                EXPECT_EQ(modal->objectName(), "frmEnterPassword");
                Type(Child<QLineEdit>(modal, "txtPassword"), typed);
                Click(Child<QPushButton>(modal, button));
            })
            .Run([&] { right = dialogs.EnterPassword("SECRET"); });
        return right;
    };
    EXPECT_TRUE(enter("SECRET", "cmdOK"));
    EXPECT_FALSE(enter("secret", "cmdOK"));
    EXPECT_FALSE(enter("SECRET", "cmdCancel"));
}

TEST(SmallDialogs, TheFocusStartsInTheFirstFieldSoWhatIsTypedAndEnterAnswer) {
    const ui::V4Dialogs dialogs(QtPrompts());
    // Types where the focus is, as a keyboard does, Tab between the fields, Enter after the last.
    const auto typeAndEnter = [](const char* dialog, const QStringList& fields) {
        ModalScript script;
        script.Then([=](QWidget* modal) {
            EXPECT_EQ(modal->objectName(), dialog);
            ASSERT_TRUE(QTest::qWaitForWindowActive(modal));
            for (int i = 0; i < fields.size(); ++i) {
                QWidget* focus = QApplication::focusWidget();
                if (!qobject_cast<QLineEdit*>(focus)) {
                    ADD_FAILURE() << "the focus is not in a field";
                    modal->close();
                    return;
                }
                QTest::keyClicks(focus, fields[i]);
                QTest::keyClick(focus, i + 1 < fields.size() ? Qt::Key_Tab : Qt::Key_Return);
            }
        });
        return script;
    };
    std::string answer;
    typeAndEnter("frmV4InputBox", {"Night Shift"}).Run([&] { answer = dialogs.InputBox("Name", "New Profile"); });
    EXPECT_EQ(answer, "Night Shift");
    typeAndEnter("frmSetPassword", {"abc", "abc"}).Run([&] { answer = dialogs.SetPassword(); });
    EXPECT_EQ(answer, "abc");
    bool right = false;
    typeAndEnter("frmEnterPassword", {"SECRET"}).Run([&] { right = dialogs.EnterPassword("SECRET"); });
    EXPECT_TRUE(right);
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
