#pragma once
#include <meridex/ui/Export.h>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QDialog>
#include <QString>

#include <meridex/frame/UserInterface.h>
#include <meridex/frame/XmlNode.h>
#include <meridex/platform/SerialPortSource.h>
#include <meridex/platform/UserStore.h>

class QComboBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QStackedWidget;
class QTreeWidget;
class QTreeWidgetItem;

namespace meridex {
class CommsProfileManager;
}

namespace meridex::ui {

/// The editor of the whole communications map: every profile of the map in `lvDevices` (its kind's
/// icon and name), and for the selected one a frame of fields of its kind (`fraDirect`,
/// `fraPhoneModem`, `fraUDP`, `fraTCP`, `fraGPRSProxy`, `fraUnknown`), with the children it does not
/// know listed read-only (`lvOtherFields`). Text fields go into the map as typed ("0" and all); a number,
/// port or address is checked as a whole when it is left and at OK: a wrong one is marked beside the
/// field (and described to a screen reader), never stored, and OK or a change of device names it and
/// puts the focus there. Nothing reaches the file until `cmdOK` saves it with SaveXMLMapFile.
/// `cmdCancel`, Escape and the close box ask before they discard changes. `cmdAdd` asks for a new device,
/// `cmdDelete` asks before it removes one, `cmdScanPorts` brings the direct profiles in step with
/// the ports and says what changed.
class MERIDEX_UI_EXPORT frmCommsMap : public QDialog {
    Q_OBJECT
public:
    /// Prompts go to ui (null: the interface installed at the time of each prompt); the map takes its
    /// ports and per-user store from ports and store (null: this PC's).
    explicit frmCommsMap(std::shared_ptr<UserInterface> ui = nullptr, std::shared_ptr<SerialPortSource> ports = nullptr,
                         std::shared_ptr<UserStore> store = nullptr, QWidget* parent = nullptr);
    /// Ends the editor; a map not confirmed with OK is never saved.
    ~frmCommsMap() override;

    /// Loads the map in mapFile and shows its profiles, the first one selected. False when the file
    /// could not be read, in which case the default map is shown (and OK would save it there).
    bool LoadMap(const std::string& mapFile);
    /// The map being edited; null before LoadMap.
    CommsProfileManager* Map() const noexcept { return map_.get(); }
    /// The folder of the port-description companion that `cmdScanPorts` runs (by default the
    /// program's own folder).
    void setCompanionFolder(std::string folder) { companionFolder_ = std::move(folder); }

    /// Lists every profile of the map, selecting the one keyed selectKey (else the first).
    void LoadDevices(const QString& selectKey = {});
    /// A row of `lvDevices` was chosen: shows its profile's frame.
    void lvDevices_ItemClick();
    /// A field was edited (chosen: picked whole from its list): a text field's value goes into the
    /// profile shown; a checked field loses its mark once right, and is taken when left or chosen.
    void Field_Change(QWidget* control, bool chosen = false);
    /// Asks for the kind of device and adds a new profile of it with a fresh key.
    void cmdAdd_Click();
    /// Asks, then removes the selected profile.
    void cmdDelete_Click();
    /// Removes direct profiles whose port has gone, adds those of new ports, names them after the
    /// ports' descriptions, and says what changed.
    void cmdScanPorts_Click();
    /// Saves the map; a save that fails, or a field whose text is wrong, is reported and the editor
    /// stays open.
    void cmdOK_Click();
    /// Closes without saving; with changes made, asks first whether to discard them.
    void cmdCancel_Click();
    /// Escape and the close box: as `cmdCancel`.
    void reject() override;

    /// One edited field of a frame: its element, its caption and how it is typed.
    struct Field;
    /// One frame of fields, shown for one kind of device.
    struct Frame;

protected:
    /// Takes a checked field as a whole when the focus leaves it.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::shared_ptr<UserInterface> ui() const;
    void Guard(const char* context, const std::function<void()>& body);
    void BuildControls();
    Frame& MakeFrame(const QString& name, const QString& title, const std::vector<int>& fields);
    void ShowProfile(const XmlNode& profile);
    void ShowPortWarning(Frame& frame, const QString& text);
    XmlNode SelectedProfile() const;
    static QString TextOf(const QWidget* control);
    // Writes value into the profile shown (an empty checked field or unticked box removes the element).
    void Store(const Field& field, const std::string& value);
    // Shows problem beside field i ("" takes the mark away) and as its accessible description.
    void Mark(Frame& frame, std::size_t i, const QString& problem);
    // Checks field i as a whole and stores it when right; false (and marked) when wrong.
    bool Take(Frame& frame, std::size_t i);
    // Takes every field typed in; the index of the first wrong one, or -1.
    int TakeAll();
    // True when every field typed in is right; else names the first wrong one and focuses it.
    bool FieldsReady();
    // True when the map differs from saved_ or a field typed in is wrong.
    bool Changed();

    std::shared_ptr<UserInterface> ui_;
    std::shared_ptr<SerialPortSource> ports_;
    std::shared_ptr<UserStore> store_;
    std::unique_ptr<CommsProfileManager> map_;
    std::string mapFile_;
    std::string companionFolder_;
    std::vector<std::unique_ptr<Frame>> frames_;
    Frame* shown_ = nullptr;
    XmlNode shownProfile_;
    std::string saved_;  // the map as it was loaded or last saved
    bool filling_ = false;

    QTreeWidget* lvDevices = nullptr;
    QPushButton* cmdAdd = nullptr;
    QPushButton* cmdDelete = nullptr;
    QPushButton* cmdScanPorts = nullptr;
    QStackedWidget* stkFrames = nullptr;
    QGroupBox* fraOtherFields = nullptr;
    QTreeWidget* lvOtherFields = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;
};

}  // namespace meridex::ui
