// Capture under faults and load: ten devices at once, one of them unplugged
// while capturing, a stop under load, a capture file full of broken frames,
// and an embedded engine started and stopped a hundred times.
#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "EmbeddedConnection.h"
#include "FaultSupport.h"
#include "PcapFeed.h"
#include "Sniffer.h"
#include "SnifferRun.h"

namespace {
constexpr int sip = 1;
constexpr int rtp = 2;

class CaptureFault : public PrivateNetworkTest {
protected:
    std::vector<std::string> capturing(const std::string& devices, const std::string& filter = "udp port 5060") {
        return {"Device=" + devices, "Filter=" + filter, "ServerName=127.0.0.1",
                "ServerPort=" + std::to_string(recorder.port()), "ServerProtocol=TCP"};
    }

    // A SIP datagram whose Call-ID names the device it was sent on.
    static Bytes sipFrameFor(int device) {
        const std::string ip = "10.9." + std::to_string(device) + ".1";
        const std::string peer = "10.9." + std::to_string(device) + ".2";
        return udpFrame({ip.c_str(), 5060}, {peer.c_str(), 5060}, sipInvite("device-" + std::to_string(device)));
    }

    TcpRecorder recorder;
    UdpSocket phone;
};

std::set<std::string> callIds(const std::vector<ForwardedFrame>& frames) {
    std::set<std::string> ids;
    for (const ForwardedFrame& f : frames) {
        const std::string text(f.bytes.begin() + 15, f.bytes.end());
        const auto at = text.find("Call-ID: ");
        if (f.protocol() == sip && at != std::string::npos)
            ids.insert(text.substr(at + 9, text.find('\r', at) - at - 9));
    }
    return ids;
}
}  // namespace

TEST_F(CaptureFault, TenDevicesAreCapturedAtOnceAndAnUnpluggedOneEndsOnlyItsOwnCapture) {
    std::vector<std::unique_ptr<VethLink>> links;
    std::string devices;
    for (int i = 0; i < Sniffer::maxDevices; ++i) {
        links.push_back(std::make_unique<VethLink>("vt" + std::to_string(i)));
        ASSERT_TRUE(links.back()->ok());
        devices += (i ? ";" : "") + links.back()->captureSide();
    }
    SnifferProgram sniffer(capturing(devices));
    ASSERT_TRUE(sniffer.waitForLog("INFO PCAP thread created 9")) << sniffer.output();
    Traffic traffic(
        [&] {
            for (int i = 0; i < Sniffer::maxDevices; ++i)
                links[i]->inject(sipFrameFor(i));
        },
        20ms);
    EXPECT_TRUE(waitUntil([&] { return callIds(recorder.received()).size() == Sniffer::maxDevices; }, 5s))
        << sniffer.output();

    links[0]->remove();
    EXPECT_TRUE(sniffer.waitForLog("ERROR Capture on device 0 ended: ")) << sniffer.output();
    discardPending(recorder);
    EXPECT_TRUE(awaitFrame(recorder, sip, "10.9.9.2:5060", 3s)) << "the other captures go on";

    EXPECT_EQ(sniffer.stop(), 0) << sniffer.output();
    for (int i = 0; i < Sniffer::maxDevices; ++i)
        EXPECT_EQ(sniffer.countLines("INFO Completed join with PCAP thread " + std::to_string(i) + " status=0"), 1)
            << sniffer.output();
    EXPECT_EQ(sniffer.countLines("INFO Sniffing ended."), 1);
}

TEST_F(CaptureFault, SigtermUnderLoadStopsCleanly) {
    SnifferProgram sniffer(capturing("lo"));
    ASSERT_TRUE(sniffer.waitForLog("INFO PCAP thread created 0")) << sniffer.output();
    Traffic flood([&] { phone.sendTo(5060, sipInvite("flood")); }, 20us);
    ASSERT_TRUE(waitUntil([&] { return recorder.count() > 1000; }, 10s)) << sniffer.output();
    EXPECT_EQ(sniffer.stop(5s), 0) << sniffer.output();
    EXPECT_EQ(sniffer.countLines("INFO Sniffing ended."), 1);
    EXPECT_EQ(sniffer.countLines("INFO Completed join with Command reader thread, status=0"), 1);
}

