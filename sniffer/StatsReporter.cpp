#include "StatsReporter.h"

#include <chrono>

#include <log4cxx/logger.h>

namespace {
log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("SnifferClient");
}

StatsReporter::StatsReporter(std::function<std::string()> describe, int intervalS)
    : describe(std::move(describe)), intervalS(intervalS) {}

StatsReporter::~StatsReporter() {
    {
        std::lock_guard<std::mutex> guard(lock);
        stopping = true;
    }
    stopRequested.notify_all();
    if (thread.joinable())
        thread.join();
}

void StatsReporter::start() {
    if (intervalS > 0)
        thread = std::thread(&StatsReporter::run, this);
}

void StatsReporter::stop() {
    {
        std::lock_guard<std::mutex> guard(lock);
        if (stopped)
            return;
        stopped = stopping = true;
    }
    stopRequested.notify_all();
    if (thread.joinable())
        thread.join();
    log();
}

void StatsReporter::run() {
    std::unique_lock<std::mutex> guard(lock);
    while (!stopRequested.wait_for(guard, std::chrono::seconds(intervalS), [this] { return stopping; })) {
        guard.unlock();
        log();
        guard.lock();
    }
}

void StatsReporter::log() const {
    LOG4CXX_INFO(logger, "Stats: " << describe());
}
