// Meridex Desk: a reference host over one workspace folder.
// Usage: meridex-desk [--workspace DIR] [--profile KEY] [--screenshot FILE] [--prepare] [--help] [--version]
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <QApplication>
#include <QIcon>
#include <QPixmap>
#include <QTimer>

#include <meridex/Version.h>
#include <meridex/platform/Platform.h>
#include <meridex/ui/Install.h>

#include "MainWindow.h"
#include "Workspace.h"

namespace {

const char kUsage[] =
    "Usage: meridex-desk [--workspace DIR] [--profile KEY] [--screenshot FILE] [--prepare]\n"
    "\n"
    "Meridex Desk: the settings, address book, communications map and scheme folders of data logger\n"
    "software on one workspace folder.\n"
    "\n"
    "  --workspace DIR    the workspace folder (default: $XDG_DATA_HOME/meridex/workspace,\n"
    "                     made from the demo workspace on first use)\n"
    "  --profile KEY      make the profile of that key current first\n"
    "  --screenshot FILE  save a picture of the main window to FILE (PNG) once shown, and quit\n"
    "  --prepare          make the workspace ready (from the demo when new), print its folder, and quit\n"
    "  --help             print this help and quit\n"
    "  --version          print the version and quit\n";

int Usage() {
    std::fputs(kUsage, stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    // The options are read before Qt starts, so --help and --version need no display.
    std::string folder, profile, screenshot;
    bool prepareOnly = false;
    const std::vector<std::string> args = meridex::Platform::Utf8Arguments(argc, argv);
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        auto value = [&](std::string& into) {
            if (i + 1 >= args.size()) return false;
            into = args[++i];
            return true;
        };
        if (arg == "--workspace") {
            if (!value(folder)) return Usage();
        } else if (arg == "--profile") {
            if (!value(profile)) return Usage();
        } else if (arg == "--screenshot") {
            if (!value(screenshot)) return Usage();
        } else if (arg == "--prepare") {
            prepareOnly = true;
        } else if (arg == "--help" || arg == "-h") {
            std::fputs(kUsage, stdout);
            return 0;
        } else if (arg == "--version") {
            std::printf("meridex-desk %s\n", meridex::VersionText());
            return 0;
        } else {
            return Usage();
        }
    }

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Meridex Desk"));
    QApplication::setApplicationVersion(QString::fromUtf8(meridex::VersionText()));
    // The desktop entry and the icon installed with it; the built-in copy of the icon elsewhere.
    QGuiApplication::setDesktopFileName(QStringLiteral(MERIDEX_DESK_APP_ID));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral(MERIDEX_DESK_APP_ID),
                                                 QIcon(QStringLiteral(":/meridex-desk/" MERIDEX_DESK_APP_ID ".svg"))));
    meridex::ui::InstallQtDialogs();
    const meridex::desk::Workspace workspace(folder.empty() ? meridex::desk::Workspace::DefaultFolder()
                                                            : std::filesystem::path(folder));
    std::string error;
    if (!workspace.Prepare(meridex::desk::Workspace::DemoFolder(), &error)) {
        std::fprintf(stderr, "meridex-desk: %s\n", error.c_str());
        return 1;
    }
    if (prepareOnly) {
        std::printf("%s\n", workspace.Folder().string().c_str());
        return 0;
    }
    meridex::desk::DeskOptions options;
    options.companionFolder = meridex::Platform::ProgramFolder();
    meridex::desk::MainWindow window(workspace, options);
    if (!profile.empty() && !window.SwitchProfile(QString::fromStdString(profile))) {
        std::fprintf(stderr, "meridex-desk: there is no profile \"%s\"\n", profile.c_str());
        return 1;
    }
    window.show();
    if (!screenshot.empty()) {
        // Wait until the window has been painted, then save it and end.
        QTimer::singleShot(500, &window, [&] {
            const bool saved = window.grab().save(QString::fromStdString(screenshot), "PNG");
            if (!saved) std::fprintf(stderr, "meridex-desk: cannot write %s\n", screenshot.c_str());
            std::printf("%s\n", screenshot.c_str());
            QApplication::exit(saved ? 0 : 1);
        });
    }
    return QApplication::exec();
}
