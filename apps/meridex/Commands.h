#pragma once
#include <CLI/CLI.hpp>

// Each subsystem adds its own sub-commands. A command's handler stores the
// process exit code (Cli.h) in exitCode, or throws Failure to end with a message.
namespace meridex::cli {

void AddFrameCommands(CLI::App& app, int& exitCode);
void AddSettingsCommand(CLI::App& app, int& exitCode);
void AddCommsCommands(CLI::App& app, int& exitCode);  // "ports" and "comms"
void AddBookCommand(CLI::App& app, int& exitCode);
void AddSyncCommand(CLI::App& app, int& exitCode);
void AddFirmwareCommand(CLI::App& app, int& exitCode);

}  // namespace meridex::cli
