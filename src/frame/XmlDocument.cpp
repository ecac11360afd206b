#include <meridex/frame/XmlDocument.h>

#include <libxml/parser.h>
#include <libxml/xmlsave.h>

#include <cstring>

#include <meridex/frame/FileOps.h>
#include <meridex/frame/Text.h>
#include <meridex/frame/XmlAccess.h>
#include <meridex/frame/XmlImpl.h>
#include <meridex/frame/XmlSave.h>

namespace meridex {
namespace {

struct ParseGuard {
    bool entityDeclared = false;
};

// Documents that declare entities are refused outright: our formats never
// use them, and refusing them closes the door on entity bombs and external
// entities alike.
void RefuseEntityDecl(void* ctx, const xmlChar*, int, const xmlChar*, const xmlChar*, xmlChar*) {
    auto ctxt = static_cast<xmlParserCtxtPtr>(ctx);
    static_cast<ParseGuard*>(ctxt->_private)->entityDeclared = true;
    xmlStopParser(ctxt);
}

bool StartsWithDeclaration(std::string_view bytes) {
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
    return bytes.size() > 5 && bytes.substr(0, 5) == "<?xml" &&
           (bytes[5] == ' ' || bytes[5] == '\t' || bytes[5] == '\r' || bytes[5] == '\n');
}

// The encoding a leading "xml" processing instruction names, if any.
std::string EncodingOfInstruction(const std::string& data) {
    const std::size_t at = data.find("encoding");
    if (at == std::string::npos) return {};
    std::size_t pos = data.find_first_of("\"'", at);
    if (pos == std::string::npos) return {};
    const char quote = data[pos];
    const std::size_t end = data.find(quote, pos + 1);
    if (end == std::string::npos) return {};
    return data.substr(pos + 1, end - pos - 1);
}

// The encoding named by the declaration at the start of bytes ("" if none).
std::string DeclaredEncoding(std::string_view bytes) {
    const std::size_t end = bytes.find("?>");
    return EncodingOfInstruction(std::string(bytes.substr(0, end == std::string_view::npos ? 0 : end)));
}

bool IsWindows1252Name(std::string_view name) {
    return Text::EqualsIgnoreCase(name, "windows-1252") || Text::EqualsIgnoreCase(name, "cp1252");
}

// Serialises the document; false when libxml2 knows no such encoding.
bool SaveDocument(xmlDocPtr doc, const char* encoding, int options, std::string& out) {
    xmlBufferPtr buffer = xmlBufferCreate();
    // Grown by doubling: the default exact growth copies the whole output
    // again for every piece, which is quadratic on large documents.
    if (buffer) xmlBufferSetAllocationScheme(buffer, XML_BUFFER_ALLOC_DOUBLEIT);
    if (!buffer) return false;
    xmlSaveCtxtPtr ctxt = xmlSaveToBuffer(buffer, encoding, options);
    if (ctxt) {
        xmlSaveDoc(ctxt, doc);
        xmlSaveClose(ctxt);
        out.assign(reinterpret_cast<const char*>(xmlBufferContent(buffer)), static_cast<std::size_t>(xmlBufferLength(buffer)));
    }
    xmlBufferFree(buffer);
    return ctxt != nullptr;
}

}  // namespace

XmlDocument::XmlDocument(xmlimpl::DocHolder* holder) noexcept : holder_(holder) { xmlimpl::RetainDoc(holder_); }

XmlDocument::XmlDocument(const XmlDocument& other) noexcept : holder_(other.holder_) { xmlimpl::RetainDoc(holder_); }

XmlDocument::XmlDocument(XmlDocument&& other) noexcept : holder_(other.holder_) { other.holder_ = nullptr; }

XmlDocument& XmlDocument::operator=(const XmlDocument& other) noexcept {
    if (this != &other) {
        xmlimpl::RetainDoc(other.holder_);
        xmlimpl::ReleaseDoc(holder_);
        holder_ = other.holder_;
    }
    return *this;
}

XmlDocument& XmlDocument::operator=(XmlDocument&& other) noexcept {
    if (this != &other) {
        xmlimpl::ReleaseDoc(holder_);
        holder_ = other.holder_;
        other.holder_ = nullptr;
    }
    return *this;
}

XmlDocument::~XmlDocument() { xmlimpl::ReleaseDoc(holder_); }

XmlDocument XmlDocument::New() {
    xmlDocPtr doc = xmlNewDoc(reinterpret_cast<const xmlChar*>("1.0"));
    if (!doc) return {};
    return XmlDocument(xmlimpl::NewHolder(doc));
}

XmlDocument XmlDocument::Parse(std::string_view bytes, std::string* error) {
    auto fail = [&](std::string reason) {
        if (error) *error = std::move(reason);
        return XmlDocument();
    };
    if (bytes.size() > static_cast<std::size_t>(INT32_MAX)) return fail("document too large");
    const bool declared = StartsWithDeclaration(bytes);
    // The legacy host wrote its documents as 8-bit text, mostly without a
    // declaration; such a file that is not UTF-8 is windows-1252. Our own
    // table decodes it: it maps every byte (0x81 to U+0081, as Windows does),
    // where the converter libxml2 would use refuses five of them.
    const char* encoding = nullptr;
    std::string decoded;
    const std::string declaredEncoding = declared ? DeclaredEncoding(bytes) : std::string();
    if ((!declared && !Text::IsValidUtf8(bytes) && bytes.substr(0, 2) != "\xFF\xFE" && bytes.substr(0, 2) != "\xFE\xFF") ||
        IsWindows1252Name(declaredEncoding)) {
        decoded = Text::FromWindows1252(bytes);
        bytes = decoded;
        encoding = "UTF-8";
    }

    xmlParserCtxtPtr ctxt = xmlNewParserCtxt();
    if (!ctxt) return fail("out of memory");
    ParseGuard guard;
    ctxt->_private = &guard;
    ctxt->sax->entityDecl = RefuseEntityDecl;
    // No network, no DTD loading, no entity substitution; HUGE only lifts
    // the depth and text-size limits (entities are refused above).
    const int options = XML_PARSE_NONET | XML_PARSE_NODICT | XML_PARSE_NOBLANKS | XML_PARSE_NOERROR |
                        XML_PARSE_NOWARNING | XML_PARSE_HUGE | XML_PARSE_NOCDATA;
    xmlDocPtr doc = xmlCtxtReadMemory(ctxt, bytes.data(), static_cast<int>(bytes.size()), nullptr, encoding, options);
    std::string reason;
    if (guard.entityDeclared) {
        reason = "documents that declare entities are not accepted";
    } else if (!doc || !ctxt->wellFormed) {
        const xmlError* last = xmlCtxtGetLastError(ctxt);
        reason = last && last->message ? Text::Trim(last->message) : "not well-formed XML";
        if (last) reason += " (line " + std::to_string(last->line) + ")";
    }
    xmlFreeParserCtxt(ctxt);
    if (!reason.empty()) {
        if (doc) xmlFreeDoc(doc);
        return fail(reason);
    }
    if (encoding && declared) {
        // Saved again in the encoding its declaration names.
        if (doc->encoding) xmlFree(const_cast<xmlChar*>(doc->encoding));
        doc->encoding = xmlStrdup(reinterpret_cast<const xmlChar*>(declaredEncoding.c_str()));
    }
    xmlimpl::DocHolder* holder = xmlimpl::NewHolder(doc);
    holder->hadDeclaration = declared;
    return XmlDocument(holder);
}

XmlDocument XmlDocument::Load(const std::string& path, std::string* error) {
    std::string bytes;
    if (!FileOps::ReadWholeFile(path, bytes)) {
        if (error) *error = "cannot read " + path;
        return {};
    }
    return Parse(bytes, error);
}

std::uint64_t XmlDocument::EditGeneration() const noexcept { return holder_ ? holder_->editGeneration : 0; }

XmlNode XmlDocument::DocumentNode() const {
    return holder_ ? XmlAccess::View(reinterpret_cast<xmlNodePtr>(holder_->doc)) : XmlNode();
}

XmlNode XmlDocument::DocumentElement() const {
    return holder_ ? XmlAccess::View(xmlDocGetRootElement(holder_->doc)) : XmlNode();
}

XmlNode XmlDocument::CreateElement(std::string_view name) const {
    if (!holder_ || !xmlimpl::IsValidName(name)) return {};
    const std::string copy(name);
    xmlNodePtr node = xmlNewDocNode(holder_->doc, nullptr, reinterpret_cast<const xmlChar*>(copy.c_str()), nullptr);
    if (!node) return {};
    xmlimpl::AddOrphan(node);
    return XmlAccess::View(node);
}

XmlNode XmlDocument::CreateTextNode(std::string_view text) const {
    if (!holder_) return {};
    const std::string clean = xmlimpl::CleanText(text);
    xmlNodePtr node = xmlNewDocTextLen(holder_->doc, reinterpret_cast<const xmlChar*>(clean.data()), static_cast<int>(clean.size()));
    if (!node) return {};
    xmlimpl::AddOrphan(node);
    return XmlAccess::View(node);
}

XmlNode XmlDocument::CreateProcessingInstruction(std::string_view target, std::string_view data) const {
    if (!holder_ || target.empty()) return {};
    const std::string t(target);
    const std::string d = xmlimpl::CleanText(data);
    if (d.find("?>") != std::string::npos) return {};
    xmlNodePtr node = xmlNewDocPI(holder_->doc, reinterpret_cast<const xmlChar*>(t.c_str()), reinterpret_cast<const xmlChar*>(d.c_str()));
    if (!node) return {};
    xmlimpl::AddOrphan(node);
    return XmlAccess::View(node);
}

std::string XmlDocument::Serialize() const {
    if (!holder_) return {};
    xmlDocPtr doc = holder_->doc;
    xmlNodePtr first = doc->children;
    std::string encoding = "UTF-8";
    int options = XML_SAVE_FORMAT | XML_SAVE_NO_DECL;
    if (first && first->type == XML_PI_NODE && first->name &&
        std::strcmp(reinterpret_cast<const char*>(first->name), "xml") == 0) {
        const std::string named = EncodingOfInstruction(first->content ? reinterpret_cast<const char*>(first->content) : "");
        if (!named.empty()) encoding = named;
    } else if (holder_->hadDeclaration) {
        options = XML_SAVE_FORMAT;
        if (doc->encoding) encoding = reinterpret_cast<const char*>(doc->encoding);
    }
    // Without a declaration a reader may take the file for UTF-8 or for
    // windows-1252: with references for everything above 127 both read it alike.
    if (options & XML_SAVE_NO_DECL && encoding == "UTF-8") return XmlSave::AsciiXml(DocumentNode(), true);
    std::string out;
    if (!SaveDocument(doc, encoding.c_str(), options, out)) SaveDocument(doc, "UTF-8", options, out);
    return out;
}

bool XmlDocument::Save(const std::string& path, std::string* error) const {
    if (!holder_) {
        if (error) *error = "no document";
        return false;
    }
    return FileOps::WriteFileAtomic(path, Serialize(), error);
}

}  // namespace meridex
