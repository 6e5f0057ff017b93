#include "LogCapture.h"

#include <algorithm>

#include <log4cxx/logger.h>

class LogCapture::Appender : public log4cxx::AppenderSkeleton {
public:
    void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool&) override {
        std::string message;
        log4cxx::helpers::Transcoder::encode(event->getMessage(), message);
        std::lock_guard<std::mutex> guard(lock);
        events.push_back({event->getLevel()->toString(), message});
    }
    void close() override {}
    bool requiresLayout() const override { return false; }

    mutable std::mutex lock;
    std::vector<LogEvent> events;
};

namespace {
log4cxx::LoggerPtr systemLogger() {
    return log4cxx::Logger::getLogger("SnifferClient");
}
}  // namespace

LogCapture::LogCapture() : appender_(std::make_shared<Appender>()), previousLevel_(systemLogger()->getLevel()) {
    systemLogger()->addAppender(appender_);
    systemLogger()->setLevel(log4cxx::Level::getDebug());
}

LogCapture::~LogCapture() {
    systemLogger()->removeAppender(appender_);
    systemLogger()->setLevel(previousLevel_);
}

std::vector<LogEvent> LogCapture::events() const {
    std::lock_guard<std::mutex> guard(appender_->lock);
    return appender_->events;
}

std::vector<std::string> LogCapture::messages(const std::string& level) const {
    std::vector<std::string> found;
    for (const LogEvent& e : events())
        if (e.level == level)
            found.push_back(e.message);
    return found;
}

bool LogCapture::contains(const std::string& level, const std::string& message) const {
    const auto all = messages(level);
    return std::find(all.begin(), all.end(), message) != all.end();
}

void LogCapture::clear() {
    std::lock_guard<std::mutex> guard(appender_->lock);
    appender_->events.clear();
}
