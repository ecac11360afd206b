#include <gtest/gtest.h>

#include <filesystem>

#include "CommsTestSupport.h"
#include <meridex/comms/SystemOps.h>

using namespace meridex;
using namespace meridex::test;

namespace {


}  // namespace

TEST(PortDiscovery, CleanRemovesGonePortsAndAddsNewOnes) {
    CommsFixture f{1, 3};
    auto m = MapOf(f, DirectProfile("1", "Bench cable") + DirectProfile("5") + DirectProfile("") + DirectProfile("3x") + DirectProfile("99999") +
                          "<PROFILE><TYPE>RS232</TYPE><METHOD>PHONEMODEM</METHOD><COMMPORT>7</COMMPORT></PROFILE>");
    m->CleanRS232Direct();
    // Gone: port 5, and the profiles whose port reads as no port at all ("3x"
    // is not a number, so port 3 is still new). The modem on an absent port is not a direct profile and stays.
    EXPECT_EQ(Fields(m->ApplicationProfiles(), "NAME"),
              (std::vector<std::string>{"Bench cable", "", "Direct to COM3"}));
    EXPECT_EQ(Fields(m->ApplicationProfiles(), "KEY"), (std::vector<std::string>{"PROFILE1", "PROFILE6", "PROFILE0"}));

    // "03" is port 3 when comparing numbers: nothing more is added.
    CommsFixture g{3};
    auto n = MapOf(g, DirectProfile("03"));
    n->CleanRS232Direct();
    EXPECT_EQ(Fields(n->ApplicationProfiles(), "COMMPORT"), (std::vector<std::string>{"03"}));

    // Ports above MAX_COMM_PORT_SCOMM are never added.
    CommsFixture h{2, 4, 5, 9};
    h.store->SaveSetting("MeridexV4", "Settings", "MAX_COMM_PORT_SCOMM", "4");
    auto o = MapOf(h, "");
    o->CleanRS232Direct();
    EXPECT_EQ(Fields(o->ApplicationProfiles(), "COMMPORT"), (std::vector<std::string>{"2", "4"}));
}

TEST(PortDiscovery, PresenceRulesAndProgressPercent) {
    FakePorts ports{2};
    ports.Add(6, false, true);  // Bluetooth: present without a probe
    ports.Add(8, false);
    EXPECT_TRUE(SystemOps::IsBluetoothModemPort(ports, 6));
    EXPECT_FALSE(SystemOps::IsBluetoothModemPort(ports, 2));
    EXPECT_TRUE(SystemOps::IsCommPortPresent(ports, 6));
    EXPECT_FALSE(SystemOps::IsCommPortPresent(ports, 8));
    EXPECT_FALSE(SystemOps::IsCommPortPresent(ports, 3));  // not mapped at all
    ports.probes = 0;
    EXPECT_EQ(SystemOps::GetPresentCommPorts(ports, 32767), (std::vector<std::int16_t>{2, 6}));
    EXPECT_EQ(ports.probes, 2);  // 2 and 8; never the unmapped numbers
    EXPECT_TRUE(SystemOps::GetPresentCommPorts(ports, 0).empty());
    EXPECT_EQ(SystemOps::GetPresentCommPorts(ports, 5), (std::vector<std::int16_t>{2}));

    EXPECT_EQ(SystemOps::ProgressPercent(0.125), 13);
    EXPECT_EQ(SystemOps::ProgressPercent(0.994), 99);
    EXPECT_EQ(SystemOps::ProgressPercent(1.0), 100);
    EXPECT_EQ(SystemOps::ProgressPercent(-1), 0);
    EXPECT_EQ(SystemOps::ProgressPercent(7), 100);
}

