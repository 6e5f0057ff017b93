// A recorder stand-in on 127.0.0.1 that collects the frames the sniffer
// forwards over UDP, one frame per datagram.
#ifndef TESTS_SUPPORT_FRAME_RECEIVER_H
#define TESTS_SUPPORT_FRAME_RECEIVER_H

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

struct Frame {
    std::string bytes;

    unsigned length() const { return uint8_t(bytes[0]) << 8 | uint8_t(bytes[1]); }
    unsigned protocol() const { return uint8_t(bytes[2]); }
    std::string payload() const { return bytes.substr(15); }
    // The H.323 description: the payload up to its terminating zero.
    std::string text() const { return std::string(payload().c_str()); }
};

class UdpFrameReceiver {
public:
    UdpFrameReceiver();  // binds an ephemeral port on 127.0.0.1
    ~UdpFrameReceiver();
    unsigned port() const { return port_; }
    // Collects frames until `count` have arrived or `limit` has passed.
    std::vector<Frame> receive(size_t count, std::chrono::milliseconds limit);

private:
    int socket_ = -1;
    unsigned port_ = 0;
};

#endif
