#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTreeWidget>

#include <meridex/frame/Error.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/frame/XMLOps.h>
#include <meridex/settings/Settings.h>
#include <meridex/settings/V4StandardProfiles.h>

#include "CommsTestSupport.h"
#include "DeskDialogs.h"
#include "DialogTest.h"
#include "MainWindow.h"
#include "TempDir.h"
#include "Workspace.h"

namespace fs = std::filesystem;
using namespace meridex;
using meridex::desk::MainWindow;
using meridex::desk::Workspace;
using meridex::test::TempDir;

namespace {

// Records which library dialog the desk asked for and with which files; answers as scripted.
class RecordingDialogs : public desk::DeskDialogs {
public:
    void ShowProfileEditor(Settings& settings, QWidget*) override {
        calls.push_back("ShowProfileEditor:" + settings.SettingsFile());
        if (editProfiles) editProfiles(settings);
    }

    std::vector<std::string> calls;
    std::function<void(Settings&)> editProfiles;
};

class DeskTest : public ::testing::Test {
protected:
    DeskTest() : workspace(tmp.File("ws")) {
        EXPECT_TRUE(workspace.Prepare(MERIDEX_DEMO_DIR));
        options.ui = ui;
        options.dialogs = dialogs;
        options.ports = ports;
        options.store = std::make_shared<IniUserStore>(tmp.File("store"));
    }
    std::unique_ptr<MainWindow> Open() { return std::make_unique<MainWindow>(workspace, options); }

    TempDir tmp;
    Workspace workspace;
    std::shared_ptr<RecordingUserInterface> ui = std::make_shared<RecordingUserInterface>();
    std::shared_ptr<RecordingDialogs> dialogs = std::make_shared<RecordingDialogs>();
    std::shared_ptr<test::FakePorts> ports = std::make_shared<test::FakePorts>(std::initializer_list<int>{1, 2});
    desk::DeskOptions options;
};

const std::vector<QString> kLockedAway = {"cmdSchemeEditor", "cmdCommsWindow", "cmdConfigure"};

}  // namespace

TEST_F(DeskTest, StartUpLoadsTheSettingsAndBringsTheMapInStepWithThePorts) {
    auto desk = Open();
    EXPECT_EQ(desk->settings().CurrentProfile().Key(), "Field Crew");
    auto* profiles = test::Child<QComboBox>(desk.get(), "cboCurrentProfile");
    EXPECT_EQ(profiles->currentText(), "Field Crew");
    EXPECT_EQ(profiles->count(), 4);
    // The map on disk now has a direct profile for each of this PC's two ports, and only those.
    CommsProfileManager saved(ports, options.store);
    saved.setMapFile({});
    ASSERT_TRUE(saved.LoadXMLMapFile(workspace.CommsMapFile().string()));
    std::vector<std::string> directPorts;
    for (const XmlNode& p : CommsProfileManager::GetDeviceProfileList(saved.ApplicationProfiles(), "RS232", "DIRECT")) {
        directPorts.push_back(XMLOps::GetXMLValue(p, "COMMPORT", ""));
    }
    EXPECT_EQ(directPorts, (std::vector<std::string>{"1", "2"}));

    // The window says which devices can be used on this PC: the demo's office modem is on COM3.
    auto statusByPort = [](const MainWindow& window) {
        auto* devices = test::Child<QTreeWidget>(&window, "lvDevices");
        std::map<QString, QString> status;
        for (int i = 0; i < devices->topLevelItemCount(); ++i) {
            status[devices->topLevelItem(i)->text(2)] += devices->topLevelItem(i)->text(3) + ";";
        }
        return status;
    };
    EXPECT_EQ(statusByPort(*desk), (std::map<QString, QString>{{"COM1", "port present;"},
                                                              {"COM2", "port present;"},
                                                              {"COM3", "no such port;"},
                                                              {"127.0.0.1", "network;network;"}}));
    EXPECT_TRUE(test::Child<QLabel>(desk.get(), "lblDevices")->text().endsWith("1 on a serial port this PC does not have now"));

    // COM2 is still listed but its adapter does not answer: its direct cable goes from the map.
    ports->present.erase(2);
    EXPECT_EQ(statusByPort(*Open()).count("COM2"), 0u);
}

