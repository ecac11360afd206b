// The scheme file reader: opens or refuses, never crashes.
#include <meridex/comms/XmlSchemeFile.h>

#include "FuzzSupport.h"

using namespace meridex;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    XmlSchemeFile scheme;
    if (scheme.Open(fuzz::InputFile(data, size))) {
        (void)scheme.SchemeText();
        const XmlNode profiles = scheme.CommsProfiles();
        for (XmlNode p = profiles.FirstChildElement("PROFILE"); p; p = p.NextSiblingElement("PROFILE"))
            (void)p.SelectSingle("COMMPORT").Text();
    }
    return 0;
}
