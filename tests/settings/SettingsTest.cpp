#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "TempDir.h"
#include "frame/XmlDocument.h"
#include "settings/Settings.h"

namespace meridex {
namespace {

namespace fs = std::filesystem;
using test::TempDir;

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
    for (XmlNode child = element.FirstChildElement(); child; child = child.NextSiblingElement()) {
        names += child.Name() + " ";
    }
    return names;
}

TEST(Settings, SetRuleKeepsItsAsymmetries) {
    Settings settings;
    EXPECT_EQ(settings.Profiles().Count(), 0);
    EXPECT_TRUE(settings.CurrentProfile().IsNull());
    EXPECT_EQ(ChildNames(settings.Root()), "PROFILES ");

    settings.SetString("LANG", "", true);
    EXPECT_FALSE(settings.Root().SelectSingle("LANG").IsNull());
    EXPECT_EQ(settings.GetString("LANG", "en"), "");
    settings.SetString("LANG", "", false);
    EXPECT_TRUE(settings.Root().SelectSingle("LANG").IsNull());

    settings.SetString("UNITS", "0", true);
    EXPECT_EQ(settings.GetString("UNITS", "x"), "0");
    settings.SetString("UNITS", "0");
    EXPECT_TRUE(settings.Root().SelectSingle("UNITS").IsNull());
    settings.SetString("UNITS", 300);
    EXPECT_EQ(settings.GetString("UNITS", ""), "300");

    settings.SetBoolean("AUTOCONNECT", true);
    EXPECT_EQ(settings.GetString("AUTOCONNECT", ""), "-1");
    settings.SetBoolean("AUTOCONNECT", false, true);
    EXPECT_EQ(settings.GetString("AUTOCONNECT", ""), "0");
    EXPECT_FALSE(settings.GetBoolean("AUTOCONNECT", true));
    // false without SaveNull deletes the key: the caller's default comes back.
    settings.SetBoolean("AUTOCONNECT", false);
    EXPECT_TRUE(settings.Root().SelectSingle("AUTOCONNECT").IsNull());
    EXPECT_TRUE(settings.GetBoolean("AUTOCONNECT", true));

    for (const auto& [text, expected] : std::vector<std::pair<std::string, bool>>{
             {"TRUE", false}, {"yes", false}, {"1", true}, {"-1", true}, {"2.5", true},
             {"0.0", false}, {"&H10", true}}) {
        settings.SetString("TABLET_MODE", text);
        EXPECT_EQ(settings.GetBoolean("TABLET_MODE", true), expected) << text;
    }
    EXPECT_EQ(ChildNames(settings.Root()).rfind("PROFILES ", 0), 0u);
}

TEST(Settings, KeysThatAreNotElementNamesAreLeftAlone) {
    TempDir dir;
    Settings settings;
    settings.SetString("V4DATA_PATH", "D:\\Data");
    const std::string before = settings.Root().Xml();
    for (const std::string key : {"", "BAD KEY", "1ST", "A/B", "*", "PROFILES", "PROFILES/PROFILE",
                                  "<X>", "V4DATA_PATH/.."}) {
        settings.SetString(key, "value", true);
        settings.SetBoolean(key, true, true);
        EXPECT_EQ(settings.GetString(key, "dflt"), "dflt") << key;
        EXPECT_TRUE(settings.GetBoolean(key, true)) << key;
    }
    EXPECT_EQ(settings.Root().Xml(), before);
    EXPECT_EQ(settings.Profiles().XMLNode().Parent(), settings.Root());
}

TEST(Settings, ReadingAMissingKeyStoresItsDefaultUnlessEmptyOrZero) {
    TempDir dir;
    const std::string path = dir.Write("V4Settings.xml", "<V4SETTINGS><LANG>en</LANG></V4SETTINGS>");
    Settings settings;
    ASSERT_TRUE(settings.LoadSettings(path));
    EXPECT_EQ(settings.GetString("LANG", "de"), "en");
    EXPECT_TRUE(settings.Root().SelectSingle("CHANGED").IsNull());
    settings.SetString("LANG", "en");  // unchanged: not rewritten, no change mark
    EXPECT_TRUE(settings.Root().SelectSingle("CHANGED").IsNull());
    EXPECT_FALSE(settings.GetBoolean("SETUP_RUN", false));
    EXPECT_EQ(settings.GetString("SCHEME", ""), "");
    EXPECT_TRUE(settings.Root().SelectSingle("SETUP_RUN").IsNull());
    EXPECT_TRUE(settings.Root().SelectSingle("CHANGED").IsNull());
    EXPECT_EQ(settings.GetString("UNITS", "metric"), "metric");
    EXPECT_EQ(settings.Root().SelectSingle("UNITS").Text(), "metric");
    EXPECT_EQ(settings.Root().SelectSingle("CHANGED").Text(), "-1");
}

TEST(Settings, LoadMovesProfilesLastAndCompletesFromTheCatalogue) {
    TempDir dir;
    Settings settings;
    ASSERT_TRUE(settings.LoadSettings(dir.Write("V4Settings.xml", kFieldCrew)));
    EXPECT_EQ(ChildNames(settings.Root()), "V4SCHEMES_PATH CURRENT_PROFILE PROFILES ");

    const Profiles profiles = settings.Profiles();
    ASSERT_EQ(profiles.Count(), 4);
    const Profile lockdown = profiles.Item(1);
    const Profile crew = profiles.Item(2);
    const Profile admin = profiles.Item(3);
    const Profile lowerLockdown = profiles.Item(4);
    EXPECT_EQ(lockdown.Count(), 44);
    EXPECT_EQ(admin.Count(), 44);
    EXPECT_EQ(crew.Count(), 45);  // its own unknown feature is kept

    EXPECT_TRUE(lockdown.FeatureAvailable("V4_UNLOAD_DATA"));
    EXPECT_FALSE(lockdown.FeatureAvailable("V4_SCHEME_EDITOR"));
    EXPECT_FALSE(lockdown.FeatureAvailable("ED_EVENTS"));
    EXPECT_TRUE(admin.FeatureAvailable("ED_XML_BAR"));
    // The profile key is compared exactly: "lockdown" gets the default values.
    EXPECT_TRUE(lowerLockdown.FeatureAvailable("V4_SCHEME_EDITOR"));
    EXPECT_FALSE(lowerLockdown.FeatureAvailable("ED_XML_BAR"));

    // An existing feature (matched ignoring case) is not touched.
    EXPECT_FALSE(crew.FeatureAvailable("V4_SCHEME_EDITOR"));
    EXPECT_EQ(crew.Item("V4_SCHEME_EDITOR").Description(), "mine");
    EXPECT_TRUE(crew.FeatureAvailable("HOST_SPECIAL"));
    EXPECT_FALSE(crew.FeatureAvailable("V4_SDI_TEST"));  // its long s folds to "s"
    EXPECT_TRUE(crew.FeatureAvailable("ED_EVENTS"));
    EXPECT_EQ(crew.Item(4).Key(), "V4_SELECT_SCHEME");  // added behind its own
    // Completion is not a change the user made.
    EXPECT_TRUE(settings.Root().SelectSingle("CHANGED").IsNull());

    // CURRENT_PROFILE is found ignoring case; the current profile is a view.
    ASSERT_FALSE(settings.CurrentProfile().IsNull());
    EXPECT_EQ(settings.CurrentProfile().XMLNode(), crew.XMLNode());
    crew.Item("V4_UNLOAD_DATA").setAvailable(false);
    EXPECT_FALSE(settings.CurrentProfile().FeatureAvailable("V4_UNLOAD_DATA"));
}

TEST(Settings, CurrentProfileAssignmentAndDanglingNames) {
    TempDir dir;
    Settings settings;
    const std::string path = dir.Write(
        "V4Settings.xml",
        "<V4SETTINGS><CURRENT_PROFILE>GONE</CURRENT_PROFILE><PROFILES>"
        "<PROFILE><KEY>Twin</KEY><FEATURE><KEY>V4_VIEW_DATA</KEY><AVAILABLE>-1</AVAILABLE></FEATURE>"
        "</PROFILE><PROFILE><KEY>TWIN</KEY><FEATURE><KEY>V4_VIEW_DATA</KEY></FEATURE></PROFILE>"
        "</PROFILES></V4SETTINGS>");
    ASSERT_TRUE(settings.LoadSettings(path));
    EXPECT_TRUE(settings.CurrentProfile().IsNull());
    EXPECT_FALSE(settings.CurrentProfile().FeatureAvailable("V4_VIEW_DATA"));
    EXPECT_EQ(settings.GetString("CURRENT_PROFILE", ""), "GONE");

    // Of two profiles with one name, the first is the one found.
    settings.setCurrentProfile(settings.Profiles().Item("twin"));
    EXPECT_EQ(settings.GetString("CURRENT_PROFILE", ""), "Twin");
    ASSERT_TRUE(settings.SaveSettings());
    Settings reloaded;
    reloaded.LoadSettings(path);
    EXPECT_TRUE(reloaded.CurrentProfile().FeatureAvailable("V4_VIEW_DATA"));

    // Assigning none still writes the (empty) key.
    settings.setCurrentProfile(Profile(XmlNode{}));
    EXPECT_TRUE(settings.CurrentProfile().IsNull());
    EXPECT_FALSE(settings.Root().SelectSingle("CURRENT_PROFILE").IsNull());
    EXPECT_EQ(settings.GetString("CURRENT_PROFILE", "x"), "");

    // A second load replaces everything, the current profile included.
    settings.LoadSettings(dir.Write("other.xml", "<V4SETTINGS/>"));
    EXPECT_TRUE(settings.CurrentProfile().IsNull());
    EXPECT_EQ(settings.Profiles().Count(), 0);
    EXPECT_EQ(ChildNames(settings.Root()), "PROFILES ");
}

TEST(Settings, SavedFileIsTheRootElementAndCrLf) {
    TempDir dir;
    const std::string path = dir.Write("V4Settings.xml", kFieldCrew);
    Settings settings;
    ASSERT_TRUE(settings.LoadSettings(path));
    const std::string huge(1 << 20, 'x');
    settings.SetString("DATAFILENAME", "Données & <more>");
    settings.SetString("NRT_UPLOADFILE", huge);
    ASSERT_TRUE(settings.SaveSettings(""));

    const std::string saved = TempDir::Read(path);
    EXPECT_EQ(saved.rfind("<V4SETTINGS>", 0), 0u);
    ASSERT_GE(saved.size(), 2u);
    EXPECT_EQ(saved.substr(saved.size() - 2), "\r\n");
    EXPECT_EQ(saved.find("\r\n"), saved.size() - 2);
    EXPECT_EQ(saved, settings.Root().Xml() + "\r\n");

    Settings reloaded;
    ASSERT_TRUE(reloaded.LoadSettings(path));
    EXPECT_EQ(reloaded.GetString("DATAFILENAME", ""), "Données & <more>");
    EXPECT_EQ(reloaded.GetString("NRT_UPLOADFILE", ""), huge);
    EXPECT_EQ(reloaded.Profiles().Item("Field Crew").Count(), 45);

    // A new path given to the save is remembered.
    const std::string copy = dir.File("copy.xml");
    ASSERT_TRUE(settings.SaveSettings(copy));
    EXPECT_EQ(settings.SettingsFile(), copy);
    EXPECT_TRUE(fs::exists(copy));
}

TEST(Settings, LegacyDocumentsLoadInEitherEncoding) {
    TempDir dir;
    const std::string body1252 =
        "<V4SETTINGS><DATAFILENAME>Caf\xE9</DATAFILENAME><PROFILES><PROFILE><KEY>\xC4rzte</KEY>"
        "</PROFILE></PROFILES><CURRENT_PROFILE>\xE4rzte</CURRENT_PROFILE></V4SETTINGS>\r\n";
    const std::string bodyUtf8 =
        "<V4SETTINGS><DATAFILENAME>Caf\xC3\xA9</DATAFILENAME><PROFILES><PROFILE><KEY>\xC3\x84rzte</KEY>"
        "</PROFILE></PROFILES><CURRENT_PROFILE>\xC3\xA4rzte</CURRENT_PROFILE></V4SETTINGS>\r\n";
    const std::vector<std::pair<std::string, std::string>> files{
        {"declared-1252.xml", "<?xml version = \"1.0\" encoding=\"windows-1252\"?>\r\n" + body1252},
        {"bare-1252.xml", body1252},
        {"declared-utf8.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + bodyUtf8},
        {"bare-utf8.xml", bodyUtf8},
        {"bom-utf8.xml", "\xEF\xBB\xBF" + bodyUtf8},
    };
    for (const auto& [name, contents] : files) {
        SCOPED_TRACE(name);
        const std::string path = dir.Write(name, contents);
        Settings settings;
        ASSERT_TRUE(settings.LoadSettings(path));
        EXPECT_EQ(settings.GetString("DATAFILENAME", ""), "Café");
        ASSERT_FALSE(settings.CurrentProfile().IsNull());
        EXPECT_EQ(settings.CurrentProfile().Key(), "Ärzte");
        EXPECT_EQ(settings.CurrentProfile().Count(), 44);
        ASSERT_TRUE(settings.SaveSettings());
        Settings again;
        ASSERT_TRUE(again.LoadSettings(path));
        EXPECT_EQ(again.GetString("DATAFILENAME", ""), "Café");
    }
}

TEST(Settings, UnreadableFilesGiveEmptySettingsAndAreKeptBeforeTheSave) {
    TempDir dir;
    const std::vector<std::string> unreadable{
        "<V4SETTINGS><LANG>en</LANG>", "<COMMSPROFILES/>",
        "<!DOCTYPE x [<!ENTITY a \"aaaa\">]><V4SETTINGS>&a;</V4SETTINGS>", std::string("\0\1\2", 3)};
    for (const std::string& contents : unreadable) {
        const std::string path = dir.Write("V4Settings.xml", contents);
        fs::remove(path + ".unreadable");
        Settings settings;
        EXPECT_FALSE(settings.LoadSettings(path));
        EXPECT_EQ(settings.SettingsFile(), path);
        EXPECT_EQ(settings.Profiles().Count(), 0);
        EXPECT_EQ(TempDir::Read(path), contents);  // loading never writes

        settings.SetString("LANG", "fr");
        ASSERT_TRUE(settings.SaveSettings());
        EXPECT_EQ(TempDir::Read(path + ".unreadable"), contents);
        EXPECT_EQ(TempDir::Read(path), settings.Root().Xml() + "\r\n");
        // Kept once: the next save just writes.
        ASSERT_TRUE(settings.SaveSettings());
        EXPECT_FALSE(fs::exists(path + ".unreadable-1"));
    }

    // A missing file is nothing to keep; the first save creates it.
    const std::string missing = dir.File("new/V4Settings.xml");
    fs::create_directories(dir.File("new"));
    Settings settings;
    EXPECT_FALSE(settings.LoadSettings(missing));
    ASSERT_TRUE(settings.SaveSettings());
    EXPECT_TRUE(fs::exists(missing));
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.File("new")), fs::directory_iterator()), 1);
}

