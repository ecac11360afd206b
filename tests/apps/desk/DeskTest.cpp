#include <cstdlib>
#include <filesystem>
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
#include <QProgressBar>
#include <QPushButton>
#include <QStatusTipEvent>
#include <QTest>
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

#include "../../sync/SyncTestSupport.h"
#include "CommsTestSupport.h"
#include "DialogTest.h"
#include "DeskDialogs.h"
#include "LibraryDialogs.h"
#include "MainWindow.h"
#include "SyncWindow.h"
#include "TempDir.h"
#include "Workspace.h"

namespace fs = std::filesystem;
using namespace meridex;
using meridex::desk::MainWindow;
using meridex::desk::SyncWindow;
using meridex::desk::Workspace;
using meridex::test::TempDir;
using meridex::test::WriteDated;

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
    const std::string demoMap = TempDir::Read(workspace.CommsMapFile().string());
    auto desk = Open();
    EXPECT_EQ(desk->settings().CurrentProfile().Key(), "Field Crew");
    auto* profiles = test::Child<QComboBox>(desk.get(), "cboCurrentProfile");
    EXPECT_EQ(profiles->currentText(), "Field Crew");
    EXPECT_EQ(profiles->count(), 4);
    // The map brought in step with this PC's ports is saved at once (which direct profiles stay is the
    // library's rule).
    EXPECT_NE(TempDir::Read(workspace.CommsMapFile().string()), demoMap);

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
            const auto offered = devices->findItems("Harbour link", Qt::MatchExactly | Qt::MatchRecursive);
            EXPECT_EQ(offered.size(), 1) << "the map's device is offered once";
            if (offered.isEmpty()) modal->close();
            else test::DoubleClickRow(devices, offered[0]);
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

TEST(Workspace, FirstUseCopiesTheDemoAndLaterUsesKeepWhatIsThere) {
    TempDir tmp;
    const Workspace workspace(tmp.File("ws"));
    std::string error;
    ASSERT_TRUE(workspace.Prepare(MERIDEX_DEMO_DIR, &error)) << error;
    EXPECT_TRUE(fs::is_regular_file(workspace.SettingsFile()));
    EXPECT_TRUE(fs::is_regular_file(workspace.AddressBookFile()));
    EXPECT_TRUE(fs::is_regular_file(workspace.CommsMapFile()));
    EXPECT_TRUE(fs::is_regular_file(workspace.DefaultRemoteSchemes() / "North" / "Weir1.SXS"));
    EXPECT_TRUE(fs::is_directory(workspace.FirmwareFolder()));
    EXPECT_FALSE(fs::exists(workspace.Folder() / "frame")) << "the demo's test files stay behind";

    const std::string edited = tmp.Write("ws/settings/V4Settings.xml", "<V4SETTINGS><LANG>fr</LANG></V4SETTINGS>\r\n");
    fs::remove_all(workspace.FirmwareFolder());
    ASSERT_TRUE(workspace.Prepare(MERIDEX_DEMO_DIR, &error)) << error;
    EXPECT_EQ(TempDir::Read(edited), "<V4SETTINGS><LANG>fr</LANG></V4SETTINGS>\r\n");
    EXPECT_TRUE(fs::is_directory(workspace.FirmwareFolder())) << "a missing subfolder is made again";
}

TEST(Workspace, WithoutADemoTheFoldersAreStillMadeAndOnesThatCannotBeMadeAreReported) {
    TempDir tmp;
    const Workspace workspace(tmp.File("ws"));
    ASSERT_TRUE(workspace.Prepare(tmp.File("no-demo-here")));
    EXPECT_TRUE(fs::is_directory(workspace.DefaultLocalSchemes()));
    EXPECT_TRUE(fs::is_directory(workspace.DefaultRemoteSchemes()));
    EXPECT_FALSE(fs::exists(workspace.SettingsFile()));

    std::string error;
    EXPECT_FALSE(Workspace(fs::path(tmp.Write("plain-file", "x")) / "ws").Prepare(MERIDEX_DEMO_DIR, &error));
    EXPECT_NE(error.find("Cannot create the workspace"), std::string::npos) << error;
}

TEST(Workspace, TheDefaultFolderIsUnderTheUsersDataFolder) {
    TempDir tmp;
    // The test program points XDG_DATA_HOME at a scratch folder of its own; HOME is pointed at one here.
    const std::string data = std::getenv("XDG_DATA_HOME");
    EXPECT_EQ(Workspace::DefaultFolder(), fs::path(data) / "meridex" / "workspace");
    const char* home = std::getenv("HOME");
    const std::string oldHome = home ? home : "";
    setenv("HOME", tmp.Path().c_str(), 1);
    unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(Workspace::DefaultFolder(), fs::path(tmp.Path()) / ".local" / "share" / "meridex" / "workspace");
    setenv("XDG_DATA_HOME", data.c_str(), 1);
    if (home) setenv("HOME", oldHome.c_str(), 1);
    else unsetenv("HOME");
}

