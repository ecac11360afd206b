#include <meridex/ui/addressbook/frmSelectSite.h>

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTreeWidget>

#include <meridex/addressbook/AddressBook.h>
#include <meridex/ui/addressbook/AddressBookTree.h>
#include <meridex/ui/addressbook/ProfileInfoPanel.h>
#include <meridex/ui/frame/Trap.h>

namespace meridex::ui {

namespace Tree = AddressBookTree;

frmSelectSite::frmSelectSite(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmSelectSite"));
    setWindowTitle(QStringLiteral("Select site to connect to"));
    setModal(true);
    tvGroups = new QTreeWidget(this);
    tvGroups->setObjectName(QStringLiteral("tvGroups"));
    tvGroups->setHeaderHidden(true);
    tvGroups->setUniformRowHeights(true);
    tvGroups->setMinimumSize(240, 280);
    tvGroups->setAccessibleName(QStringLiteral("Groups and sites"));
    tvGroups->viewport()->setMouseTracking(true);
    tvGroups->viewport()->installEventFilter(this);
    tvGroups->installEventFilter(this);
    picInfo = new ProfileInfoPanel(this);
    picInfo->setMinimumWidth(260);
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(tvGroups, 1);
    layout->addWidget(picInfo, 1);
    resize(720, 420);

    Tree::FollowExpansion(tvGroups);
    connect(tvGroups, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* node) {
        if (!filling_ && node) tvGroups_NodeClick(node);
    });
}

frmSelectSite::~frmSelectSite() = default;

void frmSelectSite::setAddressBook(AddressBook* book) {
    book_ = book;
    selected_ = XmlNode();
    QTreeWidgetItem* first = nullptr;
    TrapAndShow(nullptr, "frmSelectSite:AddressBook", [&] {
        filling_ = true;
        tvGroups->clear();
        if (!book_) return;
        first = Tree::Fill(tvGroups, *book_);
        QTreeWidgetItem* root = tvGroups->topLevelItem(0);
        root->setExpanded(true);
        QTreeWidgetItem* shown = first ? first : root;
        tvGroups->scrollToItem(shown);
        tvGroups->setCurrentItem(shown);
    });
    filling_ = false;
    if (QTreeWidgetItem* current = tvGroups->currentItem()) tvGroups_NodeClick(current);
    if (tvGroups->topLevelItemCount() > 0) tvGroups->scrollToItem(tvGroups->topLevelItem(0));
}

void frmSelectSite::tvGroups_NodeClick(QTreeWidgetItem* node) {
    TrapAndShow(nullptr, "frmSelectSite:tvGroups_NodeClick", [&] {
        if (Tree::Tag(node) != Tree::kSite || !book_) {
            selected_ = XmlNode();
            picInfo->hide();
            return;
        }
        selected_ = Tree::SiteOf(*book_, node).Profile();
        picInfo->ShowProfile(selected_);
        picInfo->show();
    });
}

void frmSelectSite::tvGroups_KeyEnter() {
    if (selected_) hide();
}

void frmSelectSite::tvGroups_KeyEscape() {
    selected_ = XmlNode();
    hide();
}

void frmSelectSite::tvGroups_MouseMove(const QPoint& position) { mouse_ = position; }

void frmSelectSite::tvGroups_DblClick() {
    if (selected_ && tvGroups->itemAt(mouse_)) hide();
}

void frmSelectSite::reject() { tvGroups_KeyEscape(); }

void frmSelectSite::closeEvent(QCloseEvent* event) {
    // The close box is refused and the dialog hidden, so the caller can still read it.
    event->ignore();
    selected_ = XmlNode();
    hide();
}

bool frmSelectSite::eventFilter(QObject* watched, QEvent* event) {
    if (watched == tvGroups && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            tvGroups_KeyEnter();
            return true;
        }
        if (key->key() == Qt::Key_Escape) {
            tvGroups_KeyEscape();
            return true;
        }
    } else if (watched == tvGroups->viewport()) {
        switch (event->type()) {
        case QEvent::MouseMove:
        case QEvent::MouseButtonPress:
            tvGroups_MouseMove(static_cast<QMouseEvent*>(event)->position().toPoint());
            break;
        case QEvent::MouseButtonDblClick:
            tvGroups_MouseMove(static_cast<QMouseEvent*>(event)->position().toPoint());
            // After the tree has taken the click (its press already chose the node under it).
            QMetaObject::invokeMethod(this, &frmSelectSite::tvGroups_DblClick, Qt::QueuedConnection);
            break;
        default: break;
        }
    }
    return QDialog::eventFilter(watched, event);
}

}  // namespace meridex::ui
