#include "Decapsulator.h"

#include <netinet/in.h>

namespace {
constexpr uint16_t etherTypeIpv4 = 0x0800;
constexpr uint16_t etherTypeMpls = 0x8847;
constexpr uint16_t vxlanPort = 4789;

#pragma pack(push, 1)
struct ether_header_wire {
    u_char ether_dhost[6];
    u_char ether_shost[6];
    u_char ether_type[2];
};
struct vlan_tag {
    u_char tci[2];
    u_char ether_type[2];
};
struct mpls_label {
    u_char label_tc_s[3];  // 20-bit label, 3-bit traffic class, bottom-of-stack bit
    u_char ttl;
};
struct ip_header_start {
    u_char ip_vhl;
    u_char ip_tos;
    u_char ip_len[2];
    u_char ip_id[2];
    u_char ip_off[2];
    u_char ip_ttl;
    u_char ip_p;
    u_char ip_sum[2];
    u_char ip_src[4];
    u_char ip_dst[4];
};
struct udp_header {
    u_char uh_sport[2];
    u_char uh_dport[2];
    u_char uh_ulen[2];
    u_char uh_sum[2];
};
struct gre_header {
    u_char flags_version[2];
    u_char protocol[2];
};
struct erspan2_header {
    u_char ver_vlan[2];
    u_char cos_en_t_session[2];
    u_char reserved_index[4];
};
struct erspan3_header {
    u_char ver_vlan[2];
    u_char cos_bso_t_session[2];
    u_char timestamp[4];
    u_char sgt[2];
    u_char p_ft_hwid_d_gra_o[2];
};
struct vxlan_header {
    u_char flags;
    u_char reserved1[3];
    u_char vni[3];
    u_char reserved2;
};
#pragma pack(pop)
static_assert(sizeof(ether_header_wire) == 14, "an Ethernet header is 14 bytes");
static_assert(sizeof(vlan_tag) == 4, "a VLAN tag is 4 bytes");
static_assert(sizeof(mpls_label) == 4, "an MPLS label is 4 bytes");
static_assert(sizeof(ip_header_start) == 20, "an IPv4 header is at least 20 bytes");
static_assert(sizeof(udp_header) == 8, "a UDP header is 8 bytes");
static_assert(sizeof(gre_header) == 4, "a GRE header is at least 4 bytes");
static_assert(sizeof(erspan2_header) == 8, "an ERSPAN type II header is 8 bytes");
static_assert(sizeof(erspan3_header) == 12, "an ERSPAN type III header is 12 bytes");
static_assert(sizeof(vxlan_header) == 8, "a VXLAN header is 8 bytes");

constexpr uint16_t greChecksum = 0x8000, greRouting = 0x4000, greKey = 0x2000, greSequence = 0x1000;
constexpr uint16_t greVersion = 0x0007;
constexpr int greOptionLength = 4;
constexpr int erspan3SubheaderLength = 8;
constexpr u_char vxlanValidVni = 0x08;

// What follows the layer just read.
enum class Next { Ethernet, ByEtherType, ByIpProtocol, Found, Drop };

// The frame and how far it has been read.
struct Walk {
    const u_char* frame;
    int length;
    int at = 0;              // where the next layer starts
    int ipAt = -1;           // the last IPv4 header read
    uint16_t etherType = 0;  // names the next layer after ByEtherType
    u_char ipProtocol = 0;   // names the next layer after ByIpProtocol

