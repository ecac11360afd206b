#include "SyncWindow.h"

#include <filesystem>
#include <regex>
#include <set>

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QComboBox>
#include <QDateTime>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <meridex/frame/ErrorHandler.h>
#include <meridex/ui/frame/ImageKeys.h>

namespace fs = std::filesystem;

namespace meridex::desk {

namespace {

enum Column { kScheme, kAction, kLocalTime, kRemoteTime, kNote };

QString Time(const FileInfo& file) {
    if (!file) return QStringLiteral("(none)");
    return QDateTime::fromSecsSinceEpoch(file.Modified().tv_sec).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString Q(const std::string& text) { return QString::fromStdString(text); }

// The backups SyncSchemes keeps are "NAME~0000.BAK", "NAME~0001.BAK", ...: listing them before and after a
// run tells which it made.
std::set<std::string> Backups(const std::string& root) {
    static const std::regex backup(R"(~[0-9]{4}\.BAK$)");
    std::set<std::string> found;
    std::error_code ec;
    if (root.empty() || !fs::is_directory(root, ec)) return found;
    for (fs::recursive_directory_iterator it(root, fs::directory_options::skip_permission_denied, ec), end;
         !ec && it != end; it.increment(ec)) {
        const std::string name = it->path().filename().string();
        if (std::regex_search(name, backup)) found.insert(it->path().string());
    }
    return found;
}

// The synchronisation window is a window of its own: a screen reader announces it as one.
QAccessibleInterface* AccessibleSyncWindow(const QString&, QObject* object) {
    auto* window = dynamic_cast<SyncWindow*>(object);
    return window ? new QAccessibleWidget(window, QAccessible::Window) : nullptr;
}

QTreeWidget* NewList(const QString& name, const QString& spoken) {
    auto* list = new QTreeWidget;
    list->setObjectName(name);
    list->setAccessibleName(spoken);
    list->setRootIsDecorated(false);
    list->setHeaderLabels({QStringLiteral("Scheme"), QStringLiteral("Action"), QStringLiteral("Local time"),
                           QStringLiteral("Remote time"), QStringLiteral("Note")});
    list->header()->setStretchLastSection(true);
    list->setColumnWidth(kScheme, 250);
    list->setColumnWidth(kAction, 90);
    list->setColumnWidth(kLocalTime, 140);
    list->setColumnWidth(kRemoteTime, 140);
    return list;
}

}  // namespace

/// Shows the library's events in the window as they come and keeps the window painting.
class SyncWindow::Events : public SyncEvents {
public:
    explicit Events(SyncWindow& window) : w_(window) {}
    void FoundFiles(const std::string& file) override {
        std::string line = file;
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
        w_.txtFound_->appendPlainText(Q(line));
        ++w_.found_;
        w_.lblStatus_->setText(QStringLiteral("Comparing: %1 scheme files found").arg(w_.found_));
        if (w_.onFound) w_.onFound(line);
        QApplication::processEvents();
    }
    void CopyFiles(const std::string& source, const std::string& destination, std::int16_t progress) override {
        w_.prgSync_->setValue(progress);
        w_.txtFound_->appendPlainText(QStringLiteral("Copying %1.* to %2").arg(Q(source), Q(destination)));
        QApplication::processEvents();
    }
    void CopyFilesError(const std::string& source, const std::string& destination,
                        const std::string& errDescription) override {
        w_.AddResult(QStringLiteral("Error"), Q(destination), Q(errDescription) + QStringLiteral(" (from ") + Q(source) + ")");
        w_.Log(75, errDescription + ": " + destination, "SyncWindow:CopyFilesError");
        QApplication::processEvents();
    }

private:
    SyncWindow& w_;
};

SyncWindow::SyncWindow(const std::string& remoteFolder, const std::string& localFolder, ErrorHandler& errors,
                       std::shared_ptr<UserInterface> ui, QWidget* parent)
    : QWidget(parent, Qt::Window), errors_(errors), ui_(std::move(ui)), events_(std::make_unique<Events>(*this)) {
    setObjectName(QStringLiteral("frmSync"));
    static const bool announced = (QAccessible::installFactory(AccessibleSyncWindow), true);
    (void)announced;
    setWindowTitle(QStringLiteral("Synchronise Schemes"));

    auto* folders = new QGridLayout;
    auto addFolder = [&](int row, const QString& label, const QString& edit, const QString& browse,
                         const std::string& path) {
        auto* text = new QLineEdit(Q(path));
        text->setObjectName(edit);
        auto* button = new QPushButton(QStringLiteral("Browse..."));
        button->setObjectName(browse);
        connect(button, &QPushButton::clicked, this, [this, text, label] {
            const QString chosen = QFileDialog::getExistingDirectory(this, label, text->text());
            if (!chosen.isEmpty()) text->setText(chosen);
        });
        auto* caption = new QLabel(label);
        caption->setBuddy(text);
        text->setAccessibleName(QString(label).remove(QLatin1Char(':')));
        folders->addWidget(caption, row, 0);
        folders->addWidget(text, row, 1);
        folders->addWidget(button, row, 2);
        return text;
    };
    txtRemote_ = addFolder(0, QStringLiteral("Remote schemes:"), QStringLiteral("txtRemote"), QStringLiteral("cmdRemote"), remoteFolder);
    txtLocal_ = addFolder(1, QStringLiteral("Local schemes:"), QStringLiteral("txtLocal"), QStringLiteral("cmdLocal"), localFolder);

    auto button = [this](const QString& name, const QString& text) {
        auto* b = new QPushButton(text);
        b->setObjectName(name);
        return b;
    };
    cmdCompare_ = button(QStringLiteral("cmdCompare"), QStringLiteral("Compare"));
    cmdSynchronise_ = button(QStringLiteral("cmdSynchronise"), QStringLiteral("Synchronise"));
    cmdCancel_ = button(QStringLiteral("cmdCancel"), QStringLiteral("Cancel"));
    cmdClose_ = button(QStringLiteral("cmdClose"), QStringLiteral("Close"));
    cmdCancel_->setEnabled(false);
    cmdSynchronise_->setEnabled(false);
    connect(cmdCompare_, &QPushButton::clicked, this, [this] { Compare(); });
    connect(cmdSynchronise_, &QPushButton::clicked, this, [this] { Synchronise(); });
    connect(cmdCancel_, &QPushButton::clicked, this, [this] { Cancel(); });
    connect(cmdClose_, &QPushButton::clicked, this, [this] { close(); });
    // Escape closes the window as it closes a dialog; while a run goes on it cancels the run first.
    connect(new QShortcut(QKeySequence(Qt::Key_Escape), this), &QShortcut::activated, this, [this] {
        if (running_) Cancel();
        else close();
    });

    txtFound_ = new QPlainTextEdit;
    txtFound_->setObjectName(QStringLiteral("txtFound"));
    txtFound_->setAccessibleName(QStringLiteral("Files found"));
    txtFound_->setReadOnly(true);
    txtFound_->setMaximumHeight(72);

    lvNewerLocal_ = NewList(QStringLiteral("lvNewerLocal"), QStringLiteral("Newer here (local)"));
    lvNewerRemote_ = NewList(QStringLiteral("lvNewerRemote"), QStringLiteral("Newer on the remote side"));
    lvSynced_ = NewList(QStringLiteral("lvSynced"), QStringLiteral("In step"));
    lvSynced_->hideColumn(kAction);

    auto group = [&](const QString& title, QTreeWidget* list, const QString& suffix) {
        auto* box = new QGroupBox(title);
        auto* layout = new QVBoxLayout(box);
        layout->addWidget(list);
        if (!suffix.isEmpty()) {
            auto* row = new QHBoxLayout;
            auto* all = button(QStringLiteral("cmdUpdateAll") + suffix, QStringLiteral("Update all"));
            auto* none = button(QStringLiteral("cmdIgnoreAll") + suffix, QStringLiteral("Ignore all"));
            connect(all, &QPushButton::clicked, this, [this, list] { SetAllOptions(list, SchemeSyncOptions::syncUpdate); });
            connect(none, &QPushButton::clicked, this, [this, list] { SetAllOptions(list, SchemeSyncOptions::syncIgnore); });
            shortcuts_.push_back(all);
            shortcuts_.push_back(none);
            row->addWidget(all);
            row->addWidget(none);
            row->addStretch();
            layout->addLayout(row);
        }
        return box;
    };

    lvErrors_ = new QTreeWidget;
    lvErrors_->setObjectName(QStringLiteral("lvErrors"));
    lvErrors_->setAccessibleName(QStringLiteral("Errors and backups"));
    lvErrors_->setRootIsDecorated(false);
    lvErrors_->setHeaderLabels({QStringLiteral("What"), QStringLiteral("File"), QStringLiteral("Detail")});
    lvErrors_->setColumnWidth(0, 90);
    lvErrors_->setColumnWidth(1, 380);
    lvErrors_->setMaximumHeight(96);

    prgSync_ = new QProgressBar;
    prgSync_->setObjectName(QStringLiteral("prgSync"));
    prgSync_->setRange(0, 100);
    prgSync_->setValue(0);
    lblStatus_ = new QLabel(QStringLiteral("Choose the two folders and press Compare."));
    lblStatus_->setObjectName(QStringLiteral("lblStatus"));

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(cmdCompare_);
    buttons->addWidget(cmdSynchronise_);
    buttons->addWidget(cmdCancel_);
    buttons->addWidget(prgSync_, 1);
    buttons->addWidget(cmdClose_);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(folders);
    layout->addWidget(new QLabel(QStringLiteral("Files found:")));
    layout->addWidget(txtFound_);
    layout->addWidget(group(QStringLiteral("Newer here (local)"), lvNewerLocal_, QStringLiteral("Local")), 2);
    layout->addWidget(group(QStringLiteral("Newer on the remote side"), lvNewerRemote_, QStringLiteral("Remote")), 2);
    layout->addWidget(group(QStringLiteral("In step"), lvSynced_, {}), 1);
    layout->addWidget(new QLabel(QStringLiteral("Errors and backups:")));
    layout->addWidget(lvErrors_);
    layout->addWidget(lblStatus_);
    layout->addLayout(buttons);
    txtRemote_->setFocus();  // the focus starts in the first field
    resize(1000, 900);
}

SyncWindow::~SyncWindow() {
    if (schemes_) schemes_->setEvents(nullptr);
}

void SyncWindow::Log(int number, const std::string& description, const std::string& context) {
    errors_.LogError(number, description, context);
}

void SyncWindow::setRunning(bool running) {
    running_ = running;
    cmdCancel_->setEnabled(running);
    cmdCompare_->setEnabled(!running);
    cmdClose_->setEnabled(!running);
    cmdSynchronise_->setEnabled(!running && schemes_ &&
                                (schemes_->NewerLocalFiles().Count() + schemes_->NewerRemoteFiles().Count()) > 0);
    for (QPushButton* shortcut : shortcuts_) shortcut->setEnabled(!running);
}

void SyncWindow::Cancel() {
    if (schemes_) schemes_->CancelSearch();
}

void SyncWindow::Compare() {
    if (running_) return;
    lvErrors_->clear();
    Scan(true);
}

void SyncWindow::Scan(bool clearFound) {
    // A fresh object each time: the scan adds to earlier results.
    if (schemes_) schemes_->setEvents(nullptr);
    schemes_ = std::make_unique<SyncSchemes>();
    schemes_->setEvents(events_.get());
    found_ = 0;
    if (clearFound) txtFound_->clear();
    for (QTreeWidget* list : {lvNewerLocal_, lvNewerRemote_, lvSynced_}) list->clear();
    setRunning(true);
    lblStatus_->setText(QStringLiteral("Comparing..."));
    const std::string remote = txtRemote_->text().toStdString();
    const std::string local = txtLocal_->text().toStdString();
    try {
        schemes_->GetSchemeList(remote, local);
    } catch (const std::exception& e) {
        Log(51, e.what(), "SyncWindow:Compare");
    }
    const bool cancelled = schemes_->CancelFlag();
    FillList(lvNewerLocal_, schemes_->NewerLocalFiles(), true, true);
    FillList(lvNewerRemote_, schemes_->NewerRemoteFiles(), false, true);
    FillList(lvSynced_, schemes_->SyncedFiles(), true, false);
    for (const SchemeFileItem& item : schemes_->Errors().Items()) {
        AddResult(QStringLiteral("Error"), Q(item.RelativePath()), Q(item.ErrDescription()));
        Log(75, item.ErrDescription() + ": " + item.RelativePath(), "SyncWindow:Compare");
    }
    setRunning(false);
    if (cancelled) {
        lblStatus_->setText(QStringLiteral("Compare cancelled after %1 scheme files; nothing was sorted.").arg(found_));
    } else {
        lblStatus_->setText(QStringLiteral("%1 newer here, %2 newer on the remote side, %3 in step.")
                                .arg(schemes_->NewerLocalFiles().Count())
                                .arg(schemes_->NewerRemoteFiles().Count())
                                .arg(schemes_->SyncedFiles().Count()));
    }
}

void SyncWindow::FillList(QTreeWidget* list, const SchemeFileCollection& items, bool localIsFile, bool withOptions) {
    for (const SchemeFileItem& item : items.Items()) {
        const FileInfo& local = localIsFile ? item.File() : item.OtherFile();
        const FileInfo& remote = localIsFile ? item.OtherFile() : item.File();
        auto* row = new QTreeWidgetItem(list);
        row->setText(kScheme, Q(item.RelativePath()));
        ui::setItemKey(row, Q(item.Key()));
        ui::setImageKey(row, QStringLiteral("SCHEME"));
        row->setText(kLocalTime, Time(local));
        row->setText(kRemoteTime, Time(remote));
        QString note = TimeNote(local, remote);
        if (note.isEmpty() && !local) note = QStringLiteral("Only on the remote side");
        if (note.isEmpty() && !remote) note = QStringLiteral("Only here");
        row->setText(kNote, note);
        row->setToolTip(kNote, note);
        if (!withOptions) continue;
        auto* option = new QComboBox;
        option->setObjectName(QStringLiteral("cboOption"));
        // Reached by Tab, and said with its scheme: "Action for North/Weir1.SXS".
        option->setAccessibleName(QStringLiteral("Action for ") + Q(item.RelativePath()));
        option->addItems({QStringLiteral("Ignore"), QStringLiteral("Update"), QStringLiteral("Revert")});
        option->setCurrentIndex(static_cast<int>(item.SyncOptions()));
        SchemeFileItem shared = item;  // a handle: the option set here is the one Sync reads
        connect(option, &QComboBox::currentIndexChanged, this,
                [shared](int index) mutable { shared.setSyncOptions(static_cast<SchemeSyncOptions>(index)); });
        list->setItemWidget(row, kAction, option);
    }
}

void SyncWindow::SetAllOptions(QTreeWidget* list, SchemeSyncOptions option) {
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        if (auto* combo = qobject_cast<QComboBox*>(list->itemWidget(list->topLevelItem(i), kAction))) {
            combo->setCurrentIndex(static_cast<int>(option));
        }
    }
}

void SyncWindow::AddResult(const QString& what, const QString& file, const QString& detail) {
    auto* row = new QTreeWidgetItem(lvErrors_, {what, file, detail});
    row->setToolTip(2, detail);
}

void SyncWindow::Synchronise() {
    if (running_ || !schemes_) return;
    const std::string remote = schemes_->RemotePath();
    const std::string local = schemes_->LocalPath();
    const std::set<std::string> before[2] = {Backups(remote), Backups(local)};
    lvErrors_->clear();
    prgSync_->setValue(0);
    setRunning(true);
    lblStatus_->setText(QStringLiteral("Synchronising..."));
    try {
        schemes_->Sync();
    } catch (const std::exception& e) {
        Log(51, e.what(), "SyncWindow:Synchronise");
    }
    const bool cancelled = schemes_->CancelFlag();
    for (const SchemeFileItem& item : schemes_->Errors().Items()) {
        AddResult(QStringLiteral("Error"), Q(item.RelativePath()), Q(item.ErrDescription()));
        Log(75, item.ErrDescription() + ": " + item.RelativePath(), "SyncWindow:Synchronise");
    }
    int kept = 0;
    for (int side = 0; side < 2; ++side) {
        for (const std::string& path : Backups(side == 0 ? remote : local)) {
            if (before[side].count(path)) continue;
            AddResult(QStringLiteral("Backup"), Q(path), QStringLiteral("kept before it was overwritten"));
            ++kept;
        }
    }
    setRunning(false);
    const int errors = lvErrors_->topLevelItemCount() - kept;
    // Compare again so the lists show where things now stand; the errors and backups stay listed.
    Scan(false);
    if (!cancelled) prgSync_->setValue(100);
    lblStatus_->setText(QStringLiteral("%1. %2 error(s), %3 backup(s) kept. %4")
                            .arg(cancelled ? QStringLiteral("Synchronisation cancelled") : QStringLiteral("Synchronised"))
                            .arg(errors)
                            .arg(kept)
                            .arg(lblStatus_->text()));
}

QString SyncWindow::TimeNote(const FileInfo& local, const FileInfo& remote) {
    if (!local || !remote) return {};
    const long long a = local.Modified().tv_sec;
    const long long b = remote.Modified().tv_sec;
    const long long apart = a > b ? a - b : b - a;
    if (apart == 3600) return QStringLiteral("One hour apart: a daylight-saving change?");
    if (apart > 0 && apart <= 2) return QStringLiteral("Seconds apart: FAT keeps times to 2 s");
    return {};
}

}  // namespace meridex::desk
