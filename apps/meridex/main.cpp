#include <iostream>

#include "Commands.h"
#include <meridex/Version.h>
#include <meridex/frame/Error.h>

int main(int argc, char** argv) {
    CLI::App app{"meridex: settings and profiles, the address book, the communications map and "
                 "scheme synchronisation for data-logger field software"};
    app.set_version_flag("--version", std::string("meridex ") + meridex::VersionText());
    app.require_subcommand(1);
    int exitCode = 0;
    meridex::cli::AddFrameCommands(app, exitCode);
    meridex::cli::AddSettingsCommand(app, exitCode);
    meridex::cli::AddCommsCommands(app, exitCode);
    meridex::cli::AddBookCommand(app, exitCode);
    meridex::cli::AddSyncCommand(app, exitCode);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    } catch (const meridex::Error& e) {
        std::cerr << "meridex: " << e.Description() << " (error " << e.Number() << ", " << e.Source()
                  << ")\n";
        return 2;
    }
    return exitCode;
}
