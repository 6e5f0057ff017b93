#ifndef SNIFFER_TESTS_PCAP_FEED_H
#define SNIFFER_TESTS_PCAP_FEED_H

#include <pcap.h>
#include <cstddef>
#include <string>
#include <thread>

// Plays a capture file into a named pipe that the engine opens as its
// "file:" device, in two steps: the first packet, then (when the test has
// done what it must in between) the rest and the end of the file. The
// engine reads a file as fast as it can; the pipe holds it back.
class PcapFeed {
public:
    explicit PcapFeed(const std::string& captureFile);
    ~PcapFeed();
    PcapFeed(const PcapFeed&) = delete;
    PcapFeed& operator=(const PcapFeed&) = delete;

    std::string device() const { return "file:" + pipePath; }
    // Writes the file header and the first packet once the reader has opened the pipe.
    void begin();
    // Writes the remaining packets and closes the pipe.
    void finish();

private:
    void copy(std::size_t packets);

    pcap_t* source;
    pcap_dumper_t* sink = nullptr;
    std::string pipePath;
    std::thread writer;
};

#endif
