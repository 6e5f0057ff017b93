// One whole H.323 call as the traffic generator plays it: the call
// signalling (fast start in the Setup, an H.245 address in the Connect,
// tunnelled H.245 in a Facility, ReleaseComplete) and the separate H.245
// connection's channel messages.
#ifndef TESTS_H323CALL_SYNTHETIC_CALL_H
#define TESTS_H323CALL_SYNTHETIC_CALL_H

#include <string>
#include <vector>

namespace h323call {

struct Addresses {
    std::string callerIp = "127.0.0.1";
    std::string calleeIp = "127.0.0.1";
    unsigned callerRtpPort = 16100;
    unsigned calleeRtpPort = 16200;
    unsigned h245Port = 0;  // the callee's H.245 listening port, announced in Connect
};

struct Step {
    enum Connection { Signalling, H245 };
    enum Direction { CallerToCallee, CalleeToCaller };
    std::string name;
    Connection connection;
    Direction direction;
    std::string pdu;          // without TPKT framing
    std::string description;  // what the sniffer forwards for it, "" for nothing
};

std::vector<Step> syntheticCall(const Addresses& a);

}  // namespace h323call

#endif