// Every well-formed SIP message and every datagram to a listed destination
// among broken frames reaches the recorder whole and in order; nothing else.
TEST_F(CaptureFault, ACaptureFileOfBrokenFramesForwardsEveryWellFormedFrameAmongThem) {
    const TempDir dir;
    auto replay = std::make_unique<CaptureWriter>(dir.file("broken.pcap"));
    const Endpoint phoneA{"10.0.0.1", 5060}, phoneB{"10.0.0.2", 5060};
    const Endpoint media{"10.0.0.2", 7078};
    std::vector<Bytes> wanted;
    auto wellFormed = [&](const Bytes& frame) {
        replay->write(frame);
        wanted.push_back(Bytes(frame.begin() + 42, frame.end()));  // behind Ethernet, IP and UDP headers
    };
    wellFormed(udpFrame(phoneA, phoneB, sipInvite("first")));  // brings the link up
    // Truncation, VLAN tags, IP options, padding, ICMP, ARP and short TCP
    // headers are covered frame by frame through the capture callback; these
    // are the shapes only a capture file delivers, or rarer still.
    const Bytes invite = udpFrame(phoneA, phoneB, sipInvite("whole"));
    FrameOptions longTcp;
    longTcp.tcpDataOffset = 15;
    replay->write({});                                                      // nothing captured
    replay->write(Bytes(invite.begin(), invite.begin() + 60), 0xFFFFFFFF);  // absurd wire length
    replay->write(Bytes(invite.begin(), invite.begin() + 60), 70000);       // longer than a header can state
    Bytes badIhl = invite;
    badIhl[14] = 0x43;  // IP header of 12 bytes
    replay->write(badIhl);
    Bytes hugeIhl = Bytes(invite.begin(), invite.begin() + 40);
    hugeIhl[14] = 0x4F;  // 60-byte IP header in a 40-byte frame
    replay->write(hugeIhl);
    replay->write(ipFrame(2, 28, 1, 0, 64, 0, Bytes(8, 0)));  // IGMP
    Bytes ipv6 = invite;
    ipv6[12] = 0x86, ipv6[13] = 0xDD, ipv6[14] = 0x60;
    replay->write(ipv6);
    replay->write(Bytes(invite.begin(), invite.begin() + 16), 16);     // 802.1Q tag, nothing behind
    replay->write(udpFrame(phoneA, phoneB, {}));                       // empty payload
    replay->write(udpFrame(phoneA, {"10.0.0.3", 7078}, rtpPacket()));  // unlisted destination
    replay->write(tcpFrame(phoneA, phoneB, sipInvite("tcp"), longTcp));
    Bytes fragment = invite;
    fragment[20] = 0x20;  // more fragments follow
    wellFormed(fragment);
    wellFormed(invite);
    wellFormed(udpFrame(phoneA, media, rtpPacket()));
    replay.reset();

    PcapFeed feed(dir.file("broken.pcap"));
    feed.begin();
    SnifferProgram sniffer(capturing(feed.device(), ""));
    ASSERT_TRUE(awaitFrame(recorder, sip, "10.0.0.2:5060", 5s)) << sniffer.output();
    ASSERT_TRUE(recorder.apply({command(1, media.ip, media.port)}));
    feed.finish();
    ASSERT_EQ(sniffer.wait(10s), 0) << "a replay ends by itself\n" << sniffer.output();
    ASSERT_TRUE(waitUntil([&] { return recorder.count() >= wanted.size() + 1; }, 3s));
    std::vector<Bytes> payloads;
    for (const ForwardedFrame& f : recorder.received())
        if (f.protocol() != 3)
            payloads.push_back(f.payload());
    EXPECT_EQ(payloads, wanted);
}

TEST_F(CaptureFault, AnEmbeddedEngineStartsAndStopsAHundredTimesUnderTraffic) {
    Traffic traffic([&] { phone.sendTo(5060, sipInvite("embedded")); }, 100us);
    for (int run = 0; run < 100; ++run) {
        SnifferRun engine({"-d", "lo", "-f", "udp port 5060"}, nullptr);
        ASSERT_EQ(engine.setupResult(), 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(run % 5));
    }
    char frame[2048];
    while (EmbeddedConnection::dft()->receivePacket(frame, sizeof frame) > 0) {
    }
}
