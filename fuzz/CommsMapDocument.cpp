// The communications map loader: any file gives a map (the default one when
// unusable); matching a loaded profile against the map never crashes.
#include <memory>

#include <meridex/comms/CommsProfileManager.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/XmlDocument.h>
#include <meridex/platform/SerialPortSource.h>
#include <meridex/platform/linux/IniUserStore.h>

#include "FuzzSupport.h"

using namespace meridex;

namespace {

class TwoPorts : public SerialPortSource {
public:
    std::vector<SerialPort> ListPorts() override {
        return {SerialPort{1, "/dev/fuzz1", "Port 1", false}, SerialPort{3, "/dev/fuzz3", "Port 3", false}};
    }
    bool Probe(const SerialPort& port) override { return port.number == 1; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static auto ports = std::make_shared<TwoPorts>();
    static auto store = std::make_shared<IniUserStore>(fuzz::Folder() + "/config");
    CommsProfileManager map(ports, store);
    map.LoadXMLMapFile(fuzz::InputFile(data, size));
    map.setMapFile({});  // the destructor's save has nowhere to go
    const int count = map.ApplicationProfileCount();
    for (int i = 1; i <= count && i <= 16; ++i) {
        try {
            (void)map.GetBestMatch(map.ApplicationProfile(i));
            (void)map.GetExactMatch(map.ApplicationProfile(i));
        } catch (const Error&) {
            // a modem or proxy the map lacks: the documented error
        }
    }
    map.CleanRS232Direct();
    MERIDEX_FUZZ_CHECK(XmlDocument::Parse(map.ApplicationProfiles().OwnerDocument().Serialize()));
    return 0;
}
