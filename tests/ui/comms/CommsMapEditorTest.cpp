// The communications map editor driven as a person would: the list and its frames, typed fields
// and their checks, the port list, add, delete, scan ports, and what reaches the file on OK and Cancel.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>

#include <meridex/frame/FileOps.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/ui/comms/frmCommsMap.h>

#include "CommsDialogTest.h"
#include "DialogTest.h"

using namespace meridex;
using namespace meridex::test;
using meridex::ui::frmCommsMap;

namespace {

std::string ReadAll(const std::string& path) {
    std::string text;
    EXPECT_TRUE(FileOps::ReadWholeFile(path, text)) << path;
    return text;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos) text.replace(at, from.size(), to);
    return text;
}

struct CommsMapEditor : ::testing::Test {
    CommsMapEditor() {
        comms.ports->Add(5, false);  // known to the PC, not plugged in
        {
            // Direct COM1 and COM3, UDP, TCP/IP, GPRS proxy, a phone modem, and a child no frame knows.
            auto map = comms.Manager();
            map->AddRS232PhoneModem("3");
            ProfileXml::SetChild(map->ApplicationProfile(Index(3)), "VENDORNOTE", "keep me");
            map->SaveXMLMapFile(path);
        }
        {
            // Once more through a load, so the keys in the file are the ones a load gives.
            auto map = comms.Manager();
            map->LoadXMLMapFile(path);
        }
        original = ReadAll(path);
        form.setCompanionFolder(comms.dir.File("no-companion"));
        EXPECT_TRUE(form.LoadMap(path));
        Show(form);
    }

    void Select(int row) { ClickRow(devices, devices->topLevelItem(row)); }
    QGroupBox* Shown() const { return qobject_cast<QGroupBox*>(Child<QStackedWidget>(&form, "stkFrames")->currentWidget()); }
    template <class T>
    T* Control(const char* name) const { return Child<T>(Shown(), name); }
    XmlNode Profile(int index) const { return form.Map()->ApplicationProfile(Index(index)); }

    CommsFixture comms{1, 3};
    std::string path = comms.dir.File("CommsProfiles.xml");
    std::string original;
    std::shared_ptr<RecordingUserInterface> prompts = std::make_shared<RecordingUserInterface>();
    frmCommsMap form{prompts, comms.ports, comms.store};
    QTreeWidget* devices = Child<QTreeWidget>(&form, "lvDevices");
};

}  // namespace

TEST_F(CommsMapEditor, ListsEveryProfileAndShowsTheFrameOfItsKind) {
    EXPECT_EQ(Texts(devices), QStringList({"Direct to COM1", "Direct to COM3", "Network (UDP)", "Network (TCP/IP)",
                                           "GPRS Proxy (Harvest Modem)", "Phone modem on COM3"}));
    EXPECT_EQ(ImageKeysOf(devices), QStringList({"DIRECT", "DIRECT", "IP", "IP", "IP", "PHONEMODEM"}));
    EXPECT_EQ(Shown()->objectName(), "fraDirect") << "the first profile is shown at once";

    const char* frames[] = {"fraDirect", "fraDirect", "fraUDP", "fraTCP", "fraGPRSProxy", "fraPhoneModem"};
    for (int row = 0; row < 6; ++row) {
        Select(row);
        EXPECT_EQ(Shown()->objectName(), frames[row]);
    }
    Select(3);
    EXPECT_EQ(Control<QLineEdit>("txtAddress")->text(), "127.0.0.1");
    EXPECT_EQ(Control<QLineEdit>("txtTimeout")->text(), "5");
    EXPECT_EQ(Shown()->findChild<QLineEdit*>("txtPromptTimeout"), nullptr) << "TCP/IP has no prompt time-out";
    Select(4);
    EXPECT_EQ(Control<QLineEdit>("txtProxyPort")->text(), "9002");
    EXPECT_EQ(Control<QLineEdit>("txtPassword")->echoMode(), QLineEdit::Password);
    EXPECT_EQ(Control<QComboBox>("cboForcePrompt")->currentText(), "[CR/LF]");
    Select(5);
    EXPECT_EQ(Control<QLineEdit>("txtReset")->text(), "ATZ");
    EXPECT_EQ(Control<QLineEdit>("txtSettings")->text(), "ATE0");
}

