#pragma once
// What the address book dialog tests share: a small book of groups and sites written to a file,
// a map of three device profiles, and scheme files to import.
#include <memory>
#include <string>
#include <vector>

#include <meridex/addressbook/AddressBook.h>
#include <meridex/addressbook/Site.h>
#include <meridex/addressbook/SiteGroup.h>

#include "TempDir.h"

namespace meridex::test {

// A profile element's text: TYPE, METHOD and, when given, NAME.
inline std::string ProfileText(const std::string& type, const std::string& method, const std::string& name) {
    std::string xml = "<PROFILE><TYPE>" + type + "</TYPE><METHOD>" + method + "</METHOD>";
    if (!name.empty()) xml += "<NAME>" + name + "</NAME>";
    return xml + "</PROFILE>";
}

// A scheme file holding the given profiles.
inline std::string SchemeText(const std::vector<std::string>& profiles) {
    std::string xml = "<SCHEME><NAME>x</NAME><COMMSPROFILES>";
    for (const auto& p : profiles) xml += p;
    return xml + "</COMMSPROFILES></SCHEME>";
}

// A map whose three application profiles are a direct cable, a modem and a network logger.
inline std::string MapText() {
    return "<COMMSPROFILES>"
           "<PROFILE><KEY>C1</KEY><NAME>Bench Cable</NAME><TYPE>RS232</TYPE><METHOD>DIRECT</METHOD>"
           "<COMMPORT>1</COMMPORT></PROFILE>"
           "<PROFILE><KEY>M1</KEY><NAME>Office Modem</NAME><TYPE>RS232</TYPE><METHOD>PHONEMODEM</METHOD>"
           "<COMMPORT>3</COMMPORT></PROFILE>"
           "<PROFILE><KEY>N1</KEY><NAME>Telemetry</NAME><TYPE>IP</TYPE><METHOD>TCP</METHOD></PROFILE>"
           "</COMMSPROFILES>";
}

inline Site MakeSite(const std::string& name, const std::string& phone) {
    Site site;
    site.setName(name);
    site.SetParameter("NAME", "Modem");
    site.SetParameter("TYPE", "RS232");
    site.SetParameter("METHOD", "PHONEMODEM");
    site.SetParameter("PHONENUMBER", phone);
    return site;
}

inline SiteGroup MakeGroup(const SiteGroup& parent, const std::string& name) {
    SiteGroup group;
    group.setName(name);
    parent.AddGroup(group);
    return group;
}

// The book "North" { "Hill" { "Hill Gauge" }, "River Gauge" }, "South" {}, "Depot", written to
// book.xml in dir; answers its path.
inline std::string WriteSmallBook(const TempDir& dir) {
    const std::string file = dir.File("book.xml");
    AddressBook book;
    book.LoadAddressBook(file);
    const SiteGroup north = MakeGroup(book.Sites(), "North");
    const SiteGroup hill = MakeGroup(north, "Hill");
    hill.AddSite(MakeSite("Hill Gauge", "0311 555 1000"));
    north.AddSite(MakeSite("River Gauge", "0311 555 1001"));
    MakeGroup(book.Sites(), "South");
    book.Sites().AddSite(MakeSite("Depot", "0311 555 1002"));
    book.SaveAddressBook();
    return file;
}

}  // namespace meridex::test

#include <ostream>

#include <QString>
#include <QStringList>

// Readable QString values in failure messages.
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }
inline void PrintTo(const QStringList& texts, std::ostream* out) { *out << texts.join(" | ").toStdString(); }
