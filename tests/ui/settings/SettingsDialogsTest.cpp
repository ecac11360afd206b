// The settings dialogs driven through their real widgets: the profile editor with its prompts answered
// by a script, the small dialogs through the facade's round trips with the real Qt prompts, and the
// coding of the lock's password.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/settings/Settings.h>
#include <meridex/ui/Install.h>
#include <meridex/ui/QtUserInterface.h>
#include <meridex/ui/settings/PasswordCoding.h>
#include <meridex/ui/settings/V4Dialogs.h>
#include <meridex/ui/settings/frmProfiles.h>
#include <meridex/ui/settings/frmV4InputBox.h>

#include "DialogTest.h"
#include "TempDir.h"

using namespace meridex;
using namespace meridex::test;
using meridex::ui::frmProfiles;

namespace {

// Three profiles; "Crew" has three features of its own, the others get the catalogue on load.
const std::string kSettings =
    "<V4SETTINGS><LANG>en</LANG><CURRENT_PROFILE>crew</CURRENT_PROFILE><PROFILES>"
    "<PROFILE><KEY>ADMINISTRATOR</KEY></PROFILE>"
    "<PROFILE><KEY>DEFAULT</KEY></PROFILE>"
    "<PROFILE><KEY>Crew</KEY>"
    "<FEATURE><AVAILABLE>-1</AVAILABLE><DESCRIPTION>Show \"Select\" button and menu option</DESCRIPTION>"
    "<KEY>V4_SELECT_SCHEME</KEY></FEATURE>"
    "<FEATURE><DESCRIPTION>Show \"Program\" button and menu option</DESCRIPTION><KEY>V4_PROGRAM_LOGGER</KEY></FEATURE>"
    "<FEATURE><AVAILABLE>-1</AVAILABLE><DESCRIPTION>Host's own</DESCRIPTION><KEY>HOST_ONLY</KEY></FEATURE>"
    "</PROFILE></PROFILES></V4SETTINGS>";

// A document of one profile, "A", after head (the lock's settings).
std::string OneProfile(const std::string& head) {
    return "<V4SETTINGS>" + head + "<PROFILES><PROFILE><KEY>A</KEY></PROFILE></PROFILES></V4SETTINGS>";
}

class ProfileEditor : public ::testing::Test {
protected:
    // Loads text and opens an editor on it, shown so that keys and clicks reach it.
    void Open(const std::string& text = kSettings) {
        path_ = dir_.Write("settings.xml", text);
        settings_.LoadSettings(path_);
        ui_ = std::make_shared<RecordingUserInterface>();
        form_ = std::make_unique<frmProfiles>(ui_);
        form_->setV4Settings(&settings_);
        ASSERT_TRUE(ShowActive(form_.get()));
    }

    template <class T>
    T* Control(const char* name) const {
        return Child<T>(form_.get(), name);
    }
    QTreeWidget* Profiles() const { return Control<QTreeWidget>("lvProfiles"); }
    QTreeWidget* Features() const { return Control<QTreeWidget>("lvFeatures"); }
    QComboBox* Current() const { return Control<QComboBox>("cboCurrentProfile"); }
    void Press(const char* button) const { Click(Control<QPushButton>(button)); }

    // Clicks the row of lvProfiles whose text is key.
    void ClickProfile(const QString& key) const {
        QTreeWidgetItem* row = Keyed(Profiles(), key);
        ASSERT_NE(row, nullptr) << key.toStdString();
        ClickRow(Profiles(), row);
    }
    // Toggles the check mark of row as a person does: select it, press Space.
    void ToggleFeature(int row) const {
        Features()->setFocus();
        Features()->setCurrentItem(Features()->topLevelItem(row));
        QTest::keyClick(Features(), Qt::Key_Space);
    }
    // The editor as a person sees it: the profile rows (the selected one marked *), the drop-down's
    // entries (its choice marked *), and how many features the shown profile has and how many are checked.
    std::string State() const {
        QStringList rows, entries;
        for (int i = 0; i < Profiles()->topLevelItemCount(); ++i) {
            const QTreeWidgetItem* row = Profiles()->topLevelItem(i);
            rows << (row == Profiles()->currentItem() ? "*" : "") + row->text(0);
        }
        for (int i = 0; i < Current()->count(); ++i)
            entries << (i == Current()->currentIndex() ? "*" : "") + Current()->itemText(i);
        return (rows.join(",") + " | " + entries.join(",") + " | " +
                QString("%1 features, %2 checked").arg(Features()->topLevelItemCount()).arg(Checks(Features()).count(true)))
            .toStdString();
    }
    // Every message box shown, as "text (icon buttons default)".
    std::string Said() const {
        static const char* const icons[] = {"none", "critical", "question", "exclamation", "information"};
        static const char* const buttons[] = {"OK", "OKCancel", "YesNo", "YesNoCancel"};
        std::string said;
        for (const auto& m : ui_->Messages())
            said += m.text + " (" + icons[int(m.icon)] + " " + buttons[int(m.buttons)] + " " +
                    std::to_string(int(m.defaultButton) + 1) + ")\n";
        return said;
    }

