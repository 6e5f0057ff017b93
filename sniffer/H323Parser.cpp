#include "H323Parser.h"

log4cxx::LoggerPtr H323Parser::logger = log4cxx::Logger::getLogger("SnifferClient");

bool H323Parser::parseH323(u_char*, int, int, const u_int&, const u_int&, const u_int&, const u_int&, std::string&) {
    // H.323 decoding arrives with the signalling decoder; until then no
    // TCP segment is forwarded.
    return false;
}

void H323Parser::displayCallIdMap() {
    LOG4CXX_DEBUG(logger, "CallRefMap is empty");
    LOG4CXX_DEBUG(logger, "h245Map is empty");
}
