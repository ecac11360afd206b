// The communications dialogs: the new-device dialog, the device-selection dialog with a device
// chosen, and the map editor once per kind of device, with a field marked wrong, and asking before it
// discards changes.
#include <stdexcept>

#include <QCheckBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QStackedWidget>
#include <QTreeWidget>

#include <meridex/comms/CommsProfileManager.h>
#include <meridex/comms/ProfileXml.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/platform/SerialPortSource.h>
#include <meridex/platform/UserStore.h>
#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/ui/QtUserInterface.h>
#include <meridex/ui/comms/frmCommsMap.h>
#include <meridex/ui/comms/frmNewCommsMapDevice.h>
#include <meridex/ui/comms/frmSelectDevice.h>

#include "Scene.h"
#include "TempDir.h"

using namespace meridex;
using namespace meridex::ui;

namespace {

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
void Fill(CommsProfileManager& map) {
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
        Fill(map_);
        setCommunicationsManager(&map_);
        QTreeWidgetItem* root = tvDevices->topLevelItem(0);
        tvDevices->setCurrentItem(root->child(root->childCount() - 1));
    }

private:
    CommsProfileManager map_;
};

class SceneEditor : public frmCommsMap {
public:
    explicit SceneEditor(int row, std::shared_ptr<RecordingUserInterface> prompts = std::make_shared<RecordingUserInterface>())
        : frmCommsMap(prompts, Ports(), SceneStore()) {
        {
            CommsProfileManager map(Ports(), SceneStore());
            Fill(map);
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

}  // namespace

MERIDEX_SCENE("frmNewCommsMapDevice") {
    auto form = std::make_unique<frmNewCommsMapDevice>(Ports(), SceneStore());
    form->lvCommsType->setCurrentItem(form->lvCommsType->topLevelItem(3));
    return form;
}

MERIDEX_SCENE("frmSelectDevice") { return std::make_unique<SceneSelect>(); }

// Rows of the scene map: the direct ports 1, 3 (renamed to the unplugged 4) and 6, UDP, TCP/IP, GPRS, the modem.
MERIDEX_SCENE("frmCommsMap-direct") { return std::make_unique<SceneEditor>(0); }
MERIDEX_SCENE("frmCommsMap-phonemodem") { return std::make_unique<SceneEditor>(6); }
MERIDEX_SCENE("frmCommsMap-udp") { return std::make_unique<SceneEditor>(3); }
MERIDEX_SCENE("frmCommsMap-tcp") { return std::make_unique<SceneEditor>(4); }
MERIDEX_SCENE("frmCommsMap-gprsproxy") { return std::make_unique<SceneEditor>(5); }

// A mistyped address, marked at its field when OK was pressed.
MERIDEX_SCENE("frmCommsMap-invalid") {
    auto editor = std::make_unique<SceneEditor>(3);
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
    SceneEditor editor(0, prompts);
    QWidget* frame = editor.findChild<QStackedWidget*>(QStringLiteral("stkFrames"))->currentWidget();
    frame->findChild<QCheckBox*>(QStringLiteral("cbDefault"))->click();
    editor.cmdCancel_Click();
    if (prompts->Choices().empty()) throw std::runtime_error("the editor closed without asking");
    const RecordingUserInterface::Choice& asked = prompts->Choices().back();
    return QtUserInterface::ChooseBoxFor(asked.text, asked.choices, asked.icon, asked.caption, asked.defaultChoice);
}
