// The profile editor driven through its real widgets, its prompts answered by a script.
#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <optional>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/settings/Settings.h>
#include <meridex/ui/Install.h>
#include <meridex/ui/settings/frmProfiles.h>

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
        const auto rows = Profiles()->findItems(key, Qt::MatchExactly);
        ASSERT_EQ(rows.size(), 1);
        QTest::mouseClick(Profiles()->viewport(), Qt::LeftButton, {},
                          Profiles()->visualItemRect(rows[0]).center());
    }
    // Toggles the check mark of row as a person does: select it, press Space.
    void ToggleFeature(int row) const {
        Features()->setFocus();
        Features()->setCurrentItem(Features()->topLevelItem(row));
        QTest::keyClick(Features(), Qt::Key_Space);
    }
    QStringList ComboEntries() const {
        QStringList entries;
        for (int i = 0; i < Current()->count(); ++i) entries << Current()->itemText(i);
        return entries;
    }
    // The last message box's text.
    std::string LastMessage() const { return ui_->Messages().empty() ? "" : ui_->Messages().back().text; }

    TempDir dir_;
    std::string path_;
    Settings settings_;
    std::shared_ptr<RecordingUserInterface> ui_ = std::make_shared<RecordingUserInterface>();
    std::unique_ptr<frmProfiles> form_;
};

TEST_F(ProfileEditor, ListsTheProfilesAndShowsTheCurrentOnesFeatures) {
    Open();
    EXPECT_EQ(Texts(Profiles()), QStringList({"ADMINISTRATOR", "DEFAULT", "Crew"}));
    EXPECT_EQ(ItemKeys(Profiles()), QStringList({"ADMINISTRATOR", "DEFAULT", "Crew"}));
    EXPECT_EQ(ImageKeysOf(Profiles()), QStringList({"USER", "USER", "USER"}));
    EXPECT_EQ(ComboEntries(), QStringList({"ADMINISTRATOR", "DEFAULT", "Crew"}));
    // CURRENT_PROFILE names "crew": found ignoring case, its row selected and its key shown.
    EXPECT_EQ(Profiles()->currentItem()->text(0), "Crew");
    EXPECT_EQ(Current()->currentText(), "Crew");

    // Crew's own three features and the 42 catalogue features it gained on load, in order.
    ASSERT_EQ(Features()->topLevelItemCount(), 45);
    EXPECT_EQ(ItemKeys(Features()).mid(0, 4),
              QStringList({"V4_SELECT_SCHEME", "V4_PROGRAM_LOGGER", "HOST_ONLY", "V4_INIT_NMM"}));
    EXPECT_EQ(Texts(Features())[0], "Show \"Select\" button and menu option");
    EXPECT_EQ(Checks(Features()).mid(0, 3), QList<bool>({true, false, true}));
    // No PROFILES_UNLOCKED: the editor opens unlocked.
    EXPECT_EQ(Control<QPushButton>("cmdLock")->text(), "Lock");
    EXPECT_TRUE(ui_->Messages().empty());
}

