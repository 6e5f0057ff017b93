#include "RecordingFiles.h"

#include "ChildProcess.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <regex>
#include <sstream>
#include <unistd.h>

namespace {

// Standard output of a shell command; its standard error is dropped (tshark warns there when
// run as root).
std::string outputOf(const std::string& command) {
    std::string output;
    FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r");
    if (!pipe)
        return output;
    char chunk[4096];
    size_t n;
    while ((n = fread(chunk, 1, sizeof chunk, pipe)) > 0)
        output.append(chunk, n);
    pclose(pipe);
    return output;
}

std::vector<std::string> split(const std::string& line, char separator) {
    std::vector<std::string> fields;
    std::istringstream in(line);
    std::string field;
    while (std::getline(in, field, separator))
        fields.push_back(field);
    if (!line.empty() && line.back() == separator)
        fields.emplace_back();
    return fields;
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

std::string fromHex(const std::string& hex) {
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes += char(std::stoi(hex.substr(i, 2), nullptr, 16));
    return bytes;
}

uint32_t little(const std::string& bytes, size_t at, int size) {
    uint32_t value = 0;
    for (int i = size - 1; i >= 0; --i)
        value = value << 8 | uint8_t(bytes[at + i]);
    return value;
}

}  // namespace

unsigned portBlock() {
    return 20000 + unsigned(getpid() % 500) * 25;
}

std::vector<std::string> readLines(const std::string& path) {
    return lines(readFile(path));
}

std::string Packet::sipSummary() const {
    return direction() + " " + (status.empty() ? cseq : status + " " + cseq);
}

std::vector<Packet> readPackets(const std::string& pcap, const std::vector<unsigned>& rtpPorts) {
    std::string command = "timeout 60 tshark -n -r '" + pcap + "' -Y udp -T fields -E separator=/t";
    for (const unsigned port : rtpPorts)
        command += " -d udp.port==" + std::to_string(port) + ",rtp";
    for (const char* field : {"frame.time_epoch", "ip.src", "udp.srcport", "ip.dst", "udp.dstport", "sip.Call-ID",
                              "sip.CSeq", "sip.Status-Code", "rtp.timestamp", "udp.payload"})
        command += std::string(" -e ") + field;

    std::vector<Packet> packets;
    for (const std::string& line : lines(outputOf(command))) {
        const std::vector<std::string> f = split(line, '\t');
        if (f.size() != 10)
            continue;
        Packet packet;
        packet.time = std::strtod(f[0].c_str(), nullptr);
        packet.from = f[1] + ":" + f[2];
        packet.to = f[3] + ":" + f[4];
        packet.callId = f[5];
        packet.cseq = f[6];
        packet.status = f[7];
        packet.rtp = !f[8].empty();
        packet.timestamp = uint32_t(std::strtoul(f[8].c_str(), nullptr, 10));
        packet.payload = fromHex(f[9]);
        packets.push_back(packet);
    }
    return packets;
}

Wav readWav(const std::string& path) {
    const std::string bytes = readFile(path);
    Wav wav;
    if (bytes.size() < 12 || bytes.compare(0, 4, "RIFF") != 0 || bytes.compare(8, 4, "WAVE") != 0)
        return wav;
    unsigned bitsPerSample = 0;
    for (size_t at = 12; at + 8 <= bytes.size();) {
        const std::string id = bytes.substr(at, 4);
        const uint32_t size = little(bytes, at + 4, 4);
        if (id == "fmt " && size >= 16 && at + 24 <= bytes.size()) {
            wav.channels = little(bytes, at + 10, 2);
            wav.rate = little(bytes, at + 12, 4);
            bitsPerSample = little(bytes, at + 22, 2);
        } else if (id == "data" && wav.channels && wav.rate && bitsPerSample == 16 && at + 8 + size <= bytes.size()) {
            wav.samples.resize(size / 2);
            std::memcpy(wav.samples.data(), bytes.data() + at + 8, wav.samples.size() * 2);
            return wav;
        }
        at += 8 + size + (size & 1);
    }
    return Wav{};
}

std::string jsonValue(const std::string& json, const std::string& key) {
    const std::string name = "\"" + key + "\":";
    const size_t at = json.find(name);
    if (at == std::string::npos)
        return "";
    const size_t start = at + name.size();
    if (json[start] == '"')
        return json.substr(start + 1, json.find('"', start + 1) - start - 1);
    return json.substr(start, json.find_first_of(",}]", start) - start);
}

std::vector<std::string> streamRecords(const std::string& json) {
    static const std::regex stream(
        R"re(\{"destination":"([^"]*)","source":"([^"]*)","speaker":"\w+","payload_type":-?\d+,"codec":"([^"]*)",)re"
        R"re("packets":(\d+),"bytes":\d+,"lost":(\d+),"out_of_order":(\d+))re");
    std::vector<std::string> records;
    for (std::sregex_iterator match(json.begin(), json.end(), stream), end; match != end; ++match)
        records.push_back(streamRecord((*match)[2].str() + " > " + (*match)[1].str(), (*match)[3],
                                       std::stoull((*match)[4]), std::stoull((*match)[5]), std::stoull((*match)[6])));
    std::sort(records.begin(), records.end());
    return records;
}

std::string streamRecord(const std::string& direction, const std::string& codec, uint64_t packets, uint64_t lost,
                         uint64_t outOfOrder) {
    return direction + " " + codec + ": " + std::to_string(packets) + " packets, " + std::to_string(lost) + " lost, " +
           std::to_string(outOfOrder) + " out of order";
}

std::string compactJson(const std::string& json) {
    std::string compact;
    bool inString = false, escaped = false;
    for (const char c : json) {
        if (inString) {
            inString = escaped || c != '"';
            escaped = !escaped && c == '\\';
        } else if (c == ' ' || c == '\n' || c == '\t' || c == '\r') {
            continue;
        } else {
            inString = c == '"';
        }
        compact += c;
    }
    return compact;
}
