// bench_memory: resident memory of the engine with many listed destinations,
// fed at a steady rate while destinations come and go.
//   bench_memory [-c calls] [-l listed] [-r packets-per-second] [-t seconds]
//                [-k changes-per-second] [-i sample-seconds] CAPTURE.pcap
// The capture is read from disk, again and again, through the capture
// callback; every change adds one destination and removes the oldest one it
// added. Prints the resident set every sample interval and the peak.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <pcap.h>
#include <thread>
#include <unistd.h>

#include "Pipeline.h"
#include "SngDissector.h"
#include "Sniffer.h"
#include "Traffic.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Settings {
    int calls = 1000;
    int listed = 100000;
    double rate = 50000;
    double seconds = 10;
    int changesPerSecond = 100;
    double sampleSeconds = 1;
};

// Adds a fresh destination and drops the oldest one added here.
class Churn {
public:
    Churn(SngDissector& dissector, int firstIndex) : dissector(dissector), nextIndex(firstIndex) {}
    void change() {
        const Destination d = absentDestination(nextIndex++);
        dissector.addRtp(d.ip, d.port);
        added.push_back(d);
        if (added.size() > 1000) {
            dissector.removeRtp(added.front().ip, added.front().port);
            added.pop_front();
        }
    }

private:
    SngDissector& dissector;
    int nextIndex;
    std::deque<Destination> added;
};

}  // namespace

int main(int argc, char** argv) {
    Settings s;
    int c;
    while ((c = getopt(argc, argv, "c:l:r:t:k:i:")) != -1) {
        switch (c) {
        case 'c': s.calls = std::atoi(optarg); break;
        case 'l': s.listed = std::atoi(optarg); break;
        case 'r': s.rate = std::atof(optarg); break;
        case 't': s.seconds = std::atof(optarg); break;
        case 'k': s.changesPerSecond = std::atoi(optarg); break;
        case 'i': s.sampleSeconds = std::atof(optarg); break;
        default:
            std::fprintf(stderr,
                         "usage: %s [-c calls] [-l listed] [-r pps] [-t seconds] [-k changes/s] "
                         "[-i sample-seconds] CAPTURE.pcap\n",
                         argv[0]);
            return 2;
        }
    }
    if (optind >= argc || s.rate <= 0) {
        std::fprintf(stderr, "usage: %s [options] CAPTURE.pcap\n", argv[0]);
        return 2;
    }
    PipelineBench bench;
    bench.listDestinations(s.listed, s.calls);
    Churn churn(*bench.dissector(), s.listed);
    std::printf("memory_sample seconds=0 rss_kib=%ld listed=%d\n", currentRssKiB(), s.listed);

    // Paced in slices of 10 ms; each slice also carries its share of changes.
    const double slice = 0.01;
    const long perSlice = static_cast<long>(s.rate * slice);
    const double changesPerSlice = s.changesPerSecond * slice;
    double changesDue = 0;
    long packets = 0;
    const auto start = Clock::now();
    double nextSample = s.sampleSeconds;
    char errbuf[PCAP_ERRBUF_SIZE];
    pcap_t* pcap = nullptr;
    for (long n = 0;; ++n) {
        const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
        if (elapsed >= s.seconds)
            break;
        for (long i = 0; i < perSlice; ++i) {
            pcap_pkthdr* header;
            const u_char* data;
            if (!pcap || pcap_next_ex(pcap, &header, &data) != 1) {
                if (pcap)
                    pcap_close(pcap);
                pcap = pcap_open_offline(argv[optind], errbuf);
                if (!pcap || pcap_next_ex(pcap, &header, &data) != 1) {
                    std::fprintf(stderr, "cannot read %s\n", argv[optind]);
                    return 1;
                }
            }
            Sniffer::gotPacket(nullptr, header, data);
            ++packets;
        }
        for (changesDue += changesPerSlice; changesDue >= 1; changesDue -= 1)
            churn.change();
        if (elapsed >= nextSample) {
            std::printf("memory_sample seconds=%.0f rss_kib=%ld packets=%ld\n", elapsed, currentRssKiB(), packets);
            std::fflush(stdout);
            nextSample += s.sampleSeconds;
        }
        const auto due =
            start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>((n + 1) * slice));
        std::this_thread::sleep_until(due);
    }
    bench.waitUntilDrained();
    if (pcap)
        pcap_close(pcap);
    const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    std::printf(
        "memory listed=%d rate=%.0f achieved_pps=%.0f seconds=%.0f changes_per_second=%d rss_kib=%ld "
        "peak_rss_kib=%ld\n",
        s.listed, s.rate, packets / elapsed, elapsed, s.changesPerSecond, currentRssKiB(), peakRssKiB());
    return 0;
}
