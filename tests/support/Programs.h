#ifndef SNIFFER_TESTS_PROGRAMS_H
#define SNIFFER_TESTS_PROGRAMS_H

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ChildProcess.h"

// Helpers around the shared ChildProcess for the tools the tests drive.

// The full path of `program` found on the PATH; empty when it is not installed.
std::string onPath(const std::string& program);
// Runs a program to its end; true when it exits with status 0 within `timeout`.
bool runsCleanly(const std::vector<std::string>& argv, std::chrono::milliseconds timeout);
// Waits until the file at `path` contains `text`.
bool waitForText(const std::string& path, const std::string& text, std::chrono::milliseconds timeout);

struct CommandLine {
    std::vector<std::string> argv;
};

// A program under test with its output (log lines "LEVEL message") in a
// file of a folder of its own.
class SnifferProgram {
public:
    // `sniffer` configured from a properties file of `properties` lines;
    // `prefix` goes before its path (e.g. a command that lowers privileges).
    explicit SnifferProgram(const std::vector<std::string>& properties, const std::vector<std::string>& prefix = {});
    // Any command line, e.g. udpsniffer's.
    explicit SnifferProgram(const CommandLine& commandLine);
    SnifferProgram(const SnifferProgram&) = delete;
    SnifferProgram& operator=(const SnifferProgram&) = delete;

    bool waitForLog(const std::string& text, std::chrono::milliseconds timeout = std::chrono::seconds(5)) const;
    // Lines of the output equal to `line`.
    int countLines(const std::string& line) const;
    std::string output() const { return readFile(outputPath()); }
    void signal(int sig) { process->signal(sig); }
    // SIGTERM, then the exit status once the program has ended.
    std::optional<int> stop(std::chrono::milliseconds timeout = std::chrono::seconds(10));
    // The exit status, once the program has ended by itself within `timeout`.
    std::optional<int> wait(std::chrono::milliseconds timeout);
    // A field of /proc/PID/status, e.g. "Uid" or "VmRSS"; empty once ended.
    std::string status(const std::string& field) const;
    long residentKb() const;

private:
    void start(const std::vector<std::string>& argv);
    std::string outputPath() const { return folder.file("output.log"); }

    TempDir folder;
    std::unique_ptr<ChildProcess> process;
};

#endif
