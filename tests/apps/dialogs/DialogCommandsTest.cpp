// meridex-dialogs' commands as a script uses them: each opens its dialog on the files given, and
// answers through its exit status and what it prints.
#include <gtest/gtest.h>

#include <filesystem>

#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

#include "CommsTestSupport.h"
#include "DialogTest.h"
#include "DialogCommand.h"
#include "TempDir.h"
#include <meridex/ui/Install.h>

using namespace meridex;
using namespace meridex::test;

namespace {

const dialogs::DialogCommand& Command(const std::string& name) {
    for (const dialogs::DialogCommand& command : dialogs::Commands())
        if (command.name == name) return command;
    throw std::runtime_error("no command " + name);
}

// The test program's main keeps every configuration folder in a scratch folder.
struct DialogCommands : ::testing::Test {
    // As the program does once its QApplication is made.
    DialogCommands() { ui::InstallQtDialogs(); }

    // Runs the command while script answers its dialogs; out gets what it printed.
    int Run(const std::string& name, const std::vector<std::string>& arguments, ModalScript& script) {
        int status = -1;
        ::testing::internal::CaptureStdout();
        script.Run([&] { status = Command(name).run(arguments); });
        out = ::testing::internal::GetCapturedStdout();
        return status;
    }

    TempDir dir;
    std::string out;
};

const char* const kBook =
    "<V4ADDRESSBOOK><GROUP><NAME>North</NAME><KEY>North</KEY><PATH>\\North</PATH>"
    "<SITE><NAME>Weir</NAME><KEY>Weir</KEY><PATH>\\North\\Weir</PATH>"
    "<PROFILE><NAME>Modem</NAME><TYPE>RS232</TYPE><METHOD>PHONEMODEM</METHOD><PHONENUMBER>0123</PHONENUMBER>"
    "</PROFILE></SITE></GROUP></V4ADDRESSBOOK>";

}  // namespace

TEST_F(DialogCommands, SelectSitePrintsTheChosenSitesProfileAndAnswers1WhenNoneIsChosen) {
    const std::string book = dir.Write("AddressBook.xml", kBook);
    ModalScript chosen;
    chosen.Then([](QWidget* modal) { QTest::keyClick(Child<QTreeWidget>(modal, "tvGroups"), Qt::Key_Return); });
    EXPECT_EQ(Run("select-site", {book}, chosen), 0);
    EXPECT_EQ(out, "NAME = Modem\nTYPE = RS232\nMETHOD = PHONEMODEM\nPHONENUMBER = 0123\n");

    ModalScript cancelled;
    cancelled.Then([](QWidget* modal) { QTest::keyClick(Child<QTreeWidget>(modal, "tvGroups"), Qt::Key_Escape); });
    EXPECT_EQ(Run("select-site", {book}, cancelled), 1);
    EXPECT_EQ(out, "");
    EXPECT_EQ(TempDir::Read(book), kBook) << "choosing changes nothing";
}

TEST_F(DialogCommands, SelectDevicePrintsTheProfilesXmlAndLeavesTheMapAsItWas) {
    const std::string map = dir.File("CommsProfiles.xml");
    {
        CommsFixture comms{1};
        auto manager = comms.Manager();
        manager->AddTCPConnection();
        ASSERT_TRUE(manager->SaveXMLMapFile(map));
        manager->setMapFile({});
    }
    const std::string before = TempDir::Read(map);
    ModalScript script;
    script.Then([](QWidget* modal) {
        auto* devices = Child<QTreeWidget>(modal, "tvDevices");
        DoubleClickRow(devices, devices->topLevelItem(0)->child(devices->topLevelItem(0)->childCount() - 1));
    });
    EXPECT_EQ(Run("select-device", {map}, script), 0);
    EXPECT_NE(out.find("<METHOD>TCP</METHOD>"), std::string::npos) << out;
    EXPECT_EQ(out.rfind("<PROFILE>", 0), 0u) << out;
    EXPECT_EQ(TempDir::Read(map), before);
}

TEST_F(DialogCommands, TheMapEditorSavesNothingWhenCancelled) {
    const std::string map = dir.Write("CommsProfiles.xml", "<COMMSPROFILES><PROFILE><NAME>Old</NAME></PROFILE></COMMSPROFILES>");
    ModalScript script;
    script.Then([](QWidget* modal) {
        EXPECT_EQ(modal->objectName(), "frmCommsMap");
        Click(Child<QPushButton>(modal, "cmdCancel"));
    });
    EXPECT_EQ(Run("commsmap", {map}, script), 0);
    EXPECT_EQ(TempDir::Read(map), "<COMMSPROFILES><PROFILE><NAME>Old</NAME></PROFILE></COMMSPROFILES>");
}

TEST_F(DialogCommands, TheAddressBookIsSavedWhenTheEditorClosesAndABadOptionOpensNothing) {
    const std::string book = dir.File("New.xml");
    ModalScript none;
    EXPECT_EQ(Run("addressbook", {book, "--mapp", "x.xml"}, none), 2);
    EXPECT_FALSE(std::filesystem::exists(book));

    ModalScript script;
    script.Then([](QWidget* editor) {
        EXPECT_EQ(editor->objectName(), "frmAddressBook");
        Child<QAction>(editor, "mnuExit")->trigger();
    });
    EXPECT_EQ(Run("addressbook", {book, "--map", dir.File("missing-map.xml")}, script), 0);
    EXPECT_NE(TempDir::Read(book).find("<V4ADDRESSBOOK"), std::string::npos);
}

TEST_F(DialogCommands, PasswordsAndInputAnswerThroughTheirExitStatus) {
    const auto enter = [](const char* typed) {
        return [typed](QWidget* modal) {
            Type(Child<QLineEdit>(modal, "txtPassword"), typed);
            Click(Child<QPushButton>(modal, "cmdOK"));
        };
    };
    ModalScript right, wrong;
    right.Then(enter("s3cret"));
    wrong.Then(enter("guess"));
    EXPECT_EQ(Run("enter-password", {"s3cret"}, right), 0);
    EXPECT_EQ(Run("enter-password", {"s3cret"}, wrong), 1);

    ModalScript typed, cancelled;
    typed.Then([](QWidget* modal) {
        Type(Child<QLineEdit>(modal, "txtInput"), "12a3");
        Click(Child<QPushButton>(modal, "cmdOK"));
    });
    EXPECT_EQ(Run("input", {"Port number", "Port", "3", "--numbers"}, typed), 0);
    EXPECT_EQ(out, "123\n") << "numbers only, three at most";
    cancelled.Then([](QWidget* modal) { Click(Child<QPushButton>(modal, "cmdCancel")); });
    EXPECT_EQ(Run("input", {"Name"}, cancelled), 1);
    EXPECT_EQ(out, "");
}
