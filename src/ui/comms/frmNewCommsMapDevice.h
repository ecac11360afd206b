#pragma once
#include <meridex/ui/Export.h>
#include <memory>

#include <meridex/frame/XmlNode.h>
#include <meridex/platform/SerialPortSource.h>
#include <meridex/platform/UserStore.h>
#include <meridex/ui/frame/CancellableDialog.h>

class QTreeWidget;
class QTreeWidgetItem;

namespace meridex::ui {

/// The new-device dialog: the person picks one of the five kinds of device in `lvCommsType`;
/// afterwards NewDevice builds a profile of that kind with its defaults. `cmdCancel`, Escape and
/// the close box clear the choice, so NewDevice gives none; a double click on a kind acts as `cmdOK`.
class MERIDEX_UI_EXPORT frmNewCommsMapDevice : public CancellableDialog {
    Q_OBJECT
public:
    /// The scratch map that NewDevice builds takes its ports and per-user store from ports and store
    /// (null: this PC's).
    explicit frmNewCommsMapDevice(std::shared_ptr<SerialPortSource> ports = nullptr,
                                  std::shared_ptr<UserStore> store = nullptr, QWidget* parent = nullptr);

    /// A new profile of the chosen kind, made in a scratch map of its own with that kind's defaults
    /// (serial kinds on port "1"); none when no kind is chosen. It keeps the key it got there: the
    /// caller gives it a fresh one when it adds it to a map.
    XmlNode NewDevice() const;

    /// A double click on a kind: closes the dialog as `cmdOK` when a kind is chosen.
    void lvCommsType_DblClick();

    /// The list of kinds.
    QTreeWidget* lvCommsType = nullptr;

private:
    std::shared_ptr<SerialPortSource> ports_;
    std::shared_ptr<UserStore> store_;
};

}  // namespace meridex::ui
