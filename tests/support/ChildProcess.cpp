#include "ChildProcess.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

ChildProcess::ChildProcess(const std::vector<std::string>& argv, const std::string& outputPath,
                           const std::string& workingDirectory) {
    std::vector<char*> args;
    for (const std::string& a : argv)
        args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
        const int out = open(outputPath.empty() ? "/dev/null" : outputPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(out, STDOUT_FILENO);
        dup2(out, STDERR_FILENO);
        // Nothing of the test's own (a recorder's listening socket, say) may
        // live on in the program: it would hold ports the test closes.
        closefrom(STDERR_FILENO + 1);
        // The test process may block signals (the engine's programs do);
        // the child starts with a clean mask.
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        if (!workingDirectory.empty() && chdir(workingDirectory.c_str()) != 0)
            _exit(126);
        execv(args[0], args.data());
        _exit(127);
    }
}

ChildProcess::~ChildProcess() {
    stop(std::chrono::seconds(2));
}

bool ChildProcess::waitFor(std::chrono::milliseconds limit) {
    if (exited_ || pid_ <= 0)
        return true;
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        int raw = 0;
        if (waitpid(pid_, &raw, WNOHANG) == pid_) {
            exited_ = true;
            status_ = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
            return true;
        }
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

void ChildProcess::signal(int sig) {
    if (!exited_ && pid_ > 0)
        kill(pid_, sig);
}

void ChildProcess::stop(std::chrono::milliseconds grace) {
    if (exited_ || pid_ <= 0)
        return;
    signal(SIGTERM);
    if (!waitFor(grace)) {
        signal(SIGKILL);
        waitFor(std::chrono::seconds(5));
    }
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "sniffer-test-XXXXXX").string();
    path_ = mkdtemp(pattern.data());
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void TempDir::write(const std::string& name, const std::string& contents) const {
    std::ofstream(file(name), std::ios::binary) << contents;
}
