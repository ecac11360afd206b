#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/RecordingUserInterface.h>

#include "../../sync/SyncTestSupport.h"
#include "DialogTest.h"
#include "SyncWindow.h"

namespace fs = std::filesystem;
using namespace meridex;
using meridex::desk::SyncWindow;
using meridex::test::TempDir;
using meridex::test::WriteDated;

namespace {

constexpr std::time_t T = 1700000000;

class SyncWindowTest : public ::testing::Test {
protected:
    SyncWindowTest() : window(tmp.File("remote"), tmp.File("local"), errors, ui) {
        errors.setErrorLogFile(tmp.File("ErrorLog.txt"));
        errors.setLogErrors(true);
    }
    QTreeWidget* List(const char* name) { return test::Child<QTreeWidget>(&window, name); }
    QPushButton* Button(const char* name) { return test::Child<QPushButton>(&window, name); }
    QString Status() { return test::Child<QLabel>(&window, "lblStatus")->text(); }
    // The per-scheme option of row i of a list.
    QComboBox* Option(QTreeWidget* list, int i) {
        return qobject_cast<QComboBox*>(list->itemWidget(list->topLevelItem(i), 1));
    }
    // Column c of every row.
    static QStringList Column(const QTreeWidget* list, int c) {
        QStringList texts;
        for (int i = 0; i < list->topLevelItemCount(); ++i) texts << list->topLevelItem(i)->text(c);
        return texts;
    }

    TempDir tmp;
    std::shared_ptr<RecordingUserInterface> ui = std::make_shared<RecordingUserInterface>();
    ErrorHandler errors{ui};
    SyncWindow window;
};

}  // namespace

TEST_F(SyncWindowTest, ComparesAndSynchronisesTwoFoldersEndToEnd) {
    WriteDated(tmp, "local/North/Weir1.SXS", "edited here", T + 600);
    WriteDated(tmp, "remote/North/Weir1.SXS", "office copy", T);
    WriteDated(tmp, "remote/South/Dam.SXS", "new at the office", T + 900);
    WriteDated(tmp, "remote/South/Dam.XML", "its parameters", T + 900);
    WriteDated(tmp, "local/South/Dam.SXS", "old here", T);
    WriteDated(tmp, "local/Clock.SXS", "c", T + 3600);  // a daylight-saving change, not an edit
    WriteDated(tmp, "remote/Clock.SXS", "c", T);
    WriteDated(tmp, "local/Same.SXS", "s", T);
    WriteDated(tmp, "remote/Same.SXS", "s", T);

    EXPECT_FALSE(Button("cmdSynchronise")->isEnabled()) << "nothing to copy before a compare";
    test::Click(Button("cmdCompare"));
    EXPECT_EQ(Column(List("lvNewerLocal"), 0), (QStringList{"/Clock.SXS", "/North/Weir1.SXS"}));
    EXPECT_EQ(Column(List("lvNewerRemote"), 0), (QStringList{"/South/Dam.SXS"}));
    EXPECT_EQ(Column(List("lvSynced"), 0), (QStringList{"/Same.SXS"}));
    EXPECT_TRUE(Column(List("lvNewerLocal"), 4)[0].contains("daylight-saving"));
    EXPECT_TRUE(Column(List("lvNewerLocal"), 4)[1].isEmpty());
    EXPECT_EQ(test::ImageKeysOf(List("lvSynced")), (QStringList{"SCHEME"}));
    EXPECT_EQ(Status(), "2 newer here, 1 newer on the remote side, 1 in step.");
    EXPECT_TRUE(test::Child<QWidget>(&window, "txtFound")->property("plainText").toString().contains("Dam.SXS"));
    EXPECT_TRUE(Button("cmdSynchronise")->isEnabled());

    // Weir1 is reverted to the office copy (the local edit is kept as a backup), Dam is brought here,
    // Clock is left alone.
    Option(List("lvNewerLocal"), 1)->setCurrentIndex(2);
    test::Click(Button("cmdUpdateAllRemote"));
    EXPECT_EQ(Option(List("lvNewerRemote"), 0)->currentText(), "Update");
    test::Click(Button("cmdSynchronise"));

    EXPECT_EQ(TempDir::Read(tmp.File("local/North/Weir1.SXS")), "office copy");
    EXPECT_EQ(TempDir::Read(tmp.File("local/North/Weir1.SXS~0000.BAK")), "edited here");
    EXPECT_EQ(TempDir::Read(tmp.File("local/South/Dam.XML")), "its parameters");
    EXPECT_EQ(TempDir::Read(tmp.File("local/Clock.SXS")), "c");
    EXPECT_EQ(TempDir::Read(tmp.File("remote/North/Weir1.SXS")), "office copy");
    // The lists show the folders as they now stand; the backups made are named.
    EXPECT_EQ(Column(List("lvNewerLocal"), 0), (QStringList{"/Clock.SXS"}));
    EXPECT_TRUE(Column(List("lvNewerRemote"), 0).isEmpty());
    EXPECT_EQ(Column(List("lvSynced"), 0), (QStringList{"/Same.SXS", "/North/Weir1.SXS", "/South/Dam.SXS"}));
    const QStringList what = Column(List("lvErrors"), 0);
    const QStringList files = Column(List("lvErrors"), 1);
    ASSERT_EQ(what.count("Backup"), 2) << files.join(", ").toStdString();
    EXPECT_TRUE(files.contains(QString::fromStdString(tmp.File("local/North/Weir1.SXS~0000.BAK"))));
    EXPECT_TRUE(files.contains(QString::fromStdString(tmp.File("local/South/Dam.SXS~0000.BAK"))));
    EXPECT_FALSE(what.contains("Error"));
    EXPECT_TRUE(Status().startsWith("Synchronised. 0 error(s), 2 backup(s) kept.")) << Status().toStdString();
    EXPECT_EQ(test::Child<QProgressBar>(&window, "prgSync")->value(), 100);
    EXPECT_TRUE(ui->Messages().empty());
}

