#ifndef SNIFFER_TCP_STREAM_REASSEMBLER_H
#define SNIFFER_TCP_STREAM_REASSEMBLER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <sys/time.h>
#include <sys/types.h>
#include <tuple>
#include <unordered_map>
#include <vector>

struct EngineStats;

// Puts each direction of a TCP connection back in sequence order, so that
// messages that segments cut or pack together can be framed whole.
//
// A direction is followed from its SYN, or from the first segment with data
// when the capture starts inside the connection. Bytes already received are
// not taken twice: a retransmission that overlaps them only adds what is
// new. A segment past a hole waits for the hole to fill; when it has waited
// `gapSeconds` of capture time, or the direction holds more than
// `streamLimit` bytes, the hole is given up: the bytes before it are
// dropped with it (a message cut by the hole cannot be framed) and reading
// goes on after it. A FIN or RST ends the direction, as does `idleSeconds`
// without a segment; past `totalLimit` over all directions, the longest
// idle one goes first.
class TcpStreamReassembler {
public:
    static constexpr std::size_t streamLimit = 256 * 1024;
    static constexpr int gapSeconds = 2;
    static constexpr int idleSeconds = 60;

    // Source and destination address and port, host byte order.
    using Key = std::tuple<uint32_t, uint16_t, uint32_t, uint16_t>;
    struct Segment {
        Key key;
        uint32_t seq;
        uint8_t flags;  // the TCP header's flag byte
        const u_char* data;
        std::size_t length;
        timeval time;
    };
    // Is shown the direction's bytes in order that are not yet consumed;
    // returns how many of them it has consumed (framed or skipped).
    using Consumer = std::function<std::size_t(const u_char* data, std::size_t length)>;

    TcpStreamReassembler(std::size_t totalLimit, EngineStats& stats);

    void take(const Segment& segment, const Consumer& consume);
    // True when the direction is followed: its segments must come to take().
    bool follows(const Key& key) const { return directions.count(key) != 0; }

    std::size_t heldBytes() const { return bytes; }

private:
    struct Direction {
        uint32_t next = 0;                              // sequence number of the next byte in order
        std::vector<u_char> pending;                    // in order, not yet consumed
        std::map<uint32_t, std::vector<u_char>> ahead;  // past a hole, by sequence number
        int64_t lastSeen = 0;
        int64_t holeSince = 0;
        std::size_t footprint() const;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const {
            const uint64_t source = uint64_t(std::get<0>(key)) << 16 | std::get<1>(key);
            const uint64_t destination = uint64_t(std::get<2>(key)) << 16 | std::get<3>(key);
            return std::hash<uint64_t>()(source * 0x9E3779B97F4A7C15ull ^ destination);
        }
    };
    using Directions = std::unordered_map<Key, Direction, KeyHash>;

    Directions::iterator directionFor(const Segment& segment, int64_t now);
    void append(Direction& direction, uint32_t seq, const u_char* data, std::size_t length);
    void holdAhead(Direction& direction, const Segment& segment, int64_t now);
    void fillFromAhead(Direction& direction);
    void skipHole(Direction& direction);
    void consumePending(Direction& direction, const Consumer& consume);
    void expire(int64_t now);
    void makeRoom();
    void erase(Directions::iterator at);
    void recount();

    const std::size_t totalLimit;
    EngineStats& stats;
    Directions directions;
    std::size_t bytes = 0;
    int64_t lastSweep = 0;
};

#endif
