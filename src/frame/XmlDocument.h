#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <meridex/frame/XmlNode.h>

namespace meridex {

namespace xmlimpl { struct DocHolder; }

// A counted handle on one XML document. Copies share the document; the
// document lives while any handle or any view of one of its nodes lives.
//
// Parsing never touches the network, loads no DTD or external entity and
// refuses documents that declare entities (so no entity bomb can expand).
// Documents declared windows-1252, documents declared UTF-8 and documents
// without a declaration in either encoding all load.
class MERIDEX_EXPORT XmlDocument {
public:
    XmlDocument() noexcept = default;
    XmlDocument(const XmlDocument& other) noexcept;
    XmlDocument(XmlDocument&& other) noexcept;
    XmlDocument& operator=(const XmlDocument& other) noexcept;
    XmlDocument& operator=(XmlDocument&& other) noexcept;
    ~XmlDocument();

    // A new, empty document (no root element, no declaration).
    static XmlDocument New();
    // Null on failure, with a reason in error when one is given.
    static XmlDocument Parse(std::string_view bytes, std::string* error = nullptr);
    static XmlDocument Load(const std::string& path, std::string* error = nullptr);

    bool IsNull() const noexcept { return holder_ == nullptr; }
    explicit operator bool() const noexcept { return holder_ != nullptr; }
    bool operator==(const XmlDocument& other) const noexcept { return holder_ == other.holder_; }

    XmlNode DocumentNode() const;
    // The first element child of the document.
    XmlNode DocumentElement() const;

    /// Changes with every edit of the document except an element appended
    /// after an element (or into an empty element): a removal, an insert before
    /// another node, a text rewritten or appended. Indexes that keep up with
    /// their own appends use it to know when anything else has changed.
    std::uint64_t EditGeneration() const noexcept;

    // New, detached nodes held by this document until appended somewhere.
    // CreateElement answers null for a name that is not a valid XML name.
    XmlNode CreateElement(std::string_view name) const;
    XmlNode CreateTextNode(std::string_view text) const;
    XmlNode CreateProcessingInstruction(std::string_view target, std::string_view data) const;

    // The whole document as it would be saved. A leading processing
    // instruction with target "xml" stands for the declaration and is written
    // as it is, its encoding used for the text; a document loaded with a
    // declaration is written with one; any other document is written as UTF-8
    // without a declaration.
    std::string Serialize() const;
    // Writes Serialize() atomically (temporary file beside path, flushed,
    // renamed). False, with a reason, when it could not; the old file is then
    // untouched.
    bool Save(const std::string& path, std::string* error = nullptr) const;

private:
    friend class XmlNode;
    friend struct XmlAccess;
    explicit XmlDocument(xmlimpl::DocHolder* holder) noexcept;
    xmlimpl::DocHolder* holder_ = nullptr;
};

}  // namespace meridex
