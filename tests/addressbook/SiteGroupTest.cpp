#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <meridex/addressbook/AddressBook.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/Text.h>
#include <meridex/frame/XMLOps.h>

namespace meridex {
namespace {

Site NewSite(const std::string& name) {
    Site site;
    site.setName(name);
    return site;
}

SiteGroup NewGroup(const std::string& name) {
    SiteGroup group;
    group.setName(name);
    return group;
}

AddressBook EmptyBook() {
    AddressBook book;
    book.NewAddressBook();
    return book;
}

// The first SITE or GROUP child whose KEY equals key ignoring case, by a
// plain scan of the document.
XmlNode ScanForKey(const XmlNode& group, const std::string& kind, const std::string& key) {
    for (XmlNode child = group.FirstChildElement(kind); child; child = child.NextSiblingElement(kind)) {
        if (Text::EqualsIgnoreCase(child.SelectSingle("KEY").Text(), key)) return child;
    }
    return XmlNode();
}

TEST(SiteGroup, KeysAreMadeUniquePerKindIgnoringCase) {
    AddressBook book = EmptyBook();
    SiteGroup root = book.Sites();
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(root.AddSite(NewSite("Pump")));
    EXPECT_EQ(root.Site(1).Key(), "Pump");
    EXPECT_EQ(root.Site(2).Key(), "Pump_1");
    EXPECT_EQ(root.Site(3).Key(), "Pump_2");
    root.AddSite(NewSite("PUMP"));
    EXPECT_EQ(root.Site(4).Key(), "PUMP_3");
    // Groups have their own key space.
    root.AddGroup(NewGroup("Pump"));
    EXPECT_EQ(root.Group(1).Key(), "Pump");
    // Case folding covers more than ASCII.
    root.AddSite(NewSite("ÄRENDE Σ"));
    EXPECT_EQ(root.Site("ärende σ").Name(), "ÄRENDE Σ");
    root.AddSite(NewSite("ärende σ"));
    EXPECT_EQ(root.Site(6).Key(), "ärende σ_1");

    EXPECT_EQ(root.Site("pump_1").Key(), "Pump_1");
    EXPECT_TRUE(root.Site(0).IsNull());
    EXPECT_TRUE(root.Group(-1).IsNull());
    EXPECT_TRUE(root.Site(7).IsNull());
    EXPECT_THROW(root.Site(32768), Error) << "beyond 16 bits is an overflow, not a miss";
    EXPECT_THROW(root.RemoveGroup(-32769), Error);
    EXPECT_TRUE(root.Site("nothing").IsNull());

    // An item whose KEY already equals its name meets itself.
    Site moved = NewSite("Tank");
    moved.setKey("TANK");
    root.AddSite(moved);
    EXPECT_EQ(moved.Key(), "Tank_1");
    // An item without a name gets "_1", "_2", ...
    root.AddGroup(SiteGroup());
    root.AddGroup(SiteGroup());
    EXPECT_EQ(root.Group(2).Key(), "_1");
    EXPECT_EQ(root.Group(3).Key(), "_2");
}

TEST(SiteGroup, PathsParentAndClear) {
    AddressBook book = EmptyBook();
    SiteGroup root = book.Sites();
    SiteGroup north = NewGroup("North");
    root.AddGroup(north);
    SiteGroup hill = NewGroup("Hill");
    north.AddGroup(hill);
    Site s1 = NewSite("S1");
    hill.AddSite(s1);
    EXPECT_EQ(north.Path(), "\\North");
    EXPECT_EQ(s1.Path(), "\\North\\Hill\\S1");
    EXPECT_EQ(Site().Path(), "");

    // A rename changes only later paths.
    north.setName("Nord");
    Site s2 = NewSite("S2");
    hill.AddSite(s2);
    EXPECT_EQ(s2.Path(), "\\Nord\\Hill\\S2");
    EXPECT_EQ(s1.Path(), "\\North\\Hill\\S1");
    // A name given to the root after its children still leads every later path.
    root.setName("Book");
    Site s3 = NewSite("S3");
    hill.AddSite(s3);
    root.AddSite(NewSite("S4"));
    EXPECT_EQ(s3.Path(), "Book\\Nord\\Hill\\S3");
    EXPECT_EQ(root.Site("s4").Path(), "Book\\S4");
    root.setName("");

    EXPECT_TRUE(root.Parent().IsNull());
    EXPECT_EQ(north.Parent().XMLNode(), root.XMLNode());
    EXPECT_EQ(hill.Parent().Parent().XMLNode(), root.XMLNode());
    EXPECT_TRUE(SiteGroup().Parent().IsNull());
    EXPECT_FALSE(hill.AddGroup(north)) << "a group cannot go inside itself";

    north.Clear();
    EXPECT_EQ(north.GroupCount(), 0);
    EXPECT_EQ(north.SiteCount(), 0);
    EXPECT_EQ(north.Name(), "Nord");
    EXPECT_EQ(north.Key(), "North");
    EXPECT_EQ(north.Path(), "\\North");
    // Views on removed elements keep working on them.
    EXPECT_EQ(hill.Site("s1").Name(), "S1");
    EXPECT_EQ(hill.SiteCount(), 3);
    EXPECT_TRUE(hill.Parent().IsNull());
}

// Random changes through every route, each lookup checked against a scan.
TEST(SiteGroup, KeyLookupAgreesWithAScanUnderRandomChanges) {
    AddressBook book = EmptyBook();
    SiteGroup root = book.Sites();
    SiteGroup other = SiteGroup::AttachNode(root.XMLNode());
    const std::vector<std::string> names{"a", "A", "b", "b_1", "C", ""};
    std::mt19937 random(7);
    auto pick = [&](std::size_t n) { return static_cast<std::size_t>(random() % n); };
    for (int step = 0; step < 600; ++step) {
        const std::string name = names[pick(names.size())];
        const int count = root.SiteCount();
        switch (pick(7)) {
            case 0: root.AddSite(NewSite(name)); break;
            case 1: other.AddSite(NewSite(name)); break;
            case 2: if (count) XMLOps::SetXMLValue(root.Site(1 + static_cast<int>(pick(count))).XMLNode(), "KEY", name, true); break;
            case 3: if (count) root.XMLNode().RemoveChild(root.Site(1 + static_cast<int>(pick(count))).XMLNode()); break;
            case 4: if (count) root.RemoveSite(name); break;
            case 5: root.AddGroup(NewGroup(name)); break;
            case 6: root.XMLNode().AppendChild(XMLOps::CreateXMLElement("SITE")); break;  // keyless, KEY later
        }
        for (const auto& key : names) {
            ASSERT_EQ(root.Site(key).XMLNode(), ScanForKey(root.XMLNode(), "SITE", key)) << "step " << step << " key " << key;
            ASSERT_EQ(root.Group(key).XMLNode(), ScanForKey(root.XMLNode(), "GROUP", key)) << "step " << step;
        }
    }
}

TEST(SiteGroup, KeyLookupSeesTextAddedToAKeyThroughTheViews) {
    AddressBook book = EmptyBook();
    SiteGroup root = book.Sites();
    root.AddSite(NewSite("b"));
    root.AddSite(NewSite("c"));
    ASSERT_FALSE(root.Site("b").IsNull());  // the index now knows both keys
    const XmlDocument document = root.XMLNode().OwnerDocument();
    root.Site("b").XMLNode().SelectSingle("KEY").AppendChild(document.CreateTextNode("_1"));
    root.Site("c").XMLNode().SelectSingle("KEY").AppendChild(document.CreateElement("B")).setText("x");
    for (const std::string key : {"b_1", "cx", "b", "c"})  // new keys first: the old ones would show the change
        EXPECT_EQ(root.Site(key).XMLNode(), ScanForKey(root.XMLNode(), "SITE", key)) << key;
    EXPECT_EQ(root.Site("B_1").Key(), "b_1");
}

TEST(SiteGroup, ThousandsOfLevelsNeedNoRecursion) {
    AddressBook book = EmptyBook();
    SiteGroup group = book.Sites();
    // Every path is as long as the nesting is deep, so building costs depth
    // squared in text; 2000 levels show the walks need no recursion.
    constexpr int kDepth = 2000;
    for (int level = 0; level < kDepth; ++level) {
        SiteGroup child = NewGroup("g");
        ASSERT_TRUE(group.AddGroup(child));
        group = child;
    }
    Site deep = NewSite("S");
    group.AddSite(deep);
    EXPECT_EQ(deep.Path().size(), static_cast<std::size_t>(kDepth) * 2 + 2);
}

}  // namespace
}  // namespace meridex
