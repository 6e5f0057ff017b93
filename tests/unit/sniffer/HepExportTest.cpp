// The copy of every forwarded SIP message sent to a HEP collector, beside
// the recorder link: the packets as a collector reads them, field by field
// and through sngrep's own HEP decoding, over UDP and TCP, and a collector
// that never reads, which must leave the recorder's frames exactly as they
// are without it.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <pcap.h>
#include <sys/socket.h>
#include <unistd.h>
#include <algorithm>
#include <map>
#include <set>
#include <sstream>

#include "ChildProcess.h"
#include "EngineOptions.h"
#include "EngineStats.h"
#include "Frames.h"
#include "LogCapture.h"
#include "LogSearch.h"
#include "Loopback.h"
#include "Programs.h"
#include "Recorder.h"
#include "SngDissector.h"
#include "SnifferRun.h"
#include "TsharkCapture.h"

namespace {
const std::string invite =
    "INVITE sip:bob@10.1.1.2 SIP/2.0\r\nVia: SIP/2.0/UDP 10.1.1.1:5062;branch=z9hG4bK-1\r\n"
    "From: <sip:alice@10.1.1.1>;tag=a1\r\nTo: <sip:bob@10.1.1.2>\r\nCall-ID: hep-1@10.1.1.1\r\n"
    "CSeq: 1 INVITE\r\nContent-Length: 0\r\n\r\n";
const std::string trying = "SIP/2.0 100 x\r\n\r\n";  // short: its frame carries Ethernet padding
constexpr timeval inviteTime{1700000000, 123456};
constexpr timeval tryingTime{1700000001, 999999};
const Endpoint alice{"10.1.1.1", 5062};
const Endpoint bob{"10.1.1.2", 5060};

// One HEPv3 packet read chunk by chunk, every read bounds-checked.
struct HepPacket {
    bool wellFormed = false;
    std::vector<uint16_t> types;  // in packet order
    std::map<uint16_t, Bytes> values;

