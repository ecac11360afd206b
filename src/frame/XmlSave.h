#pragma once
// Internal to the frame and the documents that save themselves: the writer of
// undeclared documents. Not installed.
#include <string>
#include <string_view>

namespace meridex {
class XmlNode;
}

namespace meridex::XmlSave {

/// The XML of node (a document node: the whole document, without a
/// declaration; an element: that element) as libxml2 writes it (indented with
/// indent), but in ASCII: every character above 127 in text and attribute
/// values is a decimal character reference ("B&#252;ro"), so readers that take
/// the bytes for UTF-8 and for windows-1252 read the same text. The bytes are
/// those of `Text::XmlWithCharacterReferences` over the UTF-8 form; text is
/// escaped as it is written, in one pass, and the other form is made only for a
/// document whose names, comments or instructions hold such characters. suffix
/// is appended ("\r\n" for the settings file). Empty for a null node.
std::string AsciiXml(const XmlNode& node, bool indent, std::string_view suffix = {});

}  // namespace meridex::XmlSave
