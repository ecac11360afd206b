#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <memory>
#include <string>

#include <meridex/frame/DateTime.h>

namespace meridex {

class UserInterface;

/// Turns a trapped failure into a line of the error log and, when asked, a
/// critical message box. Never throws.
class MERIDEX_EXPORT ErrorHandler {
public:
    /// ui: where message boxes go; null means the installed interface.
    explicit ErrorHandler(std::shared_ptr<UserInterface> ui = nullptr);
    ~ErrorHandler();

    /// The file LogError appends its lines to ("" until set).
    const std::string& ErrorLogFile() const noexcept { return errorLogFile_; }
    /// Sets ErrorLogFile.
    void setErrorLogFile(std::string path) { errorLogFile_ = std::move(path); }
    /// Whether LogError writes to the log file (false by default).
    bool LogErrors() const noexcept { return logErrors_; }
    /// Sets LogErrors.
    void setLogErrors(bool value) noexcept { logErrors_ = value; }
    /// Whether LogError shows a critical message box (false by default).
    bool DisplayErrorMsg() const noexcept { return displayErrorMsg_; }
    /// Sets DisplayErrorMsg.
    void setDisplayErrorMsg(bool value) noexcept { displayErrorMsg_ = value; }

    /// Reports one failure: a line appended to ErrorLogFile when LogErrors,
    /// a message box when DisplayErrorMsg. A log file that cannot be written
    /// is reported in a message box instead.
    void LogError(std::int32_t lErrNum, const std::string& strErrDesc, const std::string& strErrLoc);

    /// The log line for a moment given as local calendar fields (no CR LF).
    static std::string FormatLogLine(const DateTime& when, std::int32_t lErrNum,
                                     const std::string& strErrDesc, const std::string& strErrLoc);

private:
    void LogMinorError(std::int32_t lErrNum, const std::string& strErrDesc, const std::string& strErrLoc);
    std::shared_ptr<UserInterface> ui() const;

    std::string errorLogFile_;
    bool logErrors_ = false;
    bool displayErrorMsg_ = false;
    std::shared_ptr<UserInterface> ui_;
};

}  // namespace meridex
