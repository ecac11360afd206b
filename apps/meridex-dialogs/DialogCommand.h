#pragma once
// A command of meridex-dialogs: its name, its arguments as shown in the usage, and what it runs.
// Each subsystem's commands live in their own file and register themselves.
#include <functional>
#include <string>
#include <vector>

namespace meridex::dialogs {

/// One command: `meridex-dialogs NAME ARGS...`; run gets the arguments after the name and returns
/// the exit status.
struct DialogCommand {
    std::string name;
    std::string arguments;
    std::string summary;
    std::size_t minArguments = 0;
    std::size_t maxArguments = 0;
    std::function<int(const std::vector<std::string>& arguments)> run;
};

/// Every registered command, in registration order.
std::vector<DialogCommand>& Commands();

/// Registers a command when the program starts.
struct CommandRegistration {
    explicit CommandRegistration(DialogCommand command) { Commands().push_back(std::move(command)); }
};

}  // namespace meridex::dialogs
