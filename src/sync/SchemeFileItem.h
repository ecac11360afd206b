#pragma once
#include <meridex/Export.h>
#include <memory>
#include <string>

#include <meridex/sync/FileInfo.h>
#include <meridex/sync/SchemeSyncOptions.h>

namespace meridex {

/// One scheme file found by SyncSchemes::GetSchemeList. A cheap handle: copies
/// share one item, so an option set through any copy (for instance one taken
/// from a collection) is the option SyncSchemes::Sync sees. Calls on a null
/// item read empty values and change nothing.
class MERIDEX_EXPORT SchemeFileItem {
public:
    /// A new item, option syncIgnore.
    SchemeFileItem();
    /// The null item ("none").
    static SchemeFileItem None();

    /// True for the null item.
    bool IsNull() const noexcept { return !d_; }
    /// True for a real item (the opposite of IsNull).
    explicit operator bool() const noexcept { return d_ != nullptr; }

    /// The scheme file on the side it was listed from.
    const FileInfo& File() const;
    /// Sets File.
    void setFile(const FileInfo& file);
    /// The relative path in upper case.
    const std::string& Key() const;
    /// Sets Key.
    void setKey(const std::string& key);
    /// The path below the scanned root, with its leading separator ("/Sub/Site.SXS").
    const std::string& RelativePath() const;
    /// Sets RelativePath.
    void setRelativePath(const std::string& path);
    /// What SyncSchemes::Sync does with this scheme.
    SchemeSyncOptions SyncOptions() const;
    /// Sets SyncOptions.
    void setSyncOptions(SchemeSyncOptions options);

    /// The same scheme on the other side when both sides have it (none when
    /// only one side has it), so a caller can show both times.
    const FileInfo& OtherFile() const;
    /// Sets OtherFile.
    void setOtherFile(const FileInfo& file);
    /// Why the item is in SyncSchemes::Errors; empty elsewhere.
    const std::string& ErrDescription() const;
    /// Sets ErrDescription.
    void setErrDescription(const std::string& text);

    /// True when both handles are the same item.
    bool operator==(const SchemeFileItem& other) const noexcept { return d_ == other.d_; }

private:
    struct Data;
    explicit SchemeFileItem(std::shared_ptr<Data> d) : d_(std::move(d)) {}
    std::shared_ptr<Data> d_;
};

}  // namespace meridex
