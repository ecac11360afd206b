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

// One group level waiting to be filled: its element and its node.
struct Pending {
    XmlNode element;
    QTreeWidgetItem* node;
};

}  // namespace

QTreeWidgetItem* FirstSite(QTreeWidgetItem* top) {
    std::vector<QTreeWidgetItem*> stack{top};
    while (!stack.empty()) {
        QTreeWidgetItem* node = stack.back();
        stack.pop_back();
        if (Tag(node) == kSite) return node;
        for (int i = node->childCount(); i-- > 0;) stack.push_back(node->child(i));
    }
    return nullptr;
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
    std::string scratch;
    // Depth first without recursion, so a book nested thousands deep fills too. Nodes are built
    // detached and handed to the tree in one go at the end, which keeps a large book fast.
    std::vector<Pending> pending{{sites.XMLNode(), root}};
    while (!pending.empty()) {
        const Pending level = std::move(pending.back());
        pending.pop_back();
        QList<QTreeWidgetItem*> children;
        std::vector<Pending> groups;
        for (XmlNode child = level.element.FirstChildElement("GROUP"); child;
             child = child.NextSiblingElement("GROUP")) {
            QTreeWidgetItem* node =
                MakeNode(Text(child, "NAME", scratch), kGroup, Text(child, "PATH", scratch), kClosed, child);
            children << node;
            groups.push_back({child, node});
        }
        for (XmlNode child = level.element.FirstChildElement("SITE"); child;
             child = child.NextSiblingElement("SITE")) {
            children << MakeNode(Text(child, "NAME", scratch), kSite, Text(child, "PATH", scratch), kSite, child);
        }
        level.node->addChildren(children);
        for (auto group = groups.rbegin(); group != groups.rend(); ++group) pending.push_back(*group);
    }
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
    QObject::connect(tree, &QTreeWidget::itemExpanded, tree, [](QTreeWidgetItem* node) { setImageKey(node, kOpen); });
    QObject::connect(tree, &QTreeWidget::itemCollapsed, tree,
                     [](QTreeWidgetItem* node) { setImageKey(node, kClosed); });
}

}  // namespace meridex::ui::AddressBookTree
