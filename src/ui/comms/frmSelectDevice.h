#pragma once
#include <meridex/ui/Export.h>

#include <QDialog>
#include <QPoint>

#include <meridex/frame/XmlNode.h>

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

namespace meridex {
class CommsProfileManager;
}

namespace meridex::ui {

/// The device-selection dialog ("Select Device"): the map's profiles as a one-level tree under
/// "Device Map" (`tvDevices`) and an information panel (`picInfo`) on the device clicked. Enter on
/// the tree closes it when a device is chosen; Escape and the close box close it with none chosen;
/// a double click on a node closes it when a device is chosen. It only hides, so the caller can read
/// SelectedDevice afterwards.
class MERIDEX_UI_EXPORT frmSelectDevice : public QDialog {
    Q_OBJECT
public:
    /// An empty dialog; setCommunicationsManager fills it.
    explicit frmSelectDevice(QWidget* parent = nullptr);

    /// The map shown; null until given.
    CommsProfileManager* CommunicationsManager() const noexcept { return manager_; }
    /// Shows map's profiles (map must outlive the dialog); nothing is chosen until the person clicks.
    void setCommunicationsManager(CommsProfileManager* map);

    /// The chosen profile element of the map itself (not a copy); none when nothing was chosen or
    /// the dialog was cancelled.
    XmlNode SelectedDevice() const { return selected_; }

    /// Fills the tree: the root, then one node per profile in map order.
    void FillTree();
    /// A node was chosen: the root chooses none and hides the panel; a device is chosen and shown.
    void tvDevices_NodeClick(QTreeWidgetItem* node);
    /// Shows profile in the panel with name and imageKey.
    void ShowInfo(const XmlNode& profile, const QString& name, const QString& imageKey);
    /// Enter closes when a device is chosen; Escape closes with none.
    void tvDevices_KeyPress(int key);
    /// Closes when a device is chosen and a node lies under the last mouse position.
    void tvDevices_DblClick();

    /// Escape: none chosen, hidden.
    void reject() override;

    /// The tree of devices.
    QTreeWidget* tvDevices = nullptr;
    /// The information panel.
    QWidget* picInfo = nullptr;
    /// The chosen device's icon.
    QLabel* imgProfile = nullptr;
    /// The chosen device's name.
    QLabel* lblName = nullptr;
    /// The chosen device's fields, one per line.
    QLabel* lblSummary = nullptr;

protected:
    /// The close box: none chosen, the close refused and the dialog hidden.
    void closeEvent(QCloseEvent* event) override;
    /// Follows the mouse over the tree and takes its keys.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    CommsProfileManager* manager_ = nullptr;
    XmlNode selected_;
    QPoint lastMouse_{-1, -1};
    bool filling_ = false;
    bool hiding_ = false;
};

}  // namespace meridex::ui