    explicit HepPacket(const Bytes& bytes) {
        if (bytes.size() < 6 || std::string(bytes.begin(), bytes.begin() + 4) != "HEP3" ||
            be16(bytes, 4) != bytes.size())
            return;
        for (std::size_t at = 6; at < bytes.size();) {
            if (at + 6 > bytes.size() || be16(bytes, at) != 0)
                return;
            const std::size_t length = be16(bytes, at + 4);
            if (length < 6 || at + length > bytes.size())
                return;
            types.push_back(static_cast<uint16_t>(be16(bytes, at + 2)));
            values[types.back()] = Bytes(bytes.begin() + at + 6, bytes.begin() + at + length);
            at += length;
        }
        wellFormed = true;
    }
    uint32_t number(uint16_t type) const {
        uint32_t n = 0;
        for (uint8_t b : values.at(type))
            n = n << 8 | b;
        return n;
    }
    std::string text(uint16_t type) const { return std::string(values.at(type).begin(), values.at(type).end()); }
    std::string address(uint16_t type) const {
        const Bytes& a = values.at(type);
        return a.size() != 4 ? ""
                             : std::to_string(a[0]) + "." + std::to_string(a[1]) + "." + std::to_string(a[2]) + "." +
                                   std::to_string(a[3]);
    }

private:
    static std::size_t be16(const Bytes& b, std::size_t at) { return std::size_t(b[at]) << 8 | b[at + 1]; }
};

void expectHep(const HepPacket& hep, const std::string& message, timeval time, Endpoint src, Endpoint dst) {
    ASSERT_TRUE(hep.wellFormed);
    EXPECT_EQ((std::vector<uint16_t>{1, 2, 3, 4, 7, 8, 9, 10, 11, 12, 14, 15}), hep.types);
    EXPECT_EQ(Bytes{2}, hep.values.at(1));   // IPv4
    EXPECT_EQ(Bytes{17}, hep.values.at(2));  // UDP
    EXPECT_EQ(src.ip, hep.address(3));
    EXPECT_EQ(dst.ip, hep.address(4));
    EXPECT_EQ(2u, hep.values.at(7).size());
    EXPECT_EQ(src.port, hep.number(7));
    EXPECT_EQ(dst.port, hep.number(8));
    EXPECT_EQ(4u, hep.values.at(9).size());
    EXPECT_EQ(uint32_t(time.tv_sec), hep.number(9));
    EXPECT_EQ(uint32_t(time.tv_usec), hep.number(10));
    EXPECT_EQ(Bytes{1}, hep.values.at(11));  // SIP
    EXPECT_EQ(4u, hep.values.at(12).size());
    EXPECT_EQ(7777u, hep.number(12));
    EXPECT_EQ("secret", hep.text(14));
    EXPECT_EQ(message, hep.text(15));
}

// sngrep reads the HEP datagrams from a capture file and writes the SIP
// messages they carry as it understands them; tshark then reads that
// capture: one "time src:port dst:port payload-hex" row per distinct message.
std::set<std::string> decodedBySngrep(const std::vector<Bytes>& datagrams, uint16_t collectorPort) {
    const TempDir dir;
    pcap_t* dead = pcap_open_dead(DLT_EN10MB, 65535);
    pcap_dumper_t* dump = pcap_dump_open(dead, dir.file("hep.pcap").c_str());
    for (const Bytes& datagram : datagrams) {
        const Bytes frame = udpFrame({"127.0.0.1", 40000}, {"127.0.0.1", collectorPort}, datagram);
        pcap_pkthdr header{{1, 0}, bpf_u_int32(frame.size()), bpf_u_int32(frame.size())};
        pcap_dump(reinterpret_cast<u_char*>(dump), &header, frame.data());
    }
    pcap_dump_close(dump);
    pcap_close(dead);
    EXPECT_TRUE(
        runsCleanly({onPath("sngrep"), "-N", "-q", "-E", "-I", dir.file("hep.pcap"), "-O", dir.file("sip.pcap")}, 30s));
    const std::vector<std::string> rows = tshark::fieldRows(
        dir.file("sip.pcap"), {"-E", "separator=/s", "-e", "frame.time_epoch", "-e", "ip.src", "-e", "udp.srcport",
                               "-e", "ip.dst", "-e", "udp.dstport", "-e", "udp.payload"});
    return std::set<std::string>(rows.begin(), rows.end());
}

std::string hex(const std::string& text) {
    static const char digits[] = "0123456789abcdef";
    std::string out;
    for (unsigned char c : text)
        out += {digits[c >> 4], digits[c & 15]};
    return out;
}

// A TCP collector on a fixed loopback port that can be absent, come, read
// packets off its stream and go away again.
class TcpCollector {
public:
    TcpCollector() {
        listener = listenOnLoopback(port);
        close(listener);  // absent until listen()
        listener = -1;
    }
    ~TcpCollector() { leave(); }
    void listen() {
        listener = socket(AF_INET, SOCK_STREAM, 0);
        const int on = 1;
        setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        const sockaddr_in local = loopback(port);
        ASSERT_EQ(0, bind(listener, reinterpret_cast<const sockaddr*>(&local), sizeof local));
        ASSERT_EQ(0, ::listen(listener, 4));
    }
    bool accept(std::chrono::milliseconds timeout) {
        return waitUntil(
            [this] {
                connection = accept4(listener, nullptr, nullptr, SOCK_NONBLOCK);
                return connection >= 0;
            },
            timeout);
    }
    // The next whole HEP packet of the stream.
    Bytes next(std::chrono::milliseconds timeout) {
        waitUntil(
            [this] {
                uint8_t chunk[4096];
                const ssize_t got = recv(connection, chunk, sizeof chunk, 0);
                if (got > 0)
                    stream.insert(stream.end(), chunk, chunk + got);
                return stream.size() >= 6 && stream.size() >= std::size_t(stream[4] << 8 | stream[5]);
            },
            timeout);
        if (stream.size() < 6)
            return {};
        const std::size_t length = std::min(stream.size(), std::size_t(stream[4] << 8 | stream[5]));
        Bytes packet(stream.begin(), stream.begin() + length);
        stream.erase(stream.begin(), stream.begin() + length);
        return packet;
    }
    void dropConnection() {
        close(connection);
        connection = -1;
    }
    void leave() {
        if (connection >= 0)
            dropConnection();
        if (listener >= 0)
            close(listener);
        listener = -1;
    }

    uint16_t port = 0;

private:
    int listener = -1;
    int connection = -1;
    Bytes stream;
};

class HepExport : public testing::Test {
protected:
    void startEngine() {
        run = std::make_unique<SnifferRun>(
            std::vector<std::string>{"-d", "", "-h", "127.0.0.1", "-p", std::to_string(recorder.port())}, "TCP");
        ASSERT_EQ(0, run->setupResult());
    }
    void sip(const std::string& message, timeval time, Endpoint src = alice, Endpoint dst = bob) {
        captureAt(padded(udpFrame(src, dst, bytesOf(message))), time);
    }

