// The small frame helpers: text, numbers, Base64 and the error handler.
#include <gtest/gtest.h>

#include <cmath>
#include <regex>

#include "TempDir.h"
#include "Thrown.h"
#include <meridex/frame/Base64Encoder.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/Index.h>
#include <meridex/frame/Numeric.h>
#include <meridex/frame/RecordingUserInterface.h>
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
    const Error bad = test::ThrownError([&] { b64.Decode("abc"); });
    EXPECT_EQ(bad.what(),
              "Error " + std::to_string(ErrorNumber::ObjectErrorBase) + " (Decode): Unable to decode string");
    EXPECT_EQ(bad.Source() + ": " + bad.Description(), "Decode: Unable to decode string");
}

TEST(ErrorHandler, LogLinesMessageBoxAndUnwritableLogs) {
    test::TempDir dir;
    auto ui = std::make_shared<RecordingUserInterface>();
    ErrorHandler handler(ui);
    handler.LogError(53, "File not found", "frmFirmware:cmdBrowse_Click");  // both switches off
    EXPECT_TRUE(ui->Messages().empty());

    handler.setErrorLogFile(dir.File("MeridexAppLibrary.log"));
    handler.setLogErrors(true);
    handler.LogError(53, "File not found", "frmFirmware:cmdBrowse_Click");
    handler.LogError(0, "", "X:Y");
    const std::string log = test::TempDir::Read(dir.File("MeridexAppLibrary.log"));
    const std::regex lines(
        "\\d\\d-(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec)-\\d{4} \\d\\d:\\d\\d:\\d\\d, Error in subroutine "
        "frmFirmware:cmdBrowse_Click - 53 : File not found\r\n"
        "\\d\\d-[A-Z][a-z]{2}-\\d{4} \\d\\d:\\d\\d:\\d\\d, Error in subroutine X:Y - 0 : \r\n");
    EXPECT_TRUE(std::regex_match(log, lines)) << log;
    EXPECT_TRUE(ui->Messages().empty());

    handler.setDisplayErrorMsg(true);
    handler.LogError(5, "Invalid procedure call or argument", "frmProfiles:cmdLock_Click");
    ASSERT_EQ(ui->Messages().size(), 1u);
    EXPECT_EQ(ui->Messages()[0].text,
              "Error 5 - Invalid procedure call or argument\r\n\r\nIn subroutine: frmProfiles:cmdLock_Click");
    EXPECT_EQ(ui->Messages()[0].icon, MessageIcon::Critical);
    EXPECT_EQ(ui->Messages()[0].buttons, MessageButtons::OK);

    // A log that cannot be written is said in a message of its own.
    handler.setDisplayErrorMsg(false);
    for (const std::string& path : {std::string(), std::string("/nonexistent/dir/log.txt")}) {
        ui->Clear();
        handler.setErrorLogFile(path);
        handler.LogError(1, "x", "a:b");
        ASSERT_EQ(ui->Messages().size(), 1u);
        const std::string& text = ui->Messages()[0].text;
        EXPECT_EQ(text.rfind("Error ", 0), 0u);
        EXPECT_NE(text.find("\r\n\r\nOccured in in subroutine: cErrHnd:LogMinorError"), std::string::npos);
    }
}

TEST(ErrorHandler, LogLinesHaveAFixedFormat) {
    EXPECT_EQ(ErrorHandler::FormatLogLine({2026, 11, 14, 9, 5, 31}, 53, "File not found", "frmFirmware:cmdBrowse_Click"),
              "14-Nov-2026 09:05:31, Error in subroutine frmFirmware:cmdBrowse_Click - 53 : File not found");
    EXPECT_EQ(ErrorHandler::FormatLogLine({2026, 1, 2, 23, 0, 0}, -1, "d", "a:b"),
              "02-Jan-2026 23:00:00, Error in subroutine a:b - -1 : d");
}
