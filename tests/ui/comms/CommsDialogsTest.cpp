// The communications dialogs driven as a person would. The map editor: the list and its frames, typed
// fields and their checks, the port list, add, delete, scan ports, and what reaches the file on OK,
// Cancel, Escape and the close box. The new-device and device-selection dialogs: their lists, what
// each answers, each way of closing them, and the facade's round trips.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <functional>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QTest>
#include <QTreeWidget>

#include <meridex/frame/FileOps.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/ui/comms/frmCommsMap.h>
#include <meridex/ui/comms/frmNewCommsMapDevice.h>
#include <meridex/ui/comms/frmSelectDevice.h>
#include <meridex/ui/frame/ImageKeys.h>
#include <meridex/ui/settings/V4Dialogs.h>

#include "CommsTestSupport.h"
#include "DialogTest.h"

using namespace meridex;
using namespace meridex::test;
using meridex::ui::frmCommsMap;
using meridex::ui::frmNewCommsMapDevice;
using meridex::ui::frmSelectDevice;

namespace {

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
        original = TempDir::Read(path);
        form.setCompanionFolder(comms.dir.File("no-companion"));
        EXPECT_TRUE(form.LoadMap(path));
        EXPECT_TRUE(ShowActive(&form));
    }
    // An editor of its own on the map file, shown.
    std::unique_ptr<frmCommsMap> Another() {
        auto editor = std::make_unique<frmCommsMap>(prompts, comms.ports, comms.store);
        editor->LoadMap(path);
        EXPECT_TRUE(ShowActive(editor.get()));
        return editor;
    }

    void Select(int row) { ClickRow(devices, devices->topLevelItem(row)); }
    QGroupBox* Shown() const { return qobject_cast<QGroupBox*>(Child<QStackedWidget>(&form, "stkFrames")->currentWidget()); }
    template <class T>
    T* Control(const char* name) const { return Child<T>(Shown(), name); }
    XmlNode Profile(int index) const { return form.Map()->ApplicationProfile(Index(index)); }
    // Types text over a field's text, then leaves the field with Tab, as a person does.
    static void Enter(QLineEdit* field, const QString& text) {
        field->setFocus();
        field->selectAll();
        if (text.isEmpty()) QTest::keyClick(field, Qt::Key_Delete);
        Type(field, text);
        QTest::keyClick(field, Qt::Key_Tab);
    }

    CommsFixture comms{1, 3};
    std::string path = comms.dir.File("CommsProfiles.xml");
    std::string original;
    std::shared_ptr<RecordingUserInterface> prompts = std::make_shared<RecordingUserInterface>();
    frmCommsMap form{prompts, comms.ports, comms.store};
    QTreeWidget* devices = Child<QTreeWidget>(&form, "lvDevices");
};


struct NewDevice : ::testing::Test {
    CommsFixture comms{1, 2};
    frmNewCommsMapDevice form{comms.ports, comms.store};
    QTreeWidget* list = Child<QTreeWidget>(&form, "lvCommsType");

    void Choose(const QString& key) { ClickRow(list, Keyed(list, key)); }
};

struct SelectDevice : ::testing::Test {
    SelectDevice() {
        // The default map over COM1: a direct profile, then UDP, TCP/IP and GPRS proxy; and three odd ones.
        for (auto [type, method] : {std::pair{"IP", "CARRIER-PIGEON"}, {"RS232", "PARALLEL"}, {"USB", "DIRECT"}}) {
            const XmlNode odd = map->AddUDPConnection();
            ProfileXml::SetChild(odd, "TYPE", type);
            ProfileXml::SetChild(odd, "METHOD", method);
        }
        form.setCommunicationsManager(map.get());
    }
    QTreeWidgetItem* Root() const { return tree->topLevelItem(0); }
    QTreeWidgetItem* Device(int index) const { return Root()->child(index); }

