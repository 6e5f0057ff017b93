// A program run by a test: started with its arguments, output to a file,
// stopped (SIGTERM, then SIGKILL) and reaped at the latest when destroyed.
#ifndef TESTS_SUPPORT_CHILD_PROCESS_H
#define TESTS_SUPPORT_CHILD_PROCESS_H

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

class ChildProcess {
public:
    // Output (stdout and stderr) goes to `outputPath`; "" discards it.
    ChildProcess(const std::vector<std::string>& argv, const std::string& outputPath = "",
                 const std::string& workingDirectory = "");
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return pid_; }
    // Waits for the exit; false when it is still running after `limit`.
    bool waitFor(std::chrono::milliseconds limit);
    // SIGTERM, then SIGKILL after `grace`; reaps the child.
    void stop(std::chrono::milliseconds grace = std::chrono::seconds(5));
    void signal(int sig);
    int exitStatus() const { return status_; }  // exit code, or 128 + signal

private:
    pid_t pid_ = -1;
    bool exited_ = false;
    int status_ = -1;
};

// The whole text of a file ("" when absent).
std::string readFile(const std::string& path);

// A fresh directory under the temporary folder, removed with its contents.
class TempDir {
public:
    TempDir();
    ~TempDir();
    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    void write(const std::string& name, const std::string& contents) const;

private:
    std::string path_;
};

#endif
