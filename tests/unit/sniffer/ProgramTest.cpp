// The stand-alone programs as a user runs them (`sniffer` configured from a
// properties file, `udpsniffer` from its command line) replaying recorded
// calls through a "file:" device; what reaches a test recorder is compared
// with tshark's reading of the same capture.
#include <gtest/gtest.h>

#include <csignal>

#include "Bytes.h"
#include "SharedCaptures.h"
#include "Frames.h"
#include "Network.h"
#include "PcapFeed.h"
#include "Programs.h"
#include "Recorder.h"
#include "TsharkCapture.h"

namespace {
// A capture file header (Ethernet) with no packet behind it.
const std::string emptyCapture(
    "\xD4\xC3\xB2\xA1\x02\x00\x04\x00\x00\x00\x00\x00\x00\x00\x00\x00"
    "\xFF\xFF\x00\x00\x01\x00\x00\x00",
    24);

void expectSetupFailure(SnifferProgram& program) {
    const std::optional<int> status = program.wait(10s);
    ASSERT_TRUE(status) << "still running";
    EXPECT_NE(0, *status);
    const std::string text = program.output();
    EXPECT_NE(std::string::npos, text.find("Couldn't parse filter udp and and:")) << text;
    EXPECT_NE(std::string::npos, text.find("Errors in setup, terminating...\n"));
}

void expectCleanStop(SnifferProgram& program, int signal) {
    ASSERT_TRUE(program.waitForLog("PCAP thread created 0")) << program.output();
    program.signal(signal);
    EXPECT_EQ(0, program.wait(5s)) << "did not stop on signal " << signal;
    EXPECT_NE(std::string::npos, program.output().find("Sniffing ended.")) << program.output();
}

// Replays `capture` through a program started by `launch` (given the device
// name): the first packet, which is SIP, brings the link up; then the
// recorder lists `rtp`; then the rest of the file follows. Compares the
// forwarded SIP payloads and the number of RTP frames with tshark's.
template <typename Launch>
void expectReplayMatchesTshark(Recorder& recorder, const std::string& capture, const std::vector<Endpoint>& rtp,
                               Launch launch) {
    if (onPath("tshark").empty())
        GTEST_SKIP() << "tshark is not installed";
    REQUIRE_SHARED_CAPTURE(capture);

    PcapFeed feed(capture);
    feed.begin();
    const std::unique_ptr<SnifferProgram> program = launch(feed.device());
    ASSERT_TRUE(recorder.next(5s)) << program->output();
    std::vector<Bytes> commands;
    std::string rtpRule;
    for (const Endpoint& d : rtp) {
        commands.push_back(command(1, d.ip, d.port));
        rtpRule += std::string(rtpRule.empty() ? "" : " || ") + "(ip.dst==" + d.ip +
                   " && udp.dstport==" + std::to_string(d.port) + ")";
    }
    ASSERT_TRUE(recorder.apply(commands)) << program->output();
    feed.finish();
    EXPECT_EQ(0, program->wait(30s)) << "did not stop cleanly at the end of the capture\n" << program->output();

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

TEST(Programs, FilterThatDoesNotCompileOrAKeyOutOfRangeIsReportedOnStandardError) {
    const TempDir dir;
    dir.write("empty.pcap", emptyCapture);
    const std::string device = "file:" + dir.file("empty.pcap");
    SnifferProgram udpsniffer(
        CommandLine{{UDPSNIFFER_PROGRAM, "-d", device, "-f", "udp and and", "-h", "127.0.0.1", "-p", "9"}});
    expectSetupFailure(udpsniffer);
    SnifferProgram sniffer({"Device=" + device, "Filter=udp and and"});
    expectSetupFailure(sniffer);

    SnifferProgram outOfRange({"Device=" + device, "Filter=udp", "CaptureTimeout=0"});
    ASSERT_TRUE(outOfRange.wait(10s));
    EXPECT_NE(std::string::npos, outOfRange.output().find(
                                     "Invalid value of CaptureTimeout: \"0\", expected a whole number from 1 to 1000"))
        << outOfRange.output();
    EXPECT_NE(std::string::npos, outOfRange.output().find("Errors in setup, terminating...\n"));
}

TEST(Programs, StopCleanlyOnSigtermOrSigint) {
    if (!runningAsRoot())
        GTEST_SKIP() << "live capture needs root";
    TcpRecorder recorder;
    const UdpSocket target;
    const std::string filter = "udp and dst port " + std::to_string(target.port());
    const std::string port = std::to_string(recorder.port());
    SnifferProgram udpsniffer(
        CommandLine{{UDPSNIFFER_PROGRAM, "-d", "lo", "-f", filter, "-h", "127.0.0.1", "-p", port}});
    expectCleanStop(udpsniffer, SIGTERM);
    SnifferProgram sniffer({"Device=lo", "Filter=" + filter, "ServerName=127.0.0.1", "ServerPort=" + port});
    expectCleanStop(sniffer, SIGINT);
}

TEST(Replay, SnifferForwardsEverySipMessageAndTheListedRtpOverUdp) {
    UdpRecorder recorder;
    expectReplayMatchesTshark(recorder, sharedCapture("sip-call-g711.pcap"),
                              {{"200.57.7.204", 8000}, {"200.57.7.196", 40376}}, [&](const std::string& device) {
                                  return std::make_unique<SnifferProgram>(std::vector<std::string>{
                                      "Device=" + device, "Filter=udp", "ServerName=127.0.0.1",
                                      "ServerPort=" + std::to_string(recorder.port()), "ServerProtocol=UDP"});
                              });
}

TEST(Replay, UdpsnifferForwardsEverySipMessageAndTheListedRtpOverTcp) {
    TcpRecorder recorder;
    expectReplayMatchesTshark(
        recorder, sharedCapture("sip-call-dvi4.pcap"),
        {{"10.0.2.20", 6000}, {"10.0.2.15", 30490}, {"10.0.2.15", 25146}}, [&](const std::string& device) {
            return std::make_unique<SnifferProgram>(CommandLine{{UDPSNIFFER_PROGRAM, "-d", device, "-f", "udp", "-h",
                                                                 "127.0.0.1", "-p", std::to_string(recorder.port())}});
        });
}
