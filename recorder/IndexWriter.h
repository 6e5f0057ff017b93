#pragma once

#include "CallIndex.h"
#include "Clock.h"
#include "Retention.h"

#include <atomic>
#include <deque>

namespace recorder {

// Writes archived calls to the index, on the archive's thread. While the database fails the
// calls wait in memory, in order, the oldest given up past kMaxPending; the failure is logged
// once and the recovery once. Calls still waiting when the recorder stops are lost to the index
// (not to calls.jsonl).
class IndexWriter {
public:
    static constexpr size_t kMaxPending = 10000;
    static constexpr Clock::duration kRetry = std::chrono::seconds(5);

    IndexWriter(CallIndex& index, Retention* retention) : index_(index), retention_(retention) {}
    ~IndexWriter();
    IndexWriter(const IndexWriter&) = delete;
    IndexWriter& operator=(const IndexWriter&) = delete;

    void add(IndexedCall call);
    // Tries what waits again and applies retention when it is due.
    void upkeep(TimePoint now);

    // Read from any thread.
    uint64_t written() const { return written_.load(std::memory_order_relaxed); }
    uint64_t failures() const { return failures_.load(std::memory_order_relaxed); }
    uint64_t pending() const { return pendingCount_.load(std::memory_order_relaxed); }
    uint64_t writeMicros() const { return writeMicros_.load(std::memory_order_relaxed); }

private:
    void writePending();

    CallIndex& index_;
    Retention* retention_;
    std::deque<IndexedCall> pending_;
    bool failing_ = false;
    uint64_t givenUp_ = 0;
    TimePoint nextRetry_{};
    std::atomic<uint64_t> written_{0}, failures_{0}, pendingCount_{0}, writeMicros_{0};
};

}  // namespace recorder
