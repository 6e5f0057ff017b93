#include "PacketQueue.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <sys/mman.h>

namespace {
constexpr std::size_t alignment = alignof(pcap_pkthdr);
constexpr std::size_t headerBytes = (sizeof(pcap_pkthdr) + alignment - 1) & ~(alignment - 1);

constexpr std::size_t recordBytes(std::size_t frameLength) {
    return headerBytes + ((frameLength + PacketQueue::framePadding + alignment - 1) & ~(alignment - 1));
}
}  // namespace

void PacketQueue::push(const pcap_pkthdr& header, const u_char* packet) {
    push(header, packet, 0, packet);
}

void PacketQueue::push(const pcap_pkthdr& header, const u_char* linkHeader, std::size_t linkLength,
                       const u_char* rest) {
    const std::size_t copied = std::min(header.caplen, header.len);
    linkLength = std::min(linkLength, copied);
    bool wakeConsumer;
    {
        std::lock_guard<std::mutex> guard(queueLock);
        const std::size_t bytes = recordBytes(header.len);
        if (overLimit(bytes)) {
            ++limitDrops;
            return;
        }
        u_char* at = reserve(bytes);
        new (at) pcap_pkthdr(header);
        std::memcpy(at + headerBytes, linkHeader, linkLength);
        std::memcpy(at + headerBytes + linkLength, rest, copied - linkLength);
        std::memset(at + headerBytes + copied, 0, header.len - copied + framePadding);
        pendingFrames.store(pendingFrames.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        ++pushCount;
        wakeConsumer = consumerAsleep;
        consumerAsleep = false;  // one signal per sleep is enough
    }
    if (wakeConsumer)
        framePresent.notify_one();
}

u_char* PacketQueue::reserve(std::size_t bytes) {
    if (pendingChunks.empty() || pendingChunks.back().capacity - pendingChunks.back().used < bytes) {
        Chunk chunk;
        ++chunksFilled;
        if (bytes <= chunkSize && !spareChunks.empty()) {
            chunk = std::move(spareChunks.back());
            spareChunks.pop_back();
            spareLowWater = std::min(spareLowWater, spareChunks.size());
        } else {
            chunk = mapChunk(std::max(chunkSize, bytes));
        }
        chunk.used = 0;
        pendingChunks.push_back(std::move(chunk));
    }
    Chunk& tail = pendingChunks.back();
    u_char* at = tail.bytes.get() + tail.used;
    tail.used += bytes;
    return at;
}

// Counted in chunks, the queue's unit of memory, waiting for the consumer.
// The batch it walks was such a wait before, so the queue holds at most
// twice the limit.
bool PacketQueue::overLimit(std::size_t bytes) const {
    return limitChunks != 0 && pendingChunks.size() >= limitChunks &&
           pendingChunks.back().capacity - pendingChunks.back().used < bytes;
}

void PacketQueue::setLimit(std::size_t bytes) {
    std::lock_guard<std::mutex> guard(queueLock);
    limitChunks = bytes == 0 ? 0 : std::max<std::size_t>(1, bytes / chunkSize);
}

uint64_t PacketQueue::droppedAtLimit() const {
    std::lock_guard<std::mutex> guard(queueLock);
    return limitDrops;
}

void PacketQueue::Unmap::operator()(u_char* bytes) const {
    munmap(bytes, length);
}

PacketQueue::Chunk PacketQueue::mapChunk(std::size_t capacity) {
    void* bytes = mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (bytes == MAP_FAILED)
        throw std::bad_alloc();
    Chunk chunk;
    chunk.bytes = std::unique_ptr<u_char[], Unmap>(static_cast<u_char*>(bytes), Unmap{capacity});
    chunk.capacity = capacity;
    return chunk;
}

void PacketQueue::recycle(std::vector<Chunk>& chunks, std::vector<Chunk>& released) {
    for (Chunk& chunk : chunks) {
        if (chunk.capacity == chunkSize && spareChunks.size() < spareChunkLimit)
            spareChunks.push_back(std::move(chunk));
        else
            released.push_back(std::move(chunk));
    }
    chunks.clear();
    if (chunksFilled >= trimInterval) {
        for (std::size_t unused = std::min(spareLowWater, spareChunks.size()); unused > 0; --unused) {
            released.push_back(std::move(spareChunks.back()));
            spareChunks.pop_back();
        }
        spareLowWater = spareChunks.size();
        chunksFilled = 0;
    }
}

bool PacketQueue::next(Frame& frame, bool (*ended)()) {
    for (;;) {
        {
            std::lock_guard<std::mutex> guard(batchLock);
            if (ended())
                return false;
            if (takeFromBatch(frame))
                return true;
        }
        if (!refill(ended))
            return false;
    }
}

bool PacketQueue::takeFromBatch(Frame& frame) {
    if (batchFrames == 0)
        return false;
    while (batchOffset == batchChunks[batchChunk].used) {
        ++batchChunk;
        batchOffset = 0;
    }
    u_char* at = batchChunks[batchChunk].bytes.get() + batchOffset;
    frame.header = reinterpret_cast<pcap_pkthdr*>(at);
    frame.packet = at + headerBytes;
    batchOffset += recordBytes(frame.header->len);
    --batchFrames;
    return true;
}

void PacketQueue::spinForFrames(bool (*ended)()) const {
    for (int i = 0; i < spinsBeforeSleep; i += spinsPerLook) {
        if (pendingFrames.load(std::memory_order_relaxed) >= batchTarget || ended())
            return;
        for (int pause = 0; pause < spinsPerLook; ++pause)
            __builtin_ia32_pause();
    }
}

// Called with the batch used up: its chunks hold no frame anyone still reads.
bool PacketQueue::refill(bool (*ended)()) {
    spinForFrames(ended);
    std::vector<Chunk> released;
    std::unique_lock<std::mutex> lock(queueLock);
    while (pendingFrames.load(std::memory_order_relaxed) == 0 && !ended()) {
        consumerAsleep = true;
        framePresent.wait(lock);
    }
    consumerAsleep = false;
    if (ended())
        return false;
    std::lock_guard<std::mutex> guard(batchLock);
    recycle(batchChunks, released);
    batchChunks.swap(pendingChunks);
    batchChunk = 0;
    batchOffset = 0;
    batchFrames = pendingFrames.exchange(0, std::memory_order_relaxed);
    return true;
}

void PacketQueue::wake() {
    // Taking the lock orders the signal after a consumer's last look at
    // `ended()`, so one about to sleep cannot miss it.
    { std::lock_guard<std::mutex> guard(queueLock); }
    framePresent.notify_all();
}

std::size_t PacketQueue::clear() {
    std::vector<Chunk> released;
    std::lock_guard<std::mutex> guard(queueLock);
    std::lock_guard<std::mutex> batchGuard(batchLock);
    const std::size_t dropped = pendingFrames.exchange(0, std::memory_order_relaxed) + batchFrames;
    batchFrames = 0;
    // The consumer may still be reading the frame it was given, so the
    // batch's chunks wait for its next refill; the pending ones are free.
    recycle(pendingChunks, released);
    return dropped;
}

uint64_t PacketQueue::pushed() const {
    std::lock_guard<std::mutex> guard(queueLock);
    return pushCount;
}
