#include "PacketQueue.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {
constexpr std::size_t alignment = alignof(std::max_align_t);

constexpr std::size_t aligned(std::size_t n) {
    return (n + alignment - 1) & ~(alignment - 1);
}
}  // namespace

void PacketQueue::push(const pcap_pkthdr& header, const u_char* packet) {
    const std::size_t copied = std::min(header.caplen, header.len);
    const std::size_t headerBytes = aligned(sizeof(pcap_pkthdr));
    const std::size_t need = headerBytes + aligned(header.len + framePadding);
    bool wakeConsumer;
    {
        std::lock_guard<std::mutex> guard(queueLock);
        u_char* at = reserve(need);
        Frame frame{new (at) pcap_pkthdr(header), at + headerBytes};
        std::memcpy(frame.packet, packet, copied);
        std::memset(frame.packet + copied, 0, header.len - copied + framePadding);
        pending.push_back(frame);
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
        if (bytes <= chunkSize && !spareChunks.empty()) {
            chunk = std::move(spareChunks.back());
            spareChunks.pop_back();
        } else {
            chunk.capacity = std::max(chunkSize, bytes);
            chunk.bytes.reset(new u_char[chunk.capacity]);
        }
        chunk.used = 0;
        pendingChunks.push_back(std::move(chunk));
    }
    Chunk& tail = pendingChunks.back();
    u_char* at = tail.bytes.get() + tail.used;
    tail.used += bytes;
    return at;
}

void PacketQueue::recycle(std::vector<Chunk>& chunks, std::vector<Chunk>& released) {
    for (Chunk& chunk : chunks) {
        if (chunk.capacity == chunkSize && spareChunks.size() < spareChunkLimit)
            spareChunks.push_back(std::move(chunk));
        else
            released.push_back(std::move(chunk));
    }
    chunks.clear();
}

bool PacketQueue::next(Frame& frame, bool (*ended)()) {
    for (;;) {
        {
            std::lock_guard<std::mutex> guard(batchLock);
            if (ended())
                return false;
            if (batchNext < batch.size()) {
                frame = batch[batchNext++];
                return true;
            }
        }
        if (!refill(ended))
            return false;
    }
}

// Called with the batch used up: its chunks hold no frame anyone still reads.
bool PacketQueue::refill(bool (*ended)()) {
    std::vector<Chunk> released;
    std::unique_lock<std::mutex> lock(queueLock);
    while (pending.empty() && !ended()) {
        consumerAsleep = true;
        framePresent.wait(lock);
    }
    consumerAsleep = false;
    if (ended())
        return false;
    std::lock_guard<std::mutex> guard(batchLock);
    recycle(batchChunks, released);
    batchChunks.swap(pendingChunks);
    batch.clear();
    batch.swap(pending);
    batchNext = 0;
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
    const std::size_t dropped = pending.size() + (batch.size() - batchNext);
    pending.clear();
    batchNext = batch.size();
    // The consumer may still be reading the frame it was given, so the
    // batch's chunks wait for its next refill; the pending ones are free.
    recycle(pendingChunks, released);
    return dropped;
}

uint64_t PacketQueue::pushed() const {
    std::lock_guard<std::mutex> guard(queueLock);
    return pushCount;
}
