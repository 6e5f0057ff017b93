#include "TsharkCapture.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <sstream>

#include <gtest/gtest.h>

#include "ChildProcess.h"
#include "Network.h"
#include "Programs.h"

namespace tshark {

const std::string sipRule = "udp.payload matches \"^(?i)(SIP/2\\\\.0|\\\\s*\\\\S{1,15}\\\\s+sip:)\"";

namespace {
// tshark warns on standard error when run as root, into the same file;
// only the field lines are hexadecimal.
std::vector<std::string> hexLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && std::all_of(line.begin(), line.end(), [](unsigned char c) { return std::isxdigit(c); }))
            lines.push_back(line);
    return lines;
}
}  // namespace

std::vector<std::vector<std::string>> udpPayloads(const std::string& capture, const std::vector<std::string>& filters) {
    const TempDir dir;
    std::vector<std::unique_ptr<ChildProcess>> readers;
    for (std::size_t i = 0; i < filters.size(); ++i)
        readers.push_back(
            std::make_unique<ChildProcess>(std::vector<std::string>{onPath("tshark"), "-r", capture, "-Y", filters[i],
                                                                    "-T", "fields", "-e", "udp.payload"},
                                           dir.file(std::to_string(i))));
    std::vector<std::vector<std::string>> results;
    for (std::size_t i = 0; i < readers.size(); ++i) {
        EXPECT_TRUE(readers[i]->waitFor(60s) && readers[i]->exitStatus() == 0)
            << "tshark failed on " << capture << " with " << filters[i] << ": "
            << readFile(dir.file(std::to_string(i)));
        results.push_back(hexLines(readFile(dir.file(std::to_string(i)))));
    }
    return results;
}

std::vector<std::string> fieldRows(const std::string& capture, const std::vector<std::string>& arguments) {
    const TempDir dir;
    std::vector<std::string> command = {onPath("tshark"), "-r", capture, "-T", "fields"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ChildProcess reader(command, dir.file("out"));
    EXPECT_TRUE(reader.waitFor(60s) && reader.exitStatus() == 0) << readFile(dir.file("out"));
    std::vector<std::string> lines;
    std::istringstream in(readFile(dir.file("out")));
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && std::isdigit(static_cast<unsigned char>(line[0])))
            lines.push_back(line);
    return lines;
}

std::vector<std::string> innermostAddresses(const std::string& capture) {
    return fieldRows(capture, {"-E", "occurrence=l", "-E", "separator=>", "-e", "ip.src", "-e", "ip.dst"});
}

}  // namespace tshark
