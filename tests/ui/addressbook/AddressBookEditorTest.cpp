// The address book editor driven through its real widgets, its prompts answered by a script.
#include <gtest/gtest.h>

#include <QApplication>
#include <QToolBar>

#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/ui/addressbook/frmAddressBook.h>

#include "AddressBookTestSupport.h"

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
        // Written while an editor opened before is still there, which merges when it goes.
        const std::string map = dir_.Write("map.xml", MapText());
        schemes_ = dir_.File("schemes");
        form_ = std::make_unique<frmAddressBook>(ui_);
        form_->setCommsSources(std::make_shared<FakePorts>(std::initializer_list<int>{1}),
                               std::make_shared<IniUserStore>(dir_.File("config")));
        form_->LoadAddressBook(bookFile_, map, schemes_);
        ASSERT_TRUE(ShowActive(form_.get()));
    }

    template <class T>
    T* Control(const QString& name) const {
        return Child<T>(form_.get(), name);
    }
    QTreeWidget* TreeView() const { return Control<QTreeWidget>("tvGroups"); }
    QTreeWidget* Parameters() const { return Control<QTreeWidget>("lvProfileElements"); }
    QAction* Button(const QString& key) const { return Child<QAction>(Control<QToolBar>("Toolbar1"), key); }
    QTreeWidgetItem* Root() const { return TreeView()->topLevelItem(0); }
    QTreeWidgetItem* Node(const QString& key) const { return Keyed(TreeView(), key); }
    // Clicks node as a person does (its parents opened first).
    void ClickNode(QTreeWidgetItem* node) const {
        ASSERT_NE(node, nullptr);
        ClickRow(TreeView(), node);
        ASSERT_EQ(TreeView()->currentItem(), node);
    }
    QList<bool> Enabled() const {
        QList<bool> on;
        for (int i = 0; i < kButtons.size(); ++i) {
            on << Button(kButtons[i])->isEnabled();
            EXPECT_EQ(Control<QAction>(kItems[i])->isEnabled(), on.last()) << kItems[i].toStdString();
        }
        return on;
    }
    QStringList ParameterRows() const {
        QStringList rows;
        for (int i = 0; i < Parameters()->topLevelItemCount(); ++i)
            rows << Parameters()->topLevelItem(i)->text(0) + "=" + Parameters()->topLevelItem(i)->text(1);
        return rows;
    }
    // The book as the file now holds it, once the editor has closed.
    AddressBook Saved() const {
        form_->close();
        AddressBook book;
        book.LoadAddressBook(bookFile_);
        return book;
    }

    TempDir dir_;
    std::string bookFile_, schemes_;
    std::shared_ptr<RecordingUserInterface> ui_ = std::make_shared<RecordingUserInterface>();
    std::unique_ptr<frmAddressBook> form_;
};

