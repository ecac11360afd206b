#include <gtest/gtest.h>

#include <meridex/frame/Error.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XMLOps.h>

using namespace meridex;
using namespace meridex::XMLOps;

namespace {

// A loaded document with a root, so the change mark has somewhere to go.
struct Doc {
    XMLFactoryLease lease;
    XmlDocument doc = XmlDocument::Parse("<ROOT><NODE><A>x</A><Z>0</Z></NODE></ROOT>");
    XmlNode node = doc.DocumentElement().SelectSingle("NODE");
    bool Changed() const { return !doc.DocumentElement().SelectSingle("CHANGED").IsNull(); }
    void ClearMark() const {
        if (XmlNode mark = doc.DocumentElement().SelectSingle("CHANGED")) doc.DocumentElement().RemoveChild(mark);
    }
};

}  // namespace

TEST(XMLOps, SetRuleDropsEmptyAndZeroUnlessForced) {
    Doc d;
    const struct { const char *name, *value; bool force; const char* xml; bool marked; } steps[] = {
        {"A", "", false, "", false},  // deleted, and deletions leave no mark
        {"Z", "0", false, "", false},
        {"A", "", true, "<A/>", true},
        {"Z", "0", true, "<Z>0</Z>", true},
        {"Z", "5", false, "<Z>5</Z>", true},
        {"Z", "5", false, "<Z>5</Z>", false},  // same value: no mark
        {"z", "5", false, "<z>5</z>", true},   // names are exact: a new element
    };
    for (const auto& s : steps) {
        d.ClearMark();
        SetXMLValue(d.node, s.name, s.value, s.force);
        EXPECT_EQ(d.node.SelectSingle(s.name).Xml(), s.xml) << s.name << "=" << s.value;
        EXPECT_EQ(d.Changed(), s.marked) << s.name << "=" << s.value;
    }
    // Names that are not element names create nothing, and never throw.
    SetXMLValue(d.node, "1 bad", "v", true);
    EXPECT_EQ(d.node.CountChildElements(), 3u);
    SetXMLValue(XmlNode(), "A", "v", true);
}

TEST(XMLOps, ReadersWriteTheirDefaults) {
    Doc d;
    EXPECT_FALSE(ReadXMLBoolean(d.node, "B", false, false));
    EXPECT_EQ(d.node.SelectSingle("B").Text(), "False");
    EXPECT_TRUE(d.Changed());
    d.ClearMark();
    EXPECT_EQ(ReadXMLInteger(d.node, "I", 0, false), 0);
    EXPECT_TRUE(d.node.SelectSingle("I").IsNull());
    EXPECT_FALSE(d.Changed());
    EXPECT_EQ(ReadXMLInteger(d.node, "J", -12, false), -12);
    EXPECT_EQ(d.node.SelectSingle("J").Text(), "-12");
    EXPECT_EQ(ReadXMLString(d.node, "A", "dflt", false), "x");

    EXPECT_EQ(GetXMLValue(XmlNode(), "A", "dflt"), "");
    EXPECT_EQ(ReadXMLString(XmlNode(), "A", "dflt", false), "dflt");
    EXPECT_EQ(GetXMLValue(d.node, "NEW", "v"), "v");
    EXPECT_EQ(d.node.SelectSingle("NEW").Text(), "v");
}

TEST(XMLOps, NumbersAndBooleansReadTheLegacyWay) {
    Doc d;
    const auto read = [&](const char* text) {
        SetXMLValue(d.node, "N", text, true);
        return ReadXMLInteger(d.node, "N", 7, false);
    };
    const std::pair<const char*, int> integers[] = {{"300", 300}, {"03", 3}, {"x", 0}, {"", 0},
                                                    {"2.5", 2}, {"3.5", 4}, {"12abc", 12}};
    for (const auto& [text, value] : integers) EXPECT_EQ(read(text), value) << text;
    try {
        read("99999");
        FAIL() << "no overflow";
    } catch (const Error& e) {
        EXPECT_EQ(e.Number(), ErrorNumber::Overflow);
    }
    const std::pair<const char*, bool> booleans[] = {{"1", true}, {"-1", true}, {"2.5", true}, {"0", false},
                                                     {"true", true}, {"True", true}, {"yes", false}};
    for (const auto& [text, value] : booleans) {
        SetXMLValue(d.node, "F", text, true);
        EXPECT_EQ(ReadXMLBoolean(d.node, "F", false, false), value) << text;
    }
}