TEST_F(SyncWindowTest, CancelEndsTheCompareAtTheNextFileAndSortsNothing) {
    for (const char* name : {"A.SXS", "B.SXS", "C.SXS"}) WriteDated(tmp, std::string("local/") + name, "x", T);
    int found = 0;
    window.onFound = [&](const std::string&) {
        EXPECT_TRUE(window.Running());
        EXPECT_TRUE(Button("cmdCancel")->isEnabled());
        EXPECT_FALSE(Button("cmdCompare")->isEnabled());
        if (++found == 1) test::Click(Button("cmdCancel"));
    };
    window.Compare();
    EXPECT_EQ(found, 1);
    EXPECT_FALSE(window.Running());
    EXPECT_EQ(List("lvNewerLocal")->topLevelItemCount(), 0);
    EXPECT_TRUE(Status().contains("Compare cancelled")) << Status().toStdString();
    EXPECT_FALSE(Button("cmdSynchronise")->isEnabled());

    window.onFound = nullptr;
    window.Compare();
    EXPECT_EQ(List("lvNewerLocal")->topLevelItemCount(), 3) << "a new compare starts afresh";
}

TEST_F(SyncWindowTest, ACopyThatFailsIsListedAndLogged) {
    WriteDated(tmp, "local/Site.SXS", "here", T + 60);
    WriteDated(tmp, "remote/Site.SXS", "there", T);
    window.Compare();
    ASSERT_EQ(List("lvNewerLocal")->topLevelItemCount(), 1);
    test::Click(Button("cmdUpdateAllLocal"));
    // The remote side's folder becomes a plain file: the copy cannot land.
    fs::remove_all(tmp.File("remote"));
    tmp.Write("remote", "not a folder");
    window.Synchronise();
    EXPECT_TRUE(Column(List("lvErrors"), 0).contains("Error"));
    EXPECT_EQ(TempDir::Read(tmp.File("local/Site.SXS")), "here");
    EXPECT_NE(TempDir::Read(tmp.File("ErrorLog.txt")).find("SyncWindow:"), std::string::npos);
}

TEST_F(SyncWindowTest, EscapeClosesTheWindowAsItClosesADialog) {
    ASSERT_TRUE(test::ShowActive(&window));
    QWidget* focused = QApplication::focusWidget();
    QTest::keyClick(focused ? focused : &window, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

TEST(SyncWindowTimeNote, NamesOnlyDifferencesThatAreProbablyNotEdits) {
    TempDir tmp;
    const auto at = [&](const char* name, std::time_t t) { return FileInfo::FromPath(WriteDated(tmp, name, "x", t)); };
    const FileInfo base = at("a", T);
    EXPECT_TRUE(SyncWindow::TimeNote(base, at("b", T + 3600)).contains("daylight-saving"));
    EXPECT_TRUE(SyncWindow::TimeNote(at("c", T - 3600), base).contains("daylight-saving"));
    EXPECT_TRUE(SyncWindow::TimeNote(base, at("d", T + 2)).contains("FAT"));
    EXPECT_TRUE(SyncWindow::TimeNote(base, at("e", T)).isEmpty());
    EXPECT_TRUE(SyncWindow::TimeNote(base, at("f", T + 3)).isEmpty());
    EXPECT_TRUE(SyncWindow::TimeNote(base, at("g", T + 3599)).isEmpty());
    EXPECT_TRUE(SyncWindow::TimeNote(base, FileInfo::None()).isEmpty());
}
