#include "HepExporter.h"

#include <chrono>

namespace {
constexpr auto retryInterval = std::chrono::seconds(1);
}

HepExporter::HepExporter(const EngineOptions& options, EngineStats& stats)
    : encoder(static_cast<uint32_t>(options.hepCaptureId), options.hepPassword),
      link(options.hepCollector, options.hepTransport),
      stats(stats),
      thread(&HepExporter::run, this) {}

HepExporter::~HepExporter() {
    {
        std::lock_guard<std::mutex> guard(lock);
        stopping = true;
    }
    wake.notify_all();
    thread.join();
}

void HepExporter::exportSip(const HepMessage& message) {
    std::vector<uint8_t> packet = encoder.encode(message);
    {
        std::lock_guard<std::mutex> guard(lock);
        if (packet.empty() || queuedBytes + packet.size() > queueLimitBytes) {
            EngineStats::add(stats.hepDropped);
            return;
        }
        queuedBytes += packet.size();
        queue.push_back(std::move(packet));
    }
    wake.notify_one();
}

void HepExporter::run() {
    std::vector<uint8_t> packet;
    while (nextPacket(packet) && deliver(packet)) {
    }
}

// False once the run ends with the queue empty.
bool HepExporter::nextPacket(std::vector<uint8_t>& packet) {
    std::unique_lock<std::mutex> guard(lock);
    wake.wait(guard, [this] { return stopping || !queue.empty(); });
    if (queue.empty())
        return false;
    packet = std::move(queue.front());
    queue.pop_front();
    queuedBytes -= packet.size();
    return true;
}

// A packet that did not get through whole is tried again on a new
// connection. False at the end of the run when the collector does not take
// it at once: what is left is then given up.
bool HepExporter::deliver(const std::vector<uint8_t>& packet) {
    for (;;) {
        switch (link.deliver(packet, stopping)) {
        case HepLink::Outcome::Sent: EngineStats::add(stats.hepSent); return true;
        case HepLink::Outcome::Lost: EngineStats::add(stats.hepDropped); return true;
        case HepLink::Outcome::Retry:
            if (stopping)
                return false;
            pauseBeforeRetry();
            break;
        }
    }
}

void HepExporter::pauseBeforeRetry() {
    std::unique_lock<std::mutex> guard(lock);
    wake.wait_for(guard, retryInterval, [this] { return stopping.load(); });
}
