// bench_reader: the fastest recorder there can be, to measure the sniffer's
// side of the TCP link: asks for every stream of the synthetic calls, then
// counts the frames that arrive until the sniffer closes the connection.
//   bench_reader [-c calls] [-p port]
#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "Traffic.h"

namespace {

double now() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::vector<uint8_t> addCommands(int calls) {
    std::vector<uint8_t> wire;
    for (int call = 0; call < calls; ++call) {
        for (int direction = 0; direction < 2; ++direction) {
            const Destination d = rtpDestination(call, direction);
            const uint8_t command[7] = {1,
                                        static_cast<uint8_t>(d.ip >> 24),
                                        static_cast<uint8_t>(d.ip >> 16),
                                        static_cast<uint8_t>(d.ip >> 8),
                                        static_cast<uint8_t>(d.ip),
                                        static_cast<uint8_t>(d.port >> 8),
                                        static_cast<uint8_t>(d.port)};
            wire.insert(wire.end(), command, command + 7);
        }
    }
    return wire;
}

int listenOn(int port) {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    const int on = 1;
    setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    // Room for a few hundred milliseconds of frames: this reader is never
    // the reason the link fills up.
    const int size = 64 << 20;
    setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(fd, 1) != 0) {
        std::perror("listen");
        std::exit(1);
    }
    return fd;
}

}  // namespace

int main(int argc, char** argv) {
    int calls = 1000;
    int port = 6191;
    int c;
    while ((c = getopt(argc, argv, "c:p:")) != -1) {
        switch (c) {
        case 'c': calls = std::atoi(optarg); break;
        case 'p': port = std::atoi(optarg); break;
        default: std::fprintf(stderr, "usage: %s [-c calls] [-p port]\n", argv[0]); return 2;
        }
    }
    const int listener = listenOn(port);
    std::printf("reader listening port=%d\n", port);
    std::fflush(stdout);
    const int link = accept(listener, nullptr, nullptr);
    // One command a millisecond: the sniffer's command reader garbles a
    // burst of them (all but the first two of 200 sent together).
    const std::vector<uint8_t> commands = addCommands(calls);
    for (std::size_t at = 0; at < commands.size(); at += 7) {
        if (send(link, commands.data() + at, 7, 0) != 7) {
            std::perror("send");
            return 1;
        }
        usleep(1000);
    }
    // Frames follow each other on the stream, each behind its 15-byte
    // header whose first two bytes give its whole length; a header may
    // straddle two reads.
    std::vector<uint8_t> buffer(1 << 20);
    long frames = 0;
    long long bytes = 0;
    long skip = 0;        // bytes of the current frame still to pass over
    int lengthBytes = 0;  // of the next header's length, read so far
    unsigned length = 0;
    double first = 0, last = 0;
    for (;;) {
        const ssize_t n = recv(link, buffer.data(), buffer.size(), 0);
        if (n <= 0)
            break;
        last = now();
        if (first == 0)
            first = last;
        bytes += n;
        for (ssize_t i = 0; i < n;) {
            if (skip > 0) {
                const long k = std::min<long>(skip, n - i);
                skip -= k;
                i += k;
                continue;
            }
            length = length << 8 | buffer[i++];
            if (++lengthBytes == 2) {
                ++frames;
                skip = length > 2 ? length - 2 : 0;
                lengthBytes = 0;
                length = 0;
            }
        }
    }
    std::printf("reader frames=%ld bytes=%lld first=%.6f last=%.6f\n", frames, bytes, first, last);
    close(link);
    close(listener);
    return 0;
}
