// Capture files of every link type the engine reads, written by the test and
// replayed through "file:" devices: the IPv4 packets in them are forwarded
// as they would be from Ethernet, anything else is dropped without a word,
// and a link type the engine does not read takes its device out of the run.
#include <gtest/gtest.h>

#include <pcap.h>

#include "CaptureFile.h"
#include "ChildProcess.h"
#include "Frames.h"
#include "LogCapture.h"
#include "LogSearch.h"
#include "Recorder.h"
#include "SnifferRun.h"

namespace {
const Endpoint phone{"10.1.0.1", 5060}, proxy{"10.1.0.2", 5070};
const Bytes invite = bytesOf("INVITE sip:bob@example.com SIP/2.0\r\n\r\n");
const Bytes ringing = bytesOf("SIP/2.0 180 Ringing\r\n\r\n");

const Bytes inviteIp = withoutEthernet(udpFrame(phone, proxy, invite));
const Bytes ringingIp = withoutEthernet(udpFrame(proxy, phone, ringing));
const Bytes arpBody = {0x00, 0x01, 0x08, 0x00, 0x06, 0x04, 0x00, 0x01, 0x02, 0, 0, 0, 0, 0x01,
                       10,   1,    0,    1,    0,    0,    0,    0,    0,    0, 10, 1, 0, 2};
// An IPv6 header (UDP, no payload) and its 40 bytes.
Bytes ipv6Packet() {
    Bytes b = {0x60, 0, 0, 0, 0, 8, 17, 64};
    b.resize(40, 0x01);
    b.insert(b.end(), {0x13, 0xC4, 0x13, 0xC4, 0, 8, 0, 0});
    return b;
}

Bytes behind(Bytes link, const Bytes& packet) {
    link.insert(link.end(), packet.begin(), packet.end());
    return link;
}

Bytes cooked(uint16_t protocol) {
    return {0, 0, 0, 1, 0, 6, 0x02, 0, 0, 0, 0, 0x01, 0, 0, uint8_t(protocol >> 8), uint8_t(protocol)};
}

Bytes cooked2(uint16_t protocol) {
    return {uint8_t(protocol >> 8), uint8_t(protocol), 0, 0, 0, 0, 0, 1, 0, 1, 0, 6, 0x02, 0, 0, 0, 0, 0x01, 0, 0};
}

Bytes familyBigEndian(uint32_t family) {
    return {uint8_t(family >> 24), uint8_t(family >> 16), uint8_t(family >> 8), uint8_t(family)};
}

Bytes familyLittleEndian(uint32_t family) {
    return {uint8_t(family), uint8_t(family >> 8), uint8_t(family >> 16), uint8_t(family >> 24)};
}

constexpr uint32_t afInet = 2;
constexpr uint32_t afInet6Linux = 10;
}  // namespace

class LinkTypes : public testing::Test {
protected:
    // No filter: every frame of the file reaches the engine, which must sort
    // them itself.
    std::unique_ptr<SnifferRun> start(const std::string& devices) {
        return std::make_unique<SnifferRun>(std::vector<std::string>{"-d", devices, "-f", "", "-h", "127.0.0.1", "-p",
                                                                     std::to_string(recorder.port())},
                                            "UDP");
    }

    static void expectSip(const ForwardedFrame& frame, Endpoint src, Endpoint dst, const Bytes& payload) {
        EXPECT_EQ(1, frame.protocol());
        EXPECT_EQ(static_cast<int>(15 + payload.size()), frame.length());
        EXPECT_EQ(std::string(dst.ip) + ":" + std::to_string(dst.port), frame.destination());
        EXPECT_EQ(std::string(src.ip) + ":" + std::to_string(src.port), frame.source());
        EXPECT_EQ(payload, frame.payload());
    }

    LogCapture log;
    UdpRecorder recorder;
    TempDir dir;
};

