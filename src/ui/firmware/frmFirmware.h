#pragma once
#include <meridex/ui/Export.h>
#include <functional>
#include <memory>
#include <set>
#include <string>

#include <QDialog>

#include <meridex/firmware/FirmwareFolder.h>
#include <meridex/firmware/Logger.h>
#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/UserInterface.h>

class QLabel;
class QProgressBar;
class QPushButton;
class QTreeWidget;

namespace meridex::ui {

/// The firmware upgrade dialog: shows who the connected logger is (`lblModel`, `lblSerial`,
/// `lblVersion`, `lblMode`), offers the firmware files for its model from the firmware folder
/// (`lvFiles`: version, date, size, file; newest first, the running version marked), lets the person
/// pick another folder or file (`cmdBrowse`), loads the chosen file (`cmdUpgrade`) with the step in
/// `lblStep`, `pbProgress` and `cmdCancel`, and says how it ended in `lblResult`. Loading over the
/// running version or an older one is confirmed first. Every trapped failure goes to the error
/// handler as LogError(number, description, "frmFirmware:routine").
class MERIDEX_UI_EXPORT frmFirmware : public QDialog {
    Q_OBJECT
public:
    /// Prompts go to ui; a null ui means the interface installed at the time of each prompt.
    explicit frmFirmware(std::shared_ptr<UserInterface> ui = nullptr, QWidget* parent = nullptr);
    ~frmFirmware() override;

    /// The logger to identify and upgrade; it must outlive the dialog.
    void setLogger(Logger* logger) { logger_ = logger; }
    /// Where failures are logged; it must outlive the dialog.
    void setErrHandler(ErrorHandler* handler) { errHandler_ = handler; }
    /// The folder (or file) whose firmware files are offered.
    void setFirmwareFilesPath(const std::string& path) { firmwareFilesPath_ = path; }
    /// The folder (or file) whose firmware files are offered.
    const std::string& FirmwareFilesPath() const noexcept { return firmwareFilesPath_; }

    /// Identifies the logger and lists the files for it.
    void Form_Load();
    /// Asks the logger who it is and shows it.
    void IdentifyLogger();
    /// Lists the files of the firmware folder that fit the logger.
    void LoadFirmwareFiles();
    /// Asks for another folder or firmware file; one that is not there is logged as error 53.
    void cmdBrowse_Click();
    /// Loads the selected file into the logger, after confirmation for a downgrade or the running version.
    void cmdUpgrade_Click();
    /// While loading: asks the upgrade to stop at the next block. Otherwise closes the dialog.
    void cmdCancel_Click();
    /// The selection changed: the upgrade button follows it.
    void lvFiles_ItemClick();

    /// True while a file is being loaded.
    bool Busy() const noexcept { return busy_; }
    /// How the last upgrade ended (Ok before any).
    const UpgradeResult& LastResult() const noexcept { return last_; }

    /// The logger's model.

    QLabel* lblModel = nullptr;
    /// The logger's serial number.
    QLabel* lblSerial = nullptr;
    /// The firmware version the logger runs.
    QLabel* lblVersion = nullptr;
    /// Whether the logger runs its application or waits in its loader.
    QLabel* lblMode = nullptr;
    /// The firmware folder (or file) offered.
    QLabel* lblFolder = nullptr;
    /// The firmware files that fit the logger, newest first.
    QTreeWidget* lvFiles = nullptr;
    /// Browse: another folder or file.
    QPushButton* cmdBrowse = nullptr;
    /// Upgrade: loads the selected file.
    QPushButton* cmdUpgrade = nullptr;
    /// The step of the upgrade in progress.
    QLabel* lblStep = nullptr;
    /// The blocks loaded so far.
    QProgressBar* pbProgress = nullptr;
    /// How the last upgrade ended.
    QLabel* lblResult = nullptr;
    /// Cancel: stops a load at the next block, else closes.
    QPushButton* cmdCancel = nullptr;

protected:
    /// The close box, while loading, asks the load to stop at the next block and keeps the window open.
    void closeEvent(QCloseEvent* event) override;
    /// Escape, while loading, asks the load to stop; otherwise it closes the dialog.
    void reject() override;

private:
    std::shared_ptr<UserInterface> ui() const;
    // Runs a handler's body; a failure is logged with its context and ends the handler.
    void Guard(const char* context, const std::function<void()>& body);
    void Log(std::int32_t number, const std::string& description, const char* context);
    void BuildControls();
    void ShowResult(const UpgradeResult& result);

    std::shared_ptr<UserInterface> ui_;
    Logger* logger_ = nullptr;
    ErrorHandler* errHandler_ = nullptr;
    std::string firmwareFilesPath_;
    LoggerIdentity identity_;
    bool identified_ = false;
    std::vector<FirmwareFolder::Offer> offers_;
    std::set<std::string> refusalsLogged_;  // a refused file is logged once, not at every listing
    UpgradeResult last_;
    bool busy_ = false;
    bool cancelRequested_ = false;
    bool filling_ = false;
};

/// Opens the firmware upgrade dialog.
class MERIDEX_UI_EXPORT UpgradeFirmwareForm {
public:
    /// Shows frmFirmware modally over parent for logger with the files of firmwareFilesPath. A null
    /// errHandler means one that logs to "MeridexAppLibrary.log" in the folder of the library's file
    /// (LogErrors true, DisplayErrorMsg false). Returns when the dialog has closed.
    static void ShowUpgradeFirmware(Logger* logger, ErrorHandler* errHandler, const std::string& firmwareFilesPath,
                                    QWidget* parent = nullptr, std::shared_ptr<UserInterface> ui = nullptr);
    /// The handler the dialog uses when given none.
    static std::unique_ptr<ErrorHandler> DefaultErrorHandler();
};

}  // namespace meridex::ui
