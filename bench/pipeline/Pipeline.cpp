#include "Pipeline.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <pcap.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

#include <log4cxx/basicconfigurator.h>
#include <log4cxx/logger.h>

#include "EngineOptions.h"
#include "SngDissector.h"
#include "Sniffer.h"
#include "Traffic.h"

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double cpuSeconds(clockid_t clock) {
    timespec t{};
    clock_gettime(clock, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

// One "Name:   value kB" field of a /proc status file.
long statusField(const std::string& file, const char* name) {
    std::ifstream in(file);
    std::string line;
    const std::size_t length = std::strlen(name);
    while (std::getline(in, line))
        if (line.compare(0, length, name) == 0)
            return std::atol(line.c_str() + length);
    return -1;
}

}  // namespace

long peakRssKiB() {
    return statusField("/proc/self/status", "VmHWM:");
}

long currentRssKiB() {
    return statusField("/proc/self/status", "VmRSS:");
}

bool CaptureInMemory::load(const std::string& path) {
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in)
        return false;
    // Reserved, not resized: zero-filling the pages first would double the loading time.
    const auto size = static_cast<std::size_t>(in.tellg());
    bytes.reset(new char[size]);
    length = size;
    in.seekg(0);
    in.read(bytes.get(), static_cast<std::streamsize>(size));
    return in && size > 0;
}

long CaptureInMemory::replay(void (*callback)(u_char*, const pcap_pkthdr*, const u_char*), u_char* user) const {
    FILE* file = fmemopen(bytes.get(), length, "rb");
    if (!file)
        return -1;
    char errbuf[PCAP_ERRBUF_SIZE];
    pcap_t* pcap = pcap_fopen_offline(file, errbuf);  // closes the file with the handle
    if (!pcap) {
        std::fclose(file);
        std::fprintf(stderr, "pcap: %s\n", errbuf);
        return -1;
    }
    long frames = 0;
    struct Counted {
        void (*callback)(u_char*, const pcap_pkthdr*, const u_char*);
        u_char* user;
        long* frames;
    } counted{callback, user, &frames};
    pcap_loop(
        pcap, -1,
        [](u_char* c, const pcap_pkthdr* h, const u_char* frame) {
            auto* counted = reinterpret_cast<Counted*>(c);
            ++*counted->frames;
            counted->callback(counted->user, h, frame);
        },
        reinterpret_cast<u_char*>(&counted));
    pcap_close(pcap);
    return frames;
}

PassResult runBaseline(const CaptureInMemory& capture) {
    static u_char copy[65536 + 64];
    uint64_t checksum = 0;
    const auto start = Clock::now();
    const double cpuStart = cpuSeconds(CLOCK_THREAD_CPUTIME_ID);
    PassResult result;
    result.packets = capture.replay(
        [](u_char* sum, const pcap_pkthdr* h, const u_char* frame) {
            std::memcpy(copy, frame, h->caplen);
            *reinterpret_cast<uint64_t*>(sum) += copy[h->caplen / 2];
        },
        reinterpret_cast<u_char*>(&checksum));
    result.seconds = secondsSince(start);
    result.producerSeconds = result.seconds;
    result.producerCpu = cpuSeconds(CLOCK_THREAD_CPUTIME_ID) - cpuStart;
    result.forwarded = checksum & 1;  // keeps the copy from being optimised away
    return result;
}

// ---------------------------------------------------------------- the engine

class PipelineBench::Engine {
public:
    Engine(const std::string& device, const char* filter) {
        log4cxx::BasicConfigurator::configure();
        log4cxx::Logger::getLogger("SnifferClient")->setLevel(log4cxx::Level::getWarn());
        Sniffer::installWakeSignal();  // stopSniffing() interrupts capture threads with it
        sniffer.setEmbedded(true);
        sniffer.loadOptions(EngineOptions::fromEnvironment);  // SNIFFER_<key>: a run with opt-in keys
        sniffer.setDevice(device.c_str());
        sniffer.setFilter(filter);
        sniffer.setupSniffing();
        counter = new CountingConnection;
        dissector()->useConnections(counter, nullptr);
        consumer = std::thread([this] {
            pthread_getcpuclockid(pthread_self(), &consumerClock);
            consumerTid = static_cast<long>(syscall(SYS_gettid));
            sniffer.startSniffing();
        });
        while (consumerTid.load() == 0)
            std::this_thread::yield();
    }
    ~Engine() {
        sniffer.stopSniffing();
        consumer.join();
    }

    SngDissector* dissector() { return sniffer.getDissector(); }

    long consumerSleeps() const {
        return statusField("/proc/self/task/" + std::to_string(consumerTid.load()) + "/status",
                           "voluntary_ctxt_switches:");
    }

    void waitUntilDrained() {
        while (!sniffer.allFilesRead())
            std::this_thread::sleep_for(std::chrono::microseconds(50));
    }

    Sniffer sniffer;
    CountingConnection* counter;
    std::thread consumer;
    clockid_t consumerClock{};
    std::atomic<long> consumerTid{0};
};

PipelineBench::PipelineBench(const std::string& device, const char* filter) : engine(new Engine(device, filter)) {}

PipelineBench::~PipelineBench() {
    delete engine;
}

Sniffer& PipelineBench::sniffer() {
    return engine->sniffer;
}

uint64_t PipelineBench::framesForwarded() const {
    return engine->counter->frames.load();
}

SngDissector* PipelineBench::dissector() {
    return engine->dissector();
}

void PipelineBench::waitUntilDrained() {
    engine->waitUntilDrained();
}

void PipelineBench::listDestinations(int count, int callsInCapture) {
    SngDissector* dissector = engine->dissector();
    dissector->removeAllRtp();
    const int streams = 2 * callsInCapture;
    for (int i = 0; i < count; ++i) {
        const Destination d = i < streams ? rtpDestination(i / 2, i % 2) : absentDestination(i - streams);
        dissector->addRtp(d.ip, d.port);
    }
}

PassResult PipelineBench::run(const CaptureInMemory& capture) {
    PassResult result;
    const uint64_t framesBefore = engine->counter->frames.load();
    const uint64_t bytesBefore = engine->counter->bytes.load();
    const long sleepsBefore = engine->consumerSleeps();
    const double consumerCpuStart = cpuSeconds(engine->consumerClock);
    const auto start = Clock::now();
    const double cpuStart = cpuSeconds(CLOCK_THREAD_CPUTIME_ID);
    result.packets = capture.replay(Sniffer::gotPacket, nullptr);
    result.producerCpu = cpuSeconds(CLOCK_THREAD_CPUTIME_ID) - cpuStart;
    result.producerSeconds = secondsSince(start);
    engine->waitUntilDrained();
    result.seconds = secondsSince(start);
    result.consumerCpu = cpuSeconds(engine->consumerClock) - consumerCpuStart;
    result.forwarded = engine->counter->frames.load() - framesBefore;
    result.forwardedBytes = engine->counter->bytes.load() - bytesBefore;
    result.wakeupsPerPacket = double(engine->consumerSleeps() - sleepsBefore) / double(result.packets);
    return result;
}
