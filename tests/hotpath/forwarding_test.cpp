// Frames handed to the capture callback reach the recorder link unchanged in
// content and order, and what is still queued at the end is dropped.
#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "BaseConnection.h"
#include "SngDissector.h"
#include "Sniffer.h"

namespace {

class RecordingConnection : public BaseConnection {
public:
    explicit RecordingConnection(std::vector<std::vector<u_char>>& sent) : sent(sent) {}
    bool receiveRequest(SnifferRequest&) override { return false; }
    int sendPacket(u_char* buffer, int length) override {
        sent.emplace_back(buffer, buffer + length);
        return length;
    }
    void closeConnection() override {}

private:
    std::vector<std::vector<u_char>>& sent;
};

// Ethernet, IPv4 and UDP headers in front of `payload`.
std::vector<u_char> udpFrame(uint32_t src, uint16_t sport, uint32_t dst, uint16_t dport,
                             const std::vector<u_char>& payload) {
    std::vector<u_char> f(14 + 20 + 8 + payload.size());
    f[12] = 0x08;
    f[14] = 0x45;
    f[14 + 9] = IPPROTO_UDP;
    const uint16_t ipLen = htons(static_cast<uint16_t>(20 + 8 + payload.size()));
    std::memcpy(&f[14 + 2], &ipLen, 2);
    const uint32_t s = htonl(src), d = htonl(dst);
    std::memcpy(&f[14 + 12], &s, 4);
    std::memcpy(&f[14 + 16], &d, 4);
    const uint16_t ports[] = {htons(sport), htons(dport), htons(static_cast<uint16_t>(8 + payload.size())), 0};
    std::memcpy(&f[34], ports, sizeof ports);
    std::copy(payload.begin(), payload.end(), f.begin() + 42);
    return f;
}

class ForwardingTest : public ::testing::Test {
protected:
    void SetUp() override {
        sniffer.setEmbedded(true);
        sniffer.setDevice("");
        ASSERT_EQ(sniffer.setupSniffing(), 0);
        dissector()->useConnections(new RecordingConnection(sent), nullptr);
    }
    SngDissector* dissector() { return sniffer.getDissector(); }
    void capture(const std::vector<u_char>& frame) {
        pcap_pkthdr h{};
        h.caplen = h.len = static_cast<bpf_u_int32>(frame.size());
        Sniffer::gotPacket(nullptr, &h, frame.data());
    }

    Sniffer sniffer;
    std::vector<std::vector<u_char>> sent;
};

TEST_F(ForwardingTest, ListedRtpAndSipGoOutFramedInCaptureOrder) {
    const std::vector<u_char> rtp(160, 0xD5);
    const std::string invite = "INVITE sip:bob@10.0.0.2 SIP/2.0\r\n\r\n";
    const std::vector<u_char> sip(invite.begin(), invite.end());
    dissector()->addRtp(0x0A000002, 5000);

    capture(udpFrame(0x0A000001, 4000, 0x0A000002, 5000, rtp));
    capture(udpFrame(0x0A000001, 4000, 0x0A000003, 5000, rtp));  // not listed
    capture(udpFrame(0x0A000001, 5060, 0x0A000002, 5060, sip));
    for (int i = 0; i < 3; ++i)
        dissector()->consumePacket();

    ASSERT_EQ(sent.size(), 2u);
    const std::vector<u_char> header = {0x00, 0xAF, 0x02, 0x0A, 0x00, 0x00, 0x02, 0x13,
                                        0x88, 0x0A, 0x00, 0x00, 0x01, 0x0F, 0xA0};
    ASSERT_EQ(sent[0].size(), header.size() + rtp.size());
    EXPECT_TRUE(std::equal(header.begin(), header.end(), sent[0].begin()));
    EXPECT_TRUE(std::equal(rtp.begin(), rtp.end(), sent[0].begin() + 15));
    ASSERT_EQ(sent[1].size(), 15 + sip.size());
    EXPECT_EQ(sent[1][2], 1);
    EXPECT_EQ(std::string(sent[1].begin() + 15, sent[1].end()), invite);
    EXPECT_TRUE(sniffer.allFilesRead());
}

TEST_F(ForwardingTest, PacketsStillQueuedAtTheEndAreDroppedUnsent) {
    dissector()->addRtp(0x0A000002, 5000);
    for (int i = 0; i < 3; ++i)
        capture(udpFrame(0x0A000001, 4000, 0x0A000002, 5000, std::vector<u_char>(160, 1)));
    EXPECT_FALSE(sniffer.allFilesRead());
    sniffer.stopSniffing();
    dissector()->consumePacket();
    EXPECT_TRUE(sent.empty());
    EXPECT_TRUE(sniffer.allFilesRead());
}

TEST_F(ForwardingTest, HandedOverPacketsAreCopiedAndTheirBuffersTaken) {
    dissector()->addRtp(0x0A000002, 5000);
    const auto frame = udpFrame(0x0A000001, 4000, 0x0A000002, 5000, std::vector<u_char>(20, 9));
    SniffedPacket p;
    p.header = new pcap_pkthdr{};
    p.header->caplen = p.header->len = static_cast<bpf_u_int32>(frame.size());
    p.packet = new u_char[frame.size()];
    std::memcpy(p.packet, frame.data(), frame.size());
    dissector()->producePacket(p);
    EXPECT_EQ(p.packet, nullptr);
    EXPECT_EQ(p.header, nullptr);
    dissector()->consumePacket();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].size(), 15u + 20u);
    EXPECT_EQ(sent[0][15], 9);
}

}  // namespace
