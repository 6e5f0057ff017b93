#ifndef SNIFFER_ENGINE_STATS_H
#define SNIFFER_ENGINE_STATS_H

#include <atomic>
#include <cstdint>

// Counters of the forwarding path, shared by the threads that count and read
// by the stats line. Relaxed: each is a tally, none orders anything.
struct EngineStats {
    using Counter = std::atomic<uint64_t>;

    Counter forwardedSip{0};
    Counter forwardedRtp{0};
    Counter forwardedHeartbeat{0};
    Counter forwardedH323{0};
    Counter bytesSent{0};
    Counter linkLosses{0};
    Counter reconnects{0};
    Counter droppedLinkDown{0};  // frames the reliable link could not take while the recorder was away
    Counter preRollHeld{0};
    Counter preRollForwarded{0};
    Counter preRollDropped{0};  // past the pre-roll's memory limit
    Counter hepSent{0};
    Counter hepDropped{0};       // past the HEP queue's bound, too long, or a datagram the system refused
    Counter commandsIgnored{0};  // UDP command datagrams from an address CommandSource does not list
    Counter reassemblyHeld{0};   // IPv4 fragments taken in
    Counter reassembled{0};
    Counter reassemblyTimedOut{0};
    Counter reassemblyDropped{0};    // oldest datagrams let go at the reassembly limit
    Counter reassemblyOversized{0};  // fragments that would have made a datagram longer than IPv4 allows
    Counter reassemblyBytes{0};      // held now: a level, not a tally
    Counter tcpStreams{0};           // directions of TCP connections followed
    Counter tcpHolesSkipped{0};      // holes in a direction given up, and the bytes before them
    Counter tcpStreamsDropped{0};    // directions let go at the memory limit
    Counter tcpStreamBytes{0};       // held now: a level
    Counter sipOverTcp{0};           // whole SIP messages framed from TCP
    Counter tpktMessages{0};         // whole TPKT messages framed from TCP

    static void add(Counter& counter, uint64_t n = 1) { counter.fetch_add(n, std::memory_order_relaxed); }
    static uint64_t read(const Counter& counter) { return counter.load(std::memory_order_relaxed); }
    // Counts one forwarded frame of `protocol` (the frame header's byte 2)
    // whose send reported `sent` bytes.
    void countForwarded(int protocol, int sent);
};

#endif
