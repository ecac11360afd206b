#include <meridex/addressbook/Site.h>

#include <limits>

#include <meridex/frame/XMLOps.h>

namespace meridex {

namespace {
std::int16_t ClampCount(std::size_t count) {
    return static_cast<std::int16_t>(std::min<std::size_t>(count, std::numeric_limits<std::int16_t>::max()));
}
}  // namespace

Site::Site() : node_(XMLOps::CreateXMLElement("SITE")) {
    node_.AppendChild(XMLOps::CreateXMLElement("PROFILE"));
}

Site::Site(const XmlNode& element) { setXMLNode(element); }

Site::Site(Bind, const XmlNode& element) : node_(element) {}

Site Site::None() { return Site(Bind{}, XmlNode()); }

XmlNode Site::Profile() const { return node_.SelectSingle("PROFILE"); }

void Site::setProfile(const XmlNode& profile) const {
    if (node_.IsNull()) return;
    const XmlNode current = Profile();
    // The new profile goes in first, so one that cannot be moved here (the
    // site itself, or an element holding it) leaves the old one in place.
    if (!profile.IsNull() && node_.AppendChild(profile).IsNull()) return;
    if (!current.IsNull() && !(current == profile)) node_.RemoveChild(current);
}

std::string Site::Path() const { return node_.SelectSingle("PATH").Text(); }
std::string Site::Key() const { return node_.SelectSingle("KEY").Text(); }
std::string Site::Name() const { return node_.SelectSingle("NAME").Text(); }

void Site::setKey(std::string_view key) const { XMLOps::SetXMLValue(node_, "KEY", key, true); }
void Site::setName(std::string_view name) const { XMLOps::SetXMLValue(node_, "NAME", name, true); }
void Site::SetPath(std::string_view path) const { XMLOps::SetXMLValue(node_, "PATH", path, true); }

void Site::setXMLNode(const XmlNode& element) {
    node_ = element;
    EnsureProfile();
}

XmlNode Site::EnsureProfile() const {
    if (node_.IsNull()) return XmlNode();
    XmlNode profile = Profile();
    if (profile.IsNull()) {
        profile = node_.AppendChild(XMLOps::CreateXMLElement("PROFILE"));
    }
    return profile;
}

std::int16_t Site::ParameterCount() const { return ClampCount(Profile().CountChildElements()); }

XmlNode Site::Parameter(const Index& index) const {
    const XmlNode profile = Profile();
    if (profile.IsNull()) return XmlNode();
    if (!index.IsNumber()) {
        // Compared here rather than selected, so a name that is not a valid
        // element name simply finds nothing.
        for (XmlNode child = profile.FirstChildElement(); !child.IsNull(); child = child.NextSiblingElement()) {
            if (child.Name() == index.Key()) return child;
        }
        return XmlNode();
    }
    long long position = index.Number();
    if (position < 1) return XmlNode();
    for (XmlNode child = profile.FirstChildElement(); !child.IsNull(); child = child.NextSiblingElement()) {
        if (--position == 0) return child;
    }
    return XmlNode();
}

bool Site::Add(const XmlNode& element) const {
    if (node_.IsNull() || element.IsNull() || !element.IsElement()) return false;
    const XmlNode profile = EnsureProfile();
    if (profile.IsNull()) return false;
    const XmlNode existing = Parameter(element.Name());
    // Appended first, so a failed move leaves the old parameter in place.
    if (profile.AppendChild(element).IsNull()) return false;
    if (!existing.IsNull() && !(existing == element)) profile.RemoveChild(existing);
    return true;
}

bool Site::Remove(const Index& index) const {
    const XmlNode parameter = Parameter(index);
    if (parameter.IsNull()) return false;
    return !Profile().RemoveChild(parameter).IsNull();
}

bool Site::SetParameter(std::string_view name, std::string_view value) const {
    if (node_.IsNull()) return false;
    const XmlNode element = XMLOps::CreateXMLElement(name);
    if (element.IsNull()) return false;
    element.setText(value);
    return Add(element);
}

}  // namespace meridex
