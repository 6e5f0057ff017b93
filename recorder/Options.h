#pragma once

#include "Clock.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace recorder {

struct Options {
    std::string address = "127.0.0.1";
    uint16_t port = 6000;
    std::filesystem::path output = "recordings";
    Milliseconds idle{60000};
    Milliseconds heartbeat{5000};
    Milliseconds linger{2000};
    Milliseconds stats{60000};     // 0: no statistics lines but the last
    size_t backlogLimitMiB = 512;  // frames read and not yet handled
    bool verbose = false;
    std::string database;     // empty: sqlite:<output>/calls.db; "none": no index
    std::string httpAddress;  // empty: no web page
    uint16_t httpPort = 0;
    std::string httpToken;            // empty: none asked for
    double keepDays = 0;              // 0: calls are kept
    std::filesystem::path encryptTo;  // a public key file; empty: recordings in clear
};

// The index's URL that `options` ask for; empty when there is none.
std::string databaseUrl(const Options& options);

enum class OptionsResult { Run, Help, Invalid };

// On Invalid, `problem` says what is wrong.
OptionsResult parseOptions(int argc, char* argv[], Options& options, std::string& problem);
std::string usage(const std::string& program);

}  // namespace recorder
