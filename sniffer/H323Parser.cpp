#include "H323Parser.h"

#include "h323/H225.h"
#include "h323/H245.h"
#include "h323/Text.h"

using h323::per::Ref;
using h323::per::Value;
namespace h225 = h323::h225;
namespace h245 = h323::h245;

log4cxx::LoggerPtr H323Parser::logger = log4cxx::Logger::getLogger("SnifferClient");

namespace {}  // namespace

// The H.225.0 body that belongs to each dispatched Q.931 message type, the
// heading of its call identifier's DEBUG line, and the components of that
// body the description reads (a default Ref where the body has none).
struct H323Parser::Dispatch {
    unsigned messageType;
    Ref body;
    const char* callIdHeading;
    Ref callIdentifier;
    Ref fastStart;
    Ref h245Address;
};

namespace {
using Dispatch = H323Parser::Dispatch;
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
    {typeSetup, h225::MessageBody::setup, "SETUP CallId: ", h225::Setup::callIdentifier, h225::Setup::fastStart,
     h225::Setup::h245Address},
    {typeCallProceeding,
     h225::MessageBody::callProceeding,
     "CallProceeding CallId: ",
     h225::CallProceeding::callIdentifier,
     h225::CallProceeding::fastStart,
     {}},
    {typeProgress,
     h225::MessageBody::progress,
     "Progress CallId: ",
     h225::Progress::callIdentifier,
     h225::Progress::fastStart,
     {}},
    {typeAlerting, h225::MessageBody::alerting, "Alerting CallId: ", h225::Alerting::callIdentifier,
     h225::Alerting::fastStart, h225::Alerting::h245Address},
    {typeConnect, h225::MessageBody::connect, "Connect CallId: ", h225::Connect::callIdentifier,
     h225::Connect::fastStart, h225::Connect::h245Address},
    {typeSetupAcknowledge,
     h225::MessageBody::setupAcknowledge,
     "SetupAck CallId: ",
     h225::SetupAcknowledge::callIdentifier,
     {},
     {}},
    {typeInformation,
     h225::MessageBody::information,
     "Information CallId: ",
     h225::Information::callIdentifier,
     h225::Information::fastStart,
     {}},
    {typeFacility,
     h225::MessageBody::facility,
     "Facility CallId: ",
     h225::Facility::callIdentifier,
     h225::Facility::fastStart,
     {}},
    {typeReleaseComplete,
     h225::MessageBody::releaseComplete,
     "ReleaseComplete CallId: ",
     h225::ReleaseComplete::callIdentifier,
     {},
     {}},
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

    if (!q931pdu.decode(appPayload, size))  // whatever decoded is used
        noteFailure("Q.931 message", q931pdu);
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
        const Value info = ui.decode(h323::h225::H323_UserInformation, q931pdu.element(h323::Q931::UserUser));
        if (!info) {
            noteFailure("H323 user information", ui);
        } else {
            const Value pdu = info[h225::UserInformation::h323_uu_pdu];
            if (traceSignalling)
                trace << "\n=== H323 Message ===\n" << h323::per::toText(pdu);
            if (pdu[h225::UUPDU::h323_message_body].is(h225::MessageBody::empty))
                result = handleTunnelledH245(pdu, tx_ip, rx_ip, tx_port, rx_port, upStreamPayload, trace);
            else
                result =
                    describeMessage(messageType, callReference, pdu[h225::UUPDU::h323_message_body], upStreamPayload);
        }
    }
    if (traceSignalling)
        LOG4CXX_INFO(logger, trace.str());
    return result;
}

