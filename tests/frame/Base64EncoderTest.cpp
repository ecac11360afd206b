#include <gtest/gtest.h>

#include <meridex/frame/Base64Encoder.h>
#include <vector>

#include <meridex/frame/Error.h>

using namespace meridex;

TEST(Base64Encoder, EncodesWithPaddingAndLineBreaksAndDecodesItsOwnOutput) {
    Base64Encoder b64;
    // "€" is byte 0x80 in windows-1252, as the legacy host stored it.
    const struct { std::string text, encoded; } rows[] = {
        {"", ""}, {"Man", "TWFu"}, {"Ma", "TWE="}, {"M", "TQ=="}, {"€", "gA=="}, {"é", "6Q=="},
        {"secret password", ""}, {"Ærø € ñ", ""}, {std::string(54, 'a'), ""}, {std::string(200, 'z'), ""}};
    for (const auto& [text, expected] : rows) {
        const std::string encoded = b64.Encode(text);
        EXPECT_TRUE(expected.empty() || encoded == expected) << text << " gave " << encoded;
        EXPECT_EQ(b64.Decode(encoded), text);
        std::string flat = encoded;
        std::erase_if(flat, [](char c) { return c == '\r' || c == '\n'; });
        EXPECT_EQ(b64.Decode(flat), text);
    }
    // 54 bytes fill one 72-character line exactly; 57 start a second.
    EXPECT_EQ(b64.Encode(std::string(54, 'a')).size(), 72u);
    const std::string line57 = b64.Encode(std::string(57, 'a'));
    EXPECT_EQ(line57.size(), 72u + 2u + 4u);
    EXPECT_EQ(line57.substr(72, 2), "\r\n");
    // Characters outside the alphabet are not rejected; a bad length is.
    EXPECT_NO_THROW(b64.Decode("!!!!"));
    try {
        b64.Decode("abc");
        FAIL();
    } catch (const Error& e) {
        EXPECT_EQ(e.Number(), ErrorNumber::ObjectErrorBase);
        EXPECT_EQ(e.Source(), "Decode");
        EXPECT_EQ(e.Description(), "Unable to decode string");
    }
}
