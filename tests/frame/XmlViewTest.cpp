#include <gtest/gtest.h>

#include <cstdint>
#include <functional>

#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XMLOps.h>
#include <meridex/frame/XmlDocument.h>

using namespace meridex;

TEST(XmlView, ViewsShareOneNodeClonesAreDeepAndNullViewsAreHarmless) {
    XmlDocument doc = XmlDocument::Parse("<ROOT><NAME>a</NAME><F><KEY>k</KEY></F></ROOT>");
    ASSERT_TRUE(doc);
    XmlNode first = doc.DocumentElement().SelectSingle("NAME");
    XmlNode second = doc.DocumentElement().FirstChildElement();
    EXPECT_TRUE(first == second);
    first.setText("changed");
    EXPECT_EQ(second.Text(), "changed");

    XmlNode f = doc.DocumentElement().SelectSingle("F");
    XmlNode copy = f.CloneNode(true);
    EXPECT_TRUE(copy.Parent().IsNull());
    copy.SelectSingle("KEY").setText("other");
    EXPECT_EQ(f.SelectSingle("KEY").Text(), "k");
    EXPECT_EQ(f.CloneNode(false).Xml(), "<F/>");
    EXPECT_EQ(doc.DocumentNode().NodeType(), XmlNodeType::Document);
    EXPECT_EQ(doc.DocumentElement().Parent().NodeType(), XmlNodeType::Document);

    XmlNode none;
    EXPECT_EQ(none.Text(), "");
    EXPECT_TRUE(none.SelectSingle("X").IsNull());
    EXPECT_TRUE(none.AppendChild(first).IsNull());
    EXPECT_TRUE(doc.DocumentElement().AppendChild(none).IsNull());
    EXPECT_TRUE(none.OwnerDocument().IsNull());
}

TEST(XmlView, RemovedNodesAndTheirDocumentOutliveEveryOtherHandle) {
    XmlNode kept;
    XmlNode grandchild;
    {
        XmlDocument doc = XmlDocument::Parse("<ROOT><SITE><KEY>S1</KEY><PROFILE><PORT>3</PORT></PROFILE></SITE></ROOT>");
        XmlNode site = doc.DocumentElement().SelectSingle("SITE");
        grandchild = site.SelectSingle("PROFILE/PORT");
        kept = doc.DocumentElement().RemoveChild(site);
        ASSERT_FALSE(kept.IsNull());
        EXPECT_TRUE(kept.Parent().IsNull());
        EXPECT_EQ(doc.DocumentElement().CountChildElements(), 0u);
    }
    // The document handle is gone; the views keep the detached tree alive.
    EXPECT_EQ(kept.SelectSingle("KEY").Text(), "S1");
    EXPECT_FALSE(kept.OwnerDocument().IsNull());
    kept = XmlNode();
    EXPECT_EQ(grandchild.Text(), "3");  // a view below a dropped view still holds
}

TEST(XmlView, FactoryElementsMoveBetweenDocumentsIntactAndUnviewedOnesAreReclaimed) {
    XMLFactoryLease lease;
    XmlNode profile = XMLOps::CreateXMLElement("PROFILE");
    XmlNode name = XMLOps::CreateXMLElement("NAME");
    name.setText("Pump € é");
    profile.AppendChild(name);
    XmlNode feature = XMLOps::CreateXMLElement("FEATURE");
    profile.AppendChild(feature);
    for (int i = 0; i < 5000; ++i) XMLOps::CreateXMLElement("TEMP").setText("x");

    XmlDocument first = XmlDocument::Parse("<A/>");
    XmlDocument second = XmlDocument::Parse("<B/>");
    first.DocumentElement().AppendChild(profile);
    EXPECT_TRUE(feature.OwnerDocument() == first);
    second.DocumentElement().AppendChild(profile);
    EXPECT_TRUE(profile.OwnerDocument() == second);
    EXPECT_EQ(first.DocumentElement().CountChildElements(), 0u);
    first = XmlDocument();  // the document the node came through is freed

    EXPECT_EQ(second.DocumentElement().Xml(), "<B><PROFILE><NAME>Pump € é</NAME><FEATURE/></PROFILE></B>");
    second = XmlDocument();
    // Views alone keep the second document alive now.
    EXPECT_EQ(profile.Parent().Name(), "B");
    EXPECT_EQ(name.Text(), "Pump € é");
}

TEST(XmlView, AppendRefusesCyclesAndSecondRootsAndNeverMergesText) {
    XmlDocument doc = XmlDocument::Parse("<R><A><B/></A></R>");
    XmlNode a = doc.DocumentElement().SelectSingle("A");
    XmlNode b = a.SelectSingle("B");
    EXPECT_TRUE(b.AppendChild(a).IsNull());
    EXPECT_TRUE(a.AppendChild(a).IsNull());
    EXPECT_TRUE(doc.DocumentNode().AppendChild(doc.CreateElement("OTHER")).IsNull());

    b.AppendChild(doc.CreateTextNode("one"));
    XmlNode t2 = b.AppendChild(doc.CreateTextNode("two"));
    EXPECT_EQ(b.ChildNodes().size(), 2u);
    EXPECT_EQ(t2.Text(), "two");
    EXPECT_EQ(b.Text(), "onetwo");
    // Insert before, and moving within one parent.
    XmlNode c = doc.CreateElement("C");
    a.InsertBefore(c, b);
    EXPECT_EQ(a.FirstChildElement().Name(), "C");
    a.AppendChild(c);
    EXPECT_EQ(a.LastChild().Name(), "C");
}

