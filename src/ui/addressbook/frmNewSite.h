#pragma once
#include <meridex/ui/Export.h>

#include <meridex/addressbook/Site.h>
#include <meridex/ui/frame/CancellableDialog.h>

class QLabel;
class QLineEdit;
class QTreeWidget;

namespace meridex {
class CommsProfileManager;
}

namespace meridex::ui {

class ProfileInfoPanel;

/// "Create New Site": asks for a site's name (`txtName`) and the device it is reached through
/// (`lvDevices`, the map's application profiles), and shows the chosen device in `picInfo`.
/// OK and Cancel only hide it; the caller then reads NewSite().
class MERIDEX_UI_EXPORT frmNewSite : public CancellableDialog {
    Q_OBJECT
public:
    /// An empty dialog; give it the map with setCommsDevices.
    explicit frmNewSite(QWidget* parent = nullptr);
    ~frmNewSite() override;

    /// The map whose application profiles are offered; fills `lvDevices` and shows its first row.
    /// map must outlive the dialog.
    void setCommsDevices(CommsProfileManager* map);
    /// None when cancelled; otherwise a new site named as `txtName` holding a copy of the selected
    /// row's profile (the empty PROFILE it was made with when no row is selected).
    Site NewSite() const;

    /// A row of `lvDevices` was chosen: `picInfo` shows its profile.
    void lvDevices_ItemClick();

    /// The new site's name.

    QLineEdit* txtName = nullptr;
    /// The devices of the communications map to choose from.
    QTreeWidget* lvDevices = nullptr;
    /// The chosen device's profile.
    ProfileInfoPanel* picInfo = nullptr;

private:
    CommsProfileManager* map_ = nullptr;
    bool filling_ = false;
};

}  // namespace meridex::ui
