#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "FailingDiskSteps.h"
#include "TempDir.h"
#include <meridex/addressbook/AddressBook.h>
#include <meridex/frame/Error.h>

namespace meridex {
namespace {

using test::TempDir;

Site NewSite(const std::string& name) {
    Site site;
    site.setName(name);
    return site;
}

SiteGroup AddGroup(const SiteGroup& parent, const std::string& name) {
    SiteGroup group;
    group.setName(name);
    parent.AddGroup(group);
    return group;
}

TEST(AddressBook, MissingFileGivesAnEmptyBookSavedWhereItWasLooked) {
    TempDir dir;
    AddressBook book;
    EXPECT_TRUE(book.Sites().IsNull()) << "nothing before a load";
    EXPECT_THROW(book.SaveAddressBook(dir.File("AddressBook.xml")), Error);
    EXPECT_FALSE(std::filesystem::exists(dir.File("AddressBook.xml")));
    EXPECT_FALSE(book.LoadAddressBook(dir.File("AddressBook.xml")));
    EXPECT_EQ(book.Sites().SiteCount(), 0);
    EXPECT_EQ(book.Sites().GroupCount(), 0);
    book.SaveAddressBook();
    const std::string saved = TempDir::Read(dir.File("AddressBook.xml"));
    EXPECT_EQ(saved.find("<?xml"), std::string::npos);
    EXPECT_NE(saved.find("<V4ADDRESSBOOK/>"), std::string::npos);
}

TEST(AddressBook, SavedBookLoadsBackWithItsTree) {
    TempDir dir;
    AddressBook book;
    book.LoadAddressBook(dir.File("a.xml"));
    SiteGroup north = AddGroup(book.Sites(), "North");
    Site site = NewSite("Hill");
    site.SetParameter("TYPE", "IP");
    north.AddSite(site);
    book.SaveAddressBook(dir.File("b.xml"));
    EXPECT_EQ(book.FilePath(), dir.File("b.xml"));

    AddressBook again;
    ASSERT_TRUE(again.LoadAddressBook(dir.File("b.xml")));
    const Site found = again.FindSite("\\North\\Hill");
    EXPECT_EQ(found.Parameter("TYPE").Text(), "IP");
    EXPECT_EQ(found.Path(), "\\North\\Hill");
}

TEST(AddressBook, UnusableFilesAreKeptBeforeTheFirstSave) {
    TempDir dir;
    const std::string malformed = dir.Write("bad.xml", "<V4ADDRESSBOOK><GROUP>");
    AddressBook book;
    EXPECT_FALSE(book.LoadAddressBook(malformed));
    EXPECT_EQ(book.Sites().GroupCount(), 0);
    book.SaveAddressBook();
    EXPECT_EQ(TempDir::Read(malformed + ".unreadable"), "<V4ADDRESSBOOK><GROUP>");
    book.SaveAddressBook();
    EXPECT_FALSE(std::filesystem::exists(malformed + ".unreadable-1")) << "kept once only";

    const std::string other = dir.Write("other.xml", "<COMMSPROFILES><PROFILE/></COMMSPROFILES>");
    EXPECT_TRUE(book.LoadAddressBook(other)) << "well-formed with another root reads as true";
    EXPECT_EQ(book.Sites().XMLNode().Name(), "V4ADDRESSBOOK");
    EXPECT_EQ(book.Sites().XMLNode().CountChildElements(), 0u);
    book.SaveAddressBook();
    EXPECT_EQ(TempDir::Read(other + ".unreadable"), "<COMMSPROFILES><PROFILE/></COMMSPROFILES>");
}

TEST(AddressBook, FailedSaveChangesNothing) {
    TempDir dir;
    AddressBook book;
    book.LoadAddressBook(dir.File("book.xml"));
    book.Sites().AddSite(NewSite("S1"));
    book.SaveAddressBook();
    const std::string before = TempDir::Read(dir.File("book.xml"));
    book.Sites().AddSite(NewSite("S2"));
    EXPECT_THROW(book.SaveAddressBook(dir.File("no/such/folder/book.xml")), Error);
    EXPECT_EQ(book.FilePath(), dir.File("book.xml"));
    EXPECT_EQ(TempDir::Read(dir.File("book.xml")), before);
    // The disk fills up at the first write, the flush or the rename: error 75.
    for (int step = 0; step < 3; ++step) {
        test::FailingDiskSteps disk;
        disk.error = ENOSPC;
        (step == 0 ? disk.failWrite : step == 1 ? disk.failSync : disk.failRename) = 1;
        try {
            book.SaveAddressBook();
            ADD_FAILURE() << "saved despite a full disk at step " << step;
        } catch (const Error& e) {
            EXPECT_EQ(e.Number(), 75);
            EXPECT_NE(e.Description().find("No space left"), std::string::npos) << e.Description();
        }
        EXPECT_EQ(TempDir::Read(dir.File("book.xml")), before);
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path()), {}), 1);
    }
    EXPECT_EQ(book.Sites().SiteCount(), 2);
}

