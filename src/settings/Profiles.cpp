#include <meridex/settings/Profiles.h>

#include <meridex/frame/XMLOps.h>
#include <meridex/settings/KeyedElements.h>

namespace meridex {

namespace {
constexpr std::string_view kProfile = "PROFILE";
}

Profiles::Profiles() : node_(XMLOps::CreateXMLElement("PROFILES")) {}

Profiles::Profiles(XmlNode element) : node_(std::move(element)) {}

std::int16_t Profiles::Count() const { return KeyedElements::Count(node_, kProfile); }

Profile Profiles::Item(const Index& index) const {
    return Profile(KeyedElements::Find(node_, kProfile, index));
}

void Profiles::Add(const Profile& newProfile, std::optional<std::string_view> key) const {
    if (IsNull() || newProfile.IsNull()) return;
    if (!node_.AppendChild(newProfile.XMLNode())) return;
    if (key) newProfile.setKey(*key);
}

void Profiles::Remove(const Index& index) const {
    if (XmlNode profile = KeyedElements::Find(node_, kProfile, index)) node_.RemoveChild(profile);
}

void Profiles::Clear() const { KeyedElements::RemoveAll(node_, kProfile); }

}  // namespace meridex
