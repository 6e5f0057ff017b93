#ifndef SNIFFER_UDP_CONNECTION_H
#define SNIFFER_UDP_CONNECTION_H

#include <atomic>
#include <mutex>
#include <netinet/in.h>

#include <log4cxx/logger.h>

#include "BaseConnection.h"
#include "CommandSourceFilter.h"

// Datagram link to the recorder: one frame per datagram, one command per
// datagram. Frames go to the sender of the last command received, so a
// recorder can take the stream over by sending it a command; a datagram the
// filter refuses is neither decoded nor followed.
class UdpConnection : public BaseConnection {
public:
    static constexpr int receiveBufferSize = 2000;

    UdpConnection(const char* host, int port, CommandSourceFilter sources = {});
    ~UdpConnection() override = default;

    bool receiveRequest(SnifferRequest& request) override;
    int sendPacket(u_char* buffer, int length) override;
    void closeConnection() override;

    int getServerPort() const { return serverPort; }
    int getClientSd() const { return clientSd; }

private:
    sockaddr_in destination();

    sockaddr_in clientAddr{};
    sockaddr_in serverAddr{};
    int clientSd = -1;
    int serverPort;
    const char* serverHost;
    CommandSourceFilter sources;
    // serverAddr is rewritten by the command reader while the sender reads it.
    std::mutex addrLock;
    u_char buffer[receiveBufferSize] = {};

    static log4cxx::LoggerPtr logger;
};

#endif
