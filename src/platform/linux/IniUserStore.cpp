#include <meridex/platform/linux/IniUserStore.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <pwd.h>
#include <unistd.h>

#include <meridex/frame/Error.h>
#include <meridex/frame/FileOps.h>
#include <meridex/frame/Text.h>

namespace meridex {
namespace {

// One line of the file as it was read; pairs and section headers are parsed.
struct Line {
    enum Kind { Other, Section, Pair } kind = Other;
    std::string name;   // section name or key
    std::string value;  // value of a pair
    std::string raw;    // the line as read (without its line end)
};

struct IniFile {
    bool exists = false;
    bool readable = true;
    std::vector<Line> lines;
};

// Keys that a plain "key=value" line cannot hold (an "=", a line break, a
// leading comment mark or quote, blanks at either end) are written quoted,
// with \\, \", \n, \r and \0 inside: "C:\\a=b.xml"=3. Hand-written plain
// lines read as they always did.
bool NeedsQuotes(std::string_view key) {
    return key.empty() || key.find_first_of(std::string_view("=\r\n\0", 4)) != std::string_view::npos ||
           key.front() == ';' || key.front() == '#' || key.front() == '[' || key.front() == '"' ||
           Text::Trim(key).size() != key.size();
}

std::string EncodeKey(std::string_view key) {
    if (!NeedsQuotes(key)) return std::string(key);
    std::string out = "\"";
    for (char c : key) {
        switch (c) {
            case '\\': out += "\\\\"; break;
            case '"': out += "\\\""; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\0': out += "\\0"; break;
            default: out += c;
        }
    }
    return out + "\"";
}

// Where the "=" after a quoted key stands, when body starts with one.
std::optional<std::size_t> QuotedKeyEnd(std::string_view body) {
    if (body.empty() || body.front() != '"') return std::nullopt;
    for (std::size_t i = 1; i < body.size(); ++i) {
        if (body[i] == '\\') {
            ++i;
        } else if (body[i] == '"') {
            std::size_t eq = i + 1;
            while (eq < body.size() && (body[eq] == ' ' || body[eq] == '\t')) ++eq;
            if (eq < body.size() && body[eq] == '=') return eq;
            return std::nullopt;
        }
    }
    return std::nullopt;
}

bool DecodeKey(std::string_view quoted, std::string& key) {
    quoted = Text::Trim(quoted);
    key.clear();
    for (std::size_t i = 1; i + 1 < quoted.size(); ++i) {
        char c = quoted[i];
        if (c == '\\') {
            c = quoted[++i];
            if (c == 'n') c = '\n';
            else if (c == 'r') c = '\r';
            else if (c == '0') c = '\0';
            else if (c != '\\' && c != '"') return false;
        }
        key += c;
    }
    return true;
}

IniFile ReadIni(const std::string& path) {
    IniFile file;
    std::error_code ec;
    file.exists = std::filesystem::exists(path, ec);
    if (!file.exists) return file;
    std::string text;
    if (!FileOps::ReadWholeFile(path, text)) {
        file.readable = false;
        return file;
    }
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        Line line;
        line.raw = text.substr(start, end - start);
        if (!line.raw.empty() && line.raw.back() == '\r') line.raw.pop_back();
        std::string_view body = Text::Trim(line.raw);
        if (!body.empty() && body.front() == '[' && body.find(']') != std::string_view::npos) {
            line.kind = Line::Section;
            line.name = std::string(Text::Trim(body.substr(1, body.rfind(']') - 1)));
        } else if (std::optional<std::size_t> eq = QuotedKeyEnd(body); eq && DecodeKey(body.substr(0, *eq), line.name)) {
            line.kind = Line::Pair;
            line.value = std::string(Text::Trim(body.substr(*eq + 1)));
        } else if (!body.empty() && body.front() != ';' && body.front() != '#' &&
                   body.find('=') != std::string_view::npos) {
            std::size_t eq = body.find('=');
            line.kind = Line::Pair;
            line.name = std::string(Text::Trim(body.substr(0, eq)));
            line.value = std::string(Text::Trim(body.substr(eq + 1)));
            if (line.name.empty()) line.kind = Line::Other;
        }
        file.lines.push_back(std::move(line));
        start = end + 1;
    }
    return file;
}

bool ValidName(std::string_view name, std::string_view forbidden) {
    if (name.empty() || Text::Trim(name).size() != name.size()) return false;
    if (name.find_first_of(forbidden) != std::string_view::npos) return false;
    return name.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

// The range of lines [header, end) that belong to the first section named
// section; nullopt when there is no such section.
std::optional<std::pair<std::size_t, std::size_t>> FindSection(const IniFile& file, std::string_view section) {
    for (std::size_t i = 0; i < file.lines.size(); ++i) {
        if (file.lines[i].kind != Line::Section || !Text::EqualsIgnoreCase(file.lines[i].name, section)) continue;
        std::size_t end = i + 1;
        while (end < file.lines.size() && file.lines[end].kind != Line::Section) ++end;
        return std::make_pair(i, end);
    }
    return std::nullopt;
}

std::optional<std::size_t> FindKey(const IniFile& file, std::pair<std::size_t, std::size_t> range,
                                   std::string_view key) {
    for (std::size_t i = range.first + 1; i < range.second; ++i)
        if (file.lines[i].kind == Line::Pair && Text::EqualsIgnoreCase(file.lines[i].name, key)) return i;
    return std::nullopt;
}

bool WriteIni(const std::string& path, const IniFile& file) {
    std::string text;
    for (const Line& line : file.lines) text += line.raw + "\n";
    try {
        FileOps::CreateFolderPath(FileOps::GetFolderPath(path));
    } catch (const Error&) {
        return false;
    }
    // A file that could not be read is kept before it is replaced.
    if (file.exists && !file.readable && FileOps::KeepUnreadableFile(path).empty()) return false;
    return FileOps::WriteFileAtomic(path, text);
}

}  // namespace

IniUserStore::IniUserStore(std::string folder) : folder_(std::move(folder)) {}

std::string IniUserStore::DefaultFolder() {
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    if (xdg && xdg[0] == '/') return std::string(xdg) + "/meridex";
    const char* home = std::getenv("HOME");
    std::string base = home && home[0] == '/' ? home : "";
    if (base.empty()) {
        if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_dir) base = entry->pw_dir;
    }
    return base + "/.config/meridex";
}

