// The new-site, site-selection and import dialogs driven through their real widgets, the progress
// bar the import draws, and the facade's round trips.
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include <meridex/ui/addressbook/frmImport.h>
#include <meridex/ui/addressbook/frmNewSite.h>
#include <meridex/ui/addressbook/frmSelectSite.h>
#include <meridex/ui/frame/DrawProgress.h>
#include <meridex/ui/frame/ProgressPicture.h>
#include <meridex/ui/settings/V4Dialogs.h>

#include "AddressBookTestSupport.h"

using namespace meridex;
using namespace meridex::test;
using meridex::ui::frmImport;
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
    EXPECT_EQ(Child<QLineEdit>(&dialog_, "txtName")->text(), "New Site");
    EXPECT_EQ(Texts(Devices()), (QStringList{"Bench Cable", "Office Modem", "Telemetry"}));
    EXPECT_EQ(ImageKeysOf(Devices()), (QStringList{"DIRECT", "PHONEMODEM", "IP"}));
    EXPECT_EQ(Devices()->currentItem(), Devices()->topLevelItem(0));
    EXPECT_EQ(Shown("lblName"), "Bench Cable");
    EXPECT_EQ(ui::ImageKey(Child<QLabel>(&dialog_, "imgProfile")), "DIRECT");

    ClickRow(Devices(), Devices()->topLevelItem(2));
    EXPECT_EQ(Shown("lblName"), "Telemetry");
    EXPECT_TRUE(Shown("lblSummary").startsWith("KEY = "));
    EXPECT_TRUE(Shown("lblSummary").contains("\r\nNAME = Telemetry\r\nTYPE = IP\r\nMETHOD = TCP"));
}

TEST_F(NewSiteDialog, OkGivesANamedSiteWithACopyOfTheChosenProfileOrAnEmptyProfileWithNoDevice) {
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

    // With no device selected the profile is empty, and an empty name is accepted.
    ASSERT_TRUE(ShowActive(&dialog_));
    Child<QLineEdit>(&dialog_, "txtName")->clear();
    Devices()->clearSelection();
    Click(Child<QPushButton>(&dialog_, "cmdOK"));
    const Site empty = dialog_.NewSite();
    ASSERT_FALSE(empty.IsNull());
    EXPECT_EQ(empty.Name(), "");
    EXPECT_FALSE(empty.Profile().IsNull());
    EXPECT_EQ(empty.ParameterCount(), 0);
}

TEST_F(NewSiteDialog, CancelAndTheCloseBoxGiveNone) {
    for (const bool cancel : {true, false}) {
        ASSERT_TRUE(ShowActive(&dialog_));
        cancel ? Click(Child<QPushButton>(&dialog_, "cmdCancel")) : void(dialog_.close());
        EXPECT_FALSE(dialog_.isVisible());
        EXPECT_TRUE(dialog_.NewSite().IsNull());
    }
}

class SelectSiteDialog : public ::testing::Test {
protected:
    void SetUp() override {
        book_.LoadAddressBook(WriteSmallBook(dir_));
        dialog_.setAddressBook(&book_);
        ASSERT_TRUE(ShowActive(&dialog_));
    }
    QTreeWidget* TreeView() const { return Child<QTreeWidget>(&dialog_, "tvGroups"); }
    QTreeWidgetItem* Node(const QString& key) const { return Keyed(TreeView(), key); }

    TempDir dir_;
    AddressBook book_;
    frmSelectSite dialog_;
};

TEST_F(SelectSiteDialog, SelectsTheFirstSiteAndShowsItsOwnProfile) {
    EXPECT_EQ(TreeView()->currentItem(), Node("\\North\\Hill\\Hill Gauge"));
    EXPECT_EQ(dialog_.SelectedProfile(), book_.FindSite("\\North\\Hill\\Hill Gauge").Profile());
    EXPECT_TRUE(Child<QWidget>(&dialog_, "picInfo")->isVisible());
    EXPECT_EQ(Child<QLabel>(&dialog_, "lblName")->text(), "Modem");
    EXPECT_EQ(Child<QLabel>(&dialog_, "lblSummary")->text(),
              "NAME = Modem\r\nTYPE = RS232\r\nMETHOD = PHONEMODEM\r\nPHONENUMBER = 0311 555 1000");
    EXPECT_EQ(ui::ImageKey(Child<QLabel>(&dialog_, "imgProfile")), "PHONEMODEM");
}

