// `make screenshots`: every dialog of the library in a representative state. The settings dialogs (the
// three small dialogs, the profile editor unlocked and locked); the communications dialogs (the
// new-device dialog, the device-selection dialog with a device chosen, the map editor once per kind of
// device, with a field marked wrong, and asking before it discards changes); the firmware upgrade
// dialog (a logger identified with its files offered, loading, after an upgrade); the address book's
// dialogs (the editor on a water authority's book, the two site dialogs, the import halfway through).
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <utility>

#include <QCheckBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/comms/ProfileXml.h>
#include <meridex/firmware/FirmwareImage.h>
#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/platform/SerialPortSource.h>
#include <meridex/platform/UserStore.h>
#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/settings/Settings.h>
#include <meridex/settings/V4StandardProfiles.h>
#include <meridex/ui/QtUserInterface.h>
#include <meridex/ui/addressbook/frmAddressBook.h>
#include <meridex/ui/addressbook/frmImport.h>
#include <meridex/ui/addressbook/frmNewSite.h>
#include <meridex/ui/addressbook/frmSelectSite.h>
#include <meridex/ui/comms/frmCommsMap.h>
#include <meridex/ui/comms/frmNewCommsMapDevice.h>
#include <meridex/ui/comms/frmSelectDevice.h>
#include <meridex/ui/firmware/frmFirmware.h>
#include <meridex/ui/frame/ProgressPicture.h>
#include <meridex/ui/settings/frmEnterPassword.h>
#include <meridex/ui/settings/frmProfiles.h>
#include <meridex/ui/settings/frmSetPassword.h>
#include <meridex/ui/settings/frmV4InputBox.h>

#include "../../comms/CommsTestSupport.h"
#include "Scene.h"
#include "TempDir.h"

using namespace meridex;
using namespace meridex::ui;

