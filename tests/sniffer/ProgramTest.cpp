// The stand-alone programs as a user runs them: `sniffer` configured from a
// properties file, `udpsniffer` from its command line. Recorded calls are
// replayed through a "file:" device and what reaches a test recorder is
// compared with tshark's reading of the same capture.
#include <gtest/gtest.h>

#include <csignal>

#include "Bytes.h"
#include "ChildProcess.h"
#include "Network.h"
#include "PcapFeed.h"
#include "Programs.h"
#include "Recorder.h"
#include "Tshark.h"

namespace {
const std::string logConfig =
    "log4j.rootLogger=INFO, out\n"
    "log4j.appender.out=org.apache.log4j.ConsoleAppender\n"
    "log4j.appender.out.layout=org.apache.log4j.PatternLayout\n"
    "log4j.appender.out.layout.ConversionPattern=%p %m%n\n";

// A capture file header (Ethernet) with no packet behind it.
const std::string emptyCapture(
    "\xD4\xC3\xB2\xA1\x02\x00\x04\x00\x00\x00\x00\x00\x00\x00\x00\x00"
    "\xFF\xFF\x00\x00\x01\x00\x00\x00",
    24);

struct Destination {
    const char* ip;
    uint16_t port;
};

bool appearsInOrder(const std::string& text, const std::vector<std::string>& parts) {
    std::size_t at = 0;
    for (const std::string& part : parts) {
        at = text.find(part, at);
        if (at == std::string::npos)
            return false;
    }
    return true;
}

// `program` writes its output to the file `output`.
void expectSetupFailure(ChildProcess& program, const std::string& output) {
    ASSERT_TRUE(program.waitFor(10s)) << "still running";
    EXPECT_NE(0, program.exitStatus());
    const std::string text = readFile(output);
    EXPECT_NE(std::string::npos, text.find("Couldn't parse filter udp and and:")) << text;
    EXPECT_NE(std::string::npos, text.find("Errors in setup, terminating...\n"));
}

void expectCleanStop(ChildProcess& program, const std::string& output, int signal) {
    ASSERT_TRUE(waitForText(output, "PCAP thread created 0", 5s)) << readFile(output);
    program.signal(signal);
    ASSERT_TRUE(program.waitFor(5s)) << "did not stop on signal " << signal;
    EXPECT_EQ(0, program.exitStatus());
    const std::string text = readFile(output);
    EXPECT_TRUE(appearsInOrder(text, {"Ending Sniffing ...", "Completed join with PCAP thread 0 status=0",
                                      "Completed join with Command reader thread, status=0"}))
        << text;
    EXPECT_NE(std::string::npos, text.find("Sniffing ended."));
}

// Starts `sniffer` with `settings` as its properties file, its output
// going to the file `output` in `dir`.
ChildProcess startSniffer(const TempDir& dir, const std::string& settings, const std::string& output) {
    dir.write("log4cxx.properties", logConfig);
    dir.write("sniffer.properties", settings);
    return ChildProcess({SNIFFER_PROGRAM, "-c", dir.file("sniffer.properties"), "-l", dir.file("log4cxx.properties")},
                        dir.file(output));
}

// Replays `capture` through a program started by `launch` (given the device
// name and a folder for its files; it writes its output to program.log
// there): the first packet, which is SIP, brings the link up; then the
// recorder lists `rtp`; then the rest of the file follows. Compares the
// forwarded SIP payloads and the number of RTP frames with tshark's.
template <typename Launch>
void expectReplayMatchesTshark(Recorder& recorder, const std::string& capture, const std::vector<Destination>& rtp,
                               Launch launch) {
    if (onPath("tshark").empty())
        GTEST_SKIP() << "tshark is not installed";
    if (access(capture.c_str(), R_OK) != 0)
        GTEST_SKIP() << capture << " is absent: the shared captures are not next to the source tree";

    const TempDir dir;
    const std::string output = dir.file("program.log");
    PcapFeed feed(capture);
    feed.begin(1);
    ChildProcess program = launch(feed.device(), dir);
    ASSERT_TRUE(recorder.next(5s)) << readFile(output);
    std::vector<Bytes> commands;
    std::string rtpRule;
    for (const Destination& d : rtp) {
        commands.push_back(command(1, d.ip, d.port));
        rtpRule += std::string(rtpRule.empty() ? "" : " || ") + "(ip.dst==" + d.ip +
                   " && udp.dstport==" + std::to_string(d.port) + ")";
    }
    ASSERT_TRUE(recorder.apply(commands)) << readFile(output);
    feed.finish();
    ASSERT_TRUE(program.waitFor(30s)) << "did not stop at the end of the capture";
    EXPECT_EQ(0, program.exitStatus()) << readFile(output);

    const auto oracle =
        tshark::udpPayloads(capture, {tshark::sipRule, "(" + rtpRule + ") && !(" + tshark::sipRule + ")"});
    const std::vector<std::string>& sip = oracle[0];
    const std::size_t rtpCount = oracle[1].size();
    ASSERT_FALSE(sip.empty());
    ASSERT_GT(rtpCount, 0u);
    const auto forwarded = [&](int protocol) {
        std::vector<std::string> payloads;
        for (const ForwardedFrame& frame : recorder.received())
            if (frame.protocol() == protocol)
                payloads.push_back(h323::test::hex(frame.payload()));
        return payloads;
    };
    waitUntil([&] { return forwarded(1).size() + forwarded(2).size() >= sip.size() + rtpCount; }, 5s);
    EXPECT_EQ(sip, forwarded(1));
    EXPECT_EQ(rtpCount, forwarded(2).size());
}
}  // namespace

