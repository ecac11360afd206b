#include <meridex/frame/ErrorHandler.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <meridex/frame/DateTime.h>
#include <meridex/frame/UserInterface.h>

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
    // One write of the whole line with O_APPEND: lines from several
    // processes never interleave, and the file is never truncated.
    const int fd = ::open(errorLogFile_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        report(std::strerror(errno));
        return;
    }
    const ssize_t written = ::write(fd, line.data(), line.size());
    const int writeError = errno;
    const bool closed = ::close(fd) == 0;
    if (written != static_cast<ssize_t>(line.size()) || !closed) report(std::strerror(written < 0 ? writeError : EIO));
}

}  // namespace meridex
