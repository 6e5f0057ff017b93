// H.323 calls through the whole engine: the stand-alone sniffer forwards
// their descriptions to a recorder, for a real call replayed from a capture
// and for a synthetic call played live on loopback.
#include <gtest/gtest.h>
#include <optional>
#include <thread>
#include <unistd.h>

#include "ChildProcess.h"
#include "SharedCaptures.h"
#include "FrameReceiver.h"
#include "Programs.h"
#include "SyntheticCall.h"

namespace {

using namespace std::chrono_literals;

const char* const kLogConfig =
    "log4j.rootLogger=DEBUG, A\nlog4j.appender.A=org.apache.log4j.ConsoleAppender\n"
    "log4j.appender.A.layout=org.apache.log4j.PatternLayout\nlog4j.appender.A.layout.ConversionPattern=%p %m%n\n";

class H323Engine : public ::testing::Test {
protected:
    // The stand-alone sniffer on `device`, forwarding to the recorder over UDP.
    void startSniffer(const std::string& device, const std::string& filter) {
        dir.write("sniffer.properties", "Device=" + device + "\nFilter=" + filter +
                                            "\nServerName=127.0.0.1\nServerPort=" + std::to_string(recorder.port()) +
                                            "\nServerProtocol=UDP\nLogLevel=DEBUG\nTraceSignalling=yes\n");
        dir.write("log4cxx.properties", kLogConfig);
        sniffer.emplace(std::vector<std::string>{SNIFFER_PROGRAM, "-c", dir.file("sniffer.properties"), "-l",
                                                 dir.file("log4cxx.properties")},
                        dir.file("sniffer.log"));
    }
    std::string snifferLog() const { return readFile(dir.file("sniffer.log")); }

    TempDir dir;
    UdpFrameReceiver recorder;
    std::optional<ChildProcess> sniffer;
};

std::vector<std::string> texts(const std::vector<Frame>& frames) {
    std::vector<std::string> all;
    for (const Frame& f : frames) {
        EXPECT_EQ(f.protocol(), 4u);
        EXPECT_EQ(f.length(), f.bytes.size());
        EXPECT_EQ(f.bytes.back(), '\0');
        all.push_back(f.text());
    }
    return all;
}

TEST_F(H323Engine, RealCallReplayedFromCaptureReachesTheRecorderAsDescriptions) {
    const std::string capture = sharedCapture("h323-call-separate-h245.pcap");
    REQUIRE_SHARED_CAPTURE(capture);
    startSniffer("file:" + capture, "tcp");
    // With only a replay file the sniffer stops by itself once all is sent.
    ASSERT_TRUE(sniffer->waitFor(10s));
    EXPECT_EQ(sniffer->exitStatus(), 0);
    const std::vector<Frame> frames = recorder.receive(100, 300ms);

    // Setup, CallProceeding, Alerting and Connect on the call-signalling
    // connection; the channels and their acks on the H.245 connection that
    // Connect announced (10.1.6.18:1232), with the media tshark shows.
    const std::string call = "r:30708\nc:c0fef93e-cd9e-d611-9ab2-000476222017\n";
    const std::vector<std::string> expected = {
        "t:5\n" + call + "s:m.jemec\nd:",
        "t:2\n" + call.substr(0, call.size() - 1),
        "t:1\n" + call.substr(0, call.size() - 1),
        "t:7\n" + call.substr(0, call.size() - 1),
        "t:130\nr:30708\nm:101:fcodec:g711Alaw64k 30,",
        "t:130\nr:30708\nm:61:fcodec:g711Alaw64k 30,",
        "t:131\nr:30708\na:61:rtp:10.1.3.143 5000",
        "t:131\nr:30708\na:101:rtp:10.1.6.18 2006",
    };
    EXPECT_EQ(texts(frames), expected);
    // Each frame carries the addresses of its segment: Setup 10.1.3.143:32803 -> 10.1.6.18:1720.
    ASSERT_FALSE(frames.empty());
    EXPECT_EQ(frames[0].bytes.substr(3, 12), std::string("\x0a\x01\x06\x12\x06\xb8\x0a\x01\x03\x8f\x80\x23", 12));
    EXPECT_NE(snifferLog().find("Inserted 30708 and 10.1.6.18:1232 into Call Reference Map"), std::string::npos);
}

TEST_F(H323Engine, SyntheticCallOnLoopbackIsDescribedMessageByMessage) {
    if (geteuid() != 0)
        GTEST_SKIP() << "live capture needs root";
    const unsigned port = 31720 + unsigned(getpid() % 1000) * 2;
    startSniffer("lo", "tcp port " + std::to_string(port) + " or tcp port " + std::to_string(port + 1));
    // The devices are open before the capture threads start: from then on the call's packets are kept.
    ASSERT_TRUE(waitForText(dir.file("sniffer.log"), "PCAP thread created", 10s)) << snifferLog();

    ChildProcess call({H323CALL_PROGRAM, "--port", std::to_string(port), "--rtp-packets", "2", "--media-delay-ms", "0"},
                      dir.file("call.log"));
    ASSERT_TRUE(call.waitFor(20s));
    ASSERT_EQ(call.exitStatus(), 0) << readFile(dir.file("call.log"));

    h323call::Addresses addresses;
    addresses.h245Port = port + 1;
    std::vector<std::string> expected;
    for (const h323call::Step& step : h323call::syntheticCall(addresses))
        expected.push_back(step.description.substr(0, step.description.size() - 1));
    // libpcap hands packets over within its one-second read time-out.
    const std::vector<Frame> frames = recorder.receive(expected.size(), 5s);
    EXPECT_EQ(texts(frames), expected);

    sniffer->stop();
    EXPECT_EQ(sniffer->exitStatus(), 0);
    const std::string log = snifferLog();
    EXPECT_NE(log.find("DEBUG CallRefMap is empty\nDEBUG h245Map is empty"), std::string::npos) << log;
}

}  // namespace
