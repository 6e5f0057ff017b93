#ifndef SNIFFER_RTP_LIST_H
#define SNIFFER_RTP_LIST_H

#include <cstddef>
#include <cstdint>
#include <vector>

// One destination of the RTP forwarding list.
struct RtpAddr {
    uint32_t rtpIp;    // host order, first dotted octet most significant
    uint16_t rtpPort;  // host order

    RtpAddr(uint32_t ip, uint16_t port) : rtpIp(ip), rtpPort(port) {}
    bool operator==(const RtpAddr& o) const { return rtpIp == o.rtpIp && rtpPort == o.rtpPort; }
};

// The RTP destinations the recorder asked for, as a multiset: a destination
// added twice is listed twice, and one removal drops every copy.
//
// Every UDP datagram that is not SIP is looked up here, with as many
// destinations listed as the site has calls, so the table is open-addressed
// with linear probing: a lookup reads one slot (one cache line) in the
// common case, whatever the size. Removal shifts the following entries
// back instead of leaving tombstones, so a long run of adds and removes
// neither slows lookups nor grows the table. Not thread-safe.
class RtpList {
public:
    RtpList();

    void add(const RtpAddr& a);
    // Drops every entry equal to `a`.
    void remove(const RtpAddr& a);
    bool contains(const RtpAddr& a) const {
        const uint64_t k = key(a);
        for (std::size_t i = home(k);; i = (i + 1) & mask) {
            if (slots[i].key == k)
                return true;
            if (slots[i].key == emptyKey)
                return false;
        }
    }
    // How many times `a` was added since it was last removed.
    unsigned count(const RtpAddr& a) const;
    void clear();
    // Distinct destinations listed.
    std::size_t size() const { return used; }

private:
    struct Slot {
        uint64_t key;
        unsigned count;
    };
    static constexpr uint64_t emptyKey = 0;
    static constexpr std::size_t initialSlots = 64;

    // Never 0: the top bit marks a used slot.
    static uint64_t key(const RtpAddr& a) { return uint64_t(1) << 48 | uint64_t(a.rtpIp) << 16 | a.rtpPort; }
    std::size_t home(uint64_t k) const { return static_cast<std::size_t>((k * 0x9E3779B97F4A7C15ull) >> shift); }
    std::size_t find(uint64_t k) const;
    void grow();
    void reset(std::size_t slotCount);

    std::vector<Slot> slots;
    std::size_t mask = 0;
    unsigned shift = 64;
    std::size_t used = 0;
};

#endif
