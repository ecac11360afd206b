// The device-selection dialog driven as a person would: the tree and its icons, the information
// panel, and each way of closing it.
#include <gtest/gtest.h>

#include <QLabel>

#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/ui/comms/frmSelectDevice.h>
#include <meridex/ui/frame/ImageKeys.h>
#include <meridex/ui/settings/V4Dialogs.h>

#include "CommsDialogTest.h"
#include "DialogTest.h"

using namespace meridex;
using namespace meridex::test;
using meridex::ui::frmSelectDevice;

namespace {

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

TEST_F(SelectDevice, ShowsTheMapUnderItsRootWithNothingChosen) {
    EXPECT_EQ(form.windowTitle(), "Select Device");
    ASSERT_EQ(tree->topLevelItemCount(), 1);
    EXPECT_EQ(Root()->text(0), "Device Map");
    EXPECT_EQ(ui::ItemKey(Root()), "ROOT");
    EXPECT_EQ(ui::ImageKey(Root()), "MAP");
    EXPECT_TRUE(Root()->isExpanded());
    ASSERT_EQ(Root()->childCount(), map->ApplicationProfileCount());
    QStringList keys, names, icons;
    for (int i = 0; i < Root()->childCount(); ++i) {
        keys << ui::ItemKey(Device(i));
        names << Device(i)->text(0);
        icons << ui::ImageKey(Device(i));
    }
    EXPECT_EQ(keys, QStringList({"PROFILE0", "PROFILE1", "PROFILE2", "PROFILE3", "PROFILE4", "PROFILE5", "PROFILE6"}));
    EXPECT_EQ(names.first(), "Direct to COM1");
    // Any IP method shows the network icon here, unlike the new-site list.
    EXPECT_EQ(icons, QStringList({"DIRECT", "IP", "IP", "IP", "IP", "UNKNOWN", "UNKNOWN"}));
    EXPECT_TRUE(form.SelectedDevice().IsNull());
    EXPECT_FALSE(info->isVisibleTo(&form));
}

TEST_F(SelectDevice, AClickChoosesTheMapsOwnElementAndShowsIt) {
    Show(form);
    ClickRow(tree, Device(2));
    EXPECT_TRUE(form.SelectedDevice() == map->ApplicationProfile(Index(3)));
    EXPECT_TRUE(info->isVisible());
    EXPECT_EQ(Child<QLabel>(info, "lblName")->text(), "Network (TCP/IP)");
    EXPECT_EQ(ui::ImageKey(Child<QLabel>(info, "imgProfile")), "IP");
    EXPECT_EQ(Child<QLabel>(info, "lblSummary")->text(),
              "NAME = Network (TCP/IP)\r\nTYPE = IP\r\nMETHOD = TCP\r\nFORCEPROMPT = K\r\nICON = IP\r\n"
              "ADDRESS = 127.0.0.1\r\nPORT = 9000\r\nTIMEOUT = 5\r\nSENDBLOCKSIZE = 256\r\nKEY = PROFILE2");
    EXPECT_EQ(Child<QLabel>(info, "lblDevice")->text(), "Device:");
    EXPECT_EQ(Child<QLabel>(info, "lblSummaryCaption")->text(), "Summary:");

    ClickRow(tree, Root());
    EXPECT_TRUE(form.SelectedDevice().IsNull());
    EXPECT_FALSE(info->isVisible());
}

TEST_F(SelectDevice, EnterClosesOnlyWithADeviceChosen) {
    Show(form);
    QTest::keyClick(tree, Qt::Key_Return);
    EXPECT_TRUE(form.isVisible()) << "the root is no device";
    ClickRow(tree, Device(0));
    QTest::keyClick(tree, Qt::Key_Return);
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(form.SelectedDevice() == map->ApplicationProfile(Index(1)));
}

TEST_F(SelectDevice, EscapeAndTheCloseBoxCloseWithNone) {
    Show(form);
    ClickRow(tree, Device(0));
    QTest::keyClick(tree, Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(form.SelectedDevice().IsNull());

    Show(form);
    ClickRow(tree, Device(1));
    ASSERT_FALSE(form.SelectedDevice().IsNull());
    form.close();
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(form.SelectedDevice().IsNull());
}

TEST_F(SelectDevice, ADoubleClickClosesOnADeviceButNotOnEmptySpace) {
    Show(form);
    ClickRow(tree, Device(3));
    // Below the last node there is no node to double-click.
    const QPoint below(10, tree->visualItemRect(Device(Root()->childCount() - 1)).bottom() + 40);
    ASSERT_EQ(tree->itemAt(below), nullptr);
    QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, below);
    EXPECT_TRUE(form.isVisible());

    DoubleClickRow(tree, Device(3));
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(form.SelectedDevice() == map->ApplicationProfile(Index(4)));
}

TEST(SelectDeviceEmpty, AnEmptyMapShowsOnlyTheRootAndEscapeGivesNone) {
    CommsFixture comms;
    auto map = comms.Manager();
    while (map->ApplicationProfileCount() > 0) map->RemoveApplicationProfile(map->ApplicationProfile(Index(1)));
    frmSelectDevice form;
    form.setCommunicationsManager(map.get());
    auto* tree = Child<QTreeWidget>(&form, "tvDevices");
    ASSERT_EQ(tree->topLevelItemCount(), 1);
    EXPECT_EQ(tree->topLevelItem(0)->childCount(), 0);
    Show(form);
    QTest::keyClick(tree, Qt::Key_Enter);
    EXPECT_TRUE(form.isVisible());
    QTest::keyClick(tree, Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(form.SelectedDevice().IsNull());
}

TEST_F(SelectDevice, TheFacadeAnswersTheChosenProfile) {
    const ui::V4Dialogs dialogs(std::make_shared<RecordingUserInterface>());
    XmlNode chosen;
    ModalScript()
        .Then([](QWidget* modal) {
            EXPECT_EQ(modal->objectName(), "frmSelectDevice");
            auto* devices = Child<QTreeWidget>(modal, "tvDevices");
            DoubleClickRow(devices, devices->topLevelItem(0)->child(4));
        })
        .Run([&] { chosen = dialogs.SelectCommsDevice(*map); });
    EXPECT_TRUE(chosen == map->ApplicationProfile(Index(5)));
}
