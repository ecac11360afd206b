#pragma once
// What the dialog tests share: finding controls by name, reading lists, and answering the modal
// dialogs that a blocking call opens.
#include <deque>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <QAbstractButton>
#include <QList>
#include <QMessageBox>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QWidget>

class QTreeWidget;
class QTreeWidgetItem;

namespace meridex::test {

/// The child of root named name, of kind T; throws (failing the test) when there is none.
template <class T>
T* Child(const QWidget* root, const QString& name) {
    T* child = root->findChild<T*>(name);
    if (!child) {
        throw std::runtime_error("no " + std::string(T::staticMetaObject.className()) + " named " + name.toStdString() +
                                 " in " + root->objectName().toStdString());
    }
    return child;
}

/// Shows form as a person sees it (not modally) and makes it the active window, so that keys and
/// clicks reach it; false when it never came on screen.
[[nodiscard]] bool ShowActive(QWidget* form);
/// A left click on button, as a person gives it.
void Click(QAbstractButton* button);
/// Types text into widget key by key.
void Type(QWidget* widget, const QString& text);

/// A left click in the middle of row of list (a tree's node is scrolled into view first).
void ClickRow(QTreeWidget* list, QTreeWidgetItem* row);
/// A double click on row, as a person gives it: a click, then the double click.
void DoubleClickRow(QTreeWidget* list, QTreeWidgetItem* row);
/// The row of list (a node of a tree, at any depth) whose item key is key; null when none.
QTreeWidgetItem* Keyed(QTreeWidget* list, const QString& key);

/// The text, item key, image key and check mark of each row of a list view.
QStringList Texts(const QTreeWidget* list);
QStringList ItemKeys(const QTreeWidget* list);
QStringList ImageKeysOf(const QTreeWidget* list);
QList<bool> Checks(const QTreeWidget* list);
/// Every node of a tree, depth first, as "text key image", indented two spaces a level below the top.
QStringList Nodes(const QTreeWidget* tree);

/// The message box a step was given (throws when the modal window is something else).
QMessageBox* AsMessageBox(QWidget* modal);
/// Clicks button of the message box a step was given.
void Answer(QWidget* modal, QMessageBox::StandardButton button);

/// Answers the modal dialogs that a blocking call opens, one step per dialog shown, in order. A
/// dialog with no step left is cancelled (and counted), so a test never hangs on it.
class ModalScript {
public:
    using Step = std::function<void(QWidget* modal)>;

    /// The step for the next modal dialog to appear.
    ModalScript& Then(Step step);
    /// Runs call while the steps answer its dialogs. Throws (failing the test) when a step was not
    /// used, a step failed, or a dialog appeared that no step expected.
    void Run(const std::function<void()>& call);

private:
    void Poll();

    std::deque<Step> steps_;
    // The modal windows given to a step and still shown: one that becomes active again when the
    // window it opened closes is not a new one.
    std::vector<QPointer<QWidget>> acted_;
    std::string failure_;
    int unexpected_ = 0;
};

}  // namespace meridex::test
