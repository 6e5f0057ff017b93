#pragma once

#include "Wire.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace recorder {

// What the link hands to the rest of the recorder, in the order it happened.
enum class LinkEvent : uint8_t {
    Frame,      // a frame from the sniffer
    Connected,  // a sniffer connected over TCP, or sends datagrams from a new address
    Lost,       // the TCP sniffer went away
};

// The frames and events read from the link, held in memory between the thread that reads the
// sockets and the one that follows calls and writes files, so that reading never waits for a
// disk or for call bookkeeping. One producer, one consumer.
//
// Records go back to back into 1 MiB chunks. The producer writes ahead in its chunk and makes
// what it wrote visible with publish(), once per read from a socket, by storing the chunk's
// committed length; it links a new chunk only after committing the old one whole, so a consumer
// that sees the link has seen everything before it. No lock is taken per frame: the mutex
// guards the free chunks and sleeping. Memory is bounded by `limitBytes`: past it, RTP is
// dropped and counted. Signalling and the link's events are what every call's record hangs on
// (a lost BYE leaves a call open until it idles out), so they may go an eighth past the limit
// before they are dropped too.
class Backlog {
public:
    static constexpr size_t kChunkSize = size_t{1} << 20;

    explicit Backlog(size_t limitBytes);
    ~Backlog();
    Backlog(const Backlog&) = delete;
    Backlog& operator=(const Backlog&) = delete;

    // Producer. False when the frame was dropped for want of room.
    bool push(LinkEvent event, const Frame& frame = {});
    void publish();

    // Consumer: hands every published record to `handle(event, frame)` (the frame's payload is
    // valid during the call), waiting up to `timeout` for the first. Returns how many.
    template <class Handler>
    size_t consume(std::chrono::milliseconds timeout, Handler&& handle);

    uint64_t droppedFrames() const { return dropped_.load(std::memory_order_relaxed); }
    // Bytes published and not yet consumed, records' headers included.
    uint64_t queuedBytes() const;
    uint64_t peakBytes() const { return peak_.load(std::memory_order_relaxed); }
    size_t limitBytes() const { return maxChunks_ * kChunkSize; }

private:
    struct Chunk {
        std::unique_ptr<uint8_t[]> data{new uint8_t[kChunkSize]};
        std::atomic<size_t> committed{0};
        std::atomic<Chunk*> next{nullptr};
    };

    // Nothing when `most` chunks are in use.
    Chunk* newChunk(size_t most);
    void release(Chunk* chunk, size_t consumed);
    bool waitForRecords(std::chrono::milliseconds timeout);
    // The record at `at`; its size through `length`.
    static LinkEvent readRecord(const uint8_t* at, Frame& frame, size_t& length);

    const size_t maxChunks_;      // for RTP
    const size_t reserveChunks_;  // for everything else
    // Producer's side.
    Chunk* tail_;
    size_t fill_ = 0;
    // Consumer's side.
    Chunk* head_;
    size_t read_ = 0;

    std::mutex mutex_;  // spare_, chunks_, and the sleep below
    std::condition_variable wake_;
    std::vector<Chunk*> spare_;
    size_t chunks_ = 1;  // in the queue, head to tail
    std::atomic<bool> sleeping_{false};

    std::atomic<uint64_t> in_{0}, out_{0}, peak_{0}, dropped_{0};
};

template <class Handler>
size_t Backlog::consume(std::chrono::milliseconds timeout, Handler&& handle) {
    if (!waitForRecords(timeout))
        return 0;
    size_t count = 0;
    size_t consumed = 0;  // of the head chunk
    for (;;) {
        size_t committed = head_->committed.load(std::memory_order_acquire);
        if (read_ == committed) {
            Chunk* next = head_->next.load(std::memory_order_acquire);
            if (next == nullptr)
                break;
            // The producer committed this chunk whole before linking the next one.
            committed = head_->committed.load(std::memory_order_acquire);
            if (read_ == committed) {
                release(head_, consumed);
                head_ = next;
                read_ = 0;
                consumed = 0;
                continue;
            }
        }
        while (read_ < committed) {
            Frame frame;
            size_t length = 0;
            const LinkEvent event = readRecord(head_->data.get() + read_, frame, length);
            handle(event, frame);
            read_ += length;
            consumed += length;
            ++count;
        }
    }
    out_.fetch_add(consumed, std::memory_order_relaxed);
    return count;
}

}  // namespace recorder