TEST_F(CommsMapEditor, OKWritesExactlyTheFieldsChangedAndKeepsUnknownChildren) {
    Select(2);
    auto* other = Child<QTreeWidget>(&form, "lvOtherFields");
    EXPECT_TRUE(Child<QGroupBox>(&form, "fraOtherFields")->isVisible());
    ASSERT_EQ(other->topLevelItemCount(), 1);
    EXPECT_EQ(other->topLevelItem(0)->text(0), "VENDORNOTE");
    EXPECT_EQ(other->topLevelItem(0)->text(1), "keep me");
    EXPECT_FALSE(other->topLevelItem(0)->flags() & Qt::ItemIsEditable);

    auto* name = Control<QLineEdit>("txtName");
    name->selectAll();
    Type(name, "Telemetry gateway");
    EXPECT_EQ(devices->topLevelItem(2)->text(0), "Telemetry gateway") << "the list follows the name";
    auto* port = Control<QLineEdit>("txtPort");
    port->selectAll();
    Type(port, "9100");
    Click(Child<QPushButton>(&form, "cmdOK"));
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(prompts->Messages().empty());

    const std::string expected = Replaced(Replaced(original, "<NAME>Network (UDP)</NAME>", "<NAME>Telemetry gateway</NAME>"),
                                          "<PORT>9000</PORT>", "<PORT>9100</PORT>");
    EXPECT_EQ(ReadAll(path), expected);
}

TEST_F(CommsMapEditor, CancelLeavesTheFileByteForByte) {
    Select(0);
    Type(Control<QLineEdit>("txtName"), " renamed");
    Click(Control<QCheckBox>("cbHide"));
    prompts->QueueMessageResult(MessageResult::OK);
    Click(Child<QPushButton>(&form, "cmdDelete"));
    ASSERT_EQ(devices->topLevelItemCount(), 5);
    Click(Child<QPushButton>(&form, "cmdCancel"));
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(ReadAll(path), original);

    // Closing the editor's window, or the editor ending, saves nothing either.
    frmCommsMap second(prompts, comms.ports, comms.store);
    second.LoadMap(path);
    Show(second);
    auto* shown = qobject_cast<QGroupBox*>(Child<QStackedWidget>(&second, "stkFrames")->currentWidget());
    Type(Child<QLineEdit>(shown, "txtName"), "y");
    ASSERT_EQ(Field(second.Map()->ApplicationProfile(Index(1)), "NAME"), "Direct to COM1y");
    second.close();
    EXPECT_FALSE(second.isVisible());
    EXPECT_EQ(ReadAll(path), original);
}

