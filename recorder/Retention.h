#pragma once

#include "CallIndex.h"
#include "Clock.h"

#include <filesystem>

namespace recorder {

// Removes the calls that started more than `keepDays` ago, their rows and their folders; looks
// at most once an hour. Calls that are in the output folder but not in the index stay.
class Retention {
public:
    static constexpr Clock::duration kInterval = std::chrono::hours(1);

    Retention(CallIndex& index, std::filesystem::path root, double keepDays)
        : index_(index),
          root_(std::move(root)),
          keep_(
              std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double, std::ratio<86400>>(keepDays))) {
    }

    void applyIfDue(TimePoint now);

private:
    void removeFolder(const std::string& name) const;

    CallIndex& index_;
    std::filesystem::path root_;
    Clock::duration keep_;
    TimePoint nextCheck_{};
};

}  // namespace recorder
