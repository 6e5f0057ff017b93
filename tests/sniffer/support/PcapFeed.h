#ifndef SNIFFER_TESTS_PCAP_FEED_H
#define SNIFFER_TESTS_PCAP_FEED_H

#include <string>
#include <thread>

#include "Network.h"

// Plays a capture file into a named pipe that the engine opens as its
// "file:" device, in two steps: the first packets, then (when the test has
// done what it must in between) the rest and the end of the file. The
// engine reads a file as fast as it can; the pipe holds it back.
class PcapFeed {
public:
    explicit PcapFeed(const std::string& captureFile);
    ~PcapFeed();
    PcapFeed(const PcapFeed&) = delete;
    PcapFeed& operator=(const PcapFeed&) = delete;

    std::string device() const { return "file:" + pipePath; }
    // Writes the file header and the first `packets` packets once the reader has opened the pipe.
    void begin(std::size_t packets);
    // Writes the remaining packets and closes the pipe.
    void finish();

private:
    void write(std::size_t from, std::size_t to);

    Bytes capture;
    std::vector<std::size_t> packetStart;  // offsets of each record, then the end of the file
    std::string pipePath;
    int pipe = -1;
    std::size_t written = 0;
    std::thread writer;
};

#endif
