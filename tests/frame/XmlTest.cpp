// The XML document helpers: element views, parsing and saving, and the
// legacy read and write rules.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>

#include "TempDir.h"
#include "Thrown.h"
#include <meridex/frame/Error.h>
#include <meridex/frame/Text.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XMLOps.h>
#include <meridex/frame/XmlAccess.h>
#include <meridex/frame/XmlDocument.h>
#include <meridex/frame/XmlImpl.h>
#include <meridex/frame/XmlSave.h>

#include <libxml/xmlsave.h>

using namespace meridex;
using namespace meridex::XMLOps;

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
    EXPECT_EQ(f.Xml() + copy.Xml() + f.CloneNode(false).Xml(), "<F><KEY>k</KEY></F><F><KEY>other</KEY></F><F/>");
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
    XmlNode profile = CreateXMLElement("PROFILE");
    XmlNode name = CreateXMLElement("NAME");
    name.setText("Pump € é");
    profile.AppendChild(name);
    XmlNode feature = CreateXMLElement("FEATURE");
    profile.AppendChild(feature);
    for (int i = 0; i < 5000; ++i) CreateXMLElement("TEMP").setText("x");

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
    EXPECT_EQ(t2.Text() + " " + b.Text(), "two onetwo");
    // Insert before, and moving within one parent.
    XmlNode c = a.InsertBefore(doc.CreateElement("C"), b);
    EXPECT_EQ(doc.DocumentElement().Xml(), "<R><A><C/><B>onetwo</B></A></R>");
    a.AppendChild(c);
    EXPECT_EQ(doc.DocumentElement().Xml(), "<R><A><B>onetwo</B><C/></A></R>");
}

