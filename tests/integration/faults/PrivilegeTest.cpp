// Running with less than root: the switch to another user once the devices
// are open (RunAsUser in the properties, SNIFFER_USER for udpsniffer), and a
// start with nothing but the two capture capabilities, as the systemd unit does.
#include <gtest/gtest.h>

#include <cstdlib>
#include <pwd.h>

#include "FaultSupport.h"

namespace {
constexpr int sip = 1;

class Privileges : public PrivateNetworkTest {
protected:
    void SetUp() override {
        PrivateNetworkTest::SetUp();
        if (IsSkipped())
            return;
        const passwd* pw = getpwnam("nobody");
        ASSERT_NE(pw, nullptr);
        nobody = std::to_string(pw->pw_uid);
    }

    std::vector<std::string> capturing() {
        return {"Device=lo", "Filter=udp port 5060", "ServerName=127.0.0.1",
                "ServerPort=" + std::to_string(recorder.port()), "ServerProtocol=TCP"};
    }

    // SIP still reaches the recorder, over a link made after the switch.
    bool forwardsSip() {
        Traffic traffic([this] { phone.sendTo(5060, sipInvite("privileges")); }, 10ms);
        return awaitFrame(recorder, sip, "127.0.0.1:5060", 5s);
    }

    std::string allIds(const std::string& id) { return id + "\t" + id + "\t" + id + "\t" + id; }

    TcpRecorder recorder;
    UdpSocket phone;
    std::string nobody;
};
}  // namespace

TEST_F(Privileges, RunAsUserSwitchesToThatUserOnceTheDevicesAreOpen) {
    std::vector<std::string> properties = capturing();
    properties.push_back("RunAsUser=nobody");
    SnifferProgram sniffer(properties);
    ASSERT_TRUE(sniffer.waitForLog("INFO Running as user nobody")) << sniffer.output();
    EXPECT_EQ(sniffer.status("Uid"), allIds(nobody));
    EXPECT_EQ(sniffer.status("CapEff"), "0000000000000000");
    EXPECT_TRUE(forwardsSip()) << sniffer.output();
    EXPECT_EQ(sniffer.stop(), 0) << sniffer.output();
}

TEST_F(Privileges, AnUnknownRunAsUserIsASetupError) {
    std::vector<std::string> properties = capturing();
    properties.push_back("RunAsUser=no-such-user-here");
    SnifferProgram sniffer(properties);
    EXPECT_EQ(sniffer.wait(10s), 1) << sniffer.output();
    EXPECT_EQ(sniffer.countLines("ERROR Unknown user no-such-user-here: cannot drop privileges"), 1);
    EXPECT_EQ(sniffer.countLines("Errors in setup, terminating..."), 1);
}

TEST_F(Privileges, SnifferUserSwitchesTheCommandLineProgram) {
    setenv("SNIFFER_USER", "nobody", 1);
    SnifferProgram udpsniffer(CommandLine{{UDPSNIFFER_PROGRAM, "-d", "lo", "-f", "udp port 5060", "-h", "127.0.0.1",
                                           "-p", std::to_string(recorder.port())}});
    unsetenv("SNIFFER_USER");
    ASSERT_TRUE(udpsniffer.waitForLog("Running as user nobody")) << udpsniffer.output();
    EXPECT_TRUE(forwardsSip()) << udpsniffer.output();
    EXPECT_EQ(udpsniffer.stop(), 0) << udpsniffer.output();
}

TEST_F(Privileges, CaptureNeedsOnlyNetRawAndNetAdmin) {
    // Started as nobody, the program loads its library from the build tree.
    if (!runsCleanly(
            {onPath("setpriv"), "--reuid=nobody", "--regid=nogroup", "--clear-groups", "test", "-r", SNIFFER_LIBRARY},
            5s))
        GTEST_SKIP() << "user nobody cannot read " << SNIFFER_LIBRARY << ": a folder above the build tree is private";
    SnifferProgram sniffer(capturing(), {onPath("setpriv"), "--reuid=nobody", "--regid=nogroup", "--clear-groups",
                                         "--inh-caps=+net_raw,+net_admin", "--ambient-caps=+net_raw,+net_admin"});
    ASSERT_TRUE(sniffer.waitForLog("INFO Sniffing started.")) << sniffer.output();
    EXPECT_EQ(sniffer.status("Uid"), allIds(nobody));
    EXPECT_EQ(sniffer.status("CapEff"), "0000000000003000");  // CAP_NET_ADMIN (12), CAP_NET_RAW (13)
    EXPECT_TRUE(forwardsSip()) << sniffer.output();
    EXPECT_EQ(sniffer.stop(), 0) << sniffer.output();
}