// In each file the INVITE comes first and the 180 last; in between, a runt
// cut inside the link header and a packet that is not IPv4. Any frame wrongly
// forwarded would come between the two.
TEST_F(LinkTypes, EachLinkTypeForwardsItsIpv4SipAndDropsRuntsAndOtherProtocolsSilently) {
    const struct {
        const char* name;
        int linkType;
        Bytes inviteLink, otherLink, ringingLink;
        Bytes other;
    } cases[] = {
        {"Linux cooked", DLT_LINUX_SLL, cooked(0x0800), cooked(0x0806), cooked(0x0800), arpBody},
        {"Linux cooked v2", DLT_LINUX_SLL2, cooked2(0x0800), cooked2(0x86DD), cooked2(0x0800), ipv6Packet()},
        {"raw IP", DLT_RAW, {}, {}, {}, ipv6Packet()},
        {"IPv4", DLT_IPV4, {}, {}, {}, ipv6Packet()},
        // Either byte order: the file does not say which host wrote it.
        {"BSD loopback", DLT_NULL, familyLittleEndian(afInet), familyLittleEndian(afInet6Linux),
         familyBigEndian(afInet), ipv6Packet()},
        {"OpenBSD loopback", DLT_LOOP, familyBigEndian(afInet), familyLittleEndian(afInet), familyBigEndian(afInet),
         inviteIp},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = dir.file(std::to_string(c.linkType) + ".pcap");
        const Bytes runt(c.inviteLink.begin(), c.inviteLink.begin() + c.inviteLink.size() / 2);
        writeCapture(path, c.linkType,
                     {behind(c.inviteLink, inviteIp), runt, behind(c.otherLink, c.other), behind(c.ringingLink, ringingIp)});
        const auto run = start("file:" + path);
        ASSERT_EQ(0, run->setupResult());

        const auto got = recorder.next(2u);
        ASSERT_EQ(2u, got.size());
        expectSip(got[0], phone, proxy, invite);
        expectSip(got[1], proxy, phone, ringing);
    }
    EXPECT_FALSE(containsPrefix(log, "ERROR", ""));
}

TEST_F(LinkTypes, CookedFramesCarryingLabelsAreReadOnlyWithDecapsulation) {
    const std::string path = dir.file("labels.pcap");
    writeCapture(path, DLT_LINUX_SLL,
                 {behind(cooked(0x8847), behind({0, 1, 1, 64}, inviteIp)), behind(cooked(0x0800), ringingIp)});
    for (const char* decapsulate : {"no", "yes"}) {
        SCOPED_TRACE(decapsulate);
        const OptionInEnvironment option("Decapsulate", decapsulate);
        const auto run = start("file:" + path);
        ASSERT_EQ(0, run->setupResult());
        const bool labelsRead = std::string(decapsulate) == "yes";
        // Forwarded, the INVITE would come before the 180, the file's last frame.
        const auto got = recorder.next(labelsRead ? 2u : 1u);
        ASSERT_EQ(labelsRead ? 2u : 1u, got.size());
        if (labelsRead)
            expectSip(got.front(), phone, proxy, invite);
        expectSip(got.back(), proxy, phone, ringing);
    }
}

TEST_F(LinkTypes, DeviceOfAnUnsupportedLinkTypeIsSkippedWithAnError) {
    const std::string wireless = dir.file("wireless.pcap"), wired = dir.file("wired.pcap");
    writeCapture(wireless, DLT_IEEE802_11, {udpFrame(phone, proxy, invite)});
    writeCapture(wired, DLT_EN10MB, {udpFrame(proxy, phone, ringing)});
    const auto run = start("file:" + wireless + ";file:" + wired);
    ASSERT_EQ(0, run->setupResult());
    EXPECT_TRUE(log.contains("ERROR", "Couldn't use device file:" + wireless +
                                          ": link type IEEE802_11 is not supported"));

    // The consumer logs every capture thread it starts before it forwards.
    const auto got = recorder.next(1u);
    ASSERT_EQ(1u, got.size());
    expectSip(got[0], proxy, phone, ringing);
    EXPECT_EQ(1, countPrefix(log, "PCAP thread created "));
}