    TempDir dir_;
    std::string path_;
    Settings settings_;
    std::shared_ptr<RecordingUserInterface> ui_ = std::make_shared<RecordingUserInterface>();
    std::unique_ptr<frmProfiles> form_;
};

TEST_F(ProfileEditor, ListsTheProfilesAndShowsTheCurrentOnesFeatures) {
    Open();
    // CURRENT_PROFILE names "crew": found ignoring case, its row selected and its key shown. Crew has its
    // own three features and the 42 catalogue features it gained on load.
    EXPECT_EQ(State(), "ADMINISTRATOR,DEFAULT,*Crew | ADMINISTRATOR,DEFAULT,*Crew | 45 features, 36 checked");
    EXPECT_EQ(ItemKeys(Profiles()), Texts(Profiles()));
    EXPECT_EQ(ImageKeysOf(Profiles()), QStringList({"USER", "USER", "USER"}));
    EXPECT_EQ(ItemKeys(Features()).mid(0, 4),
              QStringList({"V4_SELECT_SCHEME", "V4_PROGRAM_LOGGER", "HOST_ONLY", "V4_INIT_NMM"}));
    EXPECT_EQ(Texts(Features())[0], "Show \"Select\" button and menu option");
    EXPECT_EQ(Checks(Features()).mid(0, 3), QList<bool>({true, false, true}));
    // No PROFILES_UNLOCKED: the editor opens unlocked.
    EXPECT_EQ(Control<QPushButton>("cmdLock")->text(), "Lock");
    EXPECT_EQ(Said(), "");
}

TEST_F(ProfileEditor, WithoutACurrentProfileTheFirstRowIsSelected) {
    Open("<V4SETTINGS><PROFILES><PROFILE><KEY>B</KEY></PROFILE><PROFILE><KEY>A</KEY></PROFILE></PROFILES>"
         "</V4SETTINGS>");
    EXPECT_EQ(State(), "*B,A | *B,A | 44 features, 36 checked");
    EXPECT_TRUE(settings_.CurrentProfile().IsNull()) << "opening the editor chooses nothing";
}

TEST_F(ProfileEditor, ACheckMarkAndTheCurrentProfileAreWrittenIntoTheDocumentAtOnce) {
    Open();
    const Profile crew = settings_.Profiles().Item("Crew");
    ToggleFeature(0);
    EXPECT_FALSE(crew.FeatureAvailable("V4_SELECT_SCHEME"));
    EXPECT_EQ(crew.Item("V4_SELECT_SCHEME").XMLNode().FirstChildElement("AVAILABLE").IsNull(), true);
    ToggleFeature(1);
    EXPECT_TRUE(crew.FeatureAvailable("V4_PROGRAM_LOGGER"));
    EXPECT_TRUE(settings_.Profiles().Item("DEFAULT").FeatureAvailable("V4_SELECT_SCHEME")) << "other profiles keep theirs";

    Current()->setFocus();
    QTest::keyClick(Current(), Qt::Key_Up);
    EXPECT_EQ(Current()->currentText(), "DEFAULT");
    EXPECT_EQ(settings_.CurrentProfile().Key(), "DEFAULT");
    EXPECT_EQ(settings_.GetString("CURRENT_PROFILE", ""), "DEFAULT");
}

TEST_F(ProfileEditor, AddingAsksForANameAndAddsADefaultProfileUnlessTheNameExistsIgnoringCase) {
    Open();
    ui_->QueueInput("Field Crew");
    Press("cmdAddProfile");
    ASSERT_EQ(ui_->Inputs().size(), 1u);
    EXPECT_EQ(ui_->Inputs()[0].prompt + "|" + ui_->Inputs()[0].title, "Enter new profile name|New Profile");
    // The current profile's row stays selected.
    EXPECT_EQ(State(), "ADMINISTRATOR,DEFAULT,*Crew,Field Crew | ADMINISTRATOR,DEFAULT,*Crew,Field Crew | "
                       "45 features, 36 checked");
    EXPECT_EQ(ImageKeysOf(Profiles()).back(), "USER");
    // The standard default profile (the library asserts its features), not the administrator's.
    EXPECT_EQ(settings_.Profiles().Item("Field Crew").Count(), 44);
    EXPECT_FALSE(settings_.Profiles().Item("Field Crew").FeatureAvailable("ED_XML_BAR"));

    // A name that exists ignoring case is refused; no name (cancelled or empty) adds nothing.
    for (const std::optional<std::string>& name : {std::optional<std::string>("crew"), {}, {""}}) {
        ui_->QueueInput(name);
        Press("cmdAddProfile");
    }
    EXPECT_EQ(Said(), "Profile \"crew\" already exists (none OK 1)\n");
    EXPECT_EQ(settings_.Profiles().Count(), 4);
    EXPECT_EQ(Profiles()->topLevelItemCount(), 4);
}

// Deleting asks first; the current profile's deletion makes the first remaining current; the last
// profile is never deleted.
TEST_F(ProfileEditor, ClickingARowShowsItsFeaturesAndDeletingItAsksWithCancelAsDefault) {
    Open();
    ClickProfile("DEFAULT");  // a row click shows that profile's features, and does not change the current one
    EXPECT_EQ(State(), "ADMINISTRATOR,*DEFAULT,Crew | ADMINISTRATOR,DEFAULT,*Crew | 44 features, 36 checked");
    EXPECT_EQ(ItemKeys(Features()).back(), "ED_SHOW_ADVANCED_PROFILE_BUTTON");
    ui_->QueueMessageResult(MessageResult::Cancel);
    Press("cmdDeleteProfile");
    EXPECT_EQ(Said(), "Delete profile: DEFAULT (information OKCancel 2)\n");
    EXPECT_EQ(settings_.Profiles().Count(), 3);
    EXPECT_EQ(Profiles()->topLevelItemCount(), 3);

    ui_->QueueMessageResult(MessageResult::OK);
    Press("cmdDeleteProfile");
    EXPECT_TRUE(settings_.Profiles().Item("DEFAULT").IsNull());
    // Not the current profile: the current stays, the first row is selected and loaded.
    EXPECT_EQ(State(), "*ADMINISTRATOR,Crew | ADMINISTRATOR,*Crew | 44 features, 44 checked");
    EXPECT_EQ(settings_.CurrentProfile().Key(), "Crew");

    ClickProfile("Crew");
    ui_->QueueMessageResult(MessageResult::OK);
    Press("cmdDeleteProfile");
    EXPECT_EQ(State(), "*ADMINISTRATOR | *ADMINISTRATOR | 44 features, 44 checked");
    EXPECT_EQ(settings_.CurrentProfile().Key(), "ADMINISTRATOR");
    EXPECT_EQ(settings_.GetString("CURRENT_PROFILE", ""), "ADMINISTRATOR");

    ui_->Clear();
    Press("cmdDeleteProfile");
    EXPECT_EQ(Said(), "You must have at least one profile (critical OK 1)\n");
    EXPECT_EQ(settings_.Profiles().Count(), 1);
    EXPECT_EQ(Profiles()->topLevelItemCount(), 1);
}

// Each press of the lock button: the document it starts from, the answer to its prompt (a new
// password while unlocked, the typed entry while locked; none cancels), and the state it leaves.
TEST_F(ProfileEditor, TheLockButtonLocksWithANewPasswordAndUnlocksOnlyWithTheStoredOne) {
    const std::string locked = "<PROFILES_UNLOCKED>0</PROFILES_UNLOCKED>";
    const std::string pw = locked + "<PROFILE_PASSWORD>@cHc=</PROFILE_PASSWORD>";
    const std::string unstorable = "The password holds characters that cannot be stored, so it could never be "
                                   "typed again. Use only the letters, digits and signs of windows-1252 (Western "
                                   "European).";
    const struct {
        std::string head;
        std::optional<std::string> answer;
        bool unlocked;       // afterwards
        std::string stored;  // PROFILE_PASSWORD afterwards; "none" when there is none
        std::string message; // the one message box shown, if any
        std::optional<std::string> relock = {};  // the new password of a second press, if any
    } cases[] = {
        {"", "pw", false, "@cHc=", ""},
        {"", std::nullopt, true, "none", ""},
        {"", "", true, "none", ""},
        // The stored form keeps only windows-1252 characters, so the lock can always be opened.
        {"", "\u03a9mega", true, "none", unstorable},
        {"", "\u65e5\u672c", true, "none", unstorable},
        {"", "pin \U0001F600", true, "none", unstorable},
        {"", "Gr\u00fc\u00dfe \u20ac5", false, "@R3L832UggDU=", ""},
        {pw, "PW", false, "@cHc=", "Invalid password"},
        {pw, std::nullopt, false, "@cHc=", "Invalid password"},
        // Unlocking forgets the password: kept, but empty.
        {pw, "pw", true, "", ""},
        // After unlocking, the next press asks for a new password.
        {pw, "pw", false, "@bmV3", "", "new"},
        {locked, std::nullopt, true, "none", ""},
        // A stored password that is not Base64 fails to decode: a warning, and the editor stays open.
        {locked + "<PROFILE_PASSWORD>@abc</PROFILE_PASSWORD>", "abc", false, "@abc",
         "frmProfiles:cmdLock_Click : -2147221504-Unable to decode string"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.head + " answered " + c.answer.value_or("(cancelled)") + " then " + c.relock.value_or("-"));
        Open(OneProfile(c.head));
        if (c.head.empty() && c.answer) ui_->QueueNewPassword(*c.answer);
        if (!c.head.empty()) ui_->QueuePasswordEntry(c.answer);
        Press("cmdLock");
        if (c.relock) ui_->QueueNewPassword(*c.relock);
        if (c.relock) Press("cmdLock");
        EXPECT_EQ(Control<QPushButton>("cmdLock")->text(), c.unlocked ? "Lock" : "Unlock");
        for (const char* name : {"lblSelectProfile", "lvProfiles", "cmdAddProfile", "cmdDeleteProfile",
                                 "lblSetCurrentProfile", "cboCurrentProfile", "lvFeatures"})
            EXPECT_EQ(Control<QWidget>(name)->isEnabled(), c.unlocked) << name;
        EXPECT_TRUE(Control<QPushButton>("cmdLock")->isEnabled() && Control<QPushButton>("cmdOK")->isEnabled());
        // The default asked is the state before, so only a stored value shows a change.
        EXPECT_EQ(settings_.GetBoolean("PROFILES_UNLOCKED", c.head.empty()), c.unlocked);
        const XmlNode stored = settings_.Root().FirstChildElement("PROFILE_PASSWORD");
        EXPECT_EQ(stored.IsNull() ? "none" : stored.Text(), c.stored);
        EXPECT_EQ(ui_->SetPasswordCount(), c.head.empty() || c.relock ? 1 : 0);
        // The entry is checked against the decoded password; with none stored nothing is asked.
        EXPECT_EQ(ui_->PasswordChecks(), c.head == pw ? std::vector<std::string>{"pw"} : std::vector<std::string>{});
        EXPECT_EQ(Said(), c.message.empty() ? "" : c.message + " (exclamation OK 1)\n");
        EXPECT_TRUE(form_->isVisible());
    }
}

TEST(ProfileEditorWithoutSettings, EveryHandlerReportsTheMissingSettingsInsteadOfCrashing) {
    const auto ui = std::make_shared<RecordingUserInterface>();
    frmProfiles form(ui);
    form.show();
    for (const char* name : {"cmdAddProfile", "cmdDeleteProfile", "cmdLock"}) Click(Child<QPushButton>(&form, name));
    form.LoadProfiles();
    std::string said;
    for (const auto& m : ui->Messages()) said += m.text + (m.icon == MessageIcon::Exclamation ? " (!)\n" : "\n");
    const std::string unset = " : 91-Object variable or With block variable not set (!)\n";
    EXPECT_EQ(said, "frmProfiles:cmdAddProfile_Click" + unset + "frmProfiles:cmdDeleteProfile_Click" + unset +
                        "frmProfiles:cmdLock_Click" + unset + "frmProfiles:LoadProfiles" + unset);
    EXPECT_TRUE(ui->Inputs().empty()) << "no name is asked for when there is nowhere to add it";
    EXPECT_TRUE(form.isVisible());
}

// The whole path a host takes: the Qt dialogs installed, ShowProfileEditor over an owner window,
// the real editor and the real input box, and the file saved when the editor closes.
TEST(ProfileEditorRoundTrip, ShowProfileEditorEditsModallyAndSavesOnClose) {
    TempDir dir;
    const std::string path = dir.Write("settings.xml", kSettings);
    Settings settings;
    settings.LoadSettings(path);
    ui::InstallQtDialogs();
    QWidget owner;
    bool result = true;
    ModalScript()
        .Then([&](QWidget* modal) {
            EXPECT_EQ(modal->objectName(), "frmProfiles");
            EXPECT_EQ(modal->parentWidget(), &owner);
            EXPECT_TRUE(TempDir::Read(path) == kSettings) << "nothing saved while the editor is open";
            Click(Child<QPushButton>(modal, "cmdAddProfile"));  // answered by the next step
            EXPECT_EQ(Texts(Child<QTreeWidget>(modal, "lvProfiles")).back(), "Night Shift");
            Click(Child<QPushButton>(modal, "cmdOK"));
        })
        .Then([](QWidget* modal) {
            EXPECT_EQ(modal->objectName(), "frmV4InputBox");
            EXPECT_EQ(modal->windowTitle(), "New Profile");
            EXPECT_EQ(Child<QLabel>(modal, "lblPrompt")->text(), "Enter new profile name");
            Type(Child<QLineEdit>(modal, "txtInput"), "Night Shift");
            QTest::keyClick(Child<QLineEdit>(modal, "txtInput"), Qt::Key_Return);
        })
        .Run([&] { result = settings.ShowProfileEditor(&owner); });
    EXPECT_FALSE(result);
    Settings saved;
    saved.LoadSettings(path);
    EXPECT_FALSE(saved.Profiles().Item("Night Shift").IsNull());
    UserInterface::Install(nullptr);
    Settings::setProfileEditorOpener({});
}

std::shared_ptr<UserInterface> QtPrompts() { return std::make_shared<ui::QtUserInterface>(); }

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
    const InputBoxOptions& options = recording->Inputs()[0].options;
    EXPECT_EQ(recording->Inputs()[0].title + std::to_string(options.maxLength) + (options.numbersOnly ? " digits " : " ") +
                  options.toolTip,
              "Caption12 digits Tip");
    recording->QueuePasswordEntry("pw");
    EXPECT_TRUE(dialogs.EnterPassword("pw"));
    UserInterface::Install(nullptr);
}

TEST(PasswordCoding, EncodedIsAtSignAndBase64OfWindows1252AndDecodesBack) {
    EXPECT_EQ(ui::EncodePassword("secret"), "@c2VjcmV0");
    // "é" is one windows-1252 byte, 0xE9.
    EXPECT_EQ(ui::EncodePassword("\xC3\xA9"), "@6Q==");
    EXPECT_EQ(ui::EncodePassword(""), "@");
    for (const std::string password : {"secret", "Pa55 w0rd!", "\xC3\xA9t\xC3\xA9", "", "a"})
        EXPECT_EQ(ui::DecodePassword(ui::EncodePassword(password)), password);
}

// A marked text that is not Base64 is the decode error, which the profile editor's lock shows.
TEST(PasswordCoding, TextWithoutTheMarkerDecodesToNoPassword) {
    for (const char* unmarked : {"c2VjcmV0", "", " @c2VjcmV0"}) EXPECT_EQ(ui::DecodePassword(unmarked), "");
}

}  // namespace