TEST_F(DeskTest, TheProfileDropDownShowsAndHidesTheCommandsAtOnce) {
    auto desk = Open();
    auto* profiles = test::Child<QComboBox>(desk.get(), "cboCurrentProfile");
    // Every command follows FeatureAvailable of the current profile exactly, "Field Crew" included.
    for (const auto& command : MainWindow::Commands()) {
        if (!command.feature) continue;
        EXPECT_EQ(desk->Action(command.name)->isVisible(), desk->settings().CurrentProfile().FeatureAvailable(command.feature))
            << command.name;
    }

    emit profiles->activated(profiles->findText("LOCKDOWN"));
    for (const QString& name : kLockedAway) EXPECT_FALSE(desk->Action(name)->isVisible()) << name.toStdString();
    EXPECT_TRUE(desk->Action("cmdUnload")->isVisible());
    EXPECT_TRUE(desk->Action("cmdTestMode")->isVisible());
    EXPECT_TRUE(desk->Action("cmdErrorLog")->isVisible()) << "the desk's own commands need no feature";
    Settings reread;
    reread.LoadSettings(workspace.SettingsFile().string());
    EXPECT_EQ(reread.GetString("CURRENT_PROFILE", ""), "LOCKDOWN");

    emit profiles->activated(profiles->findText("ADMINISTRATOR"));
    for (const QString& name : kLockedAway) EXPECT_TRUE(desk->Action(name)->isVisible()) << name.toStdString();
    EXPECT_FALSE(desk->SwitchProfile("NO SUCH PROFILE"));
    EXPECT_EQ(desk->settings().CurrentProfile().Key(), "ADMINISTRATOR");
}

TEST_F(DeskTest, ConfigureOpensTheProfileEditorAndTheCommandsFollowWhatItChanged) {
    auto desk = Open();
    desk->SwitchProfile("ADMINISTRATOR");
    dialogs->editProfiles = [](Settings& settings) {
        settings.CurrentProfile().Item(std::string("V4_SCHEME_EDITOR")).setAvailable(false);
        settings.Profiles().Add(V4StandardProfiles::GetDefaultLockdownProfile(), "NIGHT SHIFT");
    };
    desk->Action("cmdConfigure")->trigger();
    EXPECT_EQ(dialogs->calls, (std::vector<std::string>{"ShowProfileEditor:" + workspace.SettingsFile().string()}));
    EXPECT_FALSE(desk->Action("cmdSchemeEditor")->isVisible()) << "what the profile editor changed shows at once";
    auto* profiles = test::Child<QComboBox>(desk.get(), "cboCurrentProfile");
    EXPECT_NE(profiles->findText("NIGHT SHIFT"), -1) << "a profile the editor added can be chosen";
    EXPECT_EQ(profiles->currentText(), "ADMINISTRATOR");
    EXPECT_TRUE(ui->Messages().empty());
}

TEST_F(DeskTest, HostCommandsSayPlainlyTheyAreTheHostsOwn) {
    auto desk = Open();
    for (const char* name : {"cmdUnload", "cmdProgram", "mnuPut"}) {
        ui->Clear();
        desk->Action(name)->trigger();
        ASSERT_EQ(ui->Messages().size(), 1u) << name;
        EXPECT_NE(ui->Messages()[0].text.find("is a command of the logger host application itself"), std::string::npos);
    }
    EXPECT_TRUE(dialogs->calls.empty());
}

TEST_F(DeskTest, AFailureIsLoggedToTheWorkspaceAndTheLogCanBeShown) {
    auto desk = Open();
    desk->SwitchProfile("ADMINISTRATOR");
    auto showLog = [&] {
        QString shown;
        test::ModalScript()
            .Then([&](QWidget* modal) {
                EXPECT_EQ(modal->objectName(), "frmErrorLog");
                shown = test::Child<QPlainTextEdit>(modal, "txtErrorLog")->toPlainText();
                modal->close();
            })
            .Run([&] { desk->Action("cmdErrorLog")->trigger(); });
        return shown;
    };
    EXPECT_EQ(showLog(), "The error log is empty.");

    // A dialog that fails (its save hit a full disk) is told and logged; the desk carries on.
    dialogs->editProfiles = [](Settings&) { throw Error(75, "frmProfiles", "Disk full"); };
    desk->Action("cmdConfigure")->trigger();
    ASSERT_EQ(ui->Messages().size(), 1u);
    EXPECT_EQ(ui->Messages()[0].text, "MainWindow:cmdConfigure_Click : 75-Disk full");
    const std::string log = TempDir::Read(workspace.ErrorLogFile().string());
    EXPECT_NE(log.find("MainWindow:cmdConfigure_Click"), std::string::npos) << log;
    EXPECT_NE(log.find("Disk full"), std::string::npos) << log;

    const QString shown = showLog();
    EXPECT_TRUE(shown.contains("MainWindow:cmdConfigure_Click")) << shown.toStdString();
    EXPECT_TRUE(desk->Action("cmdUnload")->isVisible());
}
