#include "PcapFeed.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <csignal>
#include <cstdio>
#include <limits>
#include <stdexcept>

#include "Network.h"

namespace {
FILE* openWhenReaderComes(const std::string& path) {
    int fd = -1;
    waitUntil([&] { return (fd = open(path.c_str(), O_WRONLY | O_NONBLOCK)) >= 0; }, 10s);
    if (fd < 0)
        return nullptr;
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    return fdopen(fd, "w");
}
}  // namespace

PcapFeed::PcapFeed(const std::string& captureFile) {
    char error[PCAP_ERRBUF_SIZE];
    source = pcap_open_offline(captureFile.c_str(), error);
    if (!source)
        throw std::runtime_error(error);
    static int feeds = 0;
    pipePath = "/tmp/sniffer-test-feed-" + std::to_string(getpid()) + "-" + std::to_string(++feeds);
    mkfifo(pipePath.c_str(), 0600);
}

PcapFeed::~PcapFeed() {
    if (writer.joinable())
        writer.join();
    if (sink)
        pcap_dump_close(sink);
    pcap_close(source);
    unlink(pipePath.c_str());
}

void PcapFeed::begin() {
    writer = std::thread([this] {
        if (FILE* pipe = openWhenReaderComes(pipePath))
            sink = pcap_dump_fopen(source, pipe);
        copy(1);
    });
}

void PcapFeed::finish() {
    writer.join();
    writer = std::thread([this] {
        copy(std::numeric_limits<std::size_t>::max());
        if (sink)
            pcap_dump_close(sink);
        sink = nullptr;
    });
}

void PcapFeed::copy(std::size_t packets) {
    // A reader that went away shows as a failed write rather than as a
    // signal to the whole test process.
    sigset_t pipeSignal;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipeSignal, nullptr);
    pcap_pkthdr* header;
    const u_char* data;
    while (sink && packets-- > 0 && pcap_next_ex(source, &header, &data) == 1)
        pcap_dump(reinterpret_cast<u_char*>(sink), header, data);
    if (sink)
        pcap_dump_flush(sink);
}
