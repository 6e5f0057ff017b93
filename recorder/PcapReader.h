#pragma once

#include "Clock.h"
#include "Endpoint.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

namespace recorder {

// Reads back, a record at a time, the Ethernet/IPv4/UDP frames that PcapWriter wrote: what the
// archive replays to decode a call's audio once the call is over.
class PcapReader {
public:
    struct Datagram {
        TimePoint arrival;
        Endpoint source, destination;
        std::string payload;
    };

    // False when the file cannot be read or is no pcap file of this host's byte order.
    bool open(const std::filesystem::path& path);
    // The next UDP datagram; false at the end of the file or at a record that cannot be read.
    bool next(Datagram& datagram);

private:
    std::unique_ptr<FILE, int (*)(FILE*)> file_{nullptr, std::fclose};
    std::string frame_;
};

}  // namespace recorder
