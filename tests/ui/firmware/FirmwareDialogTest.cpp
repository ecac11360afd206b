// The firmware upgrade dialog over a scripted logger, its prompts answered by a script and its
// failures logged to a file in a temporary folder.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>

#include <meridex/firmware/FirmwareImage.h>
#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/FileOps.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/firmware/LoggerLinks.h>
#include <meridex/ui/firmware/frmFirmware.h>

#include "DialogTest.h"
#include "SimulatorProcess.h"
#include "TempDir.h"

using namespace meridex;
using namespace meridex::test;
using meridex::ui::frmFirmware;

namespace {

// A logger that answers from a script: it reports its progress in ten steps and may be told to fail.
class ScriptedLogger : public Logger {
public:
    std::string Description() const override { return "scripted"; }
    UpgradeResult Identify() override {
        if (silent) return {UpgradeStatus::NoAnswer, "The logger did not answer while identifying it (scripted).", {}};
        return {UpgradeStatus::Ok, {}, identity};
    }
    UpgradeResult LoadFirmware(const FirmwareImage& image, UpgradeEvents* events) override {
        loaded.push_back(image.Version());
        for (int i = 1; i <= 10; ++i) {
            if (events) events->Progress(UpgradeStep::Write, i * image.Size() / 10, image.Size());
            if (onBlock) onBlock(i);
            if (events && events->CancelRequested()) {
                identity.inLoader = true;
                return {UpgradeStatus::Cancelled, "Upgrade cancelled. The logger is waiting in its loader.", identity};
            }
        }
        if (fail) return {UpgradeStatus::LinkLost, "The link to the logger was lost at block 3 of 10.", identity};
        identity.firmwareVersion = image.Version();
        return {UpgradeStatus::Ok, "The logger now runs firmware " + image.Version() + ".", identity};
    }

    LoggerIdentity identity{"WL400", "7001", "1.5.0", false, "1.0"};
    bool silent = false;
    bool fail = false;
    std::function<void(int)> onBlock;
    std::vector<std::string> loaded;
};

class FirmwareDialog : public ::testing::Test {
protected:
    void SetUp() override {
        auto write = [&](const std::string& name, std::vector<std::string> models, const std::string& version) {
            dir_.Write("fw/" + name, FirmwareImage::Make(std::move(models), version, "2026-02-0" + version.substr(0, 1),
                                                         std::string(4096, 'f')).Serialize());
        };
        write("wl-1.2.mxfw", {"WL400"}, "1.2.0");
        write("wl-1.5.mxfw", {"WL400", "WL410"}, "1.5.0");
        write("wl-2.0.mxfw", {"WL400"}, "2.0.0");
        write("rg-3.0.mxfw", {"RG200"}, "3.0.0");
        dir_.Write("fw/broken.mxfw", "MXFW not really");
        handler_.setErrorLogFile(dir_.File("MeridexAppLibrary.log"));
        handler_.setLogErrors(true);
    }
    void Open(Logger* logger = nullptr) {
        form_ = std::make_unique<frmFirmware>(ui_);
        form_->setLogger(logger ? logger : &logger_);
        form_->setErrHandler(&handler_);
        form_->setFirmwareFilesPath(dir_.File("fw"));
        ASSERT_TRUE(ShowActive(form_.get()));
        form_->Form_Load();
    }
    template <class T>
    T* Control(const char* name) const {
        return Child<T>(form_.get(), name);
    }
    QTreeWidget* Files() const { return Control<QTreeWidget>("lvFiles"); }
    void SelectRow(int row) { Files()->setCurrentItem(Files()->topLevelItem(row)); }
    QString Label(const char* name) const { return Control<QLabel>(name)->text(); }
    // The logger as the dialog shows it, and whether Upgrade can be pressed.
    std::string Shown() const {
        return (Label("lblModel") + " " + Label("lblSerial") + " " + Label("lblVersion") + ", " + Label("lblMode") +
                (Control<QPushButton>("cmdUpgrade")->isEnabled() ? ", upgrade" : ", no upgrade"))
            .toStdString();
    }
    std::string Log() const {
        std::string text;
        FileOps::ReadWholeFile(dir_.File("MeridexAppLibrary.log"), text);
        return text;
    }

