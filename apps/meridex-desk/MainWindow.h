#pragma once
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QDialog>
#include <QMainWindow>
#include <QPointer>

#include <meridex/comms/CommsProfileManager.h>
#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/UserInterface.h>
#include <meridex/settings/Settings.h>

#include "DeskDialogs.h"
#include "Workspace.h"

class QAction;
class QComboBox;
class QLabel;
class QTreeWidget;

namespace meridex {
class SerialPortSource;
class UserStore;
}  // namespace meridex

namespace meridex::desk {

class SyncWindow;

/// What the main window is built with besides its workspace; every member may stay null for this
/// PC's own (the installed user interface, the library's dialogs, this PC's serial ports and per-user
/// store).
struct DeskOptions {
    std::shared_ptr<UserInterface> ui;          ///< where messages and questions go
    std::shared_ptr<DeskDialogs> dialogs;       ///< the library dialogs the commands open
    std::shared_ptr<SerialPortSource> ports;    ///< the serial ports the map follows
    std::shared_ptr<UserStore> store;           ///< the per-user settings store of the map
    std::string companionFolder;                ///< where the port-description companion lives ("": none)
};

/// Meridex Desk's main window (`frmDesk`) over one workspace: the host commands in menus and on the
/// toolbar, each shown exactly when the current profile has its feature, the current profile in a
/// drop-down of the status bar (`cboCurrentProfile`), and the map's devices with whether each one's
/// serial port is on this PC now (`lvDevices`).
class MainWindow : public QMainWindow {
public:
    /// Loads the workspace's settings and map as a host does at start-up (the workspace must be prepared).
    MainWindow(Workspace workspace, DeskOptions options = {}, QWidget* parent = nullptr);
    ~MainWindow() override;

    /// One host command, as a menu entry and toolbar button share it.
    struct Command {
        const char* name;     ///< objectName of the action (`cmdUnload`)
        const char* text;     ///< what the user sees
        const char* feature;  ///< the feature that shows it; null for commands every profile has
        enum Kind { Host, Library, Desk } kind;  ///< whose command it is
        const char* menu;     ///< the menu it sits in
        bool toolbar;         ///< also on the toolbar
    };
    /// Every command, in menu order.
    static const std::vector<Command>& Commands();

    /// The action of a command by objectName; null when there is none.
    QAction* Action(const QString& name) const;
    /// Makes the profile of that key current (written to CURRENT_PROFILE and saved) and shows or
    /// hides every command at once. False when there is no such profile.
    bool SwitchProfile(const QString& key);
    /// Shows or hides each command by FeatureAvailable of the current profile.
    void RefreshCommands();
    /// The synchronisation window, opened on the workspace's scheme folders when not open yet.
    SyncWindow* OpenSyncWindow();
    /// Shows the error log in a window of its own (`frmErrorLog`).
    void ShowErrorLog();
    /// That window over the log file, not yet shown.
    static std::unique_ptr<QDialog> ErrorLogWindow(const std::filesystem::path& file, QWidget* parent = nullptr);

    /// The loaded settings.
    Settings& settings() noexcept { return settings_; }
    /// The loaded communications map.
    CommsProfileManager& map() noexcept { return *map_; }
    /// The error handler that writes the workspace's log.
    ErrorHandler& errors() noexcept { return errors_; }
    /// The workspace.
    const Workspace& workspace() const noexcept { return workspace_; }

private:
    void StartUp();
    void BuildCommands();
    void FillProfiles();
    void FillDevices();
    void Run(const Command& command);
    void RunLibrary(const QString& name);
    void Guard(const std::string& context, const std::function<void()>& body);
    void Tell(const std::string& text, MessageIcon icon = MessageIcon::Information);
    std::shared_ptr<UserInterface> ui() const;

    Workspace workspace_;
    DeskOptions options_;
    Settings settings_;
    std::unique_ptr<CommsProfileManager> map_;
    ErrorHandler errors_;
    std::vector<std::pair<const Command*, QAction*>> actions_;
    QComboBox* cboCurrentProfile_ = nullptr;
    QTreeWidget* lvDevices_ = nullptr;
    QLabel* lblDevices_ = nullptr;
    QLabel* lblCommandsShown_ = nullptr;
    QLabel* lblLocalSchemes_ = nullptr;
    QPointer<SyncWindow> sync_;
};

}  // namespace meridex::desk
