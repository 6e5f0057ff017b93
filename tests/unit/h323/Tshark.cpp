#include "Tshark.h"

#include <arpa/inet.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>

#include "Bytes.h"
#include "h323/Text.h"

namespace h323::test {

namespace {

// Most H.245 fields are called as the component they show.
Fields h245Fields() {
    Fields fields = {
        {"h245.pdu_type", "", Format::Tag},
        {"h245.ip4_network", "unicastAddress/iPAddress/network", Format::IPv4},
        {"h245.tsapIdentifier", "unicastAddress/iPAddress/tsapIdentifier", Format::Integer},
        {"h245.ip6_network", "unicastAddress/iP6Address/network", Format::IPv6},
        {"h245.ipv6.tsapIdentifier", "unicastAddress/iP6Address/tsapIdentifier", Format::Integer},
        {"h245.mip4_network", "multicastAddress/iPAddress/network", Format::IPv4},
        {"h245.multicast.tsapIdentifier", "multicastAddress/iPAddress/tsapIdentifier", Format::Integer},
        {"_ws.malformed", nullptr, Format::Tag},  // tshark's verdict on the whole packet
    };
    const std::pair<Format, std::vector<const char*>> named[] = {
        {Format::Tag,
         {"request", "response", "command", "indication", "decision", "multiplexCapability", "receiveAudioCapability",
          "transmitAudioCapability", "receiveVideoCapability", "dataType", "audioData", "videoData",
          "multiplexParameters", "mediaChannel", "mediaControlChannel", "forwardMultiplexAckParameters",
          "unicastAddress", "multicastAddress", "userInput"}},
        {Format::Integer,
         {"sequenceNumber", "terminalType", "statusDeterminationNumber", "capabilityTableEntryNumber",
          "capabilityDescriptorNumber", "forwardLogicalChannelNumber", "reverseLogicalChannelNumber", "g711Alaw64k",
          "g711Ulaw64k", "g729", "maxAl_sduAudioFrames", "maxBitRate", "sessionID"}},
        {Format::Text, {"alphanumeric"}},
    };
    for (const auto& [format, names] : named)
        for (const char* name : names)
            fields.push_back({std::string("h245.") + name, name, format});
    return fields;
}

}  // namespace

const Fields kH245Fields = h245Fields();

const Fields kSignallingFields = {
    {"q931.call_ref_flag", nullptr, Format::Text},
    {"q931.call_ref", nullptr, Format::Text},
    {"q931.message_type", nullptr, Format::Text},
    {"q931.calling_party_number.digits", nullptr, Format::Text},
    {"q931.called_party_number.digits", nullptr, Format::Text},
    {"h225.h323_message_body", "h323_message_body", Format::Tag},
    {"h225.guid", "guid", Format::Guid},
    {"h225.h323_ID", "h323_ID", Format::Text},
    {"h225.dialledDigits", "dialedDigits", Format::Text},
    {"h225.h245Tunnelling", "h245Tunneling", Format::Boolean},
    {"h225.FastStart_item", "fastStart", Format::Size},  // tshark gives each proposal's size
    {"h225.h245Ip", "h245Address/ipAddress/ip", Format::IPv4},
    {"h225.h245IpPort", "h245Address/ipAddress/port", Format::Integer},
    {"_ws.malformed", nullptr, Format::Tag},
};

namespace {

std::string commandOutput(const std::string& command) {
    std::string out;
    if (FILE* p = popen(command.c_str(), "r")) {
        char buf[4096];
        for (size_t n; (n = fread(buf, 1, sizeof buf, p)) > 0;)
            out.append(buf, n);
        pclose(p);
    }
    return out;
}

// The oracle's captures, removed when the tests end.
const std::string& tempDir() {
    static const struct Dir {
        std::string path;
        Dir() {
            char pattern[] = "/tmp/h323-oracle-XXXXXX";
            path = mkdtemp(pattern) ? pattern : "";
        }
        ~Dir() {
            if (!path.empty())
                std::filesystem::remove_all(path);
        }
    } dir;
    return dir.path;
}

bool endsWithPath(const std::string& path, const std::string& tail) {
    if (tail.empty())
        return path.empty();
    if (path.size() < tail.size() + 1)
        return false;
    size_t at = path.size() - tail.size();
    return path.compare(at, tail.size(), tail) == 0 && path[at - 1] == '/';
}

// tshark writes ASN.1 identifiers as they are; the tables turn '-' into '_'.
std::string asn1Spelling(std::string name) {
    for (char& c : name)
        if (c == '_')
            c = '-';
    return name;
}

std::string render(per::Value v, Format format) {
    switch (format) {
    case Format::Tag: return asn1Spelling(v.tagName()) + " (" + std::to_string(v.tag()) + ")";
    case Format::Integer: return std::to_string(v.integer());
    case Format::Boolean: return v.boolean() ? "1" : "0";
    case Format::Text: return std::string(v.text());
    case Format::Guid: return guidText(v.bytes());
    case Format::Size: return std::to_string(v.bytes().size());
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
    case Format::Tag: return kind == per::Kind::Choice;
    case Format::Integer: return kind == per::Kind::Integer;
    case Format::Boolean: return kind == per::Kind::Boolean;
    case Format::IPv4:
    case Format::IPv6:
    case Format::Guid:
    case Format::Size: return kind == per::Kind::OctetString;
    case Format::Text:
        return kind == per::Kind::GeneralString || kind == per::Kind::BMPString || kind == per::Kind::IA5String;
    }
    return false;
}

std::string joinFields(const Fields& fields, const std::vector<std::vector<std::string>>& values) {
    std::string out;
    for (size_t f = 0; f < fields.size(); ++f) {
        if (values[f].empty())
            continue;
        out += fields[f].tshark;
        out += ": ";
        for (size_t i = 0; i < values[f].size(); ++i)
            out += (i ? "|" : "") + values[f][i];
        out += '\n';
    }
    return out;
}

std::string unescapeXml(std::string s) {
    static const std::pair<const char*, char> kEntities[] = {
        {"&quot;", '"'}, {"&apos;", '\''}, {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}};
    for (auto& [entity, c] : kEntities)
        for (size_t at; (at = s.find(entity)) != std::string::npos;)
            s.replace(at, strlen(entity), 1, c);
    return s;
}

std::string attribute(const std::string& line, const char* name) {
    std::string key = std::string(" ") + name + "=\"";
    size_t from = line.find(key);
    if (from == std::string::npos)
        return {};
    from += key.size();
    return unescapeXml(line.substr(from, line.find('"', from) - from));
}

std::vector<TsharkPacket> parsePdml(const std::string& pdml, const Fields& fields) {
    std::map<std::string, size_t> index;
    for (size_t f = 0; f < fields.size(); ++f)
        index[fields[f].tshark] = f;

    std::vector<TsharkPacket> packets;
    std::vector<std::vector<std::string>> values;
    size_t start = 0;
    for (size_t end; (end = pdml.find('\n', start)) != std::string::npos; start = end + 1) {
        std::string line = pdml.substr(start, end - start);
        if (line.find("<packet>") != std::string::npos) {
            packets.emplace_back();
            values.assign(fields.size(), {});
        } else if (line.find("</packet>") != std::string::npos) {
            packets.back().fields = joinFields(fields, values);
        } else if (line.find("<field name=\"tcp.payload\"") != std::string::npos) {
            packets.back().payload = attribute(line, "value");
        } else if (line.find("<field ") != std::string::npos || line.find("<proto ") != std::string::npos) {
            auto it = index.find(attribute(line, "name"));
            if (it == index.end())
                continue;
            if (fields[it->second].format == Format::Tag) {
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

bool haveTshark() {
    return std::system("command -v tshark >/dev/null 2>&1 && command -v text2pcap >/dev/null 2>&1") == 0;
}

std::string writeCapture(const std::vector<Pdu>& payloads, const std::string& dissector) {
    static int serial = 0;
    std::string base = tempDir() + "/capture" + std::to_string(serial++);
    {
        std::ofstream text(base + ".txt");
        for (const auto& p : payloads) {  // a packet a line, from offset 0
            text << "000000";
            for (uint8_t b : p)
                text << ' ' << hex({b});
            text << "\n\n";
        }
    }
    commandOutput("text2pcap -q -P " + dissector + " " + base + ".txt " + base + ".pcap 2>/dev/null");
    return base + ".pcap";
}

std::vector<TsharkPacket> tsharkRead(const std::string& capture, const Fields& fields, const std::string& filter) {
    std::string command = "tshark -r " + capture + " -T pdml";
    if (!filter.empty())
        command += " -Y '" + filter + "'";
    return parsePdml(commandOutput(command + " 2>/dev/null"), fields);
}

void FieldCollector::collect(per::Value v, const std::string& path) {
    for (size_t f = 0; f < fields_.size(); ++f)
        if (fields_[f].path && endsWithPath(path, fields_[f].path) && shows(fields_[f].format, v.kind()))
            values_[f].push_back(render(v, fields_[f].format));

    switch (v.kind()) {
    case per::Kind::Sequence:
        for (size_t i = 0; i < v.type()->count; ++i)
            if (per::Value c = v.component(i))
                collect(c, path + "/" + v.type()->components[i].name);
        break;
    case per::Kind::Choice: collect(v.chosen(), path + "/" + v.tagName()); break;
    case per::Kind::SequenceOf:
        for (size_t i = 0; i < v.size(); ++i)
            collect(v.at(i), path);
        break;
    default: break;
    }
}

void FieldCollector::add(const std::string& tshark, const std::string& value) {
    for (size_t f = 0; f < fields_.size(); ++f)
        if (!value.empty() && tshark == fields_[f].tshark)
            values_[f].push_back(value);
}

std::string FieldCollector::text() const {
    return joinFields(fields_, values_);
}

std::string signallingFields(const Q931& q931, per::Value userInfo) {
    FieldCollector fields(kSignallingFields);
    char reference[16], type[16];
    std::snprintf(reference, sizeof reference, "%02x:%02x", q931.callReference() >> 8, q931.callReference() & 0xff);
    std::snprintf(type, sizeof type, "0x%02x", q931.messageType());
    fields.add("q931.call_ref_flag", q931.fromDestination() ? "1" : "0");
    fields.add("q931.call_ref", reference);
    fields.add("q931.message_type", type);
    fields.add("q931.calling_party_number.digits", q931.callingPartyNumber());
    fields.add("q931.called_party_number.digits", q931.calledPartyNumber());
    if (userInfo)
        fields.collect(userInfo);
    return fields.text();
}

std::vector<Pdu> splitTpkt(const Pdu& payload) {
    std::vector<Pdu> pdus;
    for (size_t at = 0; at + 4 <= payload.size();) {
        size_t length = size_t(payload[at + 2]) << 8 | payload[at + 3];
        if (payload[at] != 3 || length < 4 || at + length > payload.size())
            break;
        pdus.emplace_back(payload.begin() + at + 4, payload.begin() + at + length);
        at += length;
    }
    return pdus;
}

}  // namespace h323::test
