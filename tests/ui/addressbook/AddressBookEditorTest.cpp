// The address book editor driven through its real widgets, its prompts answered by a script.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QToolBar>
#include <QTreeWidget>

#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/addressbook/AddressBook.h>
#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/ui/addressbook/frmAddressBook.h>
#include <meridex/ui/frame/ImageKeys.h>

#include "../../comms/CommsTestSupport.h"
#include "AddressBookTestSupport.h"
#include "DialogTest.h"
#include "TempDir.h"

using namespace meridex;
using namespace meridex::test;
using meridex::ui::frmAddressBook;

namespace {

const QStringList kButtons{"ADDGROUP", "DELETEGROUP", "ADDSITE", "DELETESITE", "ADDPARAM", "DELETEPARAM", "EDITPARAM"};
const QStringList kItems{"mnuAddGroup",  "mnuDeleteGroup",     "mnuAddSite",      "mnuDeleteSite",
                         "mnuAddParameter", "mnuDeleteParameter", "mnuEditParameter"};

class AddressBookEditor : public ::testing::Test {
protected:
    void Open(const std::string& book = {}) {
        bookFile_ = book.empty() ? WriteSmallBook(dir_) : book;
        mapFile_ = dir_.Write("map.xml", MapText());
        schemes_ = dir_.File("schemes");
        form_ = std::make_unique<frmAddressBook>(ui_);
        form_->setCommsSources(std::make_shared<FakePorts>(std::initializer_list<int>{1}),
                               std::make_shared<IniUserStore>(dir_.File("config")));
        form_->LoadAddressBook(bookFile_, mapFile_, schemes_);
        ASSERT_TRUE(ShowActive(form_.get()));
    }

    template <class T>
    T* Control(const char* name) const {
        return Child<T>(form_.get(), name);
    }
    QTreeWidget* TreeView() const { return Control<QTreeWidget>("tvGroups"); }
    QTreeWidget* Parameters() const { return Control<QTreeWidget>("lvProfileElements"); }
    QAction* Button(const QString& key) const { return Child<QAction>(Control<QToolBar>("Toolbar1"), key); }
    QTreeWidgetItem* Root() const { return TreeView()->topLevelItem(0); }

    // The node whose key is key, anywhere in the tree.
    QTreeWidgetItem* Node(const QString& key) const { return FindNode(TreeView(), key); }
    // Clicks node as a person does (its parents opened first).
    void ClickNode(QTreeWidgetItem* node) const {
        ASSERT_NE(node, nullptr);
        TreeView()->scrollToItem(node);
        QTest::mouseClick(TreeView()->viewport(), Qt::LeftButton, {}, TreeView()->visualItemRect(node).center());
        ASSERT_EQ(TreeView()->currentItem(), node);
    }
    void ClickRow(QTreeWidget* list, int row) const {
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->topLevelItem(row)).center());
    }
    // The text of each child of node, in order.
    static QStringList ChildTexts(const QTreeWidgetItem* node) {
        QStringList texts;
        for (int i = 0; i < node->childCount(); ++i) texts << node->child(i)->text(0);
        return texts;
    }
    QList<bool> Enabled() const {
        QList<bool> on;
        for (int i = 0; i < kButtons.size(); ++i) {
            const bool button = Button(kButtons[i])->isEnabled();
            EXPECT_EQ(Control<QAction>(kItems[i].toLatin1().constData())->isEnabled(), button) << kItems[i].toStdString();
            on << button;
        }
        return on;
    }
    QStringList ParameterRows() const {
        QStringList rows;
        for (int i = 0; i < Parameters()->topLevelItemCount(); ++i)
            rows << Parameters()->topLevelItem(i)->text(0) + "=" + Parameters()->topLevelItem(i)->text(1);
        return rows;
    }
    AddressBook Reloaded() const {
        AddressBook book;
        book.LoadAddressBook(bookFile_);
        return book;
    }

    TempDir dir_;
    std::string bookFile_, mapFile_, schemes_;
    std::shared_ptr<RecordingUserInterface> ui_ = std::make_shared<RecordingUserInterface>();
    std::unique_ptr<frmAddressBook> form_;
};

