#pragma once
// Internal to the dialog library: the information panel on one communications profile, shared by
// the new-site and the site-selection dialogs.
#include <QFrame>
#include <QString>

#include <meridex/frame/XmlNode.h>

class QLabel;

namespace meridex::ui {

/// The icon key of a device row of the new-site list: "DIRECT" and "PHONEMODEM" for those serial methods, "IP" for
/// the three network methods, "UNKNOWN" for anything else.
QString SiteDeviceIconKey(const XmlNode& profile);

/// `picInfo`: `imgProfile` (the profile's icon), `lblName` (its name, "Unnamed Profile" without
/// one) and `lblSummary` (one line "NAME = value" per parameter, joined by CR LF).
class ProfileInfoPanel : public QFrame {
    Q_OBJECT
public:
    /// An empty panel: "Device Name" and no summary.
    explicit ProfileInfoPanel(QWidget* parent = nullptr);

    /// Shows profile's name, icon and summary.
    void ShowProfile(const XmlNode& profile);

    /// The name text of a profile as the panel shows it.
    static QString NameOf(const XmlNode& profile);
    /// The icon key of a profile as the panel shows it: the serial methods as SiteDeviceIconKey, any
    /// other profile its ICON text, "UNKNOWN" when that is empty.
    static QString IconKeyOf(const XmlNode& profile);
    /// The summary of a profile: "NAME = value" per child element, joined by CR LF.
    static QString SummaryOf(const XmlNode& profile);

    QLabel* imgProfile = nullptr;
    QLabel* lblName = nullptr;
    QLabel* lblSummary = nullptr;
};

}  // namespace meridex::ui
