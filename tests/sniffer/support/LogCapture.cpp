#include "LogCapture.h"

#include <mutex>

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/spi/loggingevent.h>

#include "Network.h"

// The object macros of log4cxx name its types unqualified.
using namespace log4cxx;

class MemoryAppender : public log4cxx::AppenderSkeleton {
public:
    DECLARE_LOG4CXX_OBJECT(MemoryAppender)
    BEGIN_LOG4CXX_CAST_MAP()
    LOG4CXX_CAST_ENTRY(MemoryAppender)
    LOG4CXX_CAST_ENTRY_CHAIN(AppenderSkeleton)
    END_LOG4CXX_CAST_MAP()

    void close() override {}
    bool requiresLayout() const override { return false; }

    std::vector<LogEvent> snapshot() const {
        std::lock_guard<std::mutex> guard(lock);
        return recorded;
    }

protected:
    void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool&) override {
        std::lock_guard<std::mutex> guard(lock);
        recorded.push_back({event->getLevel()->toString(), event->getMessage()});
    }

private:
    mutable std::mutex lock;
    std::vector<LogEvent> recorded;
};

IMPLEMENT_LOG4CXX_OBJECT(MemoryAppender)

LogCapture::LogCapture()
    : logger(log4cxx::Logger::getLogger("SnifferClient")), appender(std::make_shared<MemoryAppender>()) {
    logger->setLevel(log4cxx::Level::getDebug());
    logger->addAppender(appender);
}

LogCapture::~LogCapture() {
    logger->removeAppender(appender);
}

std::vector<LogEvent> LogCapture::events() const {
    return appender->snapshot();
}

std::size_t LogCapture::size() const {
    return events().size();
}

long LogCapture::find(const std::string& message, std::size_t from, bool prefix) const {
    const auto all = events();
    for (std::size_t i = from; i < all.size(); ++i) {
        const std::string& m = all[i].message;
        if (prefix ? m.compare(0, message.size(), message) == 0 : m == message)
            return static_cast<long>(i);
    }
    return -1;
}

int LogCapture::countPrefix(const std::string& prefix, std::size_t from) const {
    const auto all = events();
    int n = 0;
    for (std::size_t i = from; i < all.size(); ++i)
        n += all[i].message.compare(0, prefix.size(), prefix) == 0;
    return n;
}

bool LogCapture::has(const std::string& level, const std::string& message) const {
    for (const LogEvent& e : events())
        if (e.level == level && e.message == message)
            return true;
    return false;
}

bool LogCapture::hasPrefix(const std::string& level, const std::string& prefix) const {
    for (const LogEvent& e : events())
        if (e.level == level && e.message.compare(0, prefix.size(), prefix) == 0)
            return true;
    return false;
}

bool LogCapture::waitFor(const std::string& prefix, std::chrono::milliseconds timeout, std::size_t from) const {
    return waitUntil([&] { return find(prefix, from, true) >= 0; }, timeout);
}
