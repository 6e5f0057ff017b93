#ifndef FUZZ_SNIFFER_FUZZ_LOGGING_H
#define FUZZ_SNIFFER_FUZZ_LOGGING_H

#include <log4cxx/fileappender.h>
#include <log4cxx/logger.h>
#include <log4cxx/patternlayout.h>

// Every level on, written nowhere: the lines are still formatted, so the
// logging code of each path is fuzzed too, without flooding the terminal.
inline void logEverythingToNowhere() {
    auto layout = std::make_shared<log4cxx::PatternLayout>(LOG4CXX_STR("%p %m%n"));
    auto sink = std::make_shared<log4cxx::FileAppender>(layout, LOG4CXX_STR("/dev/null"), false);
    log4cxx::LoggerPtr root = log4cxx::Logger::getRootLogger();
    root->addAppender(sink);
    root->setLevel(log4cxx::Level::getDebug());
}

#endif
