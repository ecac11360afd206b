#include <meridex/frame/ErrorHandler.h>

#include <cstdio>

#include <meridex/frame/DateTime.h>
#include <meridex/frame/UserInterface.h>
#include <meridex/platform/FileSystem.h>

namespace meridex {
namespace {

constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

}  // namespace

ErrorHandler::ErrorHandler(std::shared_ptr<UserInterface> ui) : ui_(std::move(ui)) {}

// The log file is opened and closed for every line, so there is nothing
// left open to close here.
ErrorHandler::~ErrorHandler() = default;

std::shared_ptr<UserInterface> ErrorHandler::ui() const { return ui_ ? ui_ : UserInterface::Current(); }

std::string ErrorHandler::FormatLogLine(const DateTime& when, std::int32_t lErrNum, const std::string& strErrDesc,
                                        const std::string& strErrLoc) {
    char stamp[32];
    const int month = when.month >= 1 && when.month <= 12 ? when.month - 1 : 0;
    std::snprintf(stamp, sizeof stamp, "%02d-%s-%04d %02d:%02d:%02d", when.day, kMonths[month], when.year,
                  when.hour, when.minute, when.second);
    return std::string(stamp) + ", Error in subroutine " + strErrLoc + " - " + std::to_string(lErrNum) + " : " +
           strErrDesc;
}

void ErrorHandler::LogError(std::int32_t lErrNum, const std::string& strErrDesc, const std::string& strErrLoc) {
    try {
        const std::string text =
            "Error " + std::to_string(lErrNum) + " - " + strErrDesc + "\r\n\r\nIn subroutine: " + strErrLoc;
        if (logErrors_) LogMinorError(lErrNum, strErrDesc, strErrLoc);
        if (displayErrorMsg_) ui()->MessageBox(text, MessageButtons::OK, MessageIcon::Critical, UserInterface::DefaultCaption());
    } catch (const std::exception& e) {
        try {
            ui()->MessageBox(std::string("Error ") + e.what() + "\r\n\r\nOccured in in subroutine: cErrHnd:LogError",
                             MessageButtons::OK, MessageIcon::Critical, UserInterface::DefaultCaption());
        } catch (...) {
        }
    } catch (...) {
    }
}

void ErrorHandler::LogMinorError(std::int32_t lErrNum, const std::string& strErrDesc, const std::string& strErrLoc) {
    const auto report = [this](const std::string& description) {
        ui()->MessageBox("Error " + description + "\r\n\r\nOccured in in subroutine: cErrHnd:LogMinorError",
                         MessageButtons::OK, MessageIcon::Critical, UserInterface::DefaultCaption());
    };
    if (errorLogFile_.empty()) {
        report("Bad file name or number");
        return;
    }
    const std::string line = FormatLogLine(DateTime::Now(), lErrNum, strErrDesc, strErrLoc) + "\r\n";
    std::string reason;
    if (!FileSystem::AppendToFile(errorLogFile_, line, reason)) report(reason);
}

}  // namespace meridex
