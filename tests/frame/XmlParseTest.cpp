#include <gtest/gtest.h>

#include "TempDir.h"
#include <meridex/frame/Text.h>
#include <meridex/frame/XMLOps.h>
#include <meridex/frame/XmlDocument.h>
#include <meridex/frame/XmlSave.h>
#include <meridex/frame/XmlAccess.h>
#include <meridex/frame/XmlImpl.h>

#include <libxml/xmlsave.h>

using namespace meridex;

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
    XmlDocument fresh = XMLOps::NewXMLDocument();
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
