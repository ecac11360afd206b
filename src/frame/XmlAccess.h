#pragma once
// Internal bridge between the public views and libxml2.
#include <meridex/frame/XmlDocument.h>
#include <meridex/frame/XmlImpl.h>
#include <meridex/frame/XmlNode.h>

namespace meridex {

struct XmlAccess {
    static xmlNodePtr Raw(const XmlNode& node) noexcept { return static_cast<xmlNodePtr>(node.raw()); }
    static XmlNode View(xmlNodePtr node) { return node ? XmlNode(node) : XmlNode(); }
    static xmlimpl::DocHolder* Holder(const XmlDocument& doc) noexcept { return doc.holder_; }
    static XmlDocument Document(xmlimpl::DocHolder* holder) noexcept { return XmlDocument(holder); }
};

}  // namespace meridex
