// Captures what the system logs through its logger, for exact assertions.
#ifndef TESTS_SUPPORT_LOG_CAPTURE_H
#define TESTS_SUPPORT_LOG_CAPTURE_H

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/level.h>

struct LogEvent {
    std::string level;  // "DEBUG", "INFO", ...
    std::string message;
};

// Attached to the "SnifferClient" logger for the life of the object, with
// the logger at DEBUG; detached (and the level restored) on destruction.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogEvent> events() const;
    // Messages of one level, in order.
    std::vector<std::string> messages(const std::string& level) const;
    bool contains(const std::string& level, const std::string& message) const;
    void clear();

private:
    class Appender;
    std::shared_ptr<Appender> appender_;
    log4cxx::LevelPtr previousLevel_;
};

#endif
