// The numeric and boolean readers over any text: a number or the documented
// overflow error, a boolean, never a crash.
#include <meridex/frame/Error.h>
#include <meridex/frame/Numeric.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XMLOps.h>

#include "FuzzSupport.h"

using namespace meridex;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::AsText(data, size);
    const double number = Numeric::LeadingNumber(text);
    (void)Numeric::IsNumeric(text);
    for (auto convert : {+[](double v) { return static_cast<long long>(Numeric::ToInt16(v)); },
                         +[](double v) { return static_cast<long long>(Numeric::ToInt32(v)); }}) {
        try {
            (void)Numeric::ToText(convert(number));
        } catch (const Error& e) {
            MERIDEX_FUZZ_CHECK(e.Number() == 6);
        }
    }
    static XMLFactoryLease lease;
    const XmlNode element = XMLOps::CreateXMLElement("R");
    XMLOps::SetXMLValue(element, "V", text, true);
    (void)XMLOps::ReadXMLBoolean(element, "V", false, false);
    try {
        (void)XMLOps::ReadXMLInteger(element, "V", 0, false);
    } catch (const Error& e) {
        MERIDEX_FUZZ_CHECK(e.Number() == 6);
    }
    return 0;
}
