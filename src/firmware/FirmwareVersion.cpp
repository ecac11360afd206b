#include <meridex/firmware/FirmwareVersion.h>

#include <cctype>
#include <vector>

#include <meridex/frame/Text.h>

namespace meridex::FirmwareVersion {
namespace {

std::vector<std::string_view> Parts(std::string_view text) {
    std::vector<std::string_view> parts;
    text = Text::Trim(text);
    while (!text.empty()) {
        std::size_t dot = text.find('.');
        parts.push_back(text.substr(0, dot));
        if (dot == std::string_view::npos) break;
        text.remove_prefix(dot + 1);
    }
    return parts;
}

bool AllDigits(std::string_view part) {
    for (char c : part)
        if (!std::isdigit(static_cast<unsigned char>(c))) return false;
    return true;
}

int ComparePart(std::string_view a, std::string_view b) {
    if (AllDigits(a) && AllDigits(b)) {
        while (a.size() > 1 && a.front() == '0') a.remove_prefix(1);
        while (b.size() > 1 && b.front() == '0') b.remove_prefix(1);
        if (a.empty()) a = "0";
        if (b.empty()) b = "0";
        if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
        return a.compare(b) < 0 ? -1 : (a == b ? 0 : 1);
    }
    std::string fa = Text::FoldCase(a), fb = Text::FoldCase(b);
    return fa < fb ? -1 : (fa == fb ? 0 : 1);
}

}  // namespace

int Compare(std::string_view a, std::string_view b) {
    std::vector<std::string_view> pa = Parts(a), pb = Parts(b);
    for (std::size_t i = 0; i < pa.size() || i < pb.size(); ++i) {
        int c = ComparePart(i < pa.size() ? pa[i] : "0", i < pb.size() ? pb[i] : "0");
        if (c != 0) return c;
    }
    return 0;
}

}  // namespace meridex::FirmwareVersion
