// What the recording tests read back: packets as tshark dissects them, WAV
// files, and the fields of the recorder's JSON.
#ifndef TESTS_RECORDING_FILES_H
#define TESTS_RECORDING_FILES_H

#include <cstdint>
#include <string>
#include <vector>

// The first of a block of 25 ports for this run: derived from the process id so that parallel
// runs keep apart, and below the ephemeral ports.
unsigned portBlock();

// The lines of a file; none when it is absent.
std::vector<std::string> readLines(const std::string& path);

// One UDP packet of a capture file: SIP when `cseq` is set, RTP when `rtp` is.
struct Packet {
    double time = 0;
    std::string from, to;  // "ip:port"
    std::string callId, cseq, status;
    bool rtp = false;
    uint32_t timestamp = 0;
    std::string payload;

    std::string direction() const { return from + " > " + to; }
    // "127.0.0.1:5071 > 127.0.0.1:5070 1 INVITE", "... 200 1 INVITE"
    std::string sipSummary() const;
};

// The packets of `pcap` as tshark reads them, UDP to or from `rtpPorts` as RTP.
std::vector<Packet> readPackets(const std::string& pcap, const std::vector<unsigned>& rtpPorts);

// A 16-bit PCM WAV file; no channels when the file is not one.
struct Wav {
    unsigned channels = 0;
    unsigned rate = 0;
    std::vector<int16_t> samples;  // interleaved

    double seconds() const { return channels ? double(samples.size()) / channels / rate : 0; }
};
Wav readWav(const std::string& path);

// A compact JSON text's string or number value of `key` (first occurrence), "" when absent.
std::string jsonValue(const std::string& json, const std::string& key);

// The streams of a call's JSON, sorted, each as streamRecord() writes one.
std::vector<std::string> streamRecords(const std::string& json);
// "source > destination codec: N packets, L lost, O out of order"
std::string streamRecord(const std::string& direction, const std::string& codec, uint64_t packets, uint64_t lost = 0,
                         uint64_t outOfOrder = 0);

// Whitespace outside strings removed: call.json as the line calls.jsonl holds.
std::string compactJson(const std::string& json);

#endif
