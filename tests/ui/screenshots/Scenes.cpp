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
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
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

// A scene's form with what it shows kept as long as its window: a folder of its own and the documents,
// logger and handler it was given (destroyed before the folder, and the form after both).
template <class Form>
class Owning : public Form {
public:
    using Form::Form;
    template <class T>
    T* Keep(std::shared_ptr<T> kept) {
        kept_.push_back(kept);
        return kept.get();
    }
    const test::TempDir folder;

private:
    std::vector<std::shared_ptr<void>> kept_;
};

std::unique_ptr<QWidget> ProfileEditor(bool unlocked) {
    auto form = std::make_unique<Owning<frmProfiles>>(std::make_shared<RecordingUserInterface>());
    form->setV4Settings(form->Keep(std::shared_ptr<Settings>(SampleSettings(unlocked))));
    return form;
}

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
    const XmlNode gprs = map.GetDeviceProfile(map.ApplicationProfiles(), "IP", "GPRSPROXY");
    const XmlNode udp = map.GetDeviceProfile(map.ApplicationProfiles(), "IP", "UDP");
    const XmlNode direct = map.ApplicationProfile(Index(1));
    const struct {
        const XmlNode& profile;
        const char* field;
        const char* value;
    } fields[] = {{modem, "NAME", "Office modem (US Robotics)"}, {modem, "PHONENUMBER", "0437 118 552"},
                  {modem, "OUTSIDELINE", "0,"}, {gprs, "PROXYADDRESS", "gprs.hydro.example.net"},
                  {gprs, "USERNAME", "fieldcrew"}, {gprs, "PASSWORD", "secret"}, {udp, "ADDRESS", "10.20.4.17"},
                  {udp, "VENDORNOTE", "Set up by the radio contractor"}, {direct, "COMMPORT", "4"},
                  {direct, "NAME", "Prolific USB-to-Serial"}};
    for (const auto& f : fields) ProfileXml::SetChild(f.profile, f.field, f.value);
}

std::unique_ptr<QWidget> SelectDevice() {
    auto form = std::make_unique<Owning<frmSelectDevice>>();
    auto* map = form->Keep(std::make_shared<CommsProfileManager>(Ports(), SceneStore()));
    FillMap(*map);
    form->setCommunicationsManager(map);
    QTreeWidgetItem* root = form->tvDevices->topLevelItem(0);
    form->tvDevices->setCurrentItem(root->child(root->childCount() - 1));
    return form;
}

std::unique_ptr<Owning<frmCommsMap>> CommsMap(int row, std::shared_ptr<RecordingUserInterface> prompts =
                                                           std::make_shared<RecordingUserInterface>()) {
    auto form = std::make_unique<Owning<frmCommsMap>>(prompts, Ports(), SceneStore());
    {
        CommsProfileManager map(Ports(), SceneStore());
        FillMap(map);
        map.SaveXMLMapFile(form->folder.File("CommsProfiles.xml"));
        map.setMapFile({});
    }
    form->LoadMap(form->folder.File("CommsProfiles.xml"));
    auto* list = form->template findChild<QTreeWidget*>(QStringLiteral("lvDevices"));
    list->setCurrentItem(list->topLevelItem(row));
    return form;
}

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

// The dialog on its logger, its error log and a firmware folder of four files: offered, loading, upgraded.
enum class FirmwareState { Offered, Loading, Upgraded };
std::unique_ptr<QWidget> Firmware(FirmwareState state) {
    auto form = std::make_unique<Owning<frmFirmware>>(std::make_shared<RecordingUserInterface>());
    const struct {
        const char* name;
        const char* version;
        const char* date;
        std::size_t size;
    } files[] = {{"wl400-2.4.1.mxfw", "2.4.1", "2026-09-14", 262144},
                 {"wl400-2.3.0.mxfw", "2.3.0", "2026-03-02", 258048},
                 {"wl400-2.1.7.mxfw", "2.1.7", "2025-11-20", 251904}};
    for (const auto& f : files)
        form->folder.Write(std::string("firmware/") + f.name,
                           FirmwareImage::Make({"WL400", "WL410"}, f.version, f.date, std::string(f.size, 'x')).Serialize());
    form->folder.Write("firmware/rg200-5.0.mxfw", FirmwareImage::Make({"RG200"}, "5.0", "", "x").Serialize());
    auto* handler = form->Keep(std::make_shared<ErrorHandler>());
    handler->setErrorLogFile(form->folder.File("MeridexAppLibrary.log"));
    handler->setLogErrors(true);
    form->setLogger(form->Keep(std::make_shared<SceneLogger>()));
    form->setErrHandler(handler);
    form->setFirmwareFilesPath(form->folder.File("firmware"));
    form->Form_Load();
    if (state == FirmwareState::Upgraded) form->cmdUpgrade_Click();
    if (state == FirmwareState::Loading) {  // as the dialog stands between two blocks
        form->lblStep->setText(QString::fromStdString(UpgradeStepText(UpgradeStep::Write, 104448, 262144)));
        form->pbProgress->setValue(UpgradePercent(UpgradeStep::Write, 104448, 262144));
        form->cmdCancel->setText("&Cancel");
        form->cmdUpgrade->setEnabled(false);
        form->cmdBrowse->setEnabled(false);
        form->lvFiles->setEnabled(false);
    }
    form->lblFolder->setText("/srv/field/firmware");  // a stable path in the picture
    return form;
}

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

