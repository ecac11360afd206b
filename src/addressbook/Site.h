#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <string>
#include <string_view>

#include <meridex/frame/Index.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XmlNode.h>

namespace meridex {

/// A field site of the address book: a view on one SITE element whose NAME,
/// KEY and PATH children hold its texts and whose PROFILE child holds its
/// communications parameters, one child element per parameter.
///
/// Nothing is cached: every call reads or writes the element. A view on no
/// element ("none", IsNull()) reads empty texts, counts 0 and ignores writes.
class MERIDEX_EXPORT Site {
public:
    /// A new, unattached SITE element holding one empty PROFILE.
    Site();
    /// A view on element; an element without PROFILE is given an empty one. A
    /// null element gives none.
    explicit Site(const XmlNode& element);
    /// The site on no element ("none").
    static Site None();

    /// True for none.
    bool IsNull() const noexcept { return node_.IsNull(); }
    /// True when the view is on an element (the opposite of IsNull).
    explicit operator bool() const noexcept { return !node_.IsNull(); }

    /// The PROFILE child (null when there is none).
    XmlNode Profile() const;
    /// Replaces the current PROFILE by profile (moved from wherever it is), or
    /// removes it when profile is null. It should be named PROFILE. A profile
    /// that cannot be moved here changes nothing.
    void setProfile(const XmlNode& profile) const;

    /// The PATH text: where the site sits in the book (see SetPath).
    std::string Path() const;
    /// The KEY text, unique among the sites of its group.
    std::string Key() const;
    /// Writes KEY, an empty text included.
    void setKey(std::string_view key) const;
    /// The NAME text the user sees.
    std::string Name() const;
    /// Writes NAME, an empty text included.
    void setName(std::string_view name) const;

    /// The SITE element viewed (null for none).
    XmlNode XMLNode() const { return node_; }
    /// Binds the view to element, giving it an empty PROFILE when it has none.
    void setXMLNode(const XmlNode& element);

    /// Number of parameters (child elements of PROFILE), at most 32767.
    std::int16_t ParameterCount() const;
    /// A key text selects the first parameter whose element name equals it
    /// exactly (case-sensitive); a number the parameter at that 1-based
    /// position. Null when none matches.
    XmlNode Parameter(const Index& index) const;
    /// Adds a parameter element; one of the same name is replaced, and the new
    /// element goes last. False when nothing could be added (null or
    /// non-element argument, or none).
    bool Add(const XmlNode& element) const;
    /// Removes the parameter Parameter(index) finds; false when there is none.
    bool Remove(const Index& index) const;

    /// Adds (or replaces) the parameter name with text value. False, and
    /// nothing changed, when name is not a valid XML element name.
    bool SetParameter(std::string_view name, std::string_view value) const;

    /// Writes PATH; the group that receives the site calls it.
    void SetPath(std::string_view path) const;

private:
    struct Bind {};
    Site(Bind, const XmlNode& element);
    XmlNode EnsureProfile() const;

    XMLFactoryLease lease_;
    XmlNode node_;
};

}  // namespace meridex
