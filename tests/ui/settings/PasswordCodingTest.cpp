#include <gtest/gtest.h>

#include <meridex/ui/settings/PasswordCoding.h>

using namespace meridex::ui;

TEST(PasswordCoding, EncodedIsAtSignAndBase64OfWindows1252AndDecodesBack) {
    EXPECT_EQ(EncodePassword("secret"), "@c2VjcmV0");
    // "é" is one windows-1252 byte, 0xE9.
    EXPECT_EQ(EncodePassword("\xC3\xA9"), "@6Q==");
    EXPECT_EQ(EncodePassword(""), "@");
    for (const std::string password : {"secret", "Pa55 w0rd!", "\xC3\xA9t\xC3\xA9", "", "a"})
        EXPECT_EQ(DecodePassword(EncodePassword(password)), password);
}

// A marked text that is not Base64 is the decode error, which the profile editor's lock shows.
TEST(PasswordCoding, TextWithoutTheMarkerDecodesToNoPassword) {
    for (const char* unmarked : {"c2VjcmV0", "", " @c2VjcmV0"}) EXPECT_EQ(DecodePassword(unmarked), "");
}
