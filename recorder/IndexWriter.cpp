#include "IndexWriter.h"

#include "Log.h"

#include <chrono>
#include <stdexcept>

namespace recorder {

IndexWriter::~IndexWriter() {
    if (!pending_.empty())
        log::error() << pending_.size() << " calls were not written to the call index; calls.jsonl has them";
}

void IndexWriter::add(IndexedCall call) {
    if (pending_.size() == kMaxPending) {
        pending_.pop_front();
        ++givenUp_;
    }
    pending_.push_back(std::move(call));
    writePending();
}

void IndexWriter::upkeep(TimePoint now) {
    if (!pending_.empty() && now >= nextRetry_) {
        nextRetry_ = now + kRetry;
        writePending();
    }
    if (retention_ && !failing_)
        retention_->applyIfDue(now);
}

void IndexWriter::writePending() {
    while (!pending_.empty()) {
        const auto started = std::chrono::steady_clock::now();
        try {
            index_.add(pending_.front());
        } catch (const std::runtime_error& error) {
            failures_.fetch_add(1, std::memory_order_relaxed);
            if (!failing_)
                log::error() << "Cannot write to the call index, keeping calls in memory until it works: "
                             << error.what();
            failing_ = true;
            break;
        }
        const auto took =
            std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - started);
        writeMicros_.fetch_add(static_cast<uint64_t>(took.count()), std::memory_order_relaxed);
        written_.fetch_add(1, std::memory_order_relaxed);
        pending_.pop_front();
        if (failing_ && pending_.empty()) {
            log::info() << "The call index works again"
                        << (givenUp_ ? ", " + std::to_string(givenUp_) + " calls were left out of it" : "");
            failing_ = false;
            givenUp_ = 0;
        }
    }
    pendingCount_.store(pending_.size(), std::memory_order_relaxed);
}

}  // namespace recorder
