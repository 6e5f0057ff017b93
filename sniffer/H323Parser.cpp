#include "H323Parser.h"

#include "h323/H225.h"
#include "h323/H245.h"
#include "h323/Text.h"

using h323::per::Value;

log4cxx::LoggerPtr H323Parser::logger = log4cxx::Logger::getLogger("SnifferClient");

namespace {

// The H.225.0 body that belongs to each dispatched Q.931 message type, and
// the heading of its call identifier's DEBUG line.
struct Dispatch {
    unsigned messageType;
    const char* body;
    const char* callIdHeading;
};
constexpr unsigned typeAlerting = 1;
constexpr unsigned typeCallProceeding = 2;
constexpr unsigned typeProgress = 3;
constexpr unsigned typeSetup = 5;
constexpr unsigned typeConnect = 7;
constexpr unsigned typeSetupAcknowledge = 13;
constexpr unsigned typeReleaseComplete = 90;
constexpr unsigned typeFacility = 98;
constexpr unsigned typeInformation = 123;

constexpr Dispatch dispatchTable[] = {
    {typeSetup, "setup", "SETUP CallId: "},
    {typeCallProceeding, "callProceeding", "CallProceeding CallId: "},
    {typeProgress, "progress", "Progress CallId: "},
    {typeAlerting, "alerting", "Alerting CallId: "},
    {typeConnect, "connect", "Connect CallId: "},
    {typeSetupAcknowledge, "setupAcknowledge", "SetupAck CallId: "},
    {typeInformation, "information", "Information CallId: "},
    {typeFacility, "facility", "Facility CallId: "},
    {typeReleaseComplete, "releaseComplete", "ReleaseComplete CallId: "},
};

const Dispatch* findDispatch(unsigned messageType) {
    for (const Dispatch& d : dispatchTable)
        if (d.messageType == messageType)
            return &d;
    return nullptr;
}

// Text a caller chose (an alias, dialled digits) as the value of one line of
// the description: a line feed in it would add a line of the caller's making
// (a media address, say), and a zero byte would end the description for the
// recorder, hiding the lines after it. Control characters become '?'.
std::string lineValue(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            c = '?';
    return text;
}


}  // namespace

// ---------------------------------------------------------------- framing

bool H323Parser::parseH323(u_char* payload, int len, int ourHdrLen, const u_int& tx_ip, const u_int& rx_ip,
                           const u_int& tx_port, const u_int& rx_port, std::string& upStreamPayload) {
    const uint16_t h323Length = static_cast<uint16_t>(len - ourHdrLen);
    if (h323Length < sizeof(sniff_tpkt))
        return false;
    const u_char* tpkt = payload + ourHdrLen;
    const uint16_t tpktLength = static_cast<uint16_t>(tpkt[2] << 8 | tpkt[3]);
    if (tpkt[0] != 3 || tpktLength == 0)
        return false;
    // The whole rest of the segment is one PDU: the TPKT length is only
    // checked for zero, and PDUs split over segments are not reassembled, so
    // that the recorder receives exactly one description per segment.
    return decode(tpkt + sizeof(sniff_tpkt), h323Length - sizeof(sniff_tpkt), tx_ip, rx_ip, tx_port, rx_port,
                  upStreamPayload);
}

// ---------------------------------------------------------------- call signalling

