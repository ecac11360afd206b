#include <gtest/gtest.h>

#include <meridex/frame/Base64Encoder.h>
#include <vector>

#include <meridex/frame/Error.h>

using namespace meridex;

TEST(Base64Encoder, EncodesWithPaddingAndLineBreaks) {
    Base64Encoder b64;
    EXPECT_EQ(b64.Encode(""), "");
    EXPECT_EQ(b64.Encode("Man"), "TWFu");
    EXPECT_EQ(b64.Encode("Ma"), "TWE=");
    EXPECT_EQ(b64.Encode("M"), "TQ==");
    const std::string line54 = b64.Encode(std::string(54, 'a'));
    EXPECT_EQ(line54.size(), 72u);
    EXPECT_EQ(line54.find('\r'), std::string::npos);
    const std::string line57 = b64.Encode(std::string(57, 'a'));
    EXPECT_EQ(line57.size(), 72u + 2u + 4u);
    EXPECT_EQ(line57.substr(72, 2), "\r\n");
}

TEST(Base64Encoder, DecodesItsOwnOutputAndWindows1252Text) {
    Base64Encoder b64;
    for (const std::string& text : std::vector<std::string>{"", "M", "Ma", "Man", "secret password", "Ærø € ñ", std::string(200, 'z')}) {
        const std::string encoded = b64.Encode(text);
        EXPECT_EQ(b64.Decode(encoded), text);
        std::string flat;
        for (char c : encoded) {
            if (c != '\r' && c != '\n') flat += c;
        }
        EXPECT_EQ(b64.Decode(flat), text);
    }
    // "€" is byte 0x80 in windows-1252, as the legacy host stored it.
    EXPECT_EQ(b64.Encode("€"), "gA==");
    EXPECT_EQ(b64.Decode("6Q=="), "é");
    // Characters outside the alphabet are not rejected.
    EXPECT_NO_THROW(b64.Decode("!!!!"));
}

TEST(Base64Encoder, DecodeOfABadLengthFails) {
    Base64Encoder b64;
    try {
        b64.Decode("abc");
        FAIL();
    } catch (const Error& e) {
        EXPECT_EQ(e.Number(), ErrorNumber::ObjectErrorBase);
        EXPECT_EQ(e.Source(), "Decode");
        EXPECT_EQ(e.Description(), "Unable to decode string");
    }
}
