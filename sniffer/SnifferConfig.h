#ifndef SNIFFER_SNIFFER_CONFIG_H
#define SNIFFER_SNIFFER_CONFIG_H

#include <string>

// Typed access to the sniffer's keys in the properties file.
// Constructing it loads the file; each getter reads its key when called.
// Text getters return pointers into the process-wide table, valid for the
// life of the process.
class SnifferConfig {
public:
    static const char* const ServerName;
    static const char* const ServerPort;
    static const char* const Device;
    static const char* const Filter;
    static const char* const Transport;
    static const char* const ProtocolList;
    static const char* const PortList;
    static const char* const ServerProtocol;
    static const char* const LogLevel;
    static const char* const TraceSignalling;
    static const char* const RunAsUser;

    static const char* const Debug;
    static const char* const Info;
    static const char* const Warn;
    static const char* const Error;
    static const char* const Fatal;

    explicit SnifferConfig(const std::string& cfgFileName);
    virtual ~SnifferConfig() = default;

    const char* getServerName();
    int getServerPort();
    const char* getDevice();
    const char* getFilter();
    const char* getServerProtocol();
    const char* getLogLevel();
    bool getTraceSignalling();
    const char* getTransport();
    const char* getProtocolList();
    const char* getPortList();
    // User to switch to once the devices are open; empty: stay as started.
    const char* getRunAsUser();

    std::string trim(const std::string& s);
    std::string validateLogLevel(std::string logLevel);

private:
    const char* text(const char* key);

    std::string logLevel;
};

#endif
