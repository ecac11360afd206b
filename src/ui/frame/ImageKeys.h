#pragma once
#include <meridex/ui/Export.h>

#include <QIcon>
#include <QString>
#include <QStringList>
#include <Qt>

class QObject;
class QTreeWidgetItem;

namespace meridex::ui {

/// Item data role of a list or tree item's key (a profile's `Key`, a node's path): what the
/// item stands for, whatever its text.
inline constexpr int ItemKeyRole = Qt::UserRole + 1;
/// Item data role of the image key of an item's icon ("USER", "SITE", ...), so tests and code read
/// which image an item shows without looking at pixels.
inline constexpr int ImageKeyRole = Qt::UserRole + 2;
/// Dynamic property of the image key of a widget or action that shows one (a toolbar button, an
/// icon label).
inline constexpr const char* ImageKeyProperty = "imageKey";

/// The icon of an image key, drawn from the library's own SVG set (resource ":/meridex/icons/KEY.svg").
/// A key without a picture gets the "UNKNOWN" picture.
MERIDEX_UI_EXPORT QIcon ImageIcon(const QString& key);
/// Every image key that has a picture of its own.
MERIDEX_UI_EXPORT QStringList ImageKeys();

/// Gives item the icon of key in column and keeps the key as ImageKeyRole there.
MERIDEX_UI_EXPORT void setImageKey(QTreeWidgetItem* item, const QString& key, int column = 0);
/// The image key item shows in column; empty when none.
MERIDEX_UI_EXPORT QString ImageKey(const QTreeWidgetItem* item, int column = 0);
/// Gives a widget or action the icon of key (where it shows one) and keeps the key as ImageKeyProperty.
MERIDEX_UI_EXPORT void setImageKey(QObject* object, const QString& key);
/// The image key a widget or action shows; empty when none.
MERIDEX_UI_EXPORT QString ImageKey(const QObject* object);

/// Keeps key as the item's key (ItemKeyRole of column 0).
MERIDEX_UI_EXPORT void setItemKey(QTreeWidgetItem* item, const QString& key);
/// The item's key; empty when none.
MERIDEX_UI_EXPORT QString ItemKey(const QTreeWidgetItem* item);

}  // namespace meridex::ui
