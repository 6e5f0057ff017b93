#include "CommandSourceFilter.h"

#include <algorithm>

#include <log4cxx/logger.h>

#include "AddressText.h"

namespace {
log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("SnifferClient");
}

CommandSourceFilter::CommandSourceFilter(std::vector<uint32_t> allowed, EngineStats::Counter& ignored)
    : allowed(std::move(allowed)), ignored(&ignored) {}

bool CommandSourceFilter::accepts(uint32_t address) {
    if (allowed.empty() || std::find(allowed.begin(), allowed.end(), address) != allowed.end())
        return true;
    EngineStats::add(*ignored);
    warnOnce(address);
    return false;
}

void CommandSourceFilter::warnOnce(uint32_t address) {
    if (warned.size() >= warnedLimit || !warned.insert(address).second)
        return;
    LOG4CXX_WARN(logger, "Ignoring commands from " << dottedQuad(address) << ": not a CommandSource");
}
