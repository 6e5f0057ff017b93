// Real SIP calls between two SIPp instances on lo, recorded by the recorder
// through the sniffer, over each of the sniffer's links to the recorder.
// tcpdump captures the same traffic; tshark reads both captures.
#include "Network.h"
#include "Programs.h"
#include "Recording.h"
#include "RecordingFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <set>
#include <thread>
#include <unistd.h>

namespace {

constexpr size_t kCalls = 2;
// The caller plays all of SIPp's g711a.pcap before it hangs up: 236 packets each way.
constexpr uint64_t kAudioPackets = 236;

// The ports of one run.
struct Ports {
    unsigned base = portBlock();

    unsigned calleeSip() const { return base; }
    unsigned callerSip() const { return base + 1; }
    unsigned callerMedia() const { return base + 4; }  // SIPp takes up to 4 from here
    unsigned calleeMedia() const { return base + 10; }
    std::string captured() const { return "udp portrange " + std::to_string(base) + "-" + std::to_string(base + 19); }
    std::string address(unsigned port) const { return "127.0.0.1:" + std::to_string(port); }
};

std::vector<std::string> sipMessages(const std::vector<Packet>& packets, const std::string& callId) {
    std::vector<std::string> messages;
    for (const Packet& packet : packets)
        if (!packet.cseq.empty() && packet.callId == callId)
            messages.push_back(packet.sipSummary());
    return messages;
}

// The calls share their media addresses, so RTP belongs to the call whose signalling announced
// them last: from the call's first message to the first message of the next call.
std::pair<double, double> mediaWindow(const std::vector<Packet>& packets, const std::string& callId) {
    std::set<std::string> seen;
    double start = 0;
    for (const Packet& packet : packets) {
        if (packet.callId.empty() || !seen.insert(packet.callId).second)
            continue;
        if (packet.callId == callId)
            start = packet.time;
        else if (seen.count(callId))
            return {start, packet.time};
    }
    return {start, 1e12};
}

// RTP packets per direction, of those captured between `from` and `to`.
std::map<std::string, uint64_t> rtpCounts(const std::vector<Packet>& packets, double from = 0, double to = 1e12) {
    std::map<std::string, uint64_t> counts;
    for (const Packet& packet : packets)
        if (packet.rtp && packet.time >= from && packet.time <= to)
            ++counts[packet.direction()];
    return counts;
}

// The seconds of G.711 audio one direction's RTP covers, by its timestamps.
double audioSpan(const std::vector<Packet>& packets, const std::string& direction) {
    const size_t kRtpHeader = 12;
    uint32_t first = UINT32_MAX, last = 0;
    size_t lastSamples = 0;
    for (const Packet& packet : packets) {
        if (!packet.rtp || packet.direction() != direction)
            continue;
        first = std::min(first, packet.timestamp);
        if (packet.timestamp >= last) {
            last = packet.timestamp;
            lastSamples = packet.payload.size() - kRtpHeader;
        }
    }
    return first > last ? 0 : double(last - first + lastSamples) / 8000;
}

class SipRecording : public ::testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        if (geteuid() != 0)
            GTEST_SKIP() << "live capture on lo needs root";
        for (const char* tool : {"sipp", "tshark", "tcpdump"})
            if (onPath(tool).empty())
                GTEST_SKIP() << tool << " is not installed (scripts/setup installs it)";
    }

    // The caller's calls, one after the other, answered by a callee that echoes the audio.
    void placeCalls() {
        ChildProcess callee(
            {onPath("sipp"), "-sn", "uas", "-i", "127.0.0.1", "-p", std::to_string(ports.calleeSip()), "-mp",
             std::to_string(ports.calleeMedia()), "-rtp_echo", "-m", std::to_string(kCalls), "-nostdin"},
            dir.file("callee.log"), dir.path());
        ASSERT_TRUE(waitUntil([&] { return udpPortBound(ports.calleeSip()); }, 5s)) << readFile(dir.file("callee.log"));
        ChildProcess caller({onPath("sipp"), "-sf", SIPP_CALLER_SCENARIO, ports.address(ports.calleeSip()), "-i",
                             "127.0.0.1", "-p", std::to_string(ports.callerSip()), "-mp",
                             std::to_string(ports.callerMedia()), "-m", std::to_string(kCalls), "-l", "1", "-nostdin"},
                            dir.file("caller.log"), dir.path());
        ASSERT_TRUE(caller.waitFor(60s)) << "the calls last about 8 s each";
        ASSERT_EQ(caller.exitStatus(), 0) << readFile(dir.file("caller.log"));
        EXPECT_TRUE(callee.waitFor(5s));
        EXPECT_EQ(callee.exitStatus(), 0) << readFile(dir.file("callee.log"));
    }

    TempDir dir;
    Ports ports;
};