TEST_F(AddressBookEditor, FillsTheTreeGroupsBeforeSitesAndSelectsTheFirstSite) {
    Open();
    ASSERT_EQ(TreeView()->topLevelItemCount(), 1);
    EXPECT_EQ(Root()->text(0), "Address Book");
    EXPECT_EQ(ui::ItemKey(Root()), "ADDRESSBOOK");
    // Expanded, so the root shows the open folder too.
    EXPECT_EQ(ui::ImageKey(Root()), "OPENGROUP");
    EXPECT_EQ(ChildTexts(Root()), (QStringList{"North", "South", "Depot"}));
    QTreeWidgetItem* north = Root()->child(0);
    EXPECT_EQ(ChildTexts(north), (QStringList{"Hill", "River Gauge"}));
    EXPECT_EQ(ui::ItemKey(north), "\\North");
    EXPECT_EQ(ui::ItemKey(north->child(1)), "\\North\\River Gauge");
    EXPECT_EQ(ui::ImageKey(north->child(1)), "SITE");
    EXPECT_EQ(ui::ImageKey(Root()->child(1)), "CLOSEDGROUP");

    // The first site in node order is the one inside North\Hill, opened to be seen.
    QTreeWidgetItem* hillGauge = north->child(0)->child(0);
    EXPECT_EQ(TreeView()->currentItem(), hillGauge);
    EXPECT_TRUE(north->isExpanded());
    EXPECT_EQ(ui::ImageKey(north), "OPENGROUP");
    EXPECT_TRUE(Control<QWidget>("picSiteList")->isVisible());
    EXPECT_FALSE(Control<QWidget>("picGroupList")->isVisible());
    EXPECT_EQ(Control<QLabel>("lblProfileList")->text(), "Site: Hill Gauge");
    EXPECT_EQ(ParameterRows(),
              (QStringList{"NAME=Modem", "TYPE=RS232", "METHOD=PHONEMODEM", "PHONENUMBER=0311 555 1000"}));
}

TEST_F(AddressBookEditor, ABookWithoutSitesSelectsTheRootAndAMissingFileGivesAnEmptyBook) {
    Open(dir_.File("missing.xml"));
    EXPECT_EQ(Root()->childCount(), 0);
    EXPECT_EQ(TreeView()->currentItem(), Root());
    EXPECT_TRUE(Control<QWidget>("picGroupList")->isVisible());
    EXPECT_EQ(Control<QLabel>("lblGroupList")->text().left(16), "Group Contents: ");
    form_->close();
    EXPECT_TRUE(std::filesystem::exists(bookFile_));
}

TEST_F(AddressBookEditor, CommandsFollowTheKindOfNodeOnButtonsAndMenusAlike) {
    Open();
    ClickNode(Root());
    EXPECT_EQ(Enabled(), (QList<bool>{true, false, true, false, false, false, false}));
    ClickNode(Node("\\South"));
    EXPECT_EQ(Enabled(), (QList<bool>{true, true, true, false, false, false, false}));
    EXPECT_TRUE(Control<QWidget>("picGroupList")->isVisible());
    ClickNode(Node("\\Depot"));
    EXPECT_EQ(Enabled(), (QList<bool>{false, false, false, true, true, true, true}));
    EXPECT_TRUE(Control<QWidget>("picSiteList")->isVisible());
}

TEST_F(AddressBookEditor, ButtonsAndMenusCarryTheirCaptionsAndTips) {
    Open();
    EXPECT_EQ(Button("ADDGROUP")->text(), "&Add Group");
    EXPECT_EQ(Button("ADDGROUP")->toolTip(), "Add a new sub-group to the currently selected group");
    EXPECT_EQ(Button("ADDGROUP")->statusTip(), "Add a new group to the current group");
    EXPECT_EQ(Button("ADDPARAM")->toolTip(), "Add a new communications parameter to the currently selected site");
    EXPECT_EQ(Button("DELETESITE")->text(), "D&elete Site");
    for (const QString& key : kButtons) EXPECT_EQ(ui::ImageKey(Button(key)), key);
    EXPECT_EQ(Control<QMenu>("mnuFile")->title(), "&File");
    EXPECT_EQ(Control<QMenu>("mnuEdit")->title(), "&Edit");
    EXPECT_EQ(Control<QAction>("mnuExit")->text(), "E&xit");
    EXPECT_EQ(Control<QAction>("mnuDeleteParameter")->text(), "Delete P&arameter");
    EXPECT_EQ(TreeView()->toolTip(), "Select group or site to edit");
}

