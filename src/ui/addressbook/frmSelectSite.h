#pragma once
#include <meridex/ui/Export.h>

#include <QDialog>
#include <QPoint>

#include <meridex/frame/XmlNode.h>

class QTreeWidget;
class QTreeWidgetItem;

namespace meridex {
class AddressBook;
}

namespace meridex::ui {

class ProfileInfoPanel;

/// "Select site to connect to": the address book as a tree (`tvGroups`) and the selected site's
/// profile in `picInfo`. Enter on a site, or a double click on it, closes with that profile;
/// Escape and the close box close with none. The caller then reads SelectedProfile().
class MERIDEX_UI_EXPORT frmSelectSite : public QDialog {
    Q_OBJECT
public:
    /// An empty dialog; give it the book with setAddressBook.
    explicit frmSelectSite(QWidget* parent = nullptr);
    ~frmSelectSite() override;

    /// The book to show; fills the tree and selects its first site. book must outlive the dialog.
    void setAddressBook(AddressBook* book);
    /// The chosen site's own PROFILE element (not a copy), or null.
    XmlNode SelectedProfile() const { return selected_; }

    /// A node was chosen: a site's profile becomes the selection and is shown; a group or the root
    /// clears the selection and hides `picInfo`.
    void tvGroups_NodeClick(QTreeWidgetItem* node);
    /// Enter closes when a profile is selected.
    void tvGroups_KeyEnter();
    /// Escape: no profile, and the dialog closes.
    void tvGroups_KeyEscape();
    /// Remembers the last mouse position over the tree.
    void tvGroups_MouseMove(const QPoint& position);
    /// A double click closes when a profile is selected and a node is under the last mouse position.
    void tvGroups_DblClick();

    /// Escape closes with no site chosen.

    void reject() override;

    /// The tree of groups and sites.

    QTreeWidget* tvGroups = nullptr;
    /// The selected site's profile.
    ProfileInfoPanel* picInfo = nullptr;

protected:
    /// The close box hides the dialog with no site chosen, so the caller can still read it.
    void closeEvent(QCloseEvent* event) override;
    /// Follows the mouse over the tree, for the double click.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    AddressBook* book_ = nullptr;
    XmlNode selected_;
    QPoint mouse_;
    bool filling_ = false;
};

}  // namespace meridex::ui