    CommsFixture comms{1};
    std::unique_ptr<CommsProfileManager> map = comms.Manager();
    frmSelectDevice form;
    QTreeWidget* tree = Child<QTreeWidget>(&form, "tvDevices");
    QWidget* info = Child<QWidget>(&form, "picInfo");
};

}  // namespace

TEST_F(CommsMapEditor, ListsEveryProfileAndShowsTheFrameOfItsKind) {
    EXPECT_EQ(Texts(devices), QStringList({"Direct to COM1", "Direct to COM3", "Network (UDP)", "Network (TCP/IP)",
                                           "GPRS Proxy (Harvest Modem)", "Phone modem on COM3"}));
    EXPECT_EQ(ImageKeysOf(devices), QStringList({"DIRECT", "DIRECT", "IP", "IP", "IP", "PHONEMODEM"}));
    EXPECT_EQ(Shown()->objectName(), "fraDirect") << "the first profile is shown at once";

    // Each row's frame and one field of it, filled from the profile.
    const struct {
        const char* frame;
        const char* field;
        const char* text;
    } rows[] = {{"fraDirect", "txtName", "Direct to COM1"}, {"fraDirect", "txtName", "Direct to COM3"},
                {"fraUDP", "txtPort", "9000"},                 {"fraTCP", "txtAddress", "127.0.0.1"},
                {"fraGPRSProxy", "txtProxyPort", "9002"},      {"fraPhoneModem", "txtReset", "ATZ"}};
    for (int row = 0; row < 6; ++row) {
        Select(row);
        EXPECT_EQ(Shown()->objectName(), rows[row].frame);
        EXPECT_EQ(Control<QLineEdit>(rows[row].field)->text(), rows[row].text) << row;
    }
    Select(3);
    EXPECT_EQ(Shown()->findChild<QLineEdit*>("txtPromptTimeout"), nullptr) << "TCP/IP has no prompt time-out";
    Select(4);
    EXPECT_EQ(Control<QLineEdit>("txtPassword")->echoMode(), QLineEdit::Password);
    EXPECT_EQ(Control<QComboBox>("cboForcePrompt")->currentText(), "[CR/LF]");
}

TEST_F(CommsMapEditor, OKWritesExactlyTheFieldsChangedAndKeepsUnknownChildren) {
    Select(2);
    // A child no frame knows is shown, not editable, and written back as it was.
    auto* other = Child<QTreeWidget>(&form, "lvOtherFields");
    EXPECT_TRUE(Child<QGroupBox>(&form, "fraOtherFields")->isVisible());
    ASSERT_EQ(Texts(other), QStringList{"VENDORNOTE"});
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
    EXPECT_EQ(TempDir::Read(path), expected);
}

TEST_F(CommsMapEditor, CancelEscapeAndTheCloseBoxAskBeforeChangesAreDiscarded) {
    const std::function<void(frmCommsMap&)> ways[] = {
        [](frmCommsMap& editor) { Click(Child<QPushButton>(&editor, "cmdCancel")); },
        [](frmCommsMap& editor) { QTest::keyClick(&editor, Qt::Key_Escape); },
        [](frmCommsMap& editor) { editor.close(); },
    };
    for (const auto& leave : ways) {
        const auto another = Another();
        frmCommsMap& editor = *another;
        leave(editor);
        EXPECT_FALSE(editor.isVisible()) << "without changes it closes at once";
        EXPECT_TRUE(prompts->Choices().empty());

        ASSERT_TRUE(ShowActive(&editor));
        Type(Child<QStackedWidget>(&editor, "stkFrames")->currentWidget()->findChild<QLineEdit*>("txtName"), "y");
        prompts->QueueChoice(0);
        leave(editor);
        EXPECT_TRUE(editor.isVisible()) << "Keep Editing keeps editing";
        prompts->QueueChoice(std::nullopt);
        leave(editor);
        EXPECT_TRUE(editor.isVisible()) << "closing the question without a choice keeps editing";
        ASSERT_EQ(prompts->Choices().size(), 2U);
        EXPECT_NE(prompts->Choices()[0].text.find("Discard your changes?"), std::string::npos);
        EXPECT_EQ(prompts->Choices()[0].choices, (std::vector<std::string>{"&Keep Editing", "&Discard Changes"}));
        EXPECT_EQ(prompts->Choices()[0].defaultChoice, 0);
        EXPECT_EQ(Field(editor.Map()->ApplicationProfile(Index(1)), "NAME"), "Direct to COM1y");

        prompts->QueueChoice(1);
        leave(editor);
        EXPECT_FALSE(editor.isVisible());
        EXPECT_EQ(TempDir::Read(path), original);
        prompts->Clear();
    }
    // A field typed wrong is a change too, though nothing of it is in the map.
    Select(2);
    Enter(Control<QLineEdit>("txtPort"), "70000");
    prompts->QueueChoice(0);
    QTest::keyClick(&form, Qt::Key_Escape);
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(prompts->Choices().size(), 1U);
}

