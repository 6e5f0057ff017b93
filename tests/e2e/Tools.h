// What the end-to-end tests read back: packets as tshark dissects them,
// WAV headers, and the fields of the recorder's JSON.
#ifndef TESTS_E2E_TOOLS_H
#define TESTS_E2E_TOOLS_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// The program's full path from PATH, "" when it is not installed.
std::string programPath(const std::string& name);

// The first of a block of 25 ports for this run: derived from the process id so that parallel
// runs keep apart, and below the ephemeral ports.
unsigned portBlock();

// Polls `done` until it holds (true) or `limit` has passed (false).
bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds limit);

bool fileHas(const std::string& path, const std::string& text);

// One UDP packet of a capture file: SIP when `cseq` is set, RTP when `rtp` is.
struct Packet {
    double time = 0;
    std::string from, to;  // "ip:port"
    std::string callId, cseq, status;
    bool rtp = false;
    uint32_t timestamp = 0;
    unsigned size = 0;  // UDP payload bytes

    std::string direction() const { return from + " > " + to; }
    // "127.0.0.1:5071 > 127.0.0.1:5070 1 INVITE", "... 200 1 INVITE"
    std::string sipSummary() const;
};

// The packets of `pcap` as tshark reads them, UDP to or from `rtpPorts` as RTP.
std::vector<Packet> readPackets(const std::string& pcap, const std::vector<unsigned>& rtpPorts);

struct WavFormat {
    unsigned channels = 0;
    unsigned rate = 0;
    double seconds = 0;  // per channel
};

// Zeros when the file is not a PCM WAV file.
WavFormat readWavFormat(const std::string& path);

// A compact JSON text's string or number value of `key` (first occurrence), "" when absent.
std::string jsonValue(const std::string& json, const std::string& key);

// The per-stream part of a call's JSON.
struct StreamRecord {
    std::string destination, source, codec;
    uint64_t packets = 0, lost = 0, outOfOrder = 0;
};
std::vector<StreamRecord> streamRecords(const std::string& json);

// Whitespace outside strings removed: call.json as the line calls.jsonl holds.
std::string compactJson(const std::string& json);

#endif
