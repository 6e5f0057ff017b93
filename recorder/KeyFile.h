#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>

namespace recorder {

// The key pair recordings are encrypted to (X25519, as crypto_box uses), kept as two text files
// of 64 hexadecimal digits and a newline: the public key for the recorder, the secret key,
// readable by its owner only, for whoever may listen to the calls.
class KeyFile {
public:
    using Key = std::array<uint8_t, 32>;

    static constexpr const char* publicName = "recording.pub";
    static constexpr const char* secretName = "recording.key";

    // On failure `problem` names the file and what is wrong with it.
    static bool read(const std::filesystem::path& path, Key& key, std::string& problem);
    // Writes DIR/recording.pub and DIR/recording.key (mode 0600); an existing pair is never
    // overwritten.
    static bool makePair(const std::filesystem::path& dir, std::string& problem);
};

}  // namespace recorder
