#include "EngineOptions.h"

#include <arpa/inet.h>
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <sstream>

#include <log4cxx/logger.h>

#include "AddressText.h"

namespace {
log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("SnifferClient");

// A whole-number key and the range it accepts.
struct NumberKey {
    const char* name;
    int EngineOptions::*field;
    long min;
    long max;
};

// A key whose value is a word or a text of a given form.
struct ChoiceKey {
    const char* name;
    bool (*parse)(const std::string& value, EngineOptions& options);
    std::string (*show)(const EngineOptions& options);
    const char* expected;
};

const NumberKey numberKeys[] = {
    {"SendBufferSize", &EngineOptions::sendBufferSize, 4096, 256L << 20},
    {"StallTimeout", &EngineOptions::stallTimeoutMs, 1, 3600 * 1000},
    {"QueueLimit", &EngineOptions::queueLimitMiB, 1, 65536},
    {"CaptureTimeout", &EngineOptions::captureTimeoutMs, 1, 1000},
    {"RtpPreRoll", &EngineOptions::rtpPreRollMs, 0, 60 * 1000},
    {"PreRollLimit", &EngineOptions::preRollLimitMiB, 1, 65536},
    {"StatsInterval", &EngineOptions::statsIntervalS, 0, 86400},
    {"HepCaptureId", &EngineOptions::hepCaptureId, 0, 0x7FFFFFFF},
    // At least one MiB, so that the longest datagram always fits.
    {"ReassemblyLimit", &EngineOptions::reassemblyLimitMiB, 1, 65536},
};

bool parseLinkMode(const std::string& value, EngineOptions& options) {
    if (value == "classic")
        options.linkMode = EngineOptions::LinkMode::Classic;
    else if (value == "reliable")
        options.linkMode = EngineOptions::LinkMode::Reliable;
    else
        return false;
    return true;
}

std::string showLinkMode(const EngineOptions& options) {
    return options.reliable() ? "reliable" : "classic";
}

bool parseYesNo(const std::string& value, bool& out) {
    if (value != "yes" && value != "no")
        return false;
    out = value == "yes";
    return true;
}

std::string yesNo(bool value) {
    return value ? "yes" : "no";
}

bool parseDecapsulate(const std::string& value, EngineOptions& options) {
    return parseYesNo(value, options.decapsulate);
}

std::string showDecapsulate(const EngineOptions& options) {
    return yesNo(options.decapsulate);
}

bool parseReassembleIp(const std::string& value, EngineOptions& options) {
    return parseYesNo(value, options.reassembleIp);
}

std::string showReassembleIp(const EngineOptions& options) {
    return yesNo(options.reassembleIp);
}

bool parseSipOverTcp(const std::string& value, EngineOptions& options) {
    return parseYesNo(value, options.sipOverTcp);
}

std::string showSipOverTcp(const EngineOptions& options) {
    return yesNo(options.sipOverTcp);
}

bool parseReassembleH323(const std::string& value, EngineOptions& options) {
    return parseYesNo(value, options.reassembleH323);
}

std::string showReassembleH323(const EngineOptions& options) {
    return yesNo(options.reassembleH323);
}

bool parseNumber(const std::string& text, long min, long max, int& out) {
    if (text.empty())
        return false;
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || value < min || value > max)
        return false;
    out = static_cast<int>(value);
    return true;
}

bool parseHepCollector(const std::string& value, EngineOptions& options) {
    const std::size_t colon = value.rfind(':');
    in_addr address{};
    int port = 0;
    if (colon == std::string::npos || inet_pton(AF_INET, value.substr(0, colon).c_str(), &address) != 1 ||
        !parseNumber(value.substr(colon + 1), 1, 65535, port))
        return false;
    options.hepCollector = value;
    return true;
}

std::string showHepCollector(const EngineOptions& options) {
    return options.hepCollector;
}

// "ITEM[,ITEM...]", blanks around an item allowed; false when the list is
// empty, ends with a comma or `parseItem` refuses an item.
template <typename T>
bool parseList(const std::string& value, bool (*parseItem)(const std::string&, T&), std::vector<T>& out) {
    std::vector<T> items;
    std::istringstream list(value);
    std::string item;
    while (std::getline(list, item, ',')) {
        const std::size_t first = item.find_first_not_of(" \t");
        const std::size_t last = item.find_last_not_of(" \t");
        T parsed{};
        if (first == std::string::npos || !parseItem(item.substr(first, last - first + 1), parsed))
            return false;
        items.push_back(parsed);
    }
    if (items.empty() || value.back() == ',')
        return false;
    out = items;
    return true;
}

bool parseAddress(const std::string& text, uint32_t& out) {
    in_addr address{};
    if (inet_pton(AF_INET, text.c_str(), &address) != 1)
        return false;
    out = ntohl(address.s_addr);
    return true;
}

