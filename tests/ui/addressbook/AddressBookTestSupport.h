#pragma once
// What the address book dialog tests share: a small book of groups and sites written to a file,
// a map of three device profiles, scheme files to import, and the dialog helpers.
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

#include <meridex/addressbook/AddressBook.h>
#include <meridex/addressbook/Site.h>
#include <meridex/addressbook/SiteGroup.h>
#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/ui/frame/ImageKeys.h>

#include "../../comms/CommsTestSupport.h"
#include "DialogTest.h"
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

// A site element: a phone modem named name inside the group at path group ("" for the root).
inline std::string SiteText(const std::string& group, const std::string& name, const std::string& phone) {
    return "<SITE><KEY>" + name + "</KEY><NAME>" + name + "</NAME><PATH>" + group + "\\" + name +
           "</PATH><PROFILE><NAME>Modem</NAME><TYPE>RS232</TYPE><METHOD>PHONEMODEM</METHOD><PHONENUMBER>" + phone +
           "</PHONENUMBER></PROFILE></SITE>";
}

// A group element at path, holding contents.
inline std::string GroupText(const std::string& path, const std::string& contents) {
    const std::string name = path.substr(path.rfind('\\') + 1);
    return "<GROUP><KEY>" + name + "</KEY><NAME>" + name + "</NAME><PATH>" + path + "</PATH>" + contents + "</GROUP>";
}

// The book "North" { "Hill" { "Hill Gauge" }, "River Gauge" }, "South" { south }, "Depot", written to
// book.xml in dir; answers its path.
inline std::string WriteSmallBook(const TempDir& dir, const std::string& south = {}) {
    const std::string hill = GroupText("\\North\\Hill", SiteText("\\North\\Hill", "Hill Gauge", "0311 555 1000"));
    const std::string north = GroupText("\\North", hill + SiteText("\\North", "River Gauge", "0311 555 1001"));
    return dir.Write("book.xml", "<V4ADDRESSBOOK>" + north + GroupText("\\South", south) +
                                     SiteText("", "Depot", "0311 555 1002") + "</V4ADDRESSBOOK>");
}

}  // namespace meridex::test

#include <ostream>

#include <QString>
#include <QStringList>

// Readable QString values in failure messages.
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }
inline void PrintTo(const QStringList& texts, std::ostream* out) { *out << texts.join(" | ").toStdString(); }
