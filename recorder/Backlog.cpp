#include "Backlog.h"

#include <algorithm>
#include <cstring>

namespace recorder {
namespace {

// A record: this header, then the payload, padded to 8 bytes. Host order: it never leaves the
// process.
struct record_header {
    uint32_t length;  // header, payload and padding
    uint8_t event;
    uint8_t protocol;
    uint16_t payload_length;
    uint32_t src_ip, dst_ip;
    uint16_t src_port, dst_port;
    int64_t arrival;  // nanoseconds since the epoch
};
static_assert(sizeof(record_header) == 32);

constexpr size_t kSpareChunks = 4;  // kept for reuse; the rest go back to the system

size_t recordLength(size_t payload) {
    return (sizeof(record_header) + payload + 7) & ~size_t{7};
}

}  // namespace

Backlog::Backlog(size_t limitBytes)
    : maxChunks_(std::max<size_t>(limitBytes / kChunkSize, 2)),
      reserveChunks_(maxChunks_ + maxChunks_ / 8 + 1),
      tail_(new Chunk),
      head_(tail_) {}

Backlog::~Backlog() {
    for (Chunk* chunk = head_; chunk != nullptr;) {
        Chunk* next = chunk->next.load();
        delete chunk;
        chunk = next;
    }
    for (Chunk* chunk : spare_)
        delete chunk;
}

bool Backlog::push(LinkEvent event, const Frame& frame) {
    const size_t length = recordLength(frame.payload.size());
    if (fill_ + length > kChunkSize) {
        Chunk* next =
            newChunk(event == LinkEvent::Frame && frame.protocol == Protocol::Rtp ? maxChunks_ : reserveChunks_);
        if (next == nullptr) {
            dropped_.fetch_add(1, std::memory_order_relaxed);
            return false;
        }
        tail_->committed.store(fill_, std::memory_order_release);
        tail_->next.store(next, std::memory_order_release);
        tail_ = next;
        fill_ = 0;
    }
    record_header header{
        static_cast<uint32_t>(length),
        static_cast<uint8_t>(event),
        static_cast<uint8_t>(frame.protocol),
        static_cast<uint16_t>(frame.payload.size()),
        frame.source.ip,
        frame.destination.ip,
        frame.source.port,
        frame.destination.port,
        std::chrono::duration_cast<std::chrono::nanoseconds>(frame.arrival.time_since_epoch()).count()};
    uint8_t* at = tail_->data.get() + fill_;
    std::memcpy(at, &header, sizeof header);
    if (!frame.payload.empty())  // link events have none, and no data pointer either
        std::memcpy(at + sizeof header, frame.payload.data(), frame.payload.size());
    fill_ += length;
    const uint64_t queued =
        in_.fetch_add(length, std::memory_order_relaxed) + length - out_.load(std::memory_order_relaxed);
    if (queued > peak_.load(std::memory_order_relaxed))
        peak_.store(queued, std::memory_order_relaxed);
    return true;
}

Backlog::Chunk* Backlog::newChunk(size_t most) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (chunks_ >= most)
        return nullptr;
    ++chunks_;
    if (spare_.empty())
        return new Chunk;
    Chunk* chunk = spare_.back();
    spare_.pop_back();
    chunk->committed.store(0, std::memory_order_relaxed);
    chunk->next.store(nullptr, std::memory_order_relaxed);
    return chunk;
}

void Backlog::release(Chunk* chunk, size_t consumed) {
    out_.fetch_add(consumed, std::memory_order_relaxed);
    std::lock_guard<std::mutex> lock(mutex_);
    --chunks_;
    if (spare_.size() < kSpareChunks)
        spare_.push_back(chunk);
    else
        delete chunk;
}

void Backlog::publish() {
    // Sequentially consistent with the consumer's `sleeping_` store and load: either it sees
    // this commit before it sleeps, or this sees it asleep and wakes it.
    tail_->committed.store(fill_, std::memory_order_seq_cst);
    if (sleeping_.load(std::memory_order_seq_cst)) {
        std::lock_guard<std::mutex> lock(mutex_);
        wake_.notify_one();
    }
}

bool Backlog::waitForRecords(std::chrono::milliseconds timeout) {
    const auto available = [this] {
        return head_->committed.load(std::memory_order_seq_cst) != read_ ||
               head_->next.load(std::memory_order_seq_cst) != nullptr;
    };
    if (available())
        return true;
    std::unique_lock<std::mutex> lock(mutex_);
    sleeping_.store(true, std::memory_order_seq_cst);
    const bool woken = wake_.wait_for(lock, timeout, available);
    sleeping_.store(false, std::memory_order_relaxed);
    return woken;
}

LinkEvent Backlog::readRecord(const uint8_t* at, Frame& frame, size_t& length) {
    record_header header;
    std::memcpy(&header, at, sizeof header);
    length = header.length;
    frame.protocol = static_cast<Protocol>(header.protocol);
    frame.source = {header.src_ip, header.src_port};
    frame.destination = {header.dst_ip, header.dst_port};
    frame.payload = {reinterpret_cast<const char*>(at + sizeof header), header.payload_length};
    frame.arrival = TimePoint(std::chrono::duration_cast<Clock::duration>(std::chrono::nanoseconds(header.arrival)));
    return static_cast<LinkEvent>(header.event);
}

uint64_t Backlog::queuedBytes() const {
    const uint64_t in = in_.load(std::memory_order_relaxed), out = out_.load(std::memory_order_relaxed);
    return in > out ? in - out : 0;
}

}  // namespace recorder
