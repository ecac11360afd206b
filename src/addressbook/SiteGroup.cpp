#include <meridex/addressbook/SiteGroup.h>

#include <algorithm>
#include <limits>
#include <vector>

#include <meridex/addressbook/SiteKeyIndex.h>
#include <meridex/frame/Numeric.h>
#include <meridex/frame/Text.h>
#include <meridex/frame/XMLOps.h>

namespace meridex {

namespace {
constexpr std::string_view kRootName = "V4ADDRESSBOOK";

std::string_view ElementName(SiteKeyIndex::Kind kind) {
    return kind == SiteKeyIndex::Kind::Site ? "SITE" : "GROUP";
}

std::int16_t ClampCount(std::size_t count) {
    return static_cast<std::int16_t>(std::min<std::size_t>(count, std::numeric_limits<std::int16_t>::max()));
}
}  // namespace

SiteGroup::SiteGroup()
    : node_(XMLOps::CreateXMLElement("GROUP")), index_(std::make_shared<SiteKeyIndex>()) {}

SiteGroup::SiteGroup(const XmlNode& element, std::shared_ptr<SiteKeyIndex> index)
    : node_(element), index_(std::move(index)) {
    if (!index_) index_ = std::make_shared<SiteKeyIndex>();
}

SiteGroup SiteGroup::None() { return SiteGroup(XmlNode(), nullptr); }

SiteGroup SiteGroup::AttachNode(const XmlNode& element) { return SiteGroup(element, nullptr); }

SiteGroup SiteGroup::AttachNode(const XmlNode& element, std::shared_ptr<SiteKeyIndex> index) {
    return SiteGroup(element, std::move(index));
}

std::string SiteGroup::Name() const { return node_.SelectSingle("NAME").Text(); }
std::string SiteGroup::Key() const { return node_.SelectSingle("KEY").Text(); }
std::string SiteGroup::Path() const { return node_.SelectSingle("PATH").Text(); }
void SiteGroup::setName(std::string_view name) const { XMLOps::SetXMLValue(node_, "NAME", name, true); }
void SiteGroup::setKey(std::string_view key) const { XMLOps::SetXMLValue(node_, "KEY", key, true); }
void SiteGroup::SetPath(std::string_view path) const { XMLOps::SetXMLValue(node_, "PATH", path, false); }

std::int16_t SiteGroup::SiteCount() const { return ClampCount(node_.CountChildElements("SITE")); }
std::int16_t SiteGroup::GroupCount() const { return ClampCount(node_.CountChildElements("GROUP")); }

XmlNode SiteGroup::Child(int kindNumber, const Index& index) const {
    const auto kind = static_cast<SiteKeyIndex::Kind>(kindNumber);
    if (node_.IsNull()) return XmlNode();
    if (!index.IsNumber()) return index_->Find(node_, kind, index.Key());
    // A number beyond 16 bits is an overflow error, not a miss.
    long long position = Numeric::ToInt16(static_cast<double>(index.Number()));
    if (position < 1) return XmlNode();
    const std::string_view name = ElementName(kind);
    for (XmlNode child = node_.FirstChildElement(name); !child.IsNull(); child = child.NextSiblingElement(name)) {
        if (--position == 0) return child;
    }
    return XmlNode();
}

meridex::Site SiteGroup::Site(const Index& index) const {
    const XmlNode child = Child(0, index);
    return child.IsNull() ? meridex::Site::None() : meridex::Site(child);
}

SiteGroup SiteGroup::Group(const Index& index) const {
    const XmlNode child = Child(1, index);
    return child.IsNull() ? None() : SiteGroup(child, index_);
}

bool SiteGroup::Append(const XmlNode& child, int kindNumber) const {
    const auto kind = static_cast<SiteKeyIndex::Kind>(kindNumber);
    if (node_.IsNull() || child.IsNull()) return false;
    index_->Notice(node_);
    const XmlNode previousLast = node_.LastChild();
    if (node_.AppendChild(child).IsNull()) return false;
    index_->Appended(node_, kind, child, previousLast);

    // The search sees the item just appended too, with whatever key it had.
    const std::string name = child.SelectSingle("NAME").Text();
    std::string candidate = name;
    for (long long counter = 1; !index_->Find(node_, kind, candidate).IsNull(); ++counter) {
        candidate = name + "_" + std::to_string(counter);
    }
    const std::string oldKey = SiteKeyIndex::FoldedKey(child);
    XMLOps::SetXMLValue(child, "KEY", candidate, true);
    index_->Rekeyed(node_, kind, child, oldKey, Text::FoldCase(candidate));

    const std::string path = PathFor(candidate);
    // A site's path is always written; a group's only when it changed.
    XMLOps::SetXMLValue(child, "PATH", path, kind == SiteKeyIndex::Kind::Site);
    index_->Absorb(node_);
    return true;
}

bool SiteGroup::AddSite(const meridex::Site& site) const {
    return Append(site.XMLNode(), 0);
}

bool SiteGroup::AddGroup(const SiteGroup& group) const {
    return Append(group.XMLNode(), 1);
}

std::string SiteGroup::PathFor(std::string_view key) const {
    // Walked up without recursion: groups may nest thousands deep, and every
    // add walks up to the root. The receiving group and the root, which may
    // have thousands of children and (the root normally) no NAME, are
    // answered by the key index.
    std::vector<std::string> names;
    std::string scratch;
    for (XmlNode group = node_; group.IsElement(); group = group.Parent()) {
        const bool root = group.Name() == "V4ADDRESSBOOK";
        if (root || group == node_) {
            names.push_back(index_->NameElement(group).Text());
        } else {
            names.emplace_back(group.ChildText("NAME", scratch));
        }
        if (root) break;
    }
    std::size_t size = key.size();
    for (const auto& name : names) size += name.size() + 1;
    std::string path;
    path.reserve(size);
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        path += *name;
        path += '\\';
    }
    path += key;
    return path;
}

bool SiteGroup::RemoveSite(const Index& index) const {
    const XmlNode child = Child(0, index);
    if (child.IsNull()) return false;
    index_->Forget(node_);
    return !node_.RemoveChild(child).IsNull();
}

bool SiteGroup::RemoveGroup(const Index& index) const {
    const XmlNode child = Child(1, index);
    if (child.IsNull()) return false;
    index_->Forget(node_);
    return !node_.RemoveChild(child).IsNull();
}

void SiteGroup::Clear() const {
    if (node_.IsNull()) return;
    index_->Forget(node_);
    for (const std::string_view name : {std::string_view("SITE"), std::string_view("GROUP")}) {
        for (XmlNode child = node_.FirstChildElement(name); !child.IsNull();) {
            const XmlNode next = child.NextSiblingElement(name);
            node_.RemoveChild(child);
            child = next;
        }
    }
}

SiteGroup SiteGroup::Parent() const {
    if (node_.IsNull() || node_.Name() == kRootName) return None();
    const XmlNode parent = node_.Parent();
    if (parent.IsNull() || !parent.IsElement()) return None();
    return SiteGroup(parent, index_);
}

}  // namespace meridex
