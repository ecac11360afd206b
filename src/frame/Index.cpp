#include <meridex/frame/Index.h>

#include <cmath>
#include <limits>

namespace meridex {

Index::Index(double number) : isNumber_(true) {
    const double rounded = std::nearbyint(number);  // default rounding: halves to even
    if (std::isnan(rounded) || rounded >= static_cast<double>(std::numeric_limits<long long>::max()) ||
        rounded < static_cast<double>(std::numeric_limits<long long>::min())) {
        number_ = std::numeric_limits<long long>::min();  // out of every range: finds nothing
    } else {
        number_ = static_cast<long long>(rounded);
    }
}

}  // namespace meridex