TEST(XmlView, SelectionByRelativeNamePaths) {
    XmlDocument doc = XmlDocument::Parse("<R><P><K>1</K></P><X/><P><K>2</K><K>3</K></P></R>");
    XmlNode root = doc.DocumentElement();
    EXPECT_EQ(root.SelectAll("P").size(), 2u);
    EXPECT_EQ(root.SelectAll("P/K").size(), 3u);
    EXPECT_EQ(root.SelectSingle("P/K").Text(), "1");
    EXPECT_EQ(root.SelectAll("*").size(), 3u);
    EXPECT_EQ(root.CountChildElements("P"), 2u);
    for (const char* bad : {"", "/P", "P/", "P//K", "1P", "a b"}) {
        EXPECT_TRUE(root.SelectSingle(bad).IsNull()) << bad;
        EXPECT_TRUE(doc.CreateElement(bad).IsNull()) << bad;
    }
    EXPECT_FALSE(doc.CreateElement("Ärzte").IsNull());
    // A part holding a NUL names no element (it once read past the shorter name).
    EXPECT_TRUE(root.SelectSingle(std::string_view("P\0\0\0", 4)).IsNull());
    // 100,000 levels load, are walked by a path as long without recursion, and are freed.
    std::string deep, path = "G";
    for (int i = 0; i < 100000; ++i) deep += "<G>";
    for (int i = 0; i < 100000; ++i) deep += "</G>";
    for (int i = 1; i < 100000; ++i) path += "/G";
    const XmlNode top = XmlDocument::Parse(deep).DocumentNode();
    EXPECT_FALSE(top.SelectSingle(path).IsNull());
    EXPECT_EQ(top.SelectAll(path + "/G").size(), 0u);
}

TEST(XmlView, TextSetterKeepsViewedChildrenAndCleansText) {
    XmlDocument doc = XmlDocument::Parse("<R><N><INNER>x</INNER></N></R>");
    XmlNode n = doc.DocumentElement().SelectSingle("N");
    XmlNode inner = n.SelectSingle("INNER");
    n.setText("plain");
    EXPECT_EQ(n.Xml(), "<N>plain</N>");
    EXPECT_EQ(inner.Text(), "x");  // detached, still alive
    n.setText("");
    EXPECT_TRUE(n.FirstChild().IsNull());
    // Bytes that are not UTF-8 and characters XML cannot hold never reach
    // the document, so a save can always be read back.
    n.setText(std::string("a\x01" "b\xff", 4));
    EXPECT_EQ(n.Text(), "ab\xEF\xBF\xBD");
    EXPECT_EQ(XmlDocument::Parse(doc.Serialize()).DocumentElement().SelectSingle("N").Text(), "ab\xEF\xBF\xBD");
}

TEST(XmlView, ReadOnlyKeyedLookups) {
    XmlDocument doc = XmlDocument::Parse(
        "<R><P><KEY>Ärzte</KEY></P><X><KEY>b</KEY></X><P><KEY>b<!--c-->c</KEY></P><P/><P><KEY>B</KEY></P></R>");
    XmlNode root = doc.DocumentElement();
    EXPECT_EQ(root.FindChildByChildText("P", "KEY", "ärzte"), root.FirstChildElement("P"));
    EXPECT_EQ(root.FindChildByChildText("P", "KEY", "BC"), root.ChildElementAt("P", 2));  // text split by a comment
    EXPECT_EQ(root.FindChildByChildText("P", "KEY", "b"), root.ChildElementAt("P", 4));
    EXPECT_TRUE(root.FindChildByChildText("P", "KEY", "b", false).IsNull());
    EXPECT_TRUE(root.FindChildByChildText("P", "KEY", "zzz").IsNull());
    EXPECT_TRUE(root.ChildElementAt("P", 0).IsNull());
    EXPECT_TRUE(root.ChildElementAt("P", 5).IsNull());
    std::vector<std::string> keys;
    root.ForEachChildText("P", "KEY", [&](std::string_view key) { keys.emplace_back(key); });
    EXPECT_EQ(keys, (std::vector<std::string>{"Ärzte", "bc", "", "B"}));
    std::string scratch;
    EXPECT_EQ(root.ChildElementAt("P", 2).ChildText("KEY", scratch), "bc");
    EXPECT_EQ(XmlNode().ChildText("KEY", scratch), "");
}

TEST(XmlView, EditGenerationMovesWithEveryEditButAnAppend) {
    XmlDocument doc = XmlDocument::Parse("<R><A>x</A></R>");
    XmlNode root = doc.DocumentElement();
    std::uint64_t seen = doc.EditGeneration();
    root.AppendChild(doc.CreateElement("B"));
    EXPECT_EQ(doc.EditGeneration(), seen);
    const std::function<void()> edits[] = {
        [&] { root.InsertBefore(doc.CreateElement("C"), root.FirstChild()); },
        [&] { root.SelectSingle("A").FirstChild().setText("y"); },  // the text node itself
        [&] { root.SelectSingle("A").setText("z"); },
        [&] { root.RemoveChild(root.SelectSingle("B")); }};
    for (const auto& edit : edits) {
        edit();
        EXPECT_NE(doc.EditGeneration(), seen);
        seen = doc.EditGeneration();
    }
}
