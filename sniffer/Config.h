#ifndef SNIFFER_CONFIG_H
#define SNIFFER_CONFIG_H

#include <fstream>
#include <map>
#include <string>

#include <log4cxx/logger.h>

// The process-wide table of a flat key=value properties file.
//
// Keys are taken exactly as written before the first '=' (not trimmed);
// values are trimmed. The first occurrence of a key wins. Looking up an
// absent key stores it with an empty value, so absent and empty read alike.
class Config {
public:
    // Longest line taken from the file, line feed excluded.
    static constexpr std::size_t maxLineLength = 511;

    static Config* dft();

    // A table of its own, apart from the process-wide one (tests and tools).
    Config() = default;
    virtual ~Config() = default;
    Config(const Config&) = delete;
    Config& operator=(const Config&) = delete;

    void setCfgFileName(const std::string& name);
    // Reads the file into the table. An unreadable file ends the process.
    void loadProperties();
    std::string getProperty(const std::string& key);
    // Reference into the table: stays valid for the life of the process,
    // since entries are never erased or reassigned after loading.
    const std::string& propertyRef(const std::string& key);

    static std::string trim(const std::string& s);

private:
    void addLine(const std::string& line);

    std::map<std::string, std::string> properties;
    std::string cfgFileName;
    std::ifstream cfgFile;

    static Config* config;
    static log4cxx::LoggerPtr logger;
};

#endif
