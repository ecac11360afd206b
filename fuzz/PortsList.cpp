// The companion's ports.txt: every pair read has a port without "|" and
// blanks at its ends, and a description without "|".
#include <meridex/comms/PortsList.h>

#include "FuzzSupport.h"

using namespace meridex;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const auto& [port, description] : ParsePortsList(fuzz::AsText(data, size))) {
        MERIDEX_FUZZ_CHECK(port.find('|') == std::string::npos && port.find('\n') == std::string::npos);
        MERIDEX_FUZZ_CHECK(description.find('|') == std::string::npos);
    }
    return 0;
}
