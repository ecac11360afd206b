#pragma once
#include <meridex/Export.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace meridex {

/// The per-user application settings store: values by application, section
/// and key. Application, section and key names compare ignoring letter case
/// ("MeridexV4" and "MERIDEXV4" are one application).
class MERIDEX_EXPORT UserStore {
public:
    /// A key and its value.
    using Pair = std::pair<std::string, std::string>;

    virtual ~UserStore() = default;
    /// The stored value, or defaultValue when there is none.
    virtual std::string GetSetting(std::string_view app, std::string_view section, std::string_view key,
                                   std::string_view defaultValue) const = 0;
    /// Every key and value of a section, in stored order (empty when none).
    virtual std::vector<Pair> GetAllSettings(std::string_view app, std::string_view section) const = 0;
    /// False when the value could not be stored.
    virtual bool SaveSetting(std::string_view app, std::string_view section, std::string_view key,
                             std::string_view value) = 0;
    /// False when the key could not be removed (a missing key is not a failure).
    virtual bool DeleteSetting(std::string_view app, std::string_view section, std::string_view key) = 0;
};

}  // namespace meridex
