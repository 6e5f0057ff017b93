#include "FileCache.h"

#include "Log.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace recorder {
namespace {

constexpr size_t kReservedDescriptors = 64;  // sockets, logs, the archive's own files
constexpr size_t kMostOpen = 16384;

}  // namespace

FileCache::FileCache(size_t capacity) : capacity_(std::max<size_t>(capacity, 1)) {}

FileCache::~FileCache() {
    for (Entry& entry : entries_)
        if (entry.fd >= 0)
            ::close(entry.fd);
}

size_t FileCache::defaultCapacity() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur <= 2 * kReservedDescriptors)
        return kReservedDescriptors;
    return std::min<size_t>(limit.rlim_cur - kReservedDescriptors, kMostOpen);
}

FileCache::Id FileCache::add(std::filesystem::path path) {
    Id id;
    if (free_.empty()) {
        id = entries_.size();
        entries_.emplace_back();
    } else {
        id = free_.back();
        free_.pop_back();
    }
    entries_[id] = Entry{};
    entries_[id].path = std::move(path);
    return id;
}

bool FileCache::writeAt(Id id, uint64_t offset, const void* data, size_t size) {
    Entry& entry = entries_[id];
    const int fd = open(id);
    if (fd < 0)
        return false;
    const auto* bytes = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t written = pwrite(fd, bytes, size, static_cast<off_t>(offset));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0) {
            if (!entry.failed)
                log::error() << "Cannot write " << entry.path.string() << ": " << std::strerror(errno);
            entry.failed = true;
            return false;
        }
        bytes += written;
        offset += static_cast<uint64_t>(written);
        size -= static_cast<size_t>(written);
    }
    return true;
}

// The file's descriptor, most recent now; opening it may close the least recently written.
int FileCache::open(Id id) {
    Entry& entry = entries_[id];
    if (entry.fd >= 0) {
        lru_.splice(lru_.begin(), lru_, entry.recent);
        return entry.fd;
    }
    if (lru_.size() >= capacity_)
        close(entries_[lru_.back()]);
    const int flags = O_WRONLY | O_CLOEXEC | (entry.created ? 0 : O_CREAT | O_TRUNC);
    entry.fd = ::open(entry.path.c_str(), flags, 0644);
    if (entry.fd < 0) {
        if (!entry.failed)
            log::error() << "Cannot write " << entry.path.string() << ": " << std::strerror(errno);
        entry.failed = true;
        return -1;
    }
    entry.created = true;
    lru_.push_front(id);
    entry.recent = lru_.begin();
    return entry.fd;
}

void FileCache::close(Entry& entry) {
    if (entry.fd < 0)
        return;
    ::close(entry.fd);
    entry.fd = -1;
    lru_.erase(entry.recent);
}

void FileCache::remove(Id id) {
    close(entries_[id]);
    entries_[id] = Entry{};
    free_.push_back(id);
}

}  // namespace recorder
