// Base64: decoding any text gives text or the documented error, and what is
// encoded decodes to itself.
#include <meridex/frame/Base64Encoder.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/Text.h>

#include "FuzzSupport.h"

using namespace meridex;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Base64Encoder base64;
    const std::string_view text = fuzz::AsText(data, size);
    try {
        (void)base64.Decode(text);
    } catch (const Error& e) {
        MERIDEX_FUZZ_CHECK(e.Description() == "Unable to decode string");
    }
    // Text that windows-1252 can hold survives the round trip.
    const std::string holdable = Text::FromWindows1252(text);
    MERIDEX_FUZZ_CHECK(base64.Decode(base64.Encode(holdable)) == holdable);
    return 0;
}
