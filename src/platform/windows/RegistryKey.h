#pragma once
#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace meridex {

// An open registry key, closed when the object ends. A key that could not be
// opened is an object that answers nothing.
class RegistryKey {
public:
    struct Value {
        std::wstring name;
        std::wstring data;  // the text of a string value
        bool isString = false;
    };

    RegistryKey() noexcept = default;
    RegistryKey(RegistryKey&& other) noexcept : key_(other.key_) { other.key_ = nullptr; }
    RegistryKey& operator=(RegistryKey&& other) noexcept;
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    ~RegistryKey();

    static RegistryKey Open(HKEY parent, const std::wstring& path, REGSAM access = KEY_READ);
    // Opens the key for reading and writing, making it and its parents as needed.
    static RegistryKey Create(HKEY parent, const std::wstring& path);

    bool IsOpen() const noexcept { return key_ != nullptr; }
    // A string value (REG_SZ or REG_EXPAND_SZ, unexpanded), none when absent.
    std::optional<std::wstring> String(const std::wstring& name) const;
    // Every value in the registry's order, enumerated until no more items remain.
    std::vector<Value> Values() const;
    bool SetString(const std::wstring& name, const std::wstring& data);
    // True when the value is gone afterwards (also when it never was there).
    bool Remove(const std::wstring& name);

private:
    explicit RegistryKey(HKEY key) noexcept : key_(key) {}
    HKEY key_ = nullptr;
};

}  // namespace meridex