TEST_F(CommsMapEditor, AFieldIsCheckedWholeWhenLeftAndAWrongOneIsNamedAndNeverStored) {
    Select(2);
    auto* address = Control<QLineEdit>("txtAddress");
    auto* message = Control<QLabel>("lblAddressError");
    address->setFocus();
    address->selectAll();
    Type(address, "10.0.0.256");
    EXPECT_EQ(Field(Profile(3), "ADDRESS"), "127.0.0.1") << "nothing is stored while it is typed";
    EXPECT_FALSE(message->isVisible()) << "nor marked";
    QTest::keyClick(address, Qt::Key_Tab);
    EXPECT_TRUE(message->isVisible()) << "marked at the field once it is left";
    EXPECT_TRUE(message->text().contains("IPv4 or IPv6"));
    EXPECT_EQ(address->accessibleDescription(), "Enter an IPv4 or IPv6 address or a host name.");
    EXPECT_EQ(Field(Profile(3), "ADDRESS"), "127.0.0.1");

    Enter(Control<QLineEdit>("txtTimeout"), "15");
    EXPECT_EQ(Field(Profile(3), "TIMEOUT"), "15");
    EXPECT_TRUE(message->isVisible()) << "a right field elsewhere leaves the mark where it is";

    // OK, Enter and another device are each refused with the field named, and the focus goes there.
    const std::function<void()> attempts[] = {
        [&] { Click(Child<QPushButton>(&form, "cmdOK")); },
        [&] { QTest::keyClick(Control<QLineEdit>("txtTimeout"), Qt::Key_Return); },
        [&] { Select(0); },
    };
    for (const auto& attempt : attempts) {
        Control<QLineEdit>("txtTimeout")->setFocus();
        attempt();
        EXPECT_TRUE(form.isVisible());
        EXPECT_EQ(Shown()->objectName(), "fraUDP");
        ASSERT_FALSE(prompts->Messages().empty());
        EXPECT_NE(prompts->Messages().back().text.find("\"Address\""), std::string::npos) << prompts->Messages().back().text;
        EXPECT_EQ(QApplication::focusWidget(), address);
    }
    EXPECT_EQ(TempDir::Read(path), original);

    Type(address, "fe80::1");
    EXPECT_FALSE(message->isVisible()) << "the mark goes once the text is right";
    QTest::keyClick(address, Qt::Key_Tab);
    EXPECT_EQ(Field(Profile(3), "ADDRESS"), "fe80::1");

    struct Case {
        const char* control;
        const char* text;
        const char* stored;  // null: refused, the element keeps its text
    };
    const Case cases[] = {
        {"txtAddress", "logger..example", nullptr}, {"txtAddress", "300.1.1.1", nullptr},
        {"txtAddress", "10.0.0", nullptr},          {"txtAddress", "1:2:3:4:5:6:7:8:9", nullptr},
        {"txtAddress", "fe80::1::2", nullptr},      {"txtAddress", "-gateway", nullptr},
        {"txtAddress", "192.168.40.254", "192.168.40.254"}, {"txtAddress", "::ffff:10.1.2.3", "::ffff:10.1.2.3"},
        {"txtAddress", "fe80::1%eth0", "fe80::1%eth0"},     {"txtAddress", "gw-7.example.net", "gw-7.example.net"},
        {"txtAddress", "", ""},                             // empty leaves the element out
        {"txtPort", "70000", nullptr},              {"txtPort", "0", nullptr},
        {"txtPort", "65535", "65535"},              {"txtTimeout", "0", nullptr},
        {"txtTimeout", "1x5s", "15"},               // only digits can be typed
    };
    for (const Case& c : cases) {
        auto* field = Control<QLineEdit>(c.control);
        const std::string element = QString::fromLatin1(c.control).mid(3).toUpper().toStdString();
        const std::string before = Field(Profile(3), element);
        Enter(field, c.text);
        EXPECT_EQ(Control<QLabel>((QStringLiteral("lbl") + QString::fromLatin1(c.control).mid(3) + "Error").toLatin1())->isVisible(),
                  c.stored == nullptr)
            << c.control << " " << c.text;
        EXPECT_EQ(Field(Profile(3), element), c.stored ? c.stored : before) << c.control << " " << c.text;
        if (!c.stored) Enter(field, QString::fromStdString(before));
    }
    EXPECT_FALSE(ProfileXml::HasChild(Profile(3), "ADDRESS"));

    Select(0);
    auto* hide = Control<QCheckBox>("cbHide");
    Click(hide);
    EXPECT_EQ(Field(Profile(1), "HIDE"), "-1");
    Click(hide);
    EXPECT_FALSE(ProfileXml::HasChild(Profile(1), "HIDE"));
}

