// The new-site and site-selection dialogs driven through their real widgets.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>

#include <QAction>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/ui/addressbook/frmNewSite.h>
#include <meridex/ui/addressbook/frmSelectSite.h>
#include <meridex/ui/frame/ImageKeys.h>
#include <meridex/ui/settings/V4Dialogs.h>

#include "../../comms/CommsTestSupport.h"
#include "AddressBookTestSupport.h"
#include "DialogTest.h"
#include "TempDir.h"

using namespace meridex;
using namespace meridex::test;
using meridex::ui::frmNewSite;
using meridex::ui::frmSelectSite;

namespace {

class NewSiteDialog : public ::testing::Test {
protected:
    void SetUp() override {
        map_ = std::make_unique<CommsProfileManager>(std::make_shared<FakePorts>(std::initializer_list<int>{1}),
                                                     std::make_shared<IniUserStore>(dir_.File("config")));
        ASSERT_TRUE(map_->LoadXMLMapFile(dir_.Write("map.xml", MapText())));
        dialog_.setCommsDevices(map_.get());
        ASSERT_TRUE(ShowActive(&dialog_));
    }
    QTreeWidget* Devices() { return Child<QTreeWidget>(&dialog_, "lvDevices"); }
    QString Shown(const char* label) { return Child<QLabel>(&dialog_, label)->text(); }

    TempDir dir_;
    std::unique_ptr<CommsProfileManager> map_;
    frmNewSite dialog_;
};

TEST_F(NewSiteDialog, ListsTheMapsDevicesWithTheirIconsAndShowsTheFirst) {
    EXPECT_EQ(dialog_.windowTitle(), "Create New Site");
    EXPECT_EQ(Child<QLineEdit>(&dialog_, "txtName")->text(), "New Site");
    EXPECT_EQ(Texts(Devices()), (QStringList{"Bench Cable", "Office Modem", "Telemetry"}));
    EXPECT_EQ(ImageKeysOf(Devices()), (QStringList{"DIRECT", "PHONEMODEM", "IP"}));
    EXPECT_EQ(Devices()->currentItem(), Devices()->topLevelItem(0));
    EXPECT_EQ(Shown("lblName"), "Bench Cable");
    EXPECT_EQ(ui::ImageKey(Child<QLabel>(&dialog_, "imgProfile")), "DIRECT");

    QTest::mouseClick(Devices()->viewport(), Qt::LeftButton, {},
                      Devices()->visualItemRect(Devices()->topLevelItem(2)).center());
    EXPECT_EQ(Shown("lblName"), "Telemetry");
    EXPECT_TRUE(Shown("lblSummary").startsWith("KEY = "));
    EXPECT_TRUE(Shown("lblSummary").contains("\r\nNAME = Telemetry\r\nTYPE = IP\r\nMETHOD = TCP"));
}

TEST_F(NewSiteDialog, OkGivesANamedSiteWithACopyOfTheChosenProfile) {
    Child<QLineEdit>(&dialog_, "txtName")->setText("Weir");
    Devices()->setCurrentItem(Devices()->topLevelItem(1));
    Click(Child<QPushButton>(&dialog_, "cmdOK"));
    EXPECT_FALSE(dialog_.isVisible());
    const Site site = dialog_.NewSite();
    ASSERT_FALSE(site.IsNull());
    EXPECT_EQ(site.Name(), "Weir");
    EXPECT_EQ(site.Parameter("NAME").Text(), "Office Modem");
    EXPECT_NE(site.Profile(), map_->ApplicationProfile(2));
    EXPECT_EQ(map_->ApplicationProfile(2).Parent(), map_->ApplicationProfiles());
}

TEST_F(NewSiteDialog, OkWithNoDeviceSelectedGivesAnEmptyProfileAndAnEmptyNameIsAccepted) {
    Child<QLineEdit>(&dialog_, "txtName")->clear();
    Devices()->clearSelection();
    Click(Child<QPushButton>(&dialog_, "cmdOK"));
    const Site site = dialog_.NewSite();
    ASSERT_FALSE(site.IsNull());
    EXPECT_EQ(site.Name(), "");
    EXPECT_FALSE(site.Profile().IsNull());
    EXPECT_EQ(site.ParameterCount(), 0);
}

TEST_F(NewSiteDialog, CancelAndTheCloseBoxGiveNone) {
    Click(Child<QPushButton>(&dialog_, "cmdCancel"));
    EXPECT_TRUE(dialog_.NewSite().IsNull());
    ASSERT_TRUE(ShowActive(&dialog_));
    dialog_.close();
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_TRUE(dialog_.NewSite().IsNull());
}

class SelectSiteDialog : public ::testing::Test {
protected:
    void SetUp() override {
        book_.LoadAddressBook(WriteSmallBook(dir_));
        dialog_.setAddressBook(&book_);
        ASSERT_TRUE(ShowActive(&dialog_));
    }
    QTreeWidget* TreeView() const { return Child<QTreeWidget>(&dialog_, "tvGroups"); }
    QTreeWidgetItem* Node(const QString& key) const { return FindNode(TreeView(), key); }
    void ClickNode(const QString& key) {
        QTreeWidgetItem* node = Node(key);
        ASSERT_NE(node, nullptr);
        TreeView()->scrollToItem(node);
        QTest::mouseClick(TreeView()->viewport(), Qt::LeftButton, {}, TreeView()->visualItemRect(node).center());
    }

