#include <meridex/settings/Feature.h>

#include <meridex/frame/Numeric.h>
#include <meridex/frame/XMLOps.h>

namespace meridex {

Feature::Feature() : node_(XMLOps::CreateXMLElement("FEATURE")) {}

Feature::Feature(XmlNode element) : node_(std::move(element)) {}

std::string Feature::Description() const { return XMLOps::GetXMLValue(node_, "DESCRIPTION", ""); }

void Feature::setDescription(std::string_view description) const {
    XMLOps::SetXMLValue(node_, "DESCRIPTION", description, true);
}

std::string Feature::Key() const { return XMLOps::GetXMLValue(node_, "KEY", ""); }

void Feature::setKey(std::string_view key) const { XMLOps::SetXMLValue(node_, "KEY", key, true); }

bool Feature::Available() const {
    // Read directly: the document helper's reader would store its default.
    std::string scratch;
    return Numeric::LeadingNumber(node_.ChildText("AVAILABLE", scratch)) != 0;
}

void Feature::setAvailable(bool available) const {
    XMLOps::SetXMLValue(node_, "AVAILABLE", available ? "-1" : "0", false);
}

Feature Feature::Clone() const {
    if (IsNull()) return Feature(XmlNode{});
    return Feature(node_.CloneNode(true));
}

}  // namespace meridex
