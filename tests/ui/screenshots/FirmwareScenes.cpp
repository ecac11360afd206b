// The firmware upgrade dialog: a logger identified with its files offered, and after an upgrade.
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
    explicit SceneFirmware(bool upgraded) : frmFirmware(std::make_shared<RecordingUserInterface>()) {
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
        if (upgraded) cmdUpgrade_Click();
        lblFolder->setText("/srv/field/firmware");  // a stable path in the picture
    }

private:
    test::TempDir dir_;
    SceneLogger logger_;
    ErrorHandler handler_;
};

}  // namespace

MERIDEX_SCENE("frmFirmware") { return std::make_unique<SceneFirmware>(false); }

MERIDEX_SCENE("frmFirmware-upgraded") { return std::make_unique<SceneFirmware>(true); }
