#include <meridex/ui/comms/CommsIcons.h>

#include <QStringList>

#include <meridex/comms/ProfileXml.h>

namespace meridex::ui {

QString DeviceIconKey(const XmlNode& profile) {
    const std::string type = ProfileXml::ChildText(profile, "TYPE");
    const std::string method = ProfileXml::ChildText(profile, "METHOD");
    if (type == "RS232") {
        if (method == "DIRECT") return QStringLiteral("DIRECT");
        if (method == "PHONEMODEM") return QStringLiteral("PHONEMODEM");
        return QStringLiteral("UNKNOWN");
    }
    // Unlike the new-site list, an IP profile of any method shows the network icon.
    if (type == "IP") return QStringLiteral("IP");
    return QStringLiteral("UNKNOWN");
}

QString ProfileSummary(const XmlNode& profile) {
    QStringList lines;
    for (XmlNode child = profile.FirstChildElement(); child; child = child.NextSiblingElement())
        lines << QString::fromStdString(child.Name() + " = " + child.Text());
    return lines.join(QStringLiteral("\r\n"));
}

}  // namespace meridex::ui
