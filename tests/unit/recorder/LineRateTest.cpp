// The recorder at line rate: the backlog between the thread that reads the link and the one
// that follows calls, the bounded set of open files, and a burst through the whole program.
#include "Backlog.h"
#include "FileCache.h"
#include "RecorderHarness.h"
#include "RecordingFiles.h"

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

namespace recorder::test {
namespace {

// The frame a producer queues as its n-th: its size, bytes, addresses and time all follow from n.
Frame numbered(uint32_t n, std::string& payload) {
    payload.assign(1 + n % 1400, static_cast<char>(n));
    return Frame{n % 3 == 0 ? Protocol::Sip : Protocol::Rtp,
                 {n, static_cast<uint16_t>(n)},
                 {~n, static_cast<uint16_t>(n >> 16)},
                 payload,
                 TimePoint(std::chrono::microseconds(n))};
}

TEST(RecorderBacklog, HandsEveryRecordOverInOrderAcrossThreadsAndChunks) {
    constexpr uint32_t kFrames = 300000;  // about 200 MiB through 1 MiB chunks, reused
    Backlog backlog(size_t{64} << 20);
    std::thread producer([&] {
        std::string payload;
        for (uint32_t n = 0; n < kFrames; ++n) {
            while (!backlog.push(LinkEvent::Frame, numbered(n, payload)))
                std::this_thread::yield();  // full: the consumer makes room
            if (n % 50000 == 0)
                backlog.push(LinkEvent::Connected);
            if (n % 37 == 0)
                backlog.publish();
        }
        backlog.publish();
    });
    uint32_t next = 0, events = 0, wrong = 0;
    std::string expected;
    const auto deadline = std::chrono::steady_clock::now() + 60s;
    while (next < kFrames && std::chrono::steady_clock::now() < deadline) {
        backlog.consume(100ms, [&](LinkEvent event, const Frame& frame) {
            if (event == LinkEvent::Connected) {
                events += next % 50000 == 1 ? 1 : 1000;  // right after its frame, or counted as wrong
                return;
            }
            const Frame want = numbered(next++, expected);
            wrong += frame.protocol != want.protocol || frame.payload != want.payload || frame.source != want.source ||
                     frame.destination != want.destination || frame.arrival != want.arrival;
        });
    }
    producer.join();
    EXPECT_EQ(next, kFrames);
    EXPECT_EQ(wrong, 0u);
    EXPECT_EQ(events, 6u);
    EXPECT_EQ(backlog.queuedBytes(), 0u);
    EXPECT_GT(backlog.peakBytes(), 0u);
}

TEST(RecorderBacklog, FullBacklogDropsRtpFirstAndCountsItThenTakesFramesAgain) {
    Backlog backlog(2 << 20);
    const std::string payload(1000, 'r');
    const Frame rtp{Protocol::Rtp, {1, 2}, {3, 4}, payload, {}};
    size_t taken = 0;
    while (backlog.push(LinkEvent::Frame, rtp))
        ++taken;
    EXPECT_EQ(taken, 2 * Backlog::kChunkSize / 1032);  // two chunks of 32-byte headers and 1000 bytes
    EXPECT_FALSE(backlog.push(LinkEvent::Frame, rtp));
    EXPECT_EQ(backlog.droppedFrames(), 2u);

    // Signalling and the link's events still find room past the limit.
    const Frame bye{Protocol::Sip, {1, 5060}, {3, 5060}, "BYE sip:b SIP/2.0", {}};
    EXPECT_TRUE(backlog.push(LinkEvent::Frame, bye));
    EXPECT_TRUE(backlog.push(LinkEvent::Lost));
    backlog.publish();

    std::vector<std::string> seen;
    EXPECT_EQ(backlog.consume(0ms,
                              [&](LinkEvent event, const Frame& frame) {
                                  if (event != LinkEvent::Frame || frame.protocol != Protocol::Rtp)
                                      seen.push_back(event == LinkEvent::Lost ? "lost" : std::string(frame.payload));
                              }),
              taken + 2);
    EXPECT_EQ(seen, (std::vector<std::string>{"BYE sip:b SIP/2.0", "lost"}));
    EXPECT_EQ(backlog.queuedBytes(), 0u);
    EXPECT_TRUE(backlog.push(LinkEvent::Frame, rtp));
}

TEST(RecorderFileCache, KeepsEveryFileWholeWithFewDescriptorsOpen) {
    TempDir dir;
    FileCache files(3);
    std::vector<FileCache::Id> ids;
    for (int f = 0; f < 10; ++f)
        ids.push_back(files.add(dir.file("file-" + std::to_string(f))));
    // Ten files written in turns: each turn closes one to reopen another, which must not truncate.
    for (uint64_t turn = 0; turn < 20; ++turn)
        for (int f = 0; f < 10; ++f) {
            const std::string piece = std::to_string(f) + ":" + std::to_string(turn) + ";";
            ASSERT_TRUE(files.writeAt(ids[f], turn * 8, piece.data(), piece.size()));
            EXPECT_LE(files.openCount(), 3u);
        }
    for (const FileCache::Id id : ids)
        files.remove(id);
    EXPECT_EQ(files.openCount(), 0u);
    for (int f = 0; f < 10; ++f) {
        const std::string text = readFile(dir.file("file-" + std::to_string(f)));
        ASSERT_EQ(text.size(), 19 * 8 + std::to_string(f).size() + 4) << f;
        for (uint64_t turn = 0; turn < 20; ++turn)
            EXPECT_EQ(text.substr(turn * 8, 2 + std::to_string(turn).size()),
                      std::to_string(f) + ":" + std::to_string(turn))
                << f;
    }
}

// A second of a busy site's RTP in one burst, while the call's folder is being made: every frame
// reaches call.pcap and the counts, and the counters say so at stop.
TEST(RecorderLineRate, BurstOfTwoHundredThousandFramesIsRecordedWhole) {
    constexpr uint32_t kFrames = 200000;
    RecorderProcess recorder({"--linger", "0.1"});
    TcpSniffer sniffer(recorder.port());
    sniffer.send(sipFrame(sipRequest("INVITE", "burst", sdp("10.0.0.1", 4000, 8))));
    sniffer.send(sipFrame(sipResponse(200, "INVITE", "burst", sdp("10.0.0.2", 5000, 8)), false));
    Bytes burst;
    burst.reserve(size_t{kFrames} * (15 + 12 + 160));
    for (uint32_t n = 0; n < kFrames; ++n) {
        const bool fromCaller = n % 2 == 0;
        const uint16_t sequence = static_cast<uint16_t>(n / 2);
        std::string rtp = {'\x80', 8, static_cast<char>(sequence >> 8),     static_cast<char>(sequence), 0, 0, 0, 0, 0,
                           0,      0, static_cast<char>(fromCaller ? 1 : 2)};
        rtp += std::string(160, '\xd5');
        const Bytes one = frame(2, fromCaller ? kCallerRtp : kCalleeRtp, fromCaller ? kCalleeRtp : kCallerRtp, rtp);
        burst.insert(burst.end(), one.begin(), one.end());
    }
    sniffer.send(burst);
    sniffer.send(sipFrame(sipRequest("BYE", "burst")));

    const auto calls = recorder.waitForCalls(1, 60s);
    ASSERT_EQ(calls.size(), 1u) << recorder.log();
    EXPECT_NE(calls[0].find("\"codec\":\"PCMA/8000\",\"packets\":100000,\"bytes\":17200000,\"lost\":0"),
              std::string::npos)
        << calls[0];
    // The pcap: its header, then per packet a record header, Ethernet, IPv4 and UDP headers and
    // the payload; three SIP messages and every RTP packet.
    const std::string folder = jsonValue(calls[0], "folder");
    const uintmax_t sipBytes =
        std::filesystem::file_size(folder + "/call.pcap") - 24 - uintmax_t{kFrames} * (16 + 42 + 172);
    EXPECT_EQ(sipBytes, 3 * (16 + 42) + sipRequest("INVITE", "burst", sdp("10.0.0.1", 4000, 8)).size() +
                            sipResponse(200, "INVITE", "burst", sdp("10.0.0.2", 5000, 8)).size() +
                            sipRequest("BYE", "burst").size());
    ASSERT_EQ(recorder.stop(), 0);
    EXPECT_TRUE(recorder.waitForLog("Stats: received sip 3 frames/", 0ms)) << recorder.log();
    EXPECT_TRUE(recorder.waitForLog("rtp 200000 frames/" + std::to_string(kFrames * (15 + 172)) + " bytes", 0ms));
    EXPECT_TRUE(recorder.waitForLog("dropped 0 frames; calls open 0, recorded 1; commands sent 8;", 0ms));
}

}  // namespace
}  // namespace recorder::test
