#include "H245Oracle.h"

#include <arpa/inet.h>

#include <cstring>
#include <map>

#include "Tshark.h"

namespace h323::test {
namespace {

enum class Format { Tag, Integer, IPv4, IPv6, Text };

// A tshark field and where the same value sits in a decoded message: the
// trailing component names of its path ("" is the message itself).
struct Field {
    const char* tshark;
    const char* path;
    Format format;
};

const Field kFields[] = {
    {"h245.pdu_type", "", Format::Tag},
    {"h245.request", "request", Format::Tag},
    {"h245.response", "response", Format::Tag},
    {"h245.command", "command", Format::Tag},
    {"h245.indication", "indication", Format::Tag},
    {"h245.sequenceNumber", "sequenceNumber", Format::Integer},
    {"h245.terminalType", "terminalType", Format::Integer},
    {"h245.statusDeterminationNumber", "statusDeterminationNumber", Format::Integer},
    {"h245.decision", "decision", Format::Tag},
    {"h245.multiplexCapability", "multiplexCapability", Format::Tag},
    {"h245.capabilityTableEntryNumber", "capabilityTableEntryNumber", Format::Integer},
    {"h245.receiveAudioCapability", "receiveAudioCapability", Format::Tag},
    {"h245.transmitAudioCapability", "transmitAudioCapability", Format::Tag},
    {"h245.receiveVideoCapability", "receiveVideoCapability", Format::Tag},
    {"h245.capabilityDescriptorNumber", "capabilityDescriptorNumber", Format::Integer},
    {"h245.forwardLogicalChannelNumber", "forwardLogicalChannelNumber", Format::Integer},
    {"h245.reverseLogicalChannelNumber", "reverseLogicalChannelNumber", Format::Integer},
    {"h245.dataType", "dataType", Format::Tag},
    {"h245.audioData", "audioData", Format::Tag},
    {"h245.videoData", "videoData", Format::Tag},
    {"h245.g711Alaw64k", "g711Alaw64k", Format::Integer},
    {"h245.g711Ulaw64k", "g711Ulaw64k", Format::Integer},
    {"h245.g729", "g729", Format::Integer},
    {"h245.maxAl_sduAudioFrames", "maxAl_sduAudioFrames", Format::Integer},
    {"h245.maxBitRate", "maxBitRate", Format::Integer},
    {"h245.multiplexParameters", "multiplexParameters", Format::Tag},
    {"h245.sessionID", "sessionID", Format::Integer},
    {"h245.mediaChannel", "mediaChannel", Format::Tag},
    {"h245.mediaControlChannel", "mediaControlChannel", Format::Tag},
    {"h245.forwardMultiplexAckParameters", "forwardMultiplexAckParameters", Format::Tag},
    {"h245.unicastAddress", "unicastAddress", Format::Tag},
    {"h245.multicastAddress", "multicastAddress", Format::Tag},
    {"h245.ip4_network", "unicastAddress/iPAddress/network", Format::IPv4},
    {"h245.tsapIdentifier", "unicastAddress/iPAddress/tsapIdentifier", Format::Integer},
    {"h245.ip6_network", "unicastAddress/iP6Address/network", Format::IPv6},
    {"h245.ipv6.tsapIdentifier", "unicastAddress/iP6Address/tsapIdentifier", Format::Integer},
    {"h245.mip4_network", "multicastAddress/iPAddress/network", Format::IPv4},
    {"h245.multicast.tsapIdentifier", "multicastAddress/iPAddress/tsapIdentifier", Format::Integer},
    {"h245.userInput", "userInput", Format::Tag},
    {"h245.alphanumeric", "alphanumeric", Format::Text},
    // tshark's verdict on the whole packet; the toolkit has no such field.
    {"_ws.malformed", nullptr, Format::Tag},
};
constexpr size_t kFieldCount = sizeof(kFields) / sizeof(kFields[0]);

bool endsWithPath(const std::string& path, const std::string& tail) {
    if (tail.empty()) return path.empty();
    if (path.size() < tail.size() + 1) return false;
    size_t at = path.size() - tail.size();
    return path.compare(at, tail.size(), tail) == 0 && path[at - 1] == '/';
}

// tshark writes ASN.1 identifiers as they are; the tables turn '-' into '_'.
std::string asn1Spelling(std::string name) {
    for (char& c : name)
        if (c == '_') c = '-';
    return name;
}

std::string render(per::Value v, Format format) {
    switch (format) {
    case Format::Tag:
        return asn1Spelling(v.tagName()) + " (" + std::to_string(v.tag()) + ")";
    case Format::Integer:
        return std::to_string(v.integer());
    case Format::Text:
        return v.text();
    case Format::IPv4:
    case Format::IPv6: {
        char text[INET6_ADDRSTRLEN] = "";
        inet_ntop(format == Format::IPv4 ? AF_INET : AF_INET6, v.bytes().data(), text, sizeof text);
        return text;
    }
    }
    return {};
}

// Whether a value is of the kind a field shows: tshark names some fields
// alike whose types differ (g711Ulaw64k is an INTEGER capability and a NULL
// mode).
bool shows(Format format, per::Kind kind) {
    switch (format) {
    case Format::Tag:
        return kind == per::Kind::Choice;
    case Format::Integer:
        return kind == per::Kind::Integer;
    case Format::IPv4:
    case Format::IPv6:
        return kind == per::Kind::OctetString;
    case Format::Text:
        return kind == per::Kind::GeneralString;
    }
    return false;
}

std::string joinFields(const std::vector<std::vector<std::string>>& values) {
    std::string out;
    for (size_t f = 0; f < kFieldCount; ++f) {
        if (values[f].empty()) continue;
        out += kFields[f].tshark;
        out += ": ";
        for (size_t i = 0; i < values[f].size(); ++i) out += (i ? "|" : "") + values[f][i];
        out += '\n';
    }
    return out;
}

// ---- reading tshark's dissection -----------------------------------------

std::string pdml(const std::string& capture, const std::string& filter) {
    std::string command = "tshark -r " + capture + " -T pdml";
    if (!filter.empty()) command += " -Y '" + filter + "'";
    return commandOutput(command + " 2>/dev/null");
}

std::string unescapeXml(std::string s) {
    static const std::pair<const char*, char> kEntities[] = {
        {"&quot;", '"'}, {"&apos;", '\''}, {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}};
    for (auto& [entity, c] : kEntities)
        for (size_t at; (at = s.find(entity)) != std::string::npos;) s.replace(at, strlen(entity), 1, c);
    return s;
}

std::string attribute(const std::string& line, const char* name) {
    std::string key = std::string(" ") + name + "=\"";
    size_t from = line.find(key);
    if (from == std::string::npos) return {};
    from += key.size();
    return unescapeXml(line.substr(from, line.find('"', from) - from));
}

std::vector<TsharkPacket> parsePdml(const std::string& pdml) {
    std::map<std::string, size_t> index;
    for (size_t f = 0; f < kFieldCount; ++f) index[kFields[f].tshark] = f;

    std::vector<TsharkPacket> packets;
    std::vector<std::vector<std::string>> values;
    size_t start = 0;
    for (size_t end; (end = pdml.find('\n', start)) != std::string::npos; start = end + 1) {
        std::string line = pdml.substr(start, end - start);
        if (line.find("<packet>") != std::string::npos) {
            packets.emplace_back();
            values.assign(kFieldCount, {});
        } else if (line.find("</packet>") != std::string::npos) {
            packets.back().fields = joinFields(values);
        } else if (line.find("<field name=\"tcp.payload\"") != std::string::npos) {
            packets.back().payload = attribute(line, "value");
        } else if (line.find("<field ") != std::string::npos || line.find("<proto ") != std::string::npos) {
            auto it = index.find(attribute(line, "name"));
            if (it == index.end()) continue;
            if (kFields[it->second].format == Format::Tag) {
                std::string shown = attribute(line, "showname");
                values[it->second].push_back(shown.substr(shown.find(": ") + 2));
            } else {
                values[it->second].push_back(attribute(line, "show"));
            }
        }
    }
    return packets;
}

}  // namespace

std::vector<TsharkPacket> tsharkReadH245(const std::vector<Pdu>& pdus) {
    return tsharkReadCapture(writeCapture(pdus, "h245dg"), "");
}

std::vector<TsharkPacket> tsharkReadCapture(const std::string& path, const std::string& filter) {
    return parsePdml(pdml(path, filter));
}

void FieldCollector::collect(per::Value message, const std::string& path) { visit(message, path); }

std::string FieldCollector::text() const { return joinFields(values_); }

size_t FieldCollector::fieldCount() { return kFieldCount; }

void FieldCollector::visit(per::Value v, const std::string& path) {
    for (size_t f = 0; f < kFieldCount; ++f)
        if (kFields[f].path && endsWithPath(path, kFields[f].path) && shows(kFields[f].format, v.kind()))
            values_[f].push_back(render(v, kFields[f].format));

    switch (v.kind()) {
    case per::Kind::Sequence:
        for (size_t i = 0; i < v.type()->count; ++i)
            if (per::Value c = v.component(i)) visit(c, path + "/" + v.type()->components[i].name);
        break;
    case per::Kind::Choice:
        visit(v.chosen(), path + "/" + v.tagName());
        break;
    case per::Kind::SequenceOf:
        for (size_t i = 0; i < v.size(); ++i) visit(v.at(i), path);
        break;
    default:
        break;
    }
}

std::vector<Pdu> splitTpkt(const Pdu& payload) {
    std::vector<Pdu> pdus;
    for (size_t at = 0; at + 4 <= payload.size();) {
        size_t length = size_t(payload[at + 2]) << 8 | payload[at + 3];
        if (payload[at] != 3 || length < 4 || at + length > payload.size()) break;
        pdus.emplace_back(payload.begin() + at + 4, payload.begin() + at + length);
        at += length;
    }
    return pdus;
}

}  // namespace h323::test
