#pragma once
#include <meridex/ui/Export.h>
#include <cstddef>
#include <memory>
#include <string>

#include <QDialog>
#include <QElapsedTimer>

class QLabel;
class QPushButton;

namespace meridex {
class AddressBook;
class ImportCommsProfiles;
}  // namespace meridex

namespace meridex::ui {

class ProgressPicture;

/// The window shown while schemes are turned into sites: the latest message in `lblMessage`, the
/// share of schemes done in `picProgress`, and `cmdCancel`, which stops the import between schemes
/// (the sites already added stay). It closes itself when the import completes.
class MERIDEX_UI_EXPORT frmImport : public QDialog {
    Q_OBJECT
public:
    /// An idle form; StartImport runs it.
    explicit frmImport(QWidget* parent = nullptr);
    ~frmImport() override;

    /// Shows the form modally over owner (null: over no window) and, once it is up, imports every
    /// scheme below rootPath into book's root group; returns when the import has completed. The
    /// book is not saved here.
    void StartImport(AddressBook& book, QWidget* owner, const std::string& rootPath);

    /// Shows msg in `lblMessage`.
    virtual void mcImport_Message(const std::string& msg);
    /// Draws the bar at percentComplete (0 to 100).
    virtual void mcImport_Progress(int percentComplete);
    /// The import is over: closes the form.
    virtual void mcImport_Complete();
    /// Asks the import to stop at its next step.
    void cmdCancel_Click();
    /// True once Cancel was pressed.
    bool CancelRequested() const noexcept { return cancel_; }
    /// After StartImport: whether the import was stopped by Cancel.
    bool Cancelled() const noexcept { return cancelled_; }
    /// After StartImport: how many schemes it found.
    std::size_t SchemesFound() const noexcept { return schemesFound_; }
    /// After StartImport: how many sites it added.
    std::size_t SitesAdded() const noexcept { return sitesAdded_; }

    /// The import's latest message.

    QLabel* lblMessage = nullptr;
    /// The share of schemes processed.
    ProgressPicture* picProgress = nullptr;
    /// Cancel: stops the import at its next step.
    QPushButton* cmdCancel = nullptr;

protected:
    /// The import starts once the form is shown.
    void showEvent(QShowEvent* event) override;
    /// The close box asks the import to stop; the form closes when it has.
    void closeEvent(QCloseEvent* event) override;
    /// Escape during the import asks it to stop; the form closes when it completes.
    void reject() override;

private:
    class Events;
    void Run();
    // Lets the window repaint and take a Cancel click, at most every few milliseconds so that
    // thousands of small events do not spend their time repainting.
    void Breathe(bool always = false);

    AddressBook* book_ = nullptr;
    std::string rootPath_;
    std::unique_ptr<ImportCommsProfiles> importer_;
    QElapsedTimer sinceBreath_;
    bool started_ = false;
    bool running_ = false;
    bool cancel_ = false;
    bool cancelled_ = false;
    std::size_t schemesFound_ = 0;
    std::size_t sitesAdded_ = 0;
};

}  // namespace meridex::ui
