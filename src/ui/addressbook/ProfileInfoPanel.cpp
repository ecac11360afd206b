#include <meridex/ui/addressbook/ProfileInfoPanel.h>

#include <QGridLayout>
#include <QLabel>

#include <meridex/comms/ProfileXml.h>
#include <meridex/ui/comms/CommsIcons.h>
#include <meridex/ui/frame/Controls.h>
#include <meridex/ui/frame/ImageKeys.h>

namespace meridex::ui {
namespace {

QString Q(const std::string& text) { return QString::fromStdString(text); }

}  // namespace

QString SiteDeviceIconKey(const XmlNode& profile) {
    const std::string type = ProfileXml::ChildText(profile, "TYPE");
    const std::string method = ProfileXml::ChildText(profile, "METHOD");
    if (type == "RS232") {
        if (method == "DIRECT") return QStringLiteral("DIRECT");
        if (method == "PHONEMODEM") return QStringLiteral("PHONEMODEM");
    } else if (type == "IP" && (method == "GPRSPROXY" || method == "TCP" || method == "UDP")) {
        return QStringLiteral("IP");
    }
    return QStringLiteral("UNKNOWN");
}

ProfileInfoPanel::ProfileInfoPanel(QWidget* parent) : QFrame(parent) {
    setObjectName(QStringLiteral("picInfo"));
    setFrameShape(QFrame::StyledPanel);
    imgProfile = NamedLabel(QStringLiteral("imgProfile"), {}, this);
    imgProfile->setFixedSize(36, 36);
    imgProfile->setAlignment(Qt::AlignCenter);
    lblName = NamedLabel(QStringLiteral("lblName"), QStringLiteral("Device Name"), this);
    lblName->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont bold = lblName->font();
    bold.setBold(true);
    lblName->setFont(bold);
    lblSummary = NamedLabel(QStringLiteral("lblSummary"), {}, this);
    lblSummary->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    lblSummary->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // One parameter a line: a wrapped value would read as a parameter of its own.
    lblSummary->setWordWrap(false);

    auto* layout = new QGridLayout(this);
    layout->addWidget(imgProfile, 0, 0, 2, 1, Qt::AlignTop);
    layout->addWidget(NamedLabel(QStringLiteral("lblDeviceCaption"), QStringLiteral("Device:"), this), 0, 1);
    layout->addWidget(lblName, 0, 2);
    layout->addWidget(NamedLabel(QStringLiteral("lblSummaryCaption"), QStringLiteral("Summary:"), this), 1, 1,
                      Qt::AlignTop);
    layout->addWidget(lblSummary, 1, 2);
    layout->setColumnStretch(2, 1);
    layout->setRowStretch(1, 1);
}

QString ProfileInfoPanel::NameOf(const XmlNode& profile) {
    if (!ProfileXml::HasChild(profile, "NAME")) return QStringLiteral("Unnamed Profile");
    return Q(ProfileXml::ChildText(profile, "NAME"));
}

QString ProfileInfoPanel::IconKeyOf(const XmlNode& profile) {
    const QString device = SiteDeviceIconKey(profile);
    if (device == QStringLiteral("DIRECT") || device == QStringLiteral("PHONEMODEM")) return device;
    const QString icon = Q(ProfileXml::ChildText(profile, "ICON"));
    return icon.isEmpty() ? QStringLiteral("UNKNOWN") : icon;
}

// The same lines as the device dialogs' summary.
QString ProfileInfoPanel::SummaryOf(const XmlNode& profile) { return ProfileSummary(profile); }

void ProfileInfoPanel::ShowProfile(const XmlNode& profile) {
    lblName->setText(NameOf(profile));
    setImageKey(imgProfile, IconKeyOf(profile));
    lblSummary->setText(SummaryOf(profile));
}

}  // namespace meridex::ui
