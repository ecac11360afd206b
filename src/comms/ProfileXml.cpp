#include <meridex/comms/ProfileXml.h>

#include <meridex/frame/Error.h>
#include <meridex/frame/Numeric.h>
#include <meridex/frame/Text.h>
#include <meridex/frame/XMLOps.h>

namespace meridex::ProfileXml {

bool HasChild(const XmlNode& profile, std::string_view name) { return !profile.SelectSingle(name).IsNull(); }

std::string ChildText(const XmlNode& profile, std::string_view name) {
    XmlNode child = profile.SelectSingle(name);
    return child ? child.Text() : std::string();
}

void SetChild(const XmlNode& profile, std::string_view name, std::string_view text) {
    if (!profile) return;
    XmlNode child = profile.SelectSingle(name);
    if (!child) {
        XmlDocument document = profile.OwnerDocument();
        child = document ? document.CreateElement(name) : XMLOps::CreateXMLElement(name);
        if (!child) return;
        profile.AppendChild(child);
    }
    child.setText(text);
}

void SetExisting(const XmlNode& profile, std::string_view name, std::string_view text) {
    if (XmlNode child = profile.SelectSingle(name)) child.setText(text);
}

bool IsTrueText(std::string_view text) {
    if (Numeric::IsNumeric(text)) return Numeric::LeadingNumber(text) != 0;
    return Text::ToUpper(text) == "TRUE";
}

std::optional<std::int16_t> PortNumber(const XmlNode& profile) {
    try {
        return Numeric::ToInt16(Numeric::LeadingNumber(ChildText(profile, "COMMPORT")));
    } catch (const Error&) {
        return std::nullopt;
    }
}

}  // namespace meridex::ProfileXml
