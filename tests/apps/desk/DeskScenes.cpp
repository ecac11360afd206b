// Meridex Desk in `make screenshots`: the main window under ADMINISTRATOR and under LOCKDOWN, and the
// synchronisation window after a compare, each over a fresh copy of the demo workspace; the error log.
#include <chrono>
#include <ctime>
#include <filesystem>
#include <memory>

#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/platform/linux/IniUserStore.h>

#include "CommsTestSupport.h"
#include "MainWindow.h"
#include "Scene.h"
#include "SyncWindow.h"
#include "TempDir.h"
#include "Workspace.h"

using namespace meridex;

namespace {

// A prepared demo workspace in a temporary folder; its schemes carry times that give every list of
// the synchronisation window something to show.
struct DemoWorkspace {
    DemoWorkspace() : workspace(tmp.File("workspace")) {
        workspace.Prepare(MERIDEX_DEMO_DIR);
        const auto stamp = [&](const char* file, std::time_t when) {
            std::error_code ec;
            std::filesystem::last_write_time(
                workspace.Folder() / "schemes" / file,
                std::chrono::file_clock::from_sys(std::chrono::system_clock::from_time_t(when)), ec);
        };
        constexpr std::time_t T = 1773132000;  // March 2026
        stamp("local/North/Weir1.SXS", T + 9 * 86400);  // edited on the laptop
        stamp("remote/North/Weir1.SXS", T);
        stamp("local/North/Gauge2.SXS", T);
        stamp("remote/North/Gauge2.SXS", T);
        stamp("local/South/Flow5.SXS", T - 60 * 86400);
        stamp("remote/South/Flow5.SXS", T + 14 * 86400);  // edited by a colleague
        stamp("local/Lake/Level6.SXS", T + 30 * 86400 + 3600);  // a daylight-saving hour apart
        stamp("remote/LAKE/LEVEL6.SXS", T + 30 * 86400);
        stamp("local/Hill Top/Bergstraße.SXS", T + 1);  // a FAT share's two seconds
        stamp("remote/Hill Top/Bergstraße.SXS", T);
    }
    test::TempDir tmp;
    desk::Workspace workspace;
};

desk::DeskOptions Options(const DemoWorkspace& demo) {
    desk::DeskOptions options;
    options.ui = std::make_shared<RecordingUserInterface>();
    options.ports = std::make_shared<test::FakePorts>(std::initializer_list<int>{1, 2});
    options.store = std::make_shared<IniUserStore>(demo.tmp.File("store"));
    return options;
}

class SceneDesk : private DemoWorkspace, public desk::MainWindow {
public:
    explicit SceneDesk(const char* profile) : MainWindow(DemoWorkspace::workspace, Options(*this)) {
        SwitchProfile(profile);
        resize(1100, 600);
    }
};

class SceneSync : private DemoWorkspace, public desk::SyncWindow {
public:
    SceneSync()
        : SyncWindow(workspace.DefaultRemoteSchemes().string(), workspace.DefaultLocalSchemes().string(), errors_) {
        Compare();
    }

private:
    ErrorHandler errors_{std::make_shared<RecordingUserInterface>()};
};

}  // namespace

MERIDEX_SCENE("frmDesk-ADMINISTRATOR") { return std::make_unique<SceneDesk>("ADMINISTRATOR"); }

MERIDEX_SCENE("frmDesk-LOCKDOWN") { return std::make_unique<SceneDesk>("LOCKDOWN"); }

MERIDEX_SCENE("frmSync") { return std::make_unique<SceneSync>(); }

MERIDEX_SCENE("frmErrorLog") {
    const test::TempDir folder;
    ErrorHandler errors(std::make_shared<RecordingUserInterface>());
    errors.setErrorLogFile(folder.File("ErrorLog.txt"));
    errors.setLogErrors(true);
    errors.LogError(75, "The communications map could not be read; the default map is used", "MainWindow:StartUp");
    errors.LogError(53, "File not found: \\\\fileserver\\schemes\\North\\Weir1.SXS", "SyncWindow:Compare");
    return desk::MainWindow::ErrorLogWindow(folder.File("ErrorLog.txt"));
}
