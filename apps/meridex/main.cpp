#include "Cli.h"
#include "Commands.h"

int main(int argc, char** argv) {
    CLI::App app{"meridex: settings and profiles, the address book, the communications map and "
                 "scheme synchronisation for data-logger field software"};
    int exitCode = 0;
    // One line per command group.
    meridex::cli::AddFrameCommands(app, exitCode);
    meridex::cli::AddSettingsCommand(app, exitCode);
    meridex::cli::AddCommsCommands(app, exitCode);
    meridex::cli::AddBookCommand(app, exitCode);
    meridex::cli::AddSyncCommand(app, exitCode);
    meridex::cli::AddFirmwareCommand(app, exitCode);
    return meridex::cli::Execute(app, exitCode, argc, argv);
}
