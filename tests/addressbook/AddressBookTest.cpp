// Tests of the address book: sites and their parameters, groups and their
// keys and paths, and the book's file.
#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "FailingDiskSteps.h"
#include "TempDir.h"
#include <meridex/addressbook/AddressBook.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/Text.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XMLOps.h>

using namespace meridex;
using test::TempDir;

namespace {

// A new site or group with a name.
template <class Item>
Item Named(const std::string& name) {
    Item item;
    item.setName(name);
    return item;
}

XmlNode Element(const std::string& name, const std::string& text) {
    XmlNode element = XMLOps::CreateXMLElement(name);
    element.setText(text);
    return element;
}

// The first SITE or GROUP child whose KEY equals key ignoring case, by a
// plain scan of the document.
XmlNode ScanForKey(const XmlNode& group, const std::string& kind, const std::string& key) {
    for (XmlNode child = group.FirstChildElement(kind); child; child = child.NextSiblingElement(kind)) {
        if (Text::EqualsIgnoreCase(child.SelectSingle("KEY").Text(), key)) return child;
    }
    return XmlNode();
}

// A book loaded from a file not there yet, so saved to it: its tree, and its file.
struct AddressBookTree : ::testing::Test {
    void SetUp() override { EXPECT_FALSE(book.LoadAddressBook(dir.File("book.xml"))); }
    TempDir dir;
    AddressBook book;
};
using AddressBookFile = AddressBookTree;

}  // namespace

TEST(Site, ParametersAreFoundByExactNameOrPosition) {
    Site site;
    EXPECT_EQ(site.XMLNode().CountChildElements(), 1u) << "a new site holds only an empty profile";
    ASSERT_TRUE(site.Add(Element("BAUDRATE", "9600")));
    ASSERT_TRUE(site.Add(Element("abc", "lower")));
    ASSERT_TRUE(site.Add(Element("ADDRESS", "10.0.0.1")));
    EXPECT_EQ(site.Parameter("abc").Text(), "lower");
    EXPECT_TRUE(site.Parameter("ABC").IsNull());
    EXPECT_EQ(site.Parameter(3).Text(), "10.0.0.1");
    EXPECT_TRUE(site.Parameter(0).IsNull());
    EXPECT_TRUE(site.Parameter(4).IsNull());
    // A name that is no element name finds nothing rather than failing.
    EXPECT_FALSE(site.Remove("not a name"));

    // Replacing keeps the count and moves the parameter to the end.
    ASSERT_TRUE(site.Add(Element("BAUDRATE", "19200")));
    EXPECT_EQ(site.ParameterCount(), 3);
    EXPECT_EQ(site.Parameter(3).Text(), "19200");

    EXPECT_TRUE(site.Remove(1));
    EXPECT_EQ(site.Parameter(1).Name(), "ADDRESS");
    EXPECT_FALSE(site.Remove("abc"));
    for (const char* bad : {"1BAD", ""}) EXPECT_FALSE(site.SetParameter(bad, "x")) << bad;
    EXPECT_TRUE(site.SetParameter("PHONENUMBER", "0123"));
    EXPECT_EQ(site.Parameter(3).Text(), "0123");
}

TEST(Site, BindingAndProfileReplacement) {
    XMLFactoryLease lease;
    XmlNode bare = XMLOps::CreateXMLElement("SITE");
    Site site(bare);
    EXPECT_FALSE(site.Profile().IsNull()) << "a bound site without PROFILE is given one";

    XmlNode profile = XMLOps::CreateXMLElement("PROFILE");
    profile.AppendChild(Element("TYPE", "IP"));
    site.setProfile(profile);
    EXPECT_EQ(bare.CountChildElements("PROFILE"), 1u);
    EXPECT_EQ(site.Parameter("TYPE").Text(), "IP");
    site.setProfile(bare);  // cannot go inside itself: the profile stays
    EXPECT_EQ(site.Parameter("TYPE").Text(), "IP");
    site.setProfile(XmlNode());
    EXPECT_TRUE(site.Profile().IsNull());
    // Adding a parameter to a site that lost its profile gives it a new one.
    EXPECT_TRUE(site.SetParameter("TYPE", "RS232"));
    EXPECT_EQ(site.ParameterCount(), 1);

    Site none = Site::None();
    none.setName("x");
    EXPECT_EQ(none.Name(), "");
    EXPECT_EQ(none.ParameterCount(), 0);
    EXPECT_FALSE(none.SetParameter("A", "1"));
    EXPECT_TRUE(Site(XmlNode()).IsNull());
}