    TempDir dir_;
    std::shared_ptr<RecordingUserInterface> ui_ = std::make_shared<RecordingUserInterface>();
    ErrorHandler handler_;
    ScriptedLogger logger_;
    std::unique_ptr<frmFirmware> form_;
};

TEST_F(FirmwareDialog, ShowsTheLoggerAndOffersOnlyItsFilesNewestFirstWithTheRunningOneMarked) {
    Open();
    EXPECT_EQ(Shown(), "WL400 7001 1.5.0, Running its firmware, upgrade");
    EXPECT_EQ(ItemKeys(Files())[0], QString::fromStdString(dir_.File("fw/wl-2.0.mxfw")));  // a row's key is its file
    EXPECT_EQ(ImageKeysOf(Files()), (QStringList{"FIRMWARE", "FIRMWARERUNNING", "FIRMWARE"}));
    EXPECT_EQ(Texts(Files()), (QStringList{"2.0.0", "1.5.0 (running)", "1.2.0"}));
    EXPECT_EQ(Files()->topLevelItem(0)->text(2), "4 KiB");
    // The damaged file is not offered, and is logged with the routine that met it.
    EXPECT_NE(Log().find("Error in subroutine frmFirmware:LoadFirmwareFiles - 321 : Invalid file format"), std::string::npos)
        << Log();
    const std::string once = Log();
    form_->LoadFirmwareFiles();  // listed again: the same refusal is not logged twice
    EXPECT_EQ(Log(), once);
}

TEST_F(FirmwareDialog, AnUpgradeRunsAtOnceButADowngradeOrTheRunningVersionAsksFirst) {
    Open();
    Click(Control<QPushButton>("cmdUpgrade"));  // 2.0.0, newer: no question
    EXPECT_TRUE(ui_->Messages().empty());
    EXPECT_EQ(logger_.loaded, std::vector<std::string>{"2.0.0"});
    EXPECT_EQ(Label("lblResult"), "The logger now runs firmware 2.0.0.");
    EXPECT_EQ(Control<QProgressBar>("pbProgress")->value(), 100);
    EXPECT_EQ(Label("lblVersion"), "2.0.0");  // identified again afterwards

    SelectRow(2);  // 1.2.0 under 2.0.0: a downgrade
    ui_->QueueMessageResult(MessageResult::No);
    Click(Control<QPushButton>("cmdUpgrade"));
    SelectRow(0);  // 2.0.0 again, now the running version
    ui_->QueueMessageResult(MessageResult::Yes);
    Click(Control<QPushButton>("cmdUpgrade"));
    // The downgrade declined loads nothing; the running version accepted loads again.
    EXPECT_EQ(logger_.loaded, (std::vector<std::string>{"2.0.0", "2.0.0"}));
    ASSERT_EQ(ui_->Messages().size(), 2u);
    EXPECT_NE(ui_->Messages()[0].text.find("older"), std::string::npos);
    EXPECT_NE(ui_->Messages()[1].text.find("already runs"), std::string::npos);
    EXPECT_EQ(ui_->Messages()[0].buttons, MessageButtons::YesNo);
    EXPECT_EQ(Log().find("cmdUpgrade_Click"), std::string::npos);
}

TEST_F(FirmwareDialog, BrowsingToAMissingPathLogsFileNotFoundAndAnotherFolderIsListed) {
    Open();
    ui_->QueueInput(dir_.File("nowhere"));
    Click(Control<QPushButton>("cmdBrowse"));
    EXPECT_NE(Log().find(", Error in subroutine frmFirmware:cmdBrowse_Click - 53 : File not found\r\n"), std::string::npos)
        << Log();
    EXPECT_EQ(form_->FirmwareFilesPath(), dir_.File("fw"));  // unchanged

    ui_->QueueInput(dir_.File("fw/wl-1.2.mxfw"));  // one chosen file
    Click(Control<QPushButton>("cmdBrowse"));
    EXPECT_EQ(ItemKeys(Files()), QStringList{QString::fromStdString(dir_.File("fw/wl-1.2.mxfw"))});
    ui_->QueueInput(std::nullopt);  // cancelled: nothing changes
    Click(Control<QPushButton>("cmdBrowse"));
    EXPECT_EQ(Files()->topLevelItemCount(), 1);
}

TEST_F(FirmwareDialog, FailuresAreLoggedWithTheirContextAndCancelStopsTheUpgrade) {
    logger_.fail = true;
    Open();
    Click(Control<QPushButton>("cmdUpgrade"));
    EXPECT_EQ(form_->LastResult().status, UpgradeStatus::LinkLost);
    EXPECT_NE(Log().find("frmFirmware:cmdUpgrade_Click - 57 : The link to the logger was lost at block 3 of 10."),
              std::string::npos)
        << Log();

    // Cancel pressed while blocks go: the upgrade stops, says where the logger is, and logs nothing.
    logger_.fail = false;
    logger_.onBlock = [&](int block) {
        EXPECT_EQ(Control<QPushButton>("cmdCancel")->text(), "&Cancel");
        if (block == 4) Click(Control<QPushButton>("cmdCancel"));
    };
    const std::string before = Log();
    Click(Control<QPushButton>("cmdUpgrade"));
    EXPECT_EQ(form_->LastResult().status, UpgradeStatus::Cancelled);
    EXPECT_NE(Label("lblResult").indexOf("waiting in its loader"), -1);
    EXPECT_EQ(Label("lblMode"), "Waiting in its loader");
    EXPECT_EQ(Log(), before);
    EXPECT_TRUE(form_->isVisible());  // Cancel during an upgrade does not close the dialog
    Click(Control<QPushButton>("cmdCancel"));
    EXPECT_FALSE(form_->isVisible());
}

TEST_F(FirmwareDialog, ALoggerThatDoesNotAnswerIsLoggedAndNothingIsOffered) {
    logger_.silent = true;
    Open();
    EXPECT_EQ(Shown(), "  , Not identified, no upgrade");
    EXPECT_EQ(Files()->topLevelItemCount(), 0);
    EXPECT_NE(Log().find("frmFirmware:IdentifyLogger - 57 : The logger did not answer"), std::string::npos) << Log();
}

TEST_F(FirmwareDialog, UpgradesTheSimulatedLoggerAndACancelledOneIsCompletedByTheNext) {
    SimulatorProcess sim({"--flash", dir_.File("flash.bin"), "--tcp", "0", "--model", "WL400", "--serial", "88123",
                          "--version", "1.2.0", "--block-size", "256"});
    ASSERT_TRUE(sim.Ready());
    std::string error;
    std::unique_ptr<LinkLogger> link = LoggerLinks::OpenTcp("127.0.0.1", sim.Port(), error);
    ASSERT_TRUE(link) << error;
    Open(link.get());
    EXPECT_EQ(Shown(), "WL400 88123 1.2.0, Running its firmware, upgrade");
    EXPECT_EQ(Texts(Files()), (QStringList{"2.0.0", "1.5.0", "1.2.0 (running)"}));

    // An upgrade cancelled once the write has begun leaves the logger in its loader; the dialog shows it so.
    struct CancelWhileWriting : UpgradeEvents {
        void Progress(UpgradeStep step, std::uint64_t done, std::uint64_t) override { stop = step == UpgradeStep::Write && done > 0; }
        bool CancelRequested() override { return stop; }
        bool stop = false;
    } cancel;
    EXPECT_EQ(link->LoadFirmware(FirmwareImage::Read(dir_.File("fw/wl-2.0.mxfw")), &cancel).status,
              UpgradeStatus::Cancelled);
    form_->Form_Load();
    EXPECT_EQ(Label("lblMode"), "Waiting in its loader");

    SelectRow(0);
    Click(Control<QPushButton>("cmdUpgrade"));
    EXPECT_EQ(form_->LastResult().status, UpgradeStatus::Ok) << form_->LastResult().message;
    EXPECT_EQ(Shown(), "WL400 88123 2.0.0, Running its firmware, upgrade");
    EXPECT_EQ(Texts(Files())[0], "2.0.0 (running)");
    EXPECT_EQ(Log().find("cmdUpgrade_Click"), std::string::npos) << Log();
}

TEST(UpgradeFirmwareForm, ItsOwnHandlerLogsBesideTheLibrary) {
    auto handler = ui::UpgradeFirmwareForm::DefaultErrorHandler();
    EXPECT_TRUE(handler->LogErrors());
    EXPECT_FALSE(handler->DisplayErrorMsg());
    EXPECT_EQ(std::filesystem::path(handler->ErrorLogFile()).filename(), "MeridexAppLibrary.log");
    EXPECT_TRUE(std::filesystem::is_directory(std::filesystem::path(handler->ErrorLogFile()).parent_path()));
}

}  // namespace
