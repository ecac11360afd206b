#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <string>
#include <string_view>

namespace meridex {

// A collection index: a 1-based number or a key text.
class MERIDEX_EXPORT Index {
public:
    Index(int number) : isNumber_(true), number_(number) {}
    Index(long number) : isNumber_(true), number_(number) {}
    Index(long long number) : isNumber_(true), number_(number) {}
    // A fractional number goes to the nearest integer, halves to even.
    Index(double number);
    Index(const char* key) : key_(key ? key : "") {}
    Index(std::string key) : key_(std::move(key)) {}
    Index(std::string_view key) : key_(key) {}

    bool IsNumber() const noexcept { return isNumber_; }
    long long Number() const noexcept { return number_; }
    const std::string& Key() const noexcept { return key_; }

private:
    bool isNumber_ = false;
    long long number_ = 0;
    std::string key_;
};

}  // namespace meridex
