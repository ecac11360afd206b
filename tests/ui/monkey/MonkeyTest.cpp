// A monkey on every dialog: a seeded random driver of clicks, keys and typed or pasted texts, its
// prompts answered at random. After every close each file on disk must load with its own loader and
// be one whole version (no temporary file left beside it), and the dialog must have closed.
//
// MERIDEX_MONKEY_ACTIONS sets how many actions in all (default 2000; `make soak` runs many more),
// MERIDEX_MONKEY_SEED replays a run; the seed is printed with every failure and in the summary.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/settings/Settings.h>
#include <meridex/ui/addressbook/frmAddressBook.h>
#include <meridex/ui/addressbook/frmNewSite.h>
#include <meridex/ui/addressbook/frmSelectSite.h>
#include <meridex/ui/comms/frmCommsMap.h>
#include <meridex/ui/comms/frmNewCommsMapDevice.h>
#include <meridex/ui/comms/frmSelectDevice.h>
#include <meridex/ui/settings/frmEnterPassword.h>
#include <meridex/ui/settings/frmProfiles.h>
#include <meridex/ui/settings/frmSetPassword.h>
#include <meridex/ui/settings/frmV4InputBox.h>

#include "../addressbook/AddressBookTestSupport.h"
#include "../../comms/CommsTestSupport.h"
#include "DialogTest.h"
#include "TempDir.h"

namespace fs = std::filesystem;
using namespace meridex;
using namespace meridex::test;

namespace {

using Random = std::mt19937_64;

// What a person might type or paste: invalid element names, characters windows-1252 cannot hold,
// "0", nothing, and a text far longer than any field expects.
const std::vector<QString>& Texts() {
    static const std::vector<QString> texts{
        "",      "0",        "Baud Rate", "2nd",        "A<B",         "PHONENUMBER", "\u03a9mega", "\u65e5\u672c",
        "\U0001F600", "Gr\u00fc\u00dfe \u20ac", "COM1", "65536", "10.0.0.256", "-1", "&", "\\North", "x",
        QString(100000, 'y')};
    return texts;
}

template <class T>
const T& Pick(Random& random, const std::vector<T>& from) {
    return from[std::uniform_int_distribution<std::size_t>(0, from.size() - 1)(random)];
}

int Below(Random& random, int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); }

// Answers every prompt at random, and records it as the test interface does. In its way-out mode it
// answers as a person leaving would: the default button, the last choice, every entry cancelled.
class MonkeyUserInterface : public RecordingUserInterface {
public:
    explicit MonkeyUserInterface(Random& random) : random_(random) {}
    bool wayOut = false;

    MessageResult MessageBox(const std::string& text, MessageButtons buttons, MessageIcon icon,
                             const std::string& caption, MessageDefaultButton defaultButton) override {
        // One of the buttons offered, as a person can only press those.
        using R = MessageResult;
        // Indexed by MessageButtons: OK, OKCancel, YesNo, YesNoCancel.
        static const std::vector<R> offered[] = {
            {R::OK}, {R::OK, R::Cancel}, {R::Yes, R::No}, {R::Yes, R::No, R::Cancel}};
        if (!wayOut) QueueMessageResult(Pick(random_, offered[static_cast<int>(buttons)]));
        return RecordingUserInterface::MessageBox(text, buttons, icon, caption, defaultButton);
    }
    std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                        const InputBoxOptions& options) override {
        QueueInput(wayOut || Below(random_, 5) == 0 ? std::nullopt : std::optional(Text()));
        return RecordingUserInterface::InputBox(prompt, title, options);
    }
    std::string SetPassword() override {
        if (!wayOut) QueueNewPassword(Text());
        return RecordingUserInterface::SetPassword();
    }
    bool EnterPassword(const std::string& password) override {
        QueuePasswordEntry(wayOut ? std::nullopt : std::optional(Below(random_, 2) ? password : Text()));
        return RecordingUserInterface::EnterPassword(password);
    }
    std::optional<int> Choose(const std::string& text, const std::vector<std::string>& choices, MessageIcon icon,
                              const std::string& caption, int defaultChoice) override {
        const int n = static_cast<int>(choices.size());
        QueueChoice(wayOut ? std::optional(n - 1) : Below(random_, n + 1) == n ? std::nullopt : std::optional(Below(random_, n)));
        return RecordingUserInterface::Choose(text, choices, icon, caption, defaultChoice);
    }
    std::optional<std::string> SaveFileName(const std::string& title, const std::string& suggested) override {
        static int saved = 0;
        QueueSaveFileName(wayOut || Below(random_, 3) == 0 ? std::nullopt
                                                           : std::optional(Folder() + "/elsewhere" +
                                                                           std::to_string(++saved % 3) + ".xml"));
        return RecordingUserInterface::SaveFileName(title, suggested);
    }

    std::function<std::string()> Folder;

