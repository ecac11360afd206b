#pragma once
#include <meridex/Export.h>
#include <string>

namespace meridex {

/// Who a logger says it is.
struct MERIDEX_EXPORT LoggerIdentity {
    std::string model;            ///< model name, matched against a firmware file's models
    std::string serialNumber;     ///< the logger's serial number
    std::string firmwareVersion;  ///< version of its firmware; empty when it holds none that can run
    bool inLoader = false;        ///< waiting in its loader rather than running its firmware
    std::string loaderVersion;    ///< version of its loader, when it says
};

}  // namespace meridex
