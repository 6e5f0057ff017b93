// An embedded engine driven without a JVM: frames are handed to the capture
// callback, commands and forwarded frames pass through the in-process link.

#include <arpa/inet.h>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "EmbeddedConnection.h"
#include "Frames.h"
#include "SngDissector.h"
#include "Sniffer.h"
#include "SnifferRun.h"

namespace {

const Endpoint phone{"10.0.0.1", 4000};
const Endpoint gateway{"10.0.0.5", 5060};
const Bytes invite = bytesOf("INVITE sip:bob@example.com SIP/2.0\r\nCall-ID: 42\r\n\r\n");

void put(Bytes& b, Endpoint e) {
    const uint32_t ip = ntohl(inet_addr(e.ip));
    b.insert(b.end(), {uint8_t(ip >> 24), uint8_t(ip >> 16), uint8_t(ip >> 8), uint8_t(ip), uint8_t(e.port >> 8),
                       uint8_t(e.port)});
}

// The forwarded frame the host expects for a datagram of that class.
Bytes forwarded(uint8_t protocol, Endpoint src, Endpoint dst, const Bytes& payload) {
    const std::size_t length = 15 + payload.size();
    Bytes frame = {uint8_t(length >> 8), uint8_t(length), protocol};
    put(frame, dst);
    put(frame, src);
    frame.insert(frame.end(), payload.begin(), payload.end());
    return frame;
}

class EmbeddedEngineTest : public ::testing::Test {
protected:
    // An engine with no capture device: frames come only from capture().
    void SetUp() override {
        link->closeConnection();
        run = std::make_unique<SnifferRun>(std::vector<std::string>{"-d", ""}, nullptr);
        ASSERT_EQ(0, run->setupResult());
    }

    void command(uint16_t code, const char* ip, uint16_t port) {
        SnifferRequest request(code, ntohl(inet_addr(ip)), port);
        link->sendRequest(request);
    }

    // The next frame the engine forwards, or nothing after five seconds.
    Bytes nextFrame() {
        char buffer[2048];
        int length = 0;
        waitUntil([&] { return (length = link->receivePacket(buffer, sizeof buffer)) > 0; }, 5s);
        return Bytes(buffer, buffer + length);
    }

    // Commands are polled after each packet: this SIP datagram makes the
    // engine read them, and its own frame marks that it has been handled.
    void passMarker(uint16_t sport) {
        capture(udpFrame({phone.ip, sport}, gateway, invite));
        EXPECT_EQ(forwarded(1, {phone.ip, sport}, gateway, invite), nextFrame());
    }

    EmbeddedConnection* link = EmbeddedConnection::dft();
    std::unique_ptr<SnifferRun> run;
};

TEST_F(EmbeddedEngineTest, AddCommandForwardsThatDestinationAsRtpUntilRemoved) {
    const Bytes rtp(160, 0x80);
    const Endpoint media{gateway.ip, 7000};
    command(1, media.ip, media.port);
    passMarker(1);

    capture(udpFrame(phone, {gateway.ip, 7002}, rtp));  // not listed: dropped
    capture(udpFrame(phone, media, rtp));
    EXPECT_EQ(forwarded(2, phone, media, rtp), nextFrame());

    command(2, media.ip, media.port);
    passMarker(2);
    capture(udpFrame(phone, media, rtp));
    passMarker(3);
}

TEST_F(EmbeddedEngineTest, HeartbeatIsAnsweredAfterTheNextPacket) {
    command(3, "0.0.0.0", 0);
    capture(udpFrame(phone, {gateway.ip, 9999}, bytesOf("not wanted")));
    const Bytes reply = nextFrame();
    ASSERT_EQ(15u, reply.size());
    EXPECT_EQ((Bytes{0x00, 0x0F, 0x03}), Bytes(reply.begin(), reply.begin() + 3));
}

TEST_F(EmbeddedEngineTest, FramesTheHostDidNotTakeAreDroppedWithTheEngine) {
    capture(udpFrame(phone, gateway, invite));
    while (!run->sniffer().getDissector()->isDrained())
        std::this_thread::yield();
    run.reset();  // stops the run and deletes the engine, as the host bridge does
    char buffer[256];
    EXPECT_EQ(0, link->receivePacket(buffer, sizeof buffer));
}

}  // namespace
