// The stand-alone programs as a user runs them: `sniffer` configured from a
// properties file, `udpsniffer` from its command line. Recorded calls are
// replayed through a "file:" device and what reaches a test recorder is
// compared with tshark's reading of the same capture.
#include <gtest/gtest.h>

#include <csignal>

#include "ChildProcess.h"
#include "Network.h"
#include "PcapFeed.h"
#include "Recorder.h"
#include "TempFile.h"
#include "Tshark.h"

namespace {
const std::string logConfig =
    "log4j.rootLogger=INFO, out\n"
    "log4j.appender.out=org.apache.log4j.ConsoleAppender\n"
    "log4j.appender.out.layout=org.apache.log4j.PatternLayout\n"
    "log4j.appender.out.layout.ConversionPattern=%p %m%n\n";

// A capture file header (Ethernet) with no packet behind it.
const std::string emptyCapture("\xD4\xC3\xB2\xA1\x02\x00\x04\x00\x00\x00\x00\x00\x00\x00\x00\x00"
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

void expectSetupFailure(ChildProcess& program) {
    const auto status = program.wait(10s);
    ASSERT_TRUE(status) << "still running";
    EXPECT_NE(0, *status);
    EXPECT_NE(std::string::npos, program.output().find("Couldn't parse filter udp and and:")) << program.output();
    EXPECT_NE(std::string::npos, program.output().find("Errors in setup, terminating...\n"));
}

void expectCleanStop(ChildProcess& program, int signal) {
    ASSERT_TRUE(program.waitForOutput("PCAP thread created 0", 5s)) << program.output();
    program.signal(signal);
    const auto status = program.wait(5s);
    ASSERT_TRUE(status) << "did not stop on signal " << signal;
    EXPECT_EQ(0, *status);
    EXPECT_TRUE(appearsInOrder(program.output(), {"Ending Sniffing ...", "Completed join with PCAP thread 0 status=0",
                                                  "Completed join with Command reader thread, status=0"}))
        << program.output();
    EXPECT_NE(std::string::npos, program.output().find("Sniffing ended."));
}

std::string hex(const Bytes& bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (uint8_t b : bytes) {
        text += digits[b >> 4];
        text += digits[b & 0x0F];
    }
    return text;
}

// Replays `capture` through a program started by `launch` (given the device
// name): the first packet, which is SIP, brings the link up; then the
// recorder lists `rtp`; then the rest of the file follows. Compares the
// forwarded SIP payloads and the number of RTP frames with tshark's.
template <typename Launch>
void expectReplayMatchesTshark(Recorder& recorder, const std::string& capture, const std::vector<Destination>& rtp,
                               Launch launch) {
    if (!ChildProcess::available("tshark"))
        GTEST_SKIP() << "tshark is not installed";
    if (access(capture.c_str(), R_OK) != 0)
        GTEST_SKIP() << capture << " is absent: the shared captures are not next to the source tree";

    PcapFeed feed(capture);
    feed.begin(1);
    ChildProcess program = launch(feed.device());
    ASSERT_TRUE(recorder.next(5s)) << program.output();
    std::vector<Bytes> commands;
    std::string rtpRule;
    for (const Destination& d : rtp) {
        commands.push_back(command(1, d.ip, d.port));
        rtpRule += std::string(rtpRule.empty() ? "" : " || ") + "(ip.dst==" + d.ip +
                   " && udp.dstport==" + std::to_string(d.port) + ")";
    }
    ASSERT_TRUE(recorder.apply(commands)) << program.output();
    feed.finish();
    const auto status = program.wait(30s);
    ASSERT_TRUE(status) << "did not stop at the end of the capture";
    EXPECT_EQ(0, *status) << program.output();

    const auto oracle = tshark::udpPayloads(capture, {tshark::sipRule, "(" + rtpRule + ") && !(" + tshark::sipRule + ")"});
    const std::vector<std::string>& sip = oracle[0];
    const std::size_t rtpCount = oracle[1].size();
    ASSERT_FALSE(sip.empty());
    ASSERT_GT(rtpCount, 0u);
    const auto forwarded = [&](int protocol) {
        std::vector<std::string> payloads;
        for (const ForwardedFrame& frame : recorder.received())
            if (frame.protocol() == protocol)
                payloads.push_back(hex(frame.payload()));
        return payloads;
    };
    waitUntil([&] { return forwarded(1).size() + forwarded(2).size() >= sip.size() + rtpCount; }, 5s);
    EXPECT_EQ(sip, forwarded(1));
    EXPECT_EQ(rtpCount, forwarded(2).size());
}
}  // namespace

TEST(Programs, FilterThatDoesNotCompileIsReportedOnStandardError) {
    const TempFile capture(emptyCapture, ".pcap");
    ChildProcess udpsniffer({UDPSNIFFER_PROGRAM, "-d", "file:" + capture.path(), "-f", "udp and and", "-h",
                             "127.0.0.1", "-p", "9"});
    expectSetupFailure(udpsniffer);

    const TempFile logging(logConfig);
    const TempFile properties("Device=file:" + capture.path() + "\nFilter=udp and and\nServerName=127.0.0.1\n");
    ChildProcess sniffer({SNIFFER_PROGRAM, "-c", properties.path(), "-l", logging.path()});
    expectSetupFailure(sniffer);
}

TEST(Programs, StopInOrderOnSigtermOrSigint) {
    if (!runningAsRoot())
        GTEST_SKIP() << "live capture needs root";
    TcpRecorder recorder;
    const UdpSocket target;
    const std::string filter = "udp and dst port " + std::to_string(target.port());
    ChildProcess udpsniffer(
        {UDPSNIFFER_PROGRAM, "-d", "lo", "-f", filter, "-h", "127.0.0.1", "-p", std::to_string(recorder.port())});
    expectCleanStop(udpsniffer, SIGTERM);

    const TempFile logging(logConfig);
    const TempFile properties("Device=lo\nFilter=" + filter + "\nServerName=127.0.0.1\nServerPort=" +
                              std::to_string(recorder.port()) + "\n");
    ChildProcess sniffer({SNIFFER_PROGRAM, "-c", properties.path(), "-l", logging.path()});
    expectCleanStop(sniffer, SIGINT);
}

TEST(Replay, SnifferForwardsEverySipMessageAndTheListedRtpOverUdp) {
    UdpRecorder recorder;
    const TempFile logging(logConfig);
    std::unique_ptr<TempFile> properties;
    expectReplayMatchesTshark(recorder, SHARED_CAPTURES_DIR "/sip-call-g711.pcap",
                              {{"200.57.7.204", 8000}, {"200.57.7.196", 40376}}, [&](const std::string& device) {
                                  properties = std::make_unique<TempFile>(
                                      "Device=" + device + "\nFilter=udp\nServerName=127.0.0.1\nServerPort=" +
                                      std::to_string(recorder.port()) + "\nServerProtocol=UDP\n");
                                  return ChildProcess({SNIFFER_PROGRAM, "-c", properties->path(), "-l",
                                                       logging.path()});
                              });
}

TEST(Replay, UdpsnifferForwardsEverySipMessageAndTheListedRtpOverTcp) {
    TcpRecorder recorder;
    expectReplayMatchesTshark(recorder, SHARED_CAPTURES_DIR "/sip-call-dvi4.pcap",
                              {{"10.0.2.20", 6000}, {"10.0.2.15", 30490}, {"10.0.2.15", 25146}},
                              [&](const std::string& device) {
                                  return ChildProcess({UDPSNIFFER_PROGRAM, "-d", device, "-f", "udp", "-h",
                                                       "127.0.0.1", "-p", std::to_string(recorder.port())});
                              });
}
