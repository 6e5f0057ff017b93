#pragma once

#include "FileCache.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace recorder {

// The 16-bit samples of one audio channel, written at their place on the call's timeline: the
// latest few stay in memory, where reordered packets still land, the rest go to a file in
// native byte order, so that an hour-long call holds no more memory than a short one.
class SampleSpool {
public:
    // 256 ms at 16 kHz, 8 KiB: ten thousand calls of two channels hold 160 MiB at most. A packet
    // that arrives later than that is written to the file on its own.
    static constexpr size_t kWindowSamples = 4096;

    SampleSpool(FileCache& files, std::filesystem::path path) : files_(files), path_(std::move(path)) {}

    // Puts `count` samples at `index`, over whatever was there.
    void write(int64_t index, const int16_t* samples, size_t count);
    // Writes what memory holds and lets the file go: it is then complete, plain to read by any
    // thread, and the cache is not touched again. Later writes are ignored.
    void close();

    const std::filesystem::path& path() const { return path_; }
    int64_t length() const { return length_; }  // samples up to the last written
    size_t bufferedSamples() const { return window_.capacity(); }

private:
    void slideTo(int64_t end);
    void writeFile(int64_t index, const int16_t* samples, size_t count);

    FileCache& files_;
    std::filesystem::path path_;
    std::optional<FileCache::Id> id_;  // from the first write to the file
    std::vector<int16_t> window_;      // samples from start_ on, allocated by the first write
    int64_t start_ = 0;
    int64_t length_ = 0;
    bool closed_ = false;
};

}  // namespace recorder
