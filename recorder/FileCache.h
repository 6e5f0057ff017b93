#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <list>
#include <string>
#include <vector>

namespace recorder {

// The files that open calls write (their pcap, their audio), written at offsets the writers
// keep, with at most `capacity` descriptors open at once: the least recently written file is
// closed to open another and reopened when it is written again. Ten thousand calls then need
// no more descriptors than the process may have. One thread uses it.
class FileCache {
public:
    using Id = size_t;

    explicit FileCache(size_t capacity);
    ~FileCache();
    FileCache(const FileCache&) = delete;
    FileCache& operator=(const FileCache&) = delete;

    // Names a file to write; it is created, empty, by its first write.
    Id add(std::filesystem::path path);
    // Writes `size` bytes at `offset`. False when the file cannot be opened or written; the first
    // failure of each file is logged.
    bool writeAt(Id id, uint64_t offset, const void* data, size_t size);
    // Closes the file and forgets it; the id may be given out again.
    void remove(Id id);

    size_t openCount() const { return lru_.size(); }
    // A capacity that leaves room under the process's descriptor limit for sockets and the
    // files the archive writes.
    static size_t defaultCapacity();

private:
    struct Entry {
        std::filesystem::path path;
        int fd = -1;
        bool created = false;
        bool failed = false;
        std::list<Id>::iterator recent;  // in lru_ while fd is open
    };

    int open(Id id);
    void close(Entry& entry);

    size_t capacity_;
    std::vector<Entry> entries_;
    std::vector<Id> free_;
    std::list<Id> lru_;  // open files, most recently written first
};

}  // namespace recorder
