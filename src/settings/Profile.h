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

/// A user profile: a live view of a PROFILE element, its KEY and its FEATURE
/// children. Copies view the same element; every call walks the element, so
/// no list goes stale when another view changes it. A null profile (IsNull())
/// stands for "none".
class MERIDEX_EXPORT Profile {
public:
    /// A new, detached PROFILE element with no children.
    Profile();
    /// A view of an existing element; a null node gives a null profile.
    explicit Profile(XmlNode element);
    /// The null profile ("none").
    static Profile None() { return Profile(XmlNode()); }

    /// True for the null profile ("none").
    bool IsNull() const noexcept { return node_.IsNull(); }
    /// True when the profile views an element (the opposite of IsNull).
    explicit operator bool() const noexcept { return !node_.IsNull(); }

    /// The number of FEATURE children, at most 32767.
    std::int16_t Count() const;
    /// By 1-based position or by key (ignoring case, first match); null when
    /// the index names no feature.
    Feature Item(const Index& index) const;
    /// With a key: the feature takes the key and replaces the profile's
    /// feature of that key, if any; without: appended as it is (duplicates
    /// allowed). A feature that belongs elsewhere is moved here.
    void Add(const Feature& newFeature, std::optional<std::string_view> key = std::nullopt) const;
    /// Removes the feature Item(index) finds, if any.
    void Remove(const Index& index) const;
    /// Removes every feature; KEY stays.
    void Clear() const;

    /// The KEY text ("" when there is none).
    std::string Key() const;
    /// Always written, creating KEY when missing.
    void setKey(std::string_view key) const;

    /// The PROFILE element viewed (null for none).
    const XmlNode& XMLNode() const noexcept { return node_; }
    /// Makes this a view of element (null makes it none).
    void setXMLNode(XmlNode element) { node_ = std::move(element); }

    /// The feature's availability; false when the profile has no such feature.
    bool FeatureAvailable(std::string_view key) const;
    /// True when the profile has a feature of that key (ignoring case).
    bool FeatureExists(std::string_view key) const;

private:
    XMLFactoryLease lease_;
    XmlNode node_;
};

}  // namespace meridex
