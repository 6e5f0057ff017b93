#include "EngineOptions.h"

#include <cerrno>
#include <cstdlib>
#include <sstream>

#include <log4cxx/logger.h>

namespace {
log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("SnifferClient");

// A whole-number key and the range it accepts.
struct NumberKey {
    const char* name;
    int EngineOptions::*field;
    long min;
    long max;
};

// A key that takes one of a few words.
struct ChoiceKey {
    const char* name;
    bool (*parse)(const std::string& value, EngineOptions& options);
    std::string (*show)(const EngineOptions& options);
};

const NumberKey numberKeys[] = {
    {"SendBufferSize", &EngineOptions::sendBufferSize, 4096, 256L << 20},
    {"StallTimeout", &EngineOptions::stallTimeoutMs, 1, 3600 * 1000},
    {"QueueLimit", &EngineOptions::queueLimitMiB, 1, 65536},
    {"CaptureTimeout", &EngineOptions::captureTimeoutMs, 1, 1000},
    {"RtpPreRoll", &EngineOptions::rtpPreRollMs, 0, 60 * 1000},
    {"PreRollLimit", &EngineOptions::preRollLimitMiB, 1, 65536},
    {"StatsInterval", &EngineOptions::statsIntervalS, 0, 86400},
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

bool parseDecapsulate(const std::string& value, EngineOptions& options) {
    if (value != "yes" && value != "no")
        return false;
    options.decapsulate = value == "yes";
    return true;
}

std::string showDecapsulate(const EngineOptions& options) {
    return options.decapsulate ? "yes" : "no";
}

const ChoiceKey choiceKeys[] = {
    {"LinkMode", parseLinkMode, showLinkMode},
    {"Decapsulate", parseDecapsulate, showDecapsulate},
};

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

void reportInvalid(const char* key, const std::string& value, const std::string& expected) {
    LOG4CXX_ERROR(logger, "Invalid value of " << key << ": \"" << value << "\", expected " << expected);
}
}  // namespace

bool EngineOptions::load(const Lookup& lookup) {
    for (const ChoiceKey& key : choiceKeys) {
        const std::string value = lookup(key.name);
        keysGiven |= !value.empty();
        if (!value.empty() && !key.parse(value, *this)) {
            reportInvalid(key.name, value, "one of the documented words");
            return false;
        }
    }
    for (const NumberKey& key : numberKeys) {
        const std::string value = lookup(key.name);
        keysGiven |= !value.empty();
        if (!value.empty() && !parseNumber(value, key.min, key.max, this->*key.field)) {
            reportInvalid(key.name, value, "a whole number from " + std::to_string(key.min) + " to " +
                                               std::to_string(key.max));
            return false;
        }
    }
    return true;
}

std::string EngineOptions::fromEnvironment(const std::string& key) {
    const char* value = std::getenv((environmentPrefix + key).c_str());
    return value ? value : "";
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
