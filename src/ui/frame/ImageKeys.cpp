#include <meridex/ui/frame/ImageKeys.h>

#include <QAbstractButton>
#include <QAction>
#include <QDir>
#include <QHash>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>
#include <QTreeWidgetItem>

// Outside every namespace, as Qt's resource initialiser must be.
static void InitMeridexIcons() { Q_INIT_RESOURCE(meridex_icons); }

namespace meridex::ui {
namespace {

const QString kFolder = QStringLiteral(":/meridex/icons/");

QIcon Render(const QString& file) {
    QSvgRenderer renderer(file);
    QIcon icon;
    if (!renderer.isValid()) return icon;
    // Drawn at each size a list, a tree or a toolbar asks for, so nothing is scaled from a bitmap.
    for (int size : {16, 20, 24, 32, 48}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        renderer.render(&painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

}  // namespace

QStringList ImageKeys() {
    InitMeridexIcons();
    QStringList keys;
    for (const QString& name : QDir(kFolder).entryList({QStringLiteral("*.svg")}, QDir::Files, QDir::Name))
        keys << name.chopped(4);
    return keys;
}

QIcon ImageIcon(const QString& key) {
    static QHash<QString, QIcon> cache;
    if (const auto found = cache.constFind(key); found != cache.constEnd()) return *found;
    InitMeridexIcons();
    QIcon icon = Render(kFolder + key + QStringLiteral(".svg"));
    if (icon.isNull() && key != QStringLiteral("UNKNOWN")) icon = ImageIcon(QStringLiteral("UNKNOWN"));
    cache.insert(key, icon);
    return icon;
}

void setImageKey(QTreeWidgetItem* item, const QString& key, int column) {
    item->setIcon(column, ImageIcon(key));
    item->setData(column, ImageKeyRole, key);
}

QString ImageKey(const QTreeWidgetItem* item, int column) { return item->data(column, ImageKeyRole).toString(); }

void setImageKey(QObject* object, const QString& key) {
    object->setProperty(ImageKeyProperty, key);
    if (auto* action = qobject_cast<QAction*>(object)) action->setIcon(ImageIcon(key));
    else if (auto* button = qobject_cast<QAbstractButton*>(object)) button->setIcon(ImageIcon(key));
    else if (auto* label = qobject_cast<QLabel*>(object)) label->setPixmap(ImageIcon(key).pixmap(32, 32));
}

QString ImageKey(const QObject* object) { return object->property(ImageKeyProperty).toString(); }

void setItemKey(QTreeWidgetItem* item, const QString& key) { item->setData(0, ItemKeyRole, key); }

QString ItemKey(const QTreeWidgetItem* item) { return item->data(0, ItemKeyRole).toString(); }

}  // namespace meridex::ui
