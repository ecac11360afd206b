#pragma once
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "OsSupport.h"
#include "TempDir.h"
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/comms/ProfileXml.h>
#include <meridex/frame/XmlDocument.h>
#include <meridex/platform/SerialPortSource.h>

namespace meridex::test {

// A made-up port list; counts how often it is asked.
class FakePorts : public SerialPortSource {
public:
    FakePorts(std::initializer_list<int> present = {}) {
        for (int n : present) Add(n);
    }
    void Add(int number, bool present = true, bool bluetooth = false) {
        ports.push_back(SerialPort{static_cast<std::int16_t>(number), "/dev/fake" + std::to_string(number),
                                   "Fake port " + std::to_string(number), bluetooth});
        if (present) this->present.insert(number);
    }
    std::vector<SerialPort> ListPorts() override {
        ++listings;
        return ports;
    }
    bool Probe(const SerialPort& port) override {
        ++probes;
        return present.count(port.number) > 0;
    }

    std::vector<SerialPort> ports;
    std::set<int> present;
    int listings = 0;
    int probes = 0;
};

// A manager over made-up ports and a store in a temporary folder.
struct CommsFixture {
    explicit CommsFixture(std::initializer_list<int> present = {})
        : ports(std::make_shared<FakePorts>(present)), store(MakeScratchUserStore(dir.File("config"))) {}

    std::unique_ptr<CommsProfileManager> Manager() const { return std::make_unique<CommsProfileManager>(ports, store); }

    TempDir dir;
    std::shared_ptr<FakePorts> ports;
    std::shared_ptr<UserStore> store;
};

// Names of the element children of a node, in order.
inline std::vector<std::string> ChildNames(const XmlNode& node) {
    std::vector<std::string> names;
    for (XmlNode child = node.FirstChildElement(); child; child = child.NextSiblingElement())
        names.push_back(child.Name());
    return names;
}

inline std::string Field(const XmlNode& profile, std::string_view name) { return ProfileXml::ChildText(profile, name); }

// Values of one field over the PROFILE children of a node.
inline std::vector<std::string> Fields(const XmlNode& parent, std::string_view name) {
    std::vector<std::string> values;
    for (const XmlNode& profile : parent.SelectAll("PROFILE")) values.push_back(Field(profile, name));
    return values;
}

// The given fields of each PROFILE child of a node, as "a,b|c,d|"; "-" for a field a profile lacks.
inline std::string Described(const XmlNode& parent, const std::vector<std::string>& fields) {
    std::string text;
    for (const XmlNode& profile : parent.SelectAll("PROFILE")) {
        for (const std::string& name : fields)
            text += (ProfileXml::HasChild(profile, name) ? Field(profile, name) : "-") + ",";
        text.back() = '|';
    }
    return text;
}

// A map of exactly the given profiles, not tied to a file.
inline std::unique_ptr<CommsProfileManager> MapOf(CommsFixture& f, const std::string& profiles) {
    std::string file = f.dir.Write("CommsProfiles.xml", "<COMMSPROFILES>" + profiles + "</COMMSPROFILES>");
    auto m = f.Manager();
    EXPECT_TRUE(m->LoadXMLMapFile(file));
    m->setMapFile("");
    return m;
}

// A direct profile on a port, named "Direct to COM<port>" unless named.
inline std::string DirectProfile(const std::string& port, const std::string& name = "") {
    return "<PROFILE><NAME>" + (name.empty() ? "Direct to COM" + port : name) +
           "</NAME><TYPE>RS232</TYPE><METHOD>DIRECT</METHOD><COMMPORT>" + port + "</COMMPORT></PROFILE>";
}

}  // namespace meridex::test
