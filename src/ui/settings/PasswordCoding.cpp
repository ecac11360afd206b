#include <meridex/ui/settings/PasswordCoding.h>

#include <meridex/frame/Base64Encoder.h>

namespace meridex::ui {

std::string EncodePassword(std::string_view password) { return "@" + Base64Encoder().Encode(password); }

std::string DecodePassword(std::string_view stored) {
    // The marker tells an encoded value from plain text, which never counts as a password.
    if (stored.empty() || stored.front() != '@') return {};
    return Base64Encoder().Decode(stored.substr(1));
}

}  // namespace meridex::ui
