#include "ChildProcess.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Network.h"

extern char** environ;

ChildProcess::ChildProcess(const std::vector<std::string>& argv, StandardError error) {
    char outputName[] = "/tmp/sniffer-test-child-XXXXXX";
    const int fd = mkstemp(outputName);
    if (fd < 0)
        return;
    close(fd);
    outputPath = outputName;

    std::vector<char*> args;
    for (const std::string& a : argv)
        args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputName, O_WRONLY | O_APPEND, 0);
    if (error == StandardError::Kept)
        posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    else
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    // The child starts with every signal unblocked and at its default.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    if (posix_spawnp(&pid, args[0], &actions, &attributes, args.data(), environ) != 0)
        pid = -1;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
}

ChildProcess::~ChildProcess() {
    if (started() && !status) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    if (!outputPath.empty())
        unlink(outputPath.c_str());
}

int ChildProcess::run(const std::vector<std::string>& argv, std::chrono::milliseconds timeout) {
    ChildProcess child(argv);
    return child.wait(timeout).value_or(-1);
}

bool ChildProcess::available(const std::string& program) {
    return run({"sh", "-c", "command -v " + program}, 5s) == 0;
}

void ChildProcess::signal(int sig) const {
    if (started() && !status)
        kill(pid, sig);
}

std::optional<int> ChildProcess::wait(std::chrono::milliseconds timeout) {
    if (!started() || status)
        return status;
    waitUntil(
        [&] {
            int raw = 0;
            if (waitpid(pid, &raw, WNOHANG) != pid)
                return false;
            status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
            return true;
        },
        timeout);
    return status;
}

std::string ChildProcess::output() const {
    std::ostringstream text;
    text << std::ifstream(outputPath).rdbuf();
    return text.str();
}

bool ChildProcess::waitForOutput(const std::string& text, std::chrono::milliseconds timeout) const {
    return waitUntil([&] { return output().find(text) != std::string::npos; }, timeout);
}
