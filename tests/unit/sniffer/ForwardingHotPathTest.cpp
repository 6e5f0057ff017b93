// What is still queued, or forwarded but not taken by the host, is dropped
// at the end; packets handed over directly are copied out of their owner's buffers.
#include <cstring>
#include <memory>

#include <gtest/gtest.h>

#include "EmbeddedConnection.h"
#include "Frames.h"
#include "SngDissector.h"
#include "Sniffer.h"

namespace {

const Bytes listedRtp = udpFrame({"10.0.0.1", 4000}, {"10.0.0.2", 5000}, Bytes(20, 9));

// An engine with no device and no consumer thread: the test consumes.
class ForwardingTest : public ::testing::Test {
protected:
    void SetUp() override {
        link->closeConnection();
        sniffer->setEmbedded(true);
        sniffer->setDevice("");
        ASSERT_EQ(sniffer->setupSniffing(), 0);
        dissector()->addRtp(0x0A000002, 5000);
    }
    SngDissector* dissector() { return sniffer->getDissector(); }
    int receive(char* buffer, int size) { return link->receivePacket(buffer, size); }

    EmbeddedConnection* link = EmbeddedConnection::dft();
    std::unique_ptr<Sniffer> sniffer = std::make_unique<Sniffer>();
};

TEST_F(ForwardingTest, PacketsStillQueuedAtTheEndAreDroppedUnsent) {
    for (int i = 0; i < 3; ++i)
        capture(listedRtp);
    EXPECT_FALSE(sniffer->allFilesRead());
    sniffer->stopSniffing();
    dissector()->consumePacket();
    char buffer[256];
    EXPECT_EQ(0, receive(buffer, sizeof buffer));
    EXPECT_TRUE(sniffer->allFilesRead());
}

TEST_F(ForwardingTest, FramesTheHostDidNotTakeAreDroppedWithTheEngine) {
    capture(listedRtp);
    dissector()->consumePacket();
    ASSERT_TRUE(dissector()->isDrained());
    sniffer.reset();
    char buffer[256];
    EXPECT_EQ(0, receive(buffer, sizeof buffer));
}

TEST_F(ForwardingTest, HandedOverPacketsAreCopiedAndTheirBuffersTaken) {
    SniffedPacket p;
    p.header = new pcap_pkthdr{};
    p.header->caplen = p.header->len = static_cast<bpf_u_int32>(listedRtp.size());
    p.packet = new u_char[listedRtp.size()];
    std::memcpy(p.packet, listedRtp.data(), listedRtp.size());
    dissector()->producePacket(p);
    EXPECT_EQ(p.packet, nullptr);
    EXPECT_EQ(p.header, nullptr);
    dissector()->consumePacket();
    char sent[256];
    ASSERT_EQ(15 + 20, receive(sent, sizeof sent));
    EXPECT_EQ(sent[15], 9);
    EXPECT_TRUE(sniffer->allFilesRead());
}

}  // namespace
