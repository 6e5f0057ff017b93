// Classification and framing, from the capture callback to a TCP recorder:
// frames built byte by byte go through Sniffer::gotPacket, the engine's
// queue and consumer, and arrive (or not) at a real recorder on 127.0.0.1,
// which drives the RTP list with its commands.
#include <gtest/gtest.h>

#include <netinet/in.h>
#include <pcap.h>
#include <sys/time.h>
#include <algorithm>

#include "Bytes.h"
#include "CaptureFile.h"
#include "ChildProcess.h"
#include "Decapsulator.h"
#include "EngineStats.h"
#include "Frames.h"
#include "LogCapture.h"
#include "LogSearch.h"
#include "Recorder.h"
#include "SngDissector.h"
#include "SnifferRun.h"
#include "TsharkCapture.h"

namespace {
const Bytes markerPayload = bytesOf("SIP/2.0 200 marker");
const Bytes marker = udpFrame({"10.9.9.9", 5060}, {"10.9.9.8", 5060}, markerPayload);
}  // namespace

class Forwarding : public testing::Test {
protected:
    void SetUp() override {
        run = std::make_unique<SnifferRun>(
            std::vector<std::string>{"-d", "", "-h", "127.0.0.1", "-p", std::to_string(recorder.port())}, "TCP");
        ASSERT_EQ(0, run->setupResult());
        // The link is up once the first frame went out; commands are read from then on.
        capture(marker);
        ASSERT_TRUE(recorder.next());
    }

    ForwardedFrame forwarded(const Bytes& frame, std::size_t wireLength = 0) {
        capture(frame, wireLength);
        const auto received = recorder.next();
        if (received)
            return *received;
        ADD_FAILURE() << "nothing was forwarded";
        return {Bytes(15, 0)};
    }

    // The frame is dropped when the marker captured after it is the next to arrive.
    void expectDropped(const Bytes& frame) {
        capture(frame);
        capture(marker);
        const auto received = recorder.next();
        ASSERT_TRUE(received);
        EXPECT_EQ(markerPayload, received->payload()) << "forwarded a frame that should be dropped";
    }

    LogCapture log;
    TcpRecorder recorder;
    std::unique_ptr<SnifferRun> run;
};

TEST_F(Forwarding, RtpToAListedDestinationGoesBehindTheFifteenByteHeaderAndAHeartbeatIsAnsweredEmpty) {
    ASSERT_TRUE(recorder.apply({command(1, "10.0.0.2", 5000)}));
    const Bytes reply = recorder.received().back().bytes;
    ASSERT_EQ(15u, reply.size());
    EXPECT_EQ((Bytes{0x00, 0x0F, 0x03}), Bytes(reply.begin(), reply.begin() + 3));
    EXPECT_TRUE(log.contains("DEBUG", "Heartbeat request received"));
    EXPECT_TRUE(waitForLog(log, "Heartbeat sent", 1s));  // written once the reply is out

    const Bytes rtp(160, 0xD5);
    Bytes expected = {0x00, 0xAF, 0x02, 0x0A, 0x00, 0x00, 0x02, 0x13, 0x88, 0x0A, 0x00, 0x00, 0x01, 0x0F, 0xA0};
    expected.resize(expected.size() + rtp.size(), 0xD5);  // followed by the payload as sent
    EXPECT_EQ(expected, forwarded(udpFrame({"10.0.0.1", 4000}, {"10.0.0.2", 5000}, rtp)).bytes);
}

