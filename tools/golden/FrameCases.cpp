// Writes the capture-file inputs of the golden corpus (tests/golden/frames/*.pcap)
// from the tests' frame builders:
//   golden_frame_cases FOLDER
// Every file ends with the end-of-case frame (a SIP status line, see
// tests/golden/GoldenTest.cpp), after which the test stops reading.
#include <pcap.h>

#include <iostream>
#include <string>

#include "CaptureFile.h"
#include "Frames.h"
#include "Network.h"

namespace {

const Endpoint phone{"10.1.0.1", 5060}, proxy{"10.1.0.2", 5070};
const Bytes inviteIp = withoutEthernet(udpFrame(phone, proxy, bytesOf("INVITE sip:bob@example.com SIP/2.0\r\n\r\n")));
const Bytes ringingIp = withoutEthernet(udpFrame(proxy, phone, bytesOf("SIP/2.0 180 Ringing\r\n\r\n")));
const Bytes endIp = withoutEthernet(udpFrame(proxy, phone, bytesOf("SIP/2.0 299 End of case\r\n\r\n")));
const Bytes arpBody = {0x00, 0x01, 0x08, 0x00, 0x06, 0x04, 0x00, 0x01, 0x02, 0, 0,  0, 0, 0x01,
                       10,   1,    0,    1,    0,    0,    0,    0,    0,    0, 10, 1, 0, 2};

// An IPv6 header (UDP, no payload) and its 40 bytes.
Bytes ipv6Packet() {
    Bytes b = {0x60, 0, 0, 0, 0, 8, 17, 64};
    b.resize(40, 0x01);
    b.insert(b.end(), {0x13, 0xC4, 0x13, 0xC4, 0, 8, 0, 0});
    return b;
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

// Each link type: the INVITE first, a runt cut inside the link header, a
// packet that is not IPv4, the 180 and the end of the case.
void linkTypes(const std::string& folder) {
    const struct {
        const char* name;
        int linkType;
        Bytes inviteLink, otherLink, ringingLink;
        Bytes other;
    } cases[] = {
        {"link-linux-cooked", DLT_LINUX_SLL, cooked(0x0800), cooked(0x0806), cooked(0x0800), arpBody},
        {"link-linux-cooked-v2", DLT_LINUX_SLL2, cooked2(0x0800), cooked2(0x86DD), cooked2(0x0800), ipv6Packet()},
        {"link-raw-ip", DLT_RAW, {}, {}, {}, ipv6Packet()},
        {"link-ipv4", DLT_IPV4, {}, {}, {}, ipv6Packet()},
        // Either byte order: the file does not say which host wrote it.
        {"link-bsd-loopback", DLT_NULL, familyLittleEndian(afInet), familyLittleEndian(afInet6Linux),
         familyBigEndian(afInet), ipv6Packet()},
        {"link-openbsd-loopback", DLT_LOOP, familyBigEndian(afInet), familyLittleEndian(afInet),
         familyBigEndian(afInet), inviteIp},
    };
    for (const auto& c : cases) {
        const Bytes runt(c.inviteLink.begin(), c.inviteLink.begin() + c.inviteLink.size() / 2);
        writeCapture(folder + "/" + c.name + ".pcap", c.linkType,
                     {behind(c.inviteLink, inviteIp), runt, behind(c.otherLink, c.other),
                      behind(c.ringingLink, ringingIp), behind(c.ringingLink, endIp)});
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: golden_frame_cases FOLDER\n";
        return 2;
    }
    linkTypes(argv[1]);
    return 0;
}
