#pragma once
#include <meridex/Export.h>

namespace meridex {

/// One use of the shared XML factory document for as long as the object
/// lives: XML-backed classes hold one as a member, so the factory lives
/// exactly as long as any of them (copies count as uses too).
class MERIDEX_EXPORT XMLFactoryLease {
public:
    /// Takes one use (XMLOps::AcquireXMLFactory).
    XMLFactoryLease();
    /// Takes one more use for the copy.
    XMLFactoryLease(const XMLFactoryLease&);
    /// Keeps this lease's own use: nothing to do.
    XMLFactoryLease& operator=(const XMLFactoryLease&) { return *this; }
    /// Gives the use back (XMLOps::ReleaseXMLFactory).
    ~XMLFactoryLease();
};

}  // namespace meridex
