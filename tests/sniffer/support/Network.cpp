#include "Network.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "Programs.h"

bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

bool runningAsRoot() {
    return geteuid() == 0;
}

Bytes bytesOf(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

namespace {
sockaddr_in ipv4(const char* ip, uint16_t port) {
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = inet_addr(ip);
    a.sin_port = htons(port);
    return a;
}

// -1 when the socket cannot be made or bound.
int boundUdpSocket(const char* ip) {
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    const sockaddr_in local = ipv4(ip, 0);
    if (fd >= 0 && bind(fd, reinterpret_cast<const sockaddr*>(&local), sizeof local) == 0)
        return fd;
    if (fd >= 0)
        close(fd);
    return -1;
}
}  // namespace

UdpSocket::UdpSocket(const char* localIp) : fd(boundUdpSocket(localIp)) {
    if (fd < 0)
        throw std::runtime_error("cannot bind a UDP socket to " + std::string(localIp));
}

UdpSocket::UdpSocket(int fd) : fd(fd) {}

UdpSocket::~UdpSocket() {
    close(fd);
}

uint16_t UdpSocket::port() const {
    sockaddr_in local{};
    socklen_t len = sizeof local;
    getsockname(fd, reinterpret_cast<sockaddr*>(&local), &len);
    return ntohs(local.sin_port);
}

void UdpSocket::sendTo(const char* ip, uint16_t port, const Bytes& data) const {
    const sockaddr_in to = ipv4(ip, port);
    sendto(fd, data.data(), data.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
}

Bytes UdpSocket::receive(std::chrono::milliseconds timeout, uint16_t* fromPort) const {
    pollfd p{fd, POLLIN, 0};
    if (poll(&p, 1, static_cast<int>(timeout.count())) != 1)
        return {};
    Bytes data(65536);
    sockaddr_in from{};
    socklen_t len = sizeof from;
    const ssize_t n = recvfrom(fd, data.data(), data.size(), 0, reinterpret_cast<sockaddr*>(&from), &len);
    data.resize(n > 0 ? static_cast<std::size_t>(n) : 0);
    if (fromPort)
        *fromPort = ntohs(from.sin_port);
    return data;
}

// ---------------------------------------------------------------- veth pair

namespace {
bool ip(const std::vector<std::string>& args) {
    std::vector<std::string> argv{onPath("ip")};
    argv.insert(argv.end(), args.begin(), args.end());
    return runsCleanly(argv, 10s);
}
}  // namespace

VethPair::VethPair() {
    const std::string id = "snt" + std::to_string(getpid());
    namespaceName = id;
    outsideName = id + "a";
    insideName = id + "b";
    std::string mac;
    ready = ip({"netns", "add", namespaceName}) &&
            ip({"link", "add", outsideName, "type", "veth", "peer", "name", insideName, "netns", namespaceName}) &&
            ip({"link", "set", outsideName, "up"}) &&
            ip({"-n", namespaceName, "addr", "add", std::string(insideAddress) + "/24", "dev", insideName}) &&
            ip({"-n", namespaceName, "link", "set", insideName, "up"}) &&
            std::getline(std::ifstream("/sys/class/net/" + outsideName + "/address"), mac) &&
            ip({"-n", namespaceName, "neigh", "add", peerAddress, "lladdr", mac, "dev", insideName});
}

VethPair::~VethPair() {
    // Deleting one end deletes the pair at once; the namespace goes after.
    ip({"link", "del", outsideName});
    ip({"netns", "del", namespaceName});
}

int VethPair::udpSocketInside() const {
    int fd = -1;
    // setns() changes only the calling thread; the socket keeps its namespace.
    std::thread inside([&] {
        const int ns = open(("/var/run/netns/" + namespaceName).c_str(), O_RDONLY);
        if (ns >= 0 && setns(ns, CLONE_NEWNET) == 0)
            fd = boundUdpSocket(insideAddress);
        if (ns >= 0)
            close(ns);
    });
    inside.join();
    return fd;
}
