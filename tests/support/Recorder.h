#ifndef SNIFFER_TESTS_RECORDER_H
#define SNIFFER_TESTS_RECORDER_H

#include <netinet/in.h>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "Network.h"

// One frame as the recorder receives it: the 15-byte header and the payload.
struct ForwardedFrame {
    Bytes bytes;

    int length() const { return bytes[0] << 8 | bytes[1]; }
    int protocol() const { return bytes[2]; }
    // "a.b.c.d:port" of the header's destination and source.
    std::string destination() const { return endpoint(3); }
    std::string source() const { return endpoint(9); }
    Bytes payload() const { return Bytes(bytes.begin() + 15, bytes.end()); }

private:
    std::string endpoint(int at) const;
};

// The 7-byte wire form of a recorder command.
Bytes command(uint8_t code, const char* ip, uint16_t port);

// A recorder on 127.0.0.1: collects forwarded frames in arrival order and
// sends commands back. A reader thread takes what arrives at once, so the
// sniffer never finds its link full.
class Recorder {
public:
    virtual ~Recorder() = default;

    uint16_t port() const { return boundPort; }
    virtual void send(const Bytes& data) = 0;

    // The oldest frame not yet taken, waiting at most `timeout`.
    std::optional<ForwardedFrame> next(std::chrono::milliseconds timeout = 3s);
    // The next `n` frames, or fewer when none comes for `quiet`.
    std::vector<ForwardedFrame> next(std::size_t n, std::chrono::milliseconds quiet = 3s);
    // Every frame received so far, taken or not.
    std::vector<ForwardedFrame> received() const;
    std::size_t count() const;
    // Sends `commands` and a heartbeat request, and waits for the heartbeat
    // reply: the sniffer applies commands in order, so all of them are in
    // force once the reply is here. The reply is not handed out by next().
    bool apply(const std::vector<Bytes>& commands, std::chrono::milliseconds timeout = 3s);
    // From now on frames go to `tap` (on the reader thread) instead of being
    // kept, for runs too long to hold them all.
    void tapInstead(std::function<void(const ForwardedFrame&)> tap);

protected:
    void deliver(ForwardedFrame frame);
    uint16_t boundPort = 0;
    std::atomic<bool> stopping{false};

private:
    mutable std::mutex lock;
    std::condition_variable arrived;
    std::deque<ForwardedFrame> pending;
    std::vector<ForwardedFrame> all;
    int heartbeatReplies = 0;
    std::function<void(const ForwardedFrame&)> tap;
};

// Accepts one sniffer connection at a time on a fixed port; can go away
// and come back on the same port.
class TcpRecorder : public Recorder {
public:
    TcpRecorder();
    ~TcpRecorder() override;

    void send(const Bytes& data) override;
    // Closes the listening socket and the connection, as a recorder that stops.
    void stop();
    // Listens again on the same port.
    void start();
    // Ends the current connection and goes on listening, as a recorder that
    // restarts its session.
    void dropConnection();
    bool connected() const { return connection >= 0; }
    int connections() const { return acceptedCount; }

private:
    void serve();
    void takeFrames(Bytes& stream);

    int listener = -1;
    std::atomic<int> connection{-1};
    std::atomic<int> acceptedCount{0};
    std::thread reader;
};

// Receives frames as datagrams; commands go to the address the last frame
// came from.
class UdpRecorder : public Recorder {
public:
    UdpRecorder();
    ~UdpRecorder() override;

    void send(const Bytes& data) override;

private:
    void serve();

    int fd = -1;
    std::mutex senderLock;
    sockaddr_in sender{};
    std::thread reader;
};

#endif
