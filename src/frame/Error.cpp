#include <meridex/frame/Error.h>

namespace meridex {

Error::Error(std::int32_t number, std::string source, std::string description)
    : number_(number), source_(std::move(source)), description_(std::move(description)) {
    what_ = "Error " + std::to_string(number_) + " (" + source_ + "): " + description_;
}

}  // namespace meridex
