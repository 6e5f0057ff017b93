#include "PreRollBuffer.h"

#include "EngineStats.h"

PreRollBuffer::PreRollBuffer(std::chrono::milliseconds holdTime, std::size_t limitBytes, EngineStats& stats)
    : holdTime(holdTime), limitBytes(limitBytes), stats(stats) {}

// What a held datagram costs: its payload, its entry and its place in the
// index, so that a flood of small datagrams stays within the limit too.
std::size_t PreRollBuffer::footprint(const Datagram& datagram) {
    return datagram.payload.capacity() + sizeof(Entry) + 2 * sizeof(uint64_t);
}

void PreRollBuffer::hold(Datagram datagram, Clock::time_point now) {
    expire(now);
    const std::size_t size = footprint(datagram);
    if (size > limitBytes) {
        EngineStats::add(stats.preRollDropped);
        return;
    }
    while (bytes + size > limitBytes)
        dropOldest(true);
    const uint64_t seq = firstSeq + entries.size();
    byDestination[key(datagram.dstIp, datagram.dstPort)].push_back(seq);
    entries.push_back(Entry{now, std::move(datagram)});
    bytes += size;
    EngineStats::add(stats.preRollHeld);
}

void PreRollBuffer::expire(Clock::time_point now) {
    while (!entries.empty() && now - entries.front().heldAt > holdTime)
        dropOldest(false);
}

void PreRollBuffer::dropOldest(bool atLimit) {
    Entry& oldest = entries.front();
    if (!oldest.forwarded) {
        const uint64_t k = key(oldest.datagram.dstIp, oldest.datagram.dstPort);
        auto found = byDestination.find(k);
        found->second.pop_front();  // the oldest of its destination too
        if (found->second.empty())
            byDestination.erase(found);
        bytes -= footprint(oldest.datagram);
        if (atLimit)
            EngineStats::add(stats.preRollDropped);
    }
    entries.pop_front();
    ++firstSeq;
}

void PreRollBuffer::release(uint32_t dstIp, uint16_t dstPort) {
    std::lock_guard<std::mutex> guard(releaseLock);
    releases.push_back(key(dstIp, dstPort));
    releasesPending.store(true, std::memory_order_release);
}

std::vector<uint64_t> PreRollBuffer::takeReleases() {
    std::lock_guard<std::mutex> guard(releaseLock);
    releasesPending.store(false, std::memory_order_relaxed);
    std::vector<uint64_t> taken;
    taken.swap(releases);
    return taken;
}

void PreRollBuffer::forwardReleased(const std::function<void(const Datagram&)>& forward, Clock::time_point now) {
    expire(now);
    for (const uint64_t destination : takeReleases()) {
        auto found = byDestination.find(destination);
        if (found == byDestination.end())
            continue;
        for (const uint64_t seq : found->second) {
            Entry& entry = entries[seq - firstSeq];
            forward(entry.datagram);
            bytes -= footprint(entry.datagram);
            std::vector<u_char>().swap(entry.datagram.payload);
            entry.forwarded = true;
            EngineStats::add(stats.preRollForwarded);
        }
        byDestination.erase(found);
    }
}
