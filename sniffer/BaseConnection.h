#ifndef SNIFFER_BASE_CONNECTION_H
#define SNIFFER_BASE_CONNECTION_H

#include <cstdint>
#include <sys/types.h>

// One recorder command. On the wire it is 7 bytes, back to back on a stream:
// the code, the IPv4 address (network order) and the port (network order).
struct SnifferRequest {
    static constexpr int wireLength = 7;

    uint16_t request = 0;
    uint32_t rtpAddr = 0;  // host order, first dotted octet most significant
    uint16_t rtpPort = 0;  // host order

    SnifferRequest() = default;
    SnifferRequest(uint16_t request, uint32_t rtpAddr, uint16_t rtpPort)
        : request(request), rtpAddr(rtpAddr), rtpPort(rtpPort) {}
    bool operator==(const SnifferRequest& o) const {
        return request == o.request && rtpAddr == o.rtpAddr && rtpPort == o.rtpPort;
    }

    // Reads the code, address and port from the 7-byte wire form.
    void decode(const u_char* wire) {
        request = wire[0];
        decodeAddress(wire);
    }
    void decodeAddress(const u_char* wire) {
        rtpAddr = uint32_t(wire[1]) << 24 | uint32_t(wire[2]) << 16 | uint32_t(wire[3]) << 8 | wire[4];
        rtpPort = static_cast<uint16_t>(wire[5] << 8 | wire[6]);
    }
};

// The link to the recorder: frames out, commands in. Never blocks.
class BaseConnection {
public:
    // True when `request` holds a command to act on.
    virtual bool receiveRequest(SnifferRequest& request) = 0;
    // Sends one whole frame; returns the bytes counted as sent.
    virtual int sendPacket(u_char* buffer, int length) = 0;
    virtual void closeConnection() = 0;
    virtual ~BaseConnection() = default;
};

#endif
