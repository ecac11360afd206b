#include "Cli.h"

#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <meridex/Version.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/XmlDocument.h>
#include <meridex/platform/Platform.h>

namespace meridex::cli {

namespace {

constexpr ExitCodeRow kExitCodes[] = {
    {kOk, "done, or yes (\"settings can\": available)"},
    {kNo, "no, or not found (a missing key, path, profile; a feature not available)"},
    {kUsage, "usage error: unknown command, option or argument"},
    {kBadInput, "an input file or folder that is missing, unreadable or of another kind"},
    {kWriteFailed, "a file or folder could not be written (nothing was changed)"},
    {kUnknownFeature, "\"settings can\": no profile and no catalogue knows the feature"},
    {kNoLink, "firmware: no link to the logger (no such port or profile, nothing listening)"},
    {kNoAnswer, "firmware: the logger did not answer in time"},
    {kLinkLost, "firmware: the link was lost during an upgrade (the logger waits in its loader)"},
    {kLoggerRefused, "firmware: the logger refused a step"},
    {kUpgradeFailed, "firmware: a block, the image check or the start failed (the logger waits in its loader)"},
    {kInternal, "a fault of the tool itself"},
};

bool json = false;
bool force = false;

std::string Footer() {
    std::string text = "Exit codes:\n";
    for (const ExitCodeRow& row : kExitCodes)
        text += "  " + std::to_string(row.code) + (row.code < 10 ? "   " : "  ") + std::string(row.meaning) + "\n";
    text += "Every command takes --json: one JSON object on stdout, an {\"error\": ...} object on failure.";
    return text;
}

// CLI11 says "A subcommand is required" for a word it does not know; name it instead.
void CheckCommandWords(CLI::App& app, int argc, char** argv) {
    CLI::App* level = &app;
    std::string path = "meridex";
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word.empty() || word[0] == '-') return;
        if (level->get_subcommands([](CLI::App*) { return true; }).empty()) return;
        CLI::App* next = nullptr;
        try {
            next = level->get_subcommand(word);
        } catch (const CLI::OptionNotFound&) {
        }
        if (next == nullptr) {
            if (level->get_require_subcommand_min() == 0) return;
            throw Failure(kUsage, "unknown command \"" + word + "\" for " + path + " (see " + path + " --help)");
        }
        path += " " + word;
        level = next;
    }
}

void Report(int code, const std::string& message) {
    std::cerr << "meridex: " << message << "\n";
    if (json) PrintJson(Json{{"error", Json{{"exitCode", code}, {"message", message}}}});
}

}  // namespace

std::span<const ExitCodeRow> ExitCodes() { return kExitCodes; }

void AddJsonFlag(CLI::App* command) { command->add_flag("--json", json, "Print one JSON object (see docs/cli-json.md)"); }
bool JsonOutput() { return json; }
void AddForceFlag(CLI::App* command) {
    command->add_flag("--force", force,
                      "Save even over a file that could not be read as its own kind (it is kept as .unreadable)");
}
bool Forced() { return force; }

namespace {
std::optional<std::string> savedConflictCopy;  // set once a command saved
}  // namespace

void NoteSaved(const std::string& conflictCopy) {
    if (!savedConflictCopy || savedConflictCopy->empty()) savedConflictCopy = conflictCopy;
}

void PrintJson(const Json& value) {
    Json out = value;
    if (savedConflictCopy && out.is_object() && !out.contains("error"))
        out["conflictCopy"] = savedConflictCopy->empty() ? Json(nullptr) : Json(*savedConflictCopy);
    std::cout << out.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
}

std::string IsoTime(std::time_t time) {
    std::tm local{};
    localtime_r(&time, &local);
    char text[40];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S%z", &local);
    std::string out = text;  // +1000 -> +10:00
    if (out.size() >= 5) out.insert(out.size() - 2, ":");
    return out;
}

void Note(const std::string& text) { std::cerr << "meridex: " << text << "\n"; }

