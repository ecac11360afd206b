#include <meridex/ui/frame/Controls.h>

#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QTreeWidget>

namespace meridex::ui {

QTreeWidget* ListView(const QString& name, QWidget* parent) {
    auto* list = new QTreeWidget(parent);
    list->setObjectName(name);
    list->setColumnCount(1);
    list->setHeaderHidden(true);
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    return list;
}

QLabel* NamedLabel(const QString& name, const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(name);
    return label;
}

void TieLabel(QLabel* label, QWidget* control) {
    label->setBuddy(control);
    QString name = label->text();
    name.remove(QRegularExpression(QStringLiteral("&(?!&)")));
    if (name.endsWith(QLatin1Char(':'))) name.chop(1);
    control->setAccessibleName(name.trimmed());
}

QPushButton* CommandButton(const QString& name, const QString& caption, QWidget* parent) {
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

}  // namespace meridex::ui
