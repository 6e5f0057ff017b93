#ifndef SNIFFER_PACKET_QUEUE_H
#define SNIFFER_PACKET_QUEUE_H

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <pcap.h>
#include <vector>

// Captured frames on their way from the capture threads to the one consumer,
// oldest first.
//
// A capture thread must never wait for the consumer, so the hand-off is kept
// to one short critical section per frame on the producing side: the capture
// header and the frame are appended, back to back, to a large recycled chunk
// (no allocation per frame, no memory freed on another thread). The consumer
// takes every filled chunk at once and walks through them without the
// shared lock, and it is signalled only when it has gone to sleep on an
// empty queue.
class PacketQueue {
public:
    // Zero bytes behind every frame copy: the SIP start-line test and the
    // header reads of runt frames may look that far past the frame's end.
    static constexpr std::size_t framePadding = 64;

    // A queued frame: `packet` holds the header's `len` bytes (beyond the
    // captured bytes they read as zeros) and `framePadding` zero bytes.
    // Both stay valid until the consumer asks for the next frame.
    struct Frame {
        pcap_pkthdr* header = nullptr;
        u_char* packet = nullptr;
    };

    PacketQueue() = default;
    PacketQueue(const PacketQueue&) = delete;
    PacketQueue& operator=(const PacketQueue&) = delete;

    // Any capture thread: appends a copy of the frame, or drops it when a
    // limit is set and the frames waiting already fill it.
    void push(const pcap_pkthdr& header, const u_char* packet);
    // The same for a frame whose link header was replaced: the queued frame
    // is `linkLength` bytes of `linkHeader`, then `rest`; the header's
    // lengths count both.
    void push(const pcap_pkthdr& header, const u_char* linkHeader, std::size_t linkLength, const u_char* rest);

    // Bounds the memory of waiting frames (0: unbounded, the default): past
    // it the capture side drops frames instead of the link being dropped.
    void setLimit(std::size_t bytes);
    // Frames dropped at the limit since the queue was made.
    uint64_t droppedAtLimit() const;

    // The consumer: the oldest frame, waiting while there is none and
    // `ended()` is false. False once `ended()` is true; what is still queued
    // then stays for clear().
    bool next(Frame& frame, bool (*ended)());

    // Wakes a consumer waiting in next() so that it looks at `ended()` again.
    void wake();

    // Drops every frame not yet handed to the consumer; returns how many.
    // Safe from any thread, even while the consumer works on a frame.
    std::size_t clear();

    // Frames pushed since the queue was made.
    uint64_t pushed() const;

private:
    // Records follow each other in `bytes`: a capture header, then the frame
    // and its padding, each rounded up to the alignment of the header.
    // Mapped from the system directly, so that a chunk freed after a backlog
    // goes back to it instead of staying in the allocator's heap.
    struct Unmap {
        std::size_t length;
        void operator()(u_char* bytes) const;
    };
    struct Chunk {
        std::unique_ptr<u_char[], Unmap> bytes{nullptr, Unmap{0}};
        std::size_t capacity = 0;
        std::size_t used = 0;
    };
    static constexpr std::size_t chunkSize = 256 * 1024;
    // Chunks are kept for reuse when a batch is done, up to this many; the
    // chunks of a larger backlog are returned to the system at once.
    static constexpr std::size_t spareChunkLimit = 32;
    // Every this many chunks filled, the spares that none of them needed
    // are returned too, so memory taken by a past backlog does not stay.
    static constexpr std::size_t trimInterval = 256;

    static Chunk mapChunk(std::size_t capacity);
    // How long the consumer looks for a frame before it goes to sleep: at
    // high rates the next one is microseconds away, and waking a sleeping
    // consumer costs the producer a system call.
    static constexpr int spinsBeforeSleep = 1000;
    // The spinning consumer looks at the frame count once every this many
    // pauses: each look pulls the count's cache line from the producer,
    // whose next push must then fetch it back.
    static constexpr int spinsPerLook = 16;
    // While spinning, the consumer waits for this many frames before it takes
    // the producers' lock. A consumer that has caught up would otherwise
    // take it for every frame or two, and the lock's cache line and futex
    // would bounce between the threads on every push.
    static constexpr std::size_t batchTarget = 64;

    u_char* reserve(std::size_t bytes);
    bool overLimit(std::size_t bytes) const;
    // Moves `chunks` to the spares; those beyond the limit go to `released`,
    // to be freed once the lock is let go.
    void recycle(std::vector<Chunk>& chunks, std::vector<Chunk>& released);
    bool refill(bool (*ended)());
    void spinForFrames(bool (*ended)()) const;
    bool takeFromBatch(Frame& frame);

    // Shared between producers and the consumer, under queueLock.
    mutable std::mutex queueLock;
    std::condition_variable framePresent;
    std::vector<Chunk> pendingChunks;  // the last one is being filled
    std::vector<Chunk> spareChunks;
    std::size_t spareLowWater = 0;  // fewest spares since the last trim
    std::size_t chunksFilled = 0;   // since the last trim
    uint64_t pushCount = 0;
    uint64_t limitDrops = 0;
    std::size_t limitChunks = 0;  // 0: no limit
    bool consumerAsleep = false;
    // Frames in pendingChunks, readable without the lock while the consumer
    // spins; on a line of its own so that the spinning does not pull the
    // lock's line away from the producers.
    alignas(64) std::atomic<std::size_t> pendingFrames{0};

    // The consumer's batch. Its lock is the consumer's own except when
    // clear() runs on another thread; taken after queueLock when both are held.
    alignas(64) std::mutex batchLock;
    std::vector<Chunk> batchChunks;
    std::size_t batchChunk = 0;   // the chunk being walked
    std::size_t batchOffset = 0;  // its next record
    std::size_t batchFrames = 0;  // frames not yet handed over
};

#endif
