#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>

namespace recorder {

// A file encrypted to a public key, written and read in chunks so that memory stays bounded
// whatever the file's size. Layout: the magic "RSEAL", a version byte (1), the file's own
// stream key sealed to the public key (crypto_box_seal, 80 bytes), the stream header (24 bytes),
// then chunks of 65,536 clear bytes each encrypted with its 17-byte tag
// (crypto_secretstream_xchacha20poly1305); the last chunk, shorter and possibly empty, is tagged
// final, so that a cut file is told from a whole one.
class SealedFile {
public:
    using PublicKey = std::array<uint8_t, 32>;
    using SecretKey = std::array<uint8_t, 32>;

    static constexpr size_t chunkSize = 65536;
    static constexpr char magic[] = "RSEAL";
    static constexpr uint8_t version = 1;

    // Encrypts `clear` into `sealed`; on failure `problem` says why and `sealed` is removed.
    static bool seal(const std::filesystem::path& clear, const std::filesystem::path& sealed, const PublicKey& to,
                     std::string& problem);
    // Decrypts `sealed` into `clear`; a wrong key or a damaged or cut file fails, `clear` removed.
    static bool open(const std::filesystem::path& sealed, const std::filesystem::path& clear,
                     const SecretKey& secretKey, std::string& problem);
};

}  // namespace recorder
