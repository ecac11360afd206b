#include <meridex/frame/XMLFactoryLease.h>

#include <meridex/frame/XMLOps.h>

namespace meridex {

XMLFactoryLease::XMLFactoryLease() { XMLOps::AcquireXMLFactory(); }
XMLFactoryLease::XMLFactoryLease(const XMLFactoryLease&) { XMLOps::AcquireXMLFactory(); }
XMLFactoryLease::~XMLFactoryLease() { XMLOps::ReleaseXMLFactory(); }

}  // namespace meridex
