// The new-device and device-selection dialogs driven as a person would: their lists, what each
// answers, each way of closing them, and the facade's round trip.
#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>

#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/ui/comms/frmNewCommsMapDevice.h>
#include <meridex/ui/comms/frmSelectDevice.h>
#include <meridex/ui/settings/V4Dialogs.h>

#include "CommsDialogTest.h"

using namespace meridex;
using namespace meridex::test;
using meridex::ui::frmNewCommsMapDevice;
using meridex::ui::frmSelectDevice;

namespace {

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

TEST_F(NewDevice, OffersTheFiveKindsInOrderWithNothingChosen) {
    EXPECT_EQ(ItemKeys(list), QStringList({"DIRECT", "PHONEMODEM", "UDP", "TCP", "GPRSPROXY"}));
    EXPECT_EQ(Texts(list), QStringList({"Direct (RS232)", "Phone modem (RS232)", "Network (UDP)", "Network (TCP/IP)",
                                        "GPRS Proxy (Harvest Modem)"}));
    EXPECT_EQ(ImageKeysOf(list), QStringList({"DIRECT", "PHONEMODEM", "IP", "IP", "IP"}));

    ASSERT_TRUE(ShowActive(&form));
    Click(Child<QPushButton>(&form, "cmdOK"));
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(form.NewDevice().IsNull()) << "OK with nothing chosen gives none";
}

TEST_F(NewDevice, OKBuildsTheChosenKindWithItsDefaultsInAMapOfItsOwn) {
    ASSERT_TRUE(ShowActive(&form));
    Choose("GPRSPROXY");
    Click(Child<QPushButton>(&form, "cmdOK"));
    const XmlNode gprs = form.NewDevice();
    EXPECT_EQ(Field(gprs, "NAME"), "GPRS Proxy (Harvest Modem)");
    EXPECT_EQ(Field(gprs, "PROXYPORT"), "9002");
    EXPECT_FALSE(ProfileXml::HasChild(gprs, "PORT"));

    // Serial kinds start on port 1, whatever ports the PC has.
    Choose("DIRECT");
    EXPECT_EQ(Field(form.NewDevice(), "NAME"), "Direct to COM1");
    EXPECT_EQ(Field(form.NewDevice(), "COMMPORT"), "1");
    Choose("PHONEMODEM");
    EXPECT_EQ(Field(form.NewDevice(), "NAME"), "Phone modem on COM1");
    // Each reading makes a new profile in a scratch map, never the same element twice.
    Choose("TCP");
    EXPECT_FALSE(form.NewDevice() == form.NewDevice());
    EXPECT_FALSE(ProfileXml::HasChild(form.NewDevice(), "PROMPTTIMEOUT"));
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
    ASSERT_EQ(tree->topLevelItemCount(), 1);
    EXPECT_EQ(Root()->text(0), "Device Map");
    EXPECT_EQ(ui::ItemKey(Root()), "ROOT");
    EXPECT_EQ(ui::ImageKey(Root()), "MAP");
    EXPECT_TRUE(Root()->isExpanded());
    ASSERT_EQ(Root()->childCount(), map->ApplicationProfileCount());
    QStringList keys, icons;
    for (int i = 0; i < Root()->childCount(); ++i) {
        keys << ui::ItemKey(Device(i));
        icons << ui::ImageKey(Device(i));
    }
    EXPECT_EQ(keys, QStringList({"PROFILE0", "PROFILE1", "PROFILE2", "PROFILE3", "PROFILE4", "PROFILE5", "PROFILE6"}));
    EXPECT_EQ(Device(0)->text(0), "Direct to COM1");
    // Any IP method shows the network icon here, unlike the new-site list.
    EXPECT_EQ(icons, QStringList({"DIRECT", "IP", "IP", "IP", "IP", "UNKNOWN", "UNKNOWN"}));
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

TEST(SelectDeviceEmpty, AnEmptyMapShowsOnlyTheRootAndEscapeGivesNone) {
    CommsFixture comms;
    auto map = comms.Manager();
    while (map->ApplicationProfileCount() > 0) map->RemoveApplicationProfile(map->ApplicationProfile(Index(1)));
    frmSelectDevice form;
    form.setCommunicationsManager(map.get());
    auto* tree = Child<QTreeWidget>(&form, "tvDevices");
    ASSERT_EQ(Texts(tree), QStringList{"Device Map"});
    EXPECT_EQ(tree->topLevelItem(0)->childCount(), 0);
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
