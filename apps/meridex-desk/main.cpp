// Meridex Desk: a reference host over one workspace folder.
// Usage: meridex-desk [--workspace DIR] [--profile KEY] [--screenshot FILE] [--prepare]
#include <cstdio>
#include <cstring>
#include <string>

#include <QApplication>
#include <QPixmap>
#include <QTimer>

#include <meridex/platform/Platform.h>
#include <meridex/ui/Install.h>

#include "MainWindow.h"
#include "Workspace.h"

namespace {

int Usage() {
    std::fprintf(stderr,
                 "usage: meridex-desk [--workspace DIR] [--profile KEY] [--screenshot FILE] [--prepare]\n"
                 "  --workspace DIR    the workspace folder (default: $XDG_DATA_HOME/meridex/workspace,\n"
                 "                     made from the demo workspace on first use)\n"
                 "  --profile KEY      make the profile of that key current first\n"
                 "  --screenshot FILE  save a picture of the main window to FILE (PNG) once shown, and quit\n"
                 "  --prepare          make the workspace ready (from the demo when new), print its folder, and quit\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Meridex Desk"));
    std::string folder, profile, screenshot;
    bool prepareOnly = false;
    const QStringList args = QApplication::arguments();
    for (int i = 1; i < args.size(); ++i) {
        const QString arg = args[i];
        auto value = [&](std::string& into) {
            if (i + 1 >= args.size()) return false;
            into = args[++i].toStdString();
            return true;
        };
        if (arg == QLatin1String("--workspace")) {
            if (!value(folder)) return Usage();
        } else if (arg == QLatin1String("--profile")) {
            if (!value(profile)) return Usage();
        } else if (arg == QLatin1String("--screenshot")) {
            if (!value(screenshot)) return Usage();
        } else if (arg == QLatin1String("--prepare")) {
            prepareOnly = true;
        } else {
            return Usage();
        }
    }

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
