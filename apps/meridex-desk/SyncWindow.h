#pragma once
#include <functional>
#include <memory>
#include <string>

#include <QWidget>

#include <meridex/frame/UserInterface.h>
#include <meridex/sync/SchemeFileItem.h>
#include <meridex/sync/SyncSchemes.h>

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QTreeWidget;

namespace meridex {
class ErrorHandler;
}

namespace meridex::desk {

/// The synchronisation window (`frmSync`): compares a remote and a local scheme folder, lists the
/// schemes newer on each side and those in step with both sides' times, lets the user choose per
/// scheme to ignore, update or revert, and copies them, showing progress, errors and the backups kept.
/// Compare and Synchronise run on the user-interface thread and keep it painting between files, so
/// Cancel (`cmdCancel`) takes effect at the next file.
class SyncWindow : public QWidget {
public:
    /// A window over the two folders; failures are logged through errors, questions go to ui (null:
    /// the installed interface).
    SyncWindow(const std::string& remoteFolder, const std::string& localFolder, ErrorHandler& errors,
               std::shared_ptr<UserInterface> ui = nullptr, QWidget* parent = nullptr);
    ~SyncWindow() override;

    /// Scans both folders afresh and fills the three lists.
    void Compare();
    /// Carries out every scheme's chosen action, then compares again so the lists show the result.
    void Synchronise();
    /// Ends a running compare or copy at the next file.
    void Cancel();
    /// Gives every scheme of one list (`lvNewerLocal` or `lvNewerRemote`) the option.
    void SetAllOptions(QTreeWidget* list, SchemeSyncOptions option);
    /// True while a compare or a copy runs.
    bool Running() const noexcept { return running_; }
    /// Called with each scheme file found, after it has been shown (tests use it to cancel part-way).
    std::function<void(const std::string& file)> onFound;

    /// A time difference that is probably not an edit: exactly one hour (a daylight-saving change) or up
    /// to two seconds (FAT keeps times to two seconds); empty otherwise or when either file is missing.
    static QString TimeNote(const FileInfo& local, const FileInfo& remote);

private:
    class Events;
    void Scan(bool clearFound);
    void FillList(QTreeWidget* list, const SchemeFileCollection& items, bool localIsFile, bool withOptions);
    void AddResult(const QString& what, const QString& file, const QString& detail);
    void setRunning(bool running);
    void Log(int number, const std::string& description, const std::string& context);

    ErrorHandler& errors_;
    std::shared_ptr<UserInterface> ui_;
    std::unique_ptr<SyncSchemes> schemes_;
    std::unique_ptr<Events> events_;
    bool running_ = false;
    int found_ = 0;

    QLineEdit* txtRemote_;
    QLineEdit* txtLocal_;
    QPushButton* cmdCompare_;
    QPushButton* cmdSynchronise_;
    QPushButton* cmdCancel_;
    QPushButton* cmdClose_;
    QPlainTextEdit* txtFound_;
    QTreeWidget* lvNewerLocal_;
    QTreeWidget* lvNewerRemote_;
    QTreeWidget* lvSynced_;
    QTreeWidget* lvErrors_;
    QProgressBar* prgSync_;
    QLabel* lblStatus_;
    std::vector<QPushButton*> shortcuts_;
};

}  // namespace meridex::desk
