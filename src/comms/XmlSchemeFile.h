#pragma once
#include <meridex/Export.h>
#include <string>

#include <meridex/comms/Scheme.h>
#include <meridex/frame/XmlDocument.h>

namespace meridex {

/// The open scheme format: an XML file whose root element is SCHEME, holding
/// an optional NAME and a COMMSPROFILES element with the scheme's PROFILE
/// elements (the layout of the communications map's device profiles).
///
/// @code{.xml}
///   <SCHEME>
///     <NAME>Hill Creek level</NAME>
///     <COMMSPROFILES>
///       <PROFILE><KEY>PROFILE1</KEY><TYPE>RS232</TYPE>...</PROFILE>
///     </COMMSPROFILES>
///   </SCHEME>
/// @endcode
///
/// A scheme file without COMMSPROFILES opens with an empty profile list (the
/// element is added in memory, and written by a save). A file that does not
/// parse or has another root does not open, and leaves no scheme open.
class MERIDEX_EXPORT XmlSchemeFile : public Scheme {
public:
    bool Open(const std::string& path) override;
    std::string SchemeText() const override { return path_; }
    XmlNode CommsProfiles() const override { return profiles_; }

    /// The scheme's NAME text ("" when it has none).
    std::string Name() const;
    /// Writes the scheme back to the file it was opened from, atomically.
    bool Save(std::string* error = nullptr) const;
    /// Writes the scheme, as it is now, to another file, atomically.
    bool SaveAs(const std::string& path, std::string* error = nullptr) const;

private:
    std::string path_;
    XmlDocument document_;
    XmlNode profiles_;
};

}  // namespace meridex