std::string IniUserStore::FileFor(std::string_view app) const {
    if (!ValidName(app, "/\\") || app == "." || app == "..") return {};
    // Lower case, so the spellings of one application name share one file.
    return folder_ + "/" + Text::FoldCase(app) + ".ini";
}

std::string IniUserStore::GetSetting(std::string_view app, std::string_view section, std::string_view key,
                                     std::string_view defaultValue) const {
    std::string path = FileFor(app);
    if (path.empty()) return std::string(defaultValue);
    IniFile file = ReadIni(path);
    auto range = FindSection(file, section);
    if (!range) return std::string(defaultValue);
    auto at = FindKey(file, *range, key);
    return at ? file.lines[*at].value : std::string(defaultValue);
}

std::vector<UserStore::Pair> IniUserStore::GetAllSettings(std::string_view app, std::string_view section) const {
    std::vector<Pair> pairs;
    std::string path = FileFor(app);
    if (path.empty()) return pairs;
    IniFile file = ReadIni(path);
    auto range = FindSection(file, section);
    if (!range) return pairs;
    for (std::size_t i = range->first + 1; i < range->second; ++i) {
        const Line& line = file.lines[i];
        if (line.kind != Line::Pair) continue;
        // A key written twice by hand counts once, as in a registry key.
        bool seen = false;
        for (const Pair& pair : pairs) seen = seen || Text::EqualsIgnoreCase(pair.first, line.name);
        if (!seen) pairs.emplace_back(line.name, line.value);
    }
    return pairs;
}

bool IniUserStore::SaveSetting(std::string_view app, std::string_view section, std::string_view key,
                               std::string_view value) {
    std::string path = FileFor(app);
    if (path.empty() || !ValidName(section, "[]") || key.empty() ||
        value.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos)
        return false;
    IniFile file = ReadIni(path);
    Line pair{Line::Pair, std::string(key), std::string(Text::Trim(value)), {}};
    pair.raw = EncodeKey(pair.name) + "=" + pair.value;
    auto range = FindSection(file, section);
    if (!range) {
        if (!file.lines.empty() && !Text::Trim(file.lines.back().raw).empty()) file.lines.push_back(Line{});
        file.lines.push_back(Line{Line::Section, std::string(section), {}, "[" + std::string(section) + "]"});
        file.lines.push_back(std::move(pair));
    } else if (auto at = FindKey(file, *range, key)) {
        if (file.lines[*at].value == pair.value) return true;
        pair.name = file.lines[*at].name;  // the spelling already in the file stays
        pair.raw = EncodeKey(pair.name) + "=" + pair.value;
        file.lines[*at] = std::move(pair);
    } else {
        // After the section's last non-blank line, so blank separators stay below it.
        std::size_t end = range->second;
        while (end > range->first + 1 && Text::Trim(file.lines[end - 1].raw).empty()) --end;
        file.lines.insert(file.lines.begin() + static_cast<std::ptrdiff_t>(end), std::move(pair));
    }
    return WriteIni(path, file);
}

bool IniUserStore::DeleteSetting(std::string_view app, std::string_view section, std::string_view key) {
    std::string path = FileFor(app);
    if (path.empty()) return false;
    IniFile file = ReadIni(path);
    auto range = FindSection(file, section);
    if (!range) return true;
    bool removed = false;
    for (std::size_t i = range->second; i-- > range->first + 1;) {
        if (file.lines[i].kind == Line::Pair && Text::EqualsIgnoreCase(file.lines[i].name, key)) {
            file.lines.erase(file.lines.begin() + static_cast<std::ptrdiff_t>(i));
            removed = true;
        }
    }
    return !removed || WriteIni(path, file);
}

}  // namespace meridex
