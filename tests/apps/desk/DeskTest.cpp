#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QStatusTipEvent>
#include <QTimer>
#include <QTreeWidget>

#include <meridex/addressbook/AddressBook.h>
#include <meridex/firmware/Logger.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/frame/XMLOps.h>
#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/settings/Settings.h>

#include "CommsDialogTest.h"
#include "CommsTestSupport.h"
#include "DeskDialogs.h"
#include "DialogTest.h"
#include "LibraryDialogs.h"
#include "MainWindow.h"
#include "TempDir.h"
#include "Workspace.h"

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
    void OpenAddressBook(const std::string& book, const std::string& map, const std::string& schemes) override {
        calls.push_back("OpenAddressBook:" + book + "|" + map + "|" + schemes);
    }
    XmlNode SelectSiteCommsProfiles(AddressBook& book) override {
        calls.push_back("SelectSiteCommsProfiles:" + book.FilePath());
        return site;
    }
    XmlNode SelectNewCommsDevice() override {
        calls.push_back("SelectNewCommsDevice");
        return device;
    }
    XmlNode SelectCommsDevice(CommsProfileManager& map) override {
        calls.push_back("SelectCommsDevice:" + std::to_string(map.ApplicationProfileCount()));
        return chosenDevice ? chosenDevice(map) : XmlNode();
    }
    void EditCommunicationsMap(const std::string& map) override { calls.push_back("EditCommunicationsMap:" + map); }
    void UpgradeFirmware(Logger& logger, ErrorHandler& errors, const std::string& folder, QWidget*) override {
        calls.push_back("UpgradeFirmware:" + folder);
        firmwareLogger = &logger;
        firmwareErrors = &errors;
    }

    std::vector<std::string> calls;
    std::function<void(Settings&)> editProfiles;
    XmlNode site;
    XmlNode device;
    std::function<XmlNode(CommsProfileManager&)> chosenDevice;
    Logger* firmwareLogger = nullptr;
    ErrorHandler* firmwareErrors = nullptr;
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
    // A detached device profile, made by a map of its own.
    XmlNode Device(std::string_view name, bool phoneModem) {
        CommsProfileManager maker(ports, options.store);
        XmlNode device = phoneModem ? maker.AddRS232PhoneModem("7") : maker.AddTCPConnection();
        XMLOps::SetXMLValue(device, "NAME", name, true);
        maker.RemoveApplicationProfile(device);
        return device;
    }

    TempDir tmp;
    Workspace workspace;
    std::shared_ptr<RecordingUserInterface> ui = std::make_shared<RecordingUserInterface>();
    std::shared_ptr<RecordingDialogs> dialogs = std::make_shared<RecordingDialogs>();
    std::shared_ptr<test::FakePorts> ports = std::make_shared<test::FakePorts>(std::initializer_list<int>{1, 2});
    desk::DeskOptions options;
};

const std::vector<QString> kLockedAway = {"cmdSchemeEditor", "cmdCommsWindow", "cmdUpgradeFirmware", "cmdCommsMap",
                                          "cmdConfigure"};

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

TEST_F(DeskTest, TheStatusBarKeepsTheCommandCountWhenAMenuHintHasGone) {
    auto desk = Open();
    ASSERT_TRUE(test::ShowActive(desk.get()));
    auto* count = test::Child<QLabel>(desk.get(), "lblCommandsShown");
    const QString said = count->text();
    EXPECT_TRUE(said.contains(" of 25 commands shown for Field Crew")) << said.toStdString();
    // What a menu sends while the mouse is over an item, then when it leaves.
    for (const QString& tip : {QStringLiteral("V4_UNLOAD_DATA"), QString()}) {
        QStatusTipEvent event(tip);
        QApplication::sendEvent(desk.get(), &event);
    }
    EXPECT_TRUE(count->isVisible());
    EXPECT_EQ(count->text(), said);
}

TEST_F(DeskTest, LibraryCommandsOpenTheirDialogsOnTheWorkspaceFilesAndHostCommandsOpenNone) {
    auto desk = Open();
    desk->SwitchProfile("ADMINISTRATOR");
    const std::string book = workspace.AddressBookFile().string();
    const std::string map = workspace.CommsMapFile().string();
    const std::string schemes = workspace.DefaultLocalSchemes().string();

    dialogs->editProfiles = [](Settings& settings) {
        settings.CurrentProfile().Item(std::string("V4_SCHEME_EDITOR")).setAvailable(false);
    };
    desk->Action("cmdConfigure")->trigger();
    desk->Action("cmdCommsMap")->trigger();
    desk->Action("cmdAddressBook")->trigger();
    desk->Action("cmdUpgradeFirmware")->trigger();  // no device chosen: nothing more happens
    EXPECT_EQ(dialogs->calls, (std::vector<std::string>{
                                  "ShowProfileEditor:" + workspace.SettingsFile().string(),
                                  "EditCommunicationsMap:" + map,
                                  "OpenAddressBook:" + book + "|" + map + "|" + schemes,
                                  "SelectCommsDevice:" + std::to_string(desk->map().ApplicationProfileCount()),
                              }));
    EXPECT_FALSE(desk->Action("cmdSchemeEditor")->isVisible()) << "what the profile editor changed shows at once";
    EXPECT_TRUE(ui->Messages().empty());

    // The host's own commands open nothing and say plainly whose they are.
    for (const char* name : {"cmdUnload", "cmdProgram", "mnuPut"}) {
        ui->Clear();
        desk->Action(name)->trigger();
        ASSERT_EQ(ui->Messages().size(), 1u) << name;
        EXPECT_NE(ui->Messages()[0].text.find("is a command of the logger host application itself"), std::string::npos);
    }
    EXPECT_EQ(dialogs->calls.size(), 4u);
}

