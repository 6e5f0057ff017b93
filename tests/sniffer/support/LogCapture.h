#ifndef SNIFFER_TESTS_LOG_CAPTURE_H
#define SNIFFER_TESTS_LOG_CAPTURE_H

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <log4cxx/logger.h>

struct LogEvent {
    std::string level;
    std::string message;
};

class MemoryAppender;

// Records every event of the "SnifferClient" logger, at DEBUG and above,
// while it lives. Indexes let a test look only at what came after a mark.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogEvent> events() const;
    std::size_t size() const;
    // Position of the first event at or after `from` whose message equals
    // `message` (or starts with it, for find with prefix = true); -1 if none.
    long find(const std::string& message, std::size_t from = 0, bool prefix = false) const;
    // Events at or after `from` whose message starts with `prefix`.
    int countPrefix(const std::string& prefix, std::size_t from = 0) const;
    // True when an event of `level` with exactly `message` was logged.
    bool has(const std::string& level, const std::string& message) const;
    // True when an event of `level` whose message starts with `prefix` was logged.
    bool hasPrefix(const std::string& level, const std::string& prefix) const;
    // Waits until an event with a message starting with `prefix` at or after `from` appears.
    bool waitFor(const std::string& prefix, std::chrono::milliseconds timeout, std::size_t from = 0) const;

private:
    log4cxx::LoggerPtr logger;
    std::shared_ptr<MemoryAppender> appender;
};

#endif
