// The recording side of an end-to-end test: the recorder, and the sniffer
// capturing lo and forwarding to it.
#ifndef TESTS_E2E_RECORDING_H
#define TESTS_E2E_RECORDING_H

#include "ChildProcess.h"
#include "Tools.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

class Recording {
public:
    // The recorder listens on 127.0.0.1:`port` and writes to DIR/out; the sniffer captures what
    // `filter` selects on lo and reaches the recorder over `protocol` (TCP or UDP).
    Recording(const TempDir& dir, unsigned port, const std::string& filter, const std::string& protocol);

    // Waits until the recorder listens and the sniffer captures; false after `limit`.
    bool waitUntilReady(std::chrono::milliseconds limit) const;
    // The lines of calls.jsonl once there are at least `count`, or those there are after `limit`.
    std::vector<std::string> waitForCalls(size_t count, std::chrono::milliseconds limit) const;
    // Stops the sniffer, then the recorder, which archives any call still open.
    void stop();

    std::string output() const { return dir_.file("out"); }
    std::vector<std::string> calls() const { return readLines(output() + "/calls.jsonl"); }
    // Both logs, for the message of a failed assertion.
    std::string logs() const;

private:
    const TempDir& dir_;
    std::unique_ptr<ChildProcess> recorder_;
    std::unique_ptr<ChildProcess> sniffer_;
};

#endif
