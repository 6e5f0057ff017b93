#ifndef SNIFFER_HEP_EXPORTER_H
#define SNIFFER_HEP_EXPORTER_H

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "EngineOptions.h"
#include "EngineStats.h"
#include "HepEncoder.h"
#include "HepLink.h"

// Sends a copy of every forwarded SIP message to a HEP collector, from a
// thread of its own through a bounded queue: the consumer only encodes and
// queues, so a collector that is absent, refuses or stalls never holds up
// the recorder link or capture. What the queue cannot take is dropped and
// counted.
class HepExporter {
public:
    static constexpr std::size_t queueLimitBytes = 8u << 20;

    HepExporter(const EngineOptions& options, EngineStats& stats);
    // Sends what is queued as long as the collector takes it at once.
    ~HepExporter();
    HepExporter(const HepExporter&) = delete;
    HepExporter& operator=(const HepExporter&) = delete;

    void exportSip(const HepMessage& message);

private:
    void run();
    bool nextPacket(std::vector<uint8_t>& packet);
    bool deliver(const std::vector<uint8_t>& packet);
    void pauseBeforeRetry();

    const HepEncoder encoder;
    HepLink link;
    EngineStats& stats;

    std::mutex lock;
    std::condition_variable wake;
    std::deque<std::vector<uint8_t>> queue;
    std::size_t queuedBytes = 0;
    std::atomic<bool> stopping{false};
    std::thread thread;
};

#endif
