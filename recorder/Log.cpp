#include "Log.h"

#include "Clock.h"

#include <cstdio>

namespace recorder::log {
namespace {

bool verboseOutput = false;

const char* levelName(Level level) {
    switch (level) {
    case Level::Debug: return "DEBUG";
    case Level::Info: return "INFO ";
    case Level::Warn: return "WARN ";
    case Level::Error: return "ERROR";
    }
    return "";
}

}  // namespace

void setVerbose(bool verbose) {
    verboseOutput = verbose;
}

Line::Line(Level level) : level_(level), enabled_(level != Level::Debug || verboseOutput) {}

Line::~Line() {
    if (!enabled_)
        return;
    // One fwrite per line keeps lines whole when stderr is shared with other writers.
    const std::string line = isoTime(Clock::now()) + ' ' + levelName(level_) + ' ' + text_.str() + '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace recorder::log
