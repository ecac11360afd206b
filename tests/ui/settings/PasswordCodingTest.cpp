#include <gtest/gtest.h>

#include <meridex/frame/Error.h>
#include <meridex/ui/settings/PasswordCoding.h>

using namespace meridex;
using namespace meridex::ui;

TEST(PasswordCoding, EncodedIsAtSignAndBase64OfWindows1252) {
    EXPECT_EQ(EncodePassword("secret"), "@c2VjcmV0");
    // "é" is one windows-1252 byte, 0xE9.
    EXPECT_EQ(EncodePassword("\xC3\xA9"), "@6Q==");
    EXPECT_EQ(EncodePassword(""), "@");
}

TEST(PasswordCoding, DecodingGivesBackWhatWasEncoded) {
    for (const std::string password : {"secret", "Pa55 w0rd!", "\xC3\xA9t\xC3\xA9", "", "a"})
        EXPECT_EQ(DecodePassword(EncodePassword(password)), password);
}

TEST(PasswordCoding, TextWithoutTheMarkerDecodesToNoPassword) {
    EXPECT_EQ(DecodePassword("c2VjcmV0"), "");
    EXPECT_EQ(DecodePassword(""), "");
    EXPECT_EQ(DecodePassword(" @c2VjcmV0"), "");
}

TEST(PasswordCoding, MarkedTextThatIsNotBase64IsTheDecodeError) {
    try {
        DecodePassword("@abc");
        FAIL() << "no error";
    } catch (const Error& e) {
        EXPECT_EQ(e.Number(), ErrorNumber::ObjectErrorBase);
        EXPECT_EQ(e.Description(), "Unable to decode string");
    }
}
