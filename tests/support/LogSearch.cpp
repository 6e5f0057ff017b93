#include "LogSearch.h"

#include "Network.h"

namespace {
bool startsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}
}  // namespace

long logIndex(const LogCapture& log, const std::string& message, std::size_t from, bool prefix) {
    const auto events = log.events();
    for (std::size_t i = from; i < events.size(); ++i)
        if (prefix ? startsWith(events[i].message, message) : events[i].message == message)
            return static_cast<long>(i);
    return -1;
}

int countPrefix(const LogCapture& log, const std::string& prefix, std::size_t from) {
    const auto events = log.events();
    int n = 0;
    for (std::size_t i = from; i < events.size(); ++i)
        n += startsWith(events[i].message, prefix);
    return n;
}

bool containsPrefix(const LogCapture& log, const std::string& level, const std::string& prefix) {
    for (const LogEvent& e : log.events())
        if (e.level == level && startsWith(e.message, prefix))
            return true;
    return false;
}

bool waitForLog(const LogCapture& log, const std::string& prefix, std::chrono::milliseconds timeout, std::size_t from) {
    return waitUntil([&] { return logIndex(log, prefix, from, true) >= 0; }, timeout);
}
