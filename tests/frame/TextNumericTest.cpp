#include <gtest/gtest.h>

#include <cmath>

#include <meridex/frame/Error.h>
#include <meridex/frame/Index.h>
#include <meridex/frame/Numeric.h>
#include <meridex/frame/Text.h>

using namespace meridex;

TEST(Text, CaseInsensitiveForAllOfUnicode) {
    EXPECT_TRUE(Text::EqualsIgnoreCase("Ärzte", "äRZTE"));
    EXPECT_TRUE(Text::EqualsIgnoreCase("ΣΊΣΥΦΟΣ", "σίσυφος"));
    EXPECT_TRUE(Text::EqualsIgnoreCase("administrator", "ADMINISTRATOR"));
    EXPECT_FALSE(Text::EqualsIgnoreCase("Pump", "Pump_1"));
    EXPECT_FALSE(Text::EqualsIgnoreCase("a", "b"));
    // An ASCII start decides alone only where both texts are ASCII so far: a long s (U+017F) and a
    // Kelvin sign (U+212A) further on still fold to s and k.
    EXPECT_TRUE(Text::EqualsIgnoreCase("V4_\u017FCHEME", "v4_scheme"));
    EXPECT_TRUE(Text::EqualsIgnoreCase("ab\u212A", "ABk"));
    EXPECT_FALSE(Text::EqualsIgnoreCase("ab", "ab\u017F"));
    EXPECT_FALSE(Text::EqualsIgnoreCase("ab\u017Fx", "abSy"));
    EXPECT_EQ(Text::ToUpper("\\sub\\Site é.sxs"), "\\SUB\\SITE É.SXS");
    EXPECT_EQ(Text::FoldCase("MÜNCHEN"), Text::FoldCase("münchen"));
    EXPECT_TRUE(Text::IsValidUtf8("€"));
    EXPECT_FALSE(Text::IsValidUtf8("\xE9"));
    EXPECT_FALSE(Text::IsValidUtf8("\xC0\xAF"));  // overlong
    EXPECT_EQ(Text::FromWindows1252("\x80\xE9\x9F"), "€éŸ");
    EXPECT_EQ(Text::ToWindows1252("€éŸ✓"), "\x80\xE9\x9F?");
}

TEST(Numeric, LegacyNumberRules) {
    EXPECT_EQ(Numeric::LeadingNumber("12abc"), 12);
    EXPECT_EQ(Numeric::LeadingNumber("  -3.5e1x"), -35);
    EXPECT_EQ(Numeric::LeadingNumber("TRUE"), 0);
    EXPECT_EQ(Numeric::LeadingNumber("&H1F"), 31);
    EXPECT_EQ(Numeric::LeadingNumber("&HFFFF"), -1);
    EXPECT_EQ(Numeric::LeadingNumber(""), 0);
    EXPECT_TRUE(Numeric::IsNumeric(" -1 "));
    EXPECT_TRUE(Numeric::IsNumeric("2.5"));
    EXPECT_FALSE(Numeric::IsNumeric("True"));
    EXPECT_FALSE(Numeric::IsNumeric(""));
    EXPECT_FALSE(Numeric::IsNumeric("1x"));
    EXPECT_EQ(Numeric::ToInt16(2.5), 2);
    EXPECT_EQ(Numeric::ToInt16(-2.5), -2);
    EXPECT_EQ(Numeric::ToInt16(32767.4), 32767);
    EXPECT_THROW(Numeric::ToInt16(32767.5), Error);
    EXPECT_THROW(Numeric::ToInt16(-40000), Error);
    EXPECT_EQ(Index(2.5).Number(), 2);
    EXPECT_EQ(Index(3.5).Number(), 4);
    EXPECT_FALSE(Index("KEY").IsNumber());
    EXPECT_LT(Index(9223372036854775808.0).Number(), 0);  // 2^63 does not fit: finds nothing
    EXPECT_LT(Index(std::nan("")).Number(), 0);
}
