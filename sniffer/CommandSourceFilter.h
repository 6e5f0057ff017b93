#ifndef SNIFFER_COMMAND_SOURCE_FILTER_H
#define SNIFFER_COMMAND_SOURCE_FILTER_H

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

#include "EngineStats.h"

// Decides whether a UDP command datagram comes from a recorder the sniffer
// takes commands from. With no address listed every sender is accepted, as
// the datagram link has always done; otherwise a datagram from any other
// address is counted and warned about once per address.
class CommandSourceFilter {
public:
    // Every sender accepted.
    CommandSourceFilter() = default;
    // `allowed`: IPv4 addresses in host byte order; empty accepts all.
    CommandSourceFilter(std::vector<uint32_t> allowed, EngineStats::Counter& ignored);

    // `address` in host byte order.
    bool accepts(uint32_t address);

    // Strangers remembered for the once-only warning; past this many, new
    // ones are counted but no longer named, so that a flood of forged source
    // addresses cannot grow memory or the log.
    static constexpr std::size_t warnedLimit = 1024;

private:
    void warnOnce(uint32_t address);

    std::vector<uint32_t> allowed;
    EngineStats::Counter* ignored = nullptr;
    std::set<uint32_t> warned;
};

#endif
