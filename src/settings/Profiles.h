#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <optional>
#include <string_view>

#include <meridex/frame/Index.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XmlNode.h>
#include <meridex/settings/Profile.h>

namespace meridex {

/// The profile collection: a live view of a PROFILES element and its PROFILE
/// children. Copies view the same element. A null collection (IsNull())
/// stands for "none".
class MERIDEX_EXPORT Profiles {
public:
    /// A new, detached PROFILES element with no children.
    Profiles();
    /// A view of an existing element; a null node gives a null collection.
    explicit Profiles(XmlNode element);
    /// The null collection ("none").
    static Profiles None() { return Profiles(XmlNode()); }

    /// True for the null collection ("none").
    bool IsNull() const noexcept { return node_.IsNull(); }
    /// True when the collection views an element (the opposite of IsNull).
    explicit operator bool() const noexcept { return !node_.IsNull(); }

    /// The number of PROFILE children, at most 32767.
    std::int16_t Count() const;
    /// By 1-based position or by key (ignoring case, first match); null when
    /// the index names no profile.
    Profile Item(const Index& index) const;
    /// Appends the profile's element (moving it from wherever it was), then
    /// gives it the key when one is passed. Duplicate keys are not refused.
    void Add(const Profile& newProfile, std::optional<std::string_view> key = std::nullopt) const;
    /// Removes the profile Item(index) finds, if any.
    void Remove(const Index& index) const;
    /// Removes every profile.
    void Clear() const;

    /// The PROFILES element viewed (null for none).
    const XmlNode& XMLNode() const noexcept { return node_; }
    /// Makes this a view of element (null makes it none).
    void setXMLNode(XmlNode element) { node_ = std::move(element); }

private:
    XMLFactoryLease lease_;
    XmlNode node_;
};

}  // namespace meridex