TEST_F(ProfileEditor, WithoutACurrentProfileTheFirstRowIsSelected) {
    Open("<V4SETTINGS><PROFILES><PROFILE><KEY>B</KEY></PROFILE><PROFILE><KEY>A</KEY></PROFILE></PROFILES>"
         "</V4SETTINGS>");
    EXPECT_EQ(Profiles()->currentItem()->text(0), "B");
    EXPECT_EQ(Current()->currentText(), "B");
    EXPECT_EQ(Features()->topLevelItemCount(), 44);
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
    EXPECT_EQ(ui_->Inputs()[0].prompt, "Enter new profile name");
    EXPECT_EQ(ui_->Inputs()[0].title, "New Profile");
    EXPECT_EQ(Texts(Profiles()), QStringList({"ADMINISTRATOR", "DEFAULT", "Crew", "Field Crew"}));
    EXPECT_EQ(ImageKeysOf(Profiles()).back(), "USER");
    EXPECT_EQ(ComboEntries().back(), "Field Crew");
    const Profile added = settings_.Profiles().Item("Field Crew");
    ASSERT_FALSE(added.IsNull());
    EXPECT_EQ(added.Count(), 44);
    EXPECT_FALSE(added.FeatureAvailable("ED_XML_BAR"));
    EXPECT_TRUE(added.FeatureAvailable("V4_SCHEME_EDITOR"));
    EXPECT_EQ(Profiles()->currentItem()->text(0), "Crew") << "the current profile's row stays selected";

    // A name that exists ignoring case is refused; no name (cancelled or empty) adds nothing.
    ui_->QueueInput("crew");
    Press("cmdAddProfile");
    ASSERT_EQ(ui_->Messages().size(), 1u);
    EXPECT_EQ(LastMessage(), "Profile \"crew\" already exists");
    EXPECT_EQ(ui_->Messages().back().buttons, MessageButtons::OK);
    ui_->QueueInput(std::nullopt);
    Press("cmdAddProfile");
    ui_->QueueInput("");
    Press("cmdAddProfile");
    EXPECT_EQ(ui_->Messages().size(), 1u);
    EXPECT_EQ(settings_.Profiles().Count(), 4);
    EXPECT_EQ(Profiles()->topLevelItemCount(), 4);
}

// Deleting asks first; the current profile's deletion makes the first remaining current; the last
// profile is never deleted.
TEST_F(ProfileEditor, ClickingARowShowsItsFeaturesAndDeletingItAsksWithCancelAsDefault) {
    Open();
    ClickProfile("DEFAULT");  // a row click shows that profile's features
    ASSERT_EQ(Features()->topLevelItemCount(), 44);
    EXPECT_EQ(ItemKeys(Features()).back(), "ED_SHOW_ADVANCED_PROFILE_BUTTON");
    EXPECT_EQ(Checks(Features()).count(true), 36);
    EXPECT_EQ(Current()->currentText(), "Crew") << "a row click does not change the current profile";
    ui_->QueueMessageResult(MessageResult::Cancel);
    Press("cmdDeleteProfile");
    ASSERT_EQ(ui_->Messages().size(), 1u);
    const auto asked = ui_->Messages()[0];
    EXPECT_EQ(asked.text, "Delete profile: DEFAULT");
    EXPECT_EQ(asked.buttons, MessageButtons::OKCancel);
    EXPECT_EQ(asked.icon, MessageIcon::Information);
    EXPECT_EQ(asked.defaultButton, MessageDefaultButton::Second);
    EXPECT_EQ(settings_.Profiles().Count(), 3);
    EXPECT_EQ(Profiles()->topLevelItemCount(), 3);

    ui_->QueueMessageResult(MessageResult::OK);
    Press("cmdDeleteProfile");
    EXPECT_TRUE(settings_.Profiles().Item("DEFAULT").IsNull());
    EXPECT_EQ(Texts(Profiles()), QStringList({"ADMINISTRATOR", "Crew"}));
    EXPECT_EQ(ComboEntries(), QStringList({"ADMINISTRATOR", "Crew"}));
    // Not the current profile: the current stays, the first row is selected and loaded.
    EXPECT_EQ(settings_.CurrentProfile().Key(), "Crew");
    EXPECT_EQ(Current()->currentText(), "Crew");
    EXPECT_EQ(Profiles()->currentItem()->text(0), "ADMINISTRATOR");
    EXPECT_EQ(Checks(Features()).count(true), 44);

    ClickProfile("Crew");
    ui_->QueueMessageResult(MessageResult::OK);
    Press("cmdDeleteProfile");
    EXPECT_EQ(settings_.CurrentProfile().Key(), "ADMINISTRATOR");
    EXPECT_EQ(settings_.GetString("CURRENT_PROFILE", ""), "ADMINISTRATOR");
    EXPECT_EQ(Current()->currentText(), "ADMINISTRATOR");
    EXPECT_EQ(Profiles()->currentItem()->text(0), "ADMINISTRATOR");

    ui_->Clear();
    Press("cmdDeleteProfile");
    ASSERT_EQ(ui_->Messages().size(), 1u);
    EXPECT_EQ(LastMessage(), "You must have at least one profile");
    EXPECT_EQ(ui_->Messages()[0].icon, MessageIcon::Critical);
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
        {locked, std::nullopt, true, "none", ""},
        // A stored password that is not Base64 fails to decode: a warning, and the editor stays open.
        {locked + "<PROFILE_PASSWORD>@abc</PROFILE_PASSWORD>", "abc", false, "@abc",
         "frmProfiles:cmdLock_Click : -2147221504-Unable to decode string"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.head + " answered " + c.answer.value_or("(cancelled)"));
        Open(OneProfile(c.head));
        if (c.head.empty() && c.answer) ui_->QueueNewPassword(*c.answer);
        if (!c.head.empty()) ui_->QueuePasswordEntry(c.answer);
        Press("cmdLock");
        EXPECT_EQ(Control<QPushButton>("cmdLock")->text(), c.unlocked ? "Lock" : "Unlock");
        for (const char* name : {"lblSelectProfile", "lvProfiles", "cmdAddProfile", "cmdDeleteProfile",
                                 "lblSetCurrentProfile", "cboCurrentProfile", "lvFeatures"})
            EXPECT_EQ(Control<QWidget>(name)->isEnabled(), c.unlocked) << name;
        EXPECT_TRUE(Control<QPushButton>("cmdLock")->isEnabled() && Control<QPushButton>("cmdOK")->isEnabled());
        // The default asked is the state before, so only a stored value shows a change.
        EXPECT_EQ(settings_.GetBoolean("PROFILES_UNLOCKED", c.head.empty()), c.unlocked);
        const XmlNode stored = settings_.Root().FirstChildElement("PROFILE_PASSWORD");
        EXPECT_EQ(stored.IsNull() ? "none" : stored.Text(), c.stored);
        EXPECT_EQ(ui_->SetPasswordCount(), c.head.empty() ? 1 : 0);
        // The entry is checked against the decoded password; with none stored nothing is asked.
        EXPECT_EQ(ui_->PasswordChecks(), c.head == pw ? std::vector<std::string>{"pw"} : std::vector<std::string>{});
        ASSERT_EQ(ui_->Messages().size(), c.message.empty() ? 0u : 1u);
        if (!c.message.empty()) {
            EXPECT_EQ(LastMessage(), c.message);
            EXPECT_EQ(ui_->Messages()[0].icon, MessageIcon::Exclamation);
            EXPECT_EQ(ui_->Messages()[0].buttons, MessageButtons::OK);
        }
        EXPECT_TRUE(form_->isVisible());
    }
}

