// The TCP link against a real recorder on 127.0.0.1: frames out, 7-byte
// commands in through the receive ring, and the recorder going away and
// coming back while the engine runs.
#include <gtest/gtest.h>

#include <thread>

#include "Frames.h"
#include "LogCapture.h"
#include "LogSearch.h"
#include "Recorder.h"
#include "SnifferRun.h"
#include "TcpConnection.h"

namespace {
Bytes frameOfLength(std::size_t length) {
    Bytes frame(length, 0x5A);
    frame[0] = uint8_t(length >> 8);
    frame[1] = uint8_t(length);
    frame[2] = 1;
    return frame;
}

int send(TcpConnection& link, Bytes frame) {
    return link.sendPacket(frame.data(), static_cast<int>(frame.size()));
}
}  // namespace

class TcpLink : public testing::Test {
protected:
    void SetUp() override {
        link = std::make_unique<TcpConnection>("127.0.0.1", recorder.port());
        link->tcpConnect();
        ASSERT_TRUE(waitUntil([&] { return recorder.connected(); }, 2s));
        // The connect completes on the first send, which also makes the link read commands.
        ASSERT_EQ(17, send(*link, frameOfLength(17)));
        ASSERT_TRUE(recorder.next());
    }

    // Bytes from the recorder, given time to arrive before the link reads.
    void recorderSends(const Bytes& bytes) {
        recorder.send(bytes);
        std::this_thread::sleep_for(50ms);
    }

    LogCapture log;
    TcpRecorder recorder;
    std::unique_ptr<TcpConnection> link;
};

TEST_F(TcpLink, FramesArriveWholeAndInOrder) {
    EXPECT_EQ(0, link->sendPacket(nullptr, 15));
    EXPECT_EQ(0, send(*link, {}));
    const std::vector<Bytes> frames = {frameOfLength(15), frameOfLength(1500), frameOfLength(40000)};
    for (const Bytes& frame : frames)
        EXPECT_EQ(static_cast<int>(frame.size()), send(*link, frame));
    for (const Bytes& frame : frames) {
        const auto received = recorder.next();
        ASSERT_TRUE(received);
        EXPECT_EQ(frame, received->bytes);
    }
    EXPECT_TRUE(log.contains("INFO", "Tcp socket send buffer size=60000"));
}

TEST_F(TcpLink, CommandsAreDecodedWholeHoweverTheSegmentsCutThem) {
    const Bytes add = command(1, "10.0.0.7", 40000);
    SnifferRequest request;
    recorderSends(Bytes(add.begin(), add.begin() + 4));
    EXPECT_FALSE(link->receiveRequest(request));
    recorderSends(Bytes(add.begin() + 4, add.end()));
    ASSERT_TRUE(link->receiveRequest(request));
    EXPECT_EQ(SnifferRequest(1, 0x0A000007, 40000), request);
    EXPECT_FALSE(link->receiveRequest(request));
    EXPECT_TRUE(log.contains("DEBUG", "rx from server cmd=1, ip=10.0.0.7, port=40000"));

    Bytes two = command(2, "192.168.1.2", 4321);
    const Bytes heartbeat = {3, 9, 9, 9, 9, 9, 9};
    two.insert(two.end(), heartbeat.begin(), heartbeat.end());
    recorderSends(two);
    ASSERT_TRUE(link->receiveRequest(request));
    EXPECT_EQ(SnifferRequest(2, 0xC0A80102, 4321), request);
    // A heartbeat's address bytes are not decoded: the record keeps the last ones.
    ASSERT_TRUE(link->receiveRequest(request));
    EXPECT_EQ(SnifferRequest(3, 0xC0A80102, 4321), request);
    EXPECT_FALSE(link->receiveRequest(request));
    EXPECT_TRUE(log.contains("DEBUG", "Heartbeat request received"));
}

// 571 commands fill 3997 of the ring's 4000 bytes, so the next one wraps;
// 1000 commands (7000 bytes) are more than the ring holds at once.
TEST_F(TcpLink, CommandsWrappingOrOverrunningTheReceiveRingAreDecodedWhole) {
    for (const std::size_t count : {571, 1000}) {
        SCOPED_TRACE(testing::Message() << count << " commands");
        Bytes stream;
        for (uint16_t port = 2000; port < 2000 + count; ++port) {
            const Bytes c = command(1, "10.0.0.2", port);
            stream.insert(stream.end(), c.begin(), c.end());
        }
        recorderSends(stream);
        std::vector<uint16_t> ports;
        SnifferRequest request;
        while (ports.size() < count && link->receiveRequest(request)) {
            ports.push_back(request.rtpPort);
            ASSERT_EQ(0x0A000002u, request.rtpAddr);
        }
        ASSERT_EQ(count, ports.size());
        for (std::size_t i = 0; i < ports.size(); ++i)
            ASSERT_EQ(2000 + i, ports[i]) << "command " << i;
        EXPECT_FALSE(link->receiveRequest(request));
    }
    recorderSends(command(2, "172.16.5.6", 7070));
    SnifferRequest request;
    ASSERT_TRUE(link->receiveRequest(request));
    EXPECT_EQ(SnifferRequest(2, 0xAC100506, 7070), request);
}

