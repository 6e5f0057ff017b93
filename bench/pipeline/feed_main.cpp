// bench_feed: replays a capture file into a pipe (a FIFO that the sniffer's
// "file:" device reads), so that the run can be paced and started on cue.
//   bench_feed [-a frames] [-b frames-per-second] [-w seconds]
//              [-r frames-per-second] [-n frames] IN.pcap OUT
// Writes the file header and the first `-a` frames (none by default) at
// most `-b` a second, waits `-w` seconds, then writes the rest of the first
// `-n` frames (all by default), at most `-r` a second (0: at once). Fed the
// calls' set-up slowly, a recorder asks for their streams one call at a
// time, and the wait lets its requests take effect before the media comes.
// Prints the wall-clock time at which the paced frames started and ended,
// and how many of all the frames belong to the calls.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <pcap.h>
#include <thread>
#include <unistd.h>

#include "Traffic.h"

namespace {
double now() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}
}  // namespace

int main(int argc, char** argv) {
    double wait = 0;
    double rate = 0;
    long limit = -1;
    long ahead = 0;
    double aheadRate = 0;
    int c;
    while ((c = getopt(argc, argv, "a:b:w:r:n:")) != -1) {
        switch (c) {
        case 'w': wait = std::atof(optarg); break;
        case 'r': rate = std::atof(optarg); break;
        case 'n': limit = std::atol(optarg); break;
        case 'a': ahead = std::atol(optarg); break;
        case 'b': aheadRate = std::atof(optarg); break;
        default:
            std::fprintf(stderr, "usage: %s [-a frames] [-b fps] [-w seconds] [-r fps] [-n frames] IN.pcap OUT\n",
                         argv[0]);
            return 2;
        }
    }
    if (optind + 2 != argc) {
        std::fprintf(stderr, "usage: %s [-a frames] [-b fps] [-w seconds] [-r fps] [-n frames] IN.pcap OUT\n", argv[0]);
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
    long frames = 0;
    long callFrames = 0;
    pcap_pkthdr* header;
    const u_char* data;
    auto writeNext = [&] {
        if (frames == limit || pcap_next_ex(in, &header, &data) != 1)
            return false;
        pcap_dump(reinterpret_cast<u_char*>(out), header, data);
        callFrames += isCallFrame(data, header->caplen) ? 1 : 0;
        ++frames;
        return true;
    };
    // Paced in slices of a millisecond's worth of frames.
    auto writePaced = [&](double rate, long until) {
        const long slice = rate > 0 ? std::max(1L, static_cast<long>(rate / 1000)) : 0;
        const double start = now();
        const long first = frames;
        while (frames != until && writeNext()) {
            if (slice && (frames - first) % slice == 0) {
                pcap_dump_flush(out);
                const double early = start + (frames - first) / rate - now();
                if (early > 0)
                    std::this_thread::sleep_for(std::chrono::duration<double>(early));
            }
        }
        pcap_dump_flush(out);
        return start;
    };
    writePaced(aheadRate, ahead);
    std::this_thread::sleep_for(std::chrono::duration<double>(wait));
    const double start = writePaced(rate, -1);
    pcap_dump_close(out);
    std::printf("feed frames=%ld call_frames=%ld start=%.6f end=%.6f\n", frames, callFrames, start, now());
    pcap_close(in);
    return 0;
}
