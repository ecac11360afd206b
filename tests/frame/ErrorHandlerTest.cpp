#include <gtest/gtest.h>

#include <regex>

#include "TempDir.h"
#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/RecordingUserInterface.h>

using namespace meridex;

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