bool H323Parser::decode(const uint8_t* appPayload, size_t size, const u_int& tx_ip, const u_int& rx_ip,
                        const u_int& tx_port, const u_int& rx_port, std::string& upStreamPayload) {
    // H.245 is tried first on every segment: a separate H.245 connection
    // carries no Q.931 around its messages.
    if (Value message = h245MSCMsg.decode(h323::h245::MultimediaSystemControlMessage, appPayload, size))
        return handleH245MultimediaSystemControlMsg(message, tx_ip, rx_ip, tx_port, rx_port, upStreamPayload, false);

    q931pdu.decode(appPayload, size);  // whatever decoded is used
    std::ostringstream trace;
    if (traceSignalling) {
        trace << "\n=== Q931 Message ===\n";
        q931pdu.print(trace);
    }
    const unsigned messageType = q931pdu.messageType();
    const std::string callReference = std::to_string(q931pdu.callReference());
    upStreamPayload = "t:" + std::to_string(messageType) + "\nr:" + callReference + "\n";

    bool result = false;
    if (q931pdu.has(h323::Q931::UserUser)) {
        if (Value info = ui.decode(h323::h225::H323_UserInformation, q931pdu.element(h323::Q931::UserUser))) {
            const Value pdu = info["h323_uu_pdu"];
            if (traceSignalling)
                trace << "\n=== H323 Message ===\n" << h323::per::toText(pdu);
            if (pdu["h323_message_body"].is("empty"))
                result = handleTunnelledH245(pdu, tx_ip, rx_ip, tx_port, rx_port, upStreamPayload, trace);
            else
                result = describeMessage(messageType, callReference, pdu["h323_message_body"], upStreamPayload);
        }
    }
    if (traceSignalling)
        LOG4CXX_INFO(logger, trace.str());
    return result;
}

bool H323Parser::handleTunnelledH245(Value pdu, const u_int& tx_ip, const u_int& rx_ip, const u_int& tx_port,
                                     const u_int& rx_port, std::string& upStreamPayload, std::ostringstream& trace) {
    const Value control = pdu["h245Control"];
    bool result = false;
    for (size_t i = 0; i < control.size(); ++i) {
        const Value message = h245MSCMsg.decode(h323::h245::MultimediaSystemControlMessage, control.at(i).bytes());
        if (!message)
            continue;
        if (traceSignalling)
            trace << "\n=== H245 Message ===\n" << h323::per::toText(message);
        if (handleH245MultimediaSystemControlMsg(message, tx_ip, rx_ip, tx_port, rx_port, upStreamPayload, true))
            result = true;
    }
    return result;
}

bool H323Parser::describeMessage(unsigned messageType, const std::string& callReference, Value body,
                                 std::string& upStreamPayload) {
    const Dispatch* dispatch = findDispatch(messageType);
    // A body that does not belong to the message type is not described: the
    // recorder could not tell which of the two the sender meant.
    if (!dispatch || !body.is(dispatch->body))
        return false;
    const Value uuie = body.chosen();
    const std::string suffix = messageType == typeReleaseComplete ? " CallRef:" + callReference : "";
    const bool hasCallId = appendCallId(uuie, dispatch->callIdHeading, suffix, upStreamPayload);

    switch (messageType) {
    case typeSetup:
        appendParty(uuie["sourceAddress"], "SETUP (H225) Caller: ", "SETUP (Q931) Caller: ",
                    q931pdu.callingPartyNumber(), "s:", upStreamPayload);
        appendParty(uuie["destinationAddress"], "SETUP (H225) Callee: ", "SETUP (Q931) Callee: ",
                    q931pdu.calledPartyNumber(), "d:", upStreamPayload);
        fastStartOrH245Address(uuie, "SETUP", callReference, upStreamPayload);
        break;
    case typeAlerting:
        fastStartOrH245Address(uuie, "ALERTING", callReference, upStreamPayload);
        break;
    case typeConnect:
        fastStartOrH245Address(uuie, "CONNECT", callReference, upStreamPayload);
        break;
    case typeInformation: {
        const std::string digits = q931pdu.calledPartyNumber();
        LOG4CXX_DEBUG(logger, "Digit: " << digits);
        upStreamPayload += "i:" + lineValue(digits) + "\n";
        getFastStartParams(uuie["fastStart"], upStreamPayload);
        break;
    }
    case typeReleaseComplete:
        // Only a ReleaseComplete that names its call ends the call's entry.
        if (hasCallId)
            eraseCall(callReference);
        break;
    case typeSetupAcknowledge:
        break;
    default:  // CallProceeding, Progress, Facility
        getFastStartParams(uuie["fastStart"], upStreamPayload);
        break;
    }
    return true;
}

