#pragma once
#include <string>

#include <meridex/platform/UserStore.h>

namespace meridex {

// The per-user store on Windows: where a classic Windows application's
// GetSetting and SaveSetting keep their values, so a PC that ran the legacy
// host keeps its preferences:
//
//   HKEY_CURRENT_USER\Software\VB and VBA Program Settings\<app>\<section>
//
// one string value per key. The registry compares key and value names
// ignoring case, so "MeridexV4" and "MERIDEXV4" are one application, as the
// interface asks. Values of a section are listed in the registry's order.
class RegistryUserStore : public UserStore {
public:
    // root: the key under HKEY_CURRENT_USER that holds the applications.
    explicit RegistryUserStore(std::wstring root = kLegacyRoot);

    static constexpr const wchar_t* kLegacyRoot = L"Software\\VB and VBA Program Settings";

    std::string GetSetting(std::string_view app, std::string_view section, std::string_view key,
                           std::string_view defaultValue) const override;
    std::vector<Pair> GetAllSettings(std::string_view app, std::string_view section) const override;
    bool SaveSetting(std::string_view app, std::string_view section, std::string_view key,
                     std::string_view value) override;
    bool DeleteSetting(std::string_view app, std::string_view section, std::string_view key) override;

private:
    // The key path of a section, empty for names that cannot be a key.
    std::wstring SectionKey(std::string_view app, std::string_view section) const;

    std::wstring root_;
};

}  // namespace meridex