TEST(XMLOps, WritersAlwaysMarkAndStoreZero) {
    Doc d;
    WriteXMLString(d.node, "S", "same", "same", false);
    EXPECT_TRUE(d.node.SelectSingle("S").IsNull());
    EXPECT_TRUE(d.Changed());
    WriteXMLString(d.node, "A", "", "", false);  // existing: written even when empty
    EXPECT_EQ(d.node.SelectSingle("A").Text(), "");
    WriteXMLInteger(d.node, "A", 0, 0, false);
    EXPECT_EQ(d.node.SelectSingle("A").Text(), "0");
    WriteXMLInteger(d.node, "M", 4, 0, false);
    EXPECT_EQ(d.node.SelectSingle("M").Text(), "4");
    // One mark only, however many writes.
    WriteXMLInteger(d.node, "M", 5, 0, false);
    EXPECT_EQ(d.doc.DocumentElement().SelectAll("CHANGED").size(), 1u);
    EXPECT_EQ(d.doc.DocumentElement().SelectSingle("CHANGED").Text(), "-1");
    // The mark is found again after it is removed and re-created.
    d.ClearMark();
    WriteXMLInteger(d.node, "M", 6, 0, false);
    EXPECT_EQ(d.doc.DocumentElement().SelectAll("CHANGED").size(), 1u);
}

TEST(XMLOps, FactoryLivesWhileUsedAndFindIgnoresCase) {
    const std::int32_t before = XMLFactoryUseCount();
    ReleaseXMLFactory();
    ReleaseXMLFactory();
    EXPECT_EQ(XMLFactoryUseCount(), std::max(0, before - 2));
    while (XMLFactoryUseCount() > 0) ReleaseXMLFactory();
    EXPECT_TRUE(CreateXMLElement("X").IsNull());
    {
        XMLFactoryLease lease;
        EXPECT_EQ(XMLFactoryUseCount(), 1);
        XmlNode made = CreateXMLElement("X");
        ASSERT_FALSE(made.IsNull());
        EXPECT_TRUE(made.OwnerDocument() == XMLFactory());
        MarkDocumentChanged(made);  // the factory has no root: nothing happens
        EXPECT_TRUE(XMLFactory().DocumentElement().IsNull());
    }
    EXPECT_EQ(XMLFactoryUseCount(), 0);

    XMLFactoryLease lease;
    XmlDocument doc = XmlDocument::Parse("<R><P><K>ABC</K></P><P><K>abc</K></P><P/></R>");
    const std::vector<XmlNode> list = doc.DocumentElement().SelectAll("P");
    EXPECT_EQ(FindXMLNodeIndex(list, "K", "abc"), 0);
    EXPECT_EQ(FindXMLNodeIndex(list, "K", "none"), -1);
    EXPECT_EQ(FindXMLNodeIndex({}, "K", "abc"), -1);
    EXPECT_TRUE(list[2].SelectSingle("K").IsNull());  // items without the child stay as they were
}

TEST(XMLOpsDeathTest, WritesWithoutALiveFactoryStopADebugBuild) {
#ifdef NDEBUG
    GTEST_SKIP() << "checked in debug builds only";
#else
    XmlDocument doc = XmlDocument::Parse("<ROOT><NODE/></ROOT>");
    XmlNode node = doc.DocumentElement().SelectSingle("NODE");
    ASSERT_EQ(XMLFactoryUseCount(), 0);
    // Each of these would otherwise lose its new element or its change mark.
    EXPECT_DEATH(WriteXMLString(node, "A", "x", "", true), "no XMLFactoryLease");
    EXPECT_DEATH(WriteXMLInteger(node, "N", 5, 0, true), "no XMLFactoryLease");
    EXPECT_DEATH(SetXMLValue(node, "A", "x", true), "no XMLFactoryLease");
    EXPECT_DEATH(MarkDocumentChanged(node), "no XMLFactoryLease");
    // Reads, and writes to no node at all, need no factory.
    EXPECT_EQ(ReadXMLString(node.SelectSingle("MISSING"), "A", "d", true), "d");
    WriteXMLString(XmlNode(), "A", "x", "", true);
    EXPECT_TRUE(node.SelectSingle("A").IsNull());

    XMLFactoryLease lease;
    WriteXMLString(node, "A", "x", "", true);
    EXPECT_EQ(node.SelectSingle("A").Text(), "x");
    EXPECT_EQ(doc.DocumentElement().SelectSingle("CHANGED").Text(), "-1");
#endif
}
