// TCP payloads of one call through the H.323 decoder as the dissector hands
// them on: a 15-byte header slot, then the segment. One decoder per input,
// so the call maps built by earlier segments of the input are used by later
// ones (an H.245 connection is tied to its call that way).
//
// Input: segments, each a flags byte (bit 0: sent by the callee, bit 1: on
// the H.245 connection), a 2-byte big-endian length and the payload. Bit 7
// of the first flags byte turns the signalling trace on.
//
// Checked for every description: it is a set of lines, each ended by a line
// feed and tagged t:, r:, c:, s:, d:, i:, m: or a:, the first one t:.
#include <arpa/inet.h>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "FuzzLogging.h"
#include "H323Parser.h"
#include "SngDissector.h"

namespace {
void require(bool holds) {
    if (!holds)
        std::abort();
}

bool isTag(const std::string& line) {
    return line.size() >= 2 && line[1] == ':' && std::strchr("trcsdima", line[0]) != nullptr;
}

void checkDescription(const std::string& text) {
    require(text.size() >= 3 && text.compare(0, 2, "t:") == 0 && text.back() == '\n');
    for (size_t start = 0; start < text.size();) {
        const size_t end = text.find('\n', start);
        require(isTag(text.substr(start, end - start)));
        start = end + 1;
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = (logEverythingToNowhere(), true);
    (void)quiet;
    if (size == 0)
        return 0;
    const u_int caller = inet_addr("10.0.0.1");
    const u_int callee = inet_addr("10.0.0.2");
    H323Parser parser;
    parser.setTraceSignalling(data[0] & 0x80);
    std::vector<u_char> segment;
    for (size_t at = 0; at + 3 <= size;) {
        const uint8_t flags = data[at];
        const size_t length = std::min<size_t>(data[at + 1] << 8 | data[at + 2], size - at - 3);
        segment.assign(SngDissector::ourHeaderLength, 0);
        segment.insert(segment.end(), data + at + 3, data + at + 3 + length);
        at += 3 + length;

        const bool fromCallee = flags & 1;
        const u_int callPort = flags & 2 ? 40000 : 1720;
        const u_int otherPort = 50000;
        const u_int& txIp = fromCallee ? callee : caller;
        const u_int& rxIp = fromCallee ? caller : callee;
        const u_int& txPort = fromCallee ? callPort : otherPort;
        const u_int& rxPort = fromCallee ? otherPort : callPort;
        std::string description;
        if (parser.parseH323(segment.data(), static_cast<int>(segment.size()), SngDissector::ourHeaderLength, txIp,
                             rxIp, txPort, rxPort, description))
            checkDescription(description);
    }
    return 0;
}
