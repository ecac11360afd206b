#pragma once
// What the tests of the communications dialogs share: a map over made-up ports, and rows clicked
// where a person clicks them.
#include <QApplication>
#include <QTest>
#include <QTreeWidget>

#include <meridex/ui/frame/ImageKeys.h>

#include "CommsTestSupport.h"
#include "DialogTest.h"

namespace meridex::test {

/// Shows form as a person sees it (not modally), so that keys and clicks reach it.
inline void Show(QWidget& form) { ASSERT_TRUE(ShowActive(&form)); }

/// A left click on row, in the middle of its rectangle.
inline void ClickRow(QTreeWidget* list, QTreeWidgetItem* row) {
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(row).center());
}

/// A double click on row, as a person gives it: a click, then the double click.
inline void DoubleClickRow(QTreeWidget* list, QTreeWidgetItem* row) {
    const QPoint at = list->visualItemRect(row).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, at);
}

/// The top-level row of list whose item key is key (null when none).
inline QTreeWidgetItem* RowKeyed(QTreeWidget* list, const QString& key) {
    for (int i = 0; i < list->topLevelItemCount(); ++i)
        if (ui::ItemKey(list->topLevelItem(i)) == key) return list->topLevelItem(i);
    return nullptr;
}

}  // namespace meridex::test