bool H323Parser::handleTunnelledH245(Value pdu, const u_int& tx_ip, const u_int& rx_ip, const u_int& tx_port,
                                     const u_int& rx_port, std::string& upStreamPayload, std::ostringstream& trace) {
    const Value control = pdu[h225::UUPDU::h245Control];
    bool result = false;
    for (size_t i = 0; i < control.size(); ++i) {
        const Value message = h245MSCMsg.decode(h323::h245::MultimediaSystemControlMessage, control.at(i).bytes());
        if (!message) {
            noteFailure("H323 tunnelled H.245 message", h245MSCMsg);
            continue;
        }
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
    const bool hasCallId =
        appendCallId(uuie[dispatch->callIdentifier], dispatch->callIdHeading, suffix, upStreamPayload);

    switch (messageType) {
    case typeSetup:
        appendParty(uuie[h225::Setup::sourceAddress],
                    "SETUP (H225) Caller: ", "SETUP (Q931) Caller: ", q931pdu.callingPartyNumber(),
                    "s:", upStreamPayload);
        appendParty(uuie[h225::Setup::destinationAddress],
                    "SETUP (H225) Callee: ", "SETUP (Q931) Callee: ", q931pdu.calledPartyNumber(),
                    "d:", upStreamPayload);
        fastStartOrH245Address(uuie, *dispatch, "SETUP", callReference, upStreamPayload);
        break;
    case typeAlerting: fastStartOrH245Address(uuie, *dispatch, "ALERTING", callReference, upStreamPayload); break;
    case typeConnect: fastStartOrH245Address(uuie, *dispatch, "CONNECT", callReference, upStreamPayload); break;
    case typeInformation: {
        const std::string digits = q931pdu.calledPartyNumber();
        LOG4CXX_DEBUG(logger, "Digit: " << digits);
        upStreamPayload += "i:" + lineValue(digits) + "\n";
        getFastStartParams(uuie[dispatch->fastStart], upStreamPayload);
        break;
    }
    case typeReleaseComplete:
        // Only a ReleaseComplete that names its call ends the call's entry.
        if (hasCallId)
            eraseCall(callReference);
        break;
    case typeSetupAcknowledge: break;
    default:  // CallProceeding, Progress, Facility
        getFastStartParams(uuie[dispatch->fastStart], upStreamPayload);
        break;
    }
    return true;
}

bool H323Parser::appendCallId(Value callIdentifier, const char* heading, const std::string& suffix,
                              std::string& upStreamPayload) {
    if (!callIdentifier)
        return false;
    const std::string guid = h323::guidText(callIdentifier[h225::CallId::guid].bytes());
    upStreamPayload += "c:" + guid + "\n";
    LOG4CXX_DEBUG(logger, heading << guid << suffix);
    return true;
}

void H323Parser::appendParty(Value aliases, const char* h225Heading, const char* q931Heading, const std::string& number,
                             const char* tag, std::string& upStreamPayload) {
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
void H323Parser::fastStartOrH245Address(Value uuie, const Dispatch& dispatch, const char* wording,
                                        const std::string& callReference, std::string& upStreamPayload) {
    if (uuie.has(dispatch.fastStart))
        getFastStartParams(uuie[dispatch.fastStart], upStreamPayload);
    else if (uuie.has(dispatch.h245Address))
        useH245Address(uuie[dispatch.h245Address], wording, callReference);
}

void H323Parser::useH245Address(Value address, const char* wording, const std::string& callReference) {
    if (!address.is(h225::Transport::ipAddress)) {
        LOG4CXX_DEBUG(logger, wording << " has h245 address which is not IPv4");
        LOG4CXX_ERROR(logger, address.tagName());
        return;
    }
    const Value ip = address.chosen();
    updateMaps(callReference, h245Addr(h323::ipv4Text(ip[h225::IpAddress::ip].bytes()),
                                       static_cast<uint32_t>(ip[h225::IpAddress::port].integer())));
}

void H323Parser::getFastStartParams(Value h245FastStartParams, std::string& upStreamPayload) {
    for (size_t i = 0; i < h245FastStartParams.size(); ++i) {
        const Value channel = olc.decode(h323::h245::OpenLogicalChannel, h245FastStartParams.at(i).bytes());
        if (!channel) {
            LOG4CXX_DEBUG(logger, "H323 fast-start parameter decode failed");
            noteFailure("H323 fast-start parameter", olc);
            continue;
        }
        getRequestMediaParams(channel, upStreamPayload);
        upStreamPayload += "\n";
    }
}

// The reason, path and offset make one DEBUG line, its text built only when
// DEBUG is on: a failure per segment is common on a busy link.
template <class Codec>
void H323Parser::noteFailure(const char* what, const Codec& codec) {
    ++decodeFailures_[size_t(codec.status())];
    LOG4CXX_DEBUG(logger, what << " decode failed: " << h323::statusName(codec.status()) << " at " << codec.stopPath()
                               << ", bit " << codec.stopBit());
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
    if (message.is(h245::Message::response) && kind.is(h245::Response::openLogicalChannelAck)) {
        pseudoType = pseudoTypeOpenLogicalChannelAck;
        dropText = "Dropping pkt as received OLCAck does not match existing session";
    } else if (message.is(h245::Message::request) && kind.is(h245::Request::openLogicalChannel)) {
        pseudoType = pseudoTypeOpenLogicalChannel;
        dropText = "Dropping pkt as received OLC does not match existing session";
    } else {
        if (message.is(h245::Message::indication) && kind.is(h245::Indication::userInput) &&
            kind.chosen().is(h245::UserInput::alphanumeric)) {
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
        upStreamPayload += "a:" + std::to_string(ack[h245::OlcAck::forwardLogicalChannelNumber].integer()) + ":";
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
    upStreamPayload +=
        "m:" + std::to_string(openLogicalChannel[h245::Olc::forwardLogicalChannelNumber].integer()) + ":";
    getForwardLogicalChannelParams(openLogicalChannel[h245::Olc::forwardLogicalChannelParameters], upStreamPayload);
    if (const Value reverse = openLogicalChannel[h245::Olc::reverseLogicalChannelParameters])
        getReverseLogicalChannelParams(reverse, upStreamPayload);
}

void H323Parser::getResponseMediaParams(Value ack, std::string& upStreamPayload) {
    const Value forward = ack[h245::OlcAck::forwardMultiplexAckParameters];
    if (forward.is(h245::OlcAckForwardMultiplex::h2250LogicalChannelAckParameters))
        getForwardLogicalChannelAckParams(forward.chosen(), upStreamPayload);
    const Value reverse = ack[h245::OlcAck::reverseLogicalChannelParameters];
    const Value multiplex = reverse[h245::OlcAckReverse::multiplexParameters];
    if (multiplex.is(h245::OlcAckReverseMultiplex::h2250LogicalChannelParameters))
        getH2250LogicalChannelParams(multiplex.chosen(), upStreamPayload);
}

// The codec as the recorder reads it: the alternative's name and, for the
// two 64 kbit/s G.711 laws only, the frames per packet; 0 for every other.
std::string H323Parser::codecText(Value audioCapability) {
    const bool g711 = audioCapability.is(h245::Audio::g711Alaw64k) || audioCapability.is(h245::Audio::g711Ulaw64k);
    const int64_t number = g711 ? audioCapability.chosen().integer() : 0;
    return audioCapability.tagName() + " " + std::to_string(number);
}

// Both directions of a channel carry a data type and multiplex parameters
// (as components of two types of their own); only the key of the codec line
// tells them apart. `h2250` is empty unless the multiplex parameters are
// H.225.0's.
void H323Parser::getLogicalChannelParams(Value dataType, Value h2250, const char* codecKey,
                                         std::string& upStreamPayload) {
    if (dataType.is(h245::Data::audioData))
        upStreamPayload += codecKey + codecText(dataType.chosen()) + ",";
    if (h2250)
        getH2250LogicalChannelParams(h2250, upStreamPayload);
}

void H323Parser::getForwardLogicalChannelParams(Value flcParams, std::string& upStreamPayload) {
    const Value multiplex = flcParams[h245::OlcForward::multiplexParameters];
    const bool h2250 = multiplex.is(h245::OlcForwardMultiplex::h2250LogicalChannelParameters);
    getLogicalChannelParams(flcParams[h245::OlcForward::dataType], h2250 ? multiplex.chosen() : Value(),
                            "fcodec:", upStreamPayload);
}

void H323Parser::getReverseLogicalChannelParams(Value rlcParams, std::string& upStreamPayload) {
    const Value multiplex = rlcParams[h245::OlcReverse::multiplexParameters];
    const bool h2250 = multiplex.is(h245::OlcReverseMultiplex::h2250LogicalChannelParameters);
    getLogicalChannelParams(rlcParams[h245::OlcReverse::dataType], h2250 ? multiplex.chosen() : Value(),
                            "rcodec:", upStreamPayload);
}

void H323Parser::getH2250LogicalChannelParams(Value h225LCParams, std::string& upStreamPayload) {
    if (const Value mediaChannel = h225LCParams[h245::H2250Params::mediaChannel])
        getMediaChannelAttributes(mediaChannel, upStreamPayload);
}

void H323Parser::getForwardLogicalChannelAckParams(Value h225LCAckParams, std::string& upStreamPayload) {
    if (const Value mediaChannel = h225LCAckParams[h245::H2250AckParams::mediaChannel])
        getMediaChannelAttributes(mediaChannel, upStreamPayload);
}

void H323Parser::getMediaChannelAttributes(Value mediaChannel, std::string& upStreamPayload) {
    appendMediaAddress(mediaChannel, "rtp:", "MediaChannel", upStreamPayload);
}

void H323Parser::getMediaControlChannelAttributes(Value mediaControlChannel, std::string& upStreamPayload) {
    appendMediaAddress(mediaControlChannel, "rtcp:", "MediaControlChannel", upStreamPayload);
}

void H323Parser::appendMediaAddress(Value address, const char* prefix, const char* name, std::string& upStreamPayload) {
    if (!address.is(h245::Transport::unicastAddress)) {
        LOG4CXX_DEBUG(logger, name << " Address is not Unicast. " << address.tagName() << " is not supported");
        return;
    }
    const Value unicast = address.chosen();
    if (!unicast.is(h245::Unicast::iPAddress)) {
        LOG4CXX_DEBUG(logger, name << " address is not IPv4. " << unicast.tagName() << " is not supported");
        return;
    }
    const Value ip = unicast.chosen();
    upStreamPayload += prefix + h323::ipv4Text(ip[h245::IpAddress::network].bytes()) + " " +
                       std::to_string(ip[h245::IpAddress::tsapIdentifier].integer());
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
    LOG4CXX_DEBUG(logger,
                  "Inserted " << addr.h245Ip << ":" << addr.h245Port << " and " << callReference << " into H245 Map");
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
    LOG4CXX_DEBUG(logger,
                  "Erased " << addr.h245Ip << ":" << addr.h245Port << " and " << callReference << " from H245 Map");
}

void H323Parser::displayCallIdMap() {
    if (callRefMap.empty())
        LOG4CXX_DEBUG(logger, "CallRefMap is empty");
    if (h245Map.empty())
        LOG4CXX_DEBUG(logger, "h245Map is empty");
    for (const auto& [callReference, addr] : callRefMap)
        LOG4CXX_DEBUG(
            logger, "Call Ref Map --- Key = " << callReference << ", Value = " << addr.h245Ip << ":" << addr.h245Port);
    for (const auto& [addr, callReference] : h245Map)
        LOG4CXX_DEBUG(logger,
                      "h245Map --- Key = " << addr.h245Ip << ":" << addr.h245Port << ", Value = " << callReference);
}