bool parsePort(const std::string& text, uint16_t& out) {
    int port = 0;
    if (!parseNumber(text, 1, 65535, port))
        return false;
    out = static_cast<uint16_t>(port);
    return true;
}

bool parseCommandSource(const std::string& value, EngineOptions& options) {
    return parseList(value, parseAddress, options.commandSources);
}

bool parseSipTcpPorts(const std::string& value, EngineOptions& options) {
    return parseList(value, parsePort, options.sipTcpPorts);
}

std::string showSipTcpPorts(const EngineOptions& options) {
    std::string text;
    for (const uint16_t port : options.sipTcpPorts)
        text += (text.empty() ? "" : ",") + std::to_string(port);
    return text;
}

std::string showCommandSource(const EngineOptions& options) {
    std::string text;
    for (const uint32_t address : options.commandSources)
        text += (text.empty() ? "" : ",") + dottedQuad(address);
    return text;
}

bool parseHepTransport(const std::string& value, EngineOptions& options) {
    if (value == "udp")
        options.hepTransport = EngineOptions::HepTransport::Udp;
    else if (value == "tcp")
        options.hepTransport = EngineOptions::HepTransport::Tcp;
    else
        return false;
    return true;
}

std::string showHepTransport(const EngineOptions& options) {
    return options.hepTransport == EngineOptions::HepTransport::Tcp ? "tcp" : "udp";
}

bool parseHepPassword(const std::string& value, EngineOptions& options) {
    options.hepPassword = value;
    return true;
}

// The settings line tells that a password is in use, never the password.
std::string showHepPassword(const EngineOptions& options) {
    return options.hepPassword.empty() ? "" : "(set)";
}

const char* const documentedWords = "one of the documented words";

const ChoiceKey choiceKeys[] = {
    {"LinkMode", parseLinkMode, showLinkMode, documentedWords},
    {"Decapsulate", parseDecapsulate, showDecapsulate, documentedWords},
    {"CommandSource", parseCommandSource, showCommandSource,
     "IPv4 addresses separated by commas, as 192.0.2.7,192.0.2.8"},
    {"ReassembleIp", parseReassembleIp, showReassembleIp, documentedWords},
    {"SipOverTcp", parseSipOverTcp, showSipOverTcp, documentedWords},
    {"SipTcpPorts", parseSipTcpPorts, showSipTcpPorts, "ports from 1 to 65535 separated by commas, as 5060,5080"},
    {"ReassembleH323", parseReassembleH323, showReassembleH323, documentedWords},
    {"HepCollector", parseHepCollector, showHepCollector, "an IPv4 address and a port, as 192.0.2.7:9060"},
    {"HepTransport", parseHepTransport, showHepTransport, documentedWords},
    {"HepPassword", parseHepPassword, showHepPassword, documentedWords},
};

void reportInvalid(const char* key, const std::string& value, const std::string& expected) {
    LOG4CXX_ERROR(logger, "Invalid value of " << key << ": \"" << value << "\", expected " << expected);
}
}  // namespace

bool EngineOptions::load(const Lookup& lookup) {
    for (const ChoiceKey& key : choiceKeys) {
        const std::string value = lookup(key.name);
        keysGiven |= !value.empty();
        if (!value.empty() && !key.parse(value, *this)) {
            reportInvalid(key.name, value, key.expected);
            return false;
        }
    }
    for (const NumberKey& key : numberKeys) {
        const std::string value = lookup(key.name);
        keysGiven |= !value.empty();
        if (!value.empty() && !parseNumber(value, key.min, key.max, this->*key.field)) {
            reportInvalid(key.name, value,
                          "a whole number from " + std::to_string(key.min) + " to " + std::to_string(key.max));
            return false;
        }
    }
    return true;
}

std::string EngineOptions::fromEnvironment(const std::string& key) {
    const char* value = std::getenv((environmentPrefix + key).c_str());
    return value ? value : "";
}

bool EngineOptions::isSipTcpPort(uint16_t port) const {
    return std::find(sipTcpPorts.begin(), sipTcpPorts.end(), port) != sipTcpPorts.end();
}

std::string EngineOptions::describeChanges() const {
    const EngineOptions defaults;
    std::ostringstream text;
    const char* separator = "";
    for (const ChoiceKey& key : choiceKeys) {
        if (key.show(*this) != key.show(defaults)) {
            text << separator << key.name << "=" << key.show(*this);
            separator = ", ";
        }
    }
    for (const NumberKey& key : numberKeys) {
        if (this->*key.field != defaults.*key.field) {
            text << separator << key.name << "=" << this->*key.field;
            separator = ", ";
        }
    }
    return text.str();
}
