#include "Recording.h"

#include "Network.h"
#include "Programs.h"

namespace {

const char* const kLogConfig =
    "log4j.rootLogger=INFO, A\nlog4j.appender.A=org.apache.log4j.ConsoleAppender\n"
    "log4j.appender.A.layout=org.apache.log4j.PatternLayout\nlog4j.appender.A.layout.ConversionPattern=%p %m%n\n";

}  // namespace

Recording::Recording(const TempDir& dir, unsigned port, const std::string& filter, const std::string& protocol)
    : dir_(dir) {
    // Calls end by their signalling here: a short linger, and idle far beyond a test's length.
    recorder_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{RECORDER_PROGRAM, "--port", std::to_string(port), "--output", output(), "--idle",
                                 "60", "--linger", "0.5"},
        dir.file("recorder.log"));
    dir.write("sniffer.properties", "Device=lo\nFilter=" + filter + "\nServerName=127.0.0.1\nServerPort=" +
                                        std::to_string(port) + "\nServerProtocol=" + protocol +
                                        "\nLogLevel=INFO\nTraceSignalling=yes\n");
    dir.write("log4cxx.properties", kLogConfig);
    // The sniffer connects once it starts; a recorder that is late shows in waitUntilReady().
    waitForText(dir.file("recorder.log"), "Listening for the sniffer", 5s);
    sniffer_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{SNIFFER_PROGRAM, "-c", dir.file("sniffer.properties"), "-l",
                                 dir.file("log4cxx.properties")},
        dir.file("sniffer.log"));
}

bool Recording::waitUntilReady(std::chrono::milliseconds limit) const {
    return waitForText(dir_.file("recorder.log"), "Listening for the sniffer", limit) &&
           waitForText(dir_.file("sniffer.log"), "Sniffing started.", limit);
}

std::vector<std::string> Recording::waitForCalls(size_t count, std::chrono::milliseconds limit) const {
    waitUntil([&] { return calls().size() >= count; }, limit);
    return calls();
}

void Recording::stop() {
    sniffer_->stop();
    recorder_->stop();
}

std::string Recording::logs() const {
    return "recorder:\n" + readFile(dir_.file("recorder.log")) + "sniffer:\n" + readFile(dir_.file("sniffer.log"));
}
