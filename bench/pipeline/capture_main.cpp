// bench_capture: writes the synthetic capture the benchmarks replay.
//   bench_capture [-c calls] [-s seconds] [-H h323-share] [-S] [-T] [-F n] OUT.pcap [SETUP.pcap]
// SETUP.pcap, when named, receives the calls' SIP set-up alone; `-H 0.01`
// makes 1% of the packets H.323 call signalling; `-S` starts the calls one
// after the other, each with its media right after its answer; `-T` sends
// SIP over TCP, `-F 10` every tenth SIP message in two IPv4 fragments.
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#include "Traffic.h"

int main(int argc, char** argv) {
    TrafficPlan plan;
    int c;
    while ((c = getopt(argc, argv, "c:s:H:STF:")) != -1) {
        switch (c) {
        case 'c': plan.calls = std::atoi(optarg); break;
        case 's': plan.seconds = std::atof(optarg); break;
        case 'H': plan.h323Share = std::atof(optarg); break;
        case 'S': plan.staggered = true; break;
        case 'T': plan.sipOverTcp = true; break;
        case 'F': plan.sipFragmentEvery = std::atoi(optarg); break;
        default:
            std::fprintf(stderr,
                         "usage: %s [-c calls] [-s seconds] [-H h323-share] [-S] [-T] [-F n] OUT.pcap [SETUP.pcap]\n",
                         argv[0]);
            return 2;
        }
    }
    if (optind >= argc || plan.calls < 1 || plan.calls > 65535 || plan.seconds <= 0 || plan.h323Share < 0 ||
        plan.h323Share >= 1) {
        std::fprintf(stderr, "usage: %s [-c calls 1-65535] [-s seconds] [-H share 0-1] [-S] OUT.pcap [SETUP.pcap]\n",
                     argv[0]);
        return 2;
    }
    const long frames = writeCapture(plan, argv[optind]);
    if (frames == 0) {
        std::fprintf(stderr, "cannot write %s\n", argv[optind]);
        return 1;
    }
    std::printf("capture file=%s calls=%d seconds=%g frames=%ld call_frames=%ld\n", argv[optind], plan.calls,
                plan.seconds, frames, countCallFrames(argv[optind]));
    if (optind + 1 < argc) {
        const long setup = writeSetup(plan, argv[optind + 1]);
        if (setup == 0) {
            std::fprintf(stderr, "cannot write %s\n", argv[optind + 1]);
            return 1;
        }
        std::printf("setup file=%s frames=%ld\n", argv[optind + 1], setup);
    }
    return 0;
}