bool H323Parser::appendCallId(Value uuie, const char* heading, const std::string& suffix,
                              std::string& upStreamPayload) {
    const Value callIdentifier = uuie["callIdentifier"];
    if (!callIdentifier)
        return false;
    const std::string guid = h323::guidText(callIdentifier["guid"].bytes());
    upStreamPayload += "c:" + guid + "\n";
    LOG4CXX_DEBUG(logger, heading << guid << suffix);
    return true;
}

void H323Parser::appendParty(Value aliases, const char* h225Heading, const char* q931Heading,
                             const std::string& number, const char* tag, std::string& upStreamPayload) {
    std::string party;
    if (aliases.size() > 0) {
        party = h323::aliasText(aliases.at(0));
        LOG4CXX_DEBUG(logger, h225Heading << party);
    } else {
        party = number;
        LOG4CXX_DEBUG(logger, q931Heading << party);
    }
    upStreamPayload += tag + lineValue(party) + "\n";
}

// Fast start wins over the H.245 address: a call set up with fast start has
// no separate H.245 connection to follow, so it never enters the maps.
void H323Parser::fastStartOrH245Address(Value uuie, const char* wording, const std::string& callReference,
                                        std::string& upStreamPayload) {
    if (uuie.has("fastStart"))
        getFastStartParams(uuie["fastStart"], upStreamPayload);
    else if (uuie.has("h245Address"))
        useH245Address(uuie["h245Address"], wording, callReference);
}

void H323Parser::useH245Address(Value address, const char* wording, const std::string& callReference) {
    if (!address.is("ipAddress")) {
        LOG4CXX_DEBUG(logger, wording << " has h245 address which is not IPv4");
        LOG4CXX_ERROR(logger, address.tagName());
        return;
    }
    const Value ip = address.chosen();
    updateMaps(callReference, h245Addr(h323::ipv4Text(ip["ip"].bytes()), static_cast<uint32_t>(ip["port"].integer())));
}

void H323Parser::getFastStartParams(Value h245FastStartParams, std::string& upStreamPayload) {
    for (size_t i = 0; i < h245FastStartParams.size(); ++i) {
        const Value channel = olc.decode(h323::h245::OpenLogicalChannel, h245FastStartParams.at(i).bytes());
        if (!channel) {
            LOG4CXX_DEBUG(logger, "H323 fast-start parameter decode failed");
            continue;
        }
        getRequestMediaParams(channel, upStreamPayload);
        upStreamPayload += "\n";
    }
}

// ---------------------------------------------------------------- H.245

bool H323Parser::handleH245MultimediaSystemControlMsg(Value message, const u_int& tx_ip, const u_int& rx_ip,
                                                      const u_int& tx_port, const u_int& rx_port,
                                                      std::string& upStreamPayload, bool isTunneled) {
    if (traceSignalling)
        LOG4CXX_INFO(logger, "\n=== H245 Message ===\n" << h323::per::toText(message));

    const Value kind = message.chosen();
    unsigned pseudoType;
    const char* dropText;
    if (message.is("response") && kind.is("openLogicalChannelAck")) {
        pseudoType = pseudoTypeOpenLogicalChannelAck;
        dropText = "Dropping pkt as received OLCAck does not match existing session";
    } else if (message.is("request") && kind.is("openLogicalChannel")) {
        pseudoType = pseudoTypeOpenLogicalChannel;
        dropText = "Dropping pkt as received OLC does not match existing session";
    } else {
        if (message.is("indication") && kind.is("userInput") && kind.chosen().is("alphanumeric")) {
            // Digits alone are not forwarded: they ride along only with a
            // channel description of the same message.
            const std::string digits = kind.chosen().chosen().text();
            upStreamPayload += "i:" + lineValue(digits) + "\n";
            LOG4CXX_DEBUG(logger, "H.245 DTMF Passed: " << digits);
        }
        return false;
    }

    // A tunnelled message already carries its call's "t:" and "r:" lines.
    if (!isTunneled) {
        upStreamPayload += "t:" + std::to_string(pseudoType) + "\n";
        const h245Addr txAddr(h323::ipv4Text(static_cast<uint32_t>(tx_ip)), tx_port);
        const h245Addr rxAddr(h323::ipv4Text(static_cast<uint32_t>(rx_ip)), rx_port);
        std::string callReference;
        if (!findCall(txAddr, rxAddr, callReference)) {
            LOG4CXX_ERROR(logger, dropText);
            LOG4CXX_DEBUG(logger, "Tx IP:Port=" << txAddr.h245Ip << ":" << txAddr.h245Port << "\n"
                                                << "Rx IP:Port=" << rxAddr.h245Ip << ":" << rxAddr.h245Port);
            displayCallIdMap();
            return false;
        }
        upStreamPayload += "r:" + callReference + "\n";
    }
    if (pseudoType == pseudoTypeOpenLogicalChannel) {
        getRequestMediaParams(kind.chosen(), upStreamPayload);
    } else {
        const Value ack = kind.chosen();
        upStreamPayload += "a:" + std::to_string(ack["forwardLogicalChannelNumber"].integer()) + ":";
        getResponseMediaParams(ack, upStreamPayload);
    }
    upStreamPayload += "\n";
    return true;
}

