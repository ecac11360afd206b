#include <meridex/sync/SchemeFileItem.h>

namespace meridex {

struct SchemeFileItem::Data {
    FileInfo file;
    FileInfo otherFile;
    std::string key;
    std::string relativePath;
    std::string errDescription;
    SchemeSyncOptions options = syncIgnore;
};

namespace {
const FileInfo kNoFile;
const std::string kNoText;
}  // namespace

SchemeFileItem::SchemeFileItem() : d_(std::make_shared<Data>()) {}
SchemeFileItem SchemeFileItem::None() { return SchemeFileItem(std::shared_ptr<Data>()); }

const FileInfo& SchemeFileItem::File() const { return d_ ? d_->file : kNoFile; }
void SchemeFileItem::setFile(const FileInfo& file) {
    if (d_) d_->file = file;
}
const std::string& SchemeFileItem::Key() const { return d_ ? d_->key : kNoText; }
void SchemeFileItem::setKey(const std::string& key) {
    if (d_) d_->key = key;
}
const std::string& SchemeFileItem::RelativePath() const { return d_ ? d_->relativePath : kNoText; }
void SchemeFileItem::setRelativePath(const std::string& path) {
    if (d_) d_->relativePath = path;
}
SchemeSyncOptions SchemeFileItem::SyncOptions() const { return d_ ? d_->options : syncIgnore; }
void SchemeFileItem::setSyncOptions(SchemeSyncOptions options) {
    if (d_) d_->options = options;
}
const FileInfo& SchemeFileItem::OtherFile() const { return d_ ? d_->otherFile : kNoFile; }
void SchemeFileItem::setOtherFile(const FileInfo& file) {
    if (d_) d_->otherFile = file;
}
const std::string& SchemeFileItem::ErrDescription() const { return d_ ? d_->errDescription : kNoText; }
void SchemeFileItem::setErrDescription(const std::string& text) {
    if (d_) d_->errDescription = text;
}

}  // namespace meridex
