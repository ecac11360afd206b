// The firmware upgrade dialog: a logger identified with its files offered, loading, and after an upgrade.
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>

#include <meridex/firmware/FirmwareImage.h>
#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/ui/firmware/frmFirmware.h>

#include "Scene.h"
#include "TempDir.h"

using namespace meridex;
using namespace meridex::ui;

namespace {

class SceneLogger : public Logger {
public:
    std::string Description() const override { return "COM3 (/dev/ttyUSB0)"; }
    UpgradeResult Identify() override { return {UpgradeStatus::Ok, {}, identity}; }
    UpgradeResult LoadFirmware(const FirmwareImage& image, UpgradeEvents*) override {
        identity.firmwareVersion = image.Version();
        return {UpgradeStatus::Ok, "The logger WL400 2024117 now runs firmware " + image.Version() + ".", identity};
    }
    LoggerIdentity identity{"WL400", "2024117", "2.3.0", false, "1.1"};
};

// A dialog that owns its logger, its error log and a firmware folder of four files.
class SceneFirmware : public frmFirmware {
public:
    enum class State { Offered, Loading, Upgraded };
    explicit SceneFirmware(State state) : frmFirmware(std::make_shared<RecordingUserInterface>()) {
        const struct {
            const char* name;
            const char* version;
            const char* date;
            std::size_t size;
        } files[] = {{"wl400-2.4.1.mxfw", "2.4.1", "2026-09-14", 262144},
                     {"wl400-2.3.0.mxfw", "2.3.0", "2026-03-02", 258048},
                     {"wl400-2.1.7.mxfw", "2.1.7", "2025-11-20", 251904}};
        for (const auto& f : files)
            dir_.Write(std::string("firmware/") + f.name,
                       FirmwareImage::Make({"WL400", "WL410"}, f.version, f.date, std::string(f.size, 'x')).Serialize());
        dir_.Write("firmware/rg200-5.0.mxfw", FirmwareImage::Make({"RG200"}, "5.0", "", "x").Serialize());
        handler_.setErrorLogFile(dir_.File("MeridexAppLibrary.log"));
        handler_.setLogErrors(true);
        setLogger(&logger_);
        setErrHandler(&handler_);
        setFirmwareFilesPath(dir_.File("firmware"));
        Form_Load();
        if (state == State::Upgraded) cmdUpgrade_Click();
        if (state == State::Loading) {  // as the dialog stands between two blocks
            lblStep->setText(QString::fromStdString(UpgradeStepText(UpgradeStep::Write, 104448, 262144)));
            pbProgress->setValue(UpgradePercent(UpgradeStep::Write, 104448, 262144));
            cmdCancel->setText("&Cancel");
            cmdUpgrade->setEnabled(false);
            cmdBrowse->setEnabled(false);
            lvFiles->setEnabled(false);
        }
        lblFolder->setText("/srv/field/firmware");  // a stable path in the picture
    }

private:
    test::TempDir dir_;
    SceneLogger logger_;
    ErrorHandler handler_;
};

}  // namespace

MERIDEX_SCENE("frmFirmware") { return std::make_unique<SceneFirmware>(SceneFirmware::State::Offered); }

MERIDEX_SCENE("frmFirmware-loading") { return std::make_unique<SceneFirmware>(SceneFirmware::State::Loading); }

MERIDEX_SCENE("frmFirmware-upgraded") { return std::make_unique<SceneFirmware>(SceneFirmware::State::Upgraded); }