bool H323Parser::findCall(const h245Addr& tx, const h245Addr& rx, std::string& callReference) {
    auto hit = h245Map.find(tx);
    if (hit == h245Map.end())
        hit = h245Map.find(rx);
    if (hit == h245Map.end())
        return false;
    callReference = hit->second;
    return true;
}

void H323Parser::getRequestMediaParams(Value openLogicalChannel, std::string& upStreamPayload) {
    upStreamPayload += "m:" + std::to_string(openLogicalChannel["forwardLogicalChannelNumber"].integer()) + ":";
    getForwardLogicalChannelParams(openLogicalChannel["forwardLogicalChannelParameters"], upStreamPayload);
    if (const Value reverse = openLogicalChannel["reverseLogicalChannelParameters"])
        getReverseLogicalChannelParams(reverse, upStreamPayload);
}

void H323Parser::getResponseMediaParams(Value ack, std::string& upStreamPayload) {
    const Value forward = ack["forwardMultiplexAckParameters"];
    if (forward.is("h2250LogicalChannelAckParameters"))
        getForwardLogicalChannelAckParams(forward.chosen(), upStreamPayload);
    const Value multiplex = ack["reverseLogicalChannelParameters"]["multiplexParameters"];
    if (multiplex.is("h2250LogicalChannelParameters"))
        getH2250LogicalChannelParams(multiplex.chosen(), upStreamPayload);
}

// The codec as the recorder reads it: the alternative's name and, for the
// two 64 kbit/s G.711 laws only, the frames per packet; 0 for every other.
std::string H323Parser::codecText(Value audioCapability) {
    const bool g711 = audioCapability.is("g711Alaw64k") || audioCapability.is("g711Ulaw64k");
    const int64_t number = g711 ? audioCapability.chosen().integer() : 0;
    return audioCapability.tagName() + " " + std::to_string(number);
}

// Both directions of a channel carry a data type and multiplex parameters;
// only the key of the codec line tells them apart.
void H323Parser::getLogicalChannelParams(Value lcParams, const char* codecKey, std::string& upStreamPayload) {
    const Value dataType = lcParams["dataType"];
    if (dataType.is("audioData"))
        upStreamPayload += codecKey + codecText(dataType.chosen()) + ",";
    const Value multiplex = lcParams["multiplexParameters"];
    if (multiplex.is("h2250LogicalChannelParameters"))
        getH2250LogicalChannelParams(multiplex.chosen(), upStreamPayload);
}

void H323Parser::getForwardLogicalChannelParams(Value flcParams, std::string& upStreamPayload) {
    getLogicalChannelParams(flcParams, "fcodec:", upStreamPayload);
}

