// Tests of features, profiles, the standard profiles built in, and the settings file.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "FailingDiskSteps.h"
#include "TempDir.h"
#include <meridex/frame/XmlDocument.h>
#include <meridex/settings/Profiles.h>
#include <meridex/settings/Settings.h>
#include <meridex/settings/V4StandardProfiles.h>

using namespace meridex;
using test::TempDir;
namespace fs = std::filesystem;

namespace {

const std::string kFieldCrew =
    "<V4SETTINGS><PROFILES>"
    "<PROFILE><KEY>LOCKDOWN</KEY></PROFILE>"
    "<PROFILE><KEY>Field Crew</KEY><FEATURE><KEY>v4_scheme_editor</KEY><DESCRIPTION>mine</DESCRIPTION>"
    "</FEATURE><FEATURE><KEY>HOST_SPECIAL</KEY><AVAILABLE>-1</AVAILABLE></FEATURE>"
    "<FEATURE><KEY>v4_\u017Fdi_test</KEY></FEATURE></PROFILE>"
    "<PROFILE><KEY>ADMINISTRATOR</KEY></PROFILE>"
    "<PROFILE><KEY>lockdown</KEY></PROFILE>"
    "</PROFILES><V4SCHEMES_PATH>C:\\Schemes</V4SCHEMES_PATH><CURRENT_PROFILE>field crew</CURRENT_PROFILE>"
    "</V4SETTINGS>";

std::string ChildNames(const XmlNode& element) {
    std::string names;
    for (XmlNode child = element.FirstChildElement(); child; child = child.NextSiblingElement())
        names += child.Name() + " ";
    return names;
}

Feature MakeFeature(const std::string& key, bool available) {
    Feature feature;
    feature.setKey(key);
    feature.setAvailable(available);
    return feature;
}

std::set<std::string> AvailableKeys(const Profile& profile) {
    std::set<std::string> keys;
    for (int i = 1; i <= profile.Count(); ++i)
        if (profile.Item(i).Available()) keys.insert(profile.Item(i).Key());
    return keys;
}

// Settings loaded from a file in a temporary folder.
struct SettingsFile : ::testing::Test {
    std::string Load(const std::string& contents, bool readable = true) {
        const std::string path = dir.Write("V4Settings.xml", contents);
        EXPECT_EQ(settings.LoadSettings(path), readable);
        return path;
    }
    TempDir dir;
    Settings settings;
};

}  // namespace

TEST(Feature, FieldsAreLiveViewsAndCloneIsIndependent) {
    Feature feature;
    const Feature other(feature.XMLNode());
    feature.setDescription("Unload");
    feature.setAvailable(true);
    EXPECT_EQ(other.Description(), "Unload");
    EXPECT_EQ(feature.XMLNode().SelectSingle("AVAILABLE").Text(), "-1");

    // Unavailable means no AVAILABLE element at all.
    other.setAvailable(false);
    EXPECT_TRUE(feature.XMLNode().SelectSingle("AVAILABLE").IsNull());
    feature.setDescription("");  // always written, an empty text included
    EXPECT_FALSE(feature.XMLNode().SelectSingle("DESCRIPTION").IsNull());

    // AVAILABLE is read as a number, not as a word.
    other.setAvailable(true);
    feature.XMLNode().SelectSingle("AVAILABLE").setText("2.5");
    EXPECT_TRUE(feature.Available());
    feature.XMLNode().SelectSingle("AVAILABLE").setText("True");
    EXPECT_FALSE(feature.Available());

    feature.setDescription("before");
    const Feature copy = feature.Clone();
    EXPECT_TRUE(copy.XMLNode().Parent().IsNull());
    copy.setDescription("after");
    EXPECT_EQ(feature.Description(), "before");

    const Feature none{XmlNode{}};
    none.setKey("X");
    EXPECT_EQ(none.Key(), "");
    EXPECT_TRUE(none.Clone().IsNull());
}