TEST_F(Forwarding, RtpListFollowsAddAndRemoveCommandsByDestination) {
    const Bytes rtp(20, 0xD5);
    const Bytes toListed = udpFrame({"10.9.0.1", 3000}, {"10.1.2.3", 8000}, rtp);
    expectDropped(toListed);

    ASSERT_TRUE(recorder.apply({command(1, "10.1.2.3", 8000), command(1, "10.1.2.3", 8000)}));
    EXPECT_TRUE(log.contains("DEBUG", "rx from server cmd=1, ip=10.1.2.3, port=8000"));
    EXPECT_TRUE(log.contains("DEBUG", "Added to list rtp (ip=0xa010203=10.1.2.3, port=0x1f40=8000)"));
    EXPECT_EQ(2, forwarded(toListed).protocol());
    expectDropped(udpFrame({"10.1.2.3", 8000}, {"10.9.0.1", 3000}, rtp));
    expectDropped(udpFrame({"10.9.0.1", 3000}, {"10.1.2.3", 8000}, {}));
    // SIP is recognised first, even when sent to a listed destination.
    EXPECT_EQ(1,
              forwarded(udpFrame({"10.9.0.1", 3000}, {"10.1.2.3", 8000}, bytesOf("BYE sip:a@b SIP/2.0"))).protocol());

    ASSERT_TRUE(recorder.apply({command(9, "10.1.2.3", 8000)}));
    EXPECT_EQ(2, forwarded(toListed).protocol());
    // One removal takes out the destination however often it was added.
    ASSERT_TRUE(recorder.apply({command(2, "10.1.2.3", 8000)}));
    EXPECT_TRUE(log.contains("DEBUG", "Removed from list rtp (ip=0xa010203=10.1.2.3, port=0x1f40=8000)"));
    expectDropped(toListed);
}

TEST_F(Forwarding, PayloadIsFoundBehindTagsAndOptionsAndTakesPaddingAndTheCutTailAlong) {
    const Endpoint a{"10.0.0.1", 5060}, b{"10.0.0.2", 5070};
    const Bytes sip = bytesOf("SIP/2.0 180 Ringing");
    const Bytes shortSip = bytesOf("SIP/2.0 OK");  // 52 bytes of frame, padded to 60
    Bytes withPadding = shortSip, withCutTail = shortSip;
    withPadding.resize(18, 0);
    withCutTail.resize(16, 0);
    const struct {
        const char* name;
        Bytes frame;
        std::size_t wireLength;
        Bytes payload;
    } cases[] = {
        {"802.1Q tag", udpFrame(a, b, sip, {etherTypeVlan}), 0, sip},
        {"802.1ad and 802.1Q tags", udpFrame(a, b, sip, {etherTypeQinQ}), 0, sip},
        {"IP options", udpFrame(a, b, sip, {etherTypeIpv4, 3}), 0, sip},
        {"Ethernet padding", padded(udpFrame(a, b, shortSip)), 0, withPadding},
        {"cut at the snap length", udpFrame(a, b, shortSip), 52 + 6, withCutTail},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const ForwardedFrame frame = forwarded(c.frame, c.wireLength);
        EXPECT_EQ(1, frame.protocol());
        EXPECT_EQ(static_cast<int>(15 + c.payload.size()), frame.length());
        EXPECT_EQ("10.0.0.2:5070", frame.destination());
        EXPECT_EQ("10.0.0.1:5060", frame.source());
        EXPECT_EQ(c.payload, frame.payload());
    }
}

TEST_F(Forwarding, OtherProtocolsAndBadIpHeadersAreDroppedWithARawHeaderDump) {
    expectDropped(ipFrame(1 /*ICMP*/, 0x001C, 0x1234, 0x4000, 0x40, 0xABCD, Bytes(8, 0)));
    // The 16-bit fields are shown as a little-endian host reads the wire bytes.
    EXPECT_TRUE(log.contains("ERROR",
                             "*** Dropping IP packet with unknown upper layer protocol\n"
                             "vhl=45 tos=00 len=1c00 id=3412 off=0040 ttl=40 p=01 sum=cdab"));

    const Bytes arp = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x02, 0,    0, 0, 0, 0x01, 0x08, 0x06,  // Ethernet
                       0x00, 0x01, 0x08, 0x00, 0x06, 0x04, 0x00, 0x01,                             // request
                       0x02, 0,    0,    0,    0,    0x01, 10,   0,    0, 1, 0, 0,    0,    0,    0, 0, 10, 0, 0, 2};
    expectDropped(arp);
    EXPECT_TRUE(log.contains("ERROR",
                             "*** Dropping IP packet with unknown IP header\n"
                             "vhl=00 tos=01 len=0008 id=0406 off=0100 ttl=02 p=00 sum=0000"));
}

TEST_F(Forwarding, TcpSegmentsAreNeverForwardedRaw) {
    const Bytes invite = bytesOf("INVITE sip:bob@host SIP/2.0\r\n");
    FrameOptions shortHeader;
    shortHeader.tcpDataOffset = 4;
    expectDropped(tcpFrame({"10.0.0.1", 1720}, {"10.0.0.2", 1720}, invite, shortHeader));
    EXPECT_TRUE(log.contains("INFO", "*** Fragmented TCP message. Header length: 16 bytes"));
    expectDropped(tcpFrame({"10.0.0.1", 5060}, {"10.0.0.2", 5060}, invite));
    expectDropped(tcpFrame({"10.0.0.1", 5060}, {"10.0.0.2", 5060}, {}));
}

