#pragma once
#include <string>

#include <meridex/platform/UserStore.h>

namespace meridex {

// The per-user store on Linux: one plain text file per application,
// <folder>/<application in lower case>.ini, with "[Section]" lines and
// "key=value" lines below them, meant to be read and edited by hand.
//
//   ; lines starting with ";" or "#" are comments
//   [Settings]
//   MAX_COMM_PORT_SCOMM=16
//
// Section and key names compare ignoring case; blanks around keys and values
// are dropped; the pairs of a section keep their order. The file is re-read
// on every call, so a hand edit takes effect at once, and every write
// replaces it atomically, keeping comments and the order of its lines.
class IniUserStore : public UserStore {
public:
    // folder: where the .ini files live (created on the first write).
    explicit IniUserStore(std::string folder);

    // $XDG_CONFIG_HOME/meridex, or ~/.config/meridex when XDG_CONFIG_HOME is
    // unset or not absolute.
    static std::string DefaultFolder();

    const std::string& Folder() const noexcept { return folder_; }
    // The file of an application ("" for a name that cannot be a file name).
    std::string FileFor(std::string_view app) const;

    std::string GetSetting(std::string_view app, std::string_view section, std::string_view key,
                           std::string_view defaultValue) const override;
    std::vector<Pair> GetAllSettings(std::string_view app, std::string_view section) const override;
    bool SaveSetting(std::string_view app, std::string_view section, std::string_view key,
                     std::string_view value) override;
    bool DeleteSetting(std::string_view app, std::string_view section, std::string_view key) override;

private:
    std::string folder_;
};

}  // namespace meridex
