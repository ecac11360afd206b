#include <meridex/ui/addressbook/frmImport.h>

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/ImportCommsProfiles.h>
#include <meridex/ui/frame/ProgressPicture.h>
#include <meridex/ui/frame/Trap.h>

namespace meridex::ui {
namespace {

// Well under the 100 ms a person notices as a stall.
constexpr qint64 kBreathMs = 15;

}  // namespace

// The import's events, handed on to the form.
class frmImport::Events : public ImportEvents {
public:
    explicit Events(frmImport& form) : form_(form) {}
    void Message(const std::string& msg) override { form_.mcImport_Message(msg); }
    void Progress(std::int16_t percentComplete) override { form_.mcImport_Progress(percentComplete); }
    void Complete() override { form_.mcImport_Complete(); }
    bool CancelRequested() override { return form_.CancelRequested(); }

private:
    frmImport& form_;
};

frmImport::frmImport(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmImport"));
    setWindowTitle(QStringLiteral("Import"));
    lblMessage = new QLabel(this);
    lblMessage->setObjectName(QStringLiteral("lblMessage"));
    lblMessage->setMinimumWidth(520);
    lblMessage->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    lblMessage->setTextFormat(Qt::PlainText);
    // Two lines for a long scheme path, so the window keeps its size from one message to the next.
    lblMessage->setWordWrap(true);
    lblMessage->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    lblMessage->setFixedHeight(lblMessage->fontMetrics().lineSpacing() * 2 + 2);
    picProgress = new ProgressPicture(QStringLiteral("picProgress"), this);
    cmdCancel = new QPushButton(QStringLiteral("&Cancel"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(cmdCancel, &QPushButton::clicked, this, &frmImport::cmdCancel_Click);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdCancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblMessage);
    layout->addWidget(picProgress);
    layout->addLayout(buttons);
    resize(600, sizeHint().height());
}

frmImport::~frmImport() = default;

void frmImport::StartImport(AddressBook& book, QWidget* owner, const std::string& rootPath) {
    importer_ = std::make_unique<ImportCommsProfiles>();
    book_ = &book;
    rootPath_ = rootPath;
    started_ = false;
    cancel_ = false;
    cancelled_ = false;
    schemesFound_ = sitesAdded_ = 0;
    if (owner && owner != parentWidget()) setParent(owner, windowFlags());
    setModal(true);
    exec();
    book_ = nullptr;
    importer_.reset();
}

void frmImport::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (started_ || !importer_) return;
    started_ = true;
    // Once the window is on screen and has painted.
    QTimer::singleShot(0, this, &frmImport::Run);
}

void frmImport::Run() {
    if (!importer_ || !book_) return;
    running_ = true;
    Events events(*this);
    importer_->setEvents(&events);
    sinceBreath_.start();
    const bool ran = TrapAndShow(nullptr, "frmImport:Form_Activate",
                                 [&] { importer_->ImportSchemes(rootPath_, book_->Sites()); });
    importer_->setEvents(nullptr);
    running_ = false;
    cancelled_ = importer_->Cancelled();
    schemesFound_ = importer_->SchemeList().size();
    sitesAdded_ = importer_->SitesAdded();
    // Complete closes the form; a failed run closes it too, its failure already shown.
    if (!ran || isVisible()) QDialog::done(ran ? Accepted : Rejected);
}

void frmImport::Breathe(bool always) {
    if (!always && sinceBreath_.isValid() && sinceBreath_.elapsed() < kBreathMs) return;
    QApplication::processEvents();
    sinceBreath_.restart();
}

void frmImport::mcImport_Message(const std::string& msg) {
    lblMessage->setText(QString::fromStdString(msg));
    Breathe();
}

void frmImport::mcImport_Progress(int percentComplete) {
    picProgress->setProgress(percentComplete / 100.0);
    Breathe();
}

void frmImport::mcImport_Complete() {
    running_ = false;
    QDialog::done(cancel_ ? Rejected : Accepted);
}

void frmImport::cmdCancel_Click() {
    cancel_ = true;
    cmdCancel->setEnabled(false);
}

void frmImport::reject() {
    // Escape during the run asks it to stop; the form closes when the import completes.
    if (running_) cmdCancel_Click();
    else QDialog::reject();
}

void frmImport::closeEvent(QCloseEvent* event) {
    if (running_) {
        cmdCancel_Click();
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

}  // namespace meridex::ui