TEST_F(AddressBookEditor, AGroupListsItsSubGroupsThenItsSites) {
    Open();
    ClickNode(Node("\\North"));
    EXPECT_EQ(Control<QLabel>("lblGroupList")->text(), "Group Contents: North");
    const auto* list = Control<QTreeWidget>("lvGroupList");
    ASSERT_EQ(list->topLevelItemCount(), 2);
    EXPECT_EQ(list->topLevelItem(0)->text(0), "Hill");
    EXPECT_EQ(list->topLevelItem(0)->text(1), "Group");
    EXPECT_EQ(list->topLevelItem(1)->text(0), "River Gauge");
    EXPECT_EQ(list->topLevelItem(1)->text(1), "Site");
    EXPECT_EQ(ImageKeysOf(list), (QStringList{"CLOSEDGROUP", "SITE"}));
}

TEST_F(AddressBookEditor, ANewGroupNamedLikeASiblingGetsASuffixedKeyButShowsTheBareName) {
    Open();
    ClickNode(Root());
    ui_->QueueInput(std::nullopt);  // cancelled
    ui_->QueueInput(std::string());  // accepted empty
    ui_->QueueInput(std::string("North"));
    Button("ADDGROUP")->trigger();
    Control<QAction>("mnuAddGroup")->trigger();
    EXPECT_EQ(Root()->childCount(), 3);
    Button("ADDGROUP")->trigger();
    ASSERT_EQ(ui_->Inputs().size(), 3u);
    EXPECT_EQ(ui_->Inputs()[0].prompt, "Enter the new Group name");
    EXPECT_EQ(ui_->Inputs()[0].title, "New Site Group");

    QTreeWidgetItem* added = Node("\\North_1");
    ASSERT_NE(added, nullptr);
    EXPECT_EQ(added->text(0), "North");
    EXPECT_EQ(added->parent(), Root());
    EXPECT_EQ(ui::ImageKey(added), "CLOSEDGROUP");
    // The root stays selected and its list shows the new group.
    EXPECT_EQ(TreeView()->currentItem(), Root());
    EXPECT_EQ(Control<QTreeWidget>("lvGroupList")->topLevelItemCount(), 4);
    form_->close();
    EXPECT_FALSE(Reloaded().FindGroup("\\North_1").IsNull());
}

TEST_F(AddressBookEditor, DeletingAGroupAsksWithCancelAsDefaultAndOnlyOkDeletes) {
    Open();
    ClickNode(Node("\\South"));
    ui_->QueueMessageResult(MessageResult::Cancel);
    Button("DELETEGROUP")->trigger();
    ASSERT_EQ(ui_->Messages().size(), 1u);
    const auto& asked = ui_->Messages()[0];
    EXPECT_EQ(asked.text, "Delete the group \"South\" and its contents?");
    EXPECT_EQ(asked.buttons, MessageButtons::OKCancel);
    EXPECT_EQ(asked.icon, MessageIcon::Question);
    EXPECT_EQ(asked.defaultButton, MessageDefaultButton::Second);
    EXPECT_NE(Node("\\South"), nullptr);

    ui_->QueueMessageResult(MessageResult::OK);
    Control<QAction>("mnuDeleteGroup")->trigger();
    EXPECT_EQ(Node("\\South"), nullptr);
    form_->close();
    EXPECT_TRUE(Reloaded().FindGroup("\\South").IsNull());
}

TEST_F(AddressBookEditor, ADeletedSecondLevelGroupLeavesItsNodeButComesBackOnRefill) {
    Open();
    ClickNode(Node("\\North\\Hill"));
    ui_->QueueMessageResult(MessageResult::OK);
    Button("DELETEGROUP")->trigger();
    EXPECT_EQ(Node("\\North\\Hill"), nullptr);
    // Removal is asked of the root group, where no first-level group is keyed "Hill".
    form_->FillTree();
    EXPECT_NE(Node("\\North\\Hill"), nullptr);
    form_->close();
    EXPECT_FALSE(Reloaded().FindGroup("\\North\\Hill").IsNull());
}

TEST_F(AddressBookEditor, TheRootCannotBeDeletedNorRenamed) {
    Open();
    ClickNode(Root());
    Button("DELETEGROUP")->trigger();
    Button("DELETESITE")->trigger();
    EXPECT_TRUE(ui_->Messages().empty());
    EXPECT_FALSE(Root()->flags() & Qt::ItemIsEditable);
    EXPECT_FALSE(form_->tvGroups_BeforeLabelEdit(Root()));
    Root()->setText(0, "Renamed");
    EXPECT_EQ(Root()->text(0), "Address Book");
}

