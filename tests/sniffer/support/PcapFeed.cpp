#include "PcapFeed.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {
constexpr std::size_t fileHeaderLength = 24;
constexpr std::size_t recordHeaderLength = 16;

uint32_t read32(const Bytes& b, std::size_t at, bool swapped) {
    const uint32_t little = b[at] | b[at + 1] << 8 | b[at + 2] << 16 | uint32_t(b[at + 3]) << 24;
    const uint32_t big = uint32_t(b[at]) << 24 | b[at + 1] << 16 | b[at + 2] << 8 | b[at + 3];
    return swapped ? big : little;
}

int openWhenReaderComes(const std::string& path) {
    int fd = -1;
    waitUntil([&] { return (fd = open(path.c_str(), O_WRONLY | O_NONBLOCK)) >= 0; }, 10s);
    if (fd >= 0)
        fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    return fd;
}
}  // namespace

PcapFeed::PcapFeed(const std::string& captureFile) {
    std::ifstream in(captureFile, std::ios::binary);
    capture.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (capture.size() < fileHeaderLength)
        throw std::runtime_error("not a capture file: " + captureFile);
    const bool swapped = capture[0] == 0xA1;  // magic written big-endian
    packetStart.push_back(fileHeaderLength);
    for (std::size_t at = fileHeaderLength; at + recordHeaderLength <= capture.size();) {
        at += recordHeaderLength + read32(capture, at + 8, swapped);
        packetStart.push_back(std::min(at, capture.size()));
    }
    static int feeds = 0;
    pipePath = "/tmp/sniffer-test-feed-" + std::to_string(getpid()) + "-" + std::to_string(++feeds);
    mkfifo(pipePath.c_str(), 0600);
}

PcapFeed::~PcapFeed() {
    if (writer.joinable())
        writer.join();
    if (pipe >= 0)
        close(pipe);
    unlink(pipePath.c_str());
}

void PcapFeed::begin(std::size_t packets) {
    const std::size_t to = std::min(packets, packetStart.size() - 1);
    writer = std::thread([this, to] {
        pipe = openWhenReaderComes(pipePath);
        write(0, packetStart[to]);
    });
}

void PcapFeed::finish() {
    writer.join();
    writer = std::thread([this] {
        write(written, capture.size());
        close(pipe);
        pipe = -1;
    });
}

void PcapFeed::write(std::size_t from, std::size_t to) {
    // A reader that went away shows as EPIPE here rather than as a signal
    // to the whole test process.
    sigset_t pipeSignal;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipeSignal, nullptr);
    while (pipe >= 0 && from < to) {
        const ssize_t n = ::write(pipe, capture.data() + from, to - from);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        from += static_cast<std::size_t>(n);
    }
    written = from;
}