TEST_F(AddressBookTree, KeysAreMadeUniquePerKindIgnoringCase) {
    SiteGroup root = book.Sites();
    // Case folding covers more than ASCII; groups have their own key space.
    for (const char* name : {"Pump", "Pump", "Pump", "PUMP", "ÄRENDE Σ", "ärende σ"})
        ASSERT_TRUE(root.AddSite(Named<Site>(name)));
    root.AddGroup(Named<SiteGroup>("Pump"));
    std::string keys = root.Group(1).Key() + ":";
    for (int i = 1; i <= root.SiteCount(); ++i) keys += " " + root.Site(i).Key();
    EXPECT_EQ(keys, "Pump: Pump Pump_1 Pump_2 PUMP_3 ÄRENDE Σ ärende σ_1");
    EXPECT_EQ(root.Site("pump_1").Key(), "Pump_1");

    EXPECT_TRUE(root.Site(0).IsNull());
    EXPECT_TRUE(root.Group(-1).IsNull());
    EXPECT_TRUE(root.Site(7).IsNull());
    EXPECT_THROW(root.Site(32768), Error) << "beyond 16 bits is an overflow, not a miss";
    EXPECT_THROW(root.RemoveGroup(-32769), Error);
    EXPECT_TRUE(root.Site("nothing").IsNull());

    // An item whose KEY already equals its name meets itself.
    Site moved = Named<Site>("Tank");
    moved.setKey("TANK");
    root.AddSite(moved);
    EXPECT_EQ(moved.Key(), "Tank_1");
    // An item without a name gets "_1", "_2", ...
    root.AddGroup(SiteGroup());
    root.AddGroup(SiteGroup());
    EXPECT_EQ(root.Group(3).Key(), "_2");
}

TEST_F(AddressBookTree, PathsParentAndClear) {
    SiteGroup root = book.Sites();
    SiteGroup north = Named<SiteGroup>("North");
    root.AddGroup(north);
    SiteGroup hill = Named<SiteGroup>("Hill");
    north.AddGroup(hill);
    Site s1 = Named<Site>("S1");
    hill.AddSite(s1);
    EXPECT_EQ(north.Path(), "\\North");
    EXPECT_EQ(s1.Path(), "\\North\\Hill\\S1");

    // A rename changes only later paths.
    north.setName("Nord");
    Site s2 = Named<Site>("S2");
    hill.AddSite(s2);
    EXPECT_EQ(s2.Path(), "\\Nord\\Hill\\S2");
    EXPECT_EQ(s1.Path(), "\\North\\Hill\\S1");
    // A name given to the root after its children still leads every later path.
    root.setName("Book");
    Site s3 = Named<Site>("S3");
    hill.AddSite(s3);
    root.AddSite(Named<Site>("S4"));
    EXPECT_EQ(s3.Path(), "Book\\Nord\\Hill\\S3");
    EXPECT_EQ(root.Site("s4").Path(), "Book\\S4");
    root.setName("");

    EXPECT_TRUE(root.Parent().IsNull());
    EXPECT_EQ(hill.Parent().Parent().XMLNode(), root.XMLNode());
    EXPECT_TRUE(SiteGroup().Parent().IsNull());
    EXPECT_FALSE(hill.AddGroup(north)) << "a group cannot go inside itself";

    north.Clear();
    EXPECT_EQ(north.GroupCount() + north.SiteCount(), 0);
    EXPECT_EQ(north.Key() + north.Name(), "NorthNord");
    // Views on removed elements keep working on them.
    EXPECT_EQ(hill.Site("s1").Name(), "S1");
    EXPECT_TRUE(hill.Parent().IsNull());
}

// Random changes through every route, each lookup checked against a scan.
TEST_F(AddressBookTree, KeyLookupAgreesWithAScanUnderRandomChanges) {
    SiteGroup root = book.Sites();
    SiteGroup other = SiteGroup::AttachNode(root.XMLNode());
    const std::vector<std::string> names{"a", "A", "b", "b_1", "C", ""};
    std::mt19937 random(7);
    auto pick = [&](std::size_t n) { return static_cast<std::size_t>(random() % n); };
    for (int step = 0; step < 600; ++step) {
        const std::string name = names[pick(names.size())];
        const int count = root.SiteCount();
        const XmlNode any = count ? root.Site(1 + static_cast<int>(pick(count))).XMLNode() : XmlNode();
        switch (pick(7)) {
            case 0: root.AddSite(Named<Site>(name)); break;
            case 1: other.AddSite(Named<Site>(name)); break;
            case 2: if (count) XMLOps::SetXMLValue(any, "KEY", name, true); break;
            case 3: if (count) root.XMLNode().RemoveChild(any); break;
            case 4: if (count) root.RemoveSite(name); break;
            case 5: root.AddGroup(Named<SiteGroup>(name)); break;
            case 6: root.XMLNode().AppendChild(XMLOps::CreateXMLElement("SITE")); break;  // keyless, KEY later
        }
        for (const auto& key : names) {
            ASSERT_EQ(root.Site(key).XMLNode(), ScanForKey(root.XMLNode(), "SITE", key)) << step << " " << key;
            ASSERT_EQ(root.Group(key).XMLNode(), ScanForKey(root.XMLNode(), "GROUP", key)) << step;
        }
    }

    // Text added to a key through the views is seen too.
    root.Clear();
    root.AddSite(Named<Site>("b"));
    root.AddSite(Named<Site>("c"));
    ASSERT_FALSE(root.Site("b").IsNull());  // the index now knows both keys
    const XmlDocument document = root.XMLNode().OwnerDocument();
    root.Site("b").XMLNode().SelectSingle("KEY").AppendChild(document.CreateTextNode("_1"));
    root.Site("c").XMLNode().SelectSingle("KEY").AppendChild(document.CreateElement("B")).setText("x");
    for (const std::string key : {"b_1", "cx", "b", "c"})  // new keys first: the old ones would show the change
        EXPECT_EQ(root.Site(key).XMLNode(), ScanForKey(root.XMLNode(), "SITE", key)) << key;
}

