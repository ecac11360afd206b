#pragma once
// Internal to the dialog library: the address book as a tree of nodes, shared by the editor and
// the site-selection dialog.
#include <QMetaType>
#include <QString>
#include <Qt>

#include <meridex/addressbook/Site.h>
#include <meridex/addressbook/SiteGroup.h>
#include <meridex/frame/XmlNode.h>

class QTreeWidget;
class QTreeWidgetItem;

Q_DECLARE_METATYPE(meridex::XmlNode)

namespace meridex {
class AddressBook;
}

namespace meridex::ui::AddressBookTree {

/// Item data role of a node's tag: "ROOT", "GROUP" or "SITE".
inline constexpr int TagRole = Qt::UserRole + 3;
/// Item data role of the element a node was made from.
inline constexpr int ElementRole = Qt::UserRole + 4;

inline const QString kRoot = QStringLiteral("ROOT");
inline const QString kGroup = QStringLiteral("GROUP");
inline const QString kSite = QStringLiteral("SITE");

/// A node: text, tag, key (ItemKeyRole), image key, and the element it stands for.
QTreeWidgetItem* MakeNode(const QString& text, const QString& tag, const QString& key, const QString& image,
                          const XmlNode& element);
/// The node's tag; empty for none.
QString Tag(const QTreeWidgetItem* node);
/// The element a node was made from.
XmlNode Element(const QTreeWidgetItem* node);

/// Clears tree and fills it from book: the root "Address Book" (key "ADDRESSBOOK", tag "ROOT"),
/// then at every level the groups and then the sites in document order, each keyed by its PATH.
/// Nodes are made a level ahead of what can be seen: the root's children and theirs at once, a
/// group's grandchildren when it is first expanded (FollowExpansion), so every node a person can
/// see or open has its children. Answers the first site node in node order (the nodes on its way
/// made), or null when the book has no site.
QTreeWidgetItem* Fill(QTreeWidget* tree, const AddressBook& book);

/// The first node tagged "SITE" at or below top in node order (groups before sites), found in the
/// document and made with the nodes on its way if they are not made yet; null when none.
QTreeWidgetItem* FirstSite(QTreeWidgetItem* top);

/// The group a GROUP node stands for: FindGroup of its key when that leads back to the node's own
/// element, else the element itself (paths of groups that share a name lead elsewhere).
SiteGroup GroupOf(const AddressBook& book, const QTreeWidgetItem* node);
/// As GroupOf, for a SITE node (FindSite, whose failure counts as leading nowhere).
Site SiteOf(const AddressBook& book, const QTreeWidgetItem* node);

/// Expanding shows "OPENGROUP", collapsing "CLOSEDGROUP", on every node that is expanded, the root
/// included; expanding also makes the children of the node's children that are not made yet.
void FollowExpansion(QTreeWidget* tree);

}  // namespace meridex::ui::AddressBookTree