// The book and the map written into folder.
std::string Book(const test::TempDir& folder) {
    AddressBook book;
    book.LoadAddressBook(folder.File("AddressBook.xml"));
    FillBook(book);
    book.SaveAddressBook();
    return folder.File("AddressBook.xml");
}
std::string Map(const test::TempDir& folder) { return folder.Write("CommsProfiles.xml", kMap); }
std::shared_ptr<test::FakePorts> TwoPorts() { return std::make_shared<test::FakePorts>(std::initializer_list<int>{1, 3}); }

std::unique_ptr<QWidget> AddressBookEditor() {
    auto form = std::make_unique<Owning<frmAddressBook>>(std::make_shared<RecordingUserInterface>());
    form->setCommsSources(TwoPorts(), std::make_shared<IniUserStore>(form->folder.File("config")));
    form->LoadAddressBook(Book(form->folder), Map(form->folder), form->folder.File("schemes"));
    // A catchment's gauge with its parameters, as a person opens it.
    for (QTreeWidgetItemIterator it(form->tvGroups); *it; ++it)
        if ((*it)->text(0) == QStringLiteral("Ettrick at Lindean")) form->tvGroups->setCurrentItem(*it);
    form->lvProfileElements->setCurrentItem(form->lvProfileElements->topLevelItem(5));
    return form;
}

std::unique_ptr<QWidget> NewSite() {
    auto form = std::make_unique<Owning<frmNewSite>>();
    auto* map = form->Keep(std::make_shared<CommsProfileManager>(
        TwoPorts(), std::make_shared<IniUserStore>(form->folder.File("config"))));
    map->LoadXMLMapFile(Map(form->folder));
    form->setCommsDevices(map);
    form->lvDevices->setCurrentItem(form->lvDevices->topLevelItem(1));
    form->txtName->setText(QStringLiteral("Whiteadder at Hutton"));
    return form;
}

std::unique_ptr<QWidget> SelectSite() {
    auto form = std::make_unique<Owning<frmSelectSite>>();
    auto* book = form->Keep(std::make_shared<AddressBook>());
    book->LoadAddressBook(Book(form->folder));
    form->setAddressBook(book);
    return form;
}

}  // namespace

MERIDEX_SCENE("frmProfiles") { return ProfileEditor(true); }

MERIDEX_SCENE("frmProfiles-locked") { return ProfileEditor(false); }

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

MERIDEX_SCENE("frmSelectDevice") { return SelectDevice(); }

// Rows of the scene map: the direct ports 1, 3 (renamed to the unplugged 4) and 6, UDP, TCP/IP,
// GPRS, the modem.
MERIDEX_SCENE("frmCommsMap-direct") { return CommsMap(0); }

MERIDEX_SCENE("frmCommsMap-phonemodem") { return CommsMap(6); }

MERIDEX_SCENE("frmCommsMap-udp") { return CommsMap(3); }

MERIDEX_SCENE("frmCommsMap-tcp") { return CommsMap(4); }

MERIDEX_SCENE("frmCommsMap-gprsproxy") { return CommsMap(5); }

// A mistyped address, marked at its field when OK was pressed.
MERIDEX_SCENE("frmCommsMap-invalid") {
    auto editor = CommsMap(3);
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
    const auto editor = CommsMap(0, prompts);
    QWidget* frame = editor->findChild<QStackedWidget*>(QStringLiteral("stkFrames"))->currentWidget();
    frame->findChild<QCheckBox*>(QStringLiteral("cbDefault"))->click();
    editor->cmdCancel_Click();
    if (prompts->Choices().empty()) throw std::runtime_error("the editor closed without asking");
    const RecordingUserInterface::Choice& asked = prompts->Choices().back();
    return QtUserInterface::ChooseBoxFor(asked.text, asked.choices, asked.icon, asked.caption,
                                         asked.defaultChoice);
}

MERIDEX_SCENE("frmFirmware") { return Firmware(FirmwareState::Offered); }

MERIDEX_SCENE("frmFirmware-loading") { return Firmware(FirmwareState::Loading); }

MERIDEX_SCENE("frmFirmware-upgraded") { return Firmware(FirmwareState::Upgraded); }

MERIDEX_SCENE("frmAddressBook") { return AddressBookEditor(); }

MERIDEX_SCENE("frmNewSite") { return NewSite(); }

MERIDEX_SCENE("frmSelectSite") { return SelectSite(); }

MERIDEX_SCENE("frmImport") {
    auto form = std::make_unique<frmImport>();
    form->lblMessage->setText(QStringLiteral(
        "Processing Scheme: /srv/schemes/Northern Region/Tweed Catchment/Tweed at Boleside.xml"));
    form->picProgress->setProgress(0.62);
    return form;
}
