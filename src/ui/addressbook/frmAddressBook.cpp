#include <meridex/ui/addressbook/frmAddressBook.h>

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QSplitter>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/XMLOps.h>
#include <meridex/ui/addressbook/AddressBookTree.h>
#include <meridex/ui/addressbook/frmImport.h>
#include <meridex/ui/addressbook/frmNewSite.h>
#include <meridex/ui/frame/ImageKeys.h>
#include <meridex/ui/frame/Trap.h>

namespace meridex::ui {
namespace {

namespace Tree = AddressBookTree;

QString Q(const std::string& text) { return QString::fromStdString(text); }

QLabel* Caption(const QString& name, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    return label;
}

QTreeWidget* List(const QString& name, const QStringList& columns, const QString& tip, QWidget* parent) {
    auto* list = new QTreeWidget(parent);
    list->setObjectName(name);
    list->setHeaderLabels(columns);
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setToolTip(tip);
    list->setMinimumSize(260, 200);
    list->header()->setSectionResizeMode(0, QHeaderView::Interactive);
    list->header()->resizeSection(0, 200);
    return list;
}

// A pane holding a caption over its list.
QWidget* Pane(const QString& name, QLabel* caption, QTreeWidget* list, QWidget* parent) {
    auto* pane = new QWidget(parent);
    pane->setObjectName(name);
    auto* layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(caption);
    layout->addWidget(list, 1);
    return pane;
}

bool Confirmed(const std::shared_ptr<UserInterface>& ui, const std::string& question) {
    return ui->MessageBox(question, MessageButtons::OKCancel, MessageIcon::Question, {},
                          MessageDefaultButton::Second) == MessageResult::OK;
}

}  // namespace

frmAddressBook::frmAddressBook(std::shared_ptr<UserInterface> ui, QWidget* parent)
    : QDialog(parent), ui_(std::move(ui)) {
    setObjectName(QStringLiteral("frmAddressBook"));
    setWindowTitle(QStringLiteral("Address Book"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    BuildControls();
    EnableCommands(Tree::kRoot);
}

frmAddressBook::~frmAddressBook() = default;

std::shared_ptr<UserInterface> frmAddressBook::ui() const { return ui_ ? ui_ : UserInterface::Current(); }

QAction* frmAddressBook::Button(const QString& key, const QString& caption, const QString& description,
                                const QString& tip) {
    QAction* button = Toolbar1->addAction(caption);
    button->setObjectName(key);
    button->setStatusTip(description);
    button->setWhatsThis(description);
    button->setToolTip(tip);
    setImageKey(button, key);
    connect(button, &QAction::triggered, this, [this, key] { Toolbar1_ButtonClick(key); });
    return button;
}

void frmAddressBook::BuildControls() {
    MenuBar = new QMenuBar(this);
    MenuBar->setObjectName(QStringLiteral("MenuBar"));
    const auto item = [this](QMenu* menu, const char* name, const char* caption, void (frmAddressBook::*click)()) {
        QAction* action = menu->addAction(QString::fromUtf8(caption));
        action->setObjectName(QString::fromUtf8(name));
        connect(action, &QAction::triggered, this, click);
        return action;
    };
    mnuFile = MenuBar->addMenu(QStringLiteral("&File"));
    mnuFile->setObjectName(QStringLiteral("mnuFile"));
    mnuImport = item(mnuFile, "mnuImport", "&Import", &frmAddressBook::mnuImport_Click);
    mnuExit = item(mnuFile, "mnuExit", "E&xit", &frmAddressBook::mnuExit_Click);
    mnuEdit = MenuBar->addMenu(QStringLiteral("&Edit"));
    mnuEdit->setObjectName(QStringLiteral("mnuEdit"));
    mnuAddGroup = item(mnuEdit, "mnuAddGroup", "Add &Group", &frmAddressBook::mnuAddGroup_Click);
    mnuDeleteGroup = item(mnuEdit, "mnuDeleteGroup", "Delete G&roup", &frmAddressBook::mnuDeleteGroup_Click);
    mnuAddSite = item(mnuEdit, "mnuAddSite", "Add &Site", &frmAddressBook::mnuAddSite_Click);
    mnuDeleteSite = item(mnuEdit, "mnuDeleteSite", "Delete S&ite", &frmAddressBook::mnuDeleteSite_Click);
    mnuAddParameter = item(mnuEdit, "mnuAddParameter", "Add &Parameter", &frmAddressBook::mnuAddParameter_Click);
    mnuDeleteParameter =
        item(mnuEdit, "mnuDeleteParameter", "Delete P&arameter", &frmAddressBook::mnuDeleteParameter_Click);
    mnuEditParameter = item(mnuEdit, "mnuEditParameter", "&Edit Parameter", &frmAddressBook::mnuEditParameter_Click);

    Toolbar1 = new QToolBar(this);
    Toolbar1->setObjectName(QStringLiteral("Toolbar1"));
    Toolbar1->setAccessibleName(QStringLiteral("Commands"));
    Toolbar1->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    Toolbar1->setIconSize(QSize(24, 24));
    Button(QStringLiteral("ADDGROUP"), QStringLiteral("&Add Group"), QStringLiteral("Add a new group to the current group"),
           QStringLiteral("Add a new sub-group to the currently selected group"));
    Button(QStringLiteral("DELETEGROUP"), QStringLiteral("&Delete Group"),
           QStringLiteral("Delete the currently selected group"), QStringLiteral("Delete the currently selected group"));
    Button(QStringLiteral("ADDSITE"), QStringLiteral("A&dd Site"),
           QStringLiteral("Add a new site to the currently selected group"),
           QStringLiteral("Add a new site to the currently selected group"));
    Button(QStringLiteral("DELETESITE"), QStringLiteral("D&elete Site"),
           QStringLiteral("Delete the currently selected site"), QStringLiteral("Delete the currently selected site"));
    Button(QStringLiteral("ADDPARAM"), QStringLiteral("Add Parameter"),
           QStringLiteral("Add a new parameter to the current communications profile"),
           QStringLiteral("Add a new communications parameter to the currently selected site"));
    Button(QStringLiteral("DELETEPARAM"), QStringLiteral("Delete Parameter"),
           QStringLiteral("Delete the currently selected communications parameter"),
           QStringLiteral("Delete the currently selected communications parameter"));
    Button(QStringLiteral("EDITPARAM"), QStringLiteral("Edit Parameter"),
           QStringLiteral("Edit the currently selected communications parameter"),
           QStringLiteral("Edit the currently selected communications parameter"));

    tvGroups = new QTreeWidget(this);
    tvGroups->setObjectName(QStringLiteral("tvGroups"));
    tvGroups->setHeaderHidden(true);
    tvGroups->setUniformRowHeights(true);
    tvGroups->setToolTip(QStringLiteral("Select group or site to edit"));
    tvGroups->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    tvGroups->setMinimumSize(220, 240);
    tvGroups->setAccessibleName(QStringLiteral("Groups and sites"));

    picRHPane = new QWidget(this);
    picRHPane->setObjectName(QStringLiteral("picRHPane"));
    lblGroupList = Caption(QStringLiteral("lblGroupList"), picRHPane);
    lvGroupList = List(QStringLiteral("lvGroupList"), {QStringLiteral("Name"), QStringLiteral("Type")},
                       QStringLiteral("List of sub-groups and sites contained in the currently selected group"),
                       picRHPane);
    lvGroupList->setAccessibleName(QStringLiteral("Group contents"));
    picGroupList = Pane(QStringLiteral("picGroupList"), lblGroupList, lvGroupList, picRHPane);
    lblProfileList = Caption(QStringLiteral("lblProfileList"), picRHPane);
    lvProfileElements = List(QStringLiteral("lvProfileElements"), {QStringLiteral("Parameter"), QStringLiteral("Value")},
                             QStringLiteral("List of communications parameters for the currently selected site"),
                             picRHPane);
    lvProfileElements->setAccessibleName(QStringLiteral("Site parameters"));
    picSiteList = Pane(QStringLiteral("picSiteList"), lblProfileList, lvProfileElements, picRHPane);
    auto* paneLayout = new QVBoxLayout(picRHPane);
    paneLayout->setContentsMargins(0, 0, 0, 0);
    paneLayout->addWidget(picGroupList);
    paneLayout->addWidget(picSiteList);
    picSiteList->hide();

    Splitter1 = new QSplitter(Qt::Horizontal, this);
    Splitter1->setObjectName(QStringLiteral("Splitter1"));
    Splitter1->setAccessibleName(QStringLiteral("Address book and contents"));
    Splitter1->addWidget(tvGroups);
    Splitter1->addWidget(picRHPane);
    Splitter1->setChildrenCollapsible(false);
    Splitter1->setStretchFactor(0, 2);
    Splitter1->setStretchFactor(1, 3);

    auto* layout = new QVBoxLayout(this);
    layout->setMenuBar(MenuBar);
    layout->addWidget(Toolbar1);
    layout->addWidget(Splitter1, 1);
    resize(820, 520);
    Splitter1->setSizes({320, 500});

    Tree::FollowExpansion(tvGroups);
    connect(tvGroups, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* node) {
        if (!filling_ && node) tvGroups_NodeClick(node);
    });
    connect(tvGroups, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* node, int column) {
        if (!filling_ && column == 0) tvGroups_AfterLabelEdit(node, node->text(0));
    });
    connect(lvProfileElements, &QTreeWidget::itemDoubleClicked, this, [this] { mnuEditParameter_Click(); });
}

void frmAddressBook::setCommsSources(std::shared_ptr<SerialPortSource> ports, std::shared_ptr<UserStore> store) {
    ports_ = std::move(ports);
    store_ = std::move(store);
}

void frmAddressBook::LoadAddressBook(const std::string& addressBookFile, const std::string& mapFile,
                                     const std::string& schemesFolder) {
    TrapAndShow(ui_, "frmAddressBook:LoadAddressBook", [&] {
        book_ = std::make_unique<AddressBook>();
        book_->LoadAddressBook(addressBookFile);
        map_ = ports_ || store_ ? std::make_unique<CommsProfileManager>(ports_, store_)
                                : std::make_unique<CommsProfileManager>();
        map_->LoadXMLMapFile(mapFile);
        schemesFolder_ = schemesFolder;
        FillTree();
    });
}

void frmAddressBook::FillTree() {
    if (!book_) return;
    QTreeWidgetItem* first = nullptr;
    filling_ = true;
    const bool filled = TrapAndShow(ui_, "frmAddressBook:FillTree", [&] {
        first = Tree::Fill(tvGroups, *book_);
        tvGroups->topLevelItem(0)->setExpanded(true);
        QTreeWidgetItem* shown = first ? first : tvGroups->topLevelItem(0);
        tvGroups->scrollToItem(shown);
        tvGroups->setCurrentItem(shown);
    });
    filling_ = false;
    if (!filled) return;
    tvGroups_NodeClick(tvGroups->currentItem());
    tvGroups->scrollToItem(tvGroups->topLevelItem(0));
}

void frmAddressBook::tvGroups_NodeClick(QTreeWidgetItem* node) {
    if (!node || !book_) return;
    TrapAndShow(ui_, "frmAddressBook:tvGroups_NodeClick", [&] {
        const QString tag = Tree::Tag(node);
        if (tag == Tree::kSite) {
            site_ = Tree::SiteOf(*book_, node);
            QTreeWidgetItem* holder = node->parent();
            group_ = Tree::Tag(holder) == Tree::kGroup ? Tree::GroupOf(*book_, holder) : book_->Sites();
            ShowSiteList();
        } else {
            site_ = Site::None();
            group_ = tag == Tree::kGroup ? Tree::GroupOf(*book_, node) : book_->Sites();
            ShowGroupList();
        }
        EnableCommands(tag);
    });
}

void frmAddressBook::ShowGroupList() {
    picSiteList->hide();
    picGroupList->show();
    lblGroupList->setText(QStringLiteral("Group Contents: ") + Q(group_.Name()));
    lvGroupList->clear();
    QList<QTreeWidgetItem*> rows;
    const XmlNode element = group_.XMLNode();
    for (XmlNode child = element.FirstChildElement("GROUP"); child; child = child.NextSiblingElement("GROUP")) {
        const SiteGroup group = SiteGroup::AttachNode(child);
        auto* row = new QTreeWidgetItem(QStringList{Q(group.Name()), QStringLiteral("Group")});
        setItemKey(row, Q(group.Path()));
        setImageKey(row, QStringLiteral("CLOSEDGROUP"));
        rows << row;
    }
    for (XmlNode child = element.FirstChildElement("SITE"); child; child = child.NextSiblingElement("SITE")) {
        const Site site(child);
        auto* row = new QTreeWidgetItem(QStringList{Q(site.Name()), QStringLiteral("Site")});
        setItemKey(row, Q(site.Path()));
        setImageKey(row, QStringLiteral("SITE"));
        rows << row;
    }
    lvGroupList->addTopLevelItems(rows);
}

void frmAddressBook::ShowSiteList() {
    picGroupList->hide();
    picSiteList->show();
    lblProfileList->setText(QStringLiteral("Site: ") + Q(site_.Name()));
    lvProfileElements->clear();
    QList<QTreeWidgetItem*> rows;
    for (XmlNode child = site_.Profile().FirstChildElement(); child; child = child.NextSiblingElement())
        rows << new QTreeWidgetItem(QStringList{Q(child.Name()), Q(child.Text())});
    lvProfileElements->addTopLevelItems(rows);
}

void frmAddressBook::EnableCommands(const QString& tag) {
    const bool site = tag == Tree::kSite;
    const bool group = tag == Tree::kGroup;
    const struct {
        const char* key;
        QAction* item;
        bool on;
    } commands[] = {
        {"ADDGROUP", mnuAddGroup, !site},     {"DELETEGROUP", mnuDeleteGroup, group}, {"ADDSITE", mnuAddSite, !site},
        {"DELETESITE", mnuDeleteSite, site},  {"ADDPARAM", mnuAddParameter, site},    {"DELETEPARAM", mnuDeleteParameter, site},
        {"EDITPARAM", mnuEditParameter, site},
    };
    for (const auto& command : commands) {
        Toolbar1->findChild<QAction*>(QString::fromLatin1(command.key))->setEnabled(command.on);
        command.item->setEnabled(command.on);
    }
}

void frmAddressBook::AddNodeUnderSelection(QTreeWidgetItem* node) {
    QTreeWidgetItem* selected = tvGroups->currentItem();
    filling_ = true;
    selected->addChild(node);
    tvGroups->scrollToItem(node);
    filling_ = false;
    tvGroups_NodeClick(selected);
}

bool frmAddressBook::tvGroups_BeforeLabelEdit(const QTreeWidgetItem* node) const {
    return node && Tree::Tag(node) != Tree::kRoot;
}

bool frmAddressBook::tvGroups_AfterLabelEdit(QTreeWidgetItem* node, const QString& newText) {
    if (!node || !book_) return false;
    const QString tag = Tree::Tag(node);
    if (tag == Tree::kRoot) {
        // The root's label is fixed, whatever reached it.
        if (newText != QStringLiteral("Address Book")) {
            filling_ = true;
            node->setText(0, QStringLiteral("Address Book"));
            filling_ = false;
        }
        return false;
    }
    // Icon changes reach this too; only a changed text is a rename.
    const XmlNode element = Tree::Element(node);
    const std::string name = newText.toStdString();
    const std::string current = tag == Tree::kSite ? Site(element).Name() : SiteGroup::AttachNode(element).Name();
    if (name == current) return false;
    return TrapAndShow(ui_, "frmAddressBook:tvGroups_AfterLabelEdit", [&] {
        if (node != tvGroups->currentItem()) tvGroups->setCurrentItem(node);
        if (tag == Tree::kSite) site_.setName(name);
        else group_.setName(name);
        tvGroups_NodeClick(node);
    });
}

void frmAddressBook::Toolbar1_ButtonClick(const QString& key) {
    if (key == QStringLiteral("ADDGROUP")) mnuAddGroup_Click();
    else if (key == QStringLiteral("DELETEGROUP")) mnuDeleteGroup_Click();
    else if (key == QStringLiteral("ADDSITE")) mnuAddSite_Click();
    else if (key == QStringLiteral("DELETESITE")) mnuDeleteSite_Click();
    else if (key == QStringLiteral("ADDPARAM")) mnuAddParameter_Click();
    else if (key == QStringLiteral("DELETEPARAM")) mnuDeleteParameter_Click();
    else if (key == QStringLiteral("EDITPARAM")) mnuEditParameter_Click();
}

void frmAddressBook::mnuAddGroup_Click() {
    if (!book_ || Tree::Tag(tvGroups->currentItem()) == Tree::kSite) return;
    TrapAndShow(ui_, "frmAddressBook:mnuAddGroup_Click", [&] {
        const std::string name = ui()->InputBox("Enter the new Group name", "New Site Group").value_or("");
        if (name.empty()) return;
        const SiteGroup group;
        group.setName(name);
        group_.AddGroup(group);
        AddNodeUnderSelection(Tree::MakeNode(Q(name), Tree::kGroup, Q(group.Path()), QStringLiteral("CLOSEDGROUP"),
                                             group.XMLNode()));
    });
}

void frmAddressBook::mnuDeleteGroup_Click() {
    QTreeWidgetItem* node = tvGroups->currentItem();
    if (!book_ || Tree::Tag(node) != Tree::kGroup) return;
    TrapAndShow(ui_, "frmAddressBook:mnuDeleteGroup_Click", [&] {
        if (!Confirmed(ui(), "Delete the group \"" + group_.Name() + "\" and its contents?")) return;
        // Asked of the root group by key: only a first-level group (or one keyed alike) goes.
        book_->Sites().RemoveGroup(group_.Key());
        delete node;
        if (QTreeWidgetItem* now = tvGroups->currentItem()) tvGroups_NodeClick(now);
    });
}

void frmAddressBook::mnuAddSite_Click() {
    if (!book_ || Tree::Tag(tvGroups->currentItem()) == Tree::kSite) return;
    TrapAndShow(ui_, "frmAddressBook:mnuAddSite_Click", [&] {
        frmNewSite dialog(this);
        dialog.setCommsDevices(map_.get());
        dialog.exec();
        const Site site = dialog.NewSite();
        if (!site) return;
        group_.AddSite(site);
        AddNodeUnderSelection(
            Tree::MakeNode(Q(site.Name()), Tree::kSite, Q(site.Path()), QStringLiteral("SITE"), site.XMLNode()));
    });
}

void frmAddressBook::mnuDeleteSite_Click() {
    QTreeWidgetItem* node = tvGroups->currentItem();
    if (!book_ || Tree::Tag(node) != Tree::kSite) return;
    TrapAndShow(ui_, "frmAddressBook:mnuDeleteSite_Click", [&] {
        // No question mark: the site's question reads so.
        if (!Confirmed(ui(), "Delete the site \"" + site_.Name() + "\"")) return;
        group_.RemoveSite(site_.Key());
        delete node;
        if (QTreeWidgetItem* now = tvGroups->currentItem()) tvGroups_NodeClick(now);
    });
}

void frmAddressBook::mnuAddParameter_Click() {
    if (!book_ || !site_) return;
    TrapAndShow(ui_, "frmAddressBook:mnuAddParameter_Click", [&] {
        const std::string name = ui()->InputBox("Enter new parameter name", "New Parameter").value_or("");
        if (name.empty()) return;
        XmlNode profile = site_.Profile();
        if (!profile) {
            site_.setProfile(XMLOps::CreateXMLElement("PROFILE"));
            profile = site_.Profile();
        }
        const XmlNode parameter = XMLOps::CreateXMLElement(name);
        if (!parameter) {
            ui()->MessageBox("\"" + name + "\" cannot be a parameter name. A parameter name begins with a letter or "
                             "\"_\" and holds only letters, digits, \"_\", \"-\" and \".\" (no spaces).",
                             MessageButtons::OK, MessageIcon::Exclamation, "New Parameter");
            return;
        }
        // Appended as it is: a second parameter of one name is kept beside the first.
        profile.AppendChild(parameter);
        lvProfileElements->addTopLevelItem(new QTreeWidgetItem(QStringList{Q(name), QString()}));
    });
}

void frmAddressBook::mnuDeleteParameter_Click() {
    QTreeWidgetItem* row = lvProfileElements->currentItem();
    if (!book_ || !site_ || !row) return;
    TrapAndShow(ui_, "frmAddressBook:mnuDeleteParameter_Click", [&] {
        const std::string name = row->text(0).toStdString();
        if (!Confirmed(ui(), "Delete the parameter: " + name)) return;
        site_.Remove(name);
        delete row;
    });
}

void frmAddressBook::mnuEditParameter_Click() {
    QTreeWidgetItem* row = lvProfileElements->currentItem();
    if (!book_ || !site_ || !row) return;
    TrapAndShow(ui_, "frmAddressBook:mnuEditParameter_Click", [&] {
        InputBoxOptions options;
        options.defaultText = row->text(1).toStdString();
        const auto value = ui()->InputBox("Enter new parameter value", "Edit Parameter", options);
        if (!value) return;
        site_.Parameter(row->text(0).toStdString()).setText(*value);
        row->setText(1, Q(*value));
    });
}

void frmAddressBook::mnuImport_Click() {
    if (!book_) return;
    bool imported = false;
    TrapAndShow(ui_, "frmAddressBook:mnuImport_Click", [&] {
        if (ui()->MessageBox("Import remote communications settings from existing schemes?", MessageButtons::OKCancel,
                             MessageIcon::Question, {}, MessageDefaultButton::First) == MessageResult::Cancel)
            return;
        imported = true;
        frmImport form(this);
        form.StartImport(*book_, this, schemesFolder_);
        if (form.SitesAdded() > 0 || form.Cancelled()) return;
        ui()->MessageBox(form.SchemesFound() == 0
                             ? "No schemes were found to import in \"" + schemesFolder_ + "\"."
                             : "The schemes found (" + std::to_string(form.SchemesFound()) +
                                   ") have no phone modem or network connection to import.",
                         MessageButtons::OK, MessageIcon::Information, "Import");
    });
    // Sites already added by an import that was stopped are shown too.
    if (imported) FillTree();
}

void frmAddressBook::mnuExit_Click() { close(); }

bool frmAddressBook::Form_QueryUnload() {
    if (!book_) return true;
    const auto failure = Trap([&] { book_->SaveAddressBook(); });
    return !failure || SaveFailed(*failure);
}

bool frmAddressBook::SaveFailed(const TrappedFailure& first) {
    TrappedFailure failure = first;
    enum { kTryAgain, kSaveElsewhere, kCloseUnsaved };
    const auto log = [this](const TrappedFailure& failed) {
        if (errors_) errors_->LogError(failed.number, failed.description, "frmAddressBook:Form_QueryUnload");
    };
    log(failure);
    for (;;) {
        std::optional<int> choice;
        Trap([&] {
            choice = ui()->Choose("The address book could not be saved.\r\n\r\n" + failure.description +
                                      "\r\n\r\nTry again, save it to another file, or close without saving (the "
                                      "file keeps what it held before).",
                                  {"&Try Again", "&Save to Another File...", "&Close Without Saving"},
                                  MessageIcon::Exclamation, "Address Book", kTryAgain);
        });
        if (!choice) return false;  // closed without a choice: back to editing
        if (*choice == kCloseUnsaved) return true;
        std::string target;  // empty: the book's own file
        if (*choice == kSaveElsewhere) {
            std::optional<std::string> path;
            Trap([&] { path = ui()->SaveFileName("Save Address Book As", book_->FilePath()); });
            if (!path || path->empty()) continue;
            target = *path;
        }
        const auto again = Trap([&] { book_->SaveAddressBook(target); });
        if (!again) return true;
        failure = *again;
        log(failure);
    }
}

void frmAddressBook::done(int result) {
    // Every way out saves the whole book; there is no way to leave it unsaved.
    if (!Form_QueryUnload()) return;
    QDialog::done(result);
}

}  // namespace meridex::ui
