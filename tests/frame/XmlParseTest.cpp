#include <gtest/gtest.h>

#include "TempDir.h"
#include <meridex/frame/XMLOps.h>
#include <meridex/frame/XmlDocument.h>

using namespace meridex;

TEST(XmlParse, LegacyEncodingsLoadAndSurviveASave) {
    // Declared windows-1252, undeclared windows-1252 (the legacy host's
    // settings files), declared and undeclared UTF-8.
    const std::string cp1252Declared = "<?xml version=\"1.0\" encoding=\"windows-1252\"?><R><T>\x80 \xE9</T></R>";
    const std::string cp1252Bare = "<R><T>\x80 \xE9</T></R>";
    const std::string utf8Declared = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><R><T>€ é</T></R>";
    const std::string utf8Bare = "<R><T>€ é</T></R>";
    for (const std::string& bytes : {cp1252Declared, cp1252Bare, utf8Declared, utf8Bare}) {
        std::string error;
        XmlDocument doc = XmlDocument::Parse(bytes, &error);
        ASSERT_TRUE(doc) << error;
        EXPECT_EQ(doc.DocumentElement().SelectSingle("T").Text(), "€ é");
        XmlDocument again = XmlDocument::Parse(doc.Serialize());
        ASSERT_TRUE(again);
        EXPECT_EQ(again.DocumentElement().SelectSingle("T").Text(), "€ é");
    }
    // A declared document keeps its declaration and encoding on save.
    const std::string saved = XmlDocument::Parse(cp1252Declared).Serialize();
    EXPECT_EQ(saved.rfind("<?xml version=\"1.0\" encoding=\"windows-1252\"?>", 0), 0u);
    EXPECT_NE(saved.find("\x80 \xE9"), std::string::npos);
    // An undeclared document is written as UTF-8 without a declaration.
    EXPECT_EQ(XmlDocument::Parse(cp1252Bare).Serialize(), "<R>\n  <T>€ é</T>\n</R>\n");
}

TEST(XmlParse, MalformedAndHostileDocumentsAreRefusedQuickly) {
    const std::string laughs =
        "<?xml version=\"1.0\"?><!DOCTYPE lolz [<!ENTITY lol \"lol\">"
        "<!ENTITY lol2 \"&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;\">"
        "<!ENTITY lol3 \"&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;\">"
        "<!ENTITY lol4 \"&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;\">"
        "<!ENTITY lol5 \"&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;\">"
        "<!ENTITY lol6 \"&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;\">"
        "<!ENTITY lol7 \"&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;\">"
        "<!ENTITY lol8 \"&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;\">"
        "<!ENTITY lol9 \"&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;\">]>"
        "<lolz>&lol9;</lolz>";
    const std::string external =
        "<?xml version=\"1.0\"?><!DOCTYPE r [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><r>&x;</r>";
    const std::string externalDtd = "<?xml version=\"1.0\"?><!DOCTYPE r SYSTEM \"http://127.0.0.1:9/x.dtd\"><r>ok</r>";
    std::string error;
    EXPECT_FALSE(XmlDocument::Parse(laughs, &error));
    EXPECT_NE(error.find("entities"), std::string::npos);
    EXPECT_FALSE(XmlDocument::Parse(external));
    // An external DTD is never fetched; the document itself still loads.
    XmlDocument withDtd = XmlDocument::Parse(externalDtd);
    ASSERT_TRUE(withDtd);
    EXPECT_EQ(withDtd.DocumentElement().Text(), "ok");
    for (const char* bad : {"", "<", "<a>", "<a></b>", "not xml", "<a/><b/>", "\xFF\xFE\x00"}) {
        EXPECT_FALSE(XmlDocument::Parse(bad)) << bad;
    }
    EXPECT_FALSE(XmlDocument::Load("/nonexistent/file.xml", &error));
}

TEST(XmlParse, DeepDocumentsLoadSaveAndFree) {
    std::string deep;
    constexpr int kDepth = 2000;
    for (int i = 0; i < kDepth; ++i) deep += "<G>";
    deep += "x";
    for (int i = 0; i < kDepth; ++i) deep += "</G>";
    XmlDocument doc = XmlDocument::Parse(deep);
    ASSERT_TRUE(doc);
    EXPECT_TRUE(XmlDocument::Parse(doc.Serialize()));
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
}