TEST_F(CommsMapEditor, FieldsAreCheckedWhereTheyAreTyped) {
    Select(2);
    auto* timeout = Control<QLineEdit>("txtTimeout");
    timeout->clear();
    Type(timeout, "1x5s");
    EXPECT_EQ(timeout->text(), "15") << "only digits can be typed in a number";
    EXPECT_EQ(Field(Profile(3), "TIMEOUT"), "15");

    auto* warning = Child<QLabel>(&form, "lblWarning");
    auto* port = Control<QLineEdit>("txtPort");
    port->clear();
    Type(port, "70000");
    EXPECT_TRUE(warning->isVisible());
    EXPECT_EQ(Field(Profile(3), "PORT"), "7000") << "an IP port beyond 65535 is not taken";
    port->clear();
    Type(port, "0");
    EXPECT_FALSE(ProfileXml::HasChild(Profile(3), "PORT")) << "\"0\" removes the element";
    EXPECT_FALSE(warning->isVisible());

    auto* address = Control<QLineEdit>("txtAddress");
    address->clear();
    Type(address, "logger..example");
    EXPECT_TRUE(warning->isVisible());
    for (const char* wrong : {"300.1.1.1", "10.0.0", "1:2:3:4:5:6:7:8:9", "fe80::1::2", "-gateway"}) {
        address->clear();
        Type(address, wrong);
        EXPECT_TRUE(warning->isVisible()) << wrong;
        EXPECT_NE(Field(Profile(3), "ADDRESS"), wrong);
    }
    // OK refuses while a field's text is refused: the profile holds only its last valid text.
    Click(Child<QPushButton>(&form, "cmdOK"));
    EXPECT_TRUE(form.isVisible());
    ASSERT_EQ(prompts->Messages().size(), 1U);
    EXPECT_NE(prompts->Messages()[0].text.find("IPv4 or IPv6"), std::string::npos);
    EXPECT_EQ(ReadAll(path), original);
    for (const char* right : {"192.168.40.254", "::ffff:10.1.2.3", "fe80::1%eth0", "2001:db8:0:0:0:0:0:1", "fe80::1"}) {
        address->clear();
        Type(address, right);
        EXPECT_FALSE(warning->isVisible()) << right;
        EXPECT_EQ(Field(Profile(3), "ADDRESS"), right);
    }
    address->clear();
    Type(address, "gw-7.example.net");
    EXPECT_EQ(Field(Profile(3), "ADDRESS"), "gw-7.example.net");
    EXPECT_FALSE(warning->isVisible());
    address->selectAll();
    QTest::keyClick(address, Qt::Key_Delete);
    EXPECT_FALSE(ProfileXml::HasChild(Profile(3), "ADDRESS")) << "an empty field removes the element";

    Select(0);
    auto* hide = Control<QCheckBox>("cbHide");
    Click(hide);
    EXPECT_EQ(Field(Profile(1), "HIDE"), "-1");
    Click(hide);
    EXPECT_FALSE(ProfileXml::HasChild(Profile(1), "HIDE"));
}

TEST_F(CommsMapEditor, ThePortListOffersThePresentPortsAndWarnsOfAnAbsentOne) {
    Select(1);
    auto* port = Control<QComboBox>("cboCommPort");
    QStringList offered;
    for (int i = 0; i < port->count(); ++i) offered << port->itemText(i);
    EXPECT_EQ(offered, QStringList({"COM1 - Fake port 1", "COM3 - Fake port 3"}));
    EXPECT_EQ(port->currentText(), "COM3 - Fake port 3");
    auto* absent = Control<QLabel>("lblPortWarning");
    EXPECT_FALSE(absent->isVisible());

    port->lineEdit()->selectAll();
    Type(port->lineEdit(), "COM5");
    EXPECT_TRUE(absent->isVisible());
    EXPECT_TRUE(absent->text().contains("COM5 is not present")) << absent->text().toStdString();
    EXPECT_EQ(Field(Profile(2), "COMMPORT"), "5") << "an absent port is still taken";

    port->setFocus();
    QTest::keyClick(port, Qt::Key_Up);  // the port above COM3 in the list
    EXPECT_EQ(port->currentText(), "COM1 - Fake port 1");
    EXPECT_EQ(Field(Profile(2), "COMMPORT"), "1");
    EXPECT_FALSE(absent->isVisible());
}