TEST_F(TcpLink, RecorderClosingInTheMiddleOfACommandClosesTheLink) {
    recorderSends({1, 10, 0});
    recorder.stop();
    std::this_thread::sleep_for(50ms);
    SnifferRequest request;
    EXPECT_FALSE(link->receiveRequest(request));
    EXPECT_FALSE(link->receiveRequest(request));
    EXPECT_FALSE(link->isConnected());
    EXPECT_TRUE(log.contains("INFO", "Connection to Recorder closed."));
    EXPECT_EQ(SnifferRequest(), request);
}

// ---------------------------------------------------------------- outage

// Set up with an unknown transport name, which falls back to TCP.
TEST(TcpRecorderOutage, LinkReconnectsWithinTwoSecondsOfTheRecorderComingBackAndForgetsRtpListAndQueue) {
    LogCapture log;
    TcpRecorder recorder;
    const std::string port = std::to_string(recorder.port());
    SnifferRun run({"-d", "", "-h", "127.0.0.1", "-p", port}, "SCTP");
    ASSERT_EQ(0, run.setupResult());
    EXPECT_TRUE(log.contains("ERROR", "Invalid ServerProtocol assuming TCP"));
    EXPECT_TRUE(log.contains("INFO", "TCP connection created"));
    const auto sip = [](const char* text) {
        return udpFrame({"10.0.0.1", 5060}, {"10.0.0.2", 5060}, bytesOf(std::string("SIP/2.0 200 ") + text));
    };
    const Bytes rtp = udpFrame({"10.0.0.1", 4000}, {"10.0.0.2", 5000}, Bytes(40, 0xD5));
    capture(sip("before"));
    ASSERT_TRUE(recorder.next());
    ASSERT_TRUE(recorder.apply({command(1, "10.0.0.2", 5000)}));
    capture(rtp);
    ASSERT_EQ(2, recorder.next().value().protocol());

    const std::size_t outage = log.events().size();
    recorder.stop();
    const std::string connecting = "Connecting to recorder 127.0.0.1:" + port;
    ASSERT_TRUE(waitUntil(
        [&] {
            capture(sip("lost"));
            return waitForLog(log, connecting, 1500ms, outage);
        },
        6s));
    // The failed attempt empties the queue, then sleeps a second; what is
    // queued meanwhile goes with the next failed attempt.
    ASSERT_TRUE(waitForLog(log, "Dissector packet queue cleared.", 1s, logIndex(log, connecting, outage)));
    const std::size_t queued = log.events().size();
    for (const char* text : {"queued-1", "queued-2", "queued-3"})
        capture(sip(text));
    ASSERT_TRUE(waitForLog(log, "Dissector packet queue cleared.", 3s, queued));
    EXPECT_EQ("Dissector packet queue cleared. 2 packets dumped.",
              log.events()[logIndex(log, "Dissector packet queue cleared.", queued, true)].message);

    recorder.start();
    const auto back = std::chrono::steady_clock::now();
    ASSERT_TRUE(waitUntil(
        [&] {
            capture(sip("back"));
            return recorder.connected();
        },
        5s));
    const auto reconnect =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - back);
    RecordProperty("reconnect_ms", std::to_string(reconnect.count()));
    EXPECT_LT(reconnect, 2s);
    ASSERT_TRUE(waitUntil(
        [&] {
            capture(sip("back"));
            return recorder.next(1500ms).has_value();
        },
        8s));
    EXPECT_EQ(1, countPrefix(log, "Connecting to recorder ", outage));
    EXPECT_TRUE(log.contains("INFO", "Connected to recorder 127.0.0.1:" + port));
    EXPECT_EQ(1, countPrefix(log, "Connected to recorder ", outage));

    // The recorder has to name its RTP destinations again.
    capture(rtp);
    capture(sip("marker"));
    auto next = recorder.next();
    while (next && next->payload() == bytesOf("SIP/2.0 200 back"))
        next = recorder.next();
    ASSERT_TRUE(next);
    EXPECT_EQ(bytesOf("SIP/2.0 200 marker"), next->payload());
    ASSERT_TRUE(recorder.apply({command(1, "10.0.0.2", 5000)}));
    capture(rtp);
    EXPECT_EQ(2, recorder.next().value().protocol());
    for (const ForwardedFrame& frame : recorder.received())
        EXPECT_EQ(std::string::npos, std::string(frame.bytes.begin(), frame.bytes.end()).find("queued"));
}
