#include "LinkLayer.h"

#include <cstddef>
#include <cstring>
#include <sys/socket.h>

namespace {
constexpr uint32_t bsdFamilyIpv4 = AF_INET;

uint16_t be16(const u_char* at) {
    return static_cast<uint16_t>(at[0] << 8 | at[1]);
}

uint32_t be32(const u_char* at) {
    return uint32_t(at[0]) << 24 | uint32_t(at[1]) << 16 | uint32_t(at[2]) << 8 | at[3];
}

#pragma pack(push, 1)
// Linux cooked capture, version 1.
struct sll_header {
    uint16_t sll_pkttype;
    uint16_t sll_hatype;
    uint16_t sll_halen;
    u_char sll_addr[8];
    uint16_t sll_protocol;
};
// Linux cooked capture, version 2.
struct sll2_header {
    uint16_t sll2_protocol;
    uint16_t sll2_reserved_mbz;
    uint32_t sll2_if_index;
    uint16_t sll2_hatype;
    u_char sll2_pkttype;
    u_char sll2_halen;
    u_char sll2_addr[8];
};
#pragma pack(pop)
static_assert(sizeof(sll_header) == 16, "the Linux cooked header is 16 bytes");
static_assert(sizeof(sll2_header) == 20, "the Linux cooked header, version 2, is 20 bytes");

// A Linux cooked header: fixed in length, the EtherType at `protocolAt`.
template <typename Header, std::size_t protocolAt>
bool readCooked(const u_char* frame, bpf_u_int32 captured, int& length, uint16_t& etherType) {
    if (captured < sizeof(Header))
        return false;
    length = sizeof(Header);
    etherType = be16(frame + protocolAt);
    return true;
}

// No link header: the version nibble tells what the packet is.
bool readRawIp(const u_char* frame, bpf_u_int32 captured, int& length, uint16_t& etherType) {
    if (captured < 1 || frame[0] >> 4 != 4)
        return false;
    length = 0;
    etherType = LinkLayer::etherTypeIpv4;
    return true;
}

bool readFamily(uint32_t family, int& length, uint16_t& etherType) {
    if (family != bsdFamilyIpv4)
        return false;
    length = sizeof(uint32_t);
    etherType = LinkLayer::etherTypeIpv4;
    return true;
}

// The family is in the byte order of the host that captured, which a
// capture file read elsewhere does not tell: either order is taken, as no
// family number reads as another one swapped.
bool readBsdNull(const u_char* frame, bpf_u_int32 captured, int& length, uint16_t& etherType) {
    if (captured < sizeof(uint32_t))
        return false;
    uint32_t family = be32(frame);
    if (family > 0xFFFF)
        family = __builtin_bswap32(family);
    return readFamily(family, length, etherType);
}

bool readBsdLoop(const u_char* frame, bpf_u_int32 captured, int& length, uint16_t& etherType) {
    return captured >= sizeof(uint32_t) && readFamily(be32(frame), length, etherType);
}

struct LinkType {
    int linkType;
    LinkLayer::HeaderReader read;  // nullptr: Ethernet
};

const LinkType linkTypes[] = {
    {DLT_EN10MB, nullptr},
    {DLT_LINUX_SLL, readCooked<sll_header, offsetof(sll_header, sll_protocol)>},
    {DLT_LINUX_SLL2, readCooked<sll2_header, offsetof(sll2_header, sll2_protocol)>},
    {DLT_RAW, readRawIp},
    {DLT_IPV4, readRawIp},
    {DLT_NULL, readBsdNull},
    {DLT_LOOP, readBsdLoop},
};

const LinkType* find(int linkType) {
    for (const LinkType& type : linkTypes)
        if (type.linkType == linkType)
            return &type;
    return nullptr;
}
}  // namespace

bool LinkLayer::reads(int linkType) {
    return find(linkType) != nullptr;
}

LinkLayer::LinkLayer(int linkType, Wanted wantedTypes) : readHeader(find(linkType)->read), wanted(wantedTypes) {}

bool LinkLayer::asEthernet(const pcap_pkthdr& header, const u_char* frame, AsEthernet& out) const {
    int length = 0;
    uint16_t etherType = 0;
    if (!readHeader(frame, header.caplen, length, etherType) || header.len < bpf_u_int32(length) || !wanted(etherType))
        return false;
    out.header = header;
    out.header.caplen = header.caplen - length + ethernetHeaderLength;
    out.header.len = header.len - length + ethernetHeaderLength;
    std::memset(out.ethernet, 0, sizeof out.ethernet);
    out.ethernet[12] = static_cast<u_char>(etherType >> 8);
    out.ethernet[13] = static_cast<u_char>(etherType);
    out.rest = frame + length;
    return true;
}