void H323Parser::getReverseLogicalChannelParams(Value rlcParams, std::string& upStreamPayload) {
    getLogicalChannelParams(rlcParams, "rcodec:", upStreamPayload);
}

void H323Parser::getH2250LogicalChannelParams(Value h225LCParams, std::string& upStreamPayload) {
    if (const Value mediaChannel = h225LCParams["mediaChannel"])
        getMediaChannelAttributes(mediaChannel, upStreamPayload);
}

void H323Parser::getForwardLogicalChannelAckParams(Value h225LCAckParams, std::string& upStreamPayload) {
    getH2250LogicalChannelParams(h225LCAckParams, upStreamPayload);
}

void H323Parser::getMediaChannelAttributes(Value mediaChannel, std::string& upStreamPayload) {
    appendMediaAddress(mediaChannel, "rtp:", "MediaChannel", upStreamPayload);
}

void H323Parser::getMediaControlChannelAttributes(Value mediaControlChannel, std::string& upStreamPayload) {
    appendMediaAddress(mediaControlChannel, "rtcp:", "MediaControlChannel", upStreamPayload);
}

void H323Parser::appendMediaAddress(Value address, const char* prefix, const char* name,
                                    std::string& upStreamPayload) {
    if (!address.is("unicastAddress")) {
        LOG4CXX_DEBUG(logger, name << " Address is not Unicast. " << address.tagName() << " is not supported");
        return;
    }
    const Value unicast = address.chosen();
    if (!unicast.is("iPAddress")) {
        LOG4CXX_DEBUG(logger, name << " address is not IPv4. " << unicast.tagName() << " is not supported");
        return;
    }
    const Value ip = unicast.chosen();
    upStreamPayload += prefix + h323::ipv4Text(ip["network"].bytes()) + " " +
                       std::to_string(ip["tsapIdentifier"].integer());
}

// ---------------------------------------------------------------- call maps

void H323Parser::updateMaps(const std::string& callReference, const h245Addr& addr) {
    callRefMap.erase(callReference);
    callRefMap.emplace(callReference, addr);
    LOG4CXX_DEBUG(logger, "Inserted " << callReference << " and " << addr.h245Ip << ":" << addr.h245Port
                                      << " into Call Reference Map");
    // The call's earlier H.245 address, if any, stays in this map: a late
    // H.245 segment on it still finds its call.
    h245Map.erase(addr);
    h245Map.emplace(addr, callReference);
    LOG4CXX_DEBUG(logger, "Inserted " << addr.h245Ip << ":" << addr.h245Port << " and " << callReference
                                      << " into H245 Map");
}

void H323Parser::eraseCall(const std::string& callReference) {
    const auto call = callRefMap.find(callReference);
    if (call == callRefMap.end())
        return;
    const h245Addr addr = call->second;
    callRefMap.erase(call);
    LOG4CXX_DEBUG(logger, "Erased " << callReference << " and " << addr.h245Ip << ":" << addr.h245Port
                                    << " from Call Reference Map");
    const auto h245 = h245Map.find(addr);
    if (h245 == h245Map.end())
        return;
    h245Map.erase(h245);
    LOG4CXX_DEBUG(logger, "Erased " << addr.h245Ip << ":" << addr.h245Port << " and " << callReference
                                    << " from H245 Map");
}

void H323Parser::displayCallIdMap() {
    if (callRefMap.empty())
        LOG4CXX_DEBUG(logger, "CallRefMap is empty");
    if (h245Map.empty())
        LOG4CXX_DEBUG(logger, "h245Map is empty");
    for (const auto& [callReference, addr] : callRefMap)
        LOG4CXX_DEBUG(logger, "Call Ref Map --- Key = " << callReference << ", Value = " << addr.h245Ip << ":"
                                                        << addr.h245Port);
    for (const auto& [addr, callReference] : h245Map)
        LOG4CXX_DEBUG(logger, "h245Map --- Key = " << addr.h245Ip << ":" << addr.h245Port
                                                   << ", Value = " << callReference);
}
