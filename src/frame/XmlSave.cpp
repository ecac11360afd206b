#include <meridex/frame/XmlSave.h>

#include <libxml/xmlsave.h>

#include <cstdint>
#include <cstring>

#include <meridex/frame/Text.h>
#include <meridex/frame/Utf8.h>
#include <meridex/frame/XmlAccess.h>
#include <meridex/frame/XmlNode.h>

namespace meridex::XmlSave {
namespace {

// libxml2's own escaping of text ("<", ">", "&" and CR), with every character
// above 127 written as a decimal reference in the same step.
int EscapeWithReferences(unsigned char* out, int* outlen, const xmlChar* in, int* inlen) {
    unsigned char* const outStart = out;
    unsigned char* const outEnd = out + *outlen;
    const unsigned char* const inStart = in;
    const unsigned char* const inEnd = in + *inlen;
    while (in < inEnd && out < outEnd) {
        const unsigned char c = *in;
        if (c >= 0x20 && c < 0x80 && c != '<' && c != '>' && c != '&') {
            *out++ = c;
            ++in;
            continue;
        }
        char reference[16];
        std::size_t length = 0;
        std::size_t used = 1;
        switch (c) {
        case '<': std::memcpy(reference, "&lt;", length = 4); break;
        case '>': std::memcpy(reference, "&gt;", length = 4); break;
        case '&': std::memcpy(reference, "&amp;", length = 5); break;
        case '\r': std::memcpy(reference, "&#13;", length = 5); break;
        default:
            if (c < 0x80) {
                reference[length++] = static_cast<char>(c);
                break;
            }
            const std::string_view rest(reinterpret_cast<const char*>(in), static_cast<std::size_t>(inEnd - in));
            used = 0;
            const char32_t code = utf8::Next(rest, used);
            if (code == utf8::kInvalid) {
                // Kept as it is: the output is then not ASCII, and the document is written the other way.
                reference[length++] = static_cast<char>(c);
                break;
            }
            char digits[8];
            std::size_t count = 0;
            for (std::uint32_t value = code; value; value /= 10) digits[count++] = static_cast<char>('0' + value % 10);
            reference[length++] = '&';
            reference[length++] = '#';
            while (count) reference[length++] = digits[--count];
            reference[length++] = ';';
        }
        if (static_cast<std::size_t>(outEnd - out) < length) break;
        std::memcpy(out, reference, length);
        out += length;
        in += used;
    }
    *outlen = static_cast<int>(out - outStart);
    *inlen = static_cast<int>(in - inStart);
    return 0;
}

int Append(void* context, const char* bytes, int length) {
    static_cast<std::string*>(context)->append(bytes, static_cast<std::size_t>(length));
    return length;
}

int Close(void*) { return 0; }

bool IsAscii(std::string_view bytes) {
    std::uint64_t high = 0;
    std::size_t i = 0;
    for (; i + 8 <= bytes.size(); i += 8) {
        std::uint64_t word;
        std::memcpy(&word, bytes.data() + i, 8);
        high |= word;
    }
    for (; i < bytes.size(); ++i) high |= static_cast<unsigned char>(bytes[i]);
    return (high & 0x8080808080808080ull) == 0;
}

// Writes node to out with libxml2's serialiser; encoding null: no conversion, escaping as given.
bool Write(xmlNodePtr node, const char* encoding, int options, xmlCharEncodingOutputFunc escape, std::string& out) {
    xmlSaveCtxtPtr ctxt = xmlSaveToIO(Append, Close, &out, encoding, options);
    if (!ctxt) return false;
    if (escape) xmlSaveSetEscape(ctxt, escape);
    if (node->type == XML_DOCUMENT_NODE) {
        xmlDocPtr doc = reinterpret_cast<xmlDocPtr>(node);
        // As libxml2 does for the length of a save that names an encoding:
        // attribute values are then written as they are, not as hexadecimal references.
        const xmlChar* const named = doc->encoding;
        if (!encoding) doc->encoding = reinterpret_cast<const xmlChar*>("UTF-8");
        xmlSaveDoc(ctxt, doc);
        doc->encoding = named;
    } else {
        xmlSaveTree(ctxt, node);
    }
    return xmlSaveClose(ctxt) >= 0;
}

}  // namespace

std::string AsciiXml(const XmlNode& view, bool indent, std::string_view suffix) {
    xmlNodePtr node = XmlAccess::Raw(view);
    if (!node) return {};
    const int saveOptions = XML_SAVE_NO_DECL | (indent ? XML_SAVE_FORMAT : 0);
    std::string out;
    if (Write(node, nullptr, saveOptions, EscapeWithReferences, out) && IsAscii(out)) {
        out.append(suffix);
        return out;
    }
    // A name, comment or instruction above ASCII (or an attribute value, which
    // libxml2 escapes itself): the UTF-8 form, then references where they may stand.
    out.clear();
    Write(node, "UTF-8", saveOptions, nullptr, out);
    out = Text::XmlWithCharacterReferences(out);
    out.append(suffix);
    return out;
}

}  // namespace meridex::XmlSave
