#include <gtest/gtest.h>
#include <meridex/addressbook/AddressBook.h>
#include <meridex/settings/Settings.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "CommsTestSupport.h"

// A settings document, an address book and a map, each made by the library
// from the same steps and then opened and saved once (as the host does:
// loading completes the profiles and numbers the map's keys), must be the same
// bytes on every system, and such a document one system saved must load on
// another and save back byte for byte. The documents under made-on-linux/ are
// what the Linux build makes; this test runs on Linux and, under Wine, on
// Windows. MERIDEX_REMAKE_DOCUMENTS=<folder> also writes this system's there.
namespace meridex::test {
namespace {

const char* const kNames[] = {"V4Settings.xml", "AddressBook.xml", "CommsProfiles.xml"};

// Beside the test program, where the build copies them; tests run there.
std::string MadeOnLinux(const std::string& name) {
    const std::string bytes = TempDir::Read("made-on-linux/" + name);
    EXPECT_FALSE(bytes.empty()) << "made-on-linux/" << name << " is missing: run the test in its build folder";
    return bytes;
}

// Non-ASCII names in both the Latin-1 and the wider ranges, a back slash, a
// Windows path and markup characters, as field PCs hold them.
void MakeSettings(const std::string& path) {
    Settings settings;
    settings.LoadSettings(path);  // missing: the standard profiles
    settings.SetString("V4SCHEMES_PATH", "C:\\Schemes\\Südwest Ünïcödé");
    settings.SetString("COMPANY", "Wässer & Söhne <Hydro> \"€\" \u0141\u00f3d\u017a");
    settings.SetString("UNITS", 300);
    settings.SetBoolean("AUTOCONNECT", true);
    Profile crew;
    crew.setKey("Field Crew");
    Feature editor;
    editor.setKey("V4_SCHEME_EDITOR");
    editor.setDescription("Schemata bearbeiten");
    editor.setAvailable(false);
    crew.Add(editor);
    settings.Profiles().Add(crew);
    settings.setCurrentProfile(crew);
    ASSERT_TRUE(settings.SaveSettings(path));
}

void MakeAddressBook(const std::string& path, CommsProfileManager& map) {
    AddressBook book;
    book.LoadAddressBook(path);
    SiteGroup north;
    north.setName("Nördliche Pegel");
    book.Sites().AddGroup(north);
    SiteGroup creek;
    creek.setName("Hill Creek");
    north.AddGroup(creek);
    Site weir;
    weir.setName("Weir 2 (Łódź)");
    weir.setProfile(map.AddTCPConnection());
    creek.AddSite(weir);
    Site tide;
    tide.setName("Tide 4 & <Coast>");
    tide.setProfile(map.AddGPRSProxyConnection());
    book.Sites().AddSite(tide);
    book.SaveAddressBook(path);
}

void MakeMap(const std::string& path, CommsProfileManager& map) {
    XmlNode modem = map.AddRS232PhoneModem("12");
    modem.SelectSingle("NAME").setText("Modem im Keller \u00b7 COM12");
    ASSERT_TRUE(map.SaveXMLMapFile(path));
}

struct Documents : ::testing::Test {
    // Made here, now, by this system.
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(MakeSettings(dir.File("V4Settings.xml")));
        {
            auto map = f.Manager();                              // saves once more as it ends
            map->LoadXMLMapFile(dir.File("CommsProfiles.xml"));  // missing: the default map
            ASSERT_NO_FATAL_FAILURE(MakeAddressBook(dir.File("AddressBook.xml"), *map));
            ASSERT_NO_FATAL_FAILURE(MakeMap(dir.File("CommsProfiles.xml"), *map));
        }
        ASSERT_NO_FATAL_FAILURE(OpenCheckAndSave(dir.Path(), ""));
        if (const char* remake = std::getenv("MERIDEX_REMAKE_DOCUMENTS")) {
            for (const char* name : kNames)
                std::filesystem::copy_file(dir.File(name), std::string(remake) + "/" + name,
                                           std::filesystem::copy_options::overwrite_existing);
        }
    }
    // Opens the three documents in a folder as the host does, checks what they hold, and saves them
    // into folder `to` under the names they have there ("" saves each in place).
    void OpenCheckAndSave(const std::string& from, const std::string& to) {
        const auto out = [&](const char* name) { return to.empty() ? to : to + "/" + name; };
        Settings settings;
        ASSERT_TRUE(settings.LoadSettings(from + "/V4Settings.xml"));
        EXPECT_FALSE(settings.CurrentProfile().FeatureAvailable("v4_scheme_editor"));  // of the profile "Field Crew"
        EXPECT_EQ(settings.GetString("V4SCHEMES_PATH", ""), "C:\\Schemes\\Südwest Ünïcödé");
        EXPECT_EQ(settings.GetString("COMPANY", ""), "Wässer & Söhne <Hydro> \"€\" \u0141\u00f3d\u017a");
        ASSERT_TRUE(settings.SaveSettings(out("V4Settings.xml")));

        AddressBook book;
        ASSERT_TRUE(book.LoadAddressBook(from + "/AddressBook.xml"));
        EXPECT_FALSE(book.Sites().Group("Nördliche Pegel").Group("Hill Creek").Site("Weir 2 (Łódź)").IsNull());
        EXPECT_FALSE(book.Sites().Site("Tide 4 & <Coast>").Profile().IsNull());
        book.SaveAddressBook(out("AddressBook.xml"));

        auto map = f.Manager();
        ASSERT_TRUE(map->LoadXMLMapFile(from + "/CommsProfiles.xml"));
        EXPECT_EQ(Fields(map->ApplicationProfiles(), "COMMPORT").back(), "12");
        ASSERT_TRUE(map->SaveXMLMapFile(out("CommsProfiles.xml")));
    }
    CommsFixture f{1, 3};
    TempDir dir;
};

TEST_F(Documents, AreTheSameBytesOnEverySystem) {
    for (const char* name : kNames) EXPECT_EQ(TempDir::Read(dir.File(name)), MadeOnLinux(name)) << name;
}

TEST_F(Documents, MadeOnLinuxLoadAndSaveBackUnchanged) {
    for (const char* name : kNames) dir.Write(std::string("in/") + name, MadeOnLinux(name));
    std::filesystem::create_directory(dir.File("saved"));
    ASSERT_NO_FATAL_FAILURE(OpenCheckAndSave(dir.File("in"), dir.File("saved")));
    for (const char* name : kNames)
        EXPECT_EQ(TempDir::Read(dir.File(std::string("saved/") + name)), MadeOnLinux(name)) << name;
}

}  // namespace
}  // namespace meridex::test