TEST_F(CommsMapEditor, WhatIsTypedIsStoredZeroIncludedAndEveryFieldHasAControl) {
    struct Case {
        int row;
        const char* control;
        const char* element;
    };
    // "0" is a telephone switch setting, an outside-line prefix, a number, a name: never "no element".
    const Case cases[] = {
        {0, "txtTelSwitch", "TELSWITCH"},   {5, "txtTelSwitch", "TELSWITCH"},   {5, "txtOutsideLine", "OUTSIDELINE"},
        {5, "txtPhoneNumber", "PHONENUMBER"}, {5, "txtReset", "RESET"},       {5, "txtSettings", "SETTINGS"},
        {4, "txtUserName", "USERNAME"},     {4, "txtPassword", "PASSWORD"},     {4, "txtName", "NAME"},
    };
    for (const Case& c : cases) {
        Select(c.row);
        Enter(Control<QLineEdit>(c.control), "0");
        EXPECT_EQ(Field(Profile(c.row + 1), c.element), "0") << c.control;
    }
    // One default device: ticking it on another profile clears the first one's mark.
    Select(1);
    Click(Control<QCheckBox>("cbDefault"));
    EXPECT_EQ(Field(Profile(2), "DEFAULT"), "-1");
    Select(3);
    Click(Control<QCheckBox>("cbDefault"));
    EXPECT_EQ(Field(Profile(4), "DEFAULT"), "-1");
    EXPECT_EQ(Field(Profile(2), "DEFAULT"), "0");
    EXPECT_EQ(form.Map()->GetDefaultProfile(form.Map()->ApplicationProfiles()), Profile(4));
    Click(Control<QCheckBox>("cbDefault"));
    EXPECT_EQ(Field(Profile(4), "DEFAULT"), "0");

    Click(Child<QPushButton>(&form, "cmdOK"));
    auto saved = comms.Manager();
    ASSERT_TRUE(saved->LoadXMLMapFile(path));
    EXPECT_EQ(Field(saved->ApplicationProfile(Index(6)), "OUTSIDELINE"), "0");
    EXPECT_EQ(Field(saved->ApplicationProfile(Index(1)), "TELSWITCH"), "0");
}