TEST_F(AddressBookEditor, AddingASiteTakesTheNewSiteDialogsNameAndDevice) {
    Open();
    ClickNode(Node("\\South"));
    ModalScript()
        .Then([](QWidget* dialog) {
            EXPECT_EQ(dialog->windowTitle(), "Create New Site");
            auto* name = Child<QLineEdit>(dialog, "txtName");
            name->setText("Weir");
            auto* devices = Child<QTreeWidget>(dialog, "lvDevices");
            devices->setCurrentItem(devices->topLevelItem(1));
            Click(Child<QPushButton>(dialog, "cmdOK"));
        })
        .Run([&] { Button("ADDSITE")->trigger(); });
    QTreeWidgetItem* weir = Node("\\South\\Weir");
    ASSERT_NE(weir, nullptr);
    EXPECT_EQ(weir->text(0), "Weir");
    EXPECT_EQ(ui::ImageKey(weir), "SITE");

    ModalScript().Then([](QWidget* dialog) { Click(Child<QPushButton>(dialog, "cmdCancel")); }).Run([&] {
        Control<QAction>("mnuAddSite")->trigger();
    });
    EXPECT_EQ(Node("\\South")->childCount(), 1);
    form_->close();
    const Site saved = Reloaded().FindSite("\\South\\Weir");
    ASSERT_FALSE(saved.IsNull());
    EXPECT_EQ(saved.Parameter("NAME").Text(), "Office Modem");
}

TEST_F(AddressBookEditor, DeletingASiteAsksWithoutAQuestionMark) {
    Open();
    ClickNode(Node("\\Depot"));
    ui_->QueueMessageResult(MessageResult::OK);
    Button("DELETESITE")->trigger();
    ASSERT_EQ(ui_->Messages().size(), 1u);
    EXPECT_EQ(ui_->Messages()[0].text, "Delete the site \"Depot\"");
    EXPECT_EQ(ui_->Messages()[0].defaultButton, MessageDefaultButton::Second);
    EXPECT_EQ(Node("\\Depot"), nullptr);
    form_->close();
    EXPECT_TRUE(Reloaded().FindSite("\\Depot").IsNull());
}

TEST_F(AddressBookEditor, AParameterAddedTwiceGivesTwoRowsOfOneName) {
    Open();
    ClickNode(Node("\\Depot"));
    ui_->QueueInput(std::string("PHONENUMBER"));
    ui_->QueueInput(std::string());
    Button("ADDPARAM")->trigger();
    Control<QAction>("mnuAddParameter")->trigger();
    EXPECT_EQ(ui_->Inputs()[0].prompt, "Enter new parameter name");
    EXPECT_EQ(ui_->Inputs()[0].title, "New Parameter");
    EXPECT_EQ(ParameterRows(), (QStringList{"NAME=Modem", "TYPE=RS232", "METHOD=PHONEMODEM",
                                            "PHONENUMBER=0311 555 1002", "PHONENUMBER="}));
    form_->close();
    EXPECT_EQ(Reloaded().FindSite("\\Depot").ParameterCount(), 5);
}

TEST_F(AddressBookEditor, AParameterNameThatCannotNameAnElementIsRefusedAndAddsNoRow) {
    Open();
    ClickNode(Node("\\Depot"));
    const QStringList before = ParameterRows();
    // Each answer and whether a message says which names are allowed (an empty answer does nothing).
    for (const auto& [name, refused] : {std::pair{"Baud Rate", true}, {"2nd", true}, {"A<B", true}, {"", false}}) {
        SCOPED_TRACE(name);
        ui_->Clear();
        ui_->QueueInput(std::string(name));
        Button("ADDPARAM")->trigger();
        EXPECT_EQ(ParameterRows(), before);
        ASSERT_EQ(ui_->Messages().size(), refused ? 1u : 0u);
        if (refused) {
            EXPECT_NE(ui_->Messages()[0].text.find("begins with a letter"), std::string::npos);
        }
    }
    EXPECT_TRUE(form_->isVisible());
    form_->close();
    EXPECT_EQ(Reloaded().FindSite("\\Depot").ParameterCount(), 4);
}

