#ifndef SNIFFER_IP_REASSEMBLER_H
#define SNIFFER_IP_REASSEMBLER_H

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <sys/time.h>
#include <sys/types.h>
#include <tuple>
#include <vector>

#include "PacketQueue.h"

struct EngineStats;

// Puts fragmented IPv4 datagrams of UDP and TCP back together, so that a
// SIP message too long for one frame is classified once, whole.
//
// Fragments are held by (source, destination, protocol, identification).
// Each byte of a datagram is taken from the first fragment that carried it:
// a later overlapping fragment only fills what is still missing. A datagram
// is given up when a fragment would take it past 65,535 bytes, when it is
// not complete `holdSeconds` after its first fragment (by capture time, so
// that a file is read as a live device would be), or, oldest first, when
// the held datagrams would take more than the limit.
class IpReassembler {
public:
    static constexpr int holdSeconds = 5;
    static constexpr std::size_t maxDatagramLength = 0xFFFF;

    enum class Outcome { NotFragment, Held, Complete };

    IpReassembler(std::size_t limitBytes, EngineStats& stats);

    // Takes the IPv4 packet of `length` bytes at `ip`, captured at `time`,
    // after letting go of the datagrams held too long by then: every packet
    // is given, so that capture time moves on without fragments too.
    // NotFragment also for fragments of other protocols than UDP and TCP.
    // Complete: datagram() holds the whole datagram behind a 20-byte header
    // of its own, until the next call.
    Outcome take(const u_char* ip, int length, const timeval& time);
    // The last completed datagram, followed by `padding` zero bytes that are
    // not part of it, as a queued frame is; the dissector frames it in place.
    u_char* datagram() { return completed.data(); }
    int datagramLength() const { return completedLength; }
    static constexpr std::size_t padding = PacketQueue::framePadding;

    // Memory the held fragments take now, as counted against the limit.
    std::size_t heldBytes() const { return bytes; }

private:
    using Key = std::tuple<uint32_t, uint32_t, uint8_t, uint16_t>;  // source, destination, protocol, id
    struct Partial {
        Key key;
        int64_t firstSeen;             // capture time of its first fragment, in microseconds
        std::vector<u_char> data;      // the IP payload so far
        std::vector<uint8_t> present;  // 1 for each byte of `data` received
        int end = -1;                  // the payload's length, once the last fragment is seen
        std::size_t footprint = 0;
    };
    using Order = std::list<Partial>;  // oldest first

    Order::iterator partialFor(const Key& key, int64_t now);
    static void fill(Partial& partial, int offset, const u_char* bytes, int count);
    static bool isWhole(const Partial& partial);
    void complete(Order::iterator at);
    void account(Partial& partial);
    void expire(int64_t now);
    void drop(Order::iterator at);
    void publishHeldBytes();

    const std::size_t limitBytes;
    EngineStats& stats;
    Order order;
    std::map<Key, Order::iterator> byKey;
    std::size_t bytes = 0;
    std::vector<u_char> completed;
    int completedLength = 0;
};

#endif