std::optional<std::string> Problem(const std::string& file, std::string_view root, std::string_view kind) {
    std::error_code ec;
    if (!std::filesystem::exists(file, ec)) return file + " does not exist";
    if (std::filesystem::is_directory(file, ec)) return file + " is a folder, not a " + std::string(kind);
    std::string error;
    XmlDocument document = XmlDocument::Load(file, &error);
    if (!document) return file + " is not a readable XML document (" + error + ")";
    const XmlNode element = document.DocumentElement();
    const std::string name = element ? element.Name() : std::string();
    if (name != root)
        return file + " is not a " + std::string(kind) + ": its root is " + (name.empty() ? "missing" : name) +
               ", not " + std::string(root);
    return std::nullopt;
}

void RefuseToReplace(const std::string& file, std::string_view root, std::string_view kind) {
    std::error_code ec;
    if (!std::filesystem::exists(file, ec)) return;
    const std::optional<std::string> problem = Problem(file, root, kind);
    if (!problem) return;
    if (!Forced()) throw Failure(kBadInput, *problem + "; nothing was written (--force replaces it)");
    Note(*problem + "; replacing it (--force), the old file is kept beside it as .unreadable");
}

void RequireRead(const std::string& file, std::string_view root, std::string_view kind) {
    if (const std::optional<std::string> problem = Problem(file, root, kind)) throw Failure(kBadInput, *problem);
}

// Every command's own help, depth first, each under its full name: what --help-all prints and the man
// page is made from, so the page lists every option of every command as the commands define them.
void PrintEveryHelp(const CLI::App& command) {
    if (command.get_parent() == nullptr) {
        std::cout << command.help() << "\n";
    } else {
        std::string name = command.get_name();
        for (const CLI::App* up = command.get_parent(); up != nullptr; up = up->get_parent()) name = up->get_name() + " " + name;
        std::cout << name << ":\n";
        std::istringstream lines(command.help());
        for (std::string line; std::getline(lines, line);) {
            line.erase(line.find_last_not_of(' ') + 1);
            if (line.empty() || line.find("--help") != std::string::npos || line.back() == ':') continue;
            if (line.rfind("Usage: ", 0) == 0) {
                const std::size_t rest = line.find(' ', 7);
                line = "\n  " + name + (rest == std::string::npos ? "" : line.substr(rest)) + "\n";
            } else if (line.front() != ' ') {
                line = "  " + line;  // the description
            } else if (line.find("  ", line.find_first_not_of(' ')) == std::string::npos) {
                line += "\n";  // an argument without a description of its own
            }
            std::cout << line << "\n";
        }
        std::cout << "\n";
    }
    for (const CLI::App* sub : command.get_subcommands([](const CLI::App*) { return true; })) PrintEveryHelp(*sub);
}

int Execute(CLI::App& app, const int& exitCode, int argc, char** argv) {
    app.set_version_flag("--version", std::string("meridex ") + meridex::VersionText());
    app.require_subcommand(1);
    app.add_flag("--help-all")->description("Print the help of every command and exit");
    app.footer(Footer());
    // Windows hands the arguments over in the ANSI code page; the library speaks UTF-8.
    std::vector<std::string> words = meridex::Platform::Utf8Arguments(argc, argv);
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const int count = static_cast<int>(words.size());
    if (count == 2 && words[1] == "--help-all") {
        app.name("meridex");
        PrintEveryHelp(app);
        return 0;
    }
    try {
        CheckCommandWords(app, count, pointers.data());
        app.parse(count, pointers.data());
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        Report(kUsage, std::string(e.what()) + " (see meridex --help)");
        return kUsage;
    } catch (const Failure& e) {
        Report(e.Code(), e.what());
        return e.Code();
    } catch (const meridex::Error& e) {
        Report(kInternal, e.Description() + " (error " + std::to_string(e.Number()) + ", " + e.Source() + ")");
        return kInternal;
    } catch (const std::exception& e) {
        Report(kInternal, e.what());
        return kInternal;
    }
    return exitCode;
}

}  // namespace meridex::cli