TEST_F(AddressBookEditor, EditingAValueTellsCancelFromAnEmptyAnswer) {
    Open();
    ClickNode(Node("\\Depot"));
    ClickRow(Parameters(), 3);
    ui_->QueueInput(std::nullopt);
    Button("EDITPARAM")->trigger();
    ASSERT_EQ(ui_->Inputs().size(), 1u);
    EXPECT_EQ(ui_->Inputs()[0].prompt, "Enter new parameter value");
    EXPECT_EQ(ui_->Inputs()[0].title, "Edit Parameter");
    EXPECT_EQ(ui_->Inputs()[0].options.defaultText, "0311 555 1002");
    EXPECT_EQ(ParameterRows()[3], "PHONENUMBER=0311 555 1002");

    ui_->QueueInput(std::string());
    Control<QAction>("mnuEditParameter")->trigger();
    EXPECT_EQ(ParameterRows()[3], "PHONENUMBER=");

    // A double click on a row edits it too.
    ui_->QueueInput(std::string("0800 1"));
    const QRect row = Parameters()->visualItemRect(Parameters()->topLevelItem(3));
    QTest::mouseDClick(Parameters()->viewport(), Qt::LeftButton, {}, row.center());
    EXPECT_EQ(ParameterRows()[3], "PHONENUMBER=0800 1");
    form_->close();
    EXPECT_EQ(Reloaded().FindSite("\\Depot").Parameter("PHONENUMBER").Text(), "0800 1");
}

TEST_F(AddressBookEditor, DeletingAParameterAsksAndRemovesItsRow) {
    Open();
    ClickNode(Node("\\Depot"));
    Button("DELETEPARAM")->trigger();  // no row selected: nothing asked
    EXPECT_TRUE(ui_->Messages().empty());
    ClickRow(Parameters(), 1);
    ui_->QueueMessageResult(MessageResult::OK);
    Button("DELETEPARAM")->trigger();
    ASSERT_EQ(ui_->Messages().size(), 1u);
    EXPECT_EQ(ui_->Messages()[0].text, "Delete the parameter: TYPE");
    EXPECT_EQ(ui_->Messages()[0].icon, MessageIcon::Question);
    EXPECT_EQ(ParameterRows(), (QStringList{"NAME=Modem", "METHOD=PHONEMODEM", "PHONENUMBER=0311 555 1002"}));
    form_->close();
    EXPECT_TRUE(Reloaded().FindSite("\\Depot").Parameter("TYPE").IsNull());
}

TEST_F(AddressBookEditor, RenamingChangesTheNameOnlyAndRedrawsThePane) {
    Open();
    QTreeWidgetItem* north = Node("\\North");
    ClickNode(north);
    // F2 opens the label for editing, as on the desktop.
    QTest::keyClick(TreeView(), Qt::Key_F2);
    auto* editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, "Uplands");
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_COMPARE(north->text(0), QString("Uplands"));  // the view commits on its next turn
    EXPECT_EQ(ui::ItemKey(north), "\\North");
    EXPECT_EQ(Control<QLabel>("lblGroupList")->text(), "Group Contents: Uplands");
    form_->close();
    const SiteGroup saved = Reloaded().FindGroup("\\North");
    ASSERT_FALSE(saved.IsNull());
    EXPECT_EQ(saved.Name(), "Uplands");
    EXPECT_EQ(saved.Key(), "North");
}

TEST_F(AddressBookEditor, ExpandingAndCollapsingSwitchTheFolderImages) {
    Open();
    QTreeWidgetItem* south = Node("\\South");
    MakeGroup(form_->Book()->FindGroup("\\South"), "Inner");
    form_->FillTree();
    south = Node("\\South");
    south->setExpanded(true);
    EXPECT_EQ(ui::ImageKey(south), "OPENGROUP");
    south->setExpanded(false);
    EXPECT_EQ(ui::ImageKey(south), "CLOSEDGROUP");
    Root()->setExpanded(false);
    EXPECT_EQ(ui::ImageKey(Root()), "CLOSEDGROUP");
}