TEST(Profile, ItemAddRemoveAndClear) {
    Profile profile;
    profile.Add(MakeFeature("k", false));
    profile.Add(MakeFeature("ÄRZTE_LIST", false));
    EXPECT_TRUE(profile.Item(0).IsNull());
    EXPECT_TRUE(profile.Item(3).IsNull());
    EXPECT_EQ(profile.Item("ärzte_list").XMLNode(), profile.Item(2).XMLNode());
    EXPECT_TRUE(profile.FeatureExists("Ärzte_list"));
    EXPECT_FALSE(profile.FeatureAvailable("Ärzte_list"));
    EXPECT_FALSE(profile.FeatureExists("V4_UNLOAD_DATA"));

    // With a key the new feature replaces the old one and goes to the end.
    const Feature replacement = MakeFeature("unused", true);
    profile.Add(replacement, "K");
    ASSERT_EQ(profile.Count(), 2);
    EXPECT_EQ(profile.Item(2).XMLNode(), replacement.XMLNode());
    EXPECT_TRUE(profile.FeatureAvailable("k"));

    // Without a key duplicates are kept; the first one wins.
    profile.Add(MakeFeature("ärzte_list", true));
    EXPECT_EQ(profile.Count(), 3);
    EXPECT_FALSE(profile.FeatureAvailable("ÄRZTE_LIST"));

    Profile second;
    second.Add(profile.Item("K"));  // a feature of another profile moves
    EXPECT_EQ(profile.Count(), 2);
    profile.Remove("ärzte_list");
    profile.Remove(7);
    EXPECT_EQ(profile.Count(), 1);
    profile.Clear();
    EXPECT_EQ(profile.Count(), 0);
}

TEST(Profile, ViewsOfAParsedElementStayInStep) {
    const XmlDocument document = XmlDocument::Parse(
        "<PROFILE><KEY>Field Crew</KEY><FEATURE><KEY>V4_UNLOAD_DATA</KEY><AVAILABLE>-1</AVAILABLE>"
        "</FEATURE><FEATURE><KEY>ED_<!-- split -->EVENTS</KEY><AVAILABLE>1</AVAILABLE></FEATURE>"
        "<NOTE>kept</NOTE></PROFILE>");
    const Profile first(document.DocumentElement());
    const Profile second(document.DocumentElement());
    const Feature unload = first.Item("V4_UNLOAD_DATA");
    EXPECT_TRUE(first.FeatureAvailable("ed_events"));  // a key in more than one text node
    unload.setAvailable(false);
    EXPECT_FALSE(second.FeatureAvailable("V4_UNLOAD_DATA"));
    first.Clear();
    EXPECT_EQ(second.Count(), 0);
    EXPECT_FALSE(document.DocumentElement().SelectSingle("NOTE").IsNull());
    EXPECT_EQ(unload.Key(), "V4_UNLOAD_DATA");  // a removed feature stays usable
}

TEST(Profiles, CollectionOfProfiles) {
    Profiles profiles;
    Profile admin;
    profiles.Add(admin, "ADMINISTRATOR");
    profiles.Add(Profile(), "Ärzte");
    profiles.Add(Profile(), "ärzte");  // duplicates are not refused
    ASSERT_EQ(profiles.Count(), 3);
    EXPECT_EQ(profiles.Item("administrator").XMLNode(), admin.XMLNode());
    EXPECT_TRUE(profiles.Item(0).IsNull());
    EXPECT_TRUE(profiles.Item(4).IsNull());

    profiles.Remove("ÄRZTE");
    EXPECT_EQ(profiles.Item(2).Key(), "ärzte");
    profiles.Clear();
    EXPECT_EQ(profiles.Count(), 0);
}

