#ifndef SNIFFER_TESTS_PROGRAMS_H
#define SNIFFER_TESTS_PROGRAMS_H

#include <chrono>
#include <string>
#include <vector>

// Helpers around the shared ChildProcess for the tools the tests drive.

// The full path of `program` found on the PATH; empty when it is not installed.
std::string onPath(const std::string& program);
// Runs a program to its end; true when it exits with status 0 within `timeout`.
bool runsCleanly(const std::vector<std::string>& argv, std::chrono::milliseconds timeout);
// Waits until the file at `path` contains `text`.
bool waitForText(const std::string& path, const std::string& text, std::chrono::milliseconds timeout);

#endif