TEST(XmlView, SelectionByRelativeNamePaths) {
    XmlDocument doc = XmlDocument::Parse("<R><P><K>1</K></P><X/><P><K>2</K><K>3</K></P></R>");
    XmlNode root = doc.DocumentElement();
    const std::pair<const char*, std::size_t> counts[] = {{"P", 2}, {"P/K", 3}, {"*", 3}};
    for (const auto& [path, count] : counts) EXPECT_EQ(root.SelectAll(path).size(), count) << path;
    EXPECT_EQ(root.SelectSingle("P/K").Text(), "1");
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

TEST(XmlParse, LegacyEncodingsLoadAndSurviveASave) {
    // Declared windows-1252 (either spelling), undeclared windows-1252 (the legacy host's settings
    // files), declared and undeclared UTF-8. 0x81, 0x8D, 0x8F, 0x90 and 0x9D have no letter;
    // Windows maps them to the control characters of the same number.
    const std::string cp1252 = "<R><T a=\"\x90\">\x80 \xE9 \x81\x8D\x8F\x90\x9D \xFC</T></R>";
    const std::string expected = "€ é \u0081\u008D\u008F\u0090\u009D ü";
    const std::string utf8 = "<R><T>" + expected + "</T></R>";
    const std::string cp1252Declared = "<?xml version=\"1.0\" encoding=\"windows-1252\"?>" + cp1252;
    for (const std::string& bytes : {cp1252Declared, "<?xml version='1.0' encoding='CP1252'?>" + cp1252, cp1252,
                                     "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + utf8, utf8}) {
        std::string error;
        XmlDocument doc = XmlDocument::Parse(bytes, &error);
        ASSERT_TRUE(doc) << bytes << error;
        EXPECT_EQ(doc.DocumentElement().SelectSingle("T").Text(), expected);
        EXPECT_EQ(XmlDocument::Parse(doc.Serialize()).DocumentElement().SelectSingle("T").Text(), expected);
    }
    // A declared document keeps its declaration and encoding on save.
    const std::string saved = XmlDocument::Parse(cp1252Declared).Serialize();
    EXPECT_EQ(saved.rfind("<?xml version=\"1.0\" encoding=\"windows-1252\"?>", 0), 0u);
    EXPECT_NE(saved.find("\x80 \xE9"), std::string::npos);
    // An undeclared document is written without a declaration, everything
    // above 127 as a reference, so UTF-8 and windows-1252 readers agree.
    EXPECT_EQ(XmlDocument::Parse("<R><T>\x80 \xE9</T></R>").Serialize(), "<R>\n  <T>&#8364; &#233;</T>\n</R>\n");
}

TEST(XmlParse, CharacterReferencesMakeTextReadableInBothEncodings) {
    const std::string xml = "<R a=\"B\u00FCro\"><!-- \u00FC --><T>B\u00FCro \u20AC \U0001F600</T></R>";
    const std::string ascii = Text::XmlWithCharacterReferences(xml);
    EXPECT_EQ(ascii, "<R a=\"B&#252;ro\"><!-- \u00FC --><T>B&#252;ro &#8364; &#128512;</T></R>");
    const std::string plain = Text::XmlWithCharacterReferences("<R><T>B&#252;ro</T></R>");
    for (const std::string& bytes : {plain, Text::FromWindows1252(plain)}) {
        EXPECT_EQ(XmlDocument::Parse(bytes).DocumentElement().Text(), "B\u00FCro");
    }
}

// Undeclared documents and the settings element are written in one pass, references made as the
// text is escaped; the bytes must be those of the UTF-8 form with references put in afterwards, also
// where a name, comment, instruction or attribute holds characters above 127.
TEST(XmlParse, TheOnePassWriterWritesWhatReferencesAddedAfterwardsWrite) {
    const auto utf8Form = [](const XmlDocument& doc) {
        xmlBufferPtr buffer = xmlBufferCreate();
        xmlSaveCtxtPtr ctxt = xmlSaveToBuffer(buffer, "UTF-8", XML_SAVE_FORMAT | XML_SAVE_NO_DECL);
        xmlSaveDoc(ctxt, XmlAccess::Holder(doc)->doc);
        xmlSaveClose(ctxt);
        std::string out(reinterpret_cast<const char*>(xmlBufferContent(buffer)), xmlBufferLength(buffer));
        xmlBufferFree(buffer);
        return out;
    };
    for (const std::string& text : {
             std::string("<R><T>plain &amp; &lt;tag&gt; \"q\" 'a'</T><E/><T>\t\n&#13;</T></R>"),
             std::string("<R><A><B>B\u00FCro \u20AC \U0001F600 \u0081</B></A><C>&amp;\u00E9&lt;</C></R>"),
             std::string("<R a=\"B\u00FCro &amp; &lt;\"><T>\u00FC</T></R>"),
             std::string("<R><!-- B\u00FCro --><?pi \u20AC?><T>\u00FC</T></R>"),
             std::string("<R\u00C9><T\u00C9>\u00FC</T\u00C9></R\u00C9>"),
             std::string("<!-- before --><R><T>x</T>mixed \u00FC<U>y</U></R><?after \u00FC?>")}) {
        SCOPED_TRACE(text);
        const XmlDocument doc = XmlDocument::Parse(text);
        ASSERT_TRUE(doc);
        EXPECT_EQ(doc.Serialize(), Text::XmlWithCharacterReferences(utf8Form(doc)));
        const XmlNode root = doc.DocumentElement();
        EXPECT_EQ(XmlSave::AsciiXml(root, false, "\r\n"), Text::XmlWithCharacterReferences(root.Xml()) + "\r\n");
    }
}

TEST(XmlParse, HostileDocumentsGetTheirDocumentedResults) {
    std::string error;
    // A text node beyond the parser's usual 10 MB limit loads whole.
    XmlDocument big = XmlDocument::Parse("<R>" + std::string(12u << 20, 'x') + "</R>", &error);
    ASSERT_TRUE(big) << error;
    EXPECT_EQ(big.DocumentElement().Text().size(), 12u << 20);
    // Invalid UTF-8 without a declaration is legacy windows-1252 text.
    EXPECT_EQ(XmlDocument::Parse("<R>\xC3\x28</R>").DocumentElement().Text(), "\u00C3(");
    // UTF-16 with its byte order mark loads.
    const char wideBytes[] = "\xFF\xFE<\0R\0>\0\xFC\0<\0/\0R\0>\0";
    EXPECT_EQ(XmlDocument::Parse(std::string(wideBytes, sizeof wideBytes - 1)).DocumentElement().Text(), "\u00FC");
    // An external DTD is never fetched; the document itself still loads.
    const std::string withDtd = "<?xml version=\"1.0\"?><!DOCTYPE r SYSTEM \"http://127.0.0.1:9/x.dtd\"><r>ok</r>";
    EXPECT_EQ(XmlDocument::Parse(withDtd).DocumentElement().Text(), "ok");
    // 2,000 levels save, and the save loads again.
    std::string deep;
    for (int i = 0; i < 2000; ++i) deep = "<G>" + deep + "</G>";
    EXPECT_TRUE(XmlDocument::Parse(XmlDocument::Parse(deep).Serialize()));
}

TEST(XmlParse, MalformedAndHostileDocumentsAreRefusedQuickly) {
    // A billion laughs, and external entities naming a file or a URL: any entity declaration is refused.
    std::string laughs = "<?xml version=\"1.0\"?><!DOCTYPE lolz [<!ENTITY lol0 \"lol\">";
    for (int level = 1; level <= 9; ++level) {
        laughs += "<!ENTITY lol" + std::to_string(level) + " \"";
        for (int i = 0; i < 10; ++i) laughs += "&lol" + std::to_string(level - 1) + ";";
        laughs += "\">";
    }
    laughs += "]><lolz>&lol9;</lolz>";
    for (const std::string& entities : {laughs,
             std::string("<?xml version=\"1.0\"?><!DOCTYPE r [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><r>&x;</r>"),
             std::string("<!DOCTYPE r [<!ENTITY x SYSTEM \"http://127.0.0.1:9/x\">]><r>&x;</r>")}) {
        std::string error;
        EXPECT_FALSE(XmlDocument::Parse(entities, &error));
        EXPECT_NE(error.find("entities"), std::string::npos) << entities;
    }
    for (const char* bad : {"", "<", "<a>", "<a></b>", "not xml", "<a/><b/>", "\xFF\xFE\x00"}) {
        EXPECT_FALSE(XmlDocument::Parse(bad)) << bad;
    }
    EXPECT_FALSE(XmlDocument::Parse(std::string("<R>a\0b</R>", 10)));  // a NUL byte is not XML
    std::string error;
    EXPECT_FALSE(XmlDocument::Load("/nonexistent/file.xml", &error));
}

TEST(XmlParse, SaveIsAtomicAndNewDocumentsCarryTheExactInstruction) {
    test::TempDir dir;
    XmlDocument fresh = NewXMLDocument();
    ASSERT_TRUE(fresh.Save(dir.File("new.xml")));
    EXPECT_EQ(test::TempDir::Read(dir.File("new.xml")), "<?xml version = \"1.0\" encoding=\"windows-1252\"?>\n");

    // With a root and non-ASCII text, the text is written in the encoding
    // the instruction names, and loads back.
    fresh.DocumentNode().AppendChild(fresh.CreateElement("MAP")).setText("Ménage €");
    ASSERT_TRUE(fresh.Save(dir.File("new.xml")));
    const std::string bytes = test::TempDir::Read(dir.File("new.xml"));
    EXPECT_NE(bytes.find("M\xE9nage \x80"), std::string::npos);
    EXPECT_EQ(XmlDocument::Load(dir.File("new.xml")).DocumentElement().Text(), "Ménage €");

    // A failed save leaves the old file exactly as it was, with no litter.
    const std::string target = dir.Write("keep.xml", "<OLD/>");
    std::string error;
    EXPECT_FALSE(fresh.Save(dir.File("missing/keep.xml"), &error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(fresh.Save(dir.Path(), &error));  // a folder, not a file
    EXPECT_EQ(test::TempDir::Read(target), "<OLD/>");
    EXPECT_EQ(test::TempDir::Entries(dir.Path()), (std::vector<std::string>{"keep.xml", "new.xml"}));
}

namespace {

// A loaded document with a root, so the change mark has somewhere to go.
struct Doc {
    XMLFactoryLease lease;
    XmlDocument doc = XmlDocument::Parse("<ROOT><NODE><A>x</A><Z>0</Z></NODE></ROOT>");
    XmlNode node = doc.DocumentElement().SelectSingle("NODE");
    bool Changed() const { return !doc.DocumentElement().SelectSingle("CHANGED").IsNull(); }
    std::string Xml() const { return doc.DocumentElement().Xml(); }
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
    // Under a node that is no element (a text), nothing is made and nothing marked.
    d.ClearMark();
    const XmlNode text = d.node.SelectSingle("Z").FirstChild();
    SetXMLValue(text, "T", "v", true);
    EXPECT_EQ(d.node.SelectSingle("Z").Xml(), "<Z>5</Z>");
    EXPECT_FALSE(d.Changed());
}

TEST(XMLOps, ReadersWriteTheirDefaults) {
    Doc d;
    EXPECT_EQ(ReadXMLInteger(d.node, "I", 0, false), 0);  // a zero default is neither written nor marked
    EXPECT_FALSE(d.Changed());
    EXPECT_FALSE(ReadXMLBoolean(d.node, "B", false, false));
    EXPECT_TRUE(d.Changed());
    d.ClearMark();
    EXPECT_EQ(ReadXMLInteger(d.node, "J", -12, false), -12);
    EXPECT_EQ(ReadXMLString(d.node, "A", "dflt", false), "x");
    EXPECT_EQ(GetXMLValue(d.node, "NEW", "v"), "v");
    EXPECT_EQ(d.Xml(), "<ROOT><NODE><A>x</A><Z>0</Z><B>False</B><J>-12</J><NEW>v</NEW></NODE><CHANGED>-1</CHANGED></ROOT>");
    EXPECT_EQ(GetXMLValue(XmlNode(), "A", "dflt"), "");
    EXPECT_EQ(ReadXMLString(XmlNode(), "A", "dflt", false), "dflt");
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
    EXPECT_EQ(test::ThrownError([&] { read("99999"); }).Number(), ErrorNumber::Overflow);
    const std::pair<const char*, bool> booleans[] = {{"1", true}, {"-1", true}, {"2.5", true}, {"0", false},
                                                     {"true", true}, {"True", true}, {"yes", false}};
    for (const auto& [text, value] : booleans) {
        SetXMLValue(d.node, "F", text, true);
        EXPECT_EQ(ReadXMLBoolean(d.node, "F", false, false), value) << text;
    }
}

TEST(XMLOps, WritersAlwaysMarkAndStoreZero) {
    Doc d;
    WriteXMLString(d.node, "S", "same", "same", false);  // not stored, yet marked
    EXPECT_EQ(d.Xml(), "<ROOT><NODE><A>x</A><Z>0</Z></NODE><CHANGED>-1</CHANGED></ROOT>");
    WriteXMLString(d.node, "A", "", "", false);  // existing: written even when empty
    EXPECT_EQ(d.node.SelectSingle("A").Xml(), "<A/>");
    WriteXMLInteger(d.node, "A", 0, 0, false);
    WriteXMLInteger(d.node, "M", 4, 0, false);
    // One mark only, however many writes; found again after it is removed and re-created.
    d.ClearMark();
    WriteXMLInteger(d.node, "M", 5, 0, false);
    WriteXMLInteger(d.node, "M", 6, 0, false);
    EXPECT_EQ(d.Xml(), "<ROOT><NODE><A>0</A><Z>0</Z><M>6</M></NODE><CHANGED>-1</CHANGED></ROOT>");
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