TEST_F(CommsMapEditor, AValueReadFromTheFileStaysAsItIsUntilItIsTypedAndAnUnreadableFileIsSaidSo) {
    const std::string odd = Replaced(Replaced(original, "<PORT>9000</PORT>", "<PORT>0</PORT>"), "<TIMEOUT>10</TIMEOUT>",
                                     "<TIMEOUT> 10 </TIMEOUT>");
    ASSERT_TRUE(FileOps::WriteFileAtomic(path, odd));
    const auto editor = Another();
    auto* list = Child<QTreeWidget>(editor.get(), "lvDevices");
    ClickRow(list, list->topLevelItem(2));
    Click(Child<QPushButton>(editor.get(), "cmdCancel"));
    EXPECT_FALSE(editor->isVisible()) << "nothing was typed: nothing to discard";
    ASSERT_TRUE(ShowActive(editor.get()));
    Click(Child<QPushButton>(editor.get(), "cmdOK"));
    EXPECT_FALSE(editor->isVisible());
    EXPECT_TRUE(prompts->Messages().empty());
    EXPECT_EQ(TempDir::Read(path), odd);

    // A map file that cannot be read is said so when the editor opens.
    ASSERT_TRUE(FileOps::WriteFileAtomic(path, "<COMMSPROFILES><PROFILE>"));
    frmCommsMap broken(prompts, comms.ports, comms.store);
    EXPECT_FALSE(broken.LoadMap(path));
    ASSERT_EQ(prompts->Messages().size(), 1U);
    EXPECT_NE(prompts->Messages()[0].text.find("could not be read"), std::string::npos) << prompts->Messages()[0].text;
    EXPECT_EQ(prompts->Messages()[0].icon, MessageIcon::Exclamation);

    frmCommsMap fresh(prompts, comms.ports, comms.store);
    fresh.LoadMap(comms.dir.File("none-yet.xml"));
    EXPECT_EQ(prompts->Messages().size(), 1U) << "a map not made yet is no failure";
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

    Enter(port->lineEdit(), "COM5");
    EXPECT_TRUE(absent->isVisible());
    EXPECT_TRUE(absent->text().contains("COM5 is not present")) << absent->text().toStdString();
    EXPECT_EQ(Field(Profile(2), "COMMPORT"), "5") << "an absent port is still taken";
    for (const char* wrong : {"COMX", "COM0"}) {
        Enter(port->lineEdit(), wrong);
        EXPECT_TRUE(Control<QLabel>("lblCommPortError")->isVisible()) << wrong;
        EXPECT_EQ(Field(Profile(2), "COMMPORT"), "5") << wrong;
    }
    Enter(port->lineEdit(), "COM5");

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
            ClickRow(kinds, Keyed(kinds, "TCP"));
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
    // An unchanged profile is not mentioned, and only direct profiles follow the ports.
    ASSERT_EQ(prompts->Messages().size(), 1U);
    EXPECT_EQ(prompts->Messages()[0].text, "The map was brought in step with the ports of this PC:\n"
                                           "Removed: Direct to COM3 (its port has gone)\nAdded: Direct to COM7");
    EXPECT_EQ(Texts(devices), QStringList({"Direct to COM1", "Network (UDP)", "Network (TCP/IP)",
                                           "GPRS Proxy (Harvest Modem)", "Phone modem on COM3", "Direct to COM7"}));

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
    EXPECT_EQ(TempDir::Read(path), original);
    EXPECT_EQ(Field(Profile(1), "NAME"), "Direct to COM1!");

    ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    Click(Child<QPushButton>(&form, "cmdOK"));
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(TempDir::Read(path), Replaced(original, "<NAME>Direct to COM1</NAME>", "<NAME>Direct to COM1!</NAME>"));
}

TEST_F(NewDevice, OffersTheFiveKindsInOrderWithNothingChosen) {
    EXPECT_EQ(Nodes(list), QStringList({"Direct (RS232) DIRECT DIRECT", "Phone modem (RS232) PHONEMODEM PHONEMODEM",
                                        "Network (UDP) UDP IP", "Network (TCP/IP) TCP IP",
                                        "GPRS Proxy (Harvest Modem) GPRSPROXY IP"}));

    ASSERT_TRUE(ShowActive(&form));
    Click(Child<QPushButton>(&form, "cmdOK"));
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(form.NewDevice().IsNull()) << "OK with nothing chosen gives none";
}

