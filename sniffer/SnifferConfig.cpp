#include "SnifferConfig.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iostream>

#include "Config.h"

const char* const SnifferConfig::ServerName = "ServerName";
const char* const SnifferConfig::ServerPort = "ServerPort";
const char* const SnifferConfig::Device = "Device";
const char* const SnifferConfig::Filter = "Filter";
const char* const SnifferConfig::Transport = "Transport";
const char* const SnifferConfig::ProtocolList = "ProtocolList";
const char* const SnifferConfig::PortList = "PortList";
const char* const SnifferConfig::ServerProtocol = "ServerProtocol";
const char* const SnifferConfig::LogLevel = "LogLevel";
const char* const SnifferConfig::TraceSignalling = "TraceSignalling";
const char* const SnifferConfig::RunAsUser = "RunAsUser";

const char* const SnifferConfig::Debug = "DEBUG";
const char* const SnifferConfig::Info = "INFO";
const char* const SnifferConfig::Warn = "WARN";
const char* const SnifferConfig::Error = "ERROR";
const char* const SnifferConfig::Fatal = "FATAL";

SnifferConfig::SnifferConfig(const std::string& cfgFileName) {
    Config::dft()->setCfgFileName(cfgFileName);
    Config::dft()->loadProperties();
}

const char* SnifferConfig::text(const char* key) {
    return Config::dft()->propertyRef(key).c_str();
}

const char* SnifferConfig::getServerName() {
    return text(ServerName);
}
int SnifferConfig::getServerPort() {
    return std::atoi(text(ServerPort));
}
const char* SnifferConfig::getDevice() {
    return text(Device);
}
const char* SnifferConfig::getFilter() {
    return text(Filter);
}
const char* SnifferConfig::getServerProtocol() {
    return text(ServerProtocol);
}
const char* SnifferConfig::getTransport() {
    return text(Transport);
}
const char* SnifferConfig::getProtocolList() {
    return text(ProtocolList);
}
const char* SnifferConfig::getPortList() {
    return text(PortList);
}
const char* SnifferConfig::getRunAsUser() {
    return text(RunAsUser);
}

std::string SnifferConfig::trim(const std::string& s) {
    return Config::trim(s);
}

std::string SnifferConfig::validateLogLevel(std::string level) {
    level = trim(level);
    std::transform(level.begin(), level.end(), level.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    for (const char* known : {Debug, Info, Warn, Error, Fatal})
        if (level == known)
            return level;
    return std::string();
}

const char* SnifferConfig::getLogLevel() {
    logLevel = validateLogLevel(text(LogLevel));
    if (logLevel.empty()) {
        // Standard error, not the log: logging may not be configured yet.
        std::cerr << "Invalid LogLevel, assuming INFO" << std::endl;
        return Info;
    }
    return logLevel.c_str();
}

// The key reads inverted on purpose, and deployed configurations rely on it:
// only the exact text "yes" turns the trace off.
bool SnifferConfig::getTraceSignalling() {
    return std::string(text(TraceSignalling)) != "yes";
}
