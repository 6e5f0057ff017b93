// What is still queued at the end is dropped, and packets handed over
// directly are copied out of their owner's buffers.
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "BaseConnection.h"
#include "Frames.h"
#include "SngDissector.h"
#include "Sniffer.h"

namespace {

class RecordingConnection : public BaseConnection {
public:
    explicit RecordingConnection(std::vector<Bytes>& sent) : sent(sent) {}
    bool receiveRequest(SnifferRequest&) override { return false; }
    int sendPacket(u_char* buffer, int length) override {
        sent.emplace_back(buffer, buffer + length);
        return length;
    }
    void closeConnection() override {}

private:
    std::vector<Bytes>& sent;
};

const Bytes listedRtp = udpFrame({"10.0.0.1", 4000}, {"10.0.0.2", 5000}, Bytes(20, 9));

class ForwardingTest : public ::testing::Test {
protected:
    void SetUp() override {
        sniffer.setEmbedded(true);
        sniffer.setDevice("");
        ASSERT_EQ(sniffer.setupSniffing(), 0);
        dissector()->useConnections(new RecordingConnection(sent), nullptr);
        dissector()->addRtp(0x0A000002, 5000);
    }
    SngDissector* dissector() { return sniffer.getDissector(); }

    Sniffer sniffer;
    std::vector<Bytes> sent;
};

TEST_F(ForwardingTest, PacketsStillQueuedAtTheEndAreDroppedUnsent) {
    for (int i = 0; i < 3; ++i)
        capture(listedRtp);
    EXPECT_FALSE(sniffer.allFilesRead());
    sniffer.stopSniffing();
    dissector()->consumePacket();
    EXPECT_TRUE(sent.empty());
    EXPECT_TRUE(sniffer.allFilesRead());
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
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].size(), 15u + 20u);
    EXPECT_EQ(sent[0][15], 9);
    EXPECT_TRUE(sniffer.allFilesRead());
}

}  // namespace
