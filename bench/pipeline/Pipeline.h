#ifndef BENCH_PIPELINE_PIPELINE_H
#define BENCH_PIPELINE_PIPELINE_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "BaseConnection.h"

class SngDissector;
class Sniffer;

// A capture file held in memory; every pass reads it through libpcap as if
// from disk, so each pass pays the same reading cost.
class CaptureInMemory {
public:
    bool load(const std::string& path);
    // Runs libpcap over the bytes, calling `callback` for every frame;
    // returns the frames read, -1 on error.
    long replay(void (*callback)(u_char*, const struct pcap_pkthdr*, const u_char*), u_char* user) const;

private:
    std::unique_ptr<char[]> bytes;
    std::size_t length = 0;
};

// Stands in for the recorder: takes every frame, counts it, asks for nothing.
class CountingConnection : public BaseConnection {
public:
    bool receiveRequest(SnifferRequest&) override { return false; }
    int sendPacket(u_char*, int length) override {
        frames.fetch_add(1, std::memory_order_relaxed);
        bytes.fetch_add(static_cast<uint64_t>(length), std::memory_order_relaxed);
        return length;
    }
    void closeConnection() override {}

    std::atomic<uint64_t> frames{0};
    std::atomic<uint64_t> bytes{0};
};

// Wall-clock figures depend on what else the machine runs; the CPU time
// each thread spent does not, and bounds the rate with a core per thread.
struct PassResult {
    long packets = 0;
    double seconds = 0;          // first frame read to last frame processed
    double producerSeconds = 0;  // time the capture side spent handing frames over
    double producerCpu = 0;      // CPU seconds of the capture thread
    double consumerCpu = 0;      // CPU seconds of the consumer thread
    uint64_t forwarded = 0;
    uint64_t forwardedBytes = 0;
    double wakeupsPerPacket = 0;  // consumer sleeps ended by a producer
};

// libpcap reading the capture from memory and one copy of each frame: the
// floor of any agent built on libpcap.
PassResult runBaseline(const CaptureInMemory& capture);

// The engine fed through its capture callback on this thread while its
// consumer classifies, frames and forwards on another.
class PipelineBench {
public:
    // Frames come from the benchmark through the capture callback, or
    // from `device` when one is named.
    explicit PipelineBench(const std::string& device = "", const char* filter = "udp");
    ~PipelineBench();
    PipelineBench(const PipelineBench&) = delete;
    PipelineBench& operator=(const PipelineBench&) = delete;

    // Lists `count` destinations: the streams of the first calls of the
    // capture, then destinations absent from it.
    void listDestinations(int count, int callsInCapture);
    PassResult run(const CaptureInMemory& capture);
    SngDissector* dissector();
    void waitUntilDrained();
    Sniffer& sniffer();
    uint64_t framesForwarded() const;

private:
    class Engine;
    Engine* engine;
};

long peakRssKiB();
long currentRssKiB();

#endif