TEST_F(Forwarding, TruncatedFramesAreDroppedWithoutHarm) {
    const Bytes udp = udpFrame({"10.0.0.1", 5060}, {"10.0.0.2", 5060}, bytesOf("SIP/2.0 200 OK"));
    const Bytes tcp = tcpFrame({"10.0.0.1", 1720}, {"10.0.0.2", 1720}, Bytes{3, 0, 0, 8, 'd', 'a', 't', 'a'});
    for (std::size_t n = 1; n <= 42; ++n)
        capture(Bytes(udp.begin(), udp.begin() + n));
    for (std::size_t n = 1; n <= 54; ++n)
        capture(Bytes(tcp.begin(), tcp.begin() + n));
    expectDropped(Bytes(udp.begin(), udp.begin() + 42));
}

// Plain requests and status lines are forwarded in every other test here.
TEST_F(Forwarding, SipIsRecognisedByItsStartLineAlone) {
    const struct {
        const char* text;
        bool sip;
    } lines[] = {
        {"FOO sip:x", true},  // the method is not checked
        {"invite SIP:bob@host SIP/2.0", true},
        {"\t OPTIONS sip:bob@host SIP/2.0", true},
        {"NOTIFY\v\fsip:bob@host", true},
        {"INVITE\xA0sip:bob@host SIP/2.0", false},  // white space in Latin-1 locales, never on the wire
        {"INVITE tel:+1555 SIP/2.0", false},
        {"sip/2.0 180 Ringing", true},
        {" SIP/2.0 200 OK", false},
        {"ABCDEFGHIJKLMNO sip:x", true},
        {"ABCDEFGHIJKLMNOP sip:x", false},  // a first word of 16 bytes: the budget runs out
    };
    for (const auto& line : lines) {
        SCOPED_TRACE(line.text);
        const Bytes payload = bytesOf(line.text);
        const Bytes frame = udpFrame({"10.0.0.1", 5060}, {"10.0.0.2", 5062}, payload);
        if (!line.sip) {
            expectDropped(frame);
            continue;
        }
        const ForwardedFrame sent = forwarded(frame);
        EXPECT_EQ(1, sent.protocol());
        EXPECT_EQ(payload, sent.payload());
    }
}

// ---------------------------------------------------------------- tunnels

namespace {
const Endpoint phone{"10.1.0.1", 5060}, proxy{"10.1.0.2", 5070};
const char* const tunnelStart = "192.0.2.1";
const char* const tunnelEnd = "192.0.2.2";
const Bytes invite = bytesOf("INVITE sip:bob@example.com SIP/2.0\r\n\r\n");

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes overIp(uint8_t protocol, const Bytes& body) {
    return etherFrame(etherTypeIpv4, ipPacket(protocol, tunnelStart, tunnelEnd, body));
}

struct Tunnel {
    const char* name;
    Bytes frame;
};

// The INVITE from the phone to the proxy, carried every way the engine reads.
std::vector<Tunnel> tunnels() {
    const Bytes ethernet = udpFrame(phone, proxy, invite);
    const Bytes ip = withoutEthernet(ethernet);
    const Bytes sequence = {0, 0, 0, 7};
    const Bytes vxlan = {0x08, 0, 0, 0, 0, 0, 0x2A, 0};
    const uint16_t vxlanLength = uint16_t(16 + ethernet.size());
    return {
        {"802.1ad, 802.1Q and 802.1Q tags",
         etherFrame(etherTypeQinQ, joined({{0, 100, 0x81, 0}, {0, 200, 0x81, 0}, {1, 44, 0x08, 0x00}, ip}))},
        {"two MPLS labels", etherFrame(0x8847, joined({{0, 1, 0, 64}, {0, 2, 1, 64}, ip}))},
        {"GRE with checksum, key and sequence number",
         overIp(47, joined({{0xB0, 0, 0x08, 0x00}, {0xAB, 0xCD, 0, 0}, {0, 0, 0, 9}, sequence, ip}))},
        {"ERSPAN type II",
         overIp(47, joined({{0x10, 0, 0x88, 0xBE}, sequence, {0x10, 100, 0, 1, 0, 0, 0, 0}, ethernet}))},
        {"ERSPAN type III with its subheader", overIp(47, joined({{0x10, 0, 0x22, 0xEB},
                                                                  sequence,
                                                                  {0x20, 100, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0x01},
                                                                  Bytes(8, 0),
                                                                  ethernet}))},
        {"IP in IP", overIp(4, ip)},
        {"VXLAN", overIp(17, joined({{0xC0, 0, 0x12, 0xB5, uint8_t(vxlanLength >> 8), uint8_t(vxlanLength), 0, 0},
                                     vxlan,
                                     ethernet}))},
    };
}
}  // namespace

