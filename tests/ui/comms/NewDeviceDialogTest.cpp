// The new-device dialog driven as a person would: the five kinds, OK, Cancel, the close box, a
// double click, and the facade's round trip.
#include <gtest/gtest.h>

#include <QPushButton>

#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/ui/comms/frmNewCommsMapDevice.h>
#include <meridex/ui/settings/V4Dialogs.h>

#include "CommsDialogTest.h"
#include "DialogTest.h"

using namespace meridex;
using namespace meridex::test;
using meridex::ui::frmNewCommsMapDevice;

namespace {

struct NewDevice : ::testing::Test {
    CommsFixture comms{1, 2};
    frmNewCommsMapDevice form{comms.ports, comms.store};
    QTreeWidget* list = Child<QTreeWidget>(&form, "lvCommsType");

    void Choose(const QString& key) { ClickRow(list, RowKeyed(list, key)); }
};

}  // namespace

TEST_F(NewDevice, OffersTheFiveKindsInOrderWithNothingChosen) {
    EXPECT_EQ(ItemKeys(list), QStringList({"DIRECT", "PHONEMODEM", "UDP", "TCP", "GPRSPROXY"}));
    EXPECT_EQ(Texts(list), QStringList({"Direct (RS232)", "Phone modem (RS232)", "Network (UDP)", "Network (TCP/IP)",
                                        "GPRS Proxy (Harvest Modem)"}));
    EXPECT_EQ(ImageKeysOf(list), QStringList({"DIRECT", "PHONEMODEM", "IP", "IP", "IP"}));

    Show(form);
    Click(Child<QPushButton>(&form, "cmdOK"));
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(form.NewDevice().IsNull()) << "OK with nothing chosen gives none";
}

TEST_F(NewDevice, OKBuildsTheChosenKindWithItsDefaultsInAMapOfItsOwn) {
    Show(form);
    Choose("GPRSPROXY");
    Click(Child<QPushButton>(&form, "cmdOK"));
    const XmlNode gprs = form.NewDevice();
    EXPECT_EQ(Field(gprs, "NAME"), "GPRS Proxy (Harvest Modem)");
    EXPECT_EQ(Field(gprs, "PROXYPORT"), "9002");
    EXPECT_FALSE(ProfileXml::HasChild(gprs, "PORT"));

    // Serial kinds start on port 1, whatever ports the PC has.
    Choose("DIRECT");
    const XmlNode direct = form.NewDevice();
    EXPECT_EQ(Field(direct, "NAME"), "Direct to COM1");
    EXPECT_EQ(Field(direct, "COMMPORT"), "1");
    Choose("PHONEMODEM");
    EXPECT_EQ(Field(form.NewDevice(), "NAME"), "Phone modem on COM1");
    // Each reading makes a new profile in a scratch map, never the same element twice.
    Choose("TCP");
    EXPECT_FALSE(form.NewDevice() == form.NewDevice());
    EXPECT_FALSE(ProfileXml::HasChild(form.NewDevice(), "PROMPTTIMEOUT"));
}

TEST_F(NewDevice, CancelEscapeAndTheCloseBoxClearTheChoice) {
    Show(form);
    Choose("TCP");
    ASSERT_FALSE(form.NewDevice().IsNull());
    Click(Child<QPushButton>(&form, "cmdCancel"));
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(form.NewDevice().IsNull());

    Show(form);
    Choose("UDP");
    QTest::keyClick(list, Qt::Key_Escape);
    EXPECT_TRUE(form.NewDevice().IsNull());

    Show(form);
    Choose("UDP");
    form.close();
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(form.NewDevice().IsNull());
}

TEST_F(NewDevice, ADoubleClickActsAsOK) {
    Show(form);
    DoubleClickRow(list, RowKeyed(list, "UDP"));
    EXPECT_FALSE(form.isVisible());
    EXPECT_FALSE(form.Cancelled());
    EXPECT_EQ(Field(form.NewDevice(), "METHOD"), "UDP");
}

TEST_F(NewDevice, TheFacadeAnswersTheNewDeviceOrNone) {
    ui::V4Dialogs dialogs(std::make_shared<RecordingUserInterface>());
    dialogs.setCommsSources(comms.ports, comms.store);
    XmlNode device;
    ModalScript()
        .Then([](QWidget* modal) {
            EXPECT_EQ(modal->objectName(), "frmNewCommsMapDevice");
            auto* kinds = Child<QTreeWidget>(modal, "lvCommsType");
            ClickRow(kinds, RowKeyed(kinds, "GPRSPROXY"));
            Click(Child<QPushButton>(modal, "cmdOK"));
        })
        .Run([&] { device = dialogs.SelectNewCommsDevice(); });
    EXPECT_EQ(Field(device, "PROXYPORT"), "9002");

    ModalScript()
        .Then([](QWidget* modal) {
            auto* kinds = Child<QTreeWidget>(modal, "lvCommsType");
            ClickRow(kinds, RowKeyed(kinds, "TCP"));
            Click(Child<QPushButton>(modal, "cmdCancel"));
        })
        .Run([&] { device = dialogs.SelectNewCommsDevice(); });
    EXPECT_TRUE(device.IsNull());
}