namespace {

// A settings document as a field office keeps it: the three standard profiles and two crews.
std::unique_ptr<Settings> SampleSettings(bool unlocked) {
    auto s = std::make_unique<Settings>();
    s->Profiles().Add(V4StandardProfiles::GetDefaultAdministratorProfile());
    s->Profiles().Add(V4StandardProfiles::GetDefaultProfile());
    s->Profiles().Add(V4StandardProfiles::GetDefaultLockdownProfile());
    for (const char* crew : {"North Crew", "Hydrometric Survey"}) {
        const Profile profile = V4StandardProfiles::GetDefaultProfile();
        profile.setKey(crew);
        s->Profiles().Add(profile);
    }
    s->setCurrentProfile(s->Profiles().Item("North Crew"));
    s->SetBoolean("PROFILES_UNLOCKED", unlocked, true);
    return s;
}

// An editor that owns the settings it shows.
class SceneProfiles : public frmProfiles {
public:
    explicit SceneProfiles(bool unlocked)
        : frmProfiles(std::make_shared<RecordingUserInterface>()), settings_(SampleSettings(unlocked)) {
        setV4Settings(settings_.get());
    }

private:
    std::unique_ptr<Settings> settings_;
};

// The ports of a field laptop: two USB adapters and a Bluetooth link, one adapter unplugged.
class ScenePorts : public SerialPortSource {
public:
    std::vector<SerialPort> ListPorts() override {
        return {{1, "/dev/ttyS0", "Communications Port", false},
                {3, "/dev/ttyUSB0", "FTDI USB Serial Converter", false},
                {4, "/dev/ttyUSB1", "Prolific USB-to-Serial", false},
                {6, "/dev/rfcomm0", "Standard Serial over Bluetooth link", true}};
    }
    bool Probe(const SerialPort& port) override { return port.number != 4; }
};

std::shared_ptr<SerialPortSource> Ports() { return std::make_shared<ScenePorts>(); }
// A store in a folder of the scenes' own: they never touch anyone's settings.
std::shared_ptr<UserStore> SceneStore() {
    static const test::TempDir folder;
    return std::make_shared<IniUserStore>(folder.File("config"));
}

// The map of a field office: the PC's direct ports, a modem, the network links, named as people name them.
void FillMap(CommsProfileManager& map) {
    const XmlNode modem = map.AddRS232PhoneModem("3");
    ProfileXml::SetChild(modem, "NAME", "Office modem (US Robotics)");
    ProfileXml::SetChild(modem, "PHONENUMBER", "0437 118 552");
    ProfileXml::SetChild(modem, "OUTSIDELINE", "0,");
    const XmlNode gprs = map.GetDeviceProfile(map.ApplicationProfiles(), "IP", "GPRSPROXY");
    ProfileXml::SetChild(gprs, "PROXYADDRESS", "gprs.hydro.example.net");
    ProfileXml::SetChild(gprs, "USERNAME", "fieldcrew");
    ProfileXml::SetChild(gprs, "PASSWORD", "secret");
    const XmlNode udp = map.GetDeviceProfile(map.ApplicationProfiles(), "IP", "UDP");
    ProfileXml::SetChild(udp, "ADDRESS", "10.20.4.17");
    ProfileXml::SetChild(udp, "VENDORNOTE", "Set up by the radio contractor");
    const XmlNode direct = map.ApplicationProfile(Index(1));
    ProfileXml::SetChild(direct, "COMMPORT", "4");
    ProfileXml::SetChild(direct, "NAME", "Prolific USB-to-Serial");
}

class SceneSelect : public frmSelectDevice {
public:
    SceneSelect() : map_(Ports(), SceneStore()) {
        FillMap(map_);
        setCommunicationsManager(&map_);
        QTreeWidgetItem* root = tvDevices->topLevelItem(0);
        tvDevices->setCurrentItem(root->child(root->childCount() - 1));
    }

private:
    CommsProfileManager map_;
};

class SceneCommsMap : public frmCommsMap {
public:
    explicit SceneCommsMap(int row, std::shared_ptr<RecordingUserInterface> prompts = std::make_shared<RecordingUserInterface>())
        : frmCommsMap(prompts, Ports(), SceneStore()) {
        {
            CommsProfileManager map(Ports(), SceneStore());
            FillMap(map);
            map.SaveXMLMapFile(folder_.File("CommsProfiles.xml"));
            map.setMapFile({});
        }
        LoadMap(folder_.File("CommsProfiles.xml"));
        auto* list = findChild<QTreeWidget*>(QStringLiteral("lvDevices"));
        list->setCurrentItem(list->topLevelItem(row));
    }

private:
    test::TempDir folder_;
};

class SceneLogger : public Logger {
public:
    std::string Description() const override { return "COM3 (/dev/ttyUSB0)"; }
    UpgradeResult Identify() override { return {UpgradeStatus::Ok, {}, identity}; }
    UpgradeResult LoadFirmware(const FirmwareImage& image, UpgradeEvents*) override {
        identity.firmwareVersion = image.Version();
        return {UpgradeStatus::Ok, "The logger WL400 2024117 now runs firmware " + image.Version() + ".", identity};
    }
    LoggerIdentity identity{"WL400", "2024117", "2.3.0", false, "1.1"};
};

// A dialog that owns its logger, its error log and a firmware folder of four files.
class SceneFirmware : public frmFirmware {
public:
    enum class State { Offered, Loading, Upgraded };
    explicit SceneFirmware(State state) : frmFirmware(std::make_shared<RecordingUserInterface>()) {
        const struct {
            const char* name;
            const char* version;
            const char* date;
            std::size_t size;
        } files[] = {{"wl400-2.4.1.mxfw", "2.4.1", "2026-09-14", 262144},
                     {"wl400-2.3.0.mxfw", "2.3.0", "2026-03-02", 258048},
                     {"wl400-2.1.7.mxfw", "2.1.7", "2025-11-20", 251904}};
        for (const auto& f : files)
            dir_.Write(std::string("firmware/") + f.name,
                       FirmwareImage::Make({"WL400", "WL410"}, f.version, f.date, std::string(f.size, 'x')).Serialize());
        dir_.Write("firmware/rg200-5.0.mxfw", FirmwareImage::Make({"RG200"}, "5.0", "", "x").Serialize());
        handler_.setErrorLogFile(dir_.File("MeridexAppLibrary.log"));
        handler_.setLogErrors(true);
        setLogger(&logger_);
        setErrHandler(&handler_);
        setFirmwareFilesPath(dir_.File("firmware"));
        Form_Load();
        if (state == State::Upgraded) cmdUpgrade_Click();
        if (state == State::Loading) {  // as the dialog stands between two blocks
            lblStep->setText(QString::fromStdString(UpgradeStepText(UpgradeStep::Write, 104448, 262144)));
            pbProgress->setValue(UpgradePercent(UpgradeStep::Write, 104448, 262144));
            cmdCancel->setText("&Cancel");
            cmdUpgrade->setEnabled(false);
            cmdBrowse->setEnabled(false);
            lvFiles->setEnabled(false);
        }
        lblFolder->setText("/srv/field/firmware");  // a stable path in the picture
    }

private:
    test::TempDir dir_;
    SceneLogger logger_;
    ErrorHandler handler_;
};

const char* const kMap =
    "<COMMSPROFILES>"
    "<PROFILE><NAME>Field Laptop Cable</NAME><TYPE>RS232</TYPE><METHOD>DIRECT</METHOD><BAUDRATE>9600</BAUDRATE>"
    "<COMMPORT>1</COMMPORT><ICON>DIRECT</ICON></PROFILE>"
    "<PROFILE><NAME>Office Modem</NAME><TYPE>RS232</TYPE><METHOD>PHONEMODEM</METHOD><BAUDRATE>9600</BAUDRATE>"
    "<COMMPORT>3</COMMPORT><FORCEPROMPT>K</FORCEPROMPT><ICON>PHONEMODEM</ICON></PROFILE>"
    "<PROFILE><NAME>Telemetry Gateway</NAME><TYPE>IP</TYPE><METHOD>GPRSPROXY</METHOD>"
    "<IPADDRESS>10.20.0.5</IPADDRESS><IPPORT>4001</IPPORT><ICON>IP</ICON></PROFILE>"
    "<PROFILE><NAME>Depot Network</NAME><TYPE>IP</TYPE><METHOD>TCP</METHOD><IPADDRESS>192.168.4.20</IPADDRESS>"
    "<IPPORT>502</IPPORT><ICON>IP</ICON></PROFILE>"
    "</COMMSPROFILES>";

using Parameters = std::initializer_list<std::pair<const char*, std::string>>;

Site MakeSite(const std::string& name, Parameters parameters) {
    Site site;
    site.setName(name);
    for (const auto& [key, value] : parameters) site.SetParameter(key, value);
    return site;
}

Site Gauge(const std::string& name, const std::string& phone) {
    return MakeSite(name, {{"NAME", "Office Modem"}, {"TYPE", "RS232"}, {"METHOD", "PHONEMODEM"}, {"BAUDRATE", "9600"},
                           {"COMMPORT", "3"}, {"PHONENUMBER", phone}, {"FORCEPROMPT", "K"}});
}

SiteGroup Group(const SiteGroup& parent, const std::string& name) {
    SiteGroup group;
    group.setName(name);
    parent.AddGroup(group);
    return group;
}

// A regional water authority's book: catchments holding river and rain gauges.
void FillBook(AddressBook& book) {
    const SiteGroup north = Group(book.Sites(), "Northern Region");
    const SiteGroup tweed = Group(north, "Tweed Catchment");
    tweed.AddSite(Gauge("Tweed at Boleside", "01896 752 114"));
    tweed.AddSite(Gauge("Ettrick at Lindean", "01750 321 980"));
    tweed.AddSite(Gauge("Gala Water at Galashiels", "01896 755 402"));
    Group(north, "Coquet Catchment").AddSite(Gauge("Coquet at Rothbury", "01669 620 331"));
    north.AddSite(Gauge("Kielder Reservoir Outflow", "01434 250 118"));
    const SiteGroup south = Group(book.Sites(), "Southern Region");
    Group(south, "Test Catchment").AddSite(Gauge("Test at Broadlands", "01794 517 260"));
    Group(south, "Itchen Catchment");
    Group(book.Sites(), "Rain Gauges");
    book.Sites().AddSite(MakeSite("Head Office Depot", {{"NAME", "Depot Network"}, {"TYPE", "IP"}, {"METHOD", "TCP"},
                                                        {"IPADDRESS", "192.168.4.20"}, {"IPPORT", "502"}}));
}

// Files in a temporary folder that lives as long as the scene's window.
struct Files {
    QTemporaryDir dir;
    std::string File(const char* name) const { return dir.filePath(QString::fromLatin1(name)).toStdString(); }
    std::string Book() const {
        AddressBook book;
        book.LoadAddressBook(File("AddressBook.xml"));
        FillBook(book);
        book.SaveAddressBook();
        return File("AddressBook.xml");
    }
    std::string Map() const {
        QFile file(QString::fromStdString(File("CommsProfiles.xml")));
        file.open(QIODevice::WriteOnly);
        file.write(kMap);
        return File("CommsProfiles.xml");
    }
    std::shared_ptr<test::FakePorts> Ports() const { return std::make_shared<test::FakePorts>(std::initializer_list<int>{1, 3}); }
    std::shared_ptr<IniUserStore> Store() const { return std::make_shared<IniUserStore>(File("config")); }
};

class SceneAddressBook : public frmAddressBook {
public:
    SceneAddressBook() : frmAddressBook(std::make_shared<RecordingUserInterface>()) {
        setCommsSources(files_.Ports(), files_.Store());
        LoadAddressBook(files_.Book(), files_.Map(), files_.File("schemes"));
        // A catchment's gauge with its parameters, as a person opens it.
        for (QTreeWidgetItemIterator it(tvGroups); *it; ++it)
            if ((*it)->text(0) == QStringLiteral("Ettrick at Lindean")) tvGroups->setCurrentItem(*it);
        lvProfileElements->setCurrentItem(lvProfileElements->topLevelItem(5));
    }

private:
    Files files_;
};

class SceneNewSite : public frmNewSite {
public:
    SceneNewSite() : map_(files_.Ports(), files_.Store()) {
        map_.LoadXMLMapFile(files_.Map());
        setCommsDevices(&map_);
        lvDevices->setCurrentItem(lvDevices->topLevelItem(1));
        txtName->setText(QStringLiteral("Whiteadder at Hutton"));
    }

private:
    Files files_;
    CommsProfileManager map_;
};

class SceneSelectSite : public frmSelectSite {
public:
    SceneSelectSite() {
        book_.LoadAddressBook(files_.Book());
        setAddressBook(&book_);
    }

private:
    Files files_;
    AddressBook book_;
};

}  // namespace

