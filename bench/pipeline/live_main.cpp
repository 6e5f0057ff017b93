// bench_live: the engine capturing a live device for a while, then what the
// kernel dropped and what was forwarded.
//   bench_live [-c calls] [-l listed] [-t seconds] [-f filter] DEVICE
// Every stream of the synthetic calls is listed, so all their frames are
// forwarded, to a link that counts them.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <unistd.h>

#include "Pipeline.h"
#include "Sniffer.h"

int main(int argc, char** argv) {
    int calls = 1000;
    int listed = 2000;
    double seconds = 30;
    const char* filter = "udp";
    int c;
    while ((c = getopt(argc, argv, "c:l:t:f:")) != -1) {
        switch (c) {
        case 'c': calls = std::atoi(optarg); break;
        case 'l': listed = std::atoi(optarg); break;
        case 't': seconds = std::atof(optarg); break;
        case 'f': filter = optarg; break;
        default:
            std::fprintf(stderr, "usage: %s [-c calls] [-l listed] [-t seconds] [-f filter] DEVICE\n", argv[0]);
            return 2;
        }
    }
    if (optind >= argc) {
        std::fprintf(stderr, "usage: %s [-c calls] [-l listed] [-t seconds] [-f filter] DEVICE\n", argv[0]);
        return 2;
    }
    PipelineBench bench(argv[optind], filter);
    bench.listDestinations(listed, calls);
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    pcap_stat stats{};
    if (!bench.sniffer().getCaptureStats(0, stats)) {
        std::fprintf(stderr, "no capture statistics for %s\n", argv[optind]);
        return 1;
    }
    std::printf("live device=%s seconds=%.0f received=%u kernel_dropped=%u interface_dropped=%u forwarded=%llu\n",
                argv[optind], seconds, stats.ps_recv, stats.ps_drop, stats.ps_ifdrop,
                static_cast<unsigned long long>(bench.framesForwarded()));
    return 0;
}