TEST(Settings, SaveThatCannotWriteLeavesTheOldFileAlone) {
    TempDir dir;
    const std::string path = dir.Write("V4Settings.xml", kFieldCrew);
    Settings settings;
    ASSERT_TRUE(settings.LoadSettings(path));
    settings.SetString("LANG", "de");

    fs::permissions(path, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    EXPECT_FALSE(settings.SaveSettings());
    EXPECT_EQ(TempDir::Read(path), kFieldCrew);
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);

    // A read-only file that could not be read: refused before any copy is kept.
    const std::string broken = dir.Write("broken.xml", "<V4SETTINGS>");
    fs::permissions(broken, fs::perms::owner_read);
    Settings fromBroken;
    EXPECT_FALSE(fromBroken.LoadSettings(broken));
    EXPECT_FALSE(fromBroken.SaveSettings());
    EXPECT_FALSE(fs::exists(broken + ".unreadable"));
    EXPECT_EQ(TempDir::Read(broken), "<V4SETTINGS>");

    // The folder has gone.
    const std::string gone = dir.File("gone/V4Settings.xml");
    fs::create_directories(dir.File("gone"));
    Settings other;
    other.LoadSettings(gone);
    fs::remove_all(dir.File("gone"));
    EXPECT_FALSE(other.SaveSettings());
    EXPECT_FALSE(fs::exists(dir.File("gone")));

    // A file that has gone while its folder stays is written again.
    fs::remove(path);
    EXPECT_TRUE(settings.SaveSettings());
    EXPECT_EQ(TempDir::Read(path), settings.Root().Xml() + "\r\n");

    // A folder where the file should be is left alone.
    fs::create_directories(dir.File("folder.xml"));
    EXPECT_FALSE(settings.SaveSettings(dir.File("folder.xml")));
    EXPECT_TRUE(fs::is_directory(dir.File("folder.xml")));

    Settings nowhere;
    EXPECT_FALSE(nowhere.SaveSettings());
}

}  // namespace
}  // namespace meridex
