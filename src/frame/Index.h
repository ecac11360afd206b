#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <string>
#include <string_view>

namespace meridex {

/// A collection index: a 1-based number or a key text.
class MERIDEX_EXPORT Index {
public:
    /// A 1-based position.
    Index(int number) : isNumber_(true), number_(number) {}
    /// A 1-based position.
    Index(long number) : isNumber_(true), number_(number) {}
    /// A 1-based position.
    Index(long long number) : isNumber_(true), number_(number) {}
    /// A fractional number goes to the nearest integer, halves to even.
    Index(double number);
    /// A key text (a null pointer is the empty key).
    Index(const char* key) : key_(key ? key : "") {}
    /// A key text.
    Index(std::string key) : key_(std::move(key)) {}
    /// A key text.
    Index(std::string_view key) : key_(key) {}

    /// True for a position, false for a key.
    bool IsNumber() const noexcept { return isNumber_; }
    /// The position (0 for a key).
    long long Number() const noexcept { return number_; }
    /// The key ("" for a position).
    const std::string& Key() const noexcept { return key_; }

private:
    bool isNumber_ = false;
    long long number_ = 0;
    std::string key_;
};

}  // namespace meridex
