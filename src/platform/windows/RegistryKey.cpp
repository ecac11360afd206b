#include <meridex/platform/windows/RegistryKey.h>

namespace meridex {
namespace {

// Registry strings may lack their terminating NUL, or carry several.
std::wstring StringData(const std::vector<BYTE>& bytes, DWORD size) {
    std::wstring text(reinterpret_cast<const wchar_t*>(bytes.data()), size / sizeof(wchar_t));
    const std::size_t end = text.find(L'\0');
    if (end != std::wstring::npos) text.resize(end);
    return text;
}

bool IsStringType(DWORD type) { return type == REG_SZ || type == REG_EXPAND_SZ; }

}  // namespace

RegistryKey& RegistryKey::operator=(RegistryKey&& other) noexcept {
    if (this != &other) {
        if (key_) ::RegCloseKey(key_);
        key_ = other.key_;
        other.key_ = nullptr;
    }
    return *this;
}

RegistryKey::~RegistryKey() {
    if (key_) ::RegCloseKey(key_);
}

RegistryKey RegistryKey::Open(HKEY parent, const std::wstring& path, REGSAM access) {
    HKEY key = nullptr;
    if (path.empty() || ::RegOpenKeyExW(parent, path.c_str(), 0, access, &key) != ERROR_SUCCESS) return {};
    return RegistryKey(key);
}

RegistryKey RegistryKey::Create(HKEY parent, const std::wstring& path) {
    HKEY key = nullptr;
    if (path.empty() || ::RegCreateKeyExW(parent, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                          KEY_READ | KEY_WRITE, nullptr, &key, nullptr) != ERROR_SUCCESS)
        return {};
    return RegistryKey(key);
}

std::optional<std::wstring> RegistryKey::String(const std::wstring& name) const {
    if (!key_) return std::nullopt;
    DWORD type = 0;
    DWORD size = 0;
    if (::RegQueryValueExW(key_, name.c_str(), nullptr, &type, nullptr, &size) != ERROR_SUCCESS || !IsStringType(type))
        return std::nullopt;
    std::vector<BYTE> bytes(size + sizeof(wchar_t));
    if (::RegQueryValueExW(key_, name.c_str(), nullptr, &type, bytes.data(), &size) != ERROR_SUCCESS ||
        !IsStringType(type))
        return std::nullopt;
    return StringData(bytes, size);
}

std::vector<RegistryKey::Value> RegistryKey::Values() const {
    std::vector<Value> values;
    if (!key_) return values;
    DWORD nameMax = 0;
    DWORD dataMax = 0;
    if (::RegQueryInfoKeyW(key_, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &nameMax, &dataMax,
                           nullptr, nullptr) != ERROR_SUCCESS)
        return values;
    std::vector<wchar_t> name(nameMax + 2);
    std::vector<BYTE> data(dataMax + sizeof(wchar_t));
    for (DWORD index = 0;; ++index) {
        DWORD nameSize = static_cast<DWORD>(name.size());
        DWORD dataSize = static_cast<DWORD>(data.size());
        DWORD type = 0;
        const LSTATUS status =
            ::RegEnumValueW(key_, index, name.data(), &nameSize, nullptr, &type, data.data(), &dataSize);
        if (status == ERROR_NO_MORE_ITEMS) break;
        if (status == ERROR_MORE_DATA) {  // grown since the query: size up and ask again
            name.resize(name.size() * 2 + 256);
            data.resize(data.size() * 2 + 256);
            --index;
            continue;
        }
        if (status != ERROR_SUCCESS) break;
        Value value;
        value.name.assign(name.data(), nameSize);
        value.isString = IsStringType(type);
        if (value.isString) value.data = StringData(data, dataSize);
        values.push_back(std::move(value));
    }
    return values;
}

bool RegistryKey::SetString(const std::wstring& name, const std::wstring& data) {
    if (!key_) return false;
    const DWORD size = static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t));
    return ::RegSetValueExW(key_, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(data.c_str()), size) ==
           ERROR_SUCCESS;
}

bool RegistryKey::Remove(const std::wstring& name) {
    if (!key_) return false;
    const LSTATUS status = ::RegDeleteValueW(key_, name.c_str());
    return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
}

}  // namespace meridex
