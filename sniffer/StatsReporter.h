#ifndef SNIFFER_STATS_REPORTER_H
#define SNIFFER_STATS_REPORTER_H

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

// Logs a line of counters at INFO every interval while the engine runs, and
// once more when it stops, so that the last line covers the whole run.
class StatsReporter {
public:
    // `intervalS` 0: only the line at stop.
    StatsReporter(std::function<std::string()> describe, int intervalS);
    ~StatsReporter();
    StatsReporter(const StatsReporter&) = delete;
    StatsReporter& operator=(const StatsReporter&) = delete;

    void start();
    // Ends the periodic lines and logs the final one; once.
    void stop();

private:
    void run();
    void log() const;

    const std::function<std::string()> describe;
    const int intervalS;
    std::mutex lock;
    std::condition_variable stopRequested;
    bool stopping = false;
    bool stopped = false;
    std::thread thread;
};

#endif
