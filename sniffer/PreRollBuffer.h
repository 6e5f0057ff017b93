#ifndef SNIFFER_PRE_ROLL_BUFFER_H
#define SNIFFER_PRE_ROLL_BUFFER_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <sys/types.h>
#include <unordered_map>
#include <vector>

struct EngineStats;

// UDP datagrams that are neither SIP nor listed, held for a while in case the
// recorder lists their destination late. Phones start their RTP right after
// the answer, and the recorder's add command can only follow the SIP that
// announced the media: without this, every recording lacks its first moments.
//
// The consumer holds and forwards; the command reader releases destinations.
// Memory is bounded: the oldest datagrams go first when the limit is reached.
class PreRollBuffer {
public:
    struct Datagram {
        uint32_t dstIp;  // host order, as the dissector keeps addresses
        uint16_t dstPort;
        uint32_t srcIp;
        uint16_t srcPort;
        std::vector<u_char> payload;
    };
    using Clock = std::chrono::steady_clock;

    PreRollBuffer(std::chrono::milliseconds holdTime, std::size_t limitBytes, EngineStats& stats);

    // The consumer: keeps a copy of the datagram.
    void hold(Datagram datagram, Clock::time_point now = Clock::now());
    // Any thread: the recorder has listed this destination.
    void release(uint32_t dstIp, uint16_t dstPort);
    bool hasReleases() const { return releasesPending.load(std::memory_order_acquire); }
    // The consumer: hands every datagram held for a released destination to
    // `forward`, in capture order, and lets it go.
    void forwardReleased(const std::function<void(const Datagram&)>& forward, Clock::time_point now = Clock::now());
    // Memory the held datagrams take now, as counted against the limit.
    std::size_t heldBytes() const { return bytes; }

private:
    struct Entry {
        Clock::time_point heldAt;
        Datagram datagram;
        bool forwarded = false;
    };
    static uint64_t key(uint32_t ip, uint16_t port) { return uint64_t(ip) << 16 | port; }

    static std::size_t footprint(const Datagram& datagram);
    void expire(Clock::time_point now);
    // Lets the oldest entry go; `atLimit`: for room, not for its age.
    void dropOldest(bool atLimit);
    std::vector<uint64_t> takeReleases();

    const std::chrono::milliseconds holdTime;
    const std::size_t limitBytes;
    EngineStats& stats;

    // The consumer's own.
    std::deque<Entry> entries;  // capture order
    uint64_t firstSeq = 0;      // sequence number of entries.front()
    std::unordered_map<uint64_t, std::deque<uint64_t>> byDestination;
    std::size_t bytes = 0;

    std::mutex releaseLock;
    std::vector<uint64_t> releases;
    std::atomic<bool> releasesPending{false};
};

#endif
