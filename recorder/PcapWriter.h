#pragma once

#include "Clock.h"
#include "Endpoint.h"
#include "FileCache.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace recorder {

// Writes UDP datagrams to a pcap file as Ethernet/IPv4/UDP frames, with their original
// addresses and ports, stamped with their arrival time. Records gather in memory and reach the
// file a batch at a time, through the cache that bounds how many files are open.
class PcapWriter {
public:
    PcapWriter(FileCache& files, std::filesystem::path path);
    ~PcapWriter();
    PcapWriter(const PcapWriter&) = delete;
    PcapWriter& operator=(const PcapWriter&) = delete;

    void write(TimePoint arrival, const Endpoint& source, const Endpoint& destination, std::string_view payload);
    // Writes what is gathered and lets the file go; later writes are ignored.
    void close();

private:
    void flush();

    FileCache& files_;
    FileCache::Id id_;
    bool open_ = true;
    std::string pending_;
    uint64_t offset_ = 0;
    uint16_t ipId_ = 0;
};

}  // namespace recorder
