// The communications dialogs: the map editor on a map file, the new-device dialog and the
// device-selection dialog. The chosen profile is printed as XML.
#include <cstdio>

#include <meridex/comms/CommsProfileManager.h>
#include <meridex/ui/settings/V4Dialogs.h>

#include "DialogCommand.h"

namespace meridex::dialogs {
namespace {

// Prints profile's XML; exit 1 when there is none.
int Print(const XmlNode& profile) {
    if (profile.IsNull()) return 1;
    std::printf("%s\n", profile.Xml().c_str());
    return 0;
}

const CommandRegistration commsMap({
    "commsmap", "MAP.xml", "edit the communications map; saved only on OK", 1, 1,
    [](const std::vector<std::string>& arguments) {
        ui::V4Dialogs().EditCommunicationsMap(arguments[0]);
        return 0;
    }});

const CommandRegistration newDevice({
    "new-device", "", "choose the kind of a new device; prints its profile, exit 1 when cancelled", 0, 0,
    [](const std::vector<std::string>&) { return Print(ui::V4Dialogs().SelectNewCommsDevice()); }});

const CommandRegistration selectDevice({
    "select-device", "MAP.xml", "choose a device of the map; prints its profile, exit 1 when none", 1, 1,
    [](const std::vector<std::string>& arguments) {
        CommsProfileManager map;
        if (!map.LoadXMLMapFile(arguments[0]))
            std::fprintf(stderr, "%s could not be read: showing the default map\n", arguments[0].c_str());
        // Choosing changes nothing: the map must not be saved when it ends.
        map.setMapFile({});
        return Print(ui::V4Dialogs().SelectCommsDevice(map));
    }});

}  // namespace
}  // namespace meridex::dialogs
