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
#include "Recorder.h"
#include "SnifferRun.h"

namespace fs = std::filesystem;
using namespace std::chrono_literals;

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

// A payload as text when it is printable text, else as hex.
std::string printable(const Bytes& payload) {
    std::string text;
    for (uint8_t c : payload) {
        if (c == '\r' || c == '\n')
            text += c == '\r' ? "\\r" : "\\n";
        else if (c >= 0x20 && c < 0x7f)
            text += char(c);
        else {
            static const char digits[] = "0123456789abcdef";
            std::string hex = "hex:";
            for (uint8_t b : payload)
                hex += std::string{digits[b >> 4], digits[b & 15]};
            return hex;
        }
    }
    return text;
}

// The frame each capture file ends with: the engine is done with the file
// once it is forwarded.
const std::string kEndOfCase = "SIP/2.0 299 End of case\r\n\r\n";

// tests/golden/frames/*.pcap: a capture file replayed through a "file:"
// device, no filter, to a recorder over UDP. Out: every frame forwarded
// before the end of the case, then every ERROR and WARN line.
std::string forwardFile(const fs::path& input) {
    LogCapture log;
    UdpRecorder recorder;
    SnifferRun run({"-d", "file:" + input.string(), "-f", "", "-h", "127.0.0.1", "-p", std::to_string(recorder.port())},
                   "UDP");
    std::ostringstream out;
    if (run.setupResult() != 0)
        out << "setup failed: " << run.setupResult() << "\n";
    for (;;) {
        const std::optional<ForwardedFrame> frame = recorder.next(5s);
        if (!frame) {
            out << "no end of case\n";
            break;
        }
        const Bytes payload = frame->payload();
        if (std::string(payload.begin(), payload.end()) == kEndOfCase)
            break;
        out << "protocol " << frame->protocol() << " " << frame->source() << " > " << frame->destination() << " length "
            << frame->length() << ": " << printable(payload) << "\n";
    }
    run.stop();
    for (const LogEvent& event : log.events())
        if (event.level == "ERROR" || event.level == "WARN")
            out << event.level << " " << event.message << "\n";
    return out.str();
}

// Kind (folder) -> input extension and what makes the output of one input.
struct Kind {
    const char* extension;
    std::function<std::string(const fs::path&)> run;
};
const std::map<std::string, Kind> kinds = {
    {"frames", {".pcap", forwardFile}},
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
