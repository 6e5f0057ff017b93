#include "Config.h"

#include <cstdlib>

Config* Config::config = nullptr;
log4cxx::LoggerPtr Config::logger = log4cxx::Logger::getLogger("SnifferClient");

Config* Config::dft() {
    if (!config)
        config = new Config();
    return config;
}

void Config::setCfgFileName(const std::string& name) {
    cfgFileName = name;
}

void Config::loadProperties() {
    std::ifstream in(cfgFileName);
    if (!in.is_open()) {
        LOG4CXX_ERROR(logger, "Can't open configuration file " << cfgFileName);
        std::exit(1);
    }
    std::string line;
    long lineNumber = 0;
    while (std::getline(in, line)) {
        ++lineNumber;
        // An over-long line is skipped whole rather than split: half a line
        // could otherwise set a key that nobody wrote.
        if (line.size() > maxLineLength) {
            LOG4CXX_WARN(logger, "Skipping line " << lineNumber << " of " << cfgFileName << ": longer than "
                                                  << maxLineLength << " characters");
            continue;
        }
        addLine(line);
    }
}

void Config::addLine(const std::string& line) {
    const auto eq = line.find('=');
    if (eq == std::string::npos)
        return;
    properties.emplace(line.substr(0, eq), trim(line.substr(eq + 1)));
}

std::string Config::getProperty(const std::string& key) {
    return propertyRef(key);
}

const std::string& Config::propertyRef(const std::string& key) {
    return properties[key];
}

std::string Config::trim(const std::string& s) {
    static const char* const white = " \r\n\t";
    const auto first = s.find_first_not_of(white);
    if (first == std::string::npos)
        return std::string();
    const auto last = s.find_last_not_of(white);
    return s.substr(first, last - first + 1);
}
