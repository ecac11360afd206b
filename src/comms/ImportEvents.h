#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <string>

namespace meridex {

/// What an import from schemes tells its receiver, synchronously, as it runs.
/// The default of each is to ignore the event (and never to cancel).
class MERIDEX_EXPORT ImportEvents {
public:
    virtual ~ImportEvents() = default;
    /// "Scheme Found: <path>" and "Processing Scheme: <scheme text>".
    virtual void Message(const std::string& msg) { (void)msg; }
    /// 0..100 after each scheme.
    virtual void Progress(std::int16_t percentComplete) { (void)percentComplete; }
    /// Once at the end, also after a cancelled import.
    virtual void Complete() {}
    /// Asked between folders and between schemes: true stops the import.
    virtual bool CancelRequested() { return false; }
};

}  // namespace meridex
