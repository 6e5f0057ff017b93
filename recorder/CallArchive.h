#pragma once

#include "Call.h"

#include <filesystem>
#include <string_view>

namespace recorder {

// The output folder: one sub-folder per call and the index calls.jsonl, one line per finished call.
class CallArchive {
public:
    explicit CallArchive(std::filesystem::path root) : root_(std::move(root)) {}

    bool prepare();
    const std::filesystem::path& root() const { return root_; }

    // A new, empty folder named after the call's start and its identifier.
    std::filesystem::path newFolder(TimePoint start, std::string_view callId);

    // Closes the call's pcap, writes call.json and, when it has decoded audio, call.wav; then
    // appends the call to the index.
    void store(Call& call);

private:
    std::filesystem::path root_;
};

}  // namespace recorder
