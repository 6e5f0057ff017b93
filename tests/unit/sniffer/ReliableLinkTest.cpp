// The opt-in reliable link and pre-roll: a recorder that stops reading, a
// send buffer too small for one write, a recorder that goes and comes back,
// and RTP that arrives before the recorder lists its destination.
#include <gtest/gtest.h>

#include <algorithm>
#include <arpa/inet.h>
#include <cstdlib>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include "EngineOptions.h"
#include "EngineStats.h"
#include "Frames.h"
#include "LogCapture.h"
#include "LogSearch.h"
#include "Loopback.h"
#include "PreRollBuffer.h"
#include "Recorder.h"
#include "ReliableConnection.h"
#include "SnifferRun.h"

namespace {
// Frame i: a valid header, then its number and filler, 19 to 82 bytes long.
Bytes numberedFrame(uint32_t i) {
    const std::size_t length = 15 + 4 + (i * 7919u) % 64u;
    Bytes frame(length, uint8_t(i));
    frame[0] = uint8_t(length >> 8);
    frame[1] = uint8_t(length);
    frame[2] = 2;
    for (int b = 0; b < 4; ++b)
        frame[15 + b] = uint8_t(i >> (24 - 8 * b));
    return frame;
}

// A listening socket on 127.0.0.1 whose one connection the test reads by hand.
class RawListener {
public:
    RawListener() : fd(listenOnLoopback(port)) {}
    ~RawListener() {
        if (connection >= 0)
            close(connection);
        close(fd);
    }
    void accept() { connection = ::accept(fd, nullptr, nullptr); }
    // Reads until `count` bytes are in, the connection closes or 20 s pass.
    Bytes read(std::size_t count) {
        Bytes received;
        timeval wait{20, 0};
        setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
        uint8_t chunk[65536];
        while (received.size() < count) {
            const ssize_t n = recv(connection, chunk, std::min(sizeof chunk, count - received.size()), 0);
            if (n <= 0)
                break;
            received.insert(received.end(), chunk, chunk + n);
        }
        return received;
    }

    uint16_t port = 0;

private:
    int fd;
    int connection = -1;
};

}  // namespace

TEST(ReliableLink, AStalledReaderAndShortWritesLoseNoByte) {
    EngineOptions options;
    options.linkMode = EngineOptions::LinkMode::Reliable;
    options.sendBufferSize = 4096;  // far less than one write: every write is cut short
    EngineStats stats;
    RawListener recorder;
    ReliableConnection link("127.0.0.1", recorder.port, options, stats);
    recorder.accept();

    constexpr uint32_t frames = 100000;
    Bytes expected;
    std::thread sender([&] {
        for (uint32_t i = 0; i < frames; ++i) {
            Bytes frame = numberedFrame(i);
            ASSERT_EQ(int(frame.size()), link.sendPacket(frame.data(), int(frame.size())));
        }
    });
    for (uint32_t i = 0; i < frames; ++i) {
        const Bytes frame = numberedFrame(i);
        expected.insert(expected.end(), frame.begin(), frame.end());
    }
    Bytes received = recorder.read(expected.size() / 2);
    std::this_thread::sleep_for(2s);  // the recorder stops reading in mid-run: the scenario under test
    const Bytes rest = recorder.read(expected.size() - received.size());
    received.insert(received.end(), rest.begin(), rest.end());
    sender.join();

    ASSERT_EQ(expected.size(), received.size());
    EXPECT_TRUE(expected == received) << "the stream differs from the frames sent";
    EXPECT_EQ(0u, EngineStats::read(stats.linkLosses));
    EXPECT_EQ(0u, EngineStats::read(stats.droppedLinkDown));
}

