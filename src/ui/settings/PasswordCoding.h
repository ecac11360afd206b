#pragma once
// Internal to the dialog library: how the profile editor stores its lock password.
#include <string>
#include <string_view>

namespace meridex::ui {

/// "@" followed by the Base64 of the password's windows-1252 text.
std::string EncodePassword(std::string_view password);
/// The password of a stored text: the Base64 decoding of what follows a leading "@"; a text that
/// does not start with "@" decodes to an empty password. Throws the Base64 decode Error when the
/// rest is not Base64 of a whole number of groups.
std::string DecodePassword(std::string_view stored);

}  // namespace meridex::ui
