#include <meridex/ui/addressbook/frmNewSite.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <meridex/comms/CommsProfileManager.h>
#include <meridex/comms/ProfileXml.h>
#include <meridex/ui/addressbook/ProfileInfoPanel.h>
#include <meridex/ui/frame/Controls.h>
#include <meridex/ui/frame/ImageKeys.h>
#include <meridex/ui/frame/Trap.h>

namespace meridex::ui {

frmNewSite::frmNewSite(QWidget* parent) : CancellableDialog(QStringLiteral("frmNewSite"), parent) {
    setWindowTitle(QStringLiteral("Create New Site"));
    auto* lblSiteName = new QLabel(QStringLiteral("New Site Name"), this);
    lblSiteName->setObjectName(QStringLiteral("lblSiteName"));
    txtName = new QLineEdit(QStringLiteral("New Site"), this);
    txtName->setObjectName(QStringLiteral("txtName"));
    txtName->setToolTip(QStringLiteral("Enter a new name for the site"));
    lblSiteName->setBuddy(txtName);
    auto* lblDevices = new QLabel(QStringLiteral("Communications Device to use"), this);
    lblDevices->setObjectName(QStringLiteral("lblDevices"));
    lvDevices = new QTreeWidget(this);
    lvDevices->setObjectName(QStringLiteral("lvDevices"));
    lvDevices->setColumnCount(1);
    lvDevices->setHeaderLabels({QStringLiteral("Device")});
    lvDevices->setHeaderHidden(true);
    lvDevices->setRootIsDecorated(false);
    lvDevices->setUniformRowHeights(true);
    lvDevices->setToolTip(QStringLiteral("Select the device to use to connect to the site"));
    lvDevices->setMinimumSize(220, 160);
    TieLabel(lblDevices, lvDevices);
    picInfo = new ProfileInfoPanel(this);
    picInfo->setMinimumWidth(260);
    cmdOK->setToolTip(QStringLiteral("Save settings and exit"));
    cmdCancel->setToolTip(QStringLiteral("Exit without saving changes"));

    auto* left = new QVBoxLayout;
    left->addWidget(lblSiteName);
    left->addWidget(txtName);
    left->addSpacing(6);
    left->addWidget(lblDevices);
    left->addWidget(lvDevices, 1);
    auto* columns = new QHBoxLayout;
    columns->addLayout(left, 1);
    columns->addWidget(picInfo, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns, 1);
    layout->addLayout(ButtonRow());
    resize(680, 380);

    connect(lvDevices, &QTreeWidget::currentItemChanged, this, [this] {
        if (!filling_) lvDevices_ItemClick();
    });
}

frmNewSite::~frmNewSite() = default;

void frmNewSite::setCommsDevices(CommsProfileManager* map) {
    map_ = map;
    TrapAndShow(nullptr, "frmNewSite:CommsDevices", [&] {
        filling_ = true;
        lvDevices->clear();
        QList<QTreeWidgetItem*> rows;
        if (map_) {
            for (XmlNode profile = map_->ApplicationProfiles().FirstChildElement("PROFILE"); profile;
                 profile = profile.NextSiblingElement("PROFILE")) {
                auto* row = new QTreeWidgetItem(QStringList{QString::fromStdString(ProfileXml::ChildText(profile, "NAME"))});
                setItemKey(row, QString::fromStdString(ProfileXml::ChildText(profile, "KEY")));
                setImageKey(row, SiteDeviceIconKey(profile));
                rows << row;
            }
        }
        lvDevices->addTopLevelItems(rows);
        if (!rows.isEmpty()) lvDevices->setCurrentItem(rows.front());
    });
    filling_ = false;
    if (lvDevices->topLevelItemCount() > 0) lvDevices_ItemClick();
}

void frmNewSite::lvDevices_ItemClick() {
    TrapAndShow(nullptr, "frmNewSite:lvDevices_ItemClick", [&] {
        QTreeWidgetItem* row = lvDevices->currentItem();
        if (!row || !map_) return;
        picInfo->ShowProfile(map_->ApplicationProfile(lvDevices->indexOfTopLevelItem(row) + 1));
    });
}

Site frmNewSite::NewSite() const {
    if (Cancelled()) return Site::None();
    Site site;
    site.setName(txtName->text().toStdString());
    QTreeWidgetItem* row = lvDevices->currentItem();
    if (row && map_ && row->isSelected()) {
        const XmlNode profile = map_->ApplicationProfile(lvDevices->indexOfTopLevelItem(row) + 1);
        if (profile) site.setProfile(profile.CloneNode(true));
    }
    return site;
}

}  // namespace meridex::ui
