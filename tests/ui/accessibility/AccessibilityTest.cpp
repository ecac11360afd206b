// Every dialog and window of `make screenshots`, checked as a screen reader and a keyboard user meet
// it, through Qt's accessibility interface: each control has a name to say, no access key serves two
// controls of one window, the focus starts in the first input field, and Tab reaches every control.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSplitter>
#include <QTest>
#include <QTextEdit>
#include <QToolBar>

#include "DialogTest.h"
#include "Scene.h"

using meridex::screenshots::Scene;
using meridex::screenshots::Scenes;

namespace {

QString Describe(const QWidget* widget) {
    return QStringLiteral("%1 (%2)").arg(widget->objectName(), QString::fromLatin1(widget->metaObject()->className()));
}

// The control a focus lands on: the editable combo box rather than its line edit.
QWidget* Owner(QWidget* widget) {
    if (!widget) return nullptr;
    if (auto* combo = qobject_cast<QComboBox*>(widget->parentWidget()); combo && combo->lineEdit() == widget) return combo;
    while (widget->parentWidget() && widget->parentWidget()->focusProxy() == widget) widget = widget->parentWidget();
    return widget;
}

bool Shown(const QWidget* widget, const QWidget* window) { return widget->isVisibleTo(window) && widget->isEnabled(); }

// A control the keyboard can reach: takes focus by Tab and is not a part of another control.
bool Focusable(QWidget* widget, const QWidget* window) {
    return Shown(widget, window) && (widget->focusPolicy() & Qt::TabFocus) && !widget->focusProxy() &&
           Owner(widget) == widget && !qobject_cast<QScrollBar*>(widget);
}

bool IsInput(const QWidget* widget) {
    return qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QComboBox*>(widget) ||
           qobject_cast<const QAbstractItemView*>(widget) || qobject_cast<const QAbstractSpinBox*>(widget) ||
           qobject_cast<const QPlainTextEdit*>(widget) || qobject_cast<const QTextEdit*>(widget);
}

// What a screen reader says for widget: its accessible name, or the label tied to it. A drop-down's
// "name" on this platform is its current text, which names nothing, so it needs a label or a name.
QString SpokenName(QWidget* widget) {
    QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(widget);
    if (!iface) return {};
    for (const auto& [label, relation] : iface->relations(QAccessible::Label))
        if (label && qobject_cast<QLabel*>(label->object()) && !label->text(QAccessible::Name).trimmed().isEmpty())
            return label->text(QAccessible::Name);
    if (qobject_cast<QComboBox*>(widget)) return widget->accessibleName();
    return iface->text(QAccessible::Name).trimmed();
}

// The access keys of the window: buttons, labels tied to a control, group boxes and the menu bar.
std::multimap<QString, QString> AccessKeys(QWidget* window) {
    std::multimap<QString, QString> keys;
    const auto add = [&](const QString& text, const QString& owner) {
        const QKeySequence key = QKeySequence::mnemonic(text);
        if (!key.isEmpty()) keys.emplace(key.toString().toUpper(), owner + " \"" + text + "\"");
    };
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        if (!Shown(widget, window) || widget->window() != window) continue;
        if (auto* button = qobject_cast<QAbstractButton*>(widget)) add(button->text(), Describe(widget));
        if (auto* label = qobject_cast<QLabel*>(widget); label && label->buddy()) add(label->text(), Describe(widget));
        if (auto* box = qobject_cast<QGroupBox*>(widget)) add(box->title(), Describe(widget));
        if (auto* bar = qobject_cast<QMenuBar*>(widget))
            for (QAction* menu : bar->actions())
                if (menu->isVisible()) add(menu->text(), QStringLiteral("menu"));
    }
    return keys;
}

class Accessibility : public ::testing::TestWithParam<std::size_t> {
protected:
    void SetUp() override {
        window = Scenes()[GetParam()].make();
        ASSERT_TRUE(meridex::test::ShowActive(window.get()));
        for (int i = 0; i < 3; ++i) QApplication::processEvents();
    }

    std::vector<QWidget*> Controls() const {
        std::vector<QWidget*> found;
        for (QWidget* widget : window->findChildren<QWidget*>())
            if (widget->window() == window.get() && Focusable(widget, window.get())) found.push_back(widget);
        return found;
    }

    std::unique_ptr<QWidget> window;
};

TEST_P(Accessibility, EveryControlHasANameToSay) {
    EXPECT_FALSE(QAccessible::queryAccessibleInterface(window.get())->text(QAccessible::Name).isEmpty());
    const QAccessible::Role role = QAccessible::queryAccessibleInterface(window.get())->role();
    EXPECT_TRUE(role == QAccessible::Dialog || role == QAccessible::Window || role == QAccessible::AlertMessage)
        << "a window is announced as one";
    std::vector<QWidget*> named = Controls();
    // Lists, trees, text fields, toolbars and splitters are named even where they take no focus.
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        if (widget->window() != window.get() || !widget->isVisibleTo(window.get()) || Owner(widget) != widget ||
            qobject_cast<QHeaderView*>(widget))
            continue;
        if (IsInput(widget) || qobject_cast<QToolBar*>(widget) || qobject_cast<QSplitter*>(widget)) named.push_back(widget);
    }
    for (QWidget* widget : named) EXPECT_FALSE(SpokenName(widget).isEmpty()) << Describe(widget).toStdString();
}

TEST_P(Accessibility, NoAccessKeyServesTwoControls) {
    const auto keys = AccessKeys(window.get());
    for (auto it = keys.begin(); it != keys.end(); it = keys.upper_bound(it->first)) {
        if (keys.count(it->first) < 2) continue;
        QStringList owners;
        for (auto same = keys.equal_range(it->first); same.first != same.second; ++same.first) owners << same.first->second;
        ADD_FAILURE() << it->first.toStdString() << " on " << owners.join(", ").toStdString();
    }
}

TEST_P(Accessibility, FocusStartsInTheFirstInputFieldAndTabReachesEveryControl) {
    const std::vector<QWidget*> controls = Controls();
    if (controls.empty()) return;  // nothing can take the focus in this state
    // The first input field in the order Tab visits the controls.
    QWidget* first = nullptr;
    for (QWidget* next = window->nextInFocusChain(); next != window.get() && !first; next = next->nextInFocusChain())
        if (IsInput(next) && Focusable(next, window.get())) first = next;
    QWidget* focus = Owner(QApplication::focusWidget());
    ASSERT_NE(focus, nullptr) << "nothing has the focus";
    // A scene pictured after the person acted has the focus where that put it.
    const bool opening = Scenes()[GetParam()].name != "frmCommsMap-invalid";
    if (first && opening) {
        EXPECT_EQ(focus, first) << Describe(focus).toStdString() << " instead of " << Describe(first).toStdString();
    }

    std::set<QWidget*> reached{focus};
    for (std::size_t step = 0; step < 3 * controls.size() + 3; ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        reached.insert(Owner(QApplication::focusWidget()));
    }
    for (QWidget* widget : controls) EXPECT_TRUE(reached.count(widget)) << Describe(widget).toStdString() << " is never reached by Tab";
}

INSTANTIATE_TEST_SUITE_P(EveryWindow, Accessibility, ::testing::Range(std::size_t{0}, Scenes().size()),
                         [](const ::testing::TestParamInfo<std::size_t>& info) {
                             std::string name = Scenes()[info.param].name;
                             for (char& c : name)
                                 if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
                             return name;
                         });

}  // namespace
