#include <meridex/comms/XmlSchemeFile.h>

namespace meridex {

bool XmlSchemeFile::Open(const std::string& path) {
    // One object serves many files in turn: a failed open leaves none open.
    path_.clear();
    document_ = XmlDocument();
    profiles_ = XmlNode();
    XmlDocument document = XmlDocument::Load(path);
    XmlNode root = document ? document.DocumentElement() : XmlNode();
    if (!root || root.Name() != "SCHEME") return false;
    XmlNode profiles = root.SelectSingle("COMMSPROFILES");
    if (!profiles) profiles = root.AppendChild(document.CreateElement("COMMSPROFILES"));
    if (!profiles) return false;
    path_ = path;
    document_ = std::move(document);
    profiles_ = profiles;
    return true;
}

std::string XmlSchemeFile::Name() const {
    XmlNode root = document_ ? document_.DocumentElement() : XmlNode();
    XmlNode name = root.SelectSingle("NAME");
    return name ? name.Text() : std::string();
}

bool XmlSchemeFile::Save(std::string* error) const { return SaveAs(path_, error); }

bool XmlSchemeFile::SaveAs(const std::string& path, std::string* error) const {
    if (!document_) {
        if (error) *error = "no scheme is open";
        return false;
    }
    return document_.Save(path, error);
}

}  // namespace meridex