    OptionInEnvironment captureId{"HepCaptureId", "7777"};
    OptionInEnvironment password{"HepPassword", "secret"};
    LogCapture log;
    TcpRecorder recorder;
    std::unique_ptr<SnifferRun> run;
};
}  // namespace

TEST_F(HepExport, EachSipMessageForwardedGoesAsOneHepPacketWithItsCaptureTimeAndAddressesAsSngrepDecodesIt) {
    UdpSocket collector;
    const std::string collectorText = "127.0.0.1:" + std::to_string(collector.port());
    OptionInEnvironment key("HepCollector", collectorText);
    startEngine();
    EXPECT_TRUE(containsPrefix(
        log, "INFO", "Opt-in settings: HepCollector=" + collectorText + ", HepPassword=(set), HepCaptureId=7777"));

    sip(invite, inviteTime);
    ASSERT_TRUE(recorder.next());
    ASSERT_TRUE(recorder.apply({command(1, "10.1.1.2", 4000)}));
    captureAt(udpFrame(alice, {"10.1.1.2", 4000}, Bytes(160, 0xD5)), inviteTime);  // listed RTP: the recorder's only
    sip(trying, tryingTime, bob, alice);

    const auto rtp = recorder.next();
    ASSERT_TRUE(rtp);
    EXPECT_EQ(2, rtp->protocol());
    const auto response = recorder.next();
    ASSERT_TRUE(response);
    EXPECT_EQ(1, response->protocol());
    EXPECT_EQ(60u - 42u, response->payload().size()) << "the recorder's copy keeps the Ethernet padding";

    std::vector<Bytes> datagrams{collector.receive(3s), collector.receive(3s)};
    expectHep(HepPacket(datagrams[0]), invite, inviteTime, alice, bob);
    expectHep(HepPacket(datagrams[1]), trying, tryingTime, bob, alice);

    EXPECT_EQ((std::set<std::string>{
                  "1700000000.123456000 10.1.1.1 5062 10.1.1.2 5060 " + hex(invite),
                  "1700000001.999999000 10.1.1.2 5060 10.1.1.1 5062 " + hex(trying),
              }),
              decodedBySngrep(datagrams, collector.port()));

    run->stop();
    const std::vector<std::string> info = log.messages("INFO");
    const auto stats =
        std::find_if(info.rbegin(), info.rend(), [](const std::string& m) { return m.rfind("Stats: ", 0) == 0; });
    ASSERT_NE(info.rend(), stats);
    EXPECT_EQ("; hep sent=2 dropped=0", stats->substr(stats->rfind(';'))) << "the HEP counters close the stats line";
}

TEST_F(HepExport, AReassembledSipMessageGoesWholeWithTheCaptureTimeOfItsLastFragment) {
    UdpSocket collector;
    const OptionInEnvironment key("HepCollector", "127.0.0.1:" + std::to_string(collector.port()));
    const OptionInEnvironment reassemble("ReassembleIp", "yes");
    startEngine();
    const std::string large = invite + std::string(3000, 'x');
    const Bytes datagram = udpDatagram(alice, bob, bytesOf(large));
    captureAt(ipFragment(IPPROTO_UDP, alice.ip, bob.ip, 9, datagram, 1480, datagram.size()), inviteTime);
    captureAt(ipFragment(IPPROTO_UDP, alice.ip, bob.ip, 9, datagram, 0, 1480), tryingTime);

    const auto forwarded = recorder.next();
    ASSERT_TRUE(forwarded);
    EXPECT_EQ(bytesOf(large), forwarded->payload());
    expectHep(HepPacket(collector.receive(3s)), large, tryingTime, alice, bob);
}

