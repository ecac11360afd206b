#pragma once
#include <meridex/ui/Export.h>
#include <memory>
#include <string>

#include <QDialog>

#include <meridex/addressbook/Site.h>
#include <meridex/addressbook/SiteGroup.h>
#include <meridex/frame/UserInterface.h>

class QAction;
class QLabel;
class QMenu;
class QMenuBar;
class QSplitter;
class QToolBar;
class QTreeWidget;
class QTreeWidgetItem;

namespace meridex {
class AddressBook;
class CommsProfileManager;
class ErrorHandler;
class SerialPortSource;
class UserStore;
}  // namespace meridex

namespace meridex::ui {

struct TrappedFailure;

/// The address book editor: the book as a tree (`tvGroups`), the selected group's contents
/// (`lvGroupList`) or the selected site's parameters (`lvProfileElements`) beside it, and the
/// commands of `Toolbar1` and the `mnuFile` and `mnuEdit` menus. Every change goes into the loaded
/// document at once; the book is saved to its file whenever the window closes.
class MERIDEX_UI_EXPORT frmAddressBook : public QDialog {
    Q_OBJECT
public:
    /// Prompts go to ui; a null ui means the interface installed at the time of each prompt.
    explicit frmAddressBook(std::shared_ptr<UserInterface> ui = nullptr, QWidget* parent = nullptr);
    ~frmAddressBook() override;

    /// The ports and per-user store the communications map is made with (by default this PC's).
    void setCommsSources(std::shared_ptr<SerialPortSource> ports, std::shared_ptr<UserStore> store);

    /// The handler that logs a failed save (not owned; null: not logged).
    void setErrorHandler(ErrorHandler* errors) noexcept { errors_ = errors; }

    /// Loads the book (a missing file gives an empty one) and the map, keeps the schemes folder for
    /// the import, and fills the tree.
    void LoadAddressBook(const std::string& addressBookFile, const std::string& mapFile,
                         const std::string& schemesFolder);
    /// Fills `tvGroups` from the book, expands the root and selects the first site (else the root).
    void FillTree();

    /// The book being edited; null before LoadAddressBook.
    AddressBook* Book() const noexcept { return book_.get(); }
    /// The communications map offered for new sites; null before LoadAddressBook.
    CommsProfileManager* CommsMap() const noexcept { return map_.get(); }
    /// The group the selection stands for (the group holding it when a site is selected).
    SiteGroup CurrentGroup() const { return group_; }
    /// The selected site; none when a group or the root is selected.
    Site CurrentSite() const { return site_; }

    /// A node was chosen: sets the current group or site, shows the group list or the parameter
    /// list, and enables the commands that apply.
    void tvGroups_NodeClick(QTreeWidgetItem* node);
    /// Whether a label may be edited: never the root's.
    bool tvGroups_BeforeLabelEdit(const QTreeWidgetItem* node) const;
    /// An edited label becomes the Name of the current group or site (never the root's); false refuses it.
    bool tvGroups_AfterLabelEdit(QTreeWidgetItem* node, const QString& newText);

    /// A toolbar button was pressed: runs its command by key.
    void Toolbar1_ButtonClick(const QString& key);
    /// Asks for a name and adds a sub-group to the current group.
    void mnuAddGroup_Click();
    /// Deletes the current group (asked of the root group, by key) after confirmation.
    void mnuDeleteGroup_Click();
    /// Opens the new-site dialog and adds the site it makes to the current group.
    void mnuAddSite_Click();
    /// Deletes the current site after confirmation.
    void mnuDeleteSite_Click();
    /// Asks for a name and appends an empty parameter of that name; a name that cannot name an
    /// element is refused with a message saying which names can.
    void mnuAddParameter_Click();
    /// Deletes the selected parameter after confirmation.
    void mnuDeleteParameter_Click();
    /// Asks for the selected parameter's new value (also a double click on its row).
    void mnuEditParameter_Click();
    /// Asks whether to import from the schemes folder, imports, says so when nothing was found to
    /// import, and fills the tree again; Cancel leaves the tree as it is.
    void mnuImport_Click();
    /// Closes the window, which saves the book.
    void mnuExit_Click();
    /// Saves the book to its file. When that fails the failure is logged and the person chooses: try
    /// again, save to another file, or close without saving (the file stays as it was). False when
    /// the window is to stay open (the choice was closed without one).
    bool Form_QueryUnload();

    /// Every close (Exit, the close box, Escape, done()) saves first (see Form_QueryUnload).
    void done(int result) override;

    /// The menu bar: File and Edit.

    QMenuBar* MenuBar = nullptr;
    /// The toolbar: the Edit menu's commands as buttons.
    QToolBar* Toolbar1 = nullptr;
    /// Splits the tree of groups from the right-hand pane.
    QSplitter* Splitter1 = nullptr;
    /// The tree of groups and sites.
    QTreeWidget* tvGroups = nullptr;
    /// The right-hand pane: the group list or the site's parameters.
    QWidget* picRHPane = nullptr;
    /// The page of the selected group's contents.
    QWidget* picGroupList = nullptr;
    /// The title of the group's contents.
    QLabel* lblGroupList = nullptr;
    /// The groups and sites of the selected group.
    QTreeWidget* lvGroupList = nullptr;
    /// The page of the selected site's parameters.
    QWidget* picSiteList = nullptr;
    /// The title of the site's parameters.
    QLabel* lblProfileList = nullptr;
    /// The selected site's parameters, name and value.
    QTreeWidget* lvProfileElements = nullptr;
    /// The File menu.
    QMenu* mnuFile = nullptr;
    /// File > Import: sites from the schemes of a folder.
    QAction* mnuImport = nullptr;
    /// File > Exit: saves and closes.
    QAction* mnuExit = nullptr;
    /// The Edit menu, enabled by the kind of the selected node.
    QMenu* mnuEdit = nullptr;
    /// Edit > Add Group.
    QAction* mnuAddGroup = nullptr;
    /// Edit > Delete Group.
    QAction* mnuDeleteGroup = nullptr;
    /// Edit > Add Site.
    QAction* mnuAddSite = nullptr;
    /// Edit > Delete Site.
    QAction* mnuDeleteSite = nullptr;
    /// Edit > Add Parameter.
    QAction* mnuAddParameter = nullptr;
    /// Edit > Delete Parameter.
    QAction* mnuDeleteParameter = nullptr;
    /// Edit > Edit Parameter: a new value for the selected parameter.
    QAction* mnuEditParameter = nullptr;

private:
    std::shared_ptr<UserInterface> ui() const;
    void BuildControls();
    void ShowGroupList();
    void ShowSiteList();
    // Enables each toolbar button and its menu item for a node of this tag.
    void EnableCommands(const QString& tag);
    // Adds a node under the selected one, makes it visible and handles the selection again.
    void AddNodeUnderSelection(QTreeWidgetItem* node);
    // After a failed save: logs it and asks what to do; true when the window may close.
    bool SaveFailed(const TrappedFailure& first);
    QAction* Button(const QString& key, const QString& caption, const QString& description, const QString& tip);

    std::shared_ptr<UserInterface> ui_;
    std::shared_ptr<SerialPortSource> ports_;
    std::shared_ptr<UserStore> store_;
    std::unique_ptr<AddressBook> book_;
    std::unique_ptr<CommsProfileManager> map_;
    std::string schemesFolder_;
    ErrorHandler* errors_ = nullptr;
    SiteGroup group_ = SiteGroup::None();
    Site site_ = Site::None();
    bool filling_ = false;
};

}  // namespace meridex::ui