class Decapsulating : public Forwarding {
protected:
    OptionInEnvironment decapsulate{"Decapsulate", "yes"};
};

TEST_F(Decapsulating, SipInEveryTunnelIsForwardedWholeWithTheInnerAddressesThatTsharkReads) {
    const std::vector<Tunnel> all = tunnels();
    const TempDir dir;
    std::vector<Bytes> frames;
    for (const Tunnel& tunnel : all)
        frames.push_back(tunnel.frame);
    writeCapture(dir.file("tunnels.pcap"), DLT_EN10MB, frames);
    const std::vector<std::string> oracle = tshark::innermostAddresses(dir.file("tunnels.pcap"));
    ASSERT_EQ(all.size(), oracle.size());

    for (std::size_t i = 0; i < all.size(); ++i) {
        SCOPED_TRACE(all[i].name);
        const ForwardedFrame frame = forwarded(all[i].frame);
        EXPECT_EQ(1, frame.protocol());
        EXPECT_EQ(static_cast<int>(15 + invite.size()), frame.length());
        EXPECT_EQ("10.1.0.2:5070", frame.destination());
        EXPECT_EQ("10.1.0.1:5060", frame.source());
        EXPECT_EQ(invite, frame.payload());
        EXPECT_EQ("10.1.0.1>10.1.0.2", oracle[i]);
    }
    EXPECT_TRUE(log.contains("INFO", "Opt-in settings: Decapsulate=yes"));
    EXPECT_FALSE(containsPrefix(log, "ERROR", ""));
}

// Cut anywhere before the SIP message, or buried too deep, a frame is
// dropped without a read past its end and without a log line.
TEST_F(Decapsulating, CutAndTooDeeplyNestedFramesAreDroppedSilently) {
    for (const Tunnel& tunnel : tunnels())
        for (std::size_t n = 1; n < tunnel.frame.size() - invite.size(); ++n)
            capture(Bytes(tunnel.frame.begin(), tunnel.frame.begin() + n));
    Bytes tags;
    for (int i = 0; i < Decapsulator::maxLayers; ++i)
        tags.insert(tags.end(), {0, 100, 0x81, 0});
    expectDropped(etherFrame(etherTypeVlan, joined({tags, withoutEthernet(udpFrame(phone, proxy, invite))})));
    EXPECT_FALSE(containsPrefix(log, "ERROR", ""));
}

// By default a tunnel is what the classic dissector makes of it: a VXLAN
// datagram to a listed destination goes out as it is, the other tunnels
// are dropped with the IP header they seemed to have.
TEST_F(Forwarding, TunnelsAreNotEnteredWithoutTheKey) {
    ASSERT_TRUE(recorder.apply({command(1, tunnelEnd, 4789)}));
    for (const Tunnel& tunnel : tunnels()) {
        SCOPED_TRACE(tunnel.name);
        if (std::string(tunnel.name) != "VXLAN") {
            expectDropped(tunnel.frame);
            continue;
        }
        const ForwardedFrame frame = forwarded(tunnel.frame);
        EXPECT_EQ(2, frame.protocol());
        EXPECT_EQ("192.0.2.2:4789", frame.destination());
        EXPECT_EQ("192.0.2.1:49152", frame.source());
        EXPECT_EQ(Bytes(tunnel.frame.begin() + 42, tunnel.frame.end()), frame.payload());
    }
    EXPECT_EQ(4, countPrefix(log, "*** Dropping IP packet with unknown upper layer protocol"));
    EXPECT_EQ(2, countPrefix(log, "*** Dropping IP packet with unknown IP header"));
}

