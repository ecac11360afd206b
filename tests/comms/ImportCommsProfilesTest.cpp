#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "TempDir.h"
#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/ImportCommsProfiles.h>

using namespace meridex;
using test::TempDir;

namespace {

std::string Profile(const std::string& type, const std::string& method, const std::string& name) {
    std::string xml = "<PROFILE><TYPE>" + type + "</TYPE><METHOD>" + method + "</METHOD>";
    if (!name.empty()) xml += "<NAME>" + name + "</NAME>";
    return xml + "</PROFILE>";
}

std::string SchemeXml(const std::vector<std::string>& profiles) {
    std::string xml = "<SCHEME><NAME>x</NAME><COMMSPROFILES>";
    for (const auto& p : profiles) xml += p;
    return xml + "</COMMSPROFILES></SCHEME>";
}

struct Recorder : ImportEvents {
    std::vector<std::string> messages;
    std::vector<int> progress;
    int completes = 0;
    int cancelAfter = -1;
    void Message(const std::string& msg) override { messages.push_back(msg); }
    void Progress(std::int16_t percent) override { progress.push_back(percent); }
    void Complete() override { ++completes; }
    bool CancelRequested() override { return cancelAfter >= 0 && static_cast<int>(progress.size()) >= cancelAfter; }
};

class ImportTest : public ::testing::Test {
protected:
    void SetUp() override {
        root = dir.Path() + "/schemes";
        dir.Write("schemes/top.xml", SchemeXml({Profile("RS232", "DIRECT", "Cable")}));
        dir.Write("schemes/North/Hill/a.XML",
                  SchemeXml({Profile("RS232", "PHONEMODEM", "Modem"), Profile("RS232", "DIRECT", "Cable"),
                          Profile("IP", "TCP", ""), Profile("USB", "X", "Other")}));
        dir.Write("schemes/North/b.xml", SchemeXml({Profile("IP", "UDP", "Net")}));
        dir.Write("schemes/North/broken.xml", "<SCHEME><COMMS");
        dir.Write("schemes/North/notes.txt", "not a scheme");
        // A link back up the tree is not followed; a dangling one is no file.
        // (Where links cannot be made, as on Windows without the privilege, there are none to skip.)
        std::error_code ec;
        std::filesystem::create_directory_symlink(root, root + "/North/loop", ec);
        std::filesystem::create_symlink(root + "/gone.xml", root + "/North/dangling.xml", ec);
        book.LoadAddressBook(dir.File("book.xml"));
    }
    TempDir dir;
    std::string root;
    AddressBook book;
    Recorder events;
};

TEST_F(ImportTest, SchemesBecomeSitesInGroupsMirroringFolders) {
    ImportCommsProfiles import(&events);
    import.ImportSchemes(root, book.Sites());

    // Found paths keep the root as given and join with the system's own separator ("\" on
    // Windows); where that is "/", a "\" in the root separates folders too.
    const char sep = static_cast<char>(std::filesystem::path::preferred_separator);
    std::string base = root;
    if (sep == '/') std::replace(base.begin(), base.end(), '\\', '/');
    const auto at = [&](std::initializer_list<const char*> parts) {
        std::string path = base;
        for (const char* part : parts) path += sep + std::string(part);
        return path;
    };
    const std::vector<std::string> found{at({"top.xml"}), at({"North", "b.xml"}), at({"North", "broken.xml"}),
                                         at({"North", "Hill", "a.XML"})};
    EXPECT_EQ(import.SchemeList(), found);
    std::vector<std::string> expected;
    for (const auto& path : found) expected.push_back("Scheme Found: " + path);
    for (const auto& path : {found[0], found[1], found[3]}) expected.push_back("Processing Scheme: " + path);
    EXPECT_EQ(events.messages, expected);
    EXPECT_EQ(events.progress, (std::vector<int>{25, 50, 75, 100}));
    EXPECT_EQ(events.completes, 1);

    // The direct-only scheme made no group; the file name is the last level.
    EXPECT_EQ(book.Sites().SiteCount(), 0);
    EXPECT_TRUE(book.FindGroup("\\top.xml").IsNull());
    const SiteGroup hill = book.FindGroup("\\North\\Hill\\a.XML");
    ASSERT_FALSE(hill.IsNull());
    ASSERT_EQ(hill.SiteCount(), 2);
    EXPECT_EQ(hill.Site(1).Name(), found[3] + " (Modem");
    EXPECT_EQ(hill.Site(2).Name(), found[3] + " (Unknown Device)");
    EXPECT_EQ(hill.Site(2).Parameter("METHOD").Text(), "TCP");
    EXPECT_EQ(book.FindGroup("\\North\\b.xml").Site(1).Name(), found[1] + " (Net");
    EXPECT_EQ(import.SitesAdded(), 3u);

    // A second run with a trailing separator finds the same files and reuses the groups.
    ImportCommsProfiles again;
    again.ImportSchemes(root + "/", book.Sites());
    EXPECT_EQ(again.SchemeList(), found);
    EXPECT_EQ(book.Sites().GroupCount(), 1);
    EXPECT_EQ(hill.SiteCount(), 4);
    EXPECT_EQ(hill.Site(3).Key(), hill.Site(1).Key() + "_1");
}

TEST_F(ImportTest, CancelMissingFoldersAndEmptyTrees) {
    events.cancelAfter = 1;
    ImportCommsProfiles import(&events);
    import.ImportSchemes(root, book.Sites());
    EXPECT_TRUE(import.Cancelled());
    EXPECT_EQ(events.progress, std::vector<int>{25});
    EXPECT_EQ(events.completes, 1);

    Recorder quiet;
    ImportCommsProfiles nothing(&quiet);
    nothing.ImportSchemes(dir.File("missing"), book.Sites());
    nothing.ImportSchemes(dir.File("schemes/North/notes.txt"), book.Sites());
    nothing.ImportSchemes("", book.Sites());
    EXPECT_TRUE(quiet.messages.empty());
    EXPECT_TRUE(quiet.progress.empty());
    EXPECT_EQ(quiet.completes, 3);
}

// A scheme reader whose texts use backslashes, as on Windows.
struct BackslashScheme : Scheme {
    std::string root;
    XmlDocument document;
    bool Open(const std::string&) override {
        document = XmlDocument::Parse(SchemeXml({Profile("IP", "GPRSPROXY", "Proxy")}));
        return true;
    }
    std::string SchemeText() const override { return root + "\\North\\Hill\\"; }
    XmlNode CommsProfiles() const override { return document.DocumentElement().SelectSingle("COMMSPROFILES"); }
};

TEST_F(ImportTest, SchemeTextsWithBackslashes) {
    BackslashScheme scheme;
    scheme.root = root;
    ImportCommsProfiles import;
    import.ImportSchemes(root, book.Sites(), scheme);
    const SiteGroup hill = book.FindGroup("\\North\\Hill");
    ASSERT_FALSE(hill.IsNull());
    EXPECT_EQ(hill.SiteCount(), 4) << "one site for each of the four files found";
}

}  // namespace