TEST_F(HepExport, OverTcpACollectorThatComesLateOrRestartsGetsEveryMessageWhole) {
    TcpCollector collector;
    OptionInEnvironment transport("HepTransport", "tcp");
    OptionInEnvironment key("HepCollector", "127.0.0.1:" + std::to_string(collector.port));
    startEngine();

    sip(invite, inviteTime);  // nobody listens: held and tried again
    ASSERT_TRUE(recorder.next()) << "the recorder link does not wait for the collector";
    ASSERT_TRUE(waitForLog(log, "HEP collector 127.0.0.1:" + std::to_string(collector.port) + " not reachable", 3s));
    collector.listen();
    ASSERT_TRUE(collector.accept(3s));
    expectHep(HepPacket(collector.next(3s)), invite, inviteTime, alice, bob);

    collector.dropConnection();  // a collector that restarts
    sip(trying, tryingTime, bob, alice);
    ASSERT_TRUE(collector.accept(3s));
    expectHep(HepPacket(collector.next(3s)), trying, tryingTime, bob, alice);
    EXPECT_EQ(2, countPrefix(log, "HEP collector 127.0.0.1:" + std::to_string(collector.port) + " connected"));
    EXPECT_EQ(1, countPrefix(log, "HEP collector 127.0.0.1:" + std::to_string(collector.port) + " not reachable"));
}

// A burst of SIP messages through an engine of its own: the frames the
// recorder received and how long the burst took to reach it.
struct Burst {
    static constexpr int messages = 10000;  // past the exporter's 8 MiB queue and the socket buffers

    std::vector<Bytes> frames;
    std::chrono::milliseconds took{};
    uint64_t hepDropped = 0;

    Burst() {
        TcpRecorder recorder;
        SnifferRun run({"-d", "", "-h", "127.0.0.1", "-p", std::to_string(recorder.port())}, "TCP");
        EXPECT_EQ(0, run.setupResult());
        const std::string body(1200, 'x');
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < messages; ++i)
            capture(udpFrame(
                alice, bob,
                bytesOf("MESSAGE sip:bob@10.1.1.2 SIP/2.0\r\nCall-ID: " + std::to_string(i) + "\r\n\r\n" + body)));
        EXPECT_TRUE(waitUntil([&recorder] { return recorder.count() >= std::size_t(messages); }, 20s));
        took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
        for (const ForwardedFrame& frame : recorder.received())
            frames.push_back(frame.bytes);
        hepDropped = EngineStats::read(SngDissector::dft()->getStats().hepDropped);
    }
};

TEST(HepBeside, ACollectorThatNeverReadsLeavesTheRecorderFramesByteIdenticalAndOnTime) {
    const LogCapture log;
    // The reliable link, so that the recorder gets the whole burst either way.
    const OptionInEnvironment reliable("LinkMode", "reliable");
    const Burst without;
    // Accepted by the kernel and never read, with the smallest window it allows.
    const int stalled = socket(AF_INET, SOCK_STREAM, 0);
    const int small = 1;
    setsockopt(stalled, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    sockaddr_in local = loopback(0);
    socklen_t size = sizeof local;
    ASSERT_EQ(0, bind(stalled, reinterpret_cast<sockaddr*>(&local), sizeof local));
    ASSERT_EQ(0, listen(stalled, 1));
    getsockname(stalled, reinterpret_cast<sockaddr*>(&local), &size);

    OptionInEnvironment transport("HepTransport", "tcp");
    OptionInEnvironment key("HepCollector", "127.0.0.1:" + std::to_string(ntohs(local.sin_port)));
    const Burst with;
    close(stalled);
    ASSERT_EQ(std::size_t(Burst::messages), without.frames.size());
    EXPECT_TRUE(without.frames == with.frames);
    EXPECT_LT(with.took, without.took * 3 + 1s);
    EXPECT_GT(with.hepDropped, 0u);
}

TEST(HepOptions, ACollectorIsAnIpv4AddressWithAPortAndTheTransportUdpOrTcp) {
    const LogCapture log;
    auto loads = [](const std::map<std::string, std::string>& keys) {
        EngineOptions options;
        return options.load([&keys](const std::string& key) { return keys.count(key) ? keys.at(key) : ""; });
    };
    EXPECT_TRUE(loads({{"HepCollector", "192.0.2.7:9060"}, {"HepTransport", "tcp"}}));
    for (const char* wrong : {"collector:9060", "192.0.2.7", "192.0.2.7:0", "192.0.2.7:65536", "192.0.2.7:x"})
        EXPECT_FALSE(loads({{"HepCollector", wrong}})) << wrong;
    EXPECT_FALSE(loads({{"HepTransport", "sctp"}}));
    EXPECT_TRUE(log.contains("ERROR",
                             "Invalid value of HepCollector: \"192.0.2.7\", expected an IPv4 address and a "
                             "port, as 192.0.2.7:9060"));
}