TEST_F(NewDevice, OKBuildsTheChosenKindInAMapOfItsOwn) {
    ASSERT_TRUE(ShowActive(&form));
    Choose("GPRSPROXY");
    Click(Child<QPushButton>(&form, "cmdOK"));
    EXPECT_EQ(Field(form.NewDevice(), "NAME"), "GPRS Proxy (Harvest Modem)");
    // Each kind builds its own profile (its fields are the manager's); serial kinds start on port 1,
    // whatever ports the PC has.
    for (auto [kind, name] : {std::pair{"DIRECT", "Direct to COM1"}, {"PHONEMODEM", "Phone modem on COM1"},
                              {"UDP", "Network (UDP)"}, {"TCP", "Network (TCP/IP)"}}) {
        Choose(kind);
        EXPECT_EQ(Field(form.NewDevice(), "NAME"), name);
    }
    // Each reading makes a new profile in a scratch map, never the same element twice.
    EXPECT_FALSE(form.NewDevice() == form.NewDevice());
}

TEST_F(NewDevice, CancelEscapeAndTheCloseBoxClearTheChoiceAndADoubleClickActsAsOK) {
    const std::function<void()> ways[] = {
        [&] { Click(Child<QPushButton>(&form, "cmdCancel")); },
        [&] { QTest::keyClick(list, Qt::Key_Escape); },
        [&] { form.close(); },
    };
    for (const auto& leave : ways) {
        ASSERT_TRUE(ShowActive(&form));
        Choose("TCP");
        ASSERT_FALSE(form.NewDevice().IsNull());
        leave();
        EXPECT_FALSE(form.isVisible());
        EXPECT_TRUE(form.NewDevice().IsNull());
    }
    ASSERT_TRUE(ShowActive(&form));
    DoubleClickRow(list, Keyed(list, "UDP"));
    EXPECT_FALSE(form.isVisible());
    EXPECT_FALSE(form.Cancelled());
    EXPECT_EQ(Field(form.NewDevice(), "METHOD"), "UDP");
}

TEST_F(NewDevice, TheFacadeAnswersTheNewDeviceOrNone) {
    ui::V4Dialogs dialogs(std::make_shared<RecordingUserInterface>());
    dialogs.setCommsSources(comms.ports, comms.store);
    for (const char* button : {"cmdOK", "cmdCancel"}) {
        XmlNode device;
        ModalScript()
            .Then([button](QWidget* modal) {
                EXPECT_EQ(modal->objectName(), "frmNewCommsMapDevice");
                auto* kinds = Child<QTreeWidget>(modal, "lvCommsType");
                ClickRow(kinds, Keyed(kinds, "GPRSPROXY"));
                Click(Child<QPushButton>(modal, button));
            })
            .Run([&] { device = dialogs.SelectNewCommsDevice(); });
        const std::string expected = button == std::string("cmdOK") ? "9002" : "none";
        EXPECT_EQ(device.IsNull() ? "none" : Field(device, "PROXYPORT"), expected);
    }
}

TEST_F(SelectDevice, ShowsTheMapUnderItsRootWithNothingChosen) {
    // Any IP method shows the network icon here, unlike the new-site list.
    EXPECT_EQ(Nodes(tree), QStringList({"Device Map ROOT MAP", "  Direct to COM1 PROFILE0 DIRECT",
                                        "  Network (UDP) PROFILE1 IP", "  Network (TCP/IP) PROFILE2 IP",
                                        "  GPRS Proxy (Harvest Modem) PROFILE3 IP", "  Network (UDP) PROFILE4 IP",
                                        "  Network (UDP) PROFILE5 UNKNOWN", "  Network (UDP) PROFILE6 UNKNOWN"}));
    EXPECT_TRUE(Root()->isExpanded());
    EXPECT_TRUE(form.SelectedDevice().IsNull());
    EXPECT_FALSE(info->isVisibleTo(&form));
}

