// An embedded engine driven without a JVM: frames are handed to the capture
// callback, commands and forwarded frames pass through the in-process link.

#include <arpa/inet.h>
#include <chrono>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "EmbeddedConnection.h"
#include "Sniffer.h"
#include "SngDissector.h"

namespace {

using Bytes = std::vector<u_char>;

constexpr uint32_t phone = 0x0A000001;     // 10.0.0.1
constexpr uint32_t gateway = 0x0A000005;   // 10.0.0.5
const std::string invite = "INVITE sip:bob@example.com SIP/2.0\r\nCall-ID: 42\r\n\r\n";

void put16(Bytes& b, std::size_t at, uint16_t v) {
    b[at] = v >> 8;
    b[at + 1] = v & 0xFF;
}

void put32(Bytes& b, std::size_t at, uint32_t v) {
    put16(b, at, v >> 16);
    put16(b, at + 2, v & 0xFFFF);
}

// An Ethernet frame carrying one IPv4/UDP datagram.
Bytes udpFrame(uint32_t src, uint16_t sport, uint32_t dst, uint16_t dport, const std::string& payload) {
    Bytes frame(14 + 20 + 8 + payload.size());
    put16(frame, 12, 0x0800);
    frame[14] = 0x45;
    put16(frame, 16, static_cast<uint16_t>(20 + 8 + payload.size()));
    frame[22] = 64;
    frame[23] = IPPROTO_UDP;
    put32(frame, 26, src);
    put32(frame, 30, dst);
    put16(frame, 34, sport);
    put16(frame, 36, dport);
    put16(frame, 38, static_cast<uint16_t>(8 + payload.size()));
    std::memcpy(frame.data() + 42, payload.data(), payload.size());
    return frame;
}

// The forwarded frame the host expects for a datagram of that class.
Bytes forwarded(u_char protocol, uint32_t src, uint16_t sport, uint32_t dst, uint16_t dport, const std::string& payload) {
    Bytes frame(15 + payload.size());
    put16(frame, 0, static_cast<uint16_t>(frame.size()));
    frame[2] = protocol;
    put32(frame, 3, dst);
    put16(frame, 7, dport);
    put32(frame, 9, src);
    put16(frame, 13, sport);
    std::memcpy(frame.data() + 15, payload.data(), payload.size());
    return frame;
}

class EmbeddedEngineTest : public ::testing::Test {
protected:
    // An engine with no capture device: frames come only from capture().
    void SetUp() override {
        link->closeConnection();
        engine = std::make_unique<Sniffer>();
        engine->setEmbedded(true);
        ASSERT_EQ(0, engine->setDevice(""));
        ASSERT_EQ(0, engine->setupSniffing());
        consumer = std::thread([this] { engine->startSniffing(); });
    }

    void TearDown() override { endRun(); }

    // Stops the run and deletes the engine, as the host bridge does.
    void endRun() {
        if (!engine)
            return;
        engine->stopSniffing();
        consumer.join();
        engine.reset();
    }

    static void capture(const Bytes& frame) {
        pcap_pkthdr header{};
        header.caplen = header.len = frame.size();
        Sniffer::gotPacket(nullptr, &header, frame.data());
    }

    void command(uint16_t code, uint32_t ip, uint16_t port) {
        SnifferRequest request(code, ip, port);
        link->sendRequest(request);
    }

    // The next frame the engine forwards, or nothing after five seconds.
    Bytes nextFrame() {
        char buffer[2048];
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (std::chrono::steady_clock::now() < deadline) {
            const int length = link->receivePacket(buffer, sizeof buffer);
            if (length > 0)
                return Bytes(buffer, buffer + length);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return {};
    }

    // Commands are polled after each packet: this SIP datagram makes the
    // engine read them, and its own frame marks that it has been handled.
    void passMarker(uint16_t sport) {
        capture(udpFrame(phone, sport, gateway, 5060, invite));
        EXPECT_EQ(forwarded(1, phone, sport, gateway, 5060, invite), nextFrame());
    }

    EmbeddedConnection* link = EmbeddedConnection::dft();
    std::unique_ptr<Sniffer> engine;
    std::thread consumer;
};

TEST_F(EmbeddedEngineTest, SipDatagramReachesTheHostAsAProtocolOneFrame) {
    capture(udpFrame(phone, 5062, gateway, 5060, invite));
    EXPECT_EQ(forwarded(1, phone, 5062, gateway, 5060, invite), nextFrame());
}

TEST_F(EmbeddedEngineTest, AddCommandForwardsThatDestinationAsRtpUntilRemoved) {
    const std::string rtp(160, '\x80');
    command(1, gateway, 7000);
    passMarker(1);

    capture(udpFrame(phone, 4000, gateway, 7002, rtp));  // not listed: dropped
    capture(udpFrame(phone, 4000, gateway, 7000, rtp));
    EXPECT_EQ(forwarded(2, phone, 4000, gateway, 7000, rtp), nextFrame());

    command(2, gateway, 7000);
    passMarker(2);
    capture(udpFrame(phone, 4000, gateway, 7000, rtp));
    passMarker(3);
}

TEST_F(EmbeddedEngineTest, HeartbeatIsAnsweredAfterTheNextPacket) {
    command(3, 0, 0);
    capture(udpFrame(phone, 4000, gateway, 9999, "not wanted"));
    const Bytes reply = nextFrame();
    ASSERT_EQ(15u, reply.size());
    EXPECT_EQ((Bytes{0x00, 0x0F, 0x03}), Bytes(reply.begin(), reply.begin() + 3));
}

TEST_F(EmbeddedEngineTest, FramesTheHostDidNotTakeAreDroppedWithTheEngine) {
    capture(udpFrame(phone, 5062, gateway, 5060, invite));
    while (!engine->getDissector()->isDrained())
        std::this_thread::yield();
    endRun();
    char buffer[256];
    EXPECT_EQ(0, link->receivePacket(buffer, sizeof buffer));
}

}  // namespace
