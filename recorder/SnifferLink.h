#pragma once

#include "Wire.h"

#include <netinet/in.h>
#include <signal.h>

#include <optional>
#include <string>
#include <vector>

namespace recorder {

class LinkEvents {
public:
    virtual ~LinkEvents() = default;
    // A sniffer connected over TCP, or sends datagrams from a new address. Either way it
    // forwards no RTP until it is asked again.
    virtual void onSnifferConnected() = 0;
    virtual void onSnifferLost() = 0;
    virtual void onFrame(const Frame& frame) = 0;
};

// The recorder's end of the link: listens on TCP and UDP on one port, reads the frames the
// sniffer forwards, and sends it commands. One TCP connection at a time; the next waits in
// the listen queue until the current one closes.
class SnifferLink : public CommandSink {
public:
    explicit SnifferLink(LinkEvents& events) : events_(events), buffer_(65536) {}
    ~SnifferLink() override;
    SnifferLink(const SnifferLink&) = delete;
    SnifferLink& operator=(const SnifferLink&) = delete;

    // Port 0 picks a port that is free for both TCP and UDP.
    bool listen(const std::string& address, uint16_t port);
    uint16_t port() const { return port_; }

    // Waits up to `timeout` with `signalMask` in force, then handles whatever arrived.
    void service(Milliseconds timeout, const sigset_t& signalMask);

    // Commands go to the TCP sniffer and to the sender of the last datagram.
    bool send(CommandCode code, const Endpoint& rtp = {}) override;

private:
    bool bindBoth(const sockaddr_in& address);
    void acceptConnection();
    void readConnection();
    void readDatagrams();
    void closeConnection();
    void closeAll();

    LinkEvents& events_;
    std::vector<uint8_t> buffer_;
    int listener_ = -1;
    int udp_ = -1;
    int connection_ = -1;
    std::string connectionPeer_;
    FrameStream stream_;
    std::optional<sockaddr_in> datagramPeer_;
    uint16_t port_ = 0;
};

}  // namespace recorder