// ---------------------------------------------------------------- fragments

namespace {
// An INVITE three full-size frames long, as a large SDP makes it.
Bytes largeInvite(const std::string& callId) {
    const std::string head =
        "INVITE sip:bob@example.com SIP/2.0\r\nVia: SIP/2.0/UDP 10.0.0.1:5060;branch=z9hG4bK1\r\n"
        "Call-ID: " +
        callId +
        "\r\nCSeq: 1 INVITE\r\nContent-Type: application/sdp\r\n"
        "Content-Length: ";
    const std::size_t bodyLength = 3000 - head.size() - 8;  // 4 digits and two line ends
    const std::string body = "v=0\r\na=" + std::string(bodyLength - 9, 'x') + "\r\n";
    return bytesOf(head + std::to_string(bodyLength) + "\r\n\r\n" + body);
}

const Endpoint caller{"10.0.0.1", 5060}, callee{"10.0.0.2", 5060};

Bytes fragmentOf(const Bytes& datagram, uint16_t id, std::size_t from, std::size_t to) {
    return ipFragment(IPPROTO_UDP, caller.ip, callee.ip, id, datagram, from, to);
}

// As a link of 1,500 bytes cuts it.
std::vector<Bytes> fragmentsOf(const Bytes& datagram, uint16_t id) {
    return {fragmentOf(datagram, id, 0, 1480), fragmentOf(datagram, id, 1480, 2960),
            fragmentOf(datagram, id, 2960, datagram.size())};
}

// The same bytes over its IP payload, so that a byte taken from it shows.
Bytes forged(Bytes fragment) {
    std::fill(fragment.begin() + 34, fragment.end(), 'X');
    return fragment;
}

timeval secondsOn(timeval time, int seconds) {
    time.tv_sec += seconds;
    return time;
}

std::string reassemblyCounters(const LogCapture& log) {
    const std::vector<std::string> info = log.messages("INFO");
    const auto stats =
        std::find_if(info.rbegin(), info.rend(), [](const std::string& m) { return m.rfind("Stats: ", 0) == 0; });
    return stats == info.rend() ? "" : stats->substr(stats->rfind(';'));
}
}  // namespace

class Reassembling : public Forwarding {
protected:
    // The frames, then the last one, which must bring the datagram out whole, once.
    void expectWhole(const std::vector<Bytes>& frames, const Bytes& message) {
        for (std::size_t i = 0; i + 1 < frames.size(); ++i)
            capture(frames[i]);
        const ForwardedFrame frame = forwarded(frames.back());
        EXPECT_EQ(1, frame.protocol());
        EXPECT_EQ("10.0.0.2:5060", frame.destination());
        EXPECT_EQ("10.0.0.1:5060", frame.source());
        EXPECT_EQ(message, frame.payload());
        expectNothingMore();
    }

    // The marker captured now is the next frame out.
    void expectNothingMore() {
        capture(marker);
        const auto received = recorder.next();
        ASSERT_TRUE(received);
        EXPECT_EQ(markerPayload, received->payload());
    }

    EngineStats& stats() { return SngDissector::dft()->getStats(); }

    OptionInEnvironment reassemble{"ReassembleIp", "yes"};
};

TEST_F(Reassembling, AnInviteInFragmentsIsForwardedOnceWholeInAnyOrderTheFirstCopyOfAByteWinning) {
    const Bytes message = largeInvite("whole@10.0.0.1");
    const Bytes datagram = udpDatagram(caller, callee, message);
    const std::vector<Bytes> inOrder = fragmentsOf(datagram, 1);
    const TempDir dir;
    writeCapture(dir.file("fragments.pcap"), DLT_EN10MB, inOrder);
    EXPECT_EQ(std::vector<std::string>{h323::test::hex(message)},
              tshark::udpPayloads(dir.file("fragments.pcap"), {"sip"})[0]);

    expectWhole(inOrder, message);
    const std::vector<Bytes> shuffled = fragmentsOf(datagram, 2);
    expectWhole({shuffled[1], shuffled[2], shuffled[0]}, message);
    // A middle part sent again over wider bounds, and a last part that
    // starts early, carry other bytes where they overlap what came first.
    const std::vector<Bytes> parts = fragmentsOf(datagram, 3);
    Bytes lateStart = fragmentOf(datagram, 3, 2952, datagram.size());
    std::fill(lateStart.begin() + 34, lateStart.begin() + 42, 'X');
    expectWhole({parts[0], parts[1], forged(fragmentOf(datagram, 3, 1400, 2960)), lateStart}, message);

    EXPECT_EQ(3u, EngineStats::read(stats().reassembled));
    EXPECT_EQ(0u, EngineStats::read(stats().reassemblyBytes));
}