TEST_F(AddressBookEditor, GroupsOpenedLaterShowTheirWholeContentsAndKeepTheirEdits) {
    Open();
    const SiteGroup inner = MakeGroup(form_->Book()->FindGroup("\\South"), "Inner");
    MakeGroup(inner, "Deep").AddSite(MakeSite("Deep Gauge", "0311 555 1003"));
    inner.AddSite(MakeSite("Inner Gauge", "0311 555 1004"));
    form_->FillTree();
    QTreeWidgetItem* south = Node("\\South");
    south->setExpanded(true);
    QTreeWidgetItem* innerNode = Node("\\South\\Inner");
    ASSERT_NE(innerNode, nullptr);
    EXPECT_EQ(ChildTexts(innerNode), (QStringList{"Deep", "Inner Gauge"}));
    innerNode->setExpanded(true);
    QTreeWidgetItem* deep = Node("\\South\\Inner\\Deep\\Deep Gauge");
    ASSERT_NE(deep, nullptr);
    EXPECT_EQ(ui::ImageKey(deep), "SITE");
    ClickNode(deep);
    EXPECT_EQ(ParameterRows().last(), "PHONENUMBER=0311 555 1003");
    // A deeper group's node, once deleted, stays gone when its parent is closed and opened again.
    ClickNode(innerNode);
    ui_->QueueMessageResult(MessageResult::OK);
    Button("DELETEGROUP")->trigger();
    south->setExpanded(false);
    south->setExpanded(true);
    EXPECT_EQ(Node("\\South\\Inner"), nullptr);
}

TEST_F(AddressBookEditor, EveryCloseRewritesTheFile) {
    Open();
    std::filesystem::remove(bookFile_);
    Control<QAction>("mnuExit")->trigger();
    EXPECT_FALSE(form_->isVisible());
    EXPECT_TRUE(std::filesystem::exists(bookFile_));
    EXPECT_FALSE(Reloaded().FindSite("\\Depot").IsNull());

    std::filesystem::remove(bookFile_);
    form_->show();
    QTest::keyClick(form_.get(), Qt::Key_Escape);
    EXPECT_TRUE(std::filesystem::exists(bookFile_));
}

TEST_F(AddressBookEditor, ASaveThatFailsOnCloseIsLoggedAndOffersTryAgainAnotherFileOrClosingUnsaved) {
    ErrorHandler errors(ui_);
    errors.setErrorLogFile(dir_.File("ErrorLog.txt"));
    errors.setLogErrors(true);
    const std::string other = dir_.File("elsewhere.xml");
    // The choices made in turn (unqueued ones close the box without a choice), the answer to the
    // file question, whether the window closed, and the file the book was then saved in.
    const struct {
        std::vector<std::optional<int>> choices;
        std::optional<std::string> file;
        bool closed;
        std::string savedIn;
    } cases[] = {
        {{std::nullopt}, {}, false, {}},
        {{0}, {}, false, {}},  // tried again: it fails again and is asked again
        {{1}, std::nullopt, false, {}},  // no other file given: asked again
        {{1}, other, true, other},
        {{2}, {}, true, {}},  // closed unsaved: nothing written anywhere
    };
    int logged = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        std::filesystem::remove(other);
        Open(dir_.Write("share/book.xml", TempDir::Read(WriteSmallBook(dir_))));
        form_->setErrorHandler(&errors);
        std::filesystem::remove_all(dir_.File("share"));  // the folder has gone
        ui_->Clear();
        for (const auto& choice : c.choices) ui_->QueueChoice(choice);
        if (c.choices[0] == 1) ui_->QueueSaveFileName(c.file);
        Control<QAction>("mnuExit")->trigger();
        EXPECT_EQ(form_->isVisible(), !c.closed);
        ASSERT_FALSE(ui_->Choices().empty());
        EXPECT_EQ(ui_->Choices()[0].choices,
                  (std::vector<std::string>{"&Try Again", "&Save to Another File...", "&Close Without Saving"}));
        EXPECT_NE(ui_->Choices()[0].text.find("could not be saved"), std::string::npos);
        EXPECT_EQ(ui_->Choices().size(), c.closed ? 1u : c.choices[0] ? 2u : 1u);
        EXPECT_FALSE(std::filesystem::exists(dir_.File("share")));
        EXPECT_EQ(std::filesystem::exists(other), !c.savedIn.empty());
        if (!c.savedIn.empty()) {
            AddressBook saved;
            saved.LoadAddressBook(c.savedIn);
            EXPECT_FALSE(saved.FindSite("\\Depot").IsNull());
        }
        logged += 1 + (c.choices[0] == 0 ? 1 : 0);
    }
    // One line per failed save, each naming where it happened.
    const std::string log = TempDir::Read(dir_.File("ErrorLog.txt"));
    int lines = 0;
    for (auto at = log.find("frmAddressBook:Form_QueryUnload"); at != std::string::npos;
         at = log.find("frmAddressBook:Form_QueryUnload", at + 1))
        ++lines;
    EXPECT_EQ(lines, logged);
}