TEST_F(SelectSiteDialog, EnterOnAGroupStaysAndEscapeOrTheCloseBoxAfterChoosingASiteAnswersNone) {
    ClickRow(TreeView(), Node("\\South"));
    EXPECT_TRUE(dialog_.SelectedProfile().IsNull());
    EXPECT_FALSE(Child<QWidget>(&dialog_, "picInfo")->isVisible());
    QTest::keyClick(TreeView(), Qt::Key_Return);
    EXPECT_TRUE(dialog_.isVisible());
    for (const bool escape : {true, false}) {
        ASSERT_TRUE(ShowActive(&dialog_));
        ClickRow(TreeView(), Node(escape ? "\\Depot" : "\\North\\River Gauge"));
        EXPECT_FALSE(dialog_.SelectedProfile().IsNull());
        escape ? QTest::keyClick(TreeView(), Qt::Key_Escape) : void(dialog_.close());
        EXPECT_FALSE(dialog_.isVisible());
        EXPECT_TRUE(dialog_.SelectedProfile().IsNull());
    }
}

TEST_F(SelectSiteDialog, ADoubleClickOnASiteCloses) {
    const QPoint at = TreeView()->visualItemRect(Node("\\Depot")).center();
    QTest::mouseMove(TreeView()->viewport(), at);
    QTest::mouseDClick(TreeView()->viewport(), Qt::LeftButton, {}, at);
    QTRY_VERIFY(!dialog_.isVisible());
    EXPECT_EQ(dialog_.SelectedProfile(), book_.FindSite("\\Depot").Profile());
}

TEST_F(SelectSiteDialog, AProfileWithoutNameIsShownUnnamed) {
    book_.LoadAddressBook(dir_.Write("bare.xml", "<V4ADDRESSBOOK><SITE><KEY>Bare</KEY><NAME>Bare</NAME>"
                                                 "<PATH>\\Bare</PATH><PROFILE><TYPE>IP</TYPE><METHOD>UDP</METHOD>"
                                                 "<ICON>IP</ICON></PROFILE></SITE></V4ADDRESSBOOK>"));
    dialog_.setAddressBook(&book_);
    EXPECT_EQ(Child<QLabel>(&dialog_, "lblName")->text(), "Unnamed Profile");
    EXPECT_EQ(ui::ImageKey(Child<QLabel>(&dialog_, "imgProfile")), "IP");
}

TEST_F(SelectSiteDialog, TheFacadeAnswersTheSiteChosenWithEnter) {
    XmlNode chosen;
    ModalScript()
        .Then([](QWidget* dialog) {
            // By keyboard alone: End goes to the last node, the site at the root.
            auto* tree = Child<QTreeWidget>(dialog, "tvGroups");
            QTest::keyClick(tree, Qt::Key_End);
            QTest::keyClick(tree, Qt::Key_Return);
        })
        .Run([&] { chosen = ui::V4Dialogs().SelectSiteCommsProfiles(book_); });
    EXPECT_EQ(chosen, book_.FindSite("\\Depot").Profile());
}

TEST(Facade, OpenAddressBookShowsTheEditorOnTheFilesAndSavesOnExit) {
    TempDir dir;
    const std::string book = WriteSmallBook(dir);
    ModalScript()
        .Then([&](QWidget* editor) {
            EXPECT_EQ(editor->objectName(), "frmAddressBook");
            EXPECT_NE(Keyed(Child<QTreeWidget>(editor, "tvGroups"), "\\Depot"), nullptr);
            std::filesystem::remove(book);
            Child<QAction>(editor, "mnuExit")->trigger();
        })
        .Run([&] { ui::V4Dialogs().OpenAddressBook(book, dir.File("map.xml"), dir.File("schemes")); });
    EXPECT_TRUE(std::filesystem::exists(book));
}