TEST(V4StandardProfiles, AllListTheCatalogueInOrderAndSwitchOffTheirColumns) {
    const Profile admin = V4StandardProfiles::GetDefaultAdministratorProfile();
    const Profile standard = V4StandardProfiles::GetDefaultProfile();
    const Profile lockdown = V4StandardProfiles::GetDefaultLockdownProfile();
    const std::set<std::string> lockdownOn{
        "V4_SELECT_SCHEME", "V4_PROGRAM_LOGGER", "V4_INIT_NMM",     "V4_UNLOAD_DATA",
        "V4_VIEW_DATA",     "V4_TEST_MODE",      "V4_CONNECTION",   "V4_SDI_TEST",
        "V4_VELOCITY_TRACE", "V4_CORRECT_TIME",  "ED_SETTINGS",     "ED_INSTRUMENTS",
        "ED_LOGBUFFERS"};
    EXPECT_EQ(AvailableKeys(lockdown), lockdownOn);
    EXPECT_EQ(AvailableKeys(standard).size(), 36u);
    EXPECT_TRUE(standard.FeatureAvailable("ED_EVENTS"));
    for (const auto& [profile, key] :
         {std::pair{admin, "ADMINISTRATOR"}, {standard, "DEFAULT"}, {lockdown, "LOCKDOWN"}}) {
        EXPECT_EQ(profile.Key(), key);
        ASSERT_EQ(profile.Count(), 44) << key;
        EXPECT_EQ(profile.Item(26).Key(), "ED_LIBRARY_BAR") << key;  // one order for all
        EXPECT_EQ(profile.Item(44).Key(), "ED_SHOW_ADVANCED_PROFILE_BUTTON") << key;
    }
    EXPECT_EQ(AvailableKeys(admin).size(), 44u);
    // The texts users have always seen, odd ones included.
    EXPECT_EQ(admin.Item("V4_VELOCITY_TRACE").Description(), admin.Item("V4_COMMS_WINDOW").Description());
    EXPECT_EQ(admin.Item("V4_UPGRADE_FIRMWARE").Description(), "Show \"Upgrade Firwmare\" button / menu option");
    EXPECT_EQ(admin.Item("V4_MODEM_SETUP").Description(), "Show \"Modem Setup\" button /menu option");

    // Children in the order the stored documents have them.
    EXPECT_EQ(ChildNames(admin.Item(1).XMLNode()), "AVAILABLE DESCRIPTION KEY ");

    // Each call builds a new profile.
    standard.Item("V4_UNLOAD_DATA").setAvailable(false);
    EXPECT_TRUE(V4StandardProfiles::GetDefaultProfile().FeatureAvailable("V4_UNLOAD_DATA"));
}

TEST(Settings, SetRuleKeepsItsAsymmetries) {
    Settings settings;
    settings.SetString("LANG", "", true);
    EXPECT_EQ(settings.GetString("LANG", "en"), "");
    settings.SetString("LANG", "", false);
    EXPECT_TRUE(settings.Root().SelectSingle("LANG").IsNull());

    settings.SetString("UNITS", 300);
    EXPECT_EQ(settings.GetString("UNITS", ""), "300");

    settings.SetBoolean("AUTOCONNECT", true);
    EXPECT_EQ(settings.GetString("AUTOCONNECT", ""), "-1");
    settings.SetBoolean("AUTOCONNECT", false, true);
    EXPECT_FALSE(settings.GetBoolean("AUTOCONNECT", true));
    // false without SaveNull deletes the key: the caller's default comes back.
    settings.SetBoolean("AUTOCONNECT", false);
    EXPECT_TRUE(settings.GetBoolean("AUTOCONNECT", true));

    for (const auto& [text, expected] :
         std::vector<std::pair<std::string, bool>>{{"TRUE", false}, {"1", true}, {"0.0", false}}) {
        settings.SetString("TABLET_MODE", text);
        EXPECT_EQ(settings.GetBoolean("TABLET_MODE", true), expected) << text;
    }

    // Keys that are not one element name are left alone.
    const std::string before = settings.Root().Xml();
    for (const std::string key : {"", "BAD KEY", "A/B", "*", "PROFILES"}) {
        settings.SetString(key, "value", true);
        EXPECT_EQ(settings.GetString(key, "dflt"), "dflt") << key;
    }
    EXPECT_EQ(settings.Root().Xml(), before);
}

