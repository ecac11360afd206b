#pragma once
#include <meridex/ui/Export.h>
#include <functional>
#include <memory>

#include <QDialog>

#include <meridex/frame/UserInterface.h>
#include <meridex/settings/Profile.h>

class QComboBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QScrollArea;
class QTreeWidget;
class QTreeWidgetItem;

namespace meridex {
class Settings;
}

namespace meridex::ui {

/// The profile editor: lists the profiles of a settings document (`lvProfiles`), chooses the current
/// one (`cboCurrentProfile`), switches the selected profile's features (`lvFeatures`), adds and
/// deletes profiles and locks the editor with a password (`cmdLock`). Every change goes into the
/// document at once; the editor never saves (Settings::ShowProfileEditor does, when it closes).
/// Each handler traps its own failures and shows them in a warning box ("context : number-description").
class MERIDEX_UI_EXPORT frmProfiles : public QDialog {
    Q_OBJECT
public:
    /// Prompts go to ui; a null ui means the interface installed at the time of each prompt.
    explicit frmProfiles(std::shared_ptr<UserInterface> ui = nullptr, QWidget* parent = nullptr);
    ~frmProfiles() override;

    /// Opens an editor on settings modally over owner and returns when it has closed.
    static void ShowModal(Settings& settings, QWidget* owner, std::shared_ptr<UserInterface> ui = nullptr);

    /// The settings being edited; null until given.
    Settings* V4Settings() const noexcept { return settings_; }
    /// Fills the editor from settings (LoadProfiles), then locks or unlocks it as PROFILES_UNLOCKED
    /// (default true) says. settings must outlive the editor.
    void setV4Settings(Settings* settings);

    /// Lists every profile, selects the current profile's row (else the first) and loads it.
    void LoadProfiles();
    /// Lists the features of the profile of the selected row, checked when available.
    void LoadSelectedProfile();
    /// Enables the editing controls when unlocked; `cmdLock` reads "Lock" unlocked, "Unlock" locked.
    void SetLockState(bool unlocked);

    /// A row of `lvProfiles` was chosen: loads its profile.
    void lvProfiles_ItemClick();
    /// A profile was chosen in `cboCurrentProfile`: it becomes the current profile.
    void cboCurrentProfile_Click();
    /// A feature's check mark changed: the loaded profile's feature takes it as its availability.
    void lvFeatures_ItemCheck(QTreeWidgetItem* item);
    /// Asks for a name and adds a default profile of that name, unless one exists (ignoring case).
    void cmdAddProfile_Click();
    /// Deletes the selected profile after confirmation; the last profile is never deleted.
    void cmdDeleteProfile_Click();
    /// Locks with a new password (refused, with a message, when windows-1252 cannot hold it), or unlocks
    /// with the stored one (clearing it).
    void cmdLock_Click();
    /// Closes the editor.
    void cmdOK_Click();

private:
    std::shared_ptr<UserInterface> ui() const;
    // The settings being edited; a handler run before they are given fails with error 91.
    Settings& Edited() const;
    // Runs a handler's body; a failure is shown in a warning box and ends the handler.
    void Guard(const char* context, const std::function<void()>& body);
    void BuildControls();

    std::shared_ptr<UserInterface> ui_;
    Settings* settings_ = nullptr;
    // The profile whose features lvFeatures shows; null when none is loaded.
    Profile loaded_ = Profile::None();
    // True while the editor fills its own lists, so that their signals are not taken for the user's.
    bool filling_ = false;

    QScrollArea* Scroller1 = nullptr;
    QLabel* lblSelectProfile = nullptr;
    QTreeWidget* lvProfiles = nullptr;
    QLabel* lblSetCurrentProfile = nullptr;
    QComboBox* cboCurrentProfile = nullptr;
    QGroupBox* fraProfile = nullptr;
    QTreeWidget* lvFeatures = nullptr;
    QPushButton* cmdAddProfile = nullptr;
    QPushButton* cmdDeleteProfile = nullptr;
    QPushButton* cmdLock = nullptr;
    QPushButton* cmdOK = nullptr;
};

}  // namespace meridex::ui
