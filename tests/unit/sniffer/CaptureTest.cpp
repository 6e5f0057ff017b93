// Live capture on the loopback. Each filter names the test's own port,
// since other work on this machine uses the loopback too.
#include <gtest/gtest.h>

#include "LogCapture.h"
#include "LogSearch.h"
#include "Network.h"
#include "Recorder.h"
#include "SnifferRun.h"

class LiveCapture : public testing::Test {
protected:
    void SetUp() override {
        if (!runningAsRoot())
            GTEST_SKIP() << "live capture needs root";
        filter = "udp and dst port " + std::to_string(target.port());
    }

    std::unique_ptr<SnifferRun> start(const std::string& devices, const std::string& captureFilter) {
        return std::make_unique<SnifferRun>(
            std::vector<std::string>{"-d", devices, "-f", captureFilter, "-h", "127.0.0.1", "-p",
                                     std::to_string(recorder.port())},
            "UDP");
    }

    LogCapture log;
    UdpRecorder recorder;
    UdpSocket target;  // bound, so the datagrams sent to it are delivered
    std::string filter;
    const Bytes invite = bytesOf("INVITE sip:bob@example.com SIP/2.0\r\nCSeq: 1 INVITE\r\n\r\n");
};

// The device list keeps empty names; the devices that cannot be opened are skipped.
TEST_F(LiveCapture, LoopbackSipIsForwardedPastUnopenableDevicesAndStopJoinsCapturesBeforeTheCommandReader) {
    auto run = start(";nosuchdev0;lo", filter);
    ASSERT_EQ(0, run->setupResult());
    EXPECT_TRUE(containsPrefix(log, "ERROR", "Couldn't open device :"));
    EXPECT_TRUE(containsPrefix(log, "ERROR", "Couldn't open device nosuchdev0:"));
    EXPECT_TRUE(log.contains("INFO", "Device: lo opened"));
    EXPECT_TRUE(log.contains("INFO", "Filter compilation ok: " + filter));
    EXPECT_TRUE(log.contains("INFO", "Filter instalation ok: " + filter));
    ASSERT_TRUE(waitForLog(log, "PCAP thread created 2", 2s));
    EXPECT_EQ(1, countPrefix(log, "PCAP thread created "));
    UdpSocket phone;
    phone.sendTo(target.port(), invite);

    const auto got = recorder.next(1u);
    ASSERT_EQ(1u, got.size());
    EXPECT_EQ(1, got[0].protocol());
    EXPECT_EQ(static_cast<int>(invite.size() + 15), got[0].length());
    EXPECT_EQ("127.0.0.1:" + std::to_string(target.port()), got[0].destination());
    EXPECT_EQ("127.0.0.1:" + std::to_string(phone.port()), got[0].source());
    EXPECT_EQ(invite, got[0].payload());

    run->stop();
    const long ending = logIndex(log, "Ending Sniffing ...");
    const long capture = logIndex(log, "Completed join with PCAP thread 2 status=0");
    const long reader = logIndex(log, "Completed join with Command reader thread, status=0");
    ASSERT_GE(ending, 0);
    EXPECT_LT(ending, capture);
    EXPECT_LT(capture, reader);
    EXPECT_EQ(1, countPrefix(log, "Completed join with PCAP thread "));
    EXPECT_GE(logIndex(log, "Sniffing ended."), 0);
}

TEST_F(LiveCapture, FilterThatDoesNotCompileEndsSetupAtTheFirstOpenedDevice) {
    auto run = start("lo;nosuchdev0", "udp and and");
    EXPECT_EQ(3, run->setupResult());
    EXPECT_TRUE(containsPrefix(log, "ERROR", "Couldn't parse filter udp and and:"));
    EXPECT_EQ(-1, logIndex(log, "Couldn't open device nosuchdev0:", 0, true));
    EXPECT_EQ(-1, logIndex(log, "PCAP thread created ", 0, true));
}

// The "any" device delivers Linux cooked frames.
TEST_F(LiveCapture, AnyDeviceForwardsLoopbackSipReadBehindTheCookedHeader) {
    auto run = start("any", filter);
    ASSERT_EQ(0, run->setupResult());
    ASSERT_TRUE(waitForLog(log, "PCAP thread created 0", 2s));
    UdpSocket phone;
    phone.sendTo(target.port(), invite);

    const auto got = recorder.next(1u);
    ASSERT_EQ(1u, got.size());
    EXPECT_EQ(1, got[0].protocol());
    EXPECT_EQ("127.0.0.1:" + std::to_string(target.port()), got[0].destination());
    EXPECT_EQ("127.0.0.1:" + std::to_string(phone.port()), got[0].source());
    EXPECT_EQ(invite, got[0].payload());
    EXPECT_FALSE(containsPrefix(log, "ERROR", ""));
}
