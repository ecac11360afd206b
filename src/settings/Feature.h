#pragma once
#include <meridex/Export.h>
#include <string>
#include <string_view>

#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XmlNode.h>

namespace meridex {

/// One feature permission of a profile: a live view of a FEATURE element
/// (KEY, DESCRIPTION and, when the feature is available, AVAILABLE "-1").
/// Copies view the same element; nothing is cached. A null feature (IsNull())
/// stands for "none": reads give empty results, writes do nothing.
class MERIDEX_EXPORT Feature {
public:
    /// A new, detached FEATURE element with no children.
    Feature();
    /// A view of an existing element; a null node gives a null feature.
    explicit Feature(XmlNode element);
    /// The null feature ("none").
    static Feature None() { return Feature(XmlNode()); }

    /// True for the null feature ("none").
    bool IsNull() const noexcept { return node_.IsNull(); }
    /// True when the feature views an element (the opposite of IsNull).
    explicit operator bool() const noexcept { return !node_.IsNull(); }

    /// The DESCRIPTION text ("" when there is none).
    std::string Description() const;
    /// Always written, an empty text included.
    void setDescription(std::string_view description) const;
    /// The KEY text ("" when there is none).
    std::string Key() const;
    /// Writes KEY, an empty text included.
    void setKey(std::string_view key) const;
    /// The leading number of AVAILABLE is not zero; no AVAILABLE reads as false.
    bool Available() const;
    /// True stores "-1"; false removes AVAILABLE.
    void setAvailable(bool available) const;

    /// The FEATURE element viewed (null for none).
    const XmlNode& XMLNode() const noexcept { return node_; }
    /// Makes this a view of element (null makes it none).
    void setXMLNode(XmlNode element) { node_ = std::move(element); }

    /// A new feature over a deep, detached copy of this element.
    Feature Clone() const;

private:
    XMLFactoryLease lease_;
    XmlNode node_;
};

}  // namespace meridex
