#ifndef SNIFFER_HEP_LINK_H
#define SNIFFER_HEP_LINK_H

#include <netinet/in.h>
#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "EngineOptions.h"

// The socket to a HEP collector. Over UDP every packet is one datagram.
// Over TCP the link connects when it has a packet to send, notices a
// collector that closed before it writes to it, and leaves it to the caller
// to try again later: a collector that refuses, is lost or stalls only
// delays the packets of the thread that sends them.
class HepLink {
public:
    enum class Outcome { Sent, Lost, Retry };

    HepLink(const std::string& collector, EngineOptions::HepTransport transport);
    ~HepLink();
    HepLink(const HepLink&) = delete;
    HepLink& operator=(const HepLink&) = delete;

    // Sent; Lost: the datagram could not be sent and is gone; Retry: no TCP
    // connection took the whole packet (or `stop` was set while waiting), so
    // it may be sent again, whole, on a new one.
    Outcome deliver(const std::vector<uint8_t>& packet, const std::atomic<bool>& stop);

private:
    Outcome sendDatagram(const std::vector<uint8_t>& packet);
    bool connectStream(const std::atomic<bool>& stop);
    bool peerClosed() const;
    bool writeAll(const std::vector<uint8_t>& packet, const std::atomic<bool>& stop);
    // Waits for room in the send buffer in short slices until `stop` is set.
    bool awaitWritable(const std::atomic<bool>& stop) const;
    void closeStream(const char* why);

    const std::string collector;
    const EngineOptions::HepTransport transport;
    sockaddr_in address{};
    int fd = -1;
    bool reportedDown = false;  // one line per outage, not one per attempt
};

#endif
