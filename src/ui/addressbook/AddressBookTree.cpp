#include <meridex/ui/addressbook/AddressBookTree.h>

#include <vector>

#include <QList>
#include <QTreeWidget>

#include <meridex/addressbook/AddressBook.h>
#include <meridex/frame/Error.h>
#include <meridex/ui/frame/ImageKeys.h>

namespace meridex::ui::AddressBookTree {
namespace {

const QString kOpen = QStringLiteral("OPENGROUP");
const QString kClosed = QStringLiteral("CLOSEDGROUP");

QString Text(const XmlNode& element, std::string_view child, std::string& scratch) {
    const std::string_view text = element.ChildText(child, scratch);
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// Item data role marking a group node whose own children are not made yet.
constexpr int PendingRole = Qt::UserRole + 5;

// Makes node's children from its element, groups first, then sites, each in document order, unless
// they are made already. Group children wait for theirs (PendingRole) until node is expanded.
void Populate(QTreeWidgetItem* node) {
    if (!node || !node->data(0, PendingRole).toBool()) return;
    node->setData(0, PendingRole, false);
    const XmlNode element = Element(node);
    std::string scratch;
    QList<QTreeWidgetItem*> children;
    for (XmlNode child = element.FirstChildElement("GROUP"); child; child = child.NextSiblingElement("GROUP")) {
        QTreeWidgetItem* group =
            MakeNode(Text(child, "NAME", scratch), kGroup, Text(child, "PATH", scratch), kClosed, child);
        group->setData(0, PendingRole, true);
        children << group;
    }
    for (XmlNode child = element.FirstChildElement("SITE"); child; child = child.NextSiblingElement("SITE"))
        children << MakeNode(Text(child, "NAME", scratch), kSite, Text(child, "PATH", scratch), kSite, child);
    node->addChildren(children);
}

// What a node shows once its parent is open: its own children, so it can be opened in turn.
void PopulateChildren(QTreeWidgetItem* node) {
    Populate(node);
    for (int i = 0; i < node->childCount(); ++i) Populate(node->child(i));
}

// The child of node made from element; null when none is.
QTreeWidgetItem* ChildOf(QTreeWidgetItem* node, const XmlNode& element) {
    for (int i = 0; i < node->childCount(); ++i)
        if (Element(node->child(i)) == element) return node->child(i);
    return nullptr;
}

}  // namespace

QTreeWidgetItem* FirstSite(QTreeWidgetItem* top) {
    if (!top) return nullptr;
    if (Tag(top) == kSite) return top;
    // Found in the document (groups before sites at every level, depth first without recursion),
    // then the nodes on its way are made.
    struct Level {
        XmlNode element;
        XmlNode nextGroup;
    };
    std::vector<Level> path{{Element(top), Element(top).FirstChildElement("GROUP")}};
    XmlNode site;
    while (!path.empty() && !site) {
        Level& level = path.back();
        if (level.nextGroup) {
            const XmlNode group = level.nextGroup;
            level.nextGroup = group.NextSiblingElement("GROUP");
            path.push_back({group, group.FirstChildElement("GROUP")});
        } else if (!(site = level.element.FirstChildElement("SITE"))) {
            path.pop_back();
        }
    }
    if (!site) return nullptr;
    QTreeWidgetItem* node = top;
    for (std::size_t i = 1; i < path.size() && node; ++i) {
        Populate(node);
        node = ChildOf(node, path[i].element);
    }
    if (!node) return nullptr;
    Populate(node);
    return ChildOf(node, site);
}

QTreeWidgetItem* MakeNode(const QString& text, const QString& tag, const QString& key, const QString& image,
                          const XmlNode& element) {
    auto* node = new QTreeWidgetItem(QStringList{text});
    setItemKey(node, key);
    setImageKey(node, image);
    node->setData(0, TagRole, tag);
    node->setData(0, ElementRole, QVariant::fromValue(element));
    if (tag != kRoot) node->setFlags(node->flags() | Qt::ItemIsEditable);
    return node;
}

QString Tag(const QTreeWidgetItem* node) { return node ? node->data(0, TagRole).toString() : QString(); }

XmlNode Element(const QTreeWidgetItem* node) {
    return node ? node->data(0, ElementRole).value<XmlNode>() : XmlNode();
}

QTreeWidgetItem* Fill(QTreeWidget* tree, const AddressBook& book) {
    tree->clear();
    const SiteGroup sites = book.Sites();
    QTreeWidgetItem* root =
        MakeNode(QStringLiteral("Address Book"), kRoot, QStringLiteral("ADDRESSBOOK"), QStringLiteral("ADDRBOOK"),
                 sites.XMLNode());
    // Nodes are made a level ahead of what can be seen: the root's children and theirs now, the
    // rest when their parents are first opened (FollowExpansion), so a large book opens in the time
    // it takes to load. Built detached and handed to the tree in one go.
    root->setData(0, PendingRole, true);
    PopulateChildren(root);
    tree->addTopLevelItem(root);
    return FirstSite(root);
}

SiteGroup GroupOf(const AddressBook& book, const QTreeWidgetItem* node) {
    const XmlNode own = Element(node);
    const SiteGroup found = book.FindGroup(ItemKey(node).toStdString());
    if (found && found.XMLNode() == own) return found;
    return SiteGroup::AttachNode(own);
}

Site SiteOf(const AddressBook& book, const QTreeWidgetItem* node) {
    const XmlNode own = Element(node);
    Site found = Site::None();
    try {
        found = book.FindSite(ItemKey(node).toStdString());
    } catch (const Error&) {
        // A path whose group is missing leads nowhere, as one whose site is.
    }
    if (found && found.XMLNode() == own) return found;
    return Site(own);
}

void FollowExpansion(QTreeWidget* tree) {
    QObject::connect(tree, &QTreeWidget::itemExpanded, tree, [](QTreeWidgetItem* node) {
        PopulateChildren(node);
        setImageKey(node, kOpen);
    });
    QObject::connect(tree, &QTreeWidget::itemCollapsed, tree,
                     [](QTreeWidgetItem* node) { setImageKey(node, kClosed); });
}

}  // namespace meridex::ui::AddressBookTree
