#include <meridex/ui/comms/frmSelectDevice.h>

#include <QCloseEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <meridex/comms/CommsProfileManager.h>
#include <meridex/comms/ProfileXml.h>
#include <meridex/ui/comms/CommsIcons.h>
#include <meridex/ui/frame/Controls.h>
#include <meridex/ui/frame/ImageKeys.h>
#include <meridex/ui/frame/Trap.h>

namespace meridex::ui {
namespace {

QString Q(const std::string& text) { return QString::fromStdString(text); }

}  // namespace

frmSelectDevice::frmSelectDevice(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmSelectDevice"));
    setWindowTitle(QStringLiteral("Select Device"));
    setModal(true);

    tvDevices = new QTreeWidget(this);
    tvDevices->setObjectName(QStringLiteral("tvDevices"));
    tvDevices->setColumnCount(1);
    tvDevices->setHeaderHidden(true);
    tvDevices->setUniformRowHeights(true);
    tvDevices->setSelectionMode(QAbstractItemView::SingleSelection);
    tvDevices->setMinimumSize(270, 220);
    tvDevices->setAccessibleName(QStringLiteral("Devices"));
    tvDevices->installEventFilter(this);
    tvDevices->viewport()->installEventFilter(this);
    tvDevices->viewport()->setMouseTracking(true);

    picInfo = new QFrame(this);
    picInfo->setObjectName(QStringLiteral("picInfo"));
    static_cast<QFrame*>(picInfo)->setFrameShape(QFrame::StyledPanel);
    imgProfile = NamedLabel(QStringLiteral("imgProfile"), {}, picInfo);
    imgProfile->setFixedSize(32, 32);
    auto* lblDevice = NamedLabel(QStringLiteral("lblDevice"), QStringLiteral("Device:"), picInfo);
    lblName = NamedLabel(QStringLiteral("lblName"), QStringLiteral("Device Name"), picInfo);
    QFont bold = lblName->font();
    bold.setBold(true);
    lblName->setFont(bold);
    auto* lblSummaryCaption = NamedLabel(QStringLiteral("lblSummaryCaption"), QStringLiteral("Summary:"), picInfo);
    lblSummary = NamedLabel(QStringLiteral("lblSummary"), {}, picInfo);
    lblSummary->setTextInteractionFlags(Qt::TextSelectableByMouse);
    lblSummary->setWordWrap(true);
    lblName->setWordWrap(true);
    lblSummary->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    auto* info = new QGridLayout(picInfo);
    info->addWidget(imgProfile, 0, 0, 2, 1, Qt::AlignTop);
    info->addWidget(lblDevice, 0, 1, Qt::AlignTop);
    info->addWidget(lblName, 0, 2, Qt::AlignTop);
    info->addWidget(lblSummaryCaption, 1, 1, Qt::AlignTop);
    info->addWidget(lblSummary, 1, 2, Qt::AlignTop);
    info->setColumnStretch(2, 1);
    info->setRowStretch(1, 1);
    picInfo->setMinimumWidth(280);
    // The tree keeps its place when the panel comes and goes: a node must not move under the mouse.
    QSizePolicy keep = picInfo->sizePolicy();
    keep.setRetainSizeWhenHidden(true);
    picInfo->setSizePolicy(keep);
    picInfo->hide();

    auto* layout = new QHBoxLayout(this);
    layout->addWidget(tvDevices, 2);
    layout->addWidget(picInfo, 3);
    resize(740, 380);

    connect(tvDevices, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* node) {
        if (!filling_ && node) tvDevices_NodeClick(node);
    });
}

void frmSelectDevice::setCommunicationsManager(CommsProfileManager* map) {
    manager_ = map;
    FillTree();
}

void frmSelectDevice::FillTree() {
    TrapAndShow(nullptr, "frmSelectDevice:FillTree", [&] {
        const Filling filling(filling_);
        tvDevices->clear();
        selected_ = XmlNode();
        picInfo->hide();
        auto* root = new QTreeWidgetItem(tvDevices, QStringList{QStringLiteral("Device Map")});
        setItemKey(root, QStringLiteral("ROOT"));
        setImageKey(root, QStringLiteral("MAP"));
        if (!manager_) return;
        const std::int16_t count = manager_->ApplicationProfileCount();
        for (std::int16_t index = 1; index <= count; ++index) {
            const XmlNode profile = manager_->ApplicationProfile(Index(index));
            auto* node = new QTreeWidgetItem(root, QStringList{Q(ProfileXml::ChildText(profile, "NAME"))});
            setItemKey(node, Q(ProfileXml::ChildText(profile, "KEY")));
            setImageKey(node, DeviceIconKey(profile));
        }
        root->setExpanded(true);
        // The root is shown as chosen; no device is chosen until the person clicks one.
        tvDevices->setCurrentItem(root);
    });
}

void frmSelectDevice::tvDevices_NodeClick(QTreeWidgetItem* node) {
    TrapAndShow(nullptr, "frmSelectDevice:tvDevices_NodeClick", [&] {
        const QString key = ItemKey(node);
        if (key == QLatin1String("ROOT") || !manager_) {
            selected_ = XmlNode();
            picInfo->hide();
            return;
        }
        selected_ = manager_->ApplicationProfile(Index(key.toStdString()));
        ShowInfo(selected_, node->text(0), ImageKey(node));
    });
}

void frmSelectDevice::ShowInfo(const XmlNode& profile, const QString& name, const QString& imageKey) {
    lblName->setText(name);
    setImageKey(imgProfile, imageKey);
    lblSummary->setText(ProfileSummary(profile));
    picInfo->show();
}

void frmSelectDevice::tvDevices_KeyPress(int key) {
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        if (!selected_.IsNull()) hide();
    } else if (key == Qt::Key_Escape) {
        reject();
    }
}

void frmSelectDevice::tvDevices_DblClick() {
    if (!selected_.IsNull() && tvDevices->itemAt(lastMouse_)) hide();
}

void frmSelectDevice::reject() {
    selected_ = XmlNode();
    // done() hides and ends a modal loop; the close event it may send is not the close box.
    hiding_ = true;
    done(Rejected);
    hiding_ = false;
}

void frmSelectDevice::closeEvent(QCloseEvent* event) {
    if (hiding_) {
        event->accept();
        return;
    }
    event->ignore();
    reject();
}

bool frmSelectDevice::eventFilter(QObject* watched, QEvent* event) {
    if (watched == tvDevices->viewport()) {
        switch (event->type()) {
        case QEvent::MouseMove:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
            lastMouse_ = static_cast<QMouseEvent*>(event)->position().toPoint();
            break;
        case QEvent::MouseButtonDblClick:
            lastMouse_ = static_cast<QMouseEvent*>(event)->position().toPoint();
            // The press before it has chosen the node; the double click only closes.
            tvDevices_DblClick();
            break;
        default: break;
        }
    } else if (watched == tvDevices && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape) {
            tvDevices_KeyPress(key);
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

}  // namespace meridex::ui
