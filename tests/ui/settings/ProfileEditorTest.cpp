// The profile editor driven through its real widgets, its prompts answered by a script.
#include <gtest/gtest.h>

#include <memory>

#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
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

class ProfileEditor : public ::testing::Test {
protected:
    // Loads text and opens an editor on it, shown so that keys and clicks reach it.
    void Open(const std::string& text = kSettings) {
        path_ = dir_.Write("settings.xml", text);
        settings_.LoadSettings(path_);
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
    // The last message box's text and icon.
    std::string LastMessage() const { return ui_->Messages().empty() ? "" : ui_->Messages().back().text; }

    TempDir dir_;
    std::string path_;
    Settings settings_;
    std::shared_ptr<RecordingUserInterface> ui_ = std::make_shared<RecordingUserInterface>();
    std::unique_ptr<frmProfiles> form_;
};

TEST_F(ProfileEditor, ListsTheProfilesAndShowsTheCurrentOnesFeatures) {
    Open();
    EXPECT_EQ(form_->objectName(), "frmProfiles");
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
    EXPECT_TRUE(Control<QPushButton>("cmdLock")->isEnabled());
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

TEST_F(ProfileEditor, ClickingARowShowsThatProfilesFeatures) {
    Open();
    ClickProfile("DEFAULT");
    ASSERT_EQ(Features()->topLevelItemCount(), 44);
    EXPECT_EQ(ItemKeys(Features()).back(), "ED_SHOW_ADVANCED_PROFILE_BUTTON");
    EXPECT_EQ(Checks(Features()).count(true), 36);
    ClickProfile("ADMINISTRATOR");
    EXPECT_EQ(Checks(Features()).count(true), 44);
    EXPECT_EQ(Current()->currentText(), "Crew") << "a row click does not change the current profile";
}

TEST_F(ProfileEditor, ACheckMarkIsWrittenIntoTheDocumentAtOnce) {
    Open();
    const Profile crew = settings_.Profiles().Item("Crew");
    ToggleFeature(0);
    EXPECT_FALSE(crew.FeatureAvailable("V4_SELECT_SCHEME"));
    EXPECT_EQ(crew.Item("V4_SELECT_SCHEME").XMLNode().FirstChildElement("AVAILABLE").IsNull(), true);
    ToggleFeature(1);
    EXPECT_TRUE(crew.FeatureAvailable("V4_PROGRAM_LOGGER"));
    EXPECT_TRUE(settings_.Profiles().Item("DEFAULT").FeatureAvailable("V4_SELECT_SCHEME")) << "other profiles keep theirs";
}

TEST_F(ProfileEditor, ChoosingTheCurrentProfileWritesCurrentProfile) {
    Open();
    Current()->setFocus();
    QTest::keyClick(Current(), Qt::Key_Up);
    EXPECT_EQ(Current()->currentText(), "DEFAULT");
    EXPECT_EQ(settings_.CurrentProfile().Key(), "DEFAULT");
    EXPECT_EQ(settings_.GetString("CURRENT_PROFILE", ""), "DEFAULT");
}

TEST_F(ProfileEditor, AddingAsksForANameAndAddsADefaultProfile) {
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
}

TEST_F(ProfileEditor, ANameThatExistsIgnoringCaseOrNoNameAddsNothing) {
    Open();
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
    EXPECT_EQ(settings_.Profiles().Count(), 3);
    EXPECT_EQ(Profiles()->topLevelItemCount(), 3);
}

TEST_F(ProfileEditor, TheLastProfileIsNeverDeleted) {
    Open("<V4SETTINGS><PROFILES><PROFILE><KEY>ONLY</KEY></PROFILE></PROFILES></V4SETTINGS>");
    Press("cmdDeleteProfile");
    ASSERT_EQ(ui_->Messages().size(), 1u);
    EXPECT_EQ(LastMessage(), "You must have at least one profile");
    EXPECT_EQ(ui_->Messages()[0].icon, MessageIcon::Critical);
    EXPECT_EQ(settings_.Profiles().Count(), 1);
    EXPECT_EQ(Profiles()->topLevelItemCount(), 1);
}

TEST_F(ProfileEditor, DeletingAsksWithCancelAsDefaultAndCancelKeepsTheProfile) {
    Open();
    ClickProfile("DEFAULT");
    ui_->QueueMessageResult(MessageResult::Cancel);
    Press("cmdDeleteProfile");
    ASSERT_EQ(ui_->Messages().size(), 1u);
    const auto& asked = ui_->Messages()[0];
    EXPECT_EQ(asked.text, "Delete profile: DEFAULT");
    EXPECT_EQ(asked.buttons, MessageButtons::OKCancel);
    EXPECT_EQ(asked.icon, MessageIcon::Information);
    EXPECT_EQ(asked.defaultButton, MessageDefaultButton::Second);
    EXPECT_EQ(settings_.Profiles().Count(), 3);
    EXPECT_EQ(Profiles()->topLevelItemCount(), 3);

    ui_->QueueMessageResult(MessageResult::OK);
    Press("cmdDeleteProfile");
    EXPECT_EQ(settings_.Profiles().Count(), 2);
    EXPECT_TRUE(settings_.Profiles().Item("DEFAULT").IsNull());
    EXPECT_EQ(Texts(Profiles()), QStringList({"ADMINISTRATOR", "Crew"}));
    EXPECT_EQ(ComboEntries(), QStringList({"ADMINISTRATOR", "Crew"}));
    // Not the current profile: the current stays, the first row is selected and loaded.
    EXPECT_EQ(settings_.CurrentProfile().Key(), "Crew");
    EXPECT_EQ(Current()->currentText(), "Crew");
    EXPECT_EQ(Profiles()->currentItem()->text(0), "ADMINISTRATOR");
    EXPECT_EQ(Checks(Features()).count(true), 44);
}

TEST_F(ProfileEditor, DeletingTheCurrentProfileMakesTheFirstRemainingCurrent) {
    Open();
    ui_->QueueMessageResult(MessageResult::OK);
    Press("cmdDeleteProfile");  // Crew: the current profile's row is selected on opening
    EXPECT_TRUE(settings_.Profiles().Item("Crew").IsNull());
    EXPECT_EQ(settings_.CurrentProfile().Key(), "ADMINISTRATOR");
    EXPECT_EQ(settings_.GetString("CURRENT_PROFILE", ""), "ADMINISTRATOR");
    EXPECT_EQ(Current()->currentText(), "ADMINISTRATOR");
    EXPECT_EQ(Profiles()->currentItem()->text(0), "ADMINISTRATOR");
}

TEST_F(ProfileEditor, LockingTakesANewPasswordAndDisablesEditing) {
    Open();
    ui_->QueueNewPassword("pw");
    Press("cmdLock");
    EXPECT_EQ(ui_->SetPasswordCount(), 1);
    EXPECT_EQ(settings_.GetString("PROFILE_PASSWORD", ""), "@cHc=");
    EXPECT_FALSE(settings_.GetBoolean("PROFILES_UNLOCKED", true));
    EXPECT_EQ(Control<QPushButton>("cmdLock")->text(), "Unlock");
    for (const char* name : {"lblSelectProfile", "lvProfiles", "cmdAddProfile", "cmdDeleteProfile",
                             "lblSetCurrentProfile", "cboCurrentProfile", "lvFeatures"})
        EXPECT_FALSE(Control<QWidget>(name)->isEnabled()) << name;
    EXPECT_TRUE(Control<QPushButton>("cmdLock")->isEnabled());
    EXPECT_TRUE(Control<QPushButton>("cmdOK")->isEnabled());
}

TEST_F(ProfileEditor, LockingWithAnEmptyOrCancelledPasswordLeavesItUnlocked) {
    Open();
    Press("cmdLock");  // unscripted: cancelled
    ui_->QueueNewPassword("");
    Press("cmdLock");
    EXPECT_EQ(ui_->SetPasswordCount(), 2);
    EXPECT_EQ(Control<QPushButton>("cmdLock")->text(), "Lock");
    EXPECT_TRUE(Profiles()->isEnabled());
    EXPECT_TRUE(settings_.GetBoolean("PROFILES_UNLOCKED", true));
    EXPECT_EQ(settings_.GetString("PROFILE_PASSWORD", "none"), "none");
}

TEST_F(ProfileEditor, APasswordWindows1252CannotHoldIsRefusedSoTheLockCanAlwaysBeOpened) {
    // Each password and whether it locks: the stored form keeps only windows-1252 characters.
    const struct {
        const char* password;
        bool locks;
    } cases[] = {{"\u03a9mega", false}, {"\u65e5\u672c", false}, {"pin \U0001F600", false}, {"Gr\u00fc\u00dfe \u20ac5", true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.password);
        Open();
        ui_->Clear();
        ui_->QueueNewPassword(c.password);
        Press("cmdLock");
        EXPECT_EQ(settings_.GetBoolean("PROFILES_UNLOCKED", true), !c.locks);
        EXPECT_EQ(Control<QPushButton>("cmdLock")->text(), c.locks ? "Unlock" : "Lock");
        EXPECT_EQ(ui::DecodePassword(settings_.GetString("PROFILE_PASSWORD", "")), c.locks ? c.password : "");
        ASSERT_EQ(ui_->Messages().size(), c.locks ? 0u : 1u);
        if (!c.locks) {
            EXPECT_NE(LastMessage().find("windows-1252"), std::string::npos);
        }
    }
}

TEST_F(ProfileEditor, UnlockingNeedsTheRightPasswordAndForgetsIt) {
    Open("<V4SETTINGS><PROFILES_UNLOCKED>0</PROFILES_UNLOCKED><PROFILE_PASSWORD>@cHc=</PROFILE_PASSWORD>"
         "<PROFILES><PROFILE><KEY>A</KEY></PROFILE></PROFILES></V4SETTINGS>");
    EXPECT_EQ(Control<QPushButton>("cmdLock")->text(), "Unlock");
    EXPECT_FALSE(Features()->isEnabled());

    ui_->QueuePasswordEntry("PW");
    Press("cmdLock");
    EXPECT_EQ(ui_->PasswordChecks(), std::vector<std::string>{"pw"});
    EXPECT_EQ(LastMessage(), "Invalid password");
    EXPECT_EQ(ui_->Messages().back().icon, MessageIcon::Exclamation);
    EXPECT_EQ(Control<QPushButton>("cmdLock")->text(), "Unlock");
    EXPECT_FALSE(settings_.GetBoolean("PROFILES_UNLOCKED", true));

    Press("cmdLock");  // cancelled
    EXPECT_EQ(ui_->Messages().size(), 2u);
    EXPECT_EQ(LastMessage(), "Invalid password");

    ui_->QueuePasswordEntry("pw");
    Press("cmdLock");
    EXPECT_EQ(Control<QPushButton>("cmdLock")->text(), "Lock");
    EXPECT_TRUE(Features()->isEnabled());
    EXPECT_EQ(settings_.Root().FirstChildElement("PROFILES_UNLOCKED").Text(), "-1");
    EXPECT_EQ(settings_.Root().FirstChildElement("PROFILE_PASSWORD").Text(), "") << "kept, but empty";
    EXPECT_FALSE(settings_.Root().FirstChildElement("PROFILE_PASSWORD").IsNull());

    // The next lock asks for a new password.
    ui_->QueueNewPassword("new");
    Press("cmdLock");
    EXPECT_EQ(ui_->SetPasswordCount(), 1);
    EXPECT_EQ(settings_.GetString("PROFILE_PASSWORD", ""), "@bmV3");
}

TEST_F(ProfileEditor, LockedWithoutAPasswordUnlocksWithoutAsking) {
    Open("<V4SETTINGS><PROFILES_UNLOCKED>0</PROFILES_UNLOCKED>"
         "<PROFILES><PROFILE><KEY>A</KEY></PROFILE></PROFILES></V4SETTINGS>");
    EXPECT_EQ(Control<QPushButton>("cmdLock")->text(), "Unlock");
    Press("cmdLock");
    EXPECT_TRUE(ui_->PasswordChecks().empty());
    EXPECT_EQ(Control<QPushButton>("cmdLock")->text(), "Lock");
    EXPECT_TRUE(settings_.GetBoolean("PROFILES_UNLOCKED", false));
}

TEST_F(ProfileEditor, AFailureIsShownAsAWarningAndTheEditorStaysOpen) {
    // A stored password that is not Base64 fails to decode inside cmdLock_Click.
    Open("<V4SETTINGS><PROFILES_UNLOCKED>0</PROFILES_UNLOCKED><PROFILE_PASSWORD>@abc</PROFILE_PASSWORD>"
         "<PROFILES><PROFILE><KEY>A</KEY></PROFILE></PROFILES></V4SETTINGS>");
    Press("cmdLock");
    ASSERT_EQ(ui_->Messages().size(), 1u);
    EXPECT_EQ(LastMessage(), "frmProfiles:cmdLock_Click : -2147221504-Unable to decode string");
    EXPECT_EQ(ui_->Messages()[0].icon, MessageIcon::Exclamation);
    EXPECT_EQ(ui_->Messages()[0].buttons, MessageButtons::OK);
    EXPECT_TRUE(form_->isVisible());
    EXPECT_EQ(Control<QPushButton>("cmdLock")->text(), "Unlock");
}

TEST(ProfileEditorWithoutSettings, EveryHandlerReportsTheMissingSettingsInsteadOfCrashing) {
    const auto ui = std::make_shared<RecordingUserInterface>();
    frmProfiles form(ui);
    form.show();
    for (const char* name : {"cmdAddProfile", "cmdDeleteProfile", "cmdLock"}) Click(Child<QPushButton>(&form, name));
    form.LoadProfiles();
    std::vector<std::string> texts;
    for (const auto& message : ui->Messages()) {
        texts.push_back(message.text);
        EXPECT_EQ(message.icon, MessageIcon::Exclamation);
    }
    const std::string notSet = " : 91-Object variable or With block variable not set";
    EXPECT_EQ(texts, (std::vector<std::string>{"frmProfiles:cmdAddProfile_Click" + notSet,
                                               "frmProfiles:cmdDeleteProfile_Click" + notSet,
                                               "frmProfiles:cmdLock_Click" + notSet,
                                               "frmProfiles:LoadProfiles" + notSet}));
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

// A person who presses Unlock and types the password at once types it into the password field.
TEST(ProfileEditorRoundTrip, APasswordTypedAfterUnlockIsAccepted) {
    TempDir dir;
    Settings settings;
    settings.LoadSettings(dir.Write("settings.xml", "<V4SETTINGS><PROFILES_UNLOCKED>0</PROFILES_UNLOCKED>"
                                                    "<PROFILE_PASSWORD>@cHc=</PROFILE_PASSWORD><PROFILES><PROFILE>"
                                                    "<KEY>A</KEY></PROFILE></PROFILES></V4SETTINGS>"));
    frmProfiles form(std::make_shared<ui::QtUserInterface>());
    form.setV4Settings(&settings);
    ASSERT_TRUE(ShowActive(&form));
    ModalScript()
        .Then([](QWidget* modal) {
            EXPECT_EQ(modal->objectName(), "frmEnterPassword");
            ASSERT_TRUE(QTest::qWaitForWindowActive(modal));
            QTest::keyClicks(QApplication::focusWidget(), "pw");
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        })
        .Run([&] { Click(Child<QPushButton>(&form, "cmdLock")); });
    EXPECT_EQ(Child<QPushButton>(&form, "cmdLock")->text(), "Lock");
    EXPECT_TRUE(settings.GetBoolean("PROFILES_UNLOCKED", false));
}

}  // namespace
