#include <meridex/platform/windows/WindowsFiles.h>

#include <cerrno>

#include <meridex/platform/windows/WideText.h>

namespace meridex::Windows {

std::wstring LongPath(std::string_view path) {
    std::wstring wide = Wide::FromUtf8(path);
    for (wchar_t& c : wide) {
        if (c == L'/') c = L'\\';
    }
    if (wide.size() >= MAX_PATH - 12 && wide.size() >= 3 && wide[1] == L':' && wide[2] == L'\\')
        wide.insert(0, L"\\\\?\\");
    return wide;
}

std::string Message(DWORD error) {
    wchar_t* buffer = nullptr;
    const DWORD length =
        ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                         nullptr, error, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    std::string text = length && buffer ? Wide::ToUtf8(std::wstring_view(buffer, length)) : std::string();
    if (buffer) ::LocalFree(buffer);
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) text.pop_back();
    return text.empty() ? "system error " + std::to_string(error) : text;
}

int ErrnoOf(DWORD error) {
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
        return ENOENT;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_WRITE_PROTECT:
        return EACCES;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return EEXIST;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return ENOSPC;
    default:
        return EIO;
    }
}

}  // namespace meridex::Windows
