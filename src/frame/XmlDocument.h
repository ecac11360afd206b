#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <meridex/frame/XmlNode.h>

namespace meridex {

namespace xmlimpl { struct DocHolder; }

/// A counted handle on one XML document. Copies share the document; the
/// document lives while any handle or any view of one of its nodes lives.
///
/// Parsing never touches the network, loads no DTD or external entity and
/// refuses documents that declare entities (so no entity bomb can expand).
/// Documents declared windows-1252, documents declared UTF-8 and documents
/// without a declaration in either encoding all load.
class MERIDEX_EXPORT XmlDocument {
public:
    /// The null handle (no document).
    XmlDocument() noexcept = default;
    /// Another handle on other's document.
    XmlDocument(const XmlDocument& other) noexcept;
    /// Takes other's document; other becomes null.
    XmlDocument(XmlDocument&& other) noexcept;
    /// Lets go of this handle's document and shares other's.
    XmlDocument& operator=(const XmlDocument& other) noexcept;
    /// Lets go of this handle's document and takes other's; other becomes null.
    XmlDocument& operator=(XmlDocument&& other) noexcept;
    /// Lets go of the document (freed when nothing else holds it).
    ~XmlDocument();
    /// The null handle, as the default constructor makes it.
    static XmlDocument None() noexcept { return XmlDocument(); }

    /// A new, empty document (no root element, no declaration).
    static XmlDocument New();
    /// The document the bytes hold; null on failure, with a reason in error
    /// when one is given.
    static XmlDocument Parse(std::string_view bytes, std::string* error = nullptr);
    /// As Parse, for the bytes of the file at path.
    static XmlDocument Load(const std::string& path, std::string* error = nullptr);

    /// True for the null handle.
    bool IsNull() const noexcept { return holder_ == nullptr; }
    /// True when the handle holds a document (the opposite of IsNull).
    explicit operator bool() const noexcept { return holder_ != nullptr; }
    /// True when both handles hold the same document (or both are null).
    bool operator==(const XmlDocument& other) const noexcept { return holder_ == other.holder_; }

    /// The document node, parent of the root element; null for the null handle.
    XmlNode DocumentNode() const;
    /// The first element child of the document (null when it has none).
    XmlNode DocumentElement() const;

    /// Changes with every edit of the document except an element appended
    /// after an element (or into an empty element): a removal, an insert before
    /// another node, a text rewritten or appended. Indexes that keep up with
    /// their own appends use it to know when anything else has changed.
    std::uint64_t EditGeneration() const noexcept;

    /// A new, detached element held by this document until appended
    /// somewhere; null for a name that is not a valid XML name.
    XmlNode CreateElement(std::string_view name) const;
    /// A new, detached text node held by this document.
    XmlNode CreateTextNode(std::string_view text) const;
    /// A new, detached processing instruction held by this document.
    XmlNode CreateProcessingInstruction(std::string_view target, std::string_view data) const;

    /// The whole document as it would be saved. A leading processing
    /// instruction with target "xml" stands for the declaration and is written
    /// as it is, its encoding used for the text; a document loaded with a
    /// declaration is written with one; any other document is written without a
    /// declaration, in ASCII with a character reference for everything above 127.
    std::string Serialize() const;
    /// Writes Serialize() atomically (temporary file beside path, flushed,
    /// renamed). False, with a reason, when it could not; the old file is then
    /// untouched.
    bool Save(const std::string& path, std::string* error = nullptr) const;

private:
    friend class XmlNode;
    friend struct XmlAccess;
    explicit XmlDocument(xmlimpl::DocHolder* holder) noexcept;
    xmlimpl::DocHolder* holder_ = nullptr;
};

}  // namespace meridex