TEST(Workspace, TheSettingsSchemesPathIsHonouredWhereItExists) {
    TempDir tmp;
    const Workspace workspace(tmp.File("ws"));
    Settings settings;
    EXPECT_EQ(workspace.LocalSchemes(settings), workspace.DefaultLocalSchemes());
    settings.SetString("V4SCHEMES_PATH", "C:\\Meridex\\V4\\Schemes");
    EXPECT_EQ(workspace.LocalSchemes(settings), workspace.DefaultLocalSchemes()) << "a path of another PC is passed over";
    fs::create_directories(tmp.File("elsewhere"));
    settings.SetString("V4SCHEMES_PATH", tmp.File("elsewhere"));
    EXPECT_EQ(workspace.LocalSchemes(settings), fs::path(tmp.File("elsewhere")));
}

namespace {

constexpr std::time_t T = 1700000000;

class SyncWindowTest : public ::testing::Test {
protected:
    SyncWindowTest() : window(tmp.File("remote"), tmp.File("local"), errors, ui) {
        errors.setErrorLogFile(tmp.File("ErrorLog.txt"));
        errors.setLogErrors(true);
    }
    QTreeWidget* List(const char* name) { return test::Child<QTreeWidget>(&window, name); }
    QPushButton* Button(const char* name) { return test::Child<QPushButton>(&window, name); }
    QString Status() { return test::Child<QLabel>(&window, "lblStatus")->text(); }
    // The per-scheme option of row i of a list.
    QComboBox* Option(QTreeWidget* list, int i) {
        return qobject_cast<QComboBox*>(list->itemWidget(list->topLevelItem(i), 1));
    }
    // Column c of every row.
    static QStringList Column(const QTreeWidget* list, int c) {
        QStringList texts;
        for (int i = 0; i < list->topLevelItemCount(); ++i) texts << list->topLevelItem(i)->text(c);
        return texts;
    }

    TempDir tmp;
    std::shared_ptr<RecordingUserInterface> ui = std::make_shared<RecordingUserInterface>();
    ErrorHandler errors{ui};
    SyncWindow window;
};

}  // namespace

TEST_F(SyncWindowTest, ComparesAndSynchronisesTwoFoldersEndToEnd) {
    WriteDated(tmp, "local/North/Weir1.SXS", "edited here", T + 600);
    WriteDated(tmp, "remote/North/Weir1.SXS", "office copy", T);
    WriteDated(tmp, "remote/South/Dam.SXS", "new at the office", T + 900);
    WriteDated(tmp, "remote/South/Dam.XML", "its parameters", T + 900);
    WriteDated(tmp, "local/South/Dam.SXS", "old here", T);
    WriteDated(tmp, "local/Clock.SXS", "c", T + 3600);  // a daylight-saving change, not an edit
    WriteDated(tmp, "remote/Clock.SXS", "c", T);
    WriteDated(tmp, "local/Same.SXS", "s", T);
    WriteDated(tmp, "remote/Same.SXS", "s", T);

    EXPECT_FALSE(Button("cmdSynchronise")->isEnabled()) << "nothing to copy before a compare";
    test::Click(Button("cmdCompare"));
    EXPECT_EQ(Column(List("lvNewerLocal"), 0), (QStringList{"/Clock.SXS", "/North/Weir1.SXS"}));
    EXPECT_EQ(Column(List("lvNewerRemote"), 0), (QStringList{"/South/Dam.SXS"}));
    EXPECT_EQ(Column(List("lvSynced"), 0), (QStringList{"/Same.SXS"}));
    EXPECT_TRUE(Column(List("lvNewerLocal"), 4)[0].contains("daylight-saving"));
    EXPECT_TRUE(Column(List("lvNewerLocal"), 4)[1].isEmpty());
    EXPECT_EQ(test::ImageKeysOf(List("lvSynced")), (QStringList{"SCHEME"}));
    EXPECT_EQ(Status(), "2 newer here, 1 newer on the remote side, 1 in step.");
    EXPECT_TRUE(test::Child<QWidget>(&window, "txtFound")->property("plainText").toString().contains("Dam.SXS"));
    EXPECT_TRUE(Button("cmdSynchronise")->isEnabled());

    // Weir1 is reverted to the office copy (the local edit is kept as a backup), Dam is brought here,
    // Clock is left alone.
    Option(List("lvNewerLocal"), 1)->setCurrentIndex(2);
    test::Click(Button("cmdUpdateAllRemote"));
    EXPECT_EQ(Option(List("lvNewerRemote"), 0)->currentText(), "Update");
    test::Click(Button("cmdSynchronise"));

    EXPECT_EQ(TempDir::Read(tmp.File("local/North/Weir1.SXS")), "office copy");
    EXPECT_EQ(TempDir::Read(tmp.File("local/South/Dam.XML")), "its parameters");
    EXPECT_EQ(TempDir::Read(tmp.File("local/Clock.SXS")), "c");
    // The lists show the folders as they now stand; the backups made are named.
    EXPECT_EQ(Column(List("lvNewerLocal"), 0), (QStringList{"/Clock.SXS"}));
    EXPECT_TRUE(Column(List("lvNewerRemote"), 0).isEmpty());
    EXPECT_EQ(Column(List("lvSynced"), 0), (QStringList{"/Same.SXS", "/North/Weir1.SXS", "/South/Dam.SXS"}));
    const QStringList what = Column(List("lvErrors"), 0);
    const QStringList files = Column(List("lvErrors"), 1);
    ASSERT_EQ(what.count("Backup"), 2) << files.join(", ").toStdString();
    EXPECT_TRUE(files.contains(QString::fromStdString(tmp.File("local/North/Weir1.SXS~0000.BAK"))));
    EXPECT_TRUE(files.contains(QString::fromStdString(tmp.File("local/South/Dam.SXS~0000.BAK"))));
    EXPECT_FALSE(what.contains("Error"));
    EXPECT_TRUE(Status().startsWith("Synchronised. 0 error(s), 2 backup(s) kept.")) << Status().toStdString();
    EXPECT_EQ(test::Child<QProgressBar>(&window, "prgSync")->value(), 100);
    EXPECT_TRUE(ui->Messages().empty());
}

