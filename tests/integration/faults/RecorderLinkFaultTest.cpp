// The recorder link under faults: a recorder that stops reading, one that
// sends garbage or bursting commands or closes mid-command, and a UDP
// recorder that is not there yet.
#include <gtest/gtest.h>

#include <unistd.h>

#include "FaultSupport.h"

namespace {
constexpr int sip = 1;
constexpr int rtp = 2;
const std::string sipServer = "127.0.0.1:5060";

std::string to(uint16_t port) {
    return "127.0.0.1:" + std::to_string(port);
}

class RecorderLinkFault : public PrivateNetworkTest {
protected:
    static std::vector<std::string> recorderAt(uint16_t port, const char* protocol = "TCP") {
        return {"Device=lo", "Filter=udp and (dst port 5060 or dst portrange 40000-52000)", "ServerName=127.0.0.1",
                "ServerPort=" + std::to_string(port), std::string("ServerProtocol=") + protocol};
    }

    void sendSip(std::size_t size = 0) {
        Bytes invite = sipInvite(std::to_string(++calls));
        invite.resize(std::max(invite.size(), size), 'x');
        phone.sendTo(5060, invite);
    }
    void sendRtp(uint16_t port) { phone.sendTo(port, rtpPacket()); }

    UdpSocket phone;
    int calls = 0;
};
}  // namespace

// ThreadSanitizer keeps shadow memory several times the size of what the
// program touches, and it shows in the resident size: the bound stays the
// sniffer's own in the other builds.
#if defined(__SANITIZE_THREAD__)
constexpr long kResidentGrowthBoundKb = 4 * 64 * 1024;
#else
constexpr long kResidentGrowthBoundKb = 64 * 1024;
#endif

TEST_F(RecorderLinkFault, ARecorderThatStopsReadingIsDroppedWithMemoryBoundedUntilAReadingOneReturns) {
    TcpRecorder reading;
    const uint16_t port = reading.port();
    reading.stop();
    auto stalled = std::make_unique<StalledRecorder>(port);
    SnifferProgram sniffer(recorderAt(port));
    ASSERT_TRUE(sniffer.waitForLog("INFO Sniffing started."));
    const long startKb = sniffer.residentKb();
    {
        Traffic flood([this] { sendSip(1400); }, 200us);
        ASSERT_TRUE(sniffer.waitForLog("WARN Can not send. Connection to recorder lost.", 10s)) << sniffer.output();
        long peakKb = 0;
        for (int i = 0; i < 40; ++i) {
            peakKb = std::max(peakKb, sniffer.residentKb());
            std::this_thread::sleep_for(100ms);
        }
        RecordProperty("resident_kb_start", std::to_string(startKb));
        RecordProperty("resident_kb_peak", std::to_string(peakKb));
        EXPECT_GT(stalled->accepted(), 1) << "each full buffer drops the link and the next frame reconnects";
        EXPECT_LT(peakKb - startKb, kResidentGrowthBoundKb)
            << "queued frames are dropped while the recorder does not read";
    }
    stalled.reset();
    reading.start();
    Traffic traffic([this] { sendSip(); }, 10ms);
    EXPECT_TRUE(awaitFrame(reading, sip, sipServer, 5s)) << sniffer.output();
    EXPECT_EQ(sniffer.stop(), 0) << sniffer.output();
}

// Unknown codes ahead of the burst would throw every later command out of
// step if they were not taken as whole 7-byte records.
TEST_F(RecorderLinkFault, TenThousandCommandsBehindUnknownCodesApplyInStepAndARecorderClosingMidCommandComesBack) {
    TcpRecorder recorder;
    SnifferProgram sniffer(recorderAt(recorder.port()));
    Traffic traffic([this] { sendSip(); }, 20ms);
    ASSERT_TRUE(awaitFrame(recorder, sip, sipServer, 5s)) << sniffer.output();
    const auto forwardsMediaTo = [&](uint16_t port) {
        sendRtp(port);
        return awaitFrame(recorder, rtp, to(port), 2s);
    };
    const auto dropsMediaTo = [&](uint16_t port) {
        sendRtp(port);
        return framesWithin(recorder, rtp, to(port), 300ms) == 0;
    };

    Bytes burst;
    const auto append = [&](const Bytes& c) { burst.insert(burst.end(), c.begin(), c.end()); };
    for (int i = 0; i < 100; ++i)
        append(command(uint8_t(4 + i), "127.0.0.1", uint16_t(40100 + i)));
    for (uint16_t port = 41000; port < 41000 + 9999; ++port)
        append(command(1, "127.0.0.1", port));
    recorder.send(burst);
    ASSERT_TRUE(recorder.apply({}, 30s)) << "the heartbeat behind the burst is answered";
    for (uint16_t port : {41000, 45000, 50998})
        EXPECT_TRUE(forwardsMediaTo(port)) << port;
    EXPECT_TRUE(dropsMediaTo(40100));
    EXPECT_TRUE(dropsMediaTo(50999));

    const Bytes add = command(1, "127.0.0.1", 40003);
    recorder.send(Bytes(add.begin(), add.begin() + 3));
    recorder.stop();
    discardPending(recorder);
    recorder.start();
    ASSERT_TRUE(awaitFrame(recorder, sip, sipServer, 5s)) << sniffer.output();
    ASSERT_TRUE(recorder.apply({command(1, "127.0.0.1", 40004)})) << sniffer.output();
    EXPECT_TRUE(forwardsMediaTo(40004));
    EXPECT_TRUE(dropsMediaTo(40003));
    EXPECT_EQ(sniffer.stop(), 0) << sniffer.output();
}

TEST_F(RecorderLinkFault, UdpFramesToAnAbsentRecorderAreLostQuietlyUntilOneListens) {
    const uint16_t port = UdpSocket().port();  // free again once the socket is gone
    SnifferProgram sniffer(recorderAt(port, "UDP"));
    Traffic traffic([this] { sendSip(); }, 10ms);
    ASSERT_TRUE(sniffer.waitForLog("INFO Sniffing started."));
    std::this_thread::sleep_for(2s);  // every frame draws an ICMP port unreachable

    const UdpSocket recorder(port);
    const Bytes frame = recorder.receive(2s);
    ASSERT_GE(frame.size(), 15u);
    EXPECT_EQ(frame[2], sip);
    EXPECT_EQ(sniffer.stop(), 0) << sniffer.output();
    RecordProperty("send_errors_logged", std::to_string(sniffer.countLines("ERROR Error sento on socket")));
}