MERIDEX_SCENE("frmProfiles") { return std::make_unique<SceneProfiles>(true); }

MERIDEX_SCENE("frmProfiles-locked") { return std::make_unique<SceneProfiles>(false); }

MERIDEX_SCENE("frmV4InputBox") {
    auto form = std::make_unique<frmV4InputBox>();
    form->setWindowTitle("New Profile");
    form->lblPrompt->setText("Enter new profile name");
    form->txtInput->setText("Night Shift");
    return form;
}

MERIDEX_SCENE("frmSetPassword") {
    auto form = std::make_unique<frmSetPassword>();
    form->txtPassword->setText("secret");
    form->txtPassword2->setText("secre");
    return form;
}

MERIDEX_SCENE("frmEnterPassword") {
    auto form = std::make_unique<frmEnterPassword>();
    form->txtPassword->setText("secret");
    return form;
}

MERIDEX_SCENE("frmNewCommsMapDevice") {
    auto form = std::make_unique<frmNewCommsMapDevice>(Ports(), SceneStore());
    form->lvCommsType->setCurrentItem(form->lvCommsType->topLevelItem(3));
    return form;
}

MERIDEX_SCENE("frmSelectDevice") { return std::make_unique<SceneSelect>(); }

// Rows of the scene map: the direct ports 1, 3 (renamed to the unplugged 4) and 6, UDP, TCP/IP,
// GPRS, the modem.
MERIDEX_SCENE("frmCommsMap-direct") { return std::make_unique<SceneCommsMap>(0); }

