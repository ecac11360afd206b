#include <meridex/platform/windows/RegistryUserStore.h>

#include <windows.h>

#include <meridex/platform/windows/RegistryKey.h>
#include <meridex/platform/windows/WideText.h>

namespace meridex {

RegistryUserStore::RegistryUserStore(std::wstring root) : root_(std::move(root)) {}

std::wstring RegistryUserStore::SectionKey(std::string_view app, std::string_view section) const {
    // A name holding a back slash would reach another key; an empty one the parent.
    for (std::string_view name : {app, section})
        if (name.empty() || name.find('\\') != std::string_view::npos) return {};
    return root_ + L"\\" + Wide::FromUtf8(app) + L"\\" + Wide::FromUtf8(section);
}

std::string RegistryUserStore::GetSetting(std::string_view app, std::string_view section, std::string_view key,
                                          std::string_view defaultValue) const {
    RegistryKey sectionKey = RegistryKey::Open(HKEY_CURRENT_USER, SectionKey(app, section));
    std::optional<std::wstring> value = sectionKey.String(Wide::FromUtf8(key));
    return value ? Wide::ToUtf8(*value) : std::string(defaultValue);
}

std::vector<UserStore::Pair> RegistryUserStore::GetAllSettings(std::string_view app, std::string_view section) const {
    std::vector<Pair> pairs;
    for (const RegistryKey::Value& value : RegistryKey::Open(HKEY_CURRENT_USER, SectionKey(app, section)).Values())
        if (value.isString) pairs.emplace_back(Wide::ToUtf8(value.name), Wide::ToUtf8(value.data));
    return pairs;
}

bool RegistryUserStore::SaveSetting(std::string_view app, std::string_view section, std::string_view key,
                                    std::string_view value) {
    const std::wstring path = SectionKey(app, section);
    if (path.empty() || key.empty()) return false;
    return RegistryKey::Create(HKEY_CURRENT_USER, path).SetString(Wide::FromUtf8(key), Wide::FromUtf8(value));
}

bool RegistryUserStore::DeleteSetting(std::string_view app, std::string_view section, std::string_view key) {
    const std::wstring path = SectionKey(app, section);
    if (path.empty()) return false;
    RegistryKey sectionKey = RegistryKey::Open(HKEY_CURRENT_USER, path, KEY_SET_VALUE);
    if (!sectionKey.IsOpen()) return true;  // no section: nothing to remove
    return sectionKey.Remove(Wide::FromUtf8(key));
}

}  // namespace meridex
