#include "Tshark.h"

#include <memory>
#include <sstream>

#include <gtest/gtest.h>

#include "ChildProcess.h"
#include "Network.h"

namespace tshark {

const std::string sipRule = "udp.payload matches \"^(?i)(SIP/2\\\\.0|\\\\s*\\\\S{1,15}\\\\s+sip:)\"";

std::vector<std::vector<std::string>> udpPayloads(const std::string& capture, const std::vector<std::string>& filters) {
    std::vector<std::unique_ptr<ChildProcess>> readers;
    for (const std::string& filter : filters)
        readers.push_back(std::make_unique<ChildProcess>(
            std::vector<std::string>{"tshark", "-r", capture, "-Y", filter, "-T", "fields", "-e", "udp.payload"},
            ChildProcess::StandardError::Discarded));
    std::vector<std::vector<std::string>> results;
    for (std::size_t i = 0; i < readers.size(); ++i) {
        ChildProcess& reader = *readers[i];
        EXPECT_EQ(0, reader.wait(60s).value_or(-1)) << "tshark failed on " << capture << " with " << filters[i];
        std::vector<std::string> lines;
        std::istringstream text(reader.output());
        for (std::string line; std::getline(text, line);)
            lines.push_back(line);
        results.push_back(std::move(lines));
    }
    return results;
}

}  // namespace tshark
