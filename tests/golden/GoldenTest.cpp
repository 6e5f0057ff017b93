// The golden corpus: every input under tests/golden/<kind>/ is run through
// the part of the engine its kind names, and what comes out is compared
// with the file beside it (same name, ".expected"). GOLDEN_UPDATE=1 writes
// the expected files instead of comparing; see README.md.
#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>

#include "H323Parser.h"
#include "LogCapture.h"

namespace fs = std::filesystem;

namespace {

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

std::string fromHex(const std::string& hex) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes += char(std::stoi(hex.substr(i, 2), nullptr, 16));
    return bytes;
}

// Every line of `text` behind `prefix`.
std::string indented(const std::string& text, const char* prefix = "  ") {
    std::string out = prefix;
    for (char c : text) {
        out += c;
        if (c == '\n')
            out += prefix;
    }
    return out;
}

void appendLog(std::ostringstream& out, LogCapture& log) {
    for (const LogEvent& event : log.events())
        out << "  " << event.level << " " << indented(event.message, "    | ").substr(6) << "\n";
    log.clear();
}

// tests/golden/h323/*.segments: lines "FROM_IP:PORT TO_IP:PORT HEX" of TCP
// payloads ("-" for none) given one after the other to one H323Parser
// ("trace" turns the signalling trace on). Out: for each, whether it was
// described, the description, the log lines and the size of the call maps.
std::string describeH323(const fs::path& input) {
    LogCapture log;
    H323Parser parser;
    std::ostringstream out;
    std::istringstream lines(readFile(input));
    std::string line;
    while (std::getline(lines, line)) {
        if (line.empty() || line[0] == '#')
            continue;
        if (line == "trace") {
            parser.setTraceSignalling(true);
            continue;
        }
        std::istringstream words(line);
        std::string from, to, hex;
        words >> from >> to >> hex;
        auto split = [](const std::string& endpoint) {
            const auto colon = endpoint.find(':');
            return std::make_pair(inet_addr(endpoint.substr(0, colon).c_str()),
                                  unsigned(std::stoul(endpoint.substr(colon + 1))));
        };
        const auto [fromIp, fromPort] = split(from);
        const auto [toIp, toPort] = split(to);
        // The 15 bytes of the forwarded header come first, as the dissector hands it over.
        std::string segment = std::string(15, '\0') + (hex == "-" ? "" : fromHex(hex));
        std::string text;
        const bool described = parser.parseH323(reinterpret_cast<u_char*>(segment.data()), int(segment.size()), 15,
                                                fromIp, toIp, fromPort, toPort, text);
        out << from << " > " << to << ": " << (described ? "described" : "not described") << "\n";
        if (!text.empty())
            out << indented(text.substr(0, text.size() - 1)) << "\n";
        appendLog(out, log);
        out << "  maps: " << parser.getCallRefMap().size() << " call references, " << parser.getH245Map().size()
            << " H.245 addresses\n";
    }
    return out.str();
}

// Kind (folder) -> input extension and what makes the output of one input.
struct Kind {
    const char* extension;
    std::function<std::string(const fs::path&)> run;
};
const std::map<std::string, Kind> kinds = {
    {"h323", {".segments", describeH323}},
};

// Where two texts first differ, with a few lines of each from there.
std::string firstDifference(const std::string& expected, const std::string& actual) {
    std::istringstream e(expected), a(actual);
    std::string el, al;
    for (int line = 1;; ++line) {
        const bool moreE = bool(std::getline(e, el)), moreA = bool(std::getline(a, al));
        if (!moreE && !moreA)
            return "";
        if (moreE != moreA || el != al)
            return "line " + std::to_string(line) + ":\n  expected: " + (moreE ? el : "<end>") +
                   "\n  actual:   " + (moreA ? al : "<end>");
    }
}

TEST(Golden, EveryInputGivesItsExpectedOutput) {
    const bool update = std::getenv("GOLDEN_UPDATE") && std::string(std::getenv("GOLDEN_UPDATE")) == "1";
    int cases = 0;
    for (const auto& [name, kind] : kinds) {
        for (const auto& entry : fs::directory_iterator(fs::path(GOLDEN_DIR) / name)) {
            if (entry.path().extension() != kind.extension)
                continue;
            ++cases;
            const std::string actual = kind.run(entry.path());
            fs::path expectedPath = entry.path();
            expectedPath.replace_extension(".expected");
            if (update) {
                std::ofstream(expectedPath, std::ios::binary) << actual;
                continue;
            }
            ASSERT_TRUE(fs::exists(expectedPath)) << expectedPath << " is missing: run with GOLDEN_UPDATE=1";
            const std::string difference = firstDifference(readFile(expectedPath), actual);
            EXPECT_EQ("", difference) << entry.path();
        }
    }
    EXPECT_GT(cases, 0) << "no inputs under " << GOLDEN_DIR;
}

}  // namespace