MERIDEX_SCENE("frmCommsMap-phonemodem") { return std::make_unique<SceneCommsMap>(6); }

MERIDEX_SCENE("frmCommsMap-udp") { return std::make_unique<SceneCommsMap>(3); }

MERIDEX_SCENE("frmCommsMap-tcp") { return std::make_unique<SceneCommsMap>(4); }

MERIDEX_SCENE("frmCommsMap-gprsproxy") { return std::make_unique<SceneCommsMap>(5); }

// A mistyped address, marked at its field when OK was pressed.
MERIDEX_SCENE("frmCommsMap-invalid") {
    auto editor = std::make_unique<SceneCommsMap>(3);
    auto* stack = editor->findChild<QStackedWidget*>(QStringLiteral("stkFrames"));
    auto* address = stack->currentWidget()->findChild<QLineEdit*>(QStringLiteral("txtAddress"));
    address->setText(QStringLiteral("10.20.4.256"));
    // As if typed: the editor takes only the fields a person edited.
    Q_EMIT address->textEdited(address->text());
    editor->cmdOK_Click();
    return editor;
}

// Cancel after a change: the question the editor asks, as the Qt dialogs show it.
MERIDEX_SCENE("frmCommsMap-discard") {
    auto prompts = std::make_shared<RecordingUserInterface>();
    prompts->QueueChoice(0);
    SceneCommsMap editor(0, prompts);
    QWidget* frame = editor.findChild<QStackedWidget*>(QStringLiteral("stkFrames"))->currentWidget();
    frame->findChild<QCheckBox*>(QStringLiteral("cbDefault"))->click();
    editor.cmdCancel_Click();
    if (prompts->Choices().empty()) throw std::runtime_error("the editor closed without asking");
    const RecordingUserInterface::Choice& asked = prompts->Choices().back();
    return QtUserInterface::ChooseBoxFor(asked.text, asked.choices, asked.icon, asked.caption,
                                         asked.defaultChoice);
}

MERIDEX_SCENE("frmFirmware") { return std::make_unique<SceneFirmware>(SceneFirmware::State::Offered); }

MERIDEX_SCENE("frmFirmware-loading") { return std::make_unique<SceneFirmware>(SceneFirmware::State::Loading); }

MERIDEX_SCENE("frmFirmware-upgraded") { return std::make_unique<SceneFirmware>(SceneFirmware::State::Upgraded); }

MERIDEX_SCENE("frmAddressBook") { return std::make_unique<SceneAddressBook>(); }

MERIDEX_SCENE("frmNewSite") { return std::make_unique<SceneNewSite>(); }

MERIDEX_SCENE("frmSelectSite") { return std::make_unique<SceneSelectSite>(); }

MERIDEX_SCENE("frmImport") {
    auto form = std::make_unique<frmImport>();
    form->lblMessage->setText(QStringLiteral(
        "Processing Scheme: /srv/schemes/Northern Region/Tweed Catchment/Tweed at Boleside.xml"));
    form->picProgress->setProgress(0.62);
    return form;
}
