#pragma once
#include <meridex/Export.h>

namespace meridex {

// One use of the shared XML factory document for as long as the object
// lives: XML-backed classes hold one as a member, so the factory lives
// exactly as long as any of them (copies count as uses too).
class MERIDEX_EXPORT XMLFactoryLease {
public:
    XMLFactoryLease();
    XMLFactoryLease(const XMLFactoryLease&);
    XMLFactoryLease& operator=(const XMLFactoryLease&) { return *this; }
    ~XMLFactoryLease();
};

}  // namespace meridex
