#include <meridex/settings/Profile.h>

#include <meridex/frame/Numeric.h>
#include <meridex/frame/XMLOps.h>
#include <meridex/settings/KeyedElements.h>

namespace meridex {

namespace {
constexpr std::string_view kFeature = "FEATURE";
}

Profile::Profile() : node_(XMLOps::CreateXMLElement("PROFILE")) {}

Profile::Profile(XmlNode element) : node_(std::move(element)) {}

std::int16_t Profile::Count() const { return KeyedElements::Count(node_, kFeature); }

Feature Profile::Item(const Index& index) const {
    return Feature(KeyedElements::Find(node_, kFeature, index));
}

void Profile::Add(const Feature& newFeature, std::optional<std::string_view> key) const {
    if (IsNull() || newFeature.IsNull()) return;
    if (key) {
        newFeature.setKey(*key);
        if (XmlNode old = KeyedElements::FindByKey(node_, kFeature, *key)) node_.RemoveChild(old);
    }
    node_.AppendChild(newFeature.XMLNode());
}

void Profile::Remove(const Index& index) const {
    if (XmlNode feature = KeyedElements::Find(node_, kFeature, index)) node_.RemoveChild(feature);
}

void Profile::Clear() const { KeyedElements::RemoveAll(node_, kFeature); }

std::string Profile::Key() const { return XMLOps::GetXMLValue(node_, "KEY", ""); }

void Profile::setKey(std::string_view key) const { XMLOps::SetXMLValue(node_, "KEY", key, true); }

bool Profile::FeatureAvailable(std::string_view key) const {
    // As Feature::Available reads it, without a view of the feature.
    std::string scratch;
    return Numeric::LeadingNumber(node_.ChildTextOfChildByChildText(kFeature, "KEY", key, "AVAILABLE", scratch)) != 0;
}

bool Profile::FeatureExists(std::string_view key) const {
    return !KeyedElements::FindByKey(node_, kFeature, key).IsNull();
}

}  // namespace meridex