TEST_F(SettingsFile, LoadMovesProfilesLastAndCompletesFromTheCatalogue) {
    Load(kFieldCrew);
    EXPECT_EQ(ChildNames(settings.Root()), "V4SCHEMES_PATH CURRENT_PROFILE PROFILES ");

    // Each profile as "KEY count " and + or - per feature. Field Crew keeps its own unknown feature; an
    // existing one (matched ignoring case, the long s folding to "s") is not touched. The key is compared
    // exactly: "lockdown" gets the default values.
    std::string described;
    for (int i = 1; i <= settings.Profiles().Count(); ++i) {
        const Profile profile = settings.Profiles().Item(i);
        described += profile.Key() + " " + std::to_string(profile.Count()) + " ";
        for (const char* key : {"V4_UNLOAD_DATA", "ED_EVENTS", "ED_XML_BAR", "V4_SCHEME_EDITOR", "V4_SDI_TEST"})
            described += profile.FeatureAvailable(key) ? '+' : '-';
        described += "|";
    }
    EXPECT_EQ(described, "LOCKDOWN 44 +---+|Field Crew 45 ++---|ADMINISTRATOR 44 +++++|lockdown 44 ++-++|");
    const Profile crew = settings.Profiles().Item(2);
    EXPECT_EQ(crew.Item("V4_SCHEME_EDITOR").Description(), "mine");
    EXPECT_EQ(crew.Item(4).Key(), "V4_SELECT_SCHEME");  // added behind its own
    // Completion is not a change the user made, nor is an unchanged value.
    settings.SetString("V4SCHEMES_PATH", "C:\\Schemes");
    EXPECT_TRUE(settings.Root().SelectSingle("CHANGED").IsNull());
    // Reading a missing key stores its default unless that is "" or "0".
    EXPECT_FALSE(settings.GetBoolean("SETUP_RUN", false));
    EXPECT_TRUE(settings.Root().SelectSingle("SETUP_RUN").IsNull());
    EXPECT_TRUE(settings.Root().SelectSingle("CHANGED").IsNull());
    EXPECT_EQ(settings.GetString("UNITS", "metric"), "metric");
    EXPECT_EQ(settings.Root().SelectSingle("UNITS").Text(), "metric");
    EXPECT_EQ(settings.Root().SelectSingle("CHANGED").Text(), "-1");

    // CURRENT_PROFILE is found ignoring case; the current profile is a view.
    EXPECT_EQ(settings.CurrentProfile().XMLNode(), crew.XMLNode());
}

TEST_F(SettingsFile, CurrentProfileAssignmentAndDanglingNames) {
    Load("<V4SETTINGS><CURRENT_PROFILE>GONE</CURRENT_PROFILE><PROFILES>"
         "<PROFILE><KEY>Twin</KEY></PROFILE><PROFILE><KEY>TWIN</KEY></PROFILE></PROFILES></V4SETTINGS>");
    EXPECT_TRUE(settings.CurrentProfile().IsNull());
    EXPECT_FALSE(settings.CurrentProfile().FeatureAvailable("V4_VIEW_DATA"));

    // Of two profiles with one name, the first is the one found.
    settings.setCurrentProfile(settings.Profiles().Item("TWIN"));
    EXPECT_EQ(settings.GetString("CURRENT_PROFILE", ""), "Twin");

    // Assigning none still writes the (empty) key.
    settings.setCurrentProfile(Profile(XmlNode{}));
    EXPECT_TRUE(settings.CurrentProfile().IsNull());
    EXPECT_FALSE(settings.Root().SelectSingle("CURRENT_PROFILE").IsNull());

    // A second load replaces everything, the current profile included.
    settings.setCurrentProfile(settings.Profiles().Item(1));
    settings.LoadSettings(dir.Write("other.xml", "<V4SETTINGS/>"));
    EXPECT_TRUE(settings.CurrentProfile().IsNull());
    EXPECT_EQ(ChildNames(settings.Root()), "PROFILES ");
}