TEST_F(CommsMapEditor, AddAppendsTheNewKindWithAFreshKeyAndDeleteAsksFirst) {
    ModalScript()
        .Then([](QWidget* modal) {
            EXPECT_EQ(modal->objectName(), "frmNewCommsMapDevice");
            auto* kinds = Child<QTreeWidget>(modal, "lvCommsType");
            ClickRow(kinds, RowKeyed(kinds, "TCP"));
            Click(Child<QPushButton>(modal, "cmdOK"));
        })
        .Run([&] { Click(Child<QPushButton>(&form, "cmdAdd")); });
    ASSERT_EQ(devices->topLevelItemCount(), 7);
    EXPECT_EQ(devices->currentItem(), devices->topLevelItem(6));
    EXPECT_EQ(ui::ItemKey(devices->currentItem()), "PROFILE0") << "the smallest free key";
    EXPECT_EQ(Shown()->objectName(), "fraTCP");

    ModalScript()
        .Then([](QWidget* modal) { Click(Child<QPushButton>(modal, "cmdCancel")); })
        .Run([&] { Click(Child<QPushButton>(&form, "cmdAdd")); });
    EXPECT_EQ(devices->topLevelItemCount(), 7) << "a cancelled choice adds nothing";

    Select(1);
    prompts->QueueMessageResult(MessageResult::Cancel);
    Click(Child<QPushButton>(&form, "cmdDelete"));
    EXPECT_EQ(devices->topLevelItemCount(), 7);
    ASSERT_EQ(prompts->Messages().size(), 1U);
    EXPECT_EQ(prompts->Messages()[0].text, "Delete device: Direct to COM3");
    EXPECT_EQ(prompts->Messages()[0].defaultButton, MessageDefaultButton::Second);
    prompts->QueueMessageResult(MessageResult::OK);
    Click(Child<QPushButton>(&form, "cmdDelete"));
    EXPECT_EQ(Texts(devices).size(), 6);
    EXPECT_FALSE(Texts(devices).contains("Direct to COM3"));

    Click(Child<QPushButton>(&form, "cmdOK"));
    auto saved = comms.Manager();
    ASSERT_TRUE(saved->LoadXMLMapFile(path));
    EXPECT_EQ(Fields(saved->ApplicationProfiles(), "NAME"),
              (std::vector<std::string>{"Direct to COM1", "Network (UDP)", "Network (TCP/IP)", "GPRS Proxy (Harvest Modem)",
                                        "Phone modem on COM3", "Network (TCP/IP)"}));
}

TEST_F(CommsMapEditor, ScanPortsBringsTheDirectProfilesInStepAndSaysWhatChanged) {
    comms.ports->present = {1, 7};
    comms.ports->Add(7);
    Click(Child<QPushButton>(&form, "cmdScanPorts"));
    ASSERT_EQ(prompts->Messages().size(), 1U);
    const std::string& said = prompts->Messages()[0].text;
    EXPECT_NE(said.find("Removed: Direct to COM3"), std::string::npos) << said;
    EXPECT_NE(said.find("Added: Direct to COM7"), std::string::npos) << said;
    EXPECT_EQ(said.find("COM1"), std::string::npos) << "an unchanged profile is not mentioned";
    EXPECT_TRUE(Texts(devices).contains("Direct to COM7"));
    EXPECT_FALSE(Texts(devices).contains("Direct to COM3"));
    EXPECT_TRUE(Texts(devices).contains("Phone modem on COM3")) << "only direct profiles follow the ports";

    Click(Child<QPushButton>(&form, "cmdScanPorts"));
    EXPECT_NE(prompts->Messages()[1].text.find("nothing changed"), std::string::npos);
}

TEST_F(CommsMapEditor, ASaveThatFailsSaysSoAndKeepsTheEditorOpen) {
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    Type(Control<QLineEdit>("txtName"), "!");
    Click(Child<QPushButton>(&form, "cmdOK"));
    EXPECT_TRUE(form.isVisible());
    ASSERT_EQ(prompts->Messages().size(), 1U);
    EXPECT_EQ(prompts->Messages()[0].icon, MessageIcon::Exclamation);
    EXPECT_NE(prompts->Messages()[0].text.find("could not be saved"), std::string::npos) << prompts->Messages()[0].text;
    EXPECT_EQ(ReadAll(path), original);
    EXPECT_EQ(Field(Profile(1), "NAME"), "Direct to COM1!");

    ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    Click(Child<QPushButton>(&form, "cmdOK"));
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(ReadAll(path), Replaced(original, "<NAME>Direct to COM1</NAME>", "<NAME>Direct to COM1!</NAME>"));
}