TEST_F(AddressBookEditor, FillsTheTreeGroupsBeforeSitesAndSelectsTheFirstSite) {
    Open();
    // The root is expanded, so it shows the open folder too; the first site in node order, the one
    // inside North\Hill, is selected and opened to be seen.
    EXPECT_EQ(Nodes(TreeView()), (QStringList{"Address Book ADDRESSBOOK OPENGROUP", "  North \\North OPENGROUP",
                                              "    Hill \\North\\Hill OPENGROUP",
                                              "      Hill Gauge \\North\\Hill\\Hill Gauge SITE",
                                              "    River Gauge \\North\\River Gauge SITE",
                                              "  South \\South CLOSEDGROUP", "  Depot \\Depot SITE"}));
    EXPECT_EQ(TreeView()->currentItem(), Node("\\North\\Hill\\Hill Gauge"));
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

TEST_F(AddressBookEditor, CommandsFollowTheKindOfNodeAndTheRootCannotBeDeletedNorRenamed) {
    Open();
    for (const QString& key : kButtons) EXPECT_EQ(ui::ImageKey(Button(key)), key);
    ClickNode(Root());
    EXPECT_EQ(Enabled(), (QList<bool>{true, false, true, false, false, false, false}));
    Button("DELETEGROUP")->trigger();
    Button("DELETESITE")->trigger();
    EXPECT_TRUE(ui_->Messages().empty());
    EXPECT_FALSE(Root()->flags() & Qt::ItemIsEditable);
    EXPECT_FALSE(form_->tvGroups_BeforeLabelEdit(Root()));
    Root()->setText(0, "Renamed");
    EXPECT_EQ(Root()->text(0), "Address Book");

    ClickNode(Node("\\South"));
    EXPECT_EQ(Enabled(), (QList<bool>{true, true, true, false, false, false, false}));
    EXPECT_TRUE(Control<QWidget>("picGroupList")->isVisible());
    ClickNode(Node("\\Depot"));
    EXPECT_EQ(Enabled(), (QList<bool>{false, false, false, true, true, true, true}));
    EXPECT_TRUE(Control<QWidget>("picSiteList")->isVisible());
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

    EXPECT_TRUE(Nodes(TreeView()).contains("  North \\North_1 CLOSEDGROUP"))
        << Nodes(TreeView()).join("|").toStdString();
    // The root stays selected and its list shows the new group.
    EXPECT_EQ(TreeView()->currentItem(), Root());
    EXPECT_EQ(Control<QTreeWidget>("lvGroupList")->topLevelItemCount(), 4);
    EXPECT_FALSE(Saved().FindGroup("\\North_1").IsNull());
}

TEST_F(AddressBookEditor, DeletingAGroupOrASiteAsksWithCancelAsDefaultAndOnlyOkDeletes) {
    // The node, its delete command, and the question (a site's has no question mark).
    const struct {
        const char* node;
        const char* command;
        std::string asked;
    } cases[] = {{"\\South", "DELETEGROUP", "Delete the group \"South\" and its contents?"},
                 {"\\Depot", "DELETESITE", "Delete the site \"Depot\""}};
    Open();
    for (const auto& c : cases) {
        ClickNode(Node(c.node));
        ui_->Clear();
        ui_->QueueMessageResult(MessageResult::Cancel);
        Button(c.command)->trigger();
        ASSERT_EQ(ui_->Messages().size(), 1u);
        EXPECT_EQ(ui_->Messages()[0].text, c.asked);
        EXPECT_EQ(ui_->Messages()[0].buttons, MessageButtons::OKCancel);
        EXPECT_EQ(ui_->Messages()[0].icon, MessageIcon::Question);
        EXPECT_EQ(ui_->Messages()[0].defaultButton, MessageDefaultButton::Second);
        EXPECT_NE(Node(c.node), nullptr);

        ui_->QueueMessageResult(MessageResult::OK);
        Control<QAction>(kItems[kButtons.indexOf(c.command)])->trigger();
        EXPECT_EQ(Node(c.node), nullptr);
    }
    const AddressBook saved = Saved();
    EXPECT_TRUE(saved.FindGroup("\\South").IsNull());
    EXPECT_TRUE(saved.FindSite("\\Depot").IsNull());
}

TEST_F(AddressBookEditor, ADeletedSecondLevelGroupLeavesItsNodeGoneUntilARefillAndACancelledImport) {
    Open();
    ClickNode(Node("\\North\\Hill"));
    ui_->QueueMessageResult(MessageResult::OK);
    Button("DELETEGROUP")->trigger();
    EXPECT_EQ(Node("\\North\\Hill"), nullptr);
    // A cancelled import leaves the tree as it is.
    ClickNode(Node("\\Depot"));
    ui_->QueueMessageResult(MessageResult::Cancel);
    Control<QAction>("mnuImport")->trigger();
    EXPECT_EQ(Node("\\North\\Hill"), nullptr);
    EXPECT_EQ(TreeView()->currentItem(), Node("\\Depot"));
    // Removal is asked of the root group, where no first-level group is keyed "Hill".
    form_->FillTree();
    EXPECT_NE(Node("\\North\\Hill"), nullptr);
    EXPECT_FALSE(form_->Book()->FindGroup("\\North\\Hill").IsNull());
}

TEST_F(AddressBookEditor, AddingASiteTakesTheNewSiteDialogsNameAndDevice) {
    Open();
    ClickNode(Node("\\South"));
    ModalScript()
        .Then([](QWidget* dialog) {
            EXPECT_EQ(dialog->windowTitle(), "Create New Site");
            Child<QLineEdit>(dialog, "txtName")->setText("Weir");
            auto* devices = Child<QTreeWidget>(dialog, "lvDevices");
            devices->setCurrentItem(devices->topLevelItem(1));
            Click(Child<QPushButton>(dialog, "cmdOK"));
        })
        .Run([&] { Button("ADDSITE")->trigger(); });
    EXPECT_TRUE(Nodes(TreeView()).contains("    Weir \\South\\Weir SITE"))
        << Nodes(TreeView()).join("|").toStdString();

    ModalScript().Then([](QWidget* dialog) { Click(Child<QPushButton>(dialog, "cmdCancel")); }).Run([&] {
        Control<QAction>("mnuAddSite")->trigger();
    });
    EXPECT_EQ(Node("\\South")->childCount(), 1);
    const Site saved = Saved().FindSite("\\South\\Weir");
    ASSERT_FALSE(saved.IsNull());
    EXPECT_EQ(saved.Parameter("NAME").Text(), "Office Modem");
}

TEST_F(AddressBookEditor, AParameterNameMustNameAnElementAndMayRepeatOne) {
    Open();
    ClickNode(Node("\\Depot"));
    QStringList rows = ParameterRows();
    // Each answer and what it does: refused with a message saying which names are allowed, nothing
    // (an empty answer), or a new row, even of a name the site already has.
    enum Outcome { Refused, Nothing, Added };
    const std::pair<const char*, Outcome> cases[] = {
        {"Baud Rate", Refused}, {"2nd", Refused}, {"A<B", Refused}, {"", Nothing}, {"PHONENUMBER", Added}};
    for (const auto& [name, outcome] : cases) {
        SCOPED_TRACE(name);
        ui_->Clear();
        ui_->QueueInput(std::string(name));
        Control<QAction>(outcome == Added ? "mnuAddParameter" : "ADDPARAM")->trigger();
        ASSERT_EQ(ui_->Inputs().size(), 1u);
        EXPECT_EQ(ui_->Inputs()[0].prompt, "Enter new parameter name");
        EXPECT_EQ(ui_->Inputs()[0].title, "New Parameter");
        if (outcome == Added) rows << QString(name) + "=";
        EXPECT_EQ(ParameterRows(), rows);
        ASSERT_EQ(ui_->Messages().size(), outcome == Refused ? 1u : 0u);
        if (outcome == Refused) {
            EXPECT_NE(ui_->Messages()[0].text.find("begins with a letter"), std::string::npos);
        }
    }
    EXPECT_TRUE(form_->isVisible());
    EXPECT_EQ(Saved().FindSite("\\Depot").ParameterCount(), 5);
}

TEST_F(AddressBookEditor, EditingAValueTellsCancelFromAnEmptyAnswerAndDeletingAParameterAsks) {
    Open();
    ClickNode(Node("\\Depot"));
    Button("DELETEPARAM")->trigger();  // no row selected: nothing asked
    Button("EDITPARAM")->trigger();
    EXPECT_TRUE(ui_->Messages().empty());
    EXPECT_TRUE(ui_->Inputs().empty());
    ClickRow(Parameters(), Parameters()->topLevelItem(3));
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
    DoubleClickRow(Parameters(), Parameters()->topLevelItem(3));
    EXPECT_EQ(ParameterRows()[3], "PHONENUMBER=0800 1");

    // Deleting asks, and removes the row.
    ClickRow(Parameters(), Parameters()->topLevelItem(1));
    ui_->QueueMessageResult(MessageResult::OK);
    Button("DELETEPARAM")->trigger();
    ASSERT_EQ(ui_->Messages().size(), 1u);
    EXPECT_EQ(ui_->Messages()[0].text, "Delete the parameter: TYPE");
    EXPECT_EQ(ui_->Messages()[0].icon, MessageIcon::Question);
    EXPECT_EQ(ParameterRows(), (QStringList{"NAME=Modem", "METHOD=PHONEMODEM", "PHONENUMBER=0800 1"}));
    const Site saved = Saved().FindSite("\\Depot");
    EXPECT_TRUE(saved.Parameter("TYPE").IsNull());
    EXPECT_EQ(saved.Parameter("PHONENUMBER").Text(), "0800 1");
}

TEST_F(AddressBookEditor, AGroupListsItsSubGroupsThenItsSitesAndRenamingChangesTheNameOnly) {
    Open();
    QTreeWidgetItem* north = Node("\\North");
    ClickNode(north);
    auto* list = Control<QTreeWidget>("lvGroupList");
    EXPECT_EQ(Texts(list), (QStringList{"Hill", "River Gauge"}));
    EXPECT_EQ(list->topLevelItem(0)->text(1) + "," + list->topLevelItem(1)->text(1), "Group,Site");
    EXPECT_EQ(ImageKeysOf(list), (QStringList{"CLOSEDGROUP", "SITE"}));
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
    const SiteGroup saved = Saved().FindGroup("\\North");
    ASSERT_FALSE(saved.IsNull());
    EXPECT_EQ(saved.Name(), "Uplands");
    EXPECT_EQ(saved.Key(), "North");
}

TEST_F(AddressBookEditor, GroupsOpenedLaterShowTheirWholeContentsSwitchFolderImagesAndKeepTheirEdits) {
    const std::string deepGroup = GroupText("\\South\\Inner\\Deep",
                                            SiteText("\\South\\Inner\\Deep", "Deep Gauge", "0311 555 1003"));
    Open(WriteSmallBook(dir_, GroupText("\\South\\Inner",
                                        deepGroup + SiteText("\\South\\Inner", "Inner Gauge", "0311 555 1004"))));
    QTreeWidgetItem* south = Node("\\South");
    south->setExpanded(true);
    Node("\\South\\Inner")->setExpanded(true);
    EXPECT_EQ(Nodes(TreeView()).mid(5, 5),
              (QStringList{"  South \\South OPENGROUP", "    Inner \\South\\Inner OPENGROUP",
                           "      Deep \\South\\Inner\\Deep CLOSEDGROUP",
                           "        Deep Gauge \\South\\Inner\\Deep\\Deep Gauge SITE",
                           "      Inner Gauge \\South\\Inner\\Inner Gauge SITE"}));
    ClickNode(Node("\\South\\Inner\\Deep\\Deep Gauge"));
    EXPECT_EQ(ParameterRows().last(), "PHONENUMBER=0311 555 1003");
    // A deeper group's node, once deleted, stays gone when its parent is closed and opened again.
    ClickNode(Node("\\South\\Inner"));
    ui_->QueueMessageResult(MessageResult::OK);
    Button("DELETEGROUP")->trigger();
    south->setExpanded(false);
    EXPECT_EQ(ui::ImageKey(south), "CLOSEDGROUP");
    south->setExpanded(true);
    EXPECT_EQ(Node("\\South\\Inner"), nullptr);
    Root()->setExpanded(false);
    EXPECT_EQ(ui::ImageKey(Root()), "CLOSEDGROUP");
}

TEST_F(AddressBookEditor, EveryCloseRewritesTheFile) {
    Open();
    std::filesystem::remove(bookFile_);
    Control<QAction>("mnuExit")->trigger();
    EXPECT_FALSE(form_->isVisible());
    ASSERT_TRUE(std::filesystem::exists(bookFile_));
    EXPECT_FALSE(Saved().FindSite("\\Depot").IsNull());

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
    const std::string log = TempDir::Read(dir_.File("ErrorLog.txt")), where = "frmAddressBook:Form_QueryUnload";
    int lines = 0;
    for (auto at = log.find(where); at != std::string::npos; at = log.find(where, at + 1)) ++lines;
    EXPECT_EQ(lines, logged);
}

TEST_F(AddressBookEditor, ImportAsksFirstSaysSoWhenItFoundNothingAndFillsTheTreeFromTheSchemes) {
    Open();
    // The scheme written first (none), the answer to the question, and what the import then says.
    const struct {
        const char* scheme;
        MessageResult answer;
        std::string said;
    } cases[] = {
        {nullptr, MessageResult::OK, "No schemes were found to import in \"" + schemes_ + "\"."},
        {"East/b.xml", MessageResult::OK, "The schemes found (1) have no phone modem or network connection to import."},
        {"North/Hill/a.xml", MessageResult::Cancel, {}},
        {nullptr, MessageResult::OK, {}},
    };
    const int before = Node("\\North\\Hill")->childCount();
    for (const auto& c : cases) {
        const bool modem = c.scheme && std::string(c.scheme).starts_with("North");
        const std::string profile = modem ? ProfileText("RS232", "PHONEMODEM", "Logger Modem")
                                          : ProfileText("RS232", "DIRECT", "Cable");
        if (c.scheme) dir_.Write(std::string("schemes/") + c.scheme, SchemeText({profile}));
        ui_->Clear();
        ui_->QueueMessageResult(c.answer);
        Control<QAction>("mnuImport")->trigger();
        ASSERT_EQ(ui_->Messages().size(), c.said.empty() ? 1u : 2u);
        EXPECT_EQ(ui_->Messages()[0].text, "Import remote communications settings from existing schemes?");
        EXPECT_EQ(ui_->Messages()[0].defaultButton, MessageDefaultButton::First);
        if (!c.said.empty()) {
            EXPECT_EQ(ui_->Messages()[1].text, c.said);
        }
    }
    // The scheme's own file name becomes the last group level below North\Hill.
    ASSERT_NE(Node("\\North\\Hill"), nullptr);
    EXPECT_EQ(Node("\\North\\Hill")->childCount(), before + 1);
    EXPECT_EQ(Node("\\East"), nullptr);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(AddressBookEditor, SiblingGroupsOfOneNameAreBothShownAndEachSelectsItsOwn) {
    // Two groups keyed alike, as a hand-edited book may have them: their sites' paths are the same.
    Open(dir_.Write("twins.xml", "<V4ADDRESSBOOK>" + GroupText("\\A", SiteText("\\A", "S", "1")) +
                                     GroupText("\\A", SiteText("\\A", "S", "2")) + "</V4ADDRESSBOOK>"));
    ASSERT_EQ(Nodes(TreeView()).mid(1), (QStringList{"  A \\A OPENGROUP", "    S \\A\\S SITE", "  A \\A CLOSEDGROUP",
                                                      "    S \\A\\S SITE"}));
    ClickNode(Root()->child(1)->child(0));
    EXPECT_EQ(ParameterRows().last(), "PHONENUMBER=2");
    ClickNode(Root()->child(0)->child(0));
    EXPECT_EQ(ParameterRows().last(), "PHONENUMBER=1");
}

}  // namespace
