#include "frame/XMLFactoryLease.h"

#include "frame/XMLOps.h"

namespace meridex {

XMLFactoryLease::XMLFactoryLease() { XMLOps::AcquireXMLFactory(); }
XMLFactoryLease::XMLFactoryLease(const XMLFactoryLease&) { XMLOps::AcquireXMLFactory(); }
XMLFactoryLease::~XMLFactoryLease() { XMLOps::ReleaseXMLFactory(); }

}  // namespace meridex