TEST(AddressBook, FindByPath) {
    TempDir dir;
    AddressBook book;
    book.LoadAddressBook(dir.File("book.xml"));
    SiteGroup root = book.Sites();
    root.AddSite(NewSite("S1"));
    SiteGroup north = AddGroup(root, "North");
    north.AddSite(NewSite("S1"));

    EXPECT_EQ(book.FindGroup("\\north").XMLNode(), north.XMLNode());
    EXPECT_EQ(book.FindGroup("ignored\\NORTH").XMLNode(), north.XMLNode());
    EXPECT_TRUE(book.FindGroup("North").IsNull());
    EXPECT_TRUE(book.FindGroup("").IsNull());
    EXPECT_TRUE(book.FindGroup("\\North\\").IsNull()) << "an empty part names no group";
    EXPECT_EQ(book.FindSite("\\S1").XMLNode(), root.Site(1).XMLNode());
    EXPECT_EQ(book.FindSite("\\North\\s1").XMLNode(), north.Site(1).XMLNode());
    EXPECT_TRUE(book.FindSite("\\North\\Missing").IsNull());
    EXPECT_THROW(book.FindSite("\\Nowhere\\S1"), Error);
    EXPECT_THROW(book.FindSite("\\\\S1"), Error);
    try {
        book.FindSite("S1");
        ADD_FAILURE() << "a path without a backslash must fail";
    } catch (const Error& error) {
        EXPECT_NE(error.Description().find("S1"), std::string::npos);
    }

    // Paths hold names, lookups use keys: a renamed group's later paths lead nowhere.
    north.setName("Nord");
    Site later = NewSite("S2");
    north.AddSite(later);
    EXPECT_FALSE(book.FindSite(north.Site(1).Path()).IsNull());
    EXPECT_THROW(book.FindSite(later.Path()), Error);
}

TEST(AddressBook, ThousandsOfLevelsLoadFindSaveAndClear) {
    TempDir dir;
    constexpr int kDepth = 5000;
    std::string text = "<V4ADDRESSBOOK>";
    std::string path;
    for (int i = 0; i < kDepth; ++i) {
        text += "<GROUP><KEY>g</KEY>";
        path += "\\g";
    }
    text += "<SITE><KEY>s</KEY></SITE>";  // no PROFILE: given an empty one when looked up
    for (int i = 0; i < kDepth; ++i) text += "</GROUP>";
    const std::string file = dir.Write("deep.xml", text + "</V4ADDRESSBOOK>");

    AddressBook book;
    ASSERT_TRUE(book.LoadAddressBook(file));
    EXPECT_FALSE(book.FindGroup(path).IsNull());
    const Site site = book.FindSite(path + "\\S");
    ASSERT_FALSE(site.IsNull());
    EXPECT_FALSE(site.Profile().IsNull());
    EXPECT_EQ(site.ParameterCount(), 0);
    book.SaveAddressBook();
    AddressBook again;
    ASSERT_TRUE(again.LoadAddressBook(file));
    EXPECT_FALSE(again.FindSite(path + "\\s").IsNull());
    again.Sites().Clear();
    EXPECT_EQ(again.Sites().GroupCount(), 0);
}

}  // namespace
}  // namespace meridex