private:
    std::string Text() {
        const QString text = Pick(random_, Texts());
        return text.left(Below(random_, 4) == 0 ? text.size() : 300).toStdString();
    }
    Random& random_;
};

// The files the dialogs work on, in one folder, and the objects that own what some dialogs show.
struct World {
    explicit World(const std::shared_ptr<UserInterface>& ui) : ui(ui) {
        dir.Write("schemes/North/a.xml", SchemeText({ProfileText("RS232", "PHONEMODEM", "Modem")}));
        dir.Write("schemes/East/b.xml", SchemeText({ProfileText("RS232", "DIRECT", "Cable")}));
        Reset();
    }
    // The files as they were at the start, so that a long run does not grow them without end.
    void Reset() {
        settingsFile = dir.Write("settings.xml", "<V4SETTINGS><PROFILES/></V4SETTINGS>");
        bookFile = dir.Write("share/book.xml", TempDir::Read(WriteSmallBook(dir)));
        fs::remove(dir.File("book.xml"));
        mapFile = dir.Write("map.xml", MapText());
    }
    CommsProfileManager& Map() {
        map = std::make_unique<CommsProfileManager>(ports, store);
        map->LoadXMLMapFile(mapFile);
        map->setMapFile({});  // shown only: it must not save itself when it ends
        return *map;
    }

    // Every file on disk loads with its own loader and no temporary file is left: one line per fault.
    std::vector<std::string> Faults() {
        std::vector<std::string> faults;
        if (fs::exists(settingsFile) && !Settings().LoadSettings(settingsFile)) faults.push_back("settings unreadable");
        for (const std::string& book : {bookFile, dir.File("elsewhere1.xml"), dir.File("elsewhere2.xml"),
                                        dir.File("elsewhere0.xml")})
            if (fs::exists(book) && !AddressBook().LoadAddressBook(book)) faults.push_back(book + " unreadable");
        if (fs::exists(mapFile)) {
            CommsProfileManager check(ports, store);
            if (!check.LoadXMLMapFile(mapFile)) faults.push_back("map unreadable");
            check.setMapFile({});
        }
        for (const auto& entry : fs::recursive_directory_iterator(dir.Path()))
            if (entry.path().filename().string().find(".tmp-") != std::string::npos)
                faults.push_back("left behind: " + entry.path().string());
        ++checks;
        return faults;
    }

    TempDir dir;
    std::shared_ptr<UserInterface> ui;
    std::shared_ptr<FakePorts> ports = std::make_shared<FakePorts>(std::initializer_list<int>{1, 2});
    std::shared_ptr<IniUserStore> store = std::make_shared<IniUserStore>(dir.File("config"));
    std::string settingsFile, bookFile, mapFile;
    meridex::Settings settings;
    AddressBook book;
    std::unique_ptr<CommsProfileManager> map;
    int checks = 0;
};

// One dialog: how it is opened on the world, and what its opener does once it has closed.
struct Scene {
    const char* name;
    std::function<std::unique_ptr<QWidget>(World&)> open;
    std::function<void(World&)> closed = [](World&) {};
};

// A form made bare and given the one thing it shows.
template <class Form, class Shown>
std::unique_ptr<QWidget> Given(void (Form::*set)(Shown*), Shown* shown) {
    auto form = std::make_unique<Form>();
    (form.get()->*set)(shown);
    return form;
}

