#pragma once
class QWidget;

namespace meridex {
class Settings;
}  // namespace meridex

namespace meridex::desk {

/// The library dialogs the desk opens, in one place: the desk reaches them only through this seam, so
/// tests can see which dialog a command asked for and with which files.
class DeskDialogs {
public:
    virtual ~DeskDialogs() = default;
    /// The profile editor over settings; returns when it has closed (it saves the settings itself).
    virtual void ShowProfileEditor(Settings& settings, QWidget* owner) = 0;
};

}  // namespace meridex::desk