TEST_F(SettingsFile, SavedFileIsTheRootElementAndCrLf) {
    // As the legacy host wrote it: windows-1252 with no declaration.
    const std::string path = Load("<V4SETTINGS><DATAFILENAME>Caf\xE9</DATAFILENAME><PROFILES><PROFILE><KEY>"
                                  "\xC4rzte</KEY></PROFILE></PROFILES><CURRENT_PROFILE>\xE4rzte</CURRENT_PROFILE>"
                                  "</V4SETTINGS>\r\n");
    EXPECT_EQ(settings.GetString("DATAFILENAME", ""), "Café");
    EXPECT_EQ(settings.CurrentProfile().Key(), "Ärzte");
    settings.SetString("SCHEME", "a & <b>");
    ASSERT_TRUE(settings.SaveSettings(""));
    settings.SetString("OFFICE", "Büro €");
    ASSERT_TRUE(settings.SaveSettings(""));

    // Plain ASCII, everything above 127 as a reference: a UTF-8 reader and a
    // windows-1252 reader (or editor) both see "Büro €".
    const std::string saved = TempDir::Read(path);
    EXPECT_EQ(saved.rfind("<V4SETTINGS>", 0), 0u);
    EXPECT_EQ(saved.find("\r\n"), saved.size() - 2);
    EXPECT_TRUE(std::all_of(saved.begin(), saved.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; }));
    EXPECT_NE(saved.find("<OFFICE>B&#252;ro &#8364;</OFFICE>"), std::string::npos);

    // A windows-1252 editor adds one byte: the rest still reads right.
    dir.Write("V4Settings.xml", saved.substr(0, saved.size() - 2) + "<!-- \xE9 -->\r\n");
    Settings reloaded;
    ASSERT_TRUE(reloaded.LoadSettings(path));
    EXPECT_EQ(reloaded.GetString("DATAFILENAME", "") + reloaded.GetString("OFFICE", ""), "CaféBüro €");
    EXPECT_EQ(reloaded.GetString("SCHEME", ""), "a & <b>");
    EXPECT_EQ(reloaded.CurrentProfile().Count(), 44);

    // A new path given to the save is remembered.
    ASSERT_TRUE(settings.SaveSettings(dir.File("copy.xml")));
    EXPECT_EQ(settings.SettingsFile(), dir.File("copy.xml"));
}

TEST_F(SettingsFile, UnreadableFilesGiveEmptySettingsAndAreKeptBeforeTheSave) {
    for (const std::string contents : {"<V4SETTINGS><LANG>en</LANG>", "<COMMSPROFILES/>"}) {
        const std::string path = Load(contents, false);
        fs::remove(path + ".unreadable");
        EXPECT_EQ(settings.SettingsFile(), path);
        EXPECT_EQ(TempDir::Read(path), contents);  // loading never writes

        settings.SetString("LANG", "fr");
        ASSERT_TRUE(settings.SaveSettings());
        EXPECT_EQ(TempDir::Read(path + ".unreadable"), contents);
        EXPECT_EQ(TempDir::Read(path), settings.Root().Xml() + "\r\n");
        ASSERT_TRUE(settings.SaveSettings());  // kept once: the next save just writes
        EXPECT_FALSE(fs::exists(path + ".unreadable-1"));
    }

    // Loading another file in between does not forget that the first one
    // still has to be kept before a save replaces it.
    const std::string bad = dir.Write("Bad.xml", "<V4SETTINGS>");
    Settings twice;
    EXPECT_FALSE(twice.LoadSettings(bad));
    EXPECT_TRUE(twice.LoadSettings(dir.Write("Good.xml", "<V4SETTINGS/>")));
    ASSERT_TRUE(twice.SaveSettings(bad));
    EXPECT_EQ(TempDir::Read(bad + ".unreadable"), "<V4SETTINGS>");

    // A missing file is nothing to keep; the first save creates it.
    fs::create_directories(dir.File("new"));
    Settings fresh;
    EXPECT_FALSE(fresh.LoadSettings(dir.File("new/V4Settings.xml")));
    ASSERT_TRUE(fresh.SaveSettings());
    EXPECT_EQ(TempDir::Entries(dir.File("new")).size(), 1u);
}

