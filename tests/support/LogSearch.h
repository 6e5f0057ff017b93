#ifndef SNIFFER_TESTS_LOG_SEARCH_H
#define SNIFFER_TESTS_LOG_SEARCH_H

#include <chrono>
#include <string>

#include "LogCapture.h"

// Searches in what a LogCapture holds by position, so that a test can look
// only at what came after a moment (an outage, a stop): it takes
// log.events().size() then and searches from there.

// Position of the first event at or after `from` whose message equals
// `message`, or starts with it when `prefix` is set; -1 if there is none.
long logIndex(const LogCapture& log, const std::string& message, std::size_t from = 0, bool prefix = false);
// Events at or after `from` whose message starts with `prefix`.
int countPrefix(const LogCapture& log, const std::string& prefix, std::size_t from = 0);
bool containsPrefix(const LogCapture& log, const std::string& level, const std::string& prefix);
// Waits until a message starting with `prefix` is logged at or after `from`.
bool waitForLog(const LogCapture& log, const std::string& prefix, std::chrono::milliseconds timeout,
                std::size_t from = 0);

#endif
