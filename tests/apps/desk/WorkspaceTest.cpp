#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include <meridex/settings/Settings.h>

#include "TempDir.h"
#include "Workspace.h"

namespace fs = std::filesystem;
using meridex::Settings;
using meridex::desk::Workspace;
using meridex::test::TempDir;

TEST(Workspace, FirstUseCopiesTheDemoAndLaterUsesKeepWhatIsThere) {
    TempDir tmp;
    const Workspace workspace(tmp.File("ws"));
    std::string error;
    ASSERT_TRUE(workspace.Prepare(MERIDEX_DEMO_DIR, &error)) << error;
    EXPECT_TRUE(fs::is_regular_file(workspace.SettingsFile()));
    EXPECT_TRUE(fs::is_regular_file(workspace.AddressBookFile()));
    EXPECT_TRUE(fs::is_regular_file(workspace.CommsMapFile()));
    EXPECT_TRUE(fs::is_regular_file(workspace.DefaultRemoteSchemes() / "North" / "Weir1.SXS"));
    EXPECT_TRUE(fs::is_directory(workspace.FirmwareFolder()));
    EXPECT_FALSE(fs::exists(workspace.Folder() / "frame")) << "the demo's test files stay behind";

    const std::string edited = tmp.Write("ws/settings/V4Settings.xml", "<V4SETTINGS><LANG>fr</LANG></V4SETTINGS>\r\n");
    fs::remove_all(workspace.FirmwareFolder());
    ASSERT_TRUE(workspace.Prepare(MERIDEX_DEMO_DIR, &error)) << error;
    EXPECT_EQ(TempDir::Read(edited), "<V4SETTINGS><LANG>fr</LANG></V4SETTINGS>\r\n");
    EXPECT_TRUE(fs::is_directory(workspace.FirmwareFolder())) << "a missing subfolder is made again";
}

TEST(Workspace, WithoutADemoTheFoldersAreStillMadeAndOnesThatCannotBeMadeAreReported) {
    TempDir tmp;
    const Workspace workspace(tmp.File("ws"));
    ASSERT_TRUE(workspace.Prepare(tmp.File("no-demo-here")));
    EXPECT_TRUE(fs::is_directory(workspace.DefaultLocalSchemes()));
    EXPECT_TRUE(fs::is_directory(workspace.DefaultRemoteSchemes()));
    EXPECT_FALSE(fs::exists(workspace.SettingsFile()));

    std::string error;
    EXPECT_FALSE(Workspace(fs::path(tmp.Write("plain-file", "x")) / "ws").Prepare(MERIDEX_DEMO_DIR, &error));
    EXPECT_NE(error.find("Cannot create the workspace"), std::string::npos) << error;
}

TEST(Workspace, TheDefaultFolderIsUnderTheUsersDataFolder) {
    TempDir tmp;
    // The test program points XDG_DATA_HOME at a scratch folder of its own; HOME is pointed at one here.
    const std::string data = std::getenv("XDG_DATA_HOME");
    EXPECT_EQ(Workspace::DefaultFolder(), fs::path(data) / "meridex" / "workspace");
    const char* home = std::getenv("HOME");
    const std::string oldHome = home ? home : "";
    setenv("HOME", tmp.Path().c_str(), 1);
    unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(Workspace::DefaultFolder(), fs::path(tmp.Path()) / ".local" / "share" / "meridex" / "workspace");
    setenv("XDG_DATA_HOME", data.c_str(), 1);
    if (home) setenv("HOME", oldHome.c_str(), 1);
    else unsetenv("HOME");
}

TEST(Workspace, TheSettingsSchemesPathIsHonouredWhereItExists) {
    TempDir tmp;
    const Workspace workspace(tmp.File("ws"));
    Settings settings;
    EXPECT_EQ(workspace.LocalSchemes(settings), workspace.DefaultLocalSchemes());
    settings.SetString("V4SCHEMES_PATH", "C:\\Meridex\\V4\\Schemes");
    EXPECT_EQ(workspace.LocalSchemes(settings), workspace.DefaultLocalSchemes()) << "a path of another PC is passed over";
    fs::create_directories(tmp.File("elsewhere"));
    settings.SetString("V4SCHEMES_PATH", tmp.File("elsewhere"));
    EXPECT_EQ(workspace.LocalSchemes(settings), fs::path(tmp.File("elsewhere")));
}
