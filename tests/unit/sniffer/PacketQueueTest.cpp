#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "PacketQueue.h"

namespace {

std::atomic<bool> stopped{false};
bool isStopped() {
    return stopped.load();
}

pcap_pkthdr headerFor(std::size_t caplen, std::size_t len, long seconds = 1) {
    pcap_pkthdr h{};
    h.ts.tv_sec = seconds;
    h.ts.tv_usec = 7;
    h.caplen = static_cast<bpf_u_int32>(caplen);
    h.len = static_cast<bpf_u_int32>(len);
    return h;
}

// A frame whose bytes name it: its number, then a fill derived from it.
std::vector<u_char> numbered(uint32_t n, std::size_t size) {
    std::vector<u_char> bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<u_char>(n * 31 + i);
    std::memcpy(bytes.data(), &n, sizeof n);
    return bytes;
}

uint32_t numberOf(const PacketQueue::Frame& f) {
    uint32_t n;
    std::memcpy(&n, f.packet, sizeof n);
    return n;
}

class PacketQueueTest : public ::testing::Test {
protected:
    void SetUp() override { stopped = false; }
    void push(uint32_t n, std::size_t size) {
        const auto bytes = numbered(n, size);
        queue.push(headerFor(size, size, n), bytes.data());
    }
    PacketQueue queue;
};

// Bytes past the captured length, up to the wire length and the padding, read as zeros.
TEST_F(PacketQueueTest, HandsOverFramesInOrderWithHeaderBytesAndZeroPadding) {
    const std::vector<std::pair<std::size_t, std::size_t>> sizes = {
        {60, 60}, {214, 214}, {1514, 1514}, {9000, 9000}, {300000, 300000}, {42, 42}, {100, 160}};
    for (uint32_t n = 0; n < sizes.size(); ++n) {
        const auto bytes = numbered(n, sizes[n].first);
        queue.push(headerFor(sizes[n].first, sizes[n].second, n), bytes.data());
    }
    for (uint32_t n = 0; n < sizes.size(); ++n) {
        const auto [caplen, len] = sizes[n];
        PacketQueue::Frame f;
        ASSERT_TRUE(queue.next(f, isStopped));
        EXPECT_EQ(f.header->caplen, caplen);
        EXPECT_EQ(f.header->len, len);
        EXPECT_EQ(f.header->ts.tv_sec, static_cast<long>(n));
        EXPECT_EQ(f.header->ts.tv_usec, 7);
        const auto expected = numbered(n, caplen);
        EXPECT_EQ(0, std::memcmp(f.packet, expected.data(), caplen)) << "frame " << n;
        const std::vector<u_char> zeros(len - caplen + PacketQueue::framePadding, 0);
        EXPECT_EQ(0, std::memcmp(f.packet + caplen, zeros.data(), zeros.size())) << "frame " << n;
    }
    EXPECT_EQ(queue.pushed(), sizes.size());
}

TEST_F(PacketQueueTest, EndStopsTheConsumerAndClearCountsWhatWasLeftIncludingItsBatch) {
    for (uint32_t n = 0; n < 5; ++n)
        push(n, 200);
    PacketQueue::Frame f;
    ASSERT_TRUE(queue.next(f, isStopped));  // the consumer now holds all five as its batch
    stopped = true;
    EXPECT_FALSE(queue.next(f, isStopped));
    push(5, 200);
    EXPECT_EQ(queue.clear(), 5u);
    EXPECT_EQ(queue.clear(), 0u);
}

TEST_F(PacketQueueTest, ClearOnAnotherThreadLeavesTheFrameInHandIntact) {
    for (uint32_t n = 0; n < 3; ++n)
        push(n, 1000);
    PacketQueue::Frame held;
    ASSERT_TRUE(queue.next(held, isStopped));
    std::thread other([this] {
        EXPECT_EQ(queue.clear(), 2u);
        for (uint32_t n = 100; n < 2000; ++n)  // enough to reuse every spare chunk
            push(n, 1000);
    });
    other.join();
    const auto expected = numbered(0, 1000);
    EXPECT_EQ(0, std::memcmp(held.packet, expected.data(), 1000));
    PacketQueue::Frame f;
    ASSERT_TRUE(queue.next(f, isStopped));
    EXPECT_EQ(numberOf(f), 100u);  // the two dropped frames are not handed over
}

TEST_F(PacketQueueTest, WaitingConsumerWakesForAFrameAndForTheEnd) {
    std::atomic<int> got{-1};
    std::thread consumer([this, &got] {
        PacketQueue::Frame f;
        got = queue.next(f, isStopped) ? static_cast<int>(numberOf(f)) : -2;
        got = got * 10 + (queue.next(f, isStopped) ? 1 : 0);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    push(4, 100);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    stopped = true;
    queue.wake();
    consumer.join();
    EXPECT_EQ(got.load(), 40);  // frame 4, then no frame: the end
}

TEST_F(PacketQueueTest, FramesOfConcurrentProducersArriveCompleteAndEachInItsOwnOrder) {
    constexpr uint32_t perProducer = 30000;
    auto produce = [this](uint32_t base) {
        for (uint32_t i = 0; i < perProducer; ++i)
            push(base + i, 60 + i % 1400);
    };
    std::thread a(produce, 0), b(produce, 1u << 24);
    uint32_t nextA = 0, nextB = 1u << 24;
    for (uint32_t i = 0; i < 2 * perProducer; ++i) {
        PacketQueue::Frame f;
        ASSERT_TRUE(queue.next(f, isStopped));
        const uint32_t n = numberOf(f);
        uint32_t& expected = n < (1u << 24) ? nextA : nextB;
        ASSERT_EQ(n, expected);
        const auto bytes = numbered(n, f.header->len);
        ASSERT_EQ(0, std::memcmp(f.packet, bytes.data(), f.header->len));
        ++expected;
    }
    a.join();
    b.join();
    EXPECT_EQ(queue.pushed(), 2 * perProducer);
}

}  // namespace
