#include "Programs.h"

#include <unistd.h>
#include <cstdlib>
#include <sstream>

#include "ChildProcess.h"
#include "Network.h"

std::string onPath(const std::string& program) {
    const char* path = std::getenv("PATH");
    std::istringstream folders(path ? path : "/usr/bin:/bin:/usr/sbin:/sbin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        const std::string candidate = folder + "/" + program;
        if (access(candidate.c_str(), X_OK) == 0)
            return candidate;
    }
    return {};
}

bool runsCleanly(const std::vector<std::string>& argv, std::chrono::milliseconds timeout) {
    ChildProcess child(argv);
    return child.waitFor(timeout) && child.exitStatus() == 0;
}

bool waitForText(const std::string& path, const std::string& text, std::chrono::milliseconds timeout) {
    return waitUntil([&] { return readFile(path).find(text) != std::string::npos; }, timeout);
}
