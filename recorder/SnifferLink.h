#pragma once

#include "Backlog.h"
#include "Wire.h"

#include <netinet/in.h>
#include <signal.h>

#include <array>
#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace recorder {

// What the link has seen, counted on its own thread and read from any.
struct LinkCounters {
    static constexpr size_t kProtocols = 5;  // indexed by the protocol byte, 1 to 4
    std::array<std::atomic<uint64_t>, kProtocols> frames{}, bytes{};
    std::atomic<uint64_t> connections{0}, commands{0};
};

// The recorder's end of the link: listens on TCP and UDP on one port, reads the frames the
// sniffer forwards on a thread of its own into the backlog, and sends the sniffer commands
// from any thread. One TCP connection at a time; the next waits in the listen queue until the
// current one closes.
//
// The reading thread does nothing but read, cut frames and queue them, so a burst from the
// sniffer lands in memory at once rather than filling the sniffer's send buffer while the
// recorder creates folders or writes files.
class SnifferLink : public CommandSink {
public:
    explicit SnifferLink(Backlog& backlog);
    ~SnifferLink() override;
    SnifferLink(const SnifferLink&) = delete;
    SnifferLink& operator=(const SnifferLink&) = delete;

    // Port 0 picks a port that is free for both TCP and UDP.
    bool listen(const std::string& address, uint16_t port);
    uint16_t port() const { return port_; }

    // Starts reading. A signal of `stopSignals` (blocked in every thread) ends the reading; then
    // stopped() is true, and everything read before is in the backlog.
    bool start(const sigset_t& stopSignals);
    bool stopped() const { return stopped_.load(std::memory_order_acquire); }
    void join();

    // Commands go to the TCP sniffer and to the sender of the last datagram.
    bool send(CommandCode code, const Endpoint& rtp = {}) override;

    const LinkCounters& counters() const { return counters_; }

private:
    bool bindBoth(const sockaddr_in& address);
    void read();
    void acceptConnection();
    void drain();
    // Each says whether it read anything.
    bool readConnection();
    int readDatagrams();
    void queue(const Frame& frame);
    void closeConnection();
    void closeAll();

    Backlog& backlog_;
    LinkCounters counters_;
    std::vector<uint8_t> buffer_;     // one read from the TCP sniffer
    std::vector<uint8_t> datagrams_;  // one batch of datagrams
    int listener_ = -1;
    int udp_ = -1;
    int signals_ = -1;
    FrameStream stream_;
    uint16_t port_ = 0;
    std::thread reader_;
    std::atomic<bool> stopped_{false};

    // Where commands go; the reading thread changes them, any thread sends.
    std::mutex peers_;
    int connection_ = -1;
    std::string connectionPeer_;
    std::optional<sockaddr_in> datagramPeer_;
};

}  // namespace recorder
