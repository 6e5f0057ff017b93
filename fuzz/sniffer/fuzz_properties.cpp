// Properties files of any content, loaded into a table of their own; the
// device list among them split as the engine splits it.
//
// Checked against the file read line by line: a line of at most 511
// characters with an '=' defines the text before its first '=' as a key,
// unless an earlier line did; its value is the rest, trimmed. Longer lines
// and lines without '=' define nothing.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <unistd.h>

#include "Config.h"
#include "FuzzLogging.h"
#include "Sniffer.h"

namespace {
void require(bool holds) {
    if (!holds)
        std::abort();
}

std::map<std::string, std::string> definitions(std::string_view file) {
    std::map<std::string, std::string> defined;
    while (!file.empty()) {
        const size_t end = std::min(file.find('\n'), file.size());
        const std::string_view line = file.substr(0, end);
        file.remove_prefix(std::min(end + 1, file.size()));
        const size_t eq = line.find('=');
        if (line.size() <= Config::maxLineLength && eq != std::string_view::npos)
            defined.try_emplace(std::string(line.substr(0, eq)), Config::trim(std::string(line.substr(eq + 1))));
    }
    return defined;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string path = "/dev/shm/fuzz_properties." + std::to_string(getpid());
    static Sniffer* engine = (logEverythingToNowhere(), new Sniffer());

    FILE* file = std::fopen(path.c_str(), "wb");
    require(file && std::fwrite(data, 1, size, file) == size);
    std::fclose(file);

    Config table;
    table.setCfgFileName(path);
    table.loadProperties();
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto defined = definitions(text);
    for (const auto& [key, value] : defined)
        require(table.getProperty(key) == value);
    require(table.getProperty("\n").empty());  // no key can hold a line feed

    const std::string devices = table.getProperty("Device");
    if (engine->setDevice(devices.c_str()) == 0)
        require(engine->getDeviceCount() <= Sniffer::maxDevices);
    return 0;
}