TEST_F(AddressBookFile, MissingFileGivesAnEmptyBookSavedWhereItWasLooked) {
    AddressBook unloaded;
    EXPECT_TRUE(unloaded.Sites().IsNull()) << "nothing before a load";
    EXPECT_THROW(unloaded.SaveAddressBook(dir.File("book.xml")), Error);
    EXPECT_FALSE(std::filesystem::exists(dir.File("book.xml")));
    EXPECT_EQ(book.Sites().SiteCount() + book.Sites().GroupCount(), 0);
    book.SaveAddressBook();
    const std::string saved = TempDir::Read(dir.File("book.xml"));
    EXPECT_EQ(saved.find("<?xml"), std::string::npos);
    EXPECT_NE(saved.find("<V4ADDRESSBOOK/>"), std::string::npos);

    // A new book saved with its tree to another path, which it remembers.
    AddressBook other;
    other.LoadAddressBook(dir.File("a.xml"));
    SiteGroup north = Named<SiteGroup>("North");
    other.Sites().AddGroup(north);
    Site site = Named<Site>("Hill");
    site.SetParameter("TYPE", "IP");
    north.AddSite(site);
    other.SaveAddressBook(dir.File("b.xml"));
    EXPECT_EQ(other.FilePath(), dir.File("b.xml"));
    AddressBook again;
    ASSERT_TRUE(again.LoadAddressBook(dir.File("b.xml")));
    EXPECT_EQ(again.FindSite("\\North\\Hill").Parameter("TYPE").Text(), "IP");
}

TEST_F(AddressBookFile, UnusableFilesAreKeptBeforeTheFirstSave) {
    const std::string malformed = dir.Write("bad.xml", "<V4ADDRESSBOOK><GROUP>");
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

TEST_F(AddressBookFile, FailedSaveChangesNothing) {
    book.Sites().AddSite(Named<Site>("S1"));
    book.SaveAddressBook();
    const std::string before = TempDir::Read(dir.File("book.xml"));
    book.Sites().AddSite(Named<Site>("S2"));
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
        EXPECT_EQ(TempDir::Entries(dir.Path()).size(), 1u);
    }
}

TEST_F(AddressBookTree, FindByPath) {
    SiteGroup root = book.Sites();
    root.AddSite(Named<Site>("S1"));
    SiteGroup north = Named<SiteGroup>("North");
    root.AddGroup(north);
    north.AddSite(Named<Site>("S1"));
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
    Site later = Named<Site>("S2");
    north.AddSite(later);
    EXPECT_FALSE(book.FindSite(north.Site(1).Path()).IsNull());
    EXPECT_THROW(book.FindSite(later.Path()), Error);
}

// Groups may nest thousands deep: loading, finding, adding (which walks up
// to the root for the path), saving and clearing need no recursion.
TEST_F(AddressBookFile, ThousandsOfLevelsLoadFindAddSaveAndClear) {
    constexpr int kDepth = 5000;
    std::string text = "<V4ADDRESSBOOK>";
    std::string path;
    for (int i = 0; i < kDepth; ++i) {
        text += "<GROUP><KEY>g</KEY><NAME>g</NAME>";
        path += "\\g";
    }
    text += "<SITE><KEY>s</KEY></SITE>";  // no PROFILE: given an empty one when looked up
    for (int i = 0; i < kDepth; ++i) text += "</GROUP>";
    const std::string file = dir.Write("deep.xml", text + "</V4ADDRESSBOOK>");
    ASSERT_TRUE(book.LoadAddressBook(file));
    const SiteGroup deepest = book.FindGroup(path);
    ASSERT_FALSE(deepest.IsNull());
    const Site site = book.FindSite(path + "\\S");
    ASSERT_FALSE(site.IsNull());
    EXPECT_FALSE(site.Profile().IsNull());
    EXPECT_EQ(site.ParameterCount(), 0);
    SiteGroup child = Named<SiteGroup>("g");
    ASSERT_TRUE(deepest.AddGroup(child));
    Site added = Named<Site>("S");
    child.AddSite(added);
    EXPECT_EQ(added.Path(), path + "\\g\\S");
    book.SaveAddressBook();
    AddressBook again;
    ASSERT_TRUE(again.LoadAddressBook(file));
    EXPECT_FALSE(again.FindSite(path + "\\g\\s").IsNull());
    again.Sites().Clear();
    EXPECT_EQ(again.Sites().GroupCount(), 0);
}