TEST_F(DeskTest, UpgradeFirmwareOpensTheLoggerOfTheChosenDevice) {
    auto desk = Open();
    desk->SwitchProfile("ADMINISTRATOR");
    // A phone modem cannot carry firmware: the person is told why, and no dialog opens.
    dialogs->chosenDevice = [](CommsProfileManager& map) { return map.AddRS232PhoneModem("1"); };
    desk->Action("cmdUpgradeFirmware")->trigger();
    ASSERT_EQ(ui->Messages().size(), 1u);
    EXPECT_NE(ui->Messages()[0].text.find("cannot be reached: Firmware cannot be loaded through"), std::string::npos)
        << ui->Messages()[0].text;
    EXPECT_EQ(dialogs->firmwareLogger, nullptr);

    // A UDP device needs no listener to be opened: the dialog gets its logger and the desk's log.
    ui->Clear();
    dialogs->chosenDevice = [](CommsProfileManager& map) {
        XmlNode udp = map.AddUDPConnection();
        XMLOps::SetXMLValue(udp, "ADDRESS", "127.0.0.1", true);
        XMLOps::SetXMLValue(udp, "PORT", "9", true);
        return udp;
    };
    desk->Action("cmdUpgradeFirmware")->trigger();
    EXPECT_EQ(dialogs->calls.back(), "UpgradeFirmware:" + workspace.FirmwareFolder().string());
    EXPECT_NE(dialogs->firmwareLogger, nullptr);
    ASSERT_NE(dialogs->firmwareErrors, nullptr);
    EXPECT_EQ(dialogs->firmwareErrors->ErrorLogFile(), workspace.ErrorLogFile().string());
    EXPECT_TRUE(ui->Messages().empty());
}

TEST_F(DeskTest, NewDeviceAppendsToTheMapAndConnectionShowsTheBestMatch) {
    auto desk = Open();
    const auto before = desk->map().ApplicationProfileCount();
    desk->Action("cmdNewDevice")->trigger();  // the dialog was cancelled: nothing changes
    EXPECT_EQ(desk->map().ApplicationProfileCount(), before);

    dialogs->device = Device("Harbour link", false);
    desk->Action("cmdNewDevice")->trigger();
    EXPECT_EQ(desk->map().ApplicationProfileCount(), before + 1);
    EXPECT_NE(TempDir::Read(workspace.CommsMapFile().string()).find("Harbour link"), std::string::npos);
    auto* devices = test::Child<QTreeWidget>(desk.get(), "lvDevices");
    EXPECT_TRUE(test::Texts(devices).contains("Harbour link"));

    dialogs->site = Device("Site cable", false);
    desk->Action("cmdConnection")->trigger();
    ASSERT_EQ(dialogs->calls.back(), "SelectSiteCommsProfiles:" + workspace.AddressBookFile().string());
    ASSERT_FALSE(ui->Messages().empty());
    const std::string told = ui->Messages().back().text;
    EXPECT_NE(told.find("The site's connection: Site cable (IP TCP"), std::string::npos) << told;
    EXPECT_NE(told.find("The best match on this PC:"), std::string::npos) << told;
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

// The program's seam reaches the library's own dialogs: the device list of the map it is given, and the
// firmware dialog with the logger, the log and the folder.
TEST_F(DeskTest, TheProgramsDialogsAreTheLibrarys) {
    class AnsweringLogger : public Logger {
    public:
        std::string Description() const override { return "answering"; }
        UpgradeResult Identify() override { return {UpgradeStatus::Ok, {}, {"WL400", "7001", "1.5.0", false, "1.0"}}; }
        UpgradeResult LoadFirmware(const FirmwareImage&, UpgradeEvents*) override {
            return {UpgradeStatus::LinkLost, "not in this test", {}};
        }
    } logger;
    desk::LibraryDialogs library(ui, ports, options.store);
    CommsProfileManager map(ports, options.store);
    XMLOps::SetXMLValue(map.AddTCPConnection(), "NAME", "Harbour link", true);
    ErrorHandler errors(ui);
    XmlNode chosen;
    test::ModalScript()
        .Then([](QWidget* modal) {
            EXPECT_EQ(modal->objectName(), "frmSelectDevice");
            auto* devices = test::Child<QTreeWidget>(modal, "tvDevices");
            QTreeWidgetItem* root = devices->topLevelItem(0);
            for (int i = 0; i < root->childCount(); ++i) {
                if (root->child(i)->text(0) != "Harbour link") continue;
                test::DoubleClickRow(devices, root->child(i));
                return;
            }
            ADD_FAILURE() << "the map's device is not offered";
            modal->close();
        })
        .Run([&] { chosen = library.SelectCommsDevice(map); });
    EXPECT_EQ(XMLOps::GetXMLValue(chosen, "NAME", ""), "Harbour link");

    // The firmware dialog is shown before it turns modal, so it is looked for among the windows.
    QString model, folder;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->objectName() != "frmFirmware" || !window->isVisible()) continue;
            model = test::Child<QLabel>(window, "lblModel")->text();
            folder = test::Child<QLabel>(window, "lblFolder")->text();
            window->close();
        }
    });
    poll.start(5);
    library.UpgradeFirmware(logger, errors, "/no/such/firmware", nullptr);
    EXPECT_EQ(model, "WL400");
    EXPECT_EQ(folder, "/no/such/firmware");
}