TEST(ReliableLink, ARecorderThatEndsTheLinkIsReconnectedAtOnceAndItsCommandsTakeEffect) {
    LogCapture log;
    TcpRecorder recorder;
    OptionInEnvironment reliable("LinkMode", "reliable");
    SnifferRun run({"-d", "", "-h", "127.0.0.1", "-p", std::to_string(recorder.port())}, "TCP");
    ASSERT_EQ(0, run.setupResult());
    EXPECT_TRUE(log.contains("INFO", "Reliable TCP connection created"));
    ASSERT_TRUE(waitUntil([&] { return recorder.connected(); }, 2s));

    const Bytes rtp(160, 0xD5);
    ASSERT_TRUE(recorder.apply({command(1, "10.0.0.2", 5000)}));
    capture(udpFrame({"10.0.0.1", 4000}, {"10.0.0.2", 5000}, rtp));
    ASSERT_TRUE(recorder.next());

    // The recorder ends the link but is still there: the link must be back at
    // once, without the one-second pause kept for a recorder that refuses.
    const auto dropped = std::chrono::steady_clock::now();
    recorder.dropConnection();
    ASSERT_TRUE(waitUntil([&] { return recorder.connections() == 2; }, 3s));
    EXPECT_LT(std::chrono::steady_clock::now() - dropped, 900ms);
    EXPECT_TRUE(waitForLog(log, "Connection to recorder lost: the recorder closed the link", 1s));
    EXPECT_FALSE(log.contains("INFO", "Connecting to recorder 127.0.0.1:" + std::to_string(recorder.port())));

    // The destinations went with the old link; asked again, they are in force
    // for the very next packet.
    ASSERT_TRUE(recorder.apply({command(1, "10.0.0.2", 5000)}));
    capture(udpFrame({"10.0.0.1", 4000}, {"10.0.0.2", 5000}, rtp));
    const auto again = recorder.next();
    ASSERT_TRUE(again);
    EXPECT_EQ(rtp, again->payload());

    run.stop();
    // The counters at stop; the consumer's own last line may come before or after them.
    const auto info = log.messages("INFO");
    const auto stats =
        std::find_if(info.rbegin(), info.rend(), [](const std::string& line) { return line.rfind("Stats: ", 0) == 0; });
    ASSERT_NE(stats, info.rend()) << "the counters close the run";
    EXPECT_NE(std::string::npos, stats->find("forwarded sip=0 rtp=2 h323=0 heartbeat=2 bytes=380; link losses=1 "
                                             "reconnects=1 droppedLinkDown=0"))
        << *stats;
}

TEST(PreRoll, RtpBeforeTheAddIsForwardedInOrderAheadOfLaterPackets) {
    TcpRecorder recorder;
    OptionInEnvironment preRoll("RtpPreRoll", "1000");
    SnifferRun run({"-d", "", "-h", "127.0.0.1", "-p", std::to_string(recorder.port())}, "TCP");
    ASSERT_EQ(0, run.setupResult());

    const Bytes sip = bytesOf("SIP/2.0 200 OK\r\n\r\n");
    capture(udpFrame({"10.9.9.9", 5060}, {"10.9.9.8", 5060}, sip));
    ASSERT_TRUE(recorder.next());  // the link is up and reads commands
    for (uint8_t i = 0; i < 5; ++i)
        capture(udpFrame({"10.0.0.1", 4000}, {"10.0.0.2", 5000}, Bytes(40, i)));
    capture(udpFrame({"10.0.0.1", 4002}, {"10.0.0.3", 5002}, Bytes(40, 0xEE)));  // never listed
    ASSERT_TRUE(recorder.apply({command(1, "10.0.0.2", 5000)}));
    capture(udpFrame({"10.0.0.1", 4000}, {"10.0.0.2", 5000}, Bytes(40, 5)));

    for (uint8_t i = 0; i <= 5; ++i) {
        const auto frame = recorder.next();
        ASSERT_TRUE(frame);
        EXPECT_EQ(2, frame->protocol());
        EXPECT_EQ("10.0.0.2:5000", frame->destination());
        EXPECT_EQ("10.0.0.1:4000", frame->source());
        EXPECT_EQ(Bytes(40, i), frame->payload()) << "frame " << int(i) << " out of order";
    }
    EXPECT_FALSE(recorder.next(300ms));
}

TEST(PreRoll, HeldDatagramsExpireAndAFloodStaysWithinTheLimit) {
    EngineStats stats;
    constexpr std::size_t limit = 1 << 20;
    PreRollBuffer buffer(std::chrono::milliseconds(1000), limit, stats);
    const auto start = PreRollBuffer::Clock::now();
    auto datagram = [](uint32_t ip, uint8_t fill) {
        return PreRollBuffer::Datagram{ip, 5000, 1, 4000, Bytes(172, fill)};
    };

    buffer.hold(datagram(7, 1), start);
    buffer.hold(datagram(8, 2), start + 600ms);
    buffer.release(7, 5000);
    buffer.release(8, 5000);
    std::vector<uint8_t> forwarded;
    buffer.forwardReleased([&](const PreRollBuffer::Datagram& d) { forwarded.push_back(d.payload[0]); },
                           start + 1500ms);
    EXPECT_EQ(std::vector<uint8_t>{2}, forwarded) << "only the datagram within the pre-roll goes";

    for (uint32_t i = 0; i < 200000; ++i) {
        buffer.hold(datagram(100 + i % 1000, uint8_t(i)), start + 2s);
        ASSERT_LE(buffer.heldBytes(), limit);
    }
    EXPECT_GT(EngineStats::read(stats.preRollDropped), 0u);
    buffer.release(100 + 199999 % 1000, 5000);
    forwarded.clear();
    buffer.forwardReleased([&](const PreRollBuffer::Datagram& d) { forwarded.push_back(d.payload[0]); }, start + 2s);
    ASSERT_FALSE(forwarded.empty());
    EXPECT_EQ(uint8_t(199999), forwarded.back()) << "the newest are the ones kept";
}
