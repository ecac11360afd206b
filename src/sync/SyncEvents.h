#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <string>

namespace meridex {

/// What SyncSchemes tells its caller while it runs, synchronously, from inside
/// its loops. Override the events of interest; the defaults do nothing. A
/// handler may call SyncSchemes::CancelSearch. An exception thrown by a
/// handler is dropped, so a faulty handler cannot end a copy half-way.
class MERIDEX_EXPORT SyncEvents {
public:
    virtual ~SyncEvents() = default;

    /// Once per scheme file found; file is its full path followed by CR LF.
    virtual void FoundFiles(const std::string& file) { (void)file; }
    /// Before a scheme family is copied: source is the family's folder and
    /// base name, destination the folder it goes to (with its trailing
    /// separator, ready for a file name), progress 0..100.
    virtual void CopyFiles(const std::string& source, const std::string& destination, std::int16_t progress) {
        (void)source, (void)destination, (void)progress;
    }
    /// A copied file's times could not be set back ("Unable to revert file
    /// date/times"); the copy itself is in place.
    virtual void CopyFilesError(const std::string& source, const std::string& destination,
                                const std::string& errDescription) {
        (void)source, (void)destination, (void)errDescription;
    }
};

}  // namespace meridex
