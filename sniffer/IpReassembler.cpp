#include "IpReassembler.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>

#include "EngineStats.h"
#include "SngDissector.h"

namespace {
constexpr uint16_t moreFragments = 0x2000;
constexpr uint16_t offsetMask = 0x1FFF;
constexpr int ipHeaderLength = 20;
constexpr int64_t holdMicroseconds = int64_t(IpReassembler::holdSeconds) * 1000000;

int64_t microseconds(const timeval& time) {
    return int64_t(time.tv_sec) * 1000000 + time.tv_usec;
}

void put16(u_char* at, uint16_t value) {
    at[0] = u_char(value >> 8);
    at[1] = u_char(value);
}

void put32(u_char* at, uint32_t value) {
    put16(at, uint16_t(value >> 16));
    put16(at + 2, uint16_t(value));
}
}  // namespace

IpReassembler::IpReassembler(std::size_t limitBytes, EngineStats& stats) : limitBytes(limitBytes), stats(stats) {}

IpReassembler::Outcome IpReassembler::take(const u_char* ip, int length, const timeval& time) {
    const int64_t now = microseconds(time);
    expire(now);
    if (length < ipHeaderLength)
        return Outcome::NotFragment;
    const auto* header = reinterpret_cast<const SngDissector::sniff_ip*>(ip);
    const int headerLength = (header->ip_vhl & 0x0F) * 4;
    const uint16_t fragment = ntohs(header->ip_off);
    // Fragments of other protocols are left to the classic path, which drops them.
    if (headerLength < ipHeaderLength || headerLength > length || (fragment & (moreFragments | offsetMask)) == 0 ||
        (header->ip_p != IPPROTO_UDP && header->ip_p != IPPROTO_TCP))
        return Outcome::NotFragment;

    // Ethernet padding behind a short fragment is not part of it.
    const int count = std::min<int>(ntohs(header->ip_len), length) - headerLength;
    const int offset = (fragment & offsetMask) * 8;
    const Key key{ntohl(header->ip_src), ntohl(header->ip_dst), header->ip_p, ntohs(header->ip_id)};
    if (std::size_t(headerLength + offset) + std::max(count, 0) > maxDatagramLength) {
        const auto found = byKey.find(key);
        if (found != byKey.end())
            drop(found->second);
        EngineStats::add(stats.reassemblyOversized);
        publishHeldBytes();
        return Outcome::Held;
    }
    if (count <= 0)
        return Outcome::Held;

    const Order::iterator at = partialFor(key, now);
    fill(*at, offset, ip + headerLength, count);
    if (!(fragment & moreFragments) && at->end < 0)
        at->end = offset + count;
    EngineStats::add(stats.reassemblyHeld);
    if (isWhole(*at)) {
        complete(at);
        return Outcome::Complete;
    }
    account(*at);
    while (bytes > limitBytes && !order.empty()) {
        drop(order.begin());
        EngineStats::add(stats.reassemblyDropped);
    }
    publishHeldBytes();
    return Outcome::Held;
}

IpReassembler::Order::iterator IpReassembler::partialFor(const Key& key, int64_t now) {
    const auto found = byKey.find(key);
    if (found != byKey.end())
        return found->second;
    order.push_back(Partial{key, now, {}, {}});
    const Order::iterator at = std::prev(order.end());
    byKey.emplace(key, at);
    return at;
}

// A byte already received keeps its value.
void IpReassembler::fill(Partial& partial, int offset, const u_char* data, int count) {
    const std::size_t end = std::size_t(offset) + count;
    if (partial.data.size() < end) {
        partial.data.resize(end);
        partial.present.resize(end);
    }
    for (int i = 0; i < count; ++i) {
        if (!partial.present[offset + i]) {
            partial.data[offset + i] = data[i];
            partial.present[offset + i] = 1;
        }
    }
}

bool IpReassembler::isWhole(const Partial& partial) {
    if (partial.end < 0 || partial.present.size() < std::size_t(partial.end))
        return false;
    const auto last = partial.present.begin() + partial.end;
    return std::find(partial.present.begin(), last, 0) == last;
}

// The datagram behind a header of 20 bytes that states only what the
// dissector reads: version, length, identification, protocol and addresses.
void IpReassembler::complete(Order::iterator at) {
    const Partial& partial = *at;
    completedLength = ipHeaderLength + partial.end;
    completed.assign(std::size_t(completedLength) + padding, 0);
    u_char* header = completed.data();
    header[0] = 0x45;
    put16(header + 2, uint16_t(completedLength));
    put16(header + 4, std::get<3>(partial.key));
    header[9] = std::get<2>(partial.key);
    put32(header + 12, std::get<0>(partial.key));
    put32(header + 16, std::get<1>(partial.key));
    std::memcpy(header + ipHeaderLength, partial.data.data(), std::size_t(partial.end));
    drop(at);
    EngineStats::add(stats.reassembled);
    publishHeldBytes();
}

// What a held datagram costs: its bytes, their map, its entry and its place
// in the index, so that a flood of small fragments stays within the limit too.
void IpReassembler::account(Partial& partial) {
    bytes -= partial.footprint;
    partial.footprint = partial.data.capacity() + partial.present.capacity() + sizeof(Partial) + sizeof(Key) +
                        sizeof(Order::iterator) + 4 * sizeof(void*);
    bytes += partial.footprint;
}

void IpReassembler::expire(int64_t now) {
    bool expired = false;
    while (!order.empty() && now - order.front().firstSeen > holdMicroseconds) {
        drop(order.begin());
        EngineStats::add(stats.reassemblyTimedOut);
        expired = true;
    }
    if (expired)
        publishHeldBytes();
}

void IpReassembler::drop(Order::iterator at) {
    bytes -= at->footprint;
    byKey.erase(at->key);
    order.erase(at);
}

void IpReassembler::publishHeldBytes() {
    stats.reassemblyBytes.store(bytes, std::memory_order_relaxed);
}
