#ifndef SNIFFER_TESTS_CHILD_PROCESS_H
#define SNIFFER_TESTS_CHILD_PROCESS_H

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

// A program run by a test, its standard output and error going to one
// temporary file (or its standard error discarded, for programs whose
// output is data). A child still running at destruction is killed and reaped.
class ChildProcess {
public:
    enum class StandardError { Kept, Discarded };

    explicit ChildProcess(const std::vector<std::string>& argv, StandardError error = StandardError::Kept);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Runs a program to its end and returns its exit status (-1 on time-out).
    static int run(const std::vector<std::string>& argv, std::chrono::milliseconds timeout);
    // True when `program` is found on the PATH.
    static bool available(const std::string& program);

    bool started() const { return pid > 0; }
    void signal(int sig) const;
    // The exit status (or 128 + signal number), once the child has ended
    // within `timeout`.
    std::optional<int> wait(std::chrono::milliseconds timeout);
    std::string output() const;
    bool waitForOutput(const std::string& text, std::chrono::milliseconds timeout) const;

private:
    pid_t pid = -1;
    std::optional<int> status;
    std::string outputPath;
};

#endif
