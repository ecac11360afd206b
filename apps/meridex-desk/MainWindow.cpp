#include "MainWindow.h"

#include <fstream>
#include <map>
#include <sstream>

#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QStatusBar>
#include <QToolBar>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <meridex/addressbook/AddressBook.h>
#include <meridex/firmware/LoggerLinks.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/SharedFile.h>
#include <meridex/frame/XMLOps.h>
#include <meridex/platform/SerialPortSource.h>
#include <meridex/settings/V4StandardProfiles.h>
#include <meridex/ui/frame/ImageKeys.h>

#include "LibraryDialogs.h"
#include "SyncWindow.h"

namespace meridex::desk {

namespace {

constexpr const char* kCaption = "Meridex Desk";

QString Q(const std::string& text) { return QString::fromStdString(text); }

std::string Describe(const XmlNode& profile) {
    const std::string name = XMLOps::GetXMLValue(profile, "NAME", "");
    std::string text = (name.empty() ? std::string("(no name)") : name) + " (" + XMLOps::GetXMLValue(profile, "TYPE", "") +
                       " " + XMLOps::GetXMLValue(profile, "METHOD", "");
    const std::string port = XMLOps::GetXMLValue(profile, "COMMPORT", "");
    const std::string address = XMLOps::GetXMLValue(profile, "ADDRESS", "");
    if (!port.empty()) text += ", COM" + port;
    if (!address.empty()) text += ", " + address;
    return text + ")";
}

}  // namespace

const std::vector<MainWindow::Command>& MainWindow::Commands() {
    using C = Command;
    // The features and their buttons follow the feature catalogue; the sub-options of a command
    // (V4_ALLOW_DELETE, V4_ENABLE_SHORTCUTS, V4_ENABLE_TESTMODE_BUTTONS, V4_SET_TESTMODE_CHANNEL,
    // V4_ENABLE_DIAGNOSTICS_BUTTON) belong inside the host's own windows and have no command here.
    static const std::vector<Command> commands = {
        {"cmdSelect", "Select", "V4_SELECT_SCHEME", C::Host, "&File", true},
        {"cmdSynchronise", "Synchronise Schemes", "V4_SELECT_SCHEME", C::Desk, "&File", true},
        {"cmdErrorLog", "Error Log", nullptr, C::Desk, "&File", false},
        {"cmdExit", "Exit", nullptr, C::Desk, "&File", false},
        {"cmdProgram", "Program", "V4_PROGRAM_LOGGER", C::Host, "&Logger", true},
        {"cmdInitNMM", "Initialise / Configure NMM", "V4_INIT_NMM", C::Host, "&Logger", false},
        {"cmdUnload", "Unload", "V4_UNLOAD_DATA", C::Host, "&Logger", true},
        {"cmdViewData", "View Data", "V4_VIEW_DATA", C::Host, "&Logger", true},
        {"cmdTestMode", "Test Mode", "V4_TEST_MODE", C::Host, "&Logger", true},
        {"cmdSDITest", "SDI-12 Test", "V4_SDI_TEST", C::Host, "&Logger", false},
        {"cmdVelocityTrace", "Velocity Trace", "V4_VELOCITY_TRACE", C::Host, "&Logger", false},
        {"cmdUpgradeFirmware", "Upgrade Firmware", "V4_UPGRADE_FIRMWARE", C::Library, "&Logger", true},
        {"mnuCorrectTime", "Correct Time", "V4_CORRECT_TIME", C::Host, "&Test Mode", false},
        {"mnuPut", "Put", "V4_TESTMODE_PUT", C::Host, "&Test Mode", false},
        {"mnuEditChannels", "Edit Channels", "V4_EDIT_TESTMODE_CHANNELS", C::Host, "&Test Mode", false},
        {"mnuStopLogging", "Stop Logging", "V4_STOP_LOGGING", C::Host, "&Test Mode", false},
        {"cmdConnection", "Connection", "V4_CONNECTION", C::Library, "&Communications", true},
        {"cmdAddressBook", "Address Book", "V4_CONNECTION", C::Library, "&Communications", true},
        {"cmdCommsWindow", "Comms Window", "V4_COMMS_WINDOW", C::Host, "&Communications", true},
        {"cmdModemSetup", "Modem Setup", "V4_MODEM_SETUP", C::Host, "&Communications", false},
        {"cmdNewDevice", "New Device", "V4_COMMS_MAP", C::Library, "&Communications", false},
        {"cmdCommsMap", "Communications Map", "V4_COMMS_MAP", C::Library, "&Communications", false},
        {"cmdSchemeEditor", "Scheme Editor", "V4_SCHEME_EDITOR", C::Host, "T&ools", true},
        {"cmdNewShortcuts", "New Shortcuts", "V4_EDIT_SHORTCUTS", C::Host, "T&ools", false},
        {"cmdConfigure", "Configure V4", "V4_CONFIGURE", C::Library, "T&ools", false},
    };
    return commands;
}

MainWindow::MainWindow(Workspace workspace, DeskOptions options, QWidget* parent)
    : QMainWindow(parent), workspace_(std::move(workspace)), options_(std::move(options)), errors_(options_.ui) {
    setObjectName(QStringLiteral("frmDesk"));
    setWindowTitle(QStringLiteral("Meridex Desk - ") + Q(workspace_.Folder().string()));
    if (!options_.dialogs) options_.dialogs = std::make_shared<LibraryDialogs>(options_.ui, options_.ports, options_.store, &errors_);
    errors_.setErrorLogFile(workspace_.ErrorLogFile().string());
    errors_.setLogErrors(true);
    SharedFile::setErrorLogFile(workspace_.ErrorLogFile().string());  // someone else's saves merged or kept aside
    StartUp();
    BuildCommands();
    FillProfiles();
    FillDevices();
    RefreshCommands();
    resize(1100, 560);  // wide enough for every toolbar command of ADMINISTRATOR
}

MainWindow::~MainWindow() {
    if (sync_) delete sync_.data();
}

std::shared_ptr<UserInterface> MainWindow::ui() const {
    return options_.ui ? options_.ui : UserInterface::Current();
}

void MainWindow::Tell(const std::string& text, MessageIcon icon) {
    ui()->MessageBox(text, MessageButtons::OK, icon, kCaption);
}

void MainWindow::Guard(const std::string& context, const std::function<void()>& body) {
    // Every handler traps its own failures: logged, told, and the window stays open.
    try {
        body();
    } catch (const Error& e) {
        errors_.LogError(e.Number(), e.Description(), context);
        Tell(context + " : " + std::to_string(e.Number()) + "-" + e.Description(), MessageIcon::Exclamation);
    } catch (const std::exception& e) {
        errors_.LogError(51, e.what(), context);
        Tell(context + " : 51-" + e.what(), MessageIcon::Exclamation);
    }
}

void MainWindow::StartUp() {
    const std::string settingsFile = workspace_.SettingsFile().string();
    if (!settings_.LoadSettings(settingsFile) && std::filesystem::exists(settingsFile)) {
        errors_.LogError(75, "The settings file could not be read; it is kept beside itself before the next save",
                         "MainWindow:StartUp");
    }
    if (settings_.Profiles().Count() == 0) {
        // A workspace without profiles starts with the three standard ones.
        for (const Profile& profile : {V4StandardProfiles::GetDefaultAdministratorProfile(),
                                       V4StandardProfiles::GetDefaultProfile(),
                                       V4StandardProfiles::GetDefaultLockdownProfile()}) {
            settings_.Profiles().Add(profile, profile.Key());
        }
    }
    if (!settings_.CurrentProfile()) {
        const Profile fallback = settings_.Profiles().Item(std::string("DEFAULT"));
        settings_.setCurrentProfile(fallback ? fallback : settings_.Profiles().Item(1));
        settings_.SaveSettings();
    }

    map_ = std::make_unique<CommsProfileManager>(options_.ports, options_.store);
    const std::string mapFile = workspace_.CommsMapFile().string();
    if (!map_->LoadXMLMapFile(mapFile) && std::filesystem::exists(mapFile)) {
        errors_.LogError(75, "The communications map could not be read; the default map is used", "MainWindow:StartUp");
    }
    map_->CleanRS232Direct();
    map_->GetCommPortDescriptions(options_.companionFolder);
    std::string error;
    if (!map_->SaveXMLMapFile({}, &error)) errors_.LogError(75, error, "MainWindow:StartUp");
}

void MainWindow::BuildCommands() {
    QToolBar* toolbar = addToolBar(QStringLiteral("Commands"));
    toolbar->setObjectName(QStringLiteral("tbCommands"));
    toolbar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    toolbar->setMovable(false);
    QMenu* menu = nullptr;
    QString menuTitle;
    for (const Command& command : Commands()) {
        if (menuTitle != command.menu) {
            menuTitle = command.menu;
            menu = menuBar()->addMenu(menuTitle);
            menu->setObjectName(QStringLiteral("mnu") + QString(menuTitle).remove('&').remove(' '));
        }
        auto* action = new QAction(QString::fromUtf8(command.text), this);
        action->setObjectName(command.name);
        if (command.kind == Command::Host) action->setToolTip(QStringLiteral("%1 (the logger host's own command)").arg(command.text));
        if (command.feature) action->setStatusTip(QString::fromUtf8(command.feature));
        menu->addAction(action);
        if (command.toolbar) toolbar->addAction(action);
        connect(action, &QAction::triggered, this, [this, &command] { Run(command); });
        actions_.emplace_back(&command, action);
    }

    cboCurrentProfile_ = new QComboBox;
    cboCurrentProfile_->setObjectName(QStringLiteral("cboCurrentProfile"));
    cboCurrentProfile_->setMinimumContentsLength(14);
    cboCurrentProfile_->setToolTip(QStringLiteral("The current profile: which commands are shown"));
    connect(cboCurrentProfile_, &QComboBox::activated, this,
            [this](int index) { SwitchProfile(cboCurrentProfile_->itemText(index)); });
    // A widget of the status bar, not its message: a menu's hint covers it for a moment only.
    lblCommandsShown_ = new QLabel;
    lblCommandsShown_->setObjectName(QStringLiteral("lblCommandsShown"));
    statusBar()->addWidget(lblCommandsShown_, 1);
    auto* label = new QLabel(QStringLiteral("Profile:"));
    label->setBuddy(cboCurrentProfile_);
    statusBar()->addPermanentWidget(label);
    statusBar()->addPermanentWidget(cboCurrentProfile_);

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    auto* facts = new QFormLayout;
    auto path = [](const std::filesystem::path& p) {
        auto* l = new QLabel(Q(p.string()));
        l->setTextInteractionFlags(Qt::TextSelectableByMouse);
        return l;
    };
    facts->addRow(QStringLiteral("Workspace:"), path(workspace_.Folder()));
    facts->addRow(QStringLiteral("Settings:"), path(workspace_.SettingsFile()));
    facts->addRow(QStringLiteral("Address book:"), path(workspace_.AddressBookFile()));
    facts->addRow(QStringLiteral("Communications map:"), path(workspace_.CommsMapFile()));
    lblLocalSchemes_ = path(workspace_.LocalSchemes(settings_));
    lblLocalSchemes_->setObjectName(QStringLiteral("lblLocalSchemes"));
    facts->addRow(QStringLiteral("Local schemes:"), lblLocalSchemes_);
    facts->addRow(QStringLiteral("Remote schemes:"), path(workspace_.DefaultRemoteSchemes()));
    facts->addRow(QStringLiteral("Firmware:"), path(workspace_.FirmwareFolder()));
    facts->addRow(QStringLiteral("Error log:"), path(workspace_.ErrorLogFile()));
    layout->addLayout(facts);
    lblDevices_ = new QLabel;
    lblDevices_->setObjectName(QStringLiteral("lblDevices"));
    layout->addWidget(lblDevices_);
    lvDevices_ = new QTreeWidget;
    lvDevices_->setObjectName(QStringLiteral("lvDevices"));
    lvDevices_->setAccessibleName(QStringLiteral("Connection devices"));
    lvDevices_->setRootIsDecorated(false);
    lvDevices_->setHeaderLabels({QStringLiteral("Device"), QStringLiteral("Kind"), QStringLiteral("Port or address"),
                                 QStringLiteral("On this PC")});
    lvDevices_->setColumnWidth(0, 320);
    lvDevices_->setColumnWidth(1, 200);
    lvDevices_->setColumnWidth(2, 160);
    layout->addWidget(lvDevices_, 1);
    setCentralWidget(central);
}

void MainWindow::FillProfiles() {
    cboCurrentProfile_->clear();
    const Profiles profiles = settings_.Profiles();
    for (std::int16_t i = 1; i <= profiles.Count(); ++i) cboCurrentProfile_->addItem(Q(profiles.Item(i).Key()));
    cboCurrentProfile_->setCurrentIndex(cboCurrentProfile_->findText(Q(settings_.CurrentProfile().Key())));
}

void MainWindow::FillDevices() {
    lvDevices_->clear();
    // Which COM numbers this PC has now: a device on any other port cannot be used here.
    std::map<std::string, bool> ports;
    for (const SerialPort& port : map_->Ports().ListPorts()) ports[std::to_string(port.number)] = map_->Ports().Probe(port);
    int missing = 0;
    for (std::int16_t i = 1; i <= map_->ApplicationProfileCount(); ++i) {
        const XmlNode profile = map_->ApplicationProfile(i);
        const std::string method = XMLOps::GetXMLValue(profile, "METHOD", "");
        const std::string port = XMLOps::GetXMLValue(profile, "COMMPORT", "");
        const std::string address = XMLOps::GetXMLValue(profile, "ADDRESS", "");
        QString status = QStringLiteral("network");
        if (!port.empty()) {
            const auto found = ports.find(port);
            status = found == ports.end() ? QStringLiteral("no such port") : found->second ? QStringLiteral("port present")
                                                                                           : QStringLiteral("port absent");
            if (found == ports.end() || !found->second) ++missing;
        }
        auto* row = new QTreeWidgetItem(lvDevices_, {Q(XMLOps::GetXMLValue(profile, "NAME", "")),
                                                     Q(XMLOps::GetXMLValue(profile, "TYPE", "") + " " + method),
                                                     Q(port.empty() ? address : "COM" + port), status});
        ui::setItemKey(row, Q(XMLOps::GetXMLValue(profile, "KEY", "")));
        const std::string icon = XMLOps::GetXMLValue(profile, "ICON", "");
        ui::setImageKey(row, Q(icon.empty() ? (method == "DIRECT" ? "DIRECT" : method == "PHONEMODEM" ? "PHONEMODEM" : "IP")
                                            : icon));
    }
    lblDevices_->setText(missing == 0 ? QStringLiteral("Connection devices of this PC (the communications map):")
                                      : QStringLiteral("Connection devices of this PC (the communications map): %1 on a "
                                                       "serial port this PC does not have now")
                                            .arg(missing));
}

QAction* MainWindow::Action(const QString& name) const {
    for (const auto& [command, action] : actions_) {
        if (action->objectName() == name) return action;
    }
    return nullptr;
}

void MainWindow::RefreshCommands() {
    const Profile current = settings_.CurrentProfile();
    for (const auto& [command, action] : actions_) {
        action->setVisible(!command->feature || current.FeatureAvailable(command->feature));
    }
    lblCommandsShown_->setText(QStringLiteral("%1 of %2 commands shown for %3")
                                 .arg(std::count_if(actions_.begin(), actions_.end(),
                                                    [](const auto& entry) { return entry.second->isVisible(); }))
                                 .arg(actions_.size())
                                 .arg(Q(current.Key())));
}

bool MainWindow::SwitchProfile(const QString& key) {
    const Profile profile = settings_.Profiles().Item(key.toStdString());
    if (!profile) return false;
    settings_.setCurrentProfile(profile);
    if (!settings_.SaveSettings()) {
        errors_.LogError(75, "The settings could not be saved to " + settings_.SettingsFile(), "MainWindow:cboCurrentProfile_Click");
    }
    cboCurrentProfile_->setCurrentIndex(cboCurrentProfile_->findText(key));
    RefreshCommands();
    return true;
}

void MainWindow::Run(const Command& command) {
    const std::string context = std::string("MainWindow:") + command.name + "_Click";
    Guard(context, [&] {
        const QString name = QString::fromUtf8(command.name);
        switch (command.kind) {
        case Command::Host:
            Tell(std::string("\"") + command.text +
                 "\" is a command of the logger host application itself. Meridex Desk shows it as the current "
                 "profile allows, but cannot carry it out.");
            return;
        case Command::Library:
            RunLibrary(name);
            return;
        case Command::Desk:
            if (name == QLatin1String("cmdSynchronise")) OpenSyncWindow();
            else if (name == QLatin1String("cmdErrorLog")) ShowErrorLog();
            else if (name == QLatin1String("cmdExit")) close();
            return;
        }
    });
}

void MainWindow::RunLibrary(const QString& name) {
    DeskDialogs& dialogs = *options_.dialogs;
    const std::string book = workspace_.AddressBookFile().string();
    const std::string mapFile = workspace_.CommsMapFile().string();
    if (name == QLatin1String("cmdConfigure")) {
        dialogs.ShowProfileEditor(settings_, this);
        FillProfiles();
        RefreshCommands();
    } else if (name == QLatin1String("cmdCommsMap") || name == QLatin1String("cmdAddressBook")) {
        // The dialog reads the map from its file: it gets what this window holds, and this window
        // reads back what the dialog saved.
        map_->SaveXMLMapFile();
        if (name == QLatin1String("cmdCommsMap")) dialogs.EditCommunicationsMap(mapFile);
        else dialogs.OpenAddressBook(book, mapFile, workspace_.LocalSchemes(settings_).string());
        map_->LoadXMLMapFile(mapFile);
        FillDevices();
    } else if (name == QLatin1String("cmdNewDevice")) {
        const XmlNode device = dialogs.SelectNewCommsDevice();
        if (!device) return;
        map_->AddApplicationProfile(device);
        std::string error;
        if (!map_->SaveXMLMapFile({}, &error)) {
            errors_.LogError(75, error, "MainWindow:cmdNewDevice_Click");
            Tell("The new device could not be saved to the map: " + error, MessageIcon::Exclamation);
        }
        FillDevices();
    } else if (name == QLatin1String("cmdConnection")) {
        AddressBook addressBook;
        addressBook.LoadAddressBook(book);
        const XmlNode site = dialogs.SelectSiteCommsProfiles(addressBook);
        if (!site) return;
        const XmlNode match = map_->GetBestMatch(site);
        Tell("The site's connection: " + Describe(site) + "\nThe best match on this PC: " +
             (match ? Describe(match) : std::string("none")));
    } else if (name == QLatin1String("cmdUpgradeFirmware")) {
        const XmlNode device = dialogs.SelectCommsDevice(*map_);
        if (!device) return;
        std::string error;
        const auto logger = LoggerLinks::OpenProfile(device, map_->Ports(), error);
        if (!logger) {
            Tell("The logger of " + Describe(device) + " cannot be reached: " + error, MessageIcon::Exclamation);
            return;
        }
        dialogs.UpgradeFirmware(*logger, errors_, workspace_.FirmwareFolder().string(), this);
    }
}

SyncWindow* MainWindow::OpenSyncWindow() {
    if (!sync_) {
        sync_ = new SyncWindow(workspace_.DefaultRemoteSchemes().string(), workspace_.LocalSchemes(settings_).string(),
                               errors_, options_.ui, this);
        sync_->setAttribute(Qt::WA_DeleteOnClose);
    }
    sync_->show();
    sync_->raise();
    return sync_;
}

void MainWindow::ShowErrorLog() { ErrorLogWindow(workspace_.ErrorLogFile(), this)->exec(); }

std::unique_ptr<QDialog> MainWindow::ErrorLogWindow(const std::filesystem::path& file, QWidget* parent) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    auto window = std::make_unique<QDialog>(parent);
    QDialog& dialog = *window;
    dialog.setObjectName(QStringLiteral("frmErrorLog"));
    dialog.setWindowTitle(QStringLiteral("Error Log"));
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(new QLabel(Q(file.string())));
    auto* log = new QPlainTextEdit;
    log->setObjectName(QStringLiteral("txtErrorLog"));
    log->setAccessibleName(QStringLiteral("Error log"));
    log->setReadOnly(true);
    log->setLineWrapMode(QPlainTextEdit::NoWrap);
    const std::string contents = text.str();
    log->setPlainText(contents.empty() ? QStringLiteral("The error log is empty.") : Q(contents));
    layout->addWidget(log);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    dialog.resize(760, 420);
    return window;
}

}  // namespace meridex::desk
