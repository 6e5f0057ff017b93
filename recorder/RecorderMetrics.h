#pragma once

#include "Backlog.h"
#include "IndexWriter.h"
#include "SnifferLink.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace recorder {

// The recorder's counters in Prometheus' text format, for /metrics. What belongs to the thread
// that follows calls is published here by that thread; the rest is atomic where it lives.
class RecorderMetrics {
public:
    RecorderMetrics(const LinkCounters& link, const Backlog& backlog) : link_(link), backlog_(backlog) {}

    // Before the web side starts.
    void watchIndex(const IndexWriter* index) { index_ = index; }

    void publishCalls(uint64_t open, uint64_t recorded) {
        openCalls_.store(open, std::memory_order_relaxed);
        recordedCalls_.store(recorded, std::memory_order_relaxed);
    }
    void publishHeartbeat(Milliseconds roundTrip) { heartbeatMs_.store(roundTrip.count(), std::memory_order_relaxed); }

    std::string text() const;

private:
    const LinkCounters& link_;
    const Backlog& backlog_;
    const IndexWriter* index_ = nullptr;
    std::atomic<uint64_t> openCalls_{0}, recordedCalls_{0};
    std::atomic<int64_t> heartbeatMs_{-1};  // none yet
};

}  // namespace recorder
