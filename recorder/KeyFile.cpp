#include "KeyFile.h"

#include <sodium.h>

#include <fcntl.h>
#include <unistd.h>

#include <fstream>

namespace recorder {

namespace {

constexpr size_t hexSize = 2 * sizeof(KeyFile::Key);

// Created, not replaced: a secret key that exists may be the only way to some recordings.
bool writeNew(const std::filesystem::path& path, const KeyFile::Key& key, mode_t mode, std::string& problem) {
    char hex[hexSize + 1];
    sodium_bin2hex(hex, sizeof hex, key.data(), key.size());
    hex[hexSize] = '\n';
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, mode);
    if (fd < 0) {
        problem = "cannot create " + path.string() + " (it must not exist yet)";
        return false;
    }
    const bool written = ::write(fd, hex, sizeof hex) == static_cast<ssize_t>(sizeof hex);
    sodium_memzero(hex, sizeof hex);
    if (::close(fd) != 0 || !written) {
        problem = "cannot write " + path.string();
        return false;
    }
    return true;
}

}  // namespace

bool KeyFile::read(const std::filesystem::path& path, Key& key, std::string& problem) {
    std::ifstream in(path);
    std::string hex;
    if (!(in >> hex)) {
        problem = "cannot read the key file " + path.string();
        return false;
    }
    size_t length = 0;
    if (hex.size() != hexSize ||
        sodium_hex2bin(key.data(), key.size(), hex.c_str(), hex.size(), nullptr, &length, nullptr) != 0 ||
        length != key.size()) {
        problem = path.string() + " does not hold a key of 64 hexadecimal digits";
        return false;
    }
    return true;
}

bool KeyFile::makePair(const std::filesystem::path& dir, std::string& problem) {
    if (sodium_init() < 0) {
        problem = "libsodium cannot start";
        return false;
    }
    Key publicKey;
    Key secretKey;
    crypto_box_keypair(publicKey.data(), secretKey.data());
    const bool made =
        writeNew(dir / secretName, secretKey, 0600, problem) && writeNew(dir / publicName, publicKey, 0644, problem);
    sodium_memzero(secretKey.data(), secretKey.size());
    return made;
}

}  // namespace recorder
