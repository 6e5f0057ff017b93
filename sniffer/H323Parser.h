#ifndef SNIFFER_H323_PARSER_H
#define SNIFFER_H323_PARSER_H

#include <array>
#include <cstdint>
#include <map>
#include <sstream>
#include <string>
#include <sys/types.h>

#include <log4cxx/logger.h>

#include "h323/DecodeStatus.h"
#include "h323/Per.h"
#include "h323/Q931.h"

// Turns one TCP segment of H.323 signalling (Q.931 with its H.225.0
// user-user information, or H.245 control) into the short description text
// that is forwarded to the recorder instead of the segment:
//
//   t:<message type>  r:<call reference>  c:<call identifier>
//   s:<caller>  d:<callee>  i:<digits>
//   m:<lcn>:<media>   (proposed logical channel)   a:<lcn>:<media> (accepted)
//
// each line ended by a line feed. H.245 on a connection of its own is tied to
// its call through the H.245 address that the call's signalling announced.
//
// One instance, used only by the dissector's consumer thread: the decode
// targets and the call maps are not locked.
class H323Parser {
public:
#pragma pack(push, 1)
    // RFC 1006 framing in front of every H.323 PDU on TCP.
    struct sniff_tpkt {
        u_char version;
        u_char reserved;
        uint16_t length;
    };
#pragma pack(pop)

    // An H.245 control address: dotted IPv4 text and TCP port.
    struct h245Addr {
        std::string h245Ip;
        uint32_t h245Port = 0;

        h245Addr() = default;
        h245Addr(std::string ip, uint32_t port) : h245Ip(std::move(ip)), h245Port(port) {}
    };

    // Call references order as text ("10" before "9").
    struct callrefcomp {
        bool operator()(const std::string& a, const std::string& b) const { return a < b; }
    };

    // Address text first, then port. The port decides only between equal
    // addresses: comparing it regardless made two entries each less than
    // the other when address and port differ in opposite senses, which a
    // std::map cannot hold (its tree broke and lost entries). Wherever that
    // rule gave one answer, this one gives the same.
    struct h245comp {
        bool operator()(const h245Addr& a, const h245Addr& b) const {
            return a.h245Ip < b.h245Ip || (a.h245Ip == b.h245Ip && a.h245Port < b.h245Port);
        }
    };

    static constexpr unsigned pseudoTypeOpenLogicalChannel = 130;
    static constexpr unsigned pseudoTypeOpenLogicalChannelAck = 131;
    // What the description reads from the body of one Q.931 message type.
    struct Dispatch;

    H323Parser() = default;
    virtual ~H323Parser() = default;

    // `payload` holds `len` bytes, of which the first `ourHdrLen` precede the
    // TCP payload. Addresses in network order, ports in host order.
    // True when `upStreamPayload` holds a text to forward.
    bool parseH323(u_char* payload, int len, int ourHdrLen, const u_int& tx_ip, const u_int& rx_ip,
                   const u_int& tx_port, const u_int& rx_port, std::string& upStreamPayload);
    bool decode(const uint8_t* appPayload, size_t size, const u_int& tx_ip, const u_int& rx_ip, const u_int& tx_port,
                const u_int& rx_port, std::string& upStreamPayload);
    void getFastStartParams(h323::per::Value h245FastStartParams, std::string& upStreamPayload);

    bool handleH245MultimediaSystemControlMsg(h323::per::Value h245MSCMsg, const u_int& tx_ip, const u_int& rx_ip,
                                              const u_int& tx_port, const u_int& rx_port, std::string& upStreamPayload,
                                              bool isTunneled);
    void getRequestMediaParams(h323::per::Value openLogicalChannel, std::string& upStreamPayload);
    void getResponseMediaParams(h323::per::Value openLogicalChannelAck, std::string& upStreamPayload);
    void getForwardLogicalChannelParams(h323::per::Value flcParams, std::string& upStreamPayload);
    void getReverseLogicalChannelParams(h323::per::Value rlcParams, std::string& upStreamPayload);
    void getH2250LogicalChannelParams(h323::per::Value h225LCParams, std::string& upStreamPayload);
    void getForwardLogicalChannelAckParams(h323::per::Value h225LCAckParams, std::string& upStreamPayload);
    void getMediaChannelAttributes(h323::per::Value mediaChannel, std::string& upStreamPayload);
    void getMediaControlChannelAttributes(h323::per::Value mediaControlChannel, std::string& upStreamPayload);

    void updateMaps(const std::string& callReference, const h245Addr& addr);
    void displayCallIdMap();

    void setTraceSignalling(bool trace) {
        traceSignalling = trace;
    }

    // Messages that failed to decode, by reason. A segment that is not H.245
    // but decodes as Q.931 counts nothing: H.245 is only tried first.
    uint64_t decodeFailures(h323::DecodeStatus status) const {
        return decodeFailures_[size_t(status)];
    }

    const std::map<h245Addr, std::string, h245comp>& getH245Map() const {
        return h245Map;
    }
    const std::map<std::string, h245Addr, callrefcomp>& getCallRefMap() const {
        return callRefMap;
    }

private:
    bool describeMessage(unsigned messageType, const std::string& callReference, h323::per::Value body,
                         std::string& upStreamPayload);
    bool handleTunnelledH245(h323::per::Value pdu, const u_int& tx_ip, const u_int& rx_ip, const u_int& tx_port,
                             const u_int& rx_port, std::string& upStreamPayload, std::ostringstream& trace);
    bool appendCallId(h323::per::Value callIdentifier, const char* heading, const std::string& suffix,
                      std::string& upStreamPayload);
    void appendParty(h323::per::Value aliases, const char* h225Heading, const char* q931Heading,
                     const std::string& number, const char* tag, std::string& upStreamPayload);
    void useH245Address(h323::per::Value address, const char* wording, const std::string& callReference);
    void fastStartOrH245Address(h323::per::Value uuie, const Dispatch& dispatch, const char* wording,
                                const std::string& callReference, std::string& upStreamPayload);
    void eraseCall(const std::string& callReference);
    void appendMediaAddress(h323::per::Value address, const char* prefix, const char* name,
                            std::string& upStreamPayload);
    std::string codecText(h323::per::Value audioCapability);
    void getLogicalChannelParams(h323::per::Value dataType, h323::per::Value h2250, const char* codecKey,
                                 std::string& upStreamPayload);
    bool findCall(const h245Addr& tx, const h245Addr& rx, std::string& callReference);
    template <class Codec>
    void noteFailure(const char* what, const Codec& codec);

    std::map<h245Addr, std::string, h245comp> h245Map;
    std::map<std::string, h245Addr, callrefcomp> callRefMap;
    // Decode targets, reused from one segment to the next.
    h323::per::Decoder h245MSCMsg;
    h323::Q931 q931pdu;
    h323::per::Decoder ui;
    h323::per::Decoder olc;
    bool traceSignalling = false;
    std::array<uint64_t, h323::kDecodeStatusCount> decodeFailures_{};

    static log4cxx::LoggerPtr logger;
};

#endif
