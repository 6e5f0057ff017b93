#include "Recording.h"

#include "Programs.h"

namespace {

const char* const kLogConfig =
    "log4j.rootLogger=INFO, A\nlog4j.appender.A=org.apache.log4j.ConsoleAppender\n"
    "log4j.appender.A.layout=org.apache.log4j.PatternLayout\nlog4j.appender.A.layout.ConversionPattern=%p %m%n\n";

std::vector<std::string> snifferCommand(const TempDir& dir, const std::string& filter, const std::string& protocol,
                                        unsigned port) {
    dir.write("sniffer.properties", "Device=lo\nFilter=" + filter +
                                        "\nServerName=127.0.0.1\nServerPort=" + std::to_string(port) +
                                        "\nServerProtocol=" + protocol + "\nLogLevel=INFO\nTraceSignalling=yes\n");
    dir.write("log4cxx.properties", kLogConfig);
    return {SNIFFER_PROGRAM, "-c", dir.file("sniffer.properties"), "-l", dir.file("log4cxx.properties")};
}

}  // namespace

Recording::Recording(const TempDir& dir, const std::string& filter, const std::string& protocol)
    : dir_(dir), sniffer_(snifferCommand(dir, filter, protocol, recorder_.port()), dir.file("sniffer.log")) {}

bool Recording::waitUntilReady(std::chrono::milliseconds limit) const {
    return waitForText(dir_.file("sniffer.log"), "Sniffing started.", limit);
}

void Recording::stop() {
    sniffer_.stop();
    recorder_.stop();
}

std::string Recording::logs() const {
    return "recorder:\n" + recorder_.log() + "sniffer:\n" + readFile(dir_.file("sniffer.log"));
}