TEST_F(SyncWindowTest, CancelEndsTheCompareAtTheNextFileAndSortsNothing) {
    for (const char* name : {"A.SXS", "B.SXS", "C.SXS"}) WriteDated(tmp, std::string("local/") + name, "x", T);
    int found = 0;
    window.onFound = [&](const std::string&) {
        EXPECT_TRUE(window.Running());
        EXPECT_TRUE(Button("cmdCancel")->isEnabled());
        EXPECT_FALSE(Button("cmdCompare")->isEnabled());
        if (++found == 1) test::Click(Button("cmdCancel"));
    };
    window.Compare();
    EXPECT_EQ(found, 1);
    EXPECT_FALSE(window.Running());
    EXPECT_EQ(List("lvNewerLocal")->topLevelItemCount(), 0);
    EXPECT_TRUE(Status().contains("Compare cancelled")) << Status().toStdString();
    EXPECT_FALSE(Button("cmdSynchronise")->isEnabled());

    window.onFound = nullptr;
    window.Compare();
    EXPECT_EQ(List("lvNewerLocal")->topLevelItemCount(), 3) << "a new compare starts afresh";
}

TEST_F(SyncWindowTest, ACopyThatFailsIsListedAndLogged) {
    WriteDated(tmp, "local/Site.SXS", "here", T + 60);
    WriteDated(tmp, "remote/Site.SXS", "there", T);
    window.Compare();
    ASSERT_EQ(List("lvNewerLocal")->topLevelItemCount(), 1);
    test::Click(Button("cmdUpdateAllLocal"));
    // The remote side's folder becomes a plain file: the copy cannot land.
    fs::remove_all(tmp.File("remote"));
    tmp.Write("remote", "not a folder");
    window.Synchronise();
    EXPECT_TRUE(Column(List("lvErrors"), 0).contains("Error"));
    EXPECT_EQ(TempDir::Read(tmp.File("local/Site.SXS")), "here");
    EXPECT_NE(TempDir::Read(tmp.File("ErrorLog.txt")).find("SyncWindow:"), std::string::npos);
}

TEST_F(SyncWindowTest, EscapeClosesTheWindowAsItClosesADialog) {
    ASSERT_TRUE(test::ShowActive(&window));
    QWidget* focused = QApplication::focusWidget();
    QTest::keyClick(focused ? focused : &window, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

TEST(SyncWindowTimeNote, NamesOnlyDifferencesThatAreProbablyNotEdits) {
    TempDir tmp;
    const auto at = [&](const char* name, std::time_t t) { return FileInfo::FromPath(WriteDated(tmp, name, "x", t)); };
    const FileInfo base = at("a", T);
    EXPECT_TRUE(SyncWindow::TimeNote(base, at("b", T + 3600)).contains("daylight-saving"));
    EXPECT_TRUE(SyncWindow::TimeNote(at("c", T - 3600), base).contains("daylight-saving"));
    EXPECT_TRUE(SyncWindow::TimeNote(base, at("d", T + 2)).contains("FAT"));
    EXPECT_TRUE(SyncWindow::TimeNote(base, at("e", T)).isEmpty());
    EXPECT_TRUE(SyncWindow::TimeNote(base, at("f", T + 3)).isEmpty());
    EXPECT_TRUE(SyncWindow::TimeNote(base, at("g", T + 3599)).isEmpty());
    EXPECT_TRUE(SyncWindow::TimeNote(base, FileInfo::None()).isEmpty());
}