TEST_P(SipRecording, EachCallHasAllItsSipAndRtpPacketsAndItsAudio) {
    Recording recording(dir, ports.captured(), GetParam());
    ChildProcess tcpdump(
        {onPath("tcpdump"), "-i", "lo", "-U", "-Z", "root", "-w", dir.file("sent.pcap"), ports.captured()},
        dir.file("tcpdump.log"));
    ASSERT_TRUE(recording.waitUntilReady(10s)) << recording.logs();
    ASSERT_TRUE(waitForText(dir.file("tcpdump.log"), "listening on lo", 5s)) << readFile(dir.file("tcpdump.log"));

    placeCalls();
    if (HasFatalFailure())
        return;
    // The last messages reach the recorder within libpcap's hand-over delay, then the call lingers.
    recording.waitForCalls(kCalls, 10s);
    tcpdump.stop();
    recording.stop();

    const std::vector<std::string> calls = recording.calls();
    ASSERT_EQ(calls.size(), kCalls) << recording.logs();
    const char* const linked = GetParam() == "TCP" ? "Sniffer connected from" : "Sniffer sends datagrams from";
    EXPECT_NE(recording.recorder().log().find(linked), std::string::npos) << recording.logs();
    const std::vector<unsigned> rtpPorts = {ports.callerMedia(), ports.calleeMedia()};
    const std::vector<Packet> sent = readPackets(dir.file("sent.pcap"), rtpPorts);
    const std::string toCallee = ports.address(ports.callerMedia()) + " > " + ports.address(ports.calleeMedia());
    const std::string toCaller = ports.address(ports.calleeMedia()) + " > " + ports.address(ports.callerMedia());

    std::set<std::string> sentCalls, recordedCalls;
    for (const Packet& packet : sent)
        if (!packet.callId.empty())
            sentCalls.insert(packet.callId);
    for (const std::string& call : calls)
        recordedCalls.insert(jsonValue(call, "call_id"));
    EXPECT_EQ(recordedCalls, sentCalls);

    for (const std::string& call : calls) {
        const std::string callId = jsonValue(call, "call_id");
        SCOPED_TRACE("call " + callId);
        const std::string folder = jsonValue(call, "folder");
        const std::vector<Packet> recorded = readPackets(folder + "/call.pcap", rtpPorts);

        // INVITE, 180, 200, ACK, BYE and its 200, with their addresses, in the order sent.
        const std::vector<std::string> sentSip = sipMessages(sent, callId);
        EXPECT_GE(sentSip.size(), 6u);
        EXPECT_EQ(sipMessages(recorded, callId), sentSip);

        // The call's RTP as tcpdump saw it, both ways.
        const auto [start, end] = mediaWindow(sent, callId);
        const std::map<std::string, uint64_t> sentRtp = rtpCounts(sent, start, end);
        EXPECT_EQ(sentRtp, (std::map<std::string, uint64_t>{{toCallee, kAudioPackets}, {toCaller, kAudioPackets}}));
        EXPECT_EQ(rtpCounts(recorded), sentRtp);

        std::vector<std::string> streams;
        for (const auto& [direction, packets] : sentRtp)
            streams.push_back(streamRecord(direction, "PCMA/8000", packets));
        EXPECT_EQ(streamRecords(call), streams);

        // Both directions in a channel each. Each direction starts where its first packet
        // arrived, which the capture's hand-over delay may put up to a second later.
        const Wav wav = readWav(folder + "/call.wav");
        EXPECT_EQ(wav.channels, 2u);
        EXPECT_EQ(wav.rate, 8000u);
        const double audio = audioSpan(recorded, toCallee);
        EXPECT_GT(audio, 3.0);
        EXPECT_GE(wav.seconds(), audio - 0.001);
        EXPECT_LE(wav.seconds(), audio + 1.1);
    }
    if (HasFailure())
        std::cerr << recording.logs();
}

INSTANTIATE_TEST_SUITE_P(OverTheSniffersLink, SipRecording, ::testing::Values("TCP", "UDP"),
                         [](const ::testing::TestParamInfo<std::string>& info) { return info.param; });

}  // namespace
