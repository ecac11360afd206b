#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <meridex/frame/Index.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XmlNode.h>
#include <meridex/settings/Feature.h>

namespace meridex {

// A user profile: a live view of a PROFILE element, its KEY and its FEATURE
// children. Copies view the same element; every call walks the element, so
// no list goes stale when another view changes it. A null profile (IsNull())
// stands for "none".
class MERIDEX_EXPORT Profile {
public:
    // A new, detached PROFILE element with no children.
    Profile();
    // A view of an existing element; a null node gives a null profile.
    explicit Profile(XmlNode element);

    bool IsNull() const noexcept { return node_.IsNull(); }

    std::int16_t Count() const;
    // By 1-based position or by key (ignoring case, first match); null when
    // the index names no feature.
    Feature Item(const Index& index) const;
    // With a key: the feature takes the key and replaces the profile's
    // feature of that key, if any; without: appended as it is (duplicates
    // allowed). A feature that belongs elsewhere is moved here.
    void Add(const Feature& newFeature, std::optional<std::string_view> key = std::nullopt) const;
    void Remove(const Index& index) const;
    void Clear() const;

    std::string Key() const;
    // Always written, creating KEY when missing.
    void setKey(std::string_view key) const;

    const XmlNode& XMLNode() const noexcept { return node_; }
    void setXMLNode(XmlNode element) { node_ = std::move(element); }

    // The feature's availability; false when the profile has no such feature.
    bool FeatureAvailable(std::string_view key) const;
    bool FeatureExists(std::string_view key) const;

private:
    XMLFactoryLease lease_;
    XmlNode node_;
};

}  // namespace meridex
