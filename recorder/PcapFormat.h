#pragma once

#include <cstdint>

// The pcap file, record and frame headers that call.pcap is written and read back with.
namespace recorder {

// File and record headers in the writer's byte order; readers tell it by the magic number.
struct pcap_file_header {
    uint32_t magic;
    uint16_t version_major;
    uint16_t version_minor;
    int32_t thiszone;
    uint32_t sigfigs;
    uint32_t snaplen;
    uint32_t linktype;
};

struct pcap_record_header {
    uint32_t ts_sec;
    uint32_t ts_usec;
    uint32_t incl_len;
    uint32_t orig_len;
};

struct ether_header {
    uint8_t ether_dhost[6];
    uint8_t ether_shost[6];
    uint16_t ether_type;
} __attribute__((packed));

struct ip_header {
    uint8_t ip_vhl;
    uint8_t ip_tos;
    uint16_t ip_len;
    uint16_t ip_id;
    uint16_t ip_off;
    uint8_t ip_ttl;
    uint8_t ip_p;
    uint16_t ip_sum;
    uint32_t ip_src;
    uint32_t ip_dst;
} __attribute__((packed));

struct udp_header {
    uint16_t uh_sport;
    uint16_t uh_dport;
    uint16_t uh_ulen;
    uint16_t uh_sum;
} __attribute__((packed));

struct udp_frame {
    ether_header ether;
    ip_header ip;
    udp_header udp;
} __attribute__((packed));

static_assert(sizeof(pcap_file_header) == 24 && sizeof(pcap_record_header) == 16);
static_assert(sizeof(udp_frame) == 14 + 20 + 8);

constexpr uint32_t kPcapMagic = 0xa1b2c3d4;
constexpr uint32_t kLinktypeEthernet = 1;
constexpr uint32_t kSnapLength = 65535;

}  // namespace recorder
