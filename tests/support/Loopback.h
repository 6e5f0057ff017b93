// The IPv4 loopback address with a port, for the tests' own sockets.
#ifndef TESTS_SUPPORT_LOOPBACK_H
#define TESTS_SUPPORT_LOOPBACK_H

#include <arpa/inet.h>
#include <cstdint>
#include <netinet/in.h>
#include <sys/socket.h>

inline sockaddr_in loopback(uint16_t port) {
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    a.sin_port = htons(port);
    return a;
}

// A TCP socket listening on a free loopback port, which `port` receives;
// -1 when it cannot be made.
inline int listenOnLoopback(uint16_t& port, int backlog = 8) {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in local = loopback(0);
    socklen_t length = sizeof local;
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&local), sizeof local) != 0 || listen(fd, backlog) != 0 ||
        getsockname(fd, reinterpret_cast<sockaddr*>(&local), &length) != 0)
        return -1;
    port = ntohs(local.sin_port);
    return fd;
}

#endif
