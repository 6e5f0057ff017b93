// The UDP link: one datagram per frame, one command per datagram, and frames
// redirected to whoever sent the last command.
#include <gtest/gtest.h>

#include "LogCapture.h"
#include "Network.h"
#include <pcap.h>

#include "CaptureFile.h"
#include "ChildProcess.h"
#include "EngineOptions.h"
#include "Frames.h"
#include "LogSearch.h"
#include "SnifferRun.h"
#include "UdpConnection.h"

namespace {
int send(UdpConnection& link, Bytes frame) {
    return link.sendPacket(frame.data(), static_cast<int>(frame.size()));
}

bool receive(UdpConnection& link, SnifferRequest& request) {
    return waitUntil([&] { return link.receiveRequest(request); }, 1s);
}
}  // namespace

// A datagram the socket refuses (over the 65,507 bytes UDP can carry) is
// dropped with the two error lines, and the link goes on with the next frame.
TEST(UdpLink, EachFrameIsOneDatagramAndARefusedOneIsLoggedAndDropped) {
    LogCapture log;
    UdpSocket recorder;
    UdpConnection link("127.0.0.1", recorder.port());
    const Bytes small = {0x00, 0x10, 0x01, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 'x'};
    const Bytes large(1400, 0x5A);
    EXPECT_EQ(16, send(link, small));
    EXPECT_EQ(-1, send(link, Bytes(70000, 0x5A)));
    EXPECT_TRUE(log.contains("ERROR", "len=70000, sent=-1\nError sento on socket"));
    EXPECT_EQ(1400, send(link, large));
    EXPECT_EQ(small, recorder.receive(1s));
    EXPECT_EQ(large, recorder.receive(1s));
}

TEST(UdpLink, CommandDatagramIsDecodedAndLoggedAndFramesGoToItsSender) {
    LogCapture log;
    UdpSocket recorder;
    UdpSocket takeover;
    UdpConnection link("127.0.0.1", recorder.port());
    SnifferRequest request;
    EXPECT_FALSE(link.receiveRequest(request));

    takeover.sendTo(localPort(link.getClientSd()), {0x03, 0x0A, 0x00, 0x00, 0x07, 0x9C, 0x40});
    ASSERT_TRUE(receive(link, request));
    EXPECT_EQ(SnifferRequest(3, 0x0A000007, 40000), request);
    EXPECT_TRUE(log.contains("DEBUG", "rx from server cmd=3, ip=10.0.0.7, port=40000, nRcvd=7"));
    EXPECT_FALSE(link.receiveRequest(request));

    const Bytes frame = {0x00, 0x0F, 0x03, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(15, send(link, frame));
    EXPECT_EQ(frame, takeover.receive(1s));
    EXPECT_TRUE(recorder.receive(100ms).empty());
}

// With CommandSource the datagram of a stranger (127.0.0.2, a second loopback
// address) is neither decoded nor followed, and a command queued behind it
// still takes effect; the stranger is counted each time, named once.
TEST(UdpLink, WithCommandSourceOnlyTheListedRecorderIsObeyedAndStrangersAreCountedAndNamedOnce) {
    LogCapture log;
    UdpSocket recorder;
    UdpSocket stranger(0, "127.0.0.2");
    EngineOptions options;
    ASSERT_TRUE(
        options.load([](const std::string& key) { return key == "CommandSource" ? "192.0.2.9, 127.0.0.1" : ""; }));
    EXPECT_EQ("CommandSource=192.0.2.9,127.0.0.1", options.describeChanges());
    EngineStats stats;
    UdpConnection link("127.0.0.1", recorder.port(),
                       CommandSourceFilter(options.commandSources, stats.commandsIgnored));
    const uint16_t port = localPort(link.getClientSd());

    stranger.sendTo(port, {0x01, 0x0A, 0x00, 0x00, 0x07, 0x9C, 0x40});
    stranger.sendTo(port, {0x01, 0x0A, 0x00, 0x00, 0x08, 0x9C, 0x40});
    recorder.sendTo(port, {0x03, 0x0A, 0x00, 0x00, 0x09, 0x9C, 0x40});
    SnifferRequest request;
    ASSERT_TRUE(receive(link, request));
    EXPECT_EQ(SnifferRequest(3, 0x0A000009, 40000), request);
    EXPECT_FALSE(link.receiveRequest(request));
    EXPECT_EQ(2u, EngineStats::read(stats.commandsIgnored));
    EXPECT_EQ(std::vector<std::string>{"Ignoring commands from 127.0.0.2: not a CommandSource"}, log.messages("WARN"));

    stranger.sendTo(port, {0x03, 0x0A, 0x00, 0x00, 0x07, 0x9C, 0x40});
    EXPECT_TRUE(
        waitUntil([&] { return link.receiveRequest(request) || EngineStats::read(stats.commandsIgnored) == 3; }, 1s));
    const Bytes frame = {0x00, 0x0F, 0x03, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(15, send(link, frame));
    EXPECT_EQ(frame, recorder.receive(1s));
    EXPECT_TRUE(stranger.receive(100ms).empty());

    for (const char* wrong : {"127.0.0.1,", "recorder", "127.0.0.1,,127.0.0.2", "127.0.0.256"})
        EXPECT_FALSE(EngineOptions().load([wrong](const std::string& key) {
            return key == "CommandSource" ? wrong : "";
        })) << wrong;
}

// The engine's stats line closes with the ignored commands only when
// CommandSource is given; the recorder's address is learnt from the first
// frame the engine sends it.
TEST(UdpLink, TheStatsLineCountsTheStrangersCommandsWhenCommandSourceIsGiven) {
    LogCapture log;
    UdpSocket recorder;
    UdpSocket stranger(0, "127.0.0.2");
    TempDir dir;
    writeCapture(
        dir.file("sip.pcap"), DLT_EN10MB,
        {udpFrame({"10.1.0.1", 5060}, {"10.1.0.2", 5060}, bytesOf("INVITE sip:bob@example.com SIP/2.0\r\n\r\n"))});
    OptionInEnvironment key("CommandSource", "127.0.0.1");
    SnifferRun run(
        {"-d", "file:" + dir.file("sip.pcap"), "-f", "", "-h", "127.0.0.1", "-p", std::to_string(recorder.port())},
        "UDP");
    ASSERT_EQ(0, run.setupResult());
    uint16_t enginePort = 0;
    ASSERT_FALSE(recorder.receive(2s, &enginePort).empty());
    stranger.sendTo(enginePort, {0x03, 0x0A, 0x00, 0x00, 0x07, 0x9C, 0x40});
    ASSERT_TRUE(waitForLog(log, "Ignoring commands from 127.0.0.2: not a CommandSource", 2s));
    run.stop();

    const std::vector<std::string> info = log.messages("INFO");
    const auto stats =
        std::find_if(info.rbegin(), info.rend(), [](const std::string& m) { return m.rfind("Stats: ", 0) == 0; });
    ASSERT_NE(info.rend(), stats);
    EXPECT_EQ("; commands ignored=1", stats->substr(stats->rfind(';')));
}
