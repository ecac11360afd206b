#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <meridex/addressbook/Site.h>
#include <meridex/frame/Index.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XmlNode.h>

namespace meridex {

class SiteKeyIndex;

/// A group of the address book: a view on one GROUP element, or on the
/// V4ADDRESSBOOK root, whose SITE and GROUP children are its sites and
/// sub-groups in document order.
///
/// Keys are unique among the sites of a group, and separately among its
/// sub-groups, compared ignoring case; AddSite and AddGroup make them so with
/// "_1", "_2", ... suffixes. Lookups by key go through a key index shared by
/// the views derived from one another; the document is always the truth (see
/// SiteKeyIndex).
///
/// A view on no element (IsNull()) reads empty texts, counts 0, finds nothing
/// and ignores writes.
class MERIDEX_EXPORT SiteGroup {
public:
    /// A new, unattached, empty GROUP element.
    SiteGroup();
    /// The group on no element ("none").
    static SiteGroup None();
    /// A view on an existing element (null gives none).
    static SiteGroup AttachNode(const XmlNode& element);
    /// As AttachNode, sharing a key index (the address book's).
    static SiteGroup AttachNode(const XmlNode& element, std::shared_ptr<SiteKeyIndex> index);

    /// True for none.
    bool IsNull() const noexcept { return node_.IsNull(); }
    /// True when the view is on an element (the opposite of IsNull).
    explicit operator bool() const noexcept { return !node_.IsNull(); }

    /// The NAME text the user sees.
    std::string Name() const;
    /// Writes NAME, an empty text included.
    void setName(std::string_view name) const;
    /// The KEY text, unique among the sub-groups of its parent.
    std::string Key() const;
    /// Writes KEY, an empty text included.
    void setKey(std::string_view key) const;
    /// The PATH text: where the group sits in the book (see SetPath).
    std::string Path() const;

    /// The number of direct SITE children, at most 32767.
    std::int16_t SiteCount() const;
    /// A key text selects the first SITE child whose KEY equals it ignoring
    /// case; a number the SITE child at that 1-based position. None when there
    /// is no such child (a number outside 1..count included); a number outside
    /// the 16-bit range throws Error 6 (Overflow).
    meridex::Site Site(const Index& index) const;
    /// Appends the site's element (moving it from wherever it is), gives it a
    /// unique key made from its name, and its path. False for a null site.
    bool AddSite(const meridex::Site& site) const;
    /// Removes Site(index)'s element; false when there is none.
    bool RemoveSite(const Index& index) const;
    /// Removes all sites, then all sub-groups; NAME, KEY and PATH stay.
    void Clear() const;

    /// The number of direct GROUP children, at most 32767.
    std::int16_t GroupCount() const;
    /// As Site, for a sub-group.
    SiteGroup Group(const Index& index) const;
    /// As AddSite, for a group (with whatever it holds). False when the group
    /// is null or is this group or one of its ancestors.
    bool AddGroup(const SiteGroup& group) const;
    /// Removes Group(index)'s element with all it holds; false when there is none.
    bool RemoveGroup(const Index& index) const;

    /// The group holding this one; none for the root V4ADDRESSBOOK and for a
    /// detached group.
    SiteGroup Parent() const;
    /// The GROUP (or V4ADDRESSBOOK) element viewed (null for none).
    XmlNode XMLNode() const { return node_; }

    /// Writes PATH (an empty path removes it); the receiving group calls it.
    void SetPath(std::string_view path) const;

private:
    SiteGroup(const XmlNode& element, std::shared_ptr<SiteKeyIndex> index);
    /// kind: 0 sites, 1 groups (the key index's kinds).
    XmlNode Child(int kind, const Index& index) const;
    bool Append(const XmlNode& child, int kind) const;
    /// The path of an item with this key added to this group.
    std::string PathFor(std::string_view key) const;

    XMLFactoryLease lease_;
    XmlNode node_;
    std::shared_ptr<SiteKeyIndex> index_;
};

}  // namespace meridex
