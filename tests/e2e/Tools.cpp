#include "Tools.h"

#include "ChildProcess.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <regex>
#include <sstream>
#include <thread>
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

uint32_t little32(const std::string& bytes, size_t at) {
    uint32_t value = 0;
    for (int i = 3; i >= 0; --i)
        value = value << 8 | uint8_t(bytes[at + i]);
    return value;
}

}  // namespace

std::string programPath(const std::string& name) {
    const char* path = std::getenv("PATH");
    for (const std::string& folder : split(path ? path : "/usr/bin:/bin", ':')) {
        const std::string candidate = folder + "/" + name;
        if (!folder.empty() && access(candidate.c_str(), X_OK) == 0)
            return candidate;
    }
    return "";
}

unsigned portBlock() {
    return 20000 + unsigned(getpid() % 500) * 25;
}

bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return true;
}

bool fileHas(const std::string& path, const std::string& text) {
    return readFile(path).find(text) != std::string::npos;
}

std::string Packet::sipSummary() const {
    return direction() + " " + (status.empty() ? cseq : status + " " + cseq);
}

std::vector<Packet> readPackets(const std::string& pcap, const std::vector<unsigned>& rtpPorts) {
    std::string command = "timeout 60 tshark -n -r '" + pcap + "' -Y udp -T fields -E separator=/t";
    for (const unsigned port : rtpPorts)
        command += " -d udp.port==" + std::to_string(port) + ",rtp";
    for (const char* field : {"frame.time_epoch", "ip.src", "udp.srcport", "ip.dst", "udp.dstport", "sip.Call-ID",
                              "sip.CSeq", "sip.Status-Code", "rtp.timestamp", "udp.length"})
        command += std::string(" -e ") + field;

    std::vector<Packet> packets;
    std::istringstream lines(outputOf(command));
    std::string line;
    while (std::getline(lines, line)) {
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
        packet.size = unsigned(std::strtoul(f[9].c_str(), nullptr, 10)) - 8;
        packets.push_back(packet);
    }
    return packets;
}

WavFormat readWavFormat(const std::string& path) {
    const std::string bytes = readFile(path);
    WavFormat format;
    if (bytes.size() < 12 || bytes.compare(0, 4, "RIFF") != 0 || bytes.compare(8, 4, "WAVE") != 0)
        return format;
    unsigned bitsPerSample = 0;
    for (size_t at = 12; at + 8 <= bytes.size();) {
        const std::string id = bytes.substr(at, 4);
        const uint32_t size = little32(bytes, at + 4);
        if (id == "fmt " && size >= 16 && at + 24 <= bytes.size()) {
            format.channels = uint8_t(bytes[at + 10]) | uint8_t(bytes[at + 11]) << 8;
            format.rate = little32(bytes, at + 12);
            bitsPerSample = uint8_t(bytes[at + 22]) | uint8_t(bytes[at + 23]) << 8;
        } else if (id == "data" && format.channels && format.rate && bitsPerSample) {
            format.seconds = double(size) / (format.channels * (bitsPerSample / 8) * format.rate);
            return format;
        }
        at += 8 + size + (size & 1);
    }
    return WavFormat{};
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

std::vector<StreamRecord> streamRecords(const std::string& json) {
    static const std::regex stream(
        R"re(\{"destination":"([^"]*)","source":"([^"]*)","speaker":"\w+","payload_type":-?\d+,"codec":"([^"]*)",)re"
        R"re("packets":(\d+),"bytes":\d+,"lost":(\d+),"out_of_order":(\d+))re");
    std::vector<StreamRecord> records;
    for (std::sregex_iterator match(json.begin(), json.end(), stream), end; match != end; ++match) {
        StreamRecord record;
        record.destination = (*match)[1];
        record.source = (*match)[2];
        record.codec = (*match)[3];
        record.packets = std::stoull((*match)[4]);
        record.lost = std::stoull((*match)[5]);
        record.outOfOrder = std::stoull((*match)[6]);
        records.push_back(record);
    }
    return records;
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
