#ifndef SNIFFER_H323_PARSER_H
#define SNIFFER_H323_PARSER_H

#include <string>
#include <sys/types.h>

#include <log4cxx/logger.h>

// Turns one TCP segment of H.323 signalling into the short description text
// that is forwarded to the recorder instead of the segment.
class H323Parser {
public:
    H323Parser() = default;
    virtual ~H323Parser() = default;

    // `payload` holds `len` bytes, of which the first `ourHdrLen` precede the
    // TCP payload. Addresses in network order, ports in host order.
    // True when `upStreamPayload` holds a text to forward.
    bool parseH323(u_char* payload, int len, int ourHdrLen, const u_int& tx_ip, const u_int& rx_ip,
                   const u_int& tx_port, const u_int& rx_port, std::string& upStreamPayload);

    void setTraceSignalling(bool trace) { traceSignalling = trace; }
    void displayCallIdMap();

private:
    bool traceSignalling = false;

    static log4cxx::LoggerPtr logger;
};

#endif
