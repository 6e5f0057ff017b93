// bench_feed: replays a capture file into a pipe (a FIFO that the sniffer's
// "file:" device reads), so that the run can be paced and started on cue.
//   bench_feed [-w seconds] [-r frames-per-second] IN.pcap OUT
// Writes the file header, waits `-w` seconds (the sniffer connects to its
// recorder meanwhile), then the frames, at most `-r` a second (0: at once).
// Prints the wall-clock time at which the frames started and ended.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <pcap.h>
#include <thread>
#include <unistd.h>

namespace {
double now() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}
}  // namespace

int main(int argc, char** argv) {
    double wait = 0;
    double rate = 0;
    int c;
    while ((c = getopt(argc, argv, "w:r:")) != -1) {
        switch (c) {
        case 'w':
            wait = std::atof(optarg);
            break;
        case 'r':
            rate = std::atof(optarg);
            break;
        default:
            std::fprintf(stderr, "usage: %s [-w seconds] [-r frames-per-second] IN.pcap OUT\n", argv[0]);
            return 2;
        }
    }
    if (optind + 2 != argc) {
        std::fprintf(stderr, "usage: %s [-w seconds] [-r frames-per-second] IN.pcap OUT\n", argv[0]);
        return 2;
    }
    char errbuf[PCAP_ERRBUF_SIZE];
    pcap_t* in = pcap_open_offline(argv[optind], errbuf);
    if (!in) {
        std::fprintf(stderr, "%s\n", errbuf);
        return 1;
    }
    pcap_dumper_t* out = pcap_dump_open(in, argv[optind + 1]);
    if (!out) {
        std::fprintf(stderr, "%s\n", pcap_geterr(in));
        return 1;
    }
    pcap_dump_flush(out);
    std::this_thread::sleep_for(std::chrono::duration<double>(wait));

    // Paced in slices of a millisecond's worth of frames.
    const long slice = rate > 0 ? std::max(1L, static_cast<long>(rate / 1000)) : 0;
    const double start = now();
    long frames = 0;
    pcap_pkthdr* header;
    const u_char* data;
    while (pcap_next_ex(in, &header, &data) == 1) {
        pcap_dump(reinterpret_cast<u_char*>(out), header, data);
        if (slice && ++frames % slice == 0) {
            pcap_dump_flush(out);
            const double due = start + frames / rate;
            const double ahead = due - now();
            if (ahead > 0)
                std::this_thread::sleep_for(std::chrono::duration<double>(ahead));
        } else if (!slice) {
            ++frames;
        }
    }
    pcap_dump_close(out);
    std::printf("feed frames=%ld start=%.6f end=%.6f\n", frames, start, now());
    pcap_close(in);
    return 0;
}
