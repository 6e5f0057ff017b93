#include "TcpStreamReassembler.h"

#include <iterator>

#include "EngineStats.h"

namespace {
constexpr uint8_t finFlag = 0x01;
constexpr uint8_t synFlag = 0x02;
constexpr uint8_t rstFlag = 0x04;
constexpr int64_t microsecondsPerSecond = 1000000;

int64_t microseconds(const timeval& time) {
    return int64_t(time.tv_sec) * microsecondsPerSecond + time.tv_usec;
}

// The sequence number of a segment's first byte of data: a SYN takes one of its own.
uint32_t firstByte(const TcpStreamReassembler::Segment& segment) {
    return segment.flags & synFlag ? segment.seq + 1 : segment.seq;
}

// Signed distance from `from` to `to` in sequence space, which wraps.
int32_t distance(uint32_t from, uint32_t to) {
    return static_cast<int32_t>(to - from);
}
}  // namespace

std::size_t TcpStreamReassembler::Direction::footprint() const {
    std::size_t total = pending.size();
    for (const auto& held : ahead)
        total += held.second.size();
    return total;
}

TcpStreamReassembler::TcpStreamReassembler(std::size_t totalLimit, EngineStats& stats)
    : totalLimit(totalLimit), stats(stats) {}

void TcpStreamReassembler::take(const Segment& segment, const Consumer& consume) {
    const int64_t now = microseconds(segment.time);
    expire(now);
    if (segment.flags & rstFlag) {
        const auto known = directions.find(segment.key);
        if (known != directions.end())
            erase(known);
        recount();
        return;
    }
    const auto at = directionFor(segment, now);
    if (at == directions.end())
        return;
    Direction& direction = at->second;
    bytes -= direction.footprint();
    direction.lastSeen = now;
    if (distance(direction.next, firstByte(segment)) > 0)
        holdAhead(direction, segment, now);
    else
        append(direction, firstByte(segment), segment.data, segment.length);
    fillFromAhead(direction);
    consumePending(direction, consume);
    bytes += direction.footprint();
    if (segment.flags & finFlag)
        erase(at);
    else
        makeRoom();
    recount();
}

// A direction is followed from its SYN, or from its first segment with data.
TcpStreamReassembler::Directions::iterator TcpStreamReassembler::directionFor(const Segment& segment, int64_t now) {
    auto at = directions.find(segment.key);
    if (at != directions.end()) {
        if (segment.flags & synFlag)
            at->second.next = segment.seq + 1;  // a new connection on the same addresses
        return at;
    }
    if (!(segment.flags & synFlag) && segment.length == 0)
        return directions.end();
    Direction direction;
    direction.next = segment.flags & synFlag ? segment.seq + 1 : segment.seq;
    direction.lastSeen = now;
    EngineStats::add(stats.tcpStreams);
    return directions.emplace(segment.key, std::move(direction)).first;
}

// Bytes from `seq` on, of which those before `next` were taken already.
void TcpStreamReassembler::append(Direction& direction, uint32_t seq, const u_char* data, std::size_t length) {
    const std::size_t seen = direction.next - seq;  // not after `next`: at most 2^31 bytes back
    if (seen >= length)
        return;
    direction.pending.insert(direction.pending.end(), data + seen, data + length);
    direction.next += static_cast<uint32_t>(length - seen);
}

void TcpStreamReassembler::holdAhead(Direction& direction, const Segment& segment, int64_t now) {
    if (direction.ahead.empty())
        direction.holeSince = now;
    std::vector<u_char>& held = direction.ahead[firstByte(segment)];
    if (held.size() < segment.length)
        held.assign(segment.data, segment.data + segment.length);
    if (direction.footprint() > streamLimit || now - direction.holeSince > gapSeconds * microsecondsPerSecond)
        skipHole(direction);
}

void TcpStreamReassembler::fillFromAhead(Direction& direction) {
    while (!direction.ahead.empty()) {
        const auto first = direction.ahead.begin();
        if (distance(direction.next, first->first) > 0)
            return;
        append(direction, first->first, first->second.data(), first->second.size());
        direction.ahead.erase(first);
    }
}

// Reading goes on at the first segment past the hole; what was in order
// before it is incomplete and goes with it.
void TcpStreamReassembler::skipHole(Direction& direction) {
    EngineStats::add(stats.tcpHolesSkipped);
    direction.pending.clear();
    direction.next = direction.ahead.begin()->first;
}

void TcpStreamReassembler::consumePending(Direction& direction, const Consumer& consume) {
    std::size_t used = 0;
    while (used < direction.pending.size()) {
        const std::size_t taken = consume(direction.pending.data() + used, direction.pending.size() - used);
        if (taken == 0)
            break;
        used += taken;
    }
    direction.pending.erase(direction.pending.begin(), direction.pending.begin() + used);
    if (direction.pending.size() > streamLimit) {
        EngineStats::add(stats.tcpHolesSkipped);
        direction.pending.clear();
    }
}

void TcpStreamReassembler::expire(int64_t now) {
    if (now - lastSweep < microsecondsPerSecond)
        return;
    lastSweep = now;
    for (auto at = directions.begin(); at != directions.end();) {
        const auto next = std::next(at);
        if (now - at->second.lastSeen > idleSeconds * microsecondsPerSecond)
            erase(at);
        at = next;
    }
    recount();
}

void TcpStreamReassembler::makeRoom() {
    while (bytes > totalLimit && !directions.empty()) {
        auto oldest = directions.begin();
        for (auto at = directions.begin(); at != directions.end(); ++at)
            if (at->second.lastSeen < oldest->second.lastSeen)
                oldest = at;
        EngineStats::add(stats.tcpStreamsDropped);
        erase(oldest);
    }
}

void TcpStreamReassembler::erase(Directions::iterator at) {
    bytes -= at->second.footprint();
    directions.erase(at);
}

void TcpStreamReassembler::recount() {
    stats.tcpStreamBytes.store(bytes, std::memory_order_relaxed);
}