std::vector<Scene> Scenes() {
    return {
        {"frmProfiles",
         [](World& w) {
             w.settings.LoadSettings(w.settingsFile);
             auto form = std::make_unique<ui::frmProfiles>(w.ui);
             form->setV4Settings(&w.settings);
             return form;
         },
         [](World& w) { w.settings.SaveSettings(); }},
        {"frmV4InputBox", [](World&) { return std::make_unique<ui::frmV4InputBox>(); }},
        {"frmSetPassword", [](World&) { return std::make_unique<ui::frmSetPassword>(); }},
        {"frmEnterPassword", [](World&) { return std::make_unique<ui::frmEnterPassword>(); }},
        {"frmAddressBook",
         [](World& w) {
             auto form = std::make_unique<ui::frmAddressBook>(w.ui);
             form->setCommsSources(w.ports, w.store);
             form->LoadAddressBook(w.bookFile, w.mapFile, w.dir.File("schemes"));
             return form;
         }},
        {"frmNewSite", [](World& w) { return Given(&ui::frmNewSite::setCommsDevices, &w.Map()); }},
        {"frmSelectSite",
         [](World& w) {
             w.book.LoadAddressBook(w.bookFile);
             return Given(&ui::frmSelectSite::setAddressBook, &w.book);
         }},
        {"frmCommsMap",
         [](World& w) {
             auto form = std::make_unique<ui::frmCommsMap>(w.ui, w.ports, w.store);
             form->LoadMap(w.mapFile);
             return form;
         }},
        {"frmNewCommsMapDevice", [](World& w) { return std::make_unique<ui::frmNewCommsMapDevice>(w.ports, w.store); }},
        {"frmSelectDevice",
         [](World& w) { return Given(&ui::frmSelectDevice::setCommunicationsManager, &w.Map()); }},
    };
}

// The monkey itself: one random action on a window, as a person gives it.
class Monkey {
public:
    Monkey(Random& random, World& world) : random_(random), world_(world) {}

    void Act(QWidget* window) {
        std::vector<QWidget*> controls;
        for (QWidget* child : window->findChildren<QWidget*>())
            if (child->isVisible() && child->isEnabled() &&
                (qobject_cast<QAbstractButton*>(child) || qobject_cast<QLineEdit*>(child) ||
                 qobject_cast<QTreeWidget*>(child) || qobject_cast<QComboBox*>(child)))
                controls.push_back(child);
        std::vector<QAction*> actions;
        for (QAction* action : window->findChildren<QAction*>())
            if (action->isEnabled() && !action->objectName().isEmpty() && !action->menu()) actions.push_back(action);

        switch (Below(random_, 10)) {
        case 0:
            if (!actions.empty()) return Pick(random_, actions)->trigger();
            break;
        case 1: {
            static const std::vector<int> keys{Qt::Key_Escape, Qt::Key_Return, Qt::Key_Tab, Qt::Key_F2, Qt::Key_Delete};
            QWidget* to = QApplication::focusWidget() && QApplication::focusWidget()->window() == window
                              ? QApplication::focusWidget()
                              : window;
            return QTest::keyClick(to, static_cast<Qt::Key>(Pick(random_, keys)));
        }
        case 2:
            // The folder of the address book goes or comes back, as a share drops and returns.
            if (fs::exists(fs::path(world_.bookFile).parent_path())) fs::remove_all(fs::path(world_.bookFile).parent_path());
            else fs::create_directories(fs::path(world_.bookFile).parent_path());
            return;
        default: break;
        }
        if (controls.empty()) return;
        QWidget* control = Pick(random_, controls);
        if (auto* button = qobject_cast<QAbstractButton*>(control)) return QTest::mouseClick(button, Qt::LeftButton);
        if (auto* edit = qobject_cast<QLineEdit*>(control)) return Type(edit);
        if (auto* combo = qobject_cast<QComboBox*>(control))
            return QTest::keyClick(combo, Below(random_, 2) ? Qt::Key_Down : Qt::Key_Up);
        auto* tree = static_cast<QTreeWidget*>(control);
        std::vector<QTreeWidgetItem*> items;
        for (QTreeWidgetItemIterator it(tree); *it; ++it) items.push_back(*it);
        if (items.empty()) return;
        QTreeWidgetItem* item = Pick(random_, items);
        tree->scrollToItem(item);
        const QPoint at = tree->visualItemRect(item).center();
        if (Below(random_, 4) == 0) QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, at);
        else QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, at);
        if (Below(random_, 3) == 0) QTest::keyClick(tree, Below(random_, 2) ? Qt::Key_Space : Qt::Key_Down);
    }

    // Short texts are typed key by key, long ones pasted.
    void Type(QLineEdit* edit) {
        edit->setFocus();
        if (Below(random_, 2)) edit->selectAll();
        const QString text = Pick(random_, Texts());
        if (text.size() <= 20) {
            // Key by key, each carrying its character (QTest's own typing knows only ASCII).
            for (const uint code : text.toUcs4()) {
                const QString one = QString::fromUcs4(reinterpret_cast<const char32_t*>(&code), 1);
                QTest::sendKeyEvent(QTest::Click, edit, Qt::Key_unknown, one, Qt::NoModifier);
            }
            return;
        }
        QApplication::clipboard()->setText(text);
        QTest::keyClick(edit, Qt::Key_V, Qt::ControlModifier);
    }

