#pragma once
#include <ctime>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

// What every command shares: the exit codes, failures that end a command,
// and the JSON output.
namespace meridex::cli {

using Json = nlohmann::ordered_json;

// The one table of exit codes; main, --help, README and the tests use these.
enum ExitCode : int {
    kOk = 0,               // done, or the answer is yes
    kNo = 1,               // the answer is no, or nothing was found
    kUsage = 2,            // wrong command, option or argument
    kBadInput = 3,         // an input that is missing, unreadable or of another kind
    kWriteFailed = 4,      // a file or folder could not be written
    kUnknownFeature = 5,   // "settings can": a feature key no profile or catalogue knows
    kNoLink = 6,           // firmware: no such port or profile, or nothing listening
    kNoAnswer = 7,         // firmware: the logger did not answer in time
    kLinkLost = 8,         // firmware: the link went during an upgrade (the logger waits in its loader)
    kLoggerRefused = 9,    // firmware: the logger refused a step
    kUpgradeFailed = 10,   // firmware: a block, the image check or the start failed
    kInternal = 70,        // a fault of the tool itself
};

struct ExitCodeRow {
    int code;
    std::string_view meaning;
};
std::span<const ExitCodeRow> ExitCodes();

// Ends a command: the message goes to stderr (and, with --json, an error
// object to stdout) and the process exits with code.
class Failure : public std::runtime_error {
public:
    Failure(int code, const std::string& message) : std::runtime_error(message), code_(code) {}
    int Code() const noexcept { return code_; }

private:
    int code_;
};

// Adds --json to a command; JsonOutput() tells whether it was given.
void AddJsonFlag(CLI::App* command);
bool JsonOutput();
// --force on a command that saves over a file it could not read.
void AddForceFlag(CLI::App* command);
bool Forced();

// Prints a JSON object on one line; invalid UTF-8 becomes U+FFFD, so the
// output always parses.
// With a save noted, the object gains "conflictCopy" (the copy of someone else's
// version the save kept, null for none).
void PrintJson(const Json& value);
// A save was made; conflictCopy is the copy of someone else's version it kept ("" for none).
void NoteSaved(const std::string& conflictCopy);
// ISO 8601 local time with its offset, e.g. 2024-03-01T09:30:00+10:00.
std::string IsoTime(std::time_t time);
// Writes a notice on stderr ("meridex: ...").
void Note(const std::string& text);

// Why a file is not a readable document with the given root ("V4SETTINGS"):
// missing, not XML, or of another kind; none when it is one. kind names the
// document for people ("settings document").
std::optional<std::string> Problem(const std::string& file, std::string_view root, std::string_view kind);
// Before a command that saves loads the file: an existing file that is not of
// its kind is not replaced unless --force was given. (The library loads such a
// file as empty and would save over it.)
void RefuseToReplace(const std::string& file, std::string_view root, std::string_view kind);
// Before a command that only reads: the file must exist and be of its kind.
void RequireRead(const std::string& file, std::string_view root, std::string_view kind);

// Parses and runs the command line on an app whose commands are added;
// returns the exit code (exitCode as the command set it, or a failure's).
int Execute(CLI::App& app, const int& exitCode, int argc, char** argv);

}  // namespace meridex::cli