TEST_F(AddressBookEditor, CancellingTheImportLeavesTheTreeAsItIs) {
    Open();
    ClickNode(Node("\\North\\Hill"));
    ui_->QueueMessageResult(MessageResult::OK);
    Button("DELETEGROUP")->trigger();  // its node goes; the book keeps it (asked of the root group)
    ClickNode(Node("\\Depot"));
    ui_->QueueMessageResult(MessageResult::Cancel);
    Control<QAction>("mnuImport")->trigger();
    EXPECT_EQ(Node("\\North\\Hill"), nullptr);
    EXPECT_EQ(TreeView()->currentItem(), Node("\\Depot"));
}

TEST_F(AddressBookEditor, ImportSaysSoWhenItFoundNothingToImport) {
    Open();
    // The scheme written first (none) and what the import then says.
    const std::pair<const char*, std::string> cases[] = {
        {nullptr, "No schemes were found to import in \"" + schemes_ + "\"."},
        {"East/b.xml", "The schemes found (1) have no phone modem or network connection to import."},
    };
    for (const auto& [scheme, said] : cases) {
        if (scheme) dir_.Write(std::string("schemes/") + scheme, SchemeText({ProfileText("RS232", "DIRECT", "Cable")}));
        ui_->Clear();
        ui_->QueueMessageResult(MessageResult::OK);
        Control<QAction>("mnuImport")->trigger();
        ASSERT_EQ(ui_->Messages().size(), 2u);
        EXPECT_EQ(ui_->Messages()[1].text, said);
    }
}

TEST_F(AddressBookEditor, ImportAsksFirstThenFillsTheTreeFromTheSchemes) {
    Open();
    dir_.Write("schemes/North/Hill/a.xml", SchemeText({ProfileText("RS232", "PHONEMODEM", "Logger Modem")}));
    dir_.Write("schemes/East/b.xml", SchemeText({ProfileText("RS232", "DIRECT", "Cable")}));
    ui_->QueueMessageResult(MessageResult::Cancel);
    Control<QAction>("mnuImport")->trigger();
    ASSERT_EQ(ui_->Messages().size(), 1u);
    EXPECT_EQ(ui_->Messages()[0].text, "Import remote communications settings from existing schemes?");
    EXPECT_EQ(ui_->Messages()[0].defaultButton, MessageDefaultButton::First);
    const int before = Node("\\North\\Hill")->childCount();

    ui_->QueueMessageResult(MessageResult::OK);
    Control<QAction>("mnuImport")->trigger();
    // The scheme's own file name becomes the last group level below North\Hill.
    QTreeWidgetItem* hill = Node("\\North\\Hill");
    ASSERT_NE(hill, nullptr);
    EXPECT_EQ(hill->childCount(), before + 1);
    EXPECT_EQ(Node("\\East"), nullptr);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(AddressBookEditor, SiblingGroupsOfOneNameAreBothShownAndEachSelectsItsOwn) {
    // Two groups keyed alike, as a hand-edited book may have them: their sites' paths are the same.
    const auto site = [](const char* phone) {
        return std::string("<SITE><KEY>S</KEY><NAME>S</NAME><PATH>\\A\\S</PATH><PROFILE><PHONENUMBER>") +
               phone + "</PHONENUMBER></PROFILE></SITE>";
    };
    const std::string group = "<GROUP><KEY>A</KEY><NAME>A</NAME><PATH>\\A</PATH>";
    const std::string file = dir_.Write("twins.xml", "<V4ADDRESSBOOK>" + group + site("1") +
                                                         "</GROUP>" + group + site("2") + "</GROUP></V4ADDRESSBOOK>");
    Open(file);
    ASSERT_EQ(ChildTexts(Root()), (QStringList{"A", "A"}));
    ClickNode(Root()->child(1)->child(0));
    EXPECT_EQ(ParameterRows().last(), "PHONENUMBER=2");
    ClickNode(Root()->child(0)->child(0));
    EXPECT_EQ(ParameterRows().last(), "PHONENUMBER=1");
}

}  // namespace
