#include <meridex/addressbook/AddressBook.h>

#include <vector>

#include <meridex/addressbook/SiteKeyIndex.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/FileOps.h>
#include <meridex/frame/ThreeWayMerge.h>
#include <meridex/frame/XMLOps.h>

namespace meridex {

namespace {
constexpr char kRootName[] = "V4ADDRESSBOOK";

std::vector<std::string_view> SplitPath(std::string_view path) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t slash = path.find('\\', start);
        parts.push_back(path.substr(start, slash == std::string_view::npos ? std::string_view::npos : slash - start));
        if (slash == std::string_view::npos) return parts;
        start = slash + 1;
    }
}
}  // namespace

AddressBook::AddressBook() : document_(XmlDocument::New()), index_(std::make_shared<SiteKeyIndex>()) {}

void AddressBook::NewAddressBook() {
    document_ = XmlDocument::New();
    root_ = document_.DocumentNode().AppendChild(XMLOps::CreateXMLElement(kRootName));
    index_ = std::make_shared<SiteKeyIndex>();
}

bool AddressBook::LoadAddressBook(const std::string& path) {
    path_ = path;
    if (!FileOps::FileExists(path)) {
        shared_.NotRead(path);
        NewAddressBook();
        return false;
    }
    XmlDocument loaded = shared_.Read(path) ? XmlDocument::Parse(shared_.Base()) : XmlDocument();
    if (loaded.IsNull()) {
        unreadable_.Remember(path);
        NewAddressBook();
        return false;
    }
    const XmlNode root = loaded.DocumentElement();
    if (root.IsNull() || root.Name() != kRootName) {
        unreadable_.Remember(path);
        NewAddressBook();
        return true;
    }
    unreadable_.Forget(path);
    document_ = std::move(loaded);
    root_ = root;
    index_ = std::make_shared<SiteKeyIndex>();
    return true;
}

void AddressBook::SaveAddressBook(const std::string& path) {
    if (root_.IsNull()) {
        throw Error(ErrorNumber::ObjectRequired, "AddressBook:SaveAddressBook",
                    "The address book has not been loaded, so there is nothing to save");
    }
    const std::string target = path.empty() ? path_ : path;
    if (target.empty()) {
        throw Error(ErrorNumber::PathNotFound, "AddressBook:SaveAddressBook",
                    "The address book has no file path to save to");
    }
    if (!unreadable_.KeepBeforeReplacing(target)) {
        throw Error(ErrorNumber::PathFileAccess, "AddressBook:SaveAddressBook",
                    "Could not keep a copy of the unreadable file '" + target + "', so it was not replaced");
    }
    std::string reason;
    const auto merge = [this](const std::string& base, const std::string& theirs) {
        ThreeWayMerge::Rules rules;
        rules.descend = [](std::string_view name) { return name == "GROUP"; };
        return ThreeWayMerge::MergeDocuments(root_, base, theirs, rules);
    };
    if (!shared_.Save(target, [this] { return document_.Serialize(); }, merge, "AddressBook:SaveAddressBook", &reason)) {
        throw Error(ErrorNumber::PathFileAccess, "AddressBook:SaveAddressBook",
                    "Could not save the address book to '" + target + "': " + reason);
    }
    path_ = target;
}

SiteGroup AddressBook::Sites() const {
    if (root_.IsNull()) return SiteGroup::None();
    return SiteGroup::AttachNode(root_, index_);
}

SiteGroup AddressBook::FindGroup(std::string_view path) const {
    const auto parts = SplitPath(path);
    if (parts.size() < 2) return SiteGroup::None();
    SiteGroup group = Sites();
    for (std::size_t i = 1; i < parts.size() && !group.IsNull(); ++i) group = group.Group(parts[i]);
    return group;
}

Site AddressBook::FindSite(std::string_view path) const {
    const auto parts = SplitPath(path);
    if (parts.size() < 2) {
        throw Error(ErrorNumber::ObjectRequired, "AddressBook:FindSite",
                    "The path '" + std::string(path) + "' has no backslash, so it names no site");
    }
    SiteGroup group = Sites();
    if (group.IsNull()) {
        throw Error(ErrorNumber::ObjectRequired, "AddressBook:FindSite", "The address book is not loaded");
    }
    for (std::size_t i = 1; i + 1 < parts.size(); ++i) {
        group = group.Group(parts[i]);
        if (group.IsNull()) {
            throw Error(ErrorNumber::ObjectRequired, "AddressBook:FindSite",
                        "No group '" + std::string(parts[i]) + "' on the path '" + std::string(path) + "'");
        }
    }
    return group.Site(parts.back());
}

}  // namespace meridex

