#ifndef SNIFFER_TESTS_TEMP_FILE_H
#define SNIFFER_TESTS_TEMP_FILE_H

#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>

// A file under /tmp holding `text`, removed again on destruction.
class TempFile {
public:
    explicit TempFile(const std::string& text, const char* suffix = "") {
        std::string pattern = std::string("/tmp/sniffer-test-XXXXXX") + suffix;
        const int fd = mkstemps(pattern.data(), static_cast<int>(std::char_traits<char>::length(suffix)));
        if (fd >= 0)
            close(fd);
        name = pattern;
        std::ofstream(name, std::ios::binary) << text;
    }
    ~TempFile() { unlink(name.c_str()); }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;

    const std::string& path() const { return name; }

private:
    std::string name;
};

#endif