TEST_F(SettingsFile, SaveThatCannotWriteLeavesTheOldFileAlone) {
    const std::string path = Load(kFieldCrew);
    settings.SetString("LANG", "de");
    fs::permissions(path, fs::perms::owner_read);
    EXPECT_FALSE(settings.SaveSettings());
    EXPECT_EQ(TempDir::Read(path), kFieldCrew);

    // A read-only file that could not be read: refused before any copy is kept.
    const std::string broken = dir.Write("broken.xml", "<V4SETTINGS>");
    fs::permissions(broken, fs::perms::owner_read);
    Settings fromBroken;
    EXPECT_FALSE(fromBroken.LoadSettings(broken));
    EXPECT_FALSE(fromBroken.SaveSettings());
    EXPECT_FALSE(fs::exists(broken + ".unreadable"));
    EXPECT_FALSE(Settings().SaveSettings()) << "no file to save to";

    // A disk that fails at a write, the flush or the rename: false, nothing changed.
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
    for (int step = 0; step < 3; ++step) {
        test::FailingDiskSteps disk;
        disk.error = step == 0 ? ENOSPC : EIO;
        (step == 0 ? disk.failWrite : step == 1 ? disk.failSync : disk.failRename) = 1;
        EXPECT_FALSE(settings.SaveSettings());
        EXPECT_EQ(TempDir::Read(path), kFieldCrew);
    }
}

// The core has no editor of its own: the dialog library installs one, and the store saves after it.
TEST_F(SettingsFile, ShowProfileEditorRunsTheInstalledEditorThenSaves) {
    const std::string path = Load(kFieldCrew);
    settings.SetString("LANG", "de");
    Settings::setProfileEditorOpener({});
    EXPECT_FALSE(settings.ShowProfileEditor());
    EXPECT_EQ(TempDir::Read(path), kFieldCrew) << "nothing shown, nothing saved";

    int owner = 0;
    std::vector<std::pair<Settings*, void*>> opened;
    bool savedWhileOpen = false;
    Settings::setProfileEditorOpener([&](Settings& edited, void* ownerWindow) {
        opened.emplace_back(&edited, ownerWindow);
        savedWhileOpen = savedWhileOpen || TempDir::Read(path) != kFieldCrew;
        edited.SetString("LANG", "fr");
    });
    EXPECT_FALSE(settings.ShowProfileEditor(&owner));
    EXPECT_EQ(opened, (std::vector<std::pair<Settings*, void*>>{{&settings, &owner}}));
    EXPECT_FALSE(savedWhileOpen) << "saved only when the editor has closed";
    Settings reloaded;
    reloaded.LoadSettings(path);
    EXPECT_EQ(reloaded.GetString("LANG", ""), "fr");

    // Settings without a path are edited but have nowhere to be saved.
    Settings fresh;
    EXPECT_FALSE(fresh.ShowProfileEditor());
    ASSERT_EQ(opened.size(), 2u);
    EXPECT_EQ(opened[1].first, &fresh);
    Settings::setProfileEditorOpener({});
}

// Two people open one file whose profiles lack catalogue features: the
// features completion adds are no change of either, so one person's change
// of such a feature merges into the other's save without a conflict copy.
TEST_F(SettingsFile, CompletedFeaturesMergeWithoutAConflict) {
    const std::string path = Load(kFieldCrew);
    Settings theirs;
    ASSERT_TRUE(theirs.LoadSettings(path));
    theirs.Profiles().Item("Field Crew").Item("V4_VIEW_DATA").setAvailable(false);
    ASSERT_TRUE(theirs.SaveSettings());
    settings.SetString("UNITS", "metric");
    ASSERT_TRUE(settings.SaveSettings());
    EXPECT_EQ(settings.ConflictCopy(), "");
    Settings reread;
    ASSERT_TRUE(reread.LoadSettings(path));
    EXPECT_FALSE(reread.Profiles().Item("Field Crew").FeatureAvailable("V4_VIEW_DATA"));
    EXPECT_EQ(reread.GetString("UNITS", ""), "metric");
}