private:
    Random& random_;
    World& world_;
};

TEST(Monkey, EveryDialogKeepsItsFilesWholeAndCanAlwaysBeClosed) {
    const char* givenSeed = std::getenv("MERIDEX_MONKEY_SEED");
    const char* givenActions = std::getenv("MERIDEX_MONKEY_ACTIONS");
    const std::uint64_t seed = givenSeed ? std::strtoull(givenSeed, nullptr, 10) : std::random_device{}();
    const int total = givenActions ? std::max(1, std::atoi(givenActions)) : 2000;
    SCOPED_TRACE("seed " + std::to_string(seed) + " (replay with MERIDEX_MONKEY_SEED=" + std::to_string(seed) + ")");
    // Printed first too, so that even a crash can be replayed.
    std::cout << "monkey: seed " << seed << " (MERIDEX_MONKEY_SEED replays it)" << std::endl;
    Random random(seed);
    auto ui = std::make_shared<MonkeyUserInterface>(random);
    World world(ui);
    ui->Folder = [&world] { return world.dir.Path(); };
    Monkey monkey(random, world);
    const std::vector<Scene> scenes = Scenes();
    std::set<std::string> visited;
    int done = 0, failures = 0;

    // A window that a dialog opens modally of its own (a new site, the import) is acted on a few
    // times and then closed, so the action that opened it returns.
    QWidget* subject = nullptr;
    int modalTicks = 0;
    QTimer modals;
    modals.setInterval(0);
    QObject::connect(&modals, &QTimer::timeout, [&] {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || modal == subject) return;
        if (++modalTicks % 4 != 0) monkey.Act(modal);
        else if (auto* dialog = qobject_cast<QDialog*>(modal)) dialog->reject();
        else modal->close();
    });
    modals.start();

    for (int session = 1; done < total; ++session) {
        if (session % 16 == 0) world.Reset();
        const Scene& scene = Pick(random, scenes);
        visited.insert(scene.name);
        ui->wayOut = false;
        std::unique_ptr<QWidget> dialog = scene.open(world);
        subject = dialog.get();
        ASSERT_TRUE(ShowActive(dialog.get())) << scene.name;
        for (int n = 1 + Below(random, 40); n > 0 && done < total && dialog->isVisible(); --n, ++done)
            monkey.Act(dialog.get());
        // A few closes as the monkey answers them, then one as a person who wants out.
        for (int attempt = 0; attempt < 4 && dialog->isVisible(); ++attempt) {
            ui->wayOut = attempt == 3;
            dialog->close();
        }
        subject = nullptr;
        scene.closed(world);
        if (dialog->isVisible()) {
            ADD_FAILURE() << scene.name << " could not be closed";
            ++failures;
        }
        for (const std::string& fault : world.Faults()) {
            ADD_FAILURE() << scene.name << ": " << fault;
            ++failures;
        }
        dialog.reset();
        ui->Clear();
    }
    modals.stop();
    std::cout << "monkey: seed " << seed << ", " << done << " actions over " << visited.size() << " dialogs, "
              << world.checks << " file checks, " << failures << " failures\n";
}

}  // namespace