    TempDir dir_;
    AddressBook book_;
    frmSelectSite dialog_;
};

TEST_F(SelectSiteDialog, SelectsTheFirstSiteAndAnswersItsOwnProfile) {
    EXPECT_EQ(dialog_.windowTitle(), "Select site to connect to");
    EXPECT_EQ(TreeView()->currentItem(), Node("\\North\\Hill\\Hill Gauge"));
    EXPECT_EQ(dialog_.SelectedProfile(), book_.FindSite("\\North\\Hill\\Hill Gauge").Profile());
    EXPECT_TRUE(Child<QWidget>(&dialog_, "picInfo")->isVisible());
    EXPECT_EQ(Child<QLabel>(&dialog_, "lblName")->text(), "Modem");
    EXPECT_EQ(Child<QLabel>(&dialog_, "lblSummary")->text(),
              "NAME = Modem\r\nTYPE = RS232\r\nMETHOD = PHONEMODEM\r\nPHONENUMBER = 0311 555 1000");
    EXPECT_EQ(ui::ImageKey(Child<QLabel>(&dialog_, "imgProfile")), "PHONEMODEM");

    ClickNode("\\Depot");
    QTest::keyClick(TreeView(), Qt::Key_Return);
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(dialog_.SelectedProfile(), book_.FindSite("\\Depot").Profile());
}

TEST_F(SelectSiteDialog, EnterOnAGroupStaysAndEscapeAnswersNone) {
    ClickNode("\\South");
    EXPECT_TRUE(dialog_.SelectedProfile().IsNull());
    EXPECT_FALSE(Child<QWidget>(&dialog_, "picInfo")->isVisible());
    QTest::keyClick(TreeView(), Qt::Key_Return);
    EXPECT_TRUE(dialog_.isVisible());
    ClickNode("\\Depot");
    QTest::keyClick(TreeView(), Qt::Key_Escape);
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_TRUE(dialog_.SelectedProfile().IsNull());
}

TEST_F(SelectSiteDialog, TheCloseBoxAfterChoosingASiteAnswersNone) {
    ClickNode("\\Depot");
    EXPECT_FALSE(dialog_.SelectedProfile().IsNull());
    dialog_.close();
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_TRUE(dialog_.SelectedProfile().IsNull());
}

TEST_F(SelectSiteDialog, ADoubleClickOnASiteCloses) {
    QTreeWidgetItem* depot = Node("\\Depot");
    const QPoint at = TreeView()->visualItemRect(depot).center();
    QTest::mouseMove(TreeView()->viewport(), at);
    QTest::mouseDClick(TreeView()->viewport(), Qt::LeftButton, {}, at);
    QTRY_VERIFY(!dialog_.isVisible());
    EXPECT_EQ(dialog_.SelectedProfile(), book_.FindSite("\\Depot").Profile());
}

TEST(ProfileInfo, AProfileWithoutNameIsShownUnnamed) {
    TempDir dir;
    AddressBook book;
    book.LoadAddressBook(dir.File("book.xml"));
    Site site;
    site.setName("Bare");
    site.SetParameter("TYPE", "IP");
    site.SetParameter("METHOD", "UDP");
    site.SetParameter("ICON", "IP");
    book.Sites().AddSite(site);
    frmSelectSite dialog;
    dialog.setAddressBook(&book);
    EXPECT_EQ(Child<QLabel>(&dialog, "lblName")->text(), "Unnamed Profile");
    EXPECT_EQ(ui::ImageKey(Child<QLabel>(&dialog, "imgProfile")), "IP");
}

TEST(Facade, SelectSiteCommsProfilesAnswersTheChosenSitesProfile) {
    TempDir dir;
    AddressBook book;
    book.LoadAddressBook(WriteSmallBook(dir));
    XmlNode chosen;
    ModalScript()
        .Then([](QWidget* dialog) { QTest::keyClick(Child<QTreeWidget>(dialog, "tvGroups"), Qt::Key_Return); })
        .Run([&] { chosen = ui::V4Dialogs().SelectSiteCommsProfiles(book); });
    EXPECT_EQ(chosen, book.FindSite("\\North\\Hill\\Hill Gauge").Profile());
}

}  // namespace

namespace {

TEST(Facade, OpenAddressBookShowsTheEditorOnTheFilesAndSavesOnExit) {
    TempDir dir;
    const std::string book = WriteSmallBook(dir);
    const auto before = std::filesystem::last_write_time(book);
    std::filesystem::last_write_time(book, before - std::chrono::hours(1));
    ModalScript()
        .Then([](QWidget* editor) {
            EXPECT_EQ(editor->objectName(), "frmAddressBook");
            EXPECT_EQ(Texts(Child<QTreeWidget>(editor, "tvGroups")), QStringList{"Address Book"});
            Child<QAction>(editor, "mnuExit")->trigger();
        })
        .Run([&] { ui::V4Dialogs().OpenAddressBook(book, dir.File("map.xml"), dir.File("schemes")); });
    EXPECT_GT(std::filesystem::last_write_time(book), before - std::chrono::hours(1));
}

}  // namespace