TEST_F(Reassembling, AnIncompleteDatagramIsLetGoFiveSecondsOfCaptureTimeOnAndCounted) {
    timeval start{};
    gettimeofday(&start, nullptr);
    const std::vector<Bytes> parts = fragmentsOf(udpDatagram(caller, callee, largeInvite("lost@10.0.0.1")), 7);
    captureAt(parts[0], start);
    captureAt(parts[2], start);
    // A fragment that would take a datagram past 65,535 bytes is never held.
    captureAt(ipFrame(IPPROTO_UDP, 120, 8, 0x2000 | 8185, 64, 0, Bytes(100, 'x')), start);
    expectNothingMore();
    EXPECT_EQ(2u, EngineStats::read(stats().reassemblyHeld));
    EXPECT_LT(2960u, EngineStats::read(stats().reassemblyBytes));

    captureAt(marker, secondsOn(start, 6));
    ASSERT_TRUE(recorder.next());
    EXPECT_EQ(1u, EngineStats::read(stats().reassemblyTimedOut));
    EXPECT_EQ(0u, EngineStats::read(stats().reassemblyBytes));
    // The missing part, late, finds nothing left to complete.
    captureAt(parts[1], secondsOn(start, 6));
    expectNothingMore();

    run->stop();
    EXPECT_EQ("; reassembly held=3 reassembled=0 timedOut=1 dropped=0 oversized=1 heldBytes=" +
                  std::to_string(EngineStats::read(stats().reassemblyBytes)),
              reassemblyCounters(log));
}

class ReassemblingWithinALimit : public Reassembling {
protected:
    OptionInEnvironment limit{"ReassemblyLimit", "1"};
};

TEST_F(ReassemblingWithinALimit, AFloodOfIncompleteDatagramsStaysWithinTheLimitTheOldestGoingFirst) {
    const Bytes message = largeInvite("flood@10.0.0.1");
    const Bytes datagram = udpDatagram(caller, callee, message);
    constexpr uint16_t flood = 1000;  // about six MiB held without a limit
    for (uint16_t id = 1; id <= flood; ++id)
        capture(fragmentOf(datagram, id, 0, 2960));
    expectNothingMore();
    EXPECT_GE(uint64_t(1) << 20, EngineStats::read(stats().reassemblyBytes));
    EXPECT_LT(0u, EngineStats::read(stats().reassemblyDropped));

    expectDropped(fragmentOf(datagram, 1, 2960, datagram.size()));
    expectWhole({fragmentOf(datagram, flood, 2960, datagram.size())}, message);
    EXPECT_TRUE(log.contains("INFO", "Opt-in settings: ReassembleIp=yes, ReassemblyLimit=1"));
}

class DecapsulatingAndReassembling : public Reassembling {
protected:
    OptionInEnvironment decapsulate{"Decapsulate", "yes"};
};

// The fragments are those of the inner packet, each in a tunnel packet of its own.
TEST_F(DecapsulatingAndReassembling, FragmentsInsideATunnelAreForwardedAsOneMessageWithTheInnerAddresses) {
    const Bytes message = largeInvite("tunnelled@10.0.0.1");
    std::vector<Bytes> tunnelled;
    for (const Bytes& fragment : fragmentsOf(udpDatagram(caller, callee, message), 4))
        tunnelled.push_back(overIp(4, withoutEthernet(fragment)));
    expectWhole(tunnelled, message);
}

TEST_F(Forwarding, WithoutReassemblyTheFirstFragmentGoesOutCutAndTheOthersAreDropped) {
    const Bytes message = largeInvite("classic@10.0.0.1");
    const std::vector<Bytes> parts = fragmentsOf(udpDatagram(caller, callee, message), 1);
    const ForwardedFrame first = forwarded(parts[0]);
    EXPECT_EQ(1, first.protocol());
    EXPECT_EQ(Bytes(message.begin(), message.begin() + 1472), first.payload());
    expectDropped(parts[1]);
    expectDropped(parts[2]);
}