    // The header at `at` when the frame holds it and `extra` bytes more.
    template <typename Header>
    const Header* take(int extra = 0) const {
        return at + int(sizeof(Header)) + extra <= length ? reinterpret_cast<const Header*>(frame + at) : nullptr;
    }
};

uint16_t be16(const u_char* at) {
    return static_cast<uint16_t>(at[0] << 8 | at[1]);
}

// An Ethernet header, or an 802.1Q or 802.1ad tag: each names the
// EtherType behind it.
template <typename Header>
Next readEtherTypeHeader(Walk& walk) {
    const auto* header = walk.take<Header>();
    if (!header)
        return Next::Drop;
    walk.etherType = be16(header->ether_type);
    walk.at += sizeof(Header);
    return Next::ByEtherType;
}

// One label; the one with the bottom-of-stack bit has IPv4 behind it when
// the version nibble says so (a pseudowire or IPv6 is not read).
Next readMplsLabel(Walk& walk) {
    const auto* label = walk.take<mpls_label>();
    if (!label)
        return Next::Drop;
    walk.at += sizeof(mpls_label);
    if (!(label->label_tc_s[2] & 0x01)) {
        walk.etherType = etherTypeMpls;
        return Next::ByEtherType;
    }
    if (walk.at >= walk.length || walk.frame[walk.at] >> 4 != 4)
        return Next::Drop;
    walk.etherType = etherTypeIpv4;
    return Next::ByEtherType;
}

// The packet found, unless its protocol is a tunnel. A fragment is never
// entered: only the first one holds the tunnel's header.
Next readIpv4(Walk& walk) {
    const auto* ip = walk.take<ip_header_start>();
    if (!ip || ip->ip_vhl >> 4 != 4)
        return Next::Drop;
    const int headerLength = (ip->ip_vhl & 0x0F) * 4;
    if (headerLength < int(sizeof(ip_header_start)) || walk.at + headerLength > walk.length)
        return Next::Drop;
    walk.ipAt = walk.at;
    walk.at += headerLength;
    walk.ipProtocol = ip->ip_p;
    const bool fragment = (be16(ip->ip_off) & 0x3FFF) != 0;
    return fragment ? Next::Found : Next::ByIpProtocol;
}

Next readGre(Walk& walk) {
    const auto* gre = walk.take<gre_header>();
    if (!gre)
        return Next::Drop;
    const uint16_t flags = be16(gre->flags_version);
    if (flags & (greRouting | greVersion))
        return Next::Drop;
    const int options = ((flags & greChecksum) ? 1 : 0) + ((flags & greKey) ? 1 : 0) + ((flags & greSequence) ? 1 : 0);
    if (!walk.take<gre_header>(options * greOptionLength))
        return Next::Drop;
    walk.etherType = be16(gre->protocol);
    walk.at += sizeof(gre_header) + options * greOptionLength;
    return Next::ByEtherType;
}

Next readErspan2(Walk& walk) {
    const auto* erspan = walk.take<erspan2_header>();
    if (!erspan || erspan->ver_vlan[0] >> 4 != 1)
        return Next::Drop;
    walk.at += sizeof(erspan2_header);
    return Next::Ethernet;
}

// The optional platform subheader follows when the O bit is set.
Next readErspan3(Walk& walk) {
    const auto* erspan = walk.take<erspan3_header>();
    if (!erspan || erspan->ver_vlan[0] >> 4 != 2)
        return Next::Drop;
    const bool subheader = erspan->p_ft_hwid_d_gra_o[1] & 0x01;
    walk.at += sizeof(erspan3_header) + (subheader ? erspan3SubheaderLength : 0);
    return Next::Ethernet;
}

Next readVxlan(Walk& walk) {
    const auto* vxlan = walk.take<vxlan_header>();
    if (!vxlan || !(vxlan->flags & vxlanValidVni))
        return Next::Drop;
    walk.at += sizeof(vxlan_header);
    return Next::Ethernet;
}

// A datagram to the VXLAN port carries a frame; any other is the packet found.
Next readUdp(Walk& walk) {
    const auto* udp = walk.take<udp_header>();
    if (!udp || be16(udp->uh_dport) != vxlanPort)
        return Next::Found;
    walk.at += sizeof(udp_header);
    return readVxlan(walk);
}

using Reader = Next (*)(Walk&);

struct EtherTypeRow {
    uint16_t etherType;
    Reader read;
};
const EtherTypeRow byEtherType[] = {
    {etherTypeIpv4, readIpv4},
    {0x8100, readEtherTypeHeader<vlan_tag>},
    {0x88A8, readEtherTypeHeader<vlan_tag>},
    {etherTypeMpls, readMplsLabel},
    {0x88BE, readErspan2},
    {0x22EB, readErspan3},
};

struct IpProtocolRow {
    u_char protocol;
    Reader read;
};
const IpProtocolRow byIpProtocol[] = {
    {IPPROTO_IPIP, readIpv4},
    {IPPROTO_GRE, readGre},
    {IPPROTO_UDP, readUdp},
};

Reader etherTypeReader(uint16_t etherType) {
    for (const EtherTypeRow& row : byEtherType)
        if (row.etherType == etherType)
            return row.read;
    return nullptr;
}

Reader ipProtocolReader(u_char protocol) {
    for (const IpProtocolRow& row : byIpProtocol)
        if (row.protocol == protocol)
            return row.read;
    return nullptr;
}

// The reader of the next layer; an IP protocol without one is not a tunnel,
// so the packet read last is the one found.
Next readNext(Next next, Walk& walk) {
    switch (next) {
    case Next::Ethernet: return readEtherTypeHeader<ether_header_wire>(walk);
    case Next::ByEtherType: {
        const Reader read = etherTypeReader(walk.etherType);
        return read ? read(walk) : Next::Drop;
    }
    case Next::ByIpProtocol: {
        const Reader read = ipProtocolReader(walk.ipProtocol);
        return read ? read(walk) : Next::Found;
    }
    default: return next;
    }
}
}  // namespace

bool Decapsulator::readsEtherType(uint16_t etherType) {
    return etherTypeReader(etherType) != nullptr;
}

int Decapsulator::innerIpOffset(const u_char* frame, int length) {
    Walk walk{frame, length};
    Next next = Next::Ethernet;
    for (int layer = 0; layer < maxLayers; ++layer) {
        next = readNext(next, walk);
        if (next == Next::Found)
            return walk.ipAt;
        if (next == Next::Drop)
            return -1;
    }
    return -1;
}