TEST_F(SelectDevice, AClickChoosesTheMapsOwnElementAndShowsItAndEnterClosesOnlyOnADevice) {
    ASSERT_TRUE(ShowActive(&form));
    ClickRow(tree, Device(2));
    EXPECT_TRUE(form.SelectedDevice() == map->ApplicationProfile(Index(3)));
    EXPECT_TRUE(info->isVisible());
    EXPECT_EQ(Child<QLabel>(info, "lblName")->text(), "Network (TCP/IP)");
    EXPECT_EQ(ui::ImageKey(Child<QLabel>(info, "imgProfile")), "IP");
    EXPECT_EQ(Child<QLabel>(info, "lblSummary")->text(),
              "NAME = Network (TCP/IP)\r\nTYPE = IP\r\nMETHOD = TCP\r\nFORCEPROMPT = K\r\nICON = IP\r\n"
              "ADDRESS = 127.0.0.1\r\nPORT = 9000\r\nTIMEOUT = 5\r\nSENDBLOCKSIZE = 256\r\nKEY = PROFILE2");

    ClickRow(tree, Root());
    EXPECT_TRUE(form.SelectedDevice().IsNull());
    EXPECT_FALSE(info->isVisible());
    QTest::keyClick(tree, Qt::Key_Return);
    EXPECT_TRUE(form.isVisible()) << "the root is no device";
    ClickRow(tree, Device(0));
    QTest::keyClick(tree, Qt::Key_Return);
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(form.SelectedDevice() == map->ApplicationProfile(Index(1)));
}

TEST_F(SelectDevice, EscapeAndTheCloseBoxCloseWithNone) {
    for (const bool escape : {true, false}) {
        ASSERT_TRUE(ShowActive(&form));
        ClickRow(tree, Device(escape ? 0 : 1));
        ASSERT_FALSE(form.SelectedDevice().IsNull());
        escape ? QTest::keyClick(tree, Qt::Key_Escape) : void(form.close());
        EXPECT_FALSE(form.isVisible());
        EXPECT_TRUE(form.SelectedDevice().IsNull());
    }
}

TEST_F(SelectDevice, AnEmptyMapShowsOnlyTheRootAndEscapeGivesNone) {
    while (map->ApplicationProfileCount() > 0) map->RemoveApplicationProfile(map->ApplicationProfile(Index(1)));
    form.setCommunicationsManager(map.get());
    ASSERT_EQ(Nodes(tree), QStringList{"Device Map ROOT MAP"});
    ASSERT_TRUE(ShowActive(&form));
    QTest::keyClick(tree, Qt::Key_Enter);
    EXPECT_TRUE(form.isVisible());
    QTest::keyClick(tree, Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(form.SelectedDevice().IsNull());
}

TEST_F(SelectDevice, TheFacadeAnswersTheProfileDoubleClickedButADoubleClickOnEmptySpaceDoesNothing) {
    const ui::V4Dialogs dialogs(std::make_shared<RecordingUserInterface>());
    XmlNode chosen;
    ModalScript()
        .Then([](QWidget* modal) {
            EXPECT_EQ(modal->objectName(), "frmSelectDevice");
            auto* devices = Child<QTreeWidget>(modal, "tvDevices");
            QTreeWidgetItem* root = devices->topLevelItem(0);
            ClickRow(devices, root->child(3));
            // Below the last node there is no node to double-click.
            const QPoint below(10, devices->visualItemRect(root->child(root->childCount() - 1)).bottom() + 40);
            ASSERT_EQ(devices->itemAt(below), nullptr);
            QTest::mouseDClick(devices->viewport(), Qt::LeftButton, {}, below);
            EXPECT_TRUE(modal->isVisible());
            DoubleClickRow(devices, root->child(4));
        })
        .Run([&] { chosen = dialogs.SelectCommsDevice(*map); });
    EXPECT_TRUE(chosen == map->ApplicationProfile(Index(5)));
}
