#include <meridex/ui/firmware/frmFirmware.h>

#include <QCloseEvent>
#include <QCoreApplication>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <filesystem>

#include <meridex/firmware/FirmwareVersion.h>
#include <meridex/frame/Error.h>
#include <meridex/platform/Platform.h>
#include <meridex/ui/frame/ImageKeys.h>
#include <meridex/ui/frame/Trap.h>

namespace meridex::ui {
namespace {

// Error numbers of failures the upgrade reports: a refused file, and a failed exchange with the logger.
constexpr std::int32_t kDeviceIOError = 57;

QString Q(const std::string& text) { return QString::fromStdString(text); }

std::string SizeText(std::uint64_t bytes) {
    if (bytes >= 1024 * 1024) return std::to_string((bytes * 10 / (1024 * 1024)) / 10) + "." +
                                     std::to_string((bytes * 10 / (1024 * 1024)) % 10) + " MiB";
    if (bytes >= 1024) return std::to_string((bytes + 512) / 1024) + " KiB";
    return std::to_string(bytes) + " bytes";
}

class Filling {
public:
    explicit Filling(bool& flag) : flag_(flag), was_(flag) { flag_ = true; }
    ~Filling() { flag_ = was_; }

private:
    bool& flag_;
    bool was_;
};

// Shows the upgrade's progress in the dialog and lets the person's Cancel through.
class DialogEvents : public UpgradeEvents {
public:
    DialogEvents(QLabel* step, QProgressBar* bar, const bool& cancel) : step_(step), bar_(bar), cancel_(cancel) {}
    void Progress(UpgradeStep step, std::uint64_t done, std::uint64_t total) override {
        step_->setText(Q(UpgradeStepText(step, done, total)));
        bar_->setValue(UpgradePercent(step, done, total));
        QCoreApplication::processEvents();  // repaint, and take a click on Cancel
    }
    bool CancelRequested() override {
        QCoreApplication::processEvents();
        return cancel_;
    }

private:
    QLabel* step_;
    QProgressBar* bar_;
    const bool& cancel_;
};

}  // namespace

frmFirmware::frmFirmware(std::shared_ptr<UserInterface> ui, QWidget* parent) : QDialog(parent), ui_(std::move(ui)) {
    setObjectName("frmFirmware");
    setWindowTitle("Upgrade Logger Firmware");
    BuildControls();
    connect(cmdBrowse, &QPushButton::clicked, this, [this] { cmdBrowse_Click(); });
    connect(cmdUpgrade, &QPushButton::clicked, this, [this] { cmdUpgrade_Click(); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { cmdCancel_Click(); });
    connect(lvFiles, &QTreeWidget::currentItemChanged, this, [this] {
        if (!filling_) lvFiles_ItemClick();
    });
}

frmFirmware::~frmFirmware() = default;

void frmFirmware::BuildControls() {
    auto* loggerFrame = new QGroupBox("Logger", this);
    loggerFrame->setObjectName("fraLogger");
    auto* form = new QFormLayout(loggerFrame);
    auto label = [this](const char* name) {
        auto* l = new QLabel(this);
        l->setObjectName(name);
        l->setTextInteractionFlags(Qt::TextSelectableByMouse);
        return l;
    };
    lblModel = label("lblModel");
    lblSerial = label("lblSerial");
    lblVersion = label("lblVersion");
    lblMode = label("lblMode");
    form->addRow("Model:", lblModel);
    form->addRow("Serial number:", lblSerial);
    form->addRow("Firmware:", lblVersion);
    form->addRow("State:", lblMode);

    auto* filesFrame = new QGroupBox("Firmware files", this);
    filesFrame->setObjectName("fraFiles");
    auto* files = new QVBoxLayout(filesFrame);
    auto* folderRow = new QHBoxLayout;
    lblFolder = label("lblFolder");
    lblFolder->setWordWrap(true);
    cmdBrowse = new QPushButton("&Browse...", this);
    cmdBrowse->setObjectName("cmdBrowse");
    folderRow->addWidget(lblFolder, 1);
    folderRow->addWidget(cmdBrowse);
    files->addLayout(folderRow);
    lvFiles = new QTreeWidget(this);
    lvFiles->setObjectName("lvFiles");
    lvFiles->setAccessibleName(filesFrame->title());
    lvFiles->setRootIsDecorated(false);
    lvFiles->setHeaderLabels({"Version", "Date", "Size", "File"});
    lvFiles->setMinimumSize(460, 140);
    lvFiles->header()->setStretchLastSection(true);
    files->addWidget(lvFiles);
    setTabOrder(lvFiles, cmdBrowse);  // the list of files first: the focus starts there

    lblStep = label("lblStep");
    pbProgress = new QProgressBar(this);
    pbProgress->setObjectName("pbProgress");
    pbProgress->setRange(0, 100);
    pbProgress->setValue(0);
    pbProgress->setTextVisible(false);  // the step above says how far the write is; two figures would disagree
    lblResult = label("lblResult");
    lblResult->setWordWrap(true);

    cmdUpgrade = new QPushButton("&Upgrade", this);
    cmdUpgrade->setObjectName("cmdUpgrade");
    cmdUpgrade->setEnabled(false);
    cmdCancel = new QPushButton("Close", this);
    cmdCancel->setObjectName("cmdCancel");
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdUpgrade);
    buttons->addWidget(cmdCancel);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(loggerFrame);
    layout->addWidget(filesFrame, 1);
    layout->addWidget(lblStep);
    layout->addWidget(pbProgress);
    layout->addWidget(lblResult);
    layout->addLayout(buttons);
    resize(620, 480);
}

std::shared_ptr<UserInterface> frmFirmware::ui() const { return ui_ ? ui_ : UserInterface::Current(); }

void frmFirmware::Log(std::int32_t number, const std::string& description, const char* context) {
    if (errHandler_) errHandler_->LogError(number, description, context);
}

void frmFirmware::Guard(const char* context, const std::function<void()>& body) {
    if (const auto failure = Trap(body)) Trap([&] { Log(failure->number, failure->description, context); });
}

void frmFirmware::Form_Load() {
    Guard("frmFirmware:Form_Load", [&] {
        IdentifyLogger();
        LoadFirmwareFiles();
    });
}

void frmFirmware::IdentifyLogger() {
    Guard("frmFirmware:IdentifyLogger", [&] {
        identified_ = false;
        identity_ = {};
        lblModel->clear();
        lblSerial->clear();
        lblVersion->clear();
        lblMode->clear();
        if (!logger_) throw Error(ErrorNumber::ObjectRequired, "frmFirmware", "Object required");
        lblMode->setText("Identifying...");
        QCoreApplication::processEvents();
        UpgradeResult r = logger_->Identify();
        if (!r.Ok()) {
            lblMode->setText("Not identified");
            lblResult->setText(Q(r.message));
            Log(kDeviceIOError, r.message, "frmFirmware:IdentifyLogger");
            return;
        }
        identity_ = r.identity;
        identified_ = true;
        lblModel->setText(Q(identity_.model));
        lblSerial->setText(Q(identity_.serialNumber));
        lblVersion->setText(identity_.firmwareVersion.empty() ? "(none)" : Q(identity_.firmwareVersion));
        lblMode->setText(identity_.inLoader ? "Waiting in its loader" : "Running its firmware");
    });
}

void frmFirmware::LoadFirmwareFiles() {
    Guard("frmFirmware:LoadFirmwareFiles", [&] {
        const Filling filling(filling_);
        lvFiles->clear();
        offers_.clear();
        lblFolder->setText(Q(firmwareFilesPath_));
        FirmwareFolder folder(firmwareFilesPath_);
        for (const FirmwareFolder::Refusal& refused : folder.Refused())
            if (refusalsLogged_.insert(refused.path).second)
                Log(refused.error.number, refused.error.description, "frmFirmware:LoadFirmwareFiles");
        if (identified_) offers_ = folder.OffersFor(identity_.model, identity_.firmwareVersion);
        for (const FirmwareFolder::Offer& offer : offers_) {
            const FirmwareImage& image = offer.image;
            auto* item = new QTreeWidgetItem(lvFiles);
            item->setText(0, Q(image.Version()) + (offer.Running() && !identity_.firmwareVersion.empty() ? " (running)" : ""));
            item->setText(1, Q(image.Date()));
            item->setText(2, Q(SizeText(image.Size())));
            item->setText(3, Q(std::filesystem::path(image.Path()).filename().string()));
            item->setToolTip(3, Q(image.Path()));
            setItemKey(item, Q(image.Path()));
            setImageKey(item, offer.Running() && !identity_.firmwareVersion.empty() ? "FIRMWARERUNNING" : "FIRMWARE");
        }
        for (int c = 0; c < 3; ++c) lvFiles->resizeColumnToContents(c);
        if (lvFiles->topLevelItemCount() > 0) lvFiles->setCurrentItem(lvFiles->topLevelItem(0));
        else if (identified_) lblResult->setText(Q("No firmware file for a " + identity_.model + " was found."));
        cmdUpgrade->setEnabled(!busy_ && lvFiles->currentItem() != nullptr);
    });
}

void frmFirmware::lvFiles_ItemClick() {
    Guard("frmFirmware:lvFiles_ItemClick", [&] { cmdUpgrade->setEnabled(!busy_ && lvFiles->currentItem() != nullptr); });
}

void frmFirmware::cmdBrowse_Click() {
    Guard("frmFirmware:cmdBrowse_Click", [&] {
        InputBoxOptions options;
        options.defaultText = firmwareFilesPath_;
        std::optional<std::string> path =
            ui()->InputBox("Firmware folder or file:", "Firmware Files", options);
        if (!path) return;
        std::error_code ec;
        if (path->empty() || !std::filesystem::exists(*path, ec))
            throw Error(ErrorNumber::FileNotFound, "frmFirmware", "File not found");
        firmwareFilesPath_ = *path;
        lblResult->clear();
        LoadFirmwareFiles();
    });
}

void frmFirmware::cmdUpgrade_Click() {
    Guard("frmFirmware:cmdUpgrade_Click", [&] {
        QTreeWidgetItem* item = lvFiles->currentItem();
        int row = item ? lvFiles->indexOfTopLevelItem(item) : -1;
        if (busy_ || !logger_ || row < 0 || row >= static_cast<int>(offers_.size())) return;
        const FirmwareFolder::Offer offer = offers_[static_cast<std::size_t>(row)];
        const FirmwareImage& image = offer.image;
        std::string question;
        if (!identity_.firmwareVersion.empty() && offer.comparison == 0)
            question = "The logger already runs firmware " + identity_.firmwareVersion + ". Load it again?";
        else if (!identity_.firmwareVersion.empty() && offer.comparison < 0)
            question = "Firmware " + image.Version() + " is older than the logger's " + identity_.firmwareVersion +
                       ". Load the older firmware?";
        if (!question.empty() &&
            ui()->MessageBox(question, MessageButtons::YesNo, MessageIcon::Question, {}, MessageDefaultButton::Second) !=
                MessageResult::Yes)
            return;

        busy_ = true;
        cancelRequested_ = false;
        cmdUpgrade->setEnabled(false);
        cmdBrowse->setEnabled(false);
        lvFiles->setEnabled(false);
        cmdCancel->setText("&Cancel");
        lblResult->clear();
        UpgradeResult r;
        {
            DialogEvents events(lblStep, pbProgress, cancelRequested_);
            r = logger_->LoadFirmware(image, &events);
        }
        busy_ = false;
        cmdCancel->setText("Close");
        cmdBrowse->setEnabled(true);
        lvFiles->setEnabled(true);
        ShowResult(r);
        if (!r.Ok() && r.status != UpgradeStatus::Cancelled)
            Log(r.status == UpgradeStatus::ImageRefused ? FirmwareImage::kInvalidFileFormat : kDeviceIOError, r.message,
                "frmFirmware:cmdUpgrade_Click");
        IdentifyLogger();
        LoadFirmwareFiles();
    });
}

void frmFirmware::ShowResult(const UpgradeResult& result) {
    last_ = result;
    pbProgress->setValue(result.Ok() ? 100 : pbProgress->value());
    lblStep->setText(result.Ok() ? "Done" : result.status == UpgradeStatus::Cancelled ? "Cancelled" : "Failed");
    lblResult->setText(Q(result.message));
}

void frmFirmware::cmdCancel_Click() {
    Guard("frmFirmware:cmdCancel_Click", [&] {
        if (busy_) cancelRequested_ = true;
        else accept();
    });
}

void frmFirmware::reject() {
    // Escape and the close box stop an upgrade rather than leave it running behind a closed window.
    if (busy_) cancelRequested_ = true;
    else QDialog::reject();
}

void frmFirmware::closeEvent(QCloseEvent* event) {
    if (busy_) {
        cancelRequested_ = true;
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

std::unique_ptr<ErrorHandler> UpgradeFirmwareForm::DefaultErrorHandler() {
    auto handler = std::make_unique<ErrorHandler>();
    handler->setErrorLogFile(Platform::LibraryFolder() + "/MeridexAppLibrary.log");
    handler->setLogErrors(true);
    handler->setDisplayErrorMsg(false);
    return handler;
}

void UpgradeFirmwareForm::ShowUpgradeFirmware(Logger* logger, ErrorHandler* errHandler,
                                              const std::string& firmwareFilesPath, QWidget* parent,
                                              std::shared_ptr<UserInterface> ui) {
    std::unique_ptr<ErrorHandler> own;
    if (!errHandler) {
        own = DefaultErrorHandler();
        errHandler = own.get();
    }
    frmFirmware form(std::move(ui), parent);
    form.setLogger(logger);
    form.setErrHandler(errHandler);
    form.setFirmwareFilesPath(firmwareFilesPath);
    // Shown before the logger is asked who it is, so modal from the start: exec() on a
    // visible dialog would leave it modeless over the host.
    form.setWindowModality(Qt::ApplicationModal);
    form.show();
    form.Form_Load();
    form.exec();
}

}  // namespace meridex::ui
