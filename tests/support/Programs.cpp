#include "Programs.h"

#include <sys/stat.h>
#include <unistd.h>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>

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

SnifferProgram::SnifferProgram(const std::vector<std::string>& properties, const std::vector<std::string>& prefix) {
    chmod(folder.path().c_str(), 0755);  // readable by a program that runs as another user
    std::string lines;
    for (const std::string& line : properties)
        lines += line + "\n";
    folder.write("sniffer.properties", lines + "LogLevel=INFO\n");  // the first line of a key wins
    folder.write("log4cxx.properties",
                 "log4j.rootLogger=INFO, out\n"
                 "log4j.appender.out=org.apache.log4j.ConsoleAppender\n"
                 "log4j.appender.out.layout=org.apache.log4j.PatternLayout\n"
                 "log4j.appender.out.layout.ConversionPattern=%p %m%n\n");
    std::vector<std::string> argv = prefix;
    argv.insert(argv.end(),
                {SNIFFER_PROGRAM, "-c", folder.file("sniffer.properties"), "-l", folder.file("log4cxx.properties")});
    start(argv);
}

SnifferProgram::SnifferProgram(const CommandLine& commandLine) {
    start(commandLine.argv);
}

void SnifferProgram::start(const std::vector<std::string>& argv) {
    process = std::make_unique<ChildProcess>(argv, outputPath());
}

bool SnifferProgram::waitForLog(const std::string& text, std::chrono::milliseconds timeout) const {
    return waitForText(outputPath(), text, timeout);
}

int SnifferProgram::countLines(const std::string& line) const {
    std::istringstream text(output());
    int n = 0;
    for (std::string l; std::getline(text, l);)
        n += l == line;
    return n;
}

std::optional<int> SnifferProgram::stop(std::chrono::milliseconds timeout) {
    process->signal(SIGTERM);
    return wait(timeout);
}

std::optional<int> SnifferProgram::wait(std::chrono::milliseconds timeout) {
    if (!process->waitFor(timeout))
        return std::nullopt;
    return process->exitStatus();
}

std::string SnifferProgram::status(const std::string& field) const {
    std::ifstream in("/proc/" + std::to_string(process->pid()) + "/status");
    for (std::string line; std::getline(in, line);)
        if (line.compare(0, field.size() + 1, field + ":") == 0)
            return line.substr(line.find_first_not_of(" \t", field.size() + 1));
    return "";
}

long SnifferProgram::residentKb() const {
    return std::atol(status("VmRSS").c_str());
}
