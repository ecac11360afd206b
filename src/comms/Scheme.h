#pragma once
#include <meridex/Export.h>
#include <string>

#include <meridex/frame/XmlNode.h>

namespace meridex {

/// What the library needs of a logger scheme: open a file, the text that
/// names the loaded scheme, and its communications profiles as a node with
/// PROFILE children (changed in place by scheme mapping).
class MERIDEX_EXPORT Scheme {
public:
    virtual ~Scheme() = default;

    /// Loads the scheme at a full path; false when it cannot be read.
    virtual bool Open(const std::string& path) = 0;
    /// The text naming the loaded scheme; it begins with the folder the scheme
    /// was found under (here: the full path of the file).
    virtual std::string SchemeText() const = 0;
    /// The node holding the scheme's PROFILE elements; null when no scheme is
    /// open.
    virtual XmlNode CommsProfiles() const = 0;
};

}  // namespace meridex
