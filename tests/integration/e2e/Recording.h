// The recording side of an end-to-end test: the recorder, and the sniffer
// capturing lo and forwarding to it.
#ifndef TESTS_E2E_RECORDING_H
#define TESTS_E2E_RECORDING_H

#include "RecorderHarness.h"

#include <chrono>
#include <string>
#include <vector>

class Recording {
public:
    // The sniffer captures what `filter` selects on lo and reaches the recorder over `protocol`
    // (TCP or UDP); its set-up and log go to `dir`.
    Recording(const TempDir& dir, const std::string& filter, const std::string& protocol);

    // Waits until the sniffer captures; false after `limit`.
    bool waitUntilReady(std::chrono::milliseconds limit) const;
    // The lines of calls.jsonl once there are at least `count`, or those there are after `limit`.
    std::vector<std::string> waitForCalls(size_t count, std::chrono::milliseconds limit) const {
        return recorder_.waitForCalls(count, limit);
    }
    std::vector<std::string> calls() const { return waitForCalls(0, {}); }
    // Stops the sniffer, then the recorder, which archives any call still open.
    void stop();

    const recorder::test::RecorderProcess& recorder() const { return recorder_; }
    // Both logs, for the message of a failed assertion.
    std::string logs() const;

private:
    const TempDir& dir_;
    // Calls end by their signalling here: a short linger, idle far beyond a test's length, and
    // heartbeats as often as by default.
    recorder::test::RecorderProcess recorder_{{"--idle", "60", "--linger", "0.5", "--heartbeat", "5"}};
    ChildProcess sniffer_;
};

#endif