TEST(Programs, FilterThatDoesNotCompileIsReportedOnStandardError) {
    const TempDir dir;
    dir.write("empty.pcap", emptyCapture);
    ChildProcess udpsniffer(
        {UDPSNIFFER_PROGRAM, "-d", "file:" + dir.file("empty.pcap"), "-f", "udp and and", "-h", "127.0.0.1", "-p", "9"},
        dir.file("udpsniffer.log"));
    expectSetupFailure(udpsniffer, dir.file("udpsniffer.log"));

    ChildProcess sniffer =
        startSniffer(dir, "Device=file:" + dir.file("empty.pcap") + "\nFilter=udp and and\n", "sniffer.log");
    expectSetupFailure(sniffer, dir.file("sniffer.log"));
}

TEST(Programs, StopInOrderOnSigtermOrSigint) {
    if (!runningAsRoot())
        GTEST_SKIP() << "live capture needs root";
    TcpRecorder recorder;
    const UdpSocket target;
    const std::string filter = "udp and dst port " + std::to_string(target.port());
    const TempDir dir;
    ChildProcess udpsniffer(
        {UDPSNIFFER_PROGRAM, "-d", "lo", "-f", filter, "-h", "127.0.0.1", "-p", std::to_string(recorder.port())},
        dir.file("udpsniffer.log"));
    expectCleanStop(udpsniffer, dir.file("udpsniffer.log"), SIGTERM);

    ChildProcess sniffer = startSniffer(
        dir, "Device=lo\nFilter=" + filter + "\nServerName=127.0.0.1\nServerPort=" + std::to_string(recorder.port()),
        "sniffer.log");
    expectCleanStop(sniffer, dir.file("sniffer.log"), SIGINT);
}

TEST(Replay, SnifferForwardsEverySipMessageAndTheListedRtpOverUdp) {
    UdpRecorder recorder;
    expectReplayMatchesTshark(
        recorder, SHARED_CAPTURES_DIR "/sip-call-g711.pcap", {{"200.57.7.204", 8000}, {"200.57.7.196", 40376}},
        [&](const std::string& device, const TempDir& dir) {
            return startSniffer(dir,
                                "Device=" + device + "\nFilter=udp\nServerName=127.0.0.1\nServerPort=" +
                                    std::to_string(recorder.port()) + "\nServerProtocol=UDP\n",
                                "program.log");
        });
}

TEST(Replay, UdpsnifferForwardsEverySipMessageAndTheListedRtpOverTcp) {
    TcpRecorder recorder;
    expectReplayMatchesTshark(recorder, SHARED_CAPTURES_DIR "/sip-call-dvi4.pcap",
                              {{"10.0.2.20", 6000}, {"10.0.2.15", 30490}, {"10.0.2.15", 25146}},
                              [&](const std::string& device, const TempDir& dir) {
                                  return ChildProcess({UDPSNIFFER_PROGRAM, "-d", device, "-f", "udp", "-h", "127.0.0.1",
                                                       "-p", std::to_string(recorder.port())},
                                                      dir.file("program.log"));
                              });
}