TEST_F(ProfileEditor, AfterUnlockingTheNextLockAsksForANewPassword) {
    Open(OneProfile("<PROFILES_UNLOCKED>0</PROFILES_UNLOCKED><PROFILE_PASSWORD>@cHc=</PROFILE_PASSWORD>"));
    ui_->QueuePasswordEntry("pw");
    Press("cmdLock");
    ui_->QueueNewPassword("new");
    Press("cmdLock");
    EXPECT_EQ(ui_->SetPasswordCount(), 1);
    EXPECT_EQ(settings_.GetString("PROFILE_PASSWORD", ""), "@bmV3");
    EXPECT_EQ(Control<QPushButton>("cmdLock")->text(), "Unlock");
}

TEST(ProfileEditorWithoutSettings, EveryHandlerReportsTheMissingSettingsInsteadOfCrashing) {
    const auto ui = std::make_shared<RecordingUserInterface>();
    frmProfiles form(ui);
    form.show();
    for (const char* name : {"cmdAddProfile", "cmdDeleteProfile", "cmdLock"}) Click(Child<QPushButton>(&form, name));
    form.LoadProfiles();
    const char* routines[] = {"cmdAddProfile_Click", "cmdDeleteProfile_Click", "cmdLock_Click", "LoadProfiles"};
    ASSERT_EQ(ui->Messages().size(), std::size(routines));
    for (std::size_t i = 0; i < std::size(routines); ++i) {
        EXPECT_EQ(ui->Messages()[i].text,
                  "frmProfiles:" + std::string(routines[i]) + " : 91-Object variable or With block variable not set");
        EXPECT_EQ(ui->Messages()[i].icon, MessageIcon::Exclamation);
    }
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

}  // namespace
