// recorder-decrypt: restores a recording the recorder encrypted with --encrypt-to, and makes the
// key pair it encrypts to.
#include "KeyFile.h"
#include "SealedFile.h"

#include <sodium.h>

#include <cstring>
#include <iostream>

namespace {

void printUsage(const char* program) {
    std::cerr << "Usage: " << program << " SECRET_KEY_FILE FILE.enc [OUT]\n"
              << "       " << program << " --make-keys DIR\n"
              << "Decrypts FILE.enc into OUT (default: FILE.enc without .enc), or writes a new key pair as\n"
              << "DIR/recording.pub (for recorder --encrypt-to) and DIR/recording.key (mode 0600, keep it\n"
              << "away from the recorder's host).\n";
}

std::string defaultOutput(const std::string& sealed) {
    const std::string suffix = ".enc";
    if (sealed.size() > suffix.size() && sealed.compare(sealed.size() - suffix.size(), suffix.size(), suffix) == 0)
        return sealed.substr(0, sealed.size() - suffix.size());
    return sealed + ".clear";
}

int fail(const char* program, const std::string& problem) {
    std::cerr << program << ": " << problem << "\n";
    return 1;
}

}  // namespace

int main(int argc, char* argv[]) {
    std::string problem;
    if (argc == 3 && std::strcmp(argv[1], "--make-keys") == 0) {
        if (!recorder::KeyFile::makePair(argv[2], problem))
            return fail(argv[0], problem);
        std::cout << "Wrote " << argv[2] << "/" << recorder::KeyFile::publicName << " and " << argv[2] << "/"
                  << recorder::KeyFile::secretName << "\n";
        return 0;
    }
    if (argc != 3 && argc != 4) {
        printUsage(argv[0]);
        return 2;
    }
    recorder::KeyFile::Key secretKey;
    if (!recorder::KeyFile::read(argv[1], secretKey, problem))
        return fail(argv[0], problem);
    const std::string output = argc == 4 ? argv[3] : defaultOutput(argv[2]);
    const bool opened = recorder::SealedFile::open(argv[2], output, secretKey, problem);
    sodium_memzero(secretKey.data(), secretKey.size());
    return opened ? 0 : fail(argv[0], problem);
}
