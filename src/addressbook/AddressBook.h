#pragma once
#include <meridex/Export.h>
#include <memory>
#include <string>
#include <string_view>

#include <meridex/addressbook/Site.h>
#include <meridex/addressbook/SiteGroup.h>
#include <meridex/frame/SharedFile.h>
#include <meridex/frame/UnreadableFiles.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XmlDocument.h>
#include <meridex/frame/XmlNode.h>

namespace meridex {

class SiteKeyIndex;

/// The address book document: a V4ADDRESSBOOK root holding the tree of groups
/// and sites. Loading never fails (a missing or unusable file gives an empty
/// book); saving is atomic and its failure reaches the caller.
///
/// Paths are backslash-separated: the root's name (never compared), the keys
/// of the groups from the top down and, for a site, the site's key.
class MERIDEX_EXPORT AddressBook {
public:
    /// No book yet: Sites() is none until the first load or NewAddressBook.
    AddressBook();

    /// True when the file was read: also for a well-formed file whose root is
    /// not V4ADDRESSBOOK, whose content is then discarded. False, and an empty
    /// book, when there is no file or it cannot be read or parsed. A file that
    /// was there but could not be used is copied aside (".unreadable") before
    /// the first save replaces it.
    bool LoadAddressBook(const std::string& path);
    /// Saves to path (which then becomes the book's path) or, when it is empty,
    /// to the book's path. Throws Error when the file cannot be written (or
    /// nothing was loaded yet); the book's path and the file on disk are then
    /// as they were.
    void SaveAddressBook(const std::string& path = {});

    /// The book's file: the path last given to a load (even one that found no
    /// file) or to a successful save.
    const std::string& FilePath() const noexcept { return path_; }
    /// The copy of someone else's version the last save kept beside the file
    /// ("NAME.conflict-..."), or "" when it kept none: someone else had saved
    /// the book since it was loaded, and the merge could not keep all of theirs.
    const std::string& ConflictCopy() const noexcept { return shared_.ConflictCopy(); }

    /// A new view on the root (none before the first load).
    SiteGroup Sites() const;
    /// The site a path leads to; none when its last part names no site of the
    /// group reached. Throws Error when the path has no backslash, a group
    /// part names no group, or nothing was loaded yet.
    Site FindSite(std::string_view path) const;
    /// The group a path leads to; none when a part names no group, and for a
    /// path without a backslash (the root is never returned).
    SiteGroup FindGroup(std::string_view path) const;

    /// Replaces the document by an empty one (nothing is written).
    void NewAddressBook();

private:
    XMLFactoryLease lease_;
    std::string path_;
    XmlDocument document_;
    XmlNode root_;
    std::shared_ptr<SiteKeyIndex> index_;
    /// The file that was there but could not be used, kept before a save
    /// replaces it.
    UnreadableFiles unreadable_;
    /// The version loaded, so a save merges what others saved since.
    SharedFile shared_;
};

}  // namespace meridex
