#include "DialogTest.h"

#include <algorithm>

#include <QApplication>
#include <QDialog>
#include <QTest>
#include <QTreeWidget>

#include <meridex/ui/frame/ImageKeys.h>

namespace meridex::test {

bool ShowActive(QWidget* form) {
    form->show();
    QApplication::setActiveWindow(form);
    return QTest::qWaitForWindowExposed(form);
}

void Click(QAbstractButton* button) { QTest::mouseClick(button, Qt::LeftButton); }

void Type(QWidget* widget, const QString& text) { QTest::keyClicks(widget, text); }

void ClickRow(QTreeWidget* list, QTreeWidgetItem* row) {
    list->scrollToItem(row);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(row).center());
}

void DoubleClickRow(QTreeWidget* list, QTreeWidgetItem* row) {
    ClickRow(list, row);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(row).center());
}

QTreeWidgetItem* Keyed(QTreeWidget* list, const QString& key) {
    for (QTreeWidgetItemIterator it(list); *it; ++it)
        if (ui::ItemKey(*it) == key) return *it;
    return nullptr;
}

namespace {

template <class Read>
auto EachRow(const QTreeWidget* list, Read read) {
    QList<decltype(read(list->topLevelItem(0)))> values;
    for (int i = 0; i < list->topLevelItemCount(); ++i) values << read(list->topLevelItem(i));
    return values;
}

}  // namespace

QStringList Texts(const QTreeWidget* list) {
    return EachRow(list, [](const QTreeWidgetItem* row) { return row->text(0); });
}

QStringList ItemKeys(const QTreeWidget* list) {
    return EachRow(list, [](const QTreeWidgetItem* row) { return ui::ItemKey(row); });
}

QStringList ImageKeysOf(const QTreeWidget* list) {
    return EachRow(list, [](const QTreeWidgetItem* row) { return ui::ImageKey(row); });
}

QList<bool> Checks(const QTreeWidget* list) {
    return EachRow(list, [](const QTreeWidgetItem* row) { return row->checkState(0) == Qt::Checked; });
}

QStringList Nodes(const QTreeWidget* tree) {
    QStringList nodes;
    for (QTreeWidgetItemIterator it(const_cast<QTreeWidget*>(tree)); *it; ++it) {
        QString indent;
        for (const QTreeWidgetItem* up = (*it)->parent(); up; up = up->parent()) indent += "  ";
        nodes << indent + (*it)->text(0) + " " + ui::ItemKey(*it) + " " + ui::ImageKey(*it);
    }
    return nodes;
}

QMessageBox* AsMessageBox(QWidget* modal) {
    auto* box = qobject_cast<QMessageBox*>(modal);
    if (!box) throw std::runtime_error("expected a message box, found " + modal->objectName().toStdString());
    return box;
}

void Answer(QWidget* modal, QMessageBox::StandardButton button) {
    QAbstractButton* shown = AsMessageBox(modal)->button(button);
    if (!shown) throw std::runtime_error("the message box has no such button");
    Click(shown);
}

ModalScript& ModalScript::Then(Step step) {
    steps_.push_back(std::move(step));
    return *this;
}

void ModalScript::Poll() {
    QWidget* modal = QApplication::activeModalWidget();
    // A window hidden since its step may be shown again (a dialog asked again): then it is new.
    std::erase_if(acted_, [](const QPointer<QWidget>& window) { return !window || !window->isVisible(); });
    if (!modal || !modal->isVisible() || std::find(acted_.begin(), acted_.end(), modal) != acted_.end()) return;
    acted_.emplace_back(modal);
    if (steps_.empty()) {
        ++unexpected_;
        modal->close();
        return;
    }
    // The step runs from a timer of its own, so that a dialog it opens in turn (a button that asks
    // something) is still seen by this poll, which Qt does not re-enter.
    QTimer::singleShot(0, [this, step = std::move(steps_.front()), target = QPointer<QWidget>(modal)] {
        if (!target) return;
        try {
            step(target);
        } catch (const std::exception& e) {
            if (failure_.empty()) failure_ = e.what();
            // Unblock the call: a failed step leaves its dialog cancelled.
            if (auto* dialog = qobject_cast<QDialog*>(target.data()); dialog && dialog->isVisible()) dialog->reject();
        }
    });
    steps_.pop_front();
}

void ModalScript::Run(const std::function<void()>& call) {
    QTimer timer;
    timer.setInterval(5);
    QObject::connect(&timer, &QTimer::timeout, [this] { Poll(); });
    timer.start();
    call();
    timer.stop();
    if (!failure_.empty()) throw std::runtime_error("a dialog step failed: " + failure_);
    if (unexpected_ > 0) throw std::runtime_error(std::to_string(unexpected_) + " dialog(s) no step expected");
    if (!steps_.empty()) throw std::runtime_error(std::to_string(steps_.size()) + " step(s) left: no dialog came");
}

}  // namespace meridex::test
