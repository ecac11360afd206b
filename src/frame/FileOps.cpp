#include <meridex/frame/FileOps.h>

#include <meridex/frame/Error.h>
#include <meridex/frame/Text.h>
#include <meridex/platform/FileSystem.h>

// The path helpers; the file system calls are in each platform's folder.
namespace meridex::FileOps {
namespace {

std::size_t LastSeparator(std::string_view path) { return path.find_last_of("\\/"); }

// Days from 1970-01-01 to a civil date (proleptic Gregorian).
long long DaysFromCivil(long long y, unsigned m, unsigned d) {
    y -= m <= 2;
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<long long>(doe) - 719468;
}

}  // namespace

bool IsSeparator(char c) noexcept { return c == '\\' || c == '/'; }

std::string GetFileBaseName(std::string_view path) {
    if (path.empty()) return {};
    const std::size_t sep = LastSeparator(path);
    const std::size_t slashPos = sep == std::string_view::npos ? 0 : sep + 1;  // 1-based, 0 if none
    const std::size_t dot = path.rfind('.');
    const std::size_t dotPos = dot == std::string_view::npos ? path.size() + 1 : dot + 1;
    if (dotPos < slashPos) return {};
    return std::string(Text::TrimTabs(path.substr(slashPos, dotPos - slashPos - 1)));
}

std::string GetFolderPath(std::string_view path) {
    if (path.empty()) return {};
    const std::size_t sep = LastSeparator(path);
    if (sep == std::string_view::npos) return {};
    return std::string(Text::TrimTabs(path.substr(0, sep + 1)));
}

bool FileExists(std::string_view path) {
    std::string clean;
    for (char c : path) {
        if (c != '"') clean += c;
    }
    if (clean.empty()) return false;
    return FileSystem::NormalFileMatches(clean);
}

void CreateFolderPath(std::string_view path) {
    std::string p(path);
    if (!p.empty() && IsSeparator(p.back())) p.pop_back();
    // Relative and network paths are not supported.
    if (!FileSystem::IsRootedLocalPath(p)) throw Error(ErrorNumber::PathNotFound, "CreateFolderPath", "Path not found");
    if (FileSystem::Exists(p)) return;
    const std::size_t sep = LastSeparator(p);
    // The parent, unless it is the root (a drive, or "/") itself.
    if (sep != std::string::npos && sep >= FileSystem::RootLength(p)) CreateFolderPath(std::string_view(p).substr(0, sep));
    FileSystem::MakeFolder(p);
}

SystemTime DateToSystemTime(const DateTime& date) {
    SystemTime st;
    st.wYear = static_cast<std::int16_t>(date.year);
    st.wMonth = static_cast<std::int16_t>(date.month);
    st.wDay = static_cast<std::int16_t>(date.day);
    st.wHour = static_cast<std::int16_t>(date.hour);
    st.wMinute = static_cast<std::int16_t>(date.minute);
    st.wSecond = static_cast<std::int16_t>(date.second);
    return st;
}

std::int64_t DateToFileTime(const DateTime& date) {
    const SystemTime st = DateToSystemTime(date);
    constexpr long long kDaysFrom1601To1970 = 134774;
    const long long days = DaysFromCivil(st.wYear, static_cast<unsigned>(st.wMonth), static_cast<unsigned>(st.wDay)) +
                           kDaysFrom1601To1970;
    const long long seconds = days * 86400LL + st.wHour * 3600LL + st.wMinute * 60LL + st.wSecond;
    return seconds * 10000000LL + st.wMilliseconds * 10000LL;
}

bool SetFileDateTimes(std::string_view path, const DateTime& created, const DateTime& accessed,
                      const DateTime& modified, bool local) {
    return FileSystem::SetFileTimes(std::string(path), DateToFileTime(created), DateToFileTime(accessed),
                                    DateToFileTime(modified), local);
}

}  // namespace meridex::FileOps
