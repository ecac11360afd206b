// The import form and the progress bar it draws.
#include <gtest/gtest.h>

#include <filesystem>

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QTest>

#include <meridex/addressbook/AddressBook.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/ui/addressbook/frmImport.h>
#include <meridex/ui/frame/DrawProgress.h>
#include <meridex/ui/frame/ProgressPicture.h>
#include <meridex/ui/settings/V4Dialogs.h>

#include "AddressBookTestSupport.h"
#include "DialogTest.h"
#include "TempDir.h"

using namespace meridex;
using namespace meridex::test;
using meridex::ui::frmImport;

namespace {

// Records what the form showed at each step of the import.
class WatchedImport : public frmImport {
public:
    using frmImport::frmImport;
    void mcImport_Message(const std::string& msg) override {
        frmImport::mcImport_Message(msg);
        shown << lblMessage->text();
    }
    QStringList shown;
};

TEST(ProgressText, RoundsHalfUpAndPutsTheTextFirst) {
    EXPECT_EQ(ui::ProgressText(0.0), "0%");
    EXPECT_EQ(ui::ProgressText(0.424), "42%");
    EXPECT_EQ(ui::ProgressText(0.425), "43%");
    EXPECT_EQ(ui::ProgressText(1.0), "100%");
    EXPECT_EQ(ui::ProgressText(0.5, "Copying"), "Copying 50%");
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
        for (int y = 0; y < image.height(); ++y) {
            const QColor c = image.pixelColor(x, y);
            if (c == Qt::red) ++other;
        }
    EXPECT_EQ(other, 0);
}

TEST(ProgressPicture, KeepsTheLastFractionAndPrintsItsPercentage) {
    ui::ProgressPicture bar("picProgress");
    bar.setProgress(0.996);
    EXPECT_EQ(bar.ShownText(), "100%");
    bar.setProgress(0.5, "Half");
    EXPECT_EQ(bar.ShownText(), "Half 50%");
    EXPECT_DOUBLE_EQ(bar.Fraction(), 0.5);
}

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
};

TEST_F(ImportForm, RunsOnceWhenItComesUpShowsEachMessageAndClosesOnComplete) {
    WatchedImport form;
    form.StartImport(book_, nullptr, dir_.File("schemes"));
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(form.picProgress->ShownText(), "100%");
    ASSERT_EQ(form.shown.size(), 8);
    EXPECT_TRUE(form.shown[0].startsWith("Scheme Found: "));
    EXPECT_TRUE(form.shown[7].startsWith("Processing Scheme: "));
    EXPECT_EQ(form.lblMessage->text(), form.shown.last());
    const SiteGroup north = book_.FindGroup("\\North");
    ASSERT_FALSE(north.IsNull());
    EXPECT_EQ(north.GroupCount(), 4);  // one level per scheme file
}

TEST_F(ImportForm, ReportsPathsAndNamesSitesWithTheSystemsOwnSeparator) {
    // On Windows the back slashes of the folder given stay, and its sub-folders join with them too.
    const std::filesystem::path root = std::filesystem::path(dir_.File("schemes")).make_preferred();
    WatchedImport form;
    form.StartImport(book_, nullptr, root.string());
    const std::string first = (root / "North" / "a.xml").string();
    ASSERT_FALSE(form.shown.empty());
    EXPECT_EQ(form.shown[0].toStdString(), "Scheme Found: " + first);
    EXPECT_EQ(book_.FindGroup("\\North").Group("a.xml").Site(1).Name(), first + " (a");
}

TEST_F(ImportForm, CancelStopsBetweenSchemesAndKeepsWhatWasAdded) {
    // Cancel is pressed as the first scheme is processed.
    class CancellingImport : public frmImport {
    public:
        using frmImport::frmImport;
        void mcImport_Message(const std::string& msg) override {
            frmImport::mcImport_Message(msg);
            if (msg.rfind("Processing Scheme: ", 0) == 0) Click(cmdCancel);
        }
    } form;
    form.StartImport(book_, nullptr, dir_.File("schemes"));
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(form.CancelRequested());
    EXPECT_EQ(book_.FindGroup("\\North").GroupCount(), 1);
}

}  // namespace
