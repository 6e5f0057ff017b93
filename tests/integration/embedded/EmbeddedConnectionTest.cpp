// The in-process queues between the engine and a host, exercised directly.

#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "EmbeddedConnection.h"

namespace {

std::vector<u_char> bytes(int length, u_char first) {
    std::vector<u_char> frame(length);
    for (int i = 0; i < length; ++i)
        frame[i] = static_cast<u_char>(first + i);
    return frame;
}

class EmbeddedConnectionTest : public ::testing::Test {
protected:
    void SetUp() override { link->closeConnection(); }
    void TearDown() override {
        link->setMonitor(nullptr);
        link->closeConnection();
    }

    EmbeddedConnection* link = EmbeddedConnection::dft();
};

TEST_F(EmbeddedConnectionTest, FramesComeOutAsCopiesOldestFirstWithExactLengthsAndNothingBeyond) {
    const std::vector<std::vector<u_char>> sent = {bytes(15, 0), bytes(1500, 7), bytes(1, 200)};
    for (auto frame : sent) {
        ASSERT_EQ(static_cast<int>(frame.size()), link->sendPacket(frame.data(), frame.size()));
        frame.assign(frame.size(), 0xEE);  // the sender reuses its buffer
    }

    for (const auto& expected : sent) {
        std::vector<char> buffer(2048, '\x5A');
        ASSERT_EQ(static_cast<int>(expected.size()), link->receivePacket(buffer.data(), buffer.size()));
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), reinterpret_cast<u_char*>(buffer.data())));
        EXPECT_EQ(std::vector<char>(buffer.size() - expected.size(), '\x5A'),
                  std::vector<char>(buffer.begin() + expected.size(), buffer.end()));
    }
    std::vector<char> buffer(16, '\x5A');
    EXPECT_EQ(0, link->receivePacket(buffer.data(), buffer.size()));
    EXPECT_EQ(std::vector<char>(16, '\x5A'), buffer);
}

TEST_F(EmbeddedConnectionTest, CommandsComeOutInOrderAndCloseDropsFramesAndCommandsLeavingTheLinkUsable) {
    SnifferRequest add(1, 0xC0A8010A, 8000), heartbeat(3, 0, 0);
    EXPECT_TRUE(link->sendRequest(add));
    EXPECT_TRUE(link->sendRequest(heartbeat));
    SnifferRequest got;
    ASSERT_TRUE(link->receiveRequest(got));
    EXPECT_EQ(add, got);
    ASSERT_TRUE(link->receiveRequest(got));
    EXPECT_EQ(heartbeat, got);
    got = SnifferRequest(9, 1, 2);
    EXPECT_FALSE(link->receiveRequest(got));
    EXPECT_EQ(SnifferRequest(9, 1, 2), got);

    std::vector<u_char> frame = bytes(20, 9);
    link->sendPacket(frame.data(), frame.size());
    link->sendRequest(add);
    link->closeConnection();
    std::vector<char> buffer(64);
    EXPECT_EQ(0, link->receivePacket(buffer.data(), buffer.size()));
    EXPECT_FALSE(link->receiveRequest(got));
    link->sendPacket(frame.data(), frame.size());
    EXPECT_EQ(20, link->receivePacket(buffer.data(), buffer.size()));
}

// Counts how often the engine side takes the host's lock.
class CountingMonitor : public EmbeddedConnection::Monitor {
public:
    void enter() override { ++entered; }
    void exit() override { ++exited; }
    int entered = 0;
    int exited = 0;
};

TEST_F(EmbeddedConnectionTest, EngineSideTakesTheRegisteredMonitorOncePerQueueChange) {
    CountingMonitor monitor;
    link->setMonitor(&monitor);
    std::vector<u_char> frame = bytes(10, 0);
    link->sendPacket(frame.data(), frame.size());
    SnifferRequest got;
    link->receiveRequest(got);
    link->closeConnection();
    link->setMonitor(nullptr);

    EXPECT_EQ(3, monitor.entered);
    EXPECT_EQ(3, monitor.exited);
    // Unregistered again: nothing reaches the monitor any more.
    link->sendPacket(frame.data(), frame.size());
    EXPECT_EQ(3, monitor.entered);
}

// Without a host monitor both sides share the link's own lock: a sender and a
// host draining at the same time lose nothing and keep the order.
TEST_F(EmbeddedConnectionTest, ConcurrentSenderAndDrainerKeepEveryFrameInOrder) {
    constexpr int frames = 20000;
    std::thread sender([this] {
        for (int i = 0; i < frames; ++i) {
            u_char frame[4] = {static_cast<u_char>(i >> 24), static_cast<u_char>(i >> 16), static_cast<u_char>(i >> 8),
                               static_cast<u_char>(i)};
            link->sendPacket(frame, sizeof frame);
            SnifferRequest request(1, i, 0);
            link->sendRequest(request);
        }
    });
    int received = 0, commands = 0;
    u_char buffer[4];
    while (received < frames || commands < frames) {
        if (link->receivePacket(reinterpret_cast<char*>(buffer), sizeof buffer) == 4) {
            ASSERT_EQ(received, buffer[0] << 24 | buffer[1] << 16 | buffer[2] << 8 | buffer[3]);
            ++received;
        }
        SnifferRequest got;
        if (link->receiveRequest(got)) {
            ASSERT_EQ(static_cast<uint32_t>(commands), got.rtpAddr);
            ++commands;
        }
    }
    sender.join();
}

}  // namespace
