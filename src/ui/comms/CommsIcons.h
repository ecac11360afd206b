#pragma once
// Internal to the dialog library: how the device dialogs show a map profile.
#include <QString>

#include <meridex/frame/XmlNode.h>

namespace meridex::ui {

/// The image key of a device node: "DIRECT" or "PHONEMODEM" for those serial methods, "IP" for
/// any IP profile whatever its method, "UNKNOWN" otherwise.
QString DeviceIconKey(const XmlNode& profile);

/// One line per child element of profile, "NAME = text", joined by CR LF.
QString ProfileSummary(const XmlNode& profile);

}  // namespace meridex::ui
