#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <memory>
#include <string>

#include <meridex/frame/DateTime.h>

namespace meridex {

class UserInterface;

// Turns a trapped failure into a line of the error log and, when asked, a
// critical message box. Never throws.
class MERIDEX_EXPORT ErrorHandler {
public:
    // ui: where message boxes go; null means the installed interface.
    explicit ErrorHandler(std::shared_ptr<UserInterface> ui = nullptr);
    ~ErrorHandler();

    const std::string& ErrorLogFile() const noexcept { return errorLogFile_; }
    void setErrorLogFile(std::string path) { errorLogFile_ = std::move(path); }
    bool LogErrors() const noexcept { return logErrors_; }
    void setLogErrors(bool value) noexcept { logErrors_ = value; }
    bool DisplayErrorMsg() const noexcept { return displayErrorMsg_; }
    void setDisplayErrorMsg(bool value) noexcept { displayErrorMsg_ = value; }

    void LogError(std::int32_t lErrNum, const std::string& strErrDesc, const std::string& strErrLoc);

    // The log line for a moment given as local calendar fields (no CR LF).
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
