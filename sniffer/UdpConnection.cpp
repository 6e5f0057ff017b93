#include "UdpConnection.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "AddressText.h"

log4cxx::LoggerPtr UdpConnection::logger = log4cxx::Logger::getLogger("SnifferClient");

UdpConnection::UdpConnection(const char* host, int port, CommandSourceFilter sources)
    : serverPort(port), serverHost(host), sources(std::move(sources)) {
    serverAddr.sin_family = AF_INET;
    serverAddr.sin_addr.s_addr = inet_addr(serverHost);
    serverAddr.sin_port = htons(static_cast<uint16_t>(port));
    clientAddr.sin_family = AF_INET;
    clientAddr.sin_addr.s_addr = htonl(INADDR_ANY);
    clientAddr.sin_port = htons(0);

    clientSd = socket(AF_INET, SOCK_DGRAM, 0);
    if (clientSd < 0) {
        LOG4CXX_ERROR(logger, "Error, client can't open datagram socket");
        std::exit(1);
    }
    fcntl(clientSd, F_SETFL, fcntl(clientSd, F_GETFL, 0) | O_NONBLOCK);
    const int reuse = 1;
    setsockopt(clientSd, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    if (bind(clientSd, reinterpret_cast<const sockaddr*>(&clientAddr), sizeof clientAddr) < 0) {
        LOG4CXX_ERROR(logger, "Error, client bind failed UdpConnection");
        std::exit(1);
    }
}

sockaddr_in UdpConnection::destination() {
    std::lock_guard<std::mutex> guard(addrLock);
    return serverAddr;
}

int UdpConnection::sendPacket(u_char* frame, int length) {
    const sockaddr_in to = destination();
    const ssize_t sent = sendto(clientSd, frame, length, 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
    if (sent != length)
        LOG4CXX_ERROR(logger, "len=" << length << ", sent=" << sent << "\nError sento on socket");
    return static_cast<int>(sent);
}

bool UdpConnection::receiveRequest(SnifferRequest& request) {
    sockaddr_in from{};
    ssize_t n = 0;
    // A refused datagram is passed over, so that a command queued behind it
    // takes effect in the same round.
    do {
        socklen_t fromLen = sizeof from;
        n = recvfrom(clientSd, buffer, receiveBufferSize, 0, reinterpret_cast<sockaddr*>(&from), &fromLen);
        if (n <= 0)
            return false;
    } while (!sources.accepts(ntohl(from.sin_addr.s_addr)));
    {
        std::lock_guard<std::mutex> guard(addrLock);
        serverAddr = from;
    }
    // A datagram shorter than a command is decoded from whatever the buffer
    // holds, as the recorder protocol has always done.
    request.decode(buffer);
    LOG4CXX_DEBUG(logger, "rx from server cmd=" << request.request << ", ip=" << dottedQuad(request.rtpAddr)
                                                << ", port=" << request.rtpPort << ", nRcvd=" << n);
    return true;
}

void UdpConnection::closeConnection() {
    close(clientSd);
}
