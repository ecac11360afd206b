#include <gtest/gtest.h>

#include <cmath>

#include <meridex/frame/Error.h>
#include <meridex/frame/Index.h>
#include <meridex/frame/Numeric.h>
#include <meridex/frame/Text.h>

using namespace meridex;

TEST(Text, CaseInsensitiveForAllOfUnicode) {
    // An ASCII start decides alone only where both texts are ASCII so far: a long s (U+017F) and a
    // Kelvin sign (U+212A) further on still fold to s and k.
    const struct { const char *a, *b; bool equal; } pairs[] = {
        {"Ärzte", "äRZTE", true}, {"ΣΊΣΥΦΟΣ", "σίσυφος", true}, {"administrator", "ADMINISTRATOR", true},
        {"Pump", "Pump_1", false}, {"a", "b", false}, {"V4_\u017FCHEME", "v4_scheme", true},
        {"ab\u212A", "ABk", true}, {"ab", "ab\u017F", false}, {"ab\u017Fx", "abSy", false}};
    for (const auto& p : pairs) EXPECT_EQ(Text::EqualsIgnoreCase(p.a, p.b), p.equal) << p.a << " " << p.b;
    EXPECT_EQ(Text::ToUpper("\\sub\\Site é.sxs"), "\\SUB\\SITE É.SXS");
    EXPECT_EQ(Text::FoldCase("MÜNCHEN"), Text::FoldCase("münchen"));
    EXPECT_TRUE(Text::IsValidUtf8("€"));
    EXPECT_FALSE(Text::IsValidUtf8("\xE9"));
    EXPECT_FALSE(Text::IsValidUtf8("\xC0\xAF"));  // overlong
    EXPECT_EQ(Text::FromWindows1252("\x80\xE9\x9F"), "€éŸ");
    EXPECT_EQ(Text::ToWindows1252("€éŸ✓"), "\x80\xE9\x9F?");
}

TEST(Numeric, LegacyNumberRules) {
    const struct { const char* text; double leading; bool numeric; } numbers[] = {
        {"12abc", 12, false}, {"  -3.5e1x", -35, false}, {"TRUE", 0, false}, {"&H1F", 31, true},
        {"&HFFFF", -1, true}, {"", 0, false}, {" -1 ", -1, true}, {"2.5", 2.5, true}, {"1x", 1, false}};
    for (const auto& n : numbers) {
        EXPECT_EQ(Numeric::LeadingNumber(n.text), n.leading) << n.text;
        EXPECT_EQ(Numeric::IsNumeric(n.text), n.numeric) << n.text;
    }
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
