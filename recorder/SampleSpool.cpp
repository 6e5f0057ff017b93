#include "SampleSpool.h"

#include <algorithm>
#include <cstring>

namespace recorder {

void SampleSpool::write(int64_t index, const int16_t* samples, size_t count) {
    if (closed_ || count == 0 || index < 0)
        return;
    const int64_t end = index + static_cast<int64_t>(count);
    if (end > start_ + static_cast<int64_t>(kWindowSamples))
        slideTo(end);
    if (index < start_) {
        const auto early = std::min(count, static_cast<size_t>(start_ - index));
        writeFile(index, samples, early);
        index += static_cast<int64_t>(early);
        samples += early;
        count -= early;
    }
    if (count > 0) {
        window_.resize(kWindowSamples);
        std::copy(samples, samples + count, window_.begin() + (index - start_));
    }
    length_ = std::max(length_, end);
}

// Moves the window on so that it ends at `end` or later, by half its size at least so that
// steady audio costs one file write per half window; what it leaves goes to the file.
void SampleSpool::slideTo(int64_t end) {
    const int64_t window = static_cast<int64_t>(kWindowSamples);
    const int64_t start = std::max(end - window, start_ + window / 2);
    const int64_t held = std::min(start, length_) - start_;
    if (held > 0 && !window_.empty())
        writeFile(start_, window_.data(), static_cast<size_t>(held));
    const int64_t kept = std::max<int64_t>(start_ + window - start, 0);
    if (!window_.empty()) {
        std::copy(window_.end() - kept, window_.end(), window_.begin());
        std::fill(window_.begin() + kept, window_.end(), 0);
    }
    start_ = start;
}

void SampleSpool::writeFile(int64_t index, const int16_t* samples, size_t count) {
    if (!id_)
        id_ = files_.add(path_);
    files_.writeAt(*id_, static_cast<uint64_t>(index) * sizeof(int16_t), samples, count * sizeof(int16_t));
}

void SampleSpool::close() {
    if (closed_)
        return;
    closed_ = true;
    const int64_t held = length_ - start_;
    if (held > 0)
        writeFile(start_, window_.data(), static_cast<size_t>(held));
    if (id_)
        files_.remove(*id_);
    std::vector<int16_t>().swap(window_);
}

}  // namespace recorder