TEST(ProgressText, RoundsHalfUpPutsTheTextFirstAndTheBarKeepsTheLastFraction) {
    for (const auto& [fraction, text] : {std::pair{0.0, "0%"}, {0.424, "42%"}, {0.425, "43%"}, {1.0, "100%"}})
        EXPECT_EQ(ui::ProgressText(fraction), text) << fraction;
    EXPECT_EQ(ui::ProgressText(0.5, "Copying"), "Copying 50%");
    ui::ProgressPicture bar("picProgress");
    bar.setProgress(0.996);
    EXPECT_EQ(bar.ShownText(), "100%");
    bar.setProgress(0.5, "Half");
    EXPECT_EQ(bar.ShownText(), "Half 50%");
    EXPECT_DOUBLE_EQ(bar.Fraction(), 0.5);
}

TEST(DrawProgress, FillsTheDoneShareDarkBlueAndTheRestWhite) {
    QImage image(200, 20, QImage::Format_RGB32);
    image.fill(Qt::red);
    {
        QPainter painter(&image);
        ui::DrawProgress(painter, image.rect(), 0.25);
    }
    EXPECT_EQ(image.pixelColor(2, 2), QColor(0, 0, 0x80));
    EXPECT_EQ(image.pixelColor(45, 2), QColor(0, 0, 0x80));
    EXPECT_EQ(image.pixelColor(55, 2), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(197, 17), QColor(Qt::white));
    // Nothing outside the two colours but the text, which sits in the middle.
    int other = 0;
    for (int x = 0; x < image.width(); ++x)
        for (int y = 0; y < image.height(); ++y) other += image.pixelColor(x, y) == Qt::red;
    EXPECT_EQ(other, 0);
}

// Records what the form showed at each step of the import; when told to, presses Cancel as the
// first scheme is processed.
class WatchedImport : public frmImport {
public:
    using frmImport::frmImport;
    void mcImport_Message(const std::string& msg) override {
        frmImport::mcImport_Message(msg);
        shown << lblMessage->text();
        if (cancel && msg.rfind("Processing Scheme: ", 0) == 0) Click(cmdCancel);
    }
    QStringList shown;
    bool cancel = false;
};

class ImportForm : public ::testing::Test {
protected:
    void SetUp() override {
        book_.LoadAddressBook(dir_.File("book.xml"));
        for (const char* name : {"a", "b", "c", "d"})
            dir_.Write(std::string("schemes/North/") + name + ".xml",
                       SchemeText({ProfileText("RS232", "PHONEMODEM", name)}));
    }
    TempDir dir_;
    AddressBook book_;
    WatchedImport form_;
};

TEST_F(ImportForm, RunsOnceWhenItComesUpShowsEachMessageAndClosesOnComplete) {
    form_.StartImport(book_, nullptr, dir_.File("schemes"));
    EXPECT_FALSE(form_.isVisible());
    EXPECT_FALSE(form_.CancelRequested());
    EXPECT_EQ(form_.picProgress->ShownText(), "100%");
    ASSERT_EQ(form_.shown.size(), 8);
    EXPECT_TRUE(form_.shown[0].startsWith("Scheme Found: "));
    EXPECT_TRUE(form_.shown[7].startsWith("Processing Scheme: "));
    EXPECT_EQ(form_.lblMessage->text(), form_.shown.last());
    const SiteGroup north = book_.FindGroup("\\North");
    ASSERT_FALSE(north.IsNull());
    EXPECT_EQ(north.GroupCount(), 4);  // one level per scheme file
}

TEST_F(ImportForm, CancelStopsBetweenSchemesAndKeepsWhatWasAdded) {
    form_.cancel = true;  // pressed as the first scheme is processed
    form_.StartImport(book_, nullptr, dir_.File("schemes"));
    EXPECT_FALSE(form_.isVisible());
    EXPECT_TRUE(form_.CancelRequested());
    EXPECT_EQ(book_.FindGroup("\\North").GroupCount(), 1);
}

}  // namespace
