// meridex-dialogs COMMAND ARGS...: one dialog of the library, opened on the given files.
#include <cstdio>

#include <QApplication>

#include <meridex/Version.h>
#include <meridex/ui/Install.h>

#include "DialogCommand.h"

namespace meridex::dialogs {
namespace {

void Usage(std::FILE* out) {
    std::fprintf(out, "usage: meridex-dialogs COMMAND ARGS...\n\ncommands:\n");
    for (const DialogCommand& command : Commands()) {
        const std::string line = command.name + " " + command.arguments;
        // A long usage line takes its own line, so the summaries stay in one column.
        if (line.size() > 40)
            std::fprintf(out, "  %s\n  %-40s %s\n", line.c_str(), "", command.summary.c_str());
        else
            std::fprintf(out, "  %-40s %s\n", line.c_str(), command.summary.c_str());
    }
}

}  // namespace
}  // namespace meridex::dialogs

int main(int argc, char** argv) {
    using namespace meridex::dialogs;
    const std::string name = argc > 1 ? argv[1] : "";
    if (name == "-h" || name == "--help") {
        Usage(stdout);
        return 0;
    }
    for (const DialogCommand& command : Commands()) {
        if (command.name != name) continue;
        const std::vector<std::string> arguments(argv + 2, argv + argc);
        if (arguments.size() < command.minArguments || arguments.size() > command.maxArguments) {
            std::fprintf(stderr, "usage: meridex-dialogs %s %s\n", command.name.c_str(), command.arguments.c_str());
            return 2;
        }
        QApplication app(argc, argv);
        QApplication::setApplicationName(QStringLiteral("meridex-dialogs"));
        meridex::ui::InstallQtDialogs();
        return command.run(arguments);
    }
    if (!name.empty()) std::fprintf(stderr, "meridex-dialogs: unknown command \"%s\"\n", name.c_str());
    Usage(stderr);
    return 2;
}
