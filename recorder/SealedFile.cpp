#include "SealedFile.h"

#include <sodium.h>

#include <cstring>
#include <fstream>
#include <vector>

namespace recorder {

namespace {

constexpr size_t magicSize = sizeof SealedFile::magic - 1;
constexpr size_t streamKeySize = crypto_secretstream_xchacha20poly1305_KEYBYTES;
constexpr size_t sealedKeySize = crypto_box_SEALBYTES + streamKeySize;
constexpr size_t headerSize = crypto_secretstream_xchacha20poly1305_HEADERBYTES;
constexpr size_t tagSize = crypto_secretstream_xchacha20poly1305_ABYTES;

// Fills as much of `buffer` as the file has left and returns how much; `last` tells whether the
// file ends there, so that the final chunk is known when it is written or read.
size_t readChunk(std::ifstream& in, std::vector<uint8_t>& buffer, bool& last) {
    in.read(reinterpret_cast<char*>(buffer.data()), static_cast<std::streamsize>(buffer.size()));
    const auto got = static_cast<size_t>(in.gcount());
    last = in.peek() == std::ifstream::traits_type::eof();
    return got;
}

bool fail(const std::filesystem::path& output, std::string& problem, const std::string& why) {
    problem = why;
    std::error_code ignored;
    std::filesystem::remove(output, ignored);
    return false;
}

}  // namespace

bool SealedFile::seal(const std::filesystem::path& clear, const std::filesystem::path& sealed, const PublicKey& to,
                      std::string& problem) {
    if (sodium_init() < 0)
        return fail(sealed, problem, "libsodium cannot start");
    std::ifstream in(clear, std::ios::binary);
    std::ofstream out(sealed, std::ios::binary | std::ios::trunc);
    if (!in || !out)
        return fail(sealed, problem, "cannot open " + (in ? sealed : clear).string());

    uint8_t key[streamKeySize];
    crypto_secretstream_xchacha20poly1305_keygen(key);
    uint8_t sealedKey[sealedKeySize];
    crypto_box_seal(sealedKey, key, sizeof key, to.data());
    crypto_secretstream_xchacha20poly1305_state state;
    uint8_t header[headerSize];
    crypto_secretstream_xchacha20poly1305_init_push(&state, header, key);
    sodium_memzero(key, sizeof key);
    out.write(magic, magicSize);
    out.put(static_cast<char>(version));
    out.write(reinterpret_cast<const char*>(sealedKey), sizeof sealedKey);
    out.write(reinterpret_cast<const char*>(header), sizeof header);

    std::vector<uint8_t> plain(chunkSize);
    std::vector<uint8_t> cipher(chunkSize + tagSize);
    for (bool last = false; !last;) {
        const size_t got = readChunk(in, plain, last);
        if (in.bad())
            return fail(sealed, problem, "cannot read " + clear.string());
        const uint8_t tag = last ? crypto_secretstream_xchacha20poly1305_TAG_FINAL : 0;
        unsigned long long length = 0;
        crypto_secretstream_xchacha20poly1305_push(&state, cipher.data(), &length, plain.data(), got, nullptr, 0, tag);
        out.write(reinterpret_cast<const char*>(cipher.data()), static_cast<std::streamsize>(length));
    }
    sodium_memzero(&state, sizeof state);
    out.close();
    if (!out)
        return fail(sealed, problem, "cannot write " + sealed.string());
    return true;
}

bool SealedFile::open(const std::filesystem::path& sealed, const std::filesystem::path& clear,
                      const SecretKey& secretKey, std::string& problem) {
    if (sodium_init() < 0)
        return fail(clear, problem, "libsodium cannot start");
    std::ifstream in(sealed, std::ios::binary);
    if (!in)
        return fail(clear, problem, "cannot open " + sealed.string());
    char head[magicSize + 1];
    uint8_t sealedKey[sealedKeySize];
    uint8_t header[headerSize];
    in.read(head, sizeof head);
    in.read(reinterpret_cast<char*>(sealedKey), sizeof sealedKey);
    in.read(reinterpret_cast<char*>(header), sizeof header);
    if (!in || std::memcmp(head, magic, magicSize) != 0)
        return fail(clear, problem, sealed.string() + " is not an encrypted recording");
    if (static_cast<uint8_t>(head[magicSize]) != version)
        return fail(clear, problem, sealed.string() + " has an unknown format version");
    PublicKey publicKey;
    crypto_scalarmult_base(publicKey.data(), secretKey.data());
    uint8_t key[streamKeySize];
    if (crypto_box_seal_open(key, sealedKey, sizeof sealedKey, publicKey.data(), secretKey.data()) != 0)
        return fail(clear, problem, sealed.string() + " was not encrypted to this key");
    crypto_secretstream_xchacha20poly1305_state state;
    const bool started = crypto_secretstream_xchacha20poly1305_init_pull(&state, header, key) == 0;
    sodium_memzero(key, sizeof key);
    if (!started)
        return fail(clear, problem, sealed.string() + " has a damaged header");

    std::ofstream out(clear, std::ios::binary | std::ios::trunc);
    if (!out)
        return fail(clear, problem, "cannot open " + clear.string());
    std::vector<uint8_t> cipher(chunkSize + tagSize);
    std::vector<uint8_t> plain(chunkSize);
    for (bool last = false; !last;) {
        const size_t got = readChunk(in, cipher, last);
        unsigned long long length = 0;
        uint8_t tag = 0;
        if (crypto_secretstream_xchacha20poly1305_pull(&state, plain.data(), &length, &tag, cipher.data(), got, nullptr,
                                                       0) != 0)
            return fail(clear, problem, sealed.string() + " is damaged");
        if ((tag == crypto_secretstream_xchacha20poly1305_TAG_FINAL) != last)
            return fail(clear, problem, sealed.string() + " is cut short or has bytes past its end");
        out.write(reinterpret_cast<const char*>(plain.data()), static_cast<std::streamsize>(length));
    }
    out.close();
    if (!out)
        return fail(clear, problem, "cannot write " + clear.string());
    return true;
}

}  // namespace recorder
