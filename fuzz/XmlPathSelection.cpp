// Selection by a relative name path: the first line of the input is the path,
// the rest the document. Every node selected lies inside the document.
#include <meridex/frame/XmlDocument.h>

#include "FuzzSupport.h"

using namespace meridex;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::AsText(data, size);
    const std::size_t line = text.find('\n');
    const std::string_view path = text.substr(0, line);
    const XmlDocument document =
        XmlDocument::Parse(line == std::string_view::npos ? "<R><A><B>x</B></A><A/></R>" : text.substr(line + 1));
    const XmlNode root = document.DocumentElement();
    const XmlNode single = root.SelectSingle(path);
    const std::vector<XmlNode> all = root.SelectAll(path);
    MERIDEX_FUZZ_CHECK(single.IsNull() == all.empty());
    MERIDEX_FUZZ_CHECK(all.empty() || all.front() == single);
    for (const XmlNode& node : all) MERIDEX_FUZZ_CHECK(node.OwnerDocument() == document);
    return 0;
}
