#pragma once

#include "Clock.h"
#include "Endpoint.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>

namespace recorder {

// Writes UDP datagrams to a pcap file as Ethernet/IPv4/UDP frames, with their original
// addresses and ports, stamped with their arrival time.
class PcapWriter {
public:
    bool open(const std::filesystem::path& path);
    void write(TimePoint arrival, const Endpoint& source, const Endpoint& destination, std::string_view payload);
    void close();

private:
    std::unique_ptr<FILE, int (*)(FILE*)> file_{nullptr, std::fclose};
    uint16_t ipId_ = 0;
};

}  // namespace recorder
