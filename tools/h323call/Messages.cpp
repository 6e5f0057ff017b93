#include "Messages.h"

#include <arpa/inet.h>

#include "Bytes.h"
#include "h323/H225.h"

namespace h323::test {

using per::Builder;

namespace {

const char* const kProtocolIdentifier = "0.0.8.2250.0.4";

std::string fromHex(const char* hex) {
    std::vector<uint8_t> b = bytes(hex);
    return std::string(b.begin(), b.end());
}

std::string octets(std::initializer_list<uint8_t> b) {
    return std::string(b.begin(), b.end());
}

void setEndpoint(Builder::Slot e) {
    Builder::Slot vendor = e["vendor"];
    vendor["vendor"]["t35CountryCode"].setInteger(181);
    vendor["vendor"]["t35Extension"].setInteger(0);
    vendor["vendor"]["manufacturerCode"].setInteger(21324);
    vendor["productId"].setBytes("voip toolkit");
    vendor["versionId"].setBytes("1.0");
    e["terminal"].present();
    e["mc"].setBool(false);
    e["undefinedNode"].setBool(false);
}

// Two real fast-start proposals (OpenLogicalChannel, G.711 A-law, each way).
void addFastStart(Builder::Slot uuie) {
    Builder::Slot list = uuie["fastStart"];
    for (const char* olc : {"0000640c201d800b0d0001000a01038f138980", "00003c0c201d800a040001000a01061207d7"})
        list.append().setBytes(fromHex(olc));
}

// Real H.245 messages, as tunnelled in h245Control.
const char* const kTunnelledTerminalCapabilitySet =
    "027001060008817500078013800032000100000100000100000cc001000180008000002040ef00800100000000";
const char* const kTunnelledOpenLogicalChannel = "030000640c201d800b0d0001000a01038f138980";

}  // namespace

Signal::Signal(uint8_t messageType, const char* body, unsigned callReference, bool fromDestination)
    : info_(h225::H323_UserInformation) {
    pdu()["h323_message_body"].choose(body);
    q931_.setMessageType(messageType);
    q931_.setCallReference(callReference, fromDestination);
    q931_.setElement(Q931::BearerCapability, octets({0x88, 0x90, 0xa5}));
    if (this->body().value().kind() == per::Kind::Sequence)
        this->body()["protocolIdentifier"].setOid(kProtocolIdentifier);
}

Message Signal::message(std::string name) {
    std::vector<uint8_t> uu;
    per::encode(info_.value(), uu);
    q931_.setElement(Q931::UserUser, view(uu));
    return {std::move(name), q931_.encode()};
}

std::string Signal::encoded() {
    std::vector<uint8_t> wire = message("").bytes;
    return std::string(wire.begin(), wire.end());
}


std::string ipv4Octets(const char* dotted) {
    in_addr a{};
    inet_pton(AF_INET, dotted, &a);
    return std::string(reinterpret_cast<const char*>(&a), sizeof a);
}

void setIpv4(Builder::Slot transportAddress, const char* dotted, unsigned port) {
    Builder::Slot a = transportAddress.choose("ipAddress");
    a["ip"].setBytes(ipv4Octets(dotted));
    a["port"].setInteger(port);
}

std::string guid(uint8_t seed) {
    std::string g;
    for (uint8_t i = 0; i < 16; ++i)
        g += char(uint8_t(seed * 17 + i * 29));
    return g;
}


void setCallId(Builder::Slot uuie, uint8_t seed) {
    uuie["callIdentifier"]["guid"].setBytes(guid(seed));
}

Signal setup(uint8_t seed) {
    Signal s(Q931::Setup, "setup", 0x1000 + seed);
    Builder::Slot b = s.body();
    setEndpoint(b["sourceInfo"]);
    b["activeMC"].setBool(false);
    b["conferenceID"].setBytes(guid(seed + 100));
    b["conferenceGoal"].choose("create");
    b["callType"].choose("pointToPoint");
    setCallId(b, seed);
    b["mediaWaitForConnect"].setBool(false);
    b["canOverlapSend"].setBool(false);
    s.pdu()["h245Tunneling"].setBool(false);
    s.q931().setPartyNumber(Q931::CallingPartyNumber, "5551000", 0, 1, 0);
    s.q931().setPartyNumber(Q931::CalledPartyNumber, "5552000", 0, 1);
    return s;
}

Signal answer(uint8_t type, const char* body, uint8_t seed, bool fromDestination) {
    Signal s(type, body, 0x1000 + seed, fromDestination);
    Builder::Slot b = s.body();
    const per::Type& t = *b.value().type();
    for (size_t i = 0; i < t.rootCount; ++i) {
        std::string_view name = t.components[i].name;
        if (name == "destinationInfo")
            setEndpoint(b["destinationInfo"]);
        if (name == "conferenceID")
            b["conferenceID"].setBytes(guid(seed + 100));
        if (name == "reason" && type == Q931::Facility)
            b["reason"].choose("undefinedReason");
    }
    setCallId(b, seed);
    s.pdu()["h245Tunneling"].setBool(true);
    return s;
}

namespace {

Message setupWithH245(uint8_t seed, const char* name) {
    Signal s = setup(seed);
    Builder::Slot b = s.body();
    b["sourceAddress"].append().choose("h323_ID").setText("alice");
    b["destinationAddress"].append().choose("dialedDigits").setText("2000");
    setIpv4(b["h245Address"], "10.1.3.143", 32804);
    return s.message(name);
}

// What an answer carries beside its mandatory components and call id.
enum Extras : unsigned {
    Plain = 0,
    FastStart = 1,
    H245Address = 2,
    NetBiosH245Address = 4,
    CalledDigits = 8,
    StartH245 = 16,
};

struct Answer {
    const char* name;
    uint8_t type;
    const char* body;
    unsigned extras;
};

const Answer kAnswers[] = {
    {"call proceeding with fast start", Q931::CallProceeding, "callProceeding", FastStart},
    {"alerting with fast start and H.245 address", Q931::Alerting, "alerting", FastStart | H245Address},
    {"connect with fast start and H.245 address", Q931::Connect, "connect", FastStart | H245Address},
    {"connect with non-IPv4 H.245 address", Q931::Connect, "connect", NetBiosH245Address},
    {"progress with fast start", Q931::Progress, "progress", FastStart},
    {"setup acknowledge", Q931::SetupAcknowledge, "setupAcknowledge", Plain},
    {"information with digits and fast start", Q931::Information, "information", CalledDigits | FastStart},
    {"facility startH245 with fast start", Q931::Facility, "facility", StartH245 | H245Address | FastStart},
    {"status", Q931::Status, "status", Plain},
    {"notify", Q931::Notify, "notify", Plain},
};

// An answer from the called side (Information comes from the caller) with
// the mandatory components of its body, a call id and its extras.
Message answerMessage(const Answer& a) {
    const uint8_t seed = uint8_t(&a - kAnswers + 1);
    Signal s = answer(a.type, a.body, seed, a.type != Q931::Information);
    Builder::Slot b = s.body();
    if (a.extras & StartH245)
        b["reason"].choose("startH245");
    if (a.extras & FastStart)
        addFastStart(b);
    if (a.extras & H245Address)
        setIpv4(b["h245Address"], "10.1.6.18", 1232);
    if (a.extras & NetBiosH245Address)
        b["h245Address"].choose("netBios").setBytes(guid(9));
    if (a.extras & CalledDigits)
        s.q931().setPartyNumber(Q931::CalledPartyNumber, "5#", 0, 1);
    return s.message(a.name);
}

}  // namespace

std::vector<Message> signallingMessages() {
    std::vector<Message> all;
    all.push_back(setupWithH245(1, "setup with IPv4 H.245 address"));
    {
        Signal s = setup(2);
        s.body()["sourceAddress"].append().choose("h323_ID").setText("bob");
        setIpv4(s.body()["h245Address"], "10.0.0.9", 1720);
        addFastStart(s.body());
        all.push_back(s.message("setup with fast start and H.245 address"));
    }
    {
        Signal s = setup(3);
        Builder::Slot a = s.body()["h245Address"].choose("ip6Address");
        a["ip"].setBytes(fromHex("20010db8000000000000000000000001"));
        a["port"].setInteger(1721);
        all.push_back(s.message("setup with IPv6 H.245 address"));
    }
    {
        Signal s = setup(4);
        Builder::Slot src = s.body()["sourceAddress"];
        src.append().choose("dialedDigits").setText("1234#*,");
        src.append().choose("h323_ID").setText("Ren\xc3\xa9 M\xc3\xbcller");
        src.append().choose("url_ID").setText("h323:alice@example.com");
        setIpv4(src.append().choose("transportID"), "192.168.7.1", 1720);
        src.append().choose("email_ID").setText("alice@example.com");
        Builder::Slot e164 = src.append().choose("partyNumber").choose("e164Number");
        e164["publicTypeOfNumber"].choose("internationalNumber");
        e164["publicNumberDigits"].setText("4930123456");
        Builder::Slot priv = src.append().choose("partyNumber").choose("privateNumber");
        priv["privateTypeOfNumber"].choose("localNumber");
        priv["privateNumberDigits"].setText("4711");
        src.append().choose("partyNumber").choose("dataPartyNumber").setText("99");
        src.append().choose("mobileUIM").choose("gsm_uim")["imsi"].setText("262011234567890");
        Builder::Slot dst = s.body()["destinationAddress"];
        dst.append().choose("h323_ID").setText("carol");
        dst.append().choose("dialedDigits").setText("3000");
        all.push_back(s.message("setup with aliases of every kind"));
    }
    all.push_back(setup(5).message("setup without aliases"));
    {
        Signal s = setup(8);
        // Empty contents take no padding: the components after them start mid-octet.
        Builder::Slot ns = s.body()["sourceInfo"]["nonStandardData"];
        Builder::Slot h221 = ns["nonStandardIdentifier"].choose("h221NonStandard");
        h221["t35CountryCode"].setInteger(181);
        h221["t35Extension"].setInteger(0);
        h221["manufacturerCode"].setInteger(1);
        ns["data"].setBytes("");
        s.body()["destinationAddress"].append().choose("h323_ID").setText("erin");
        all.push_back(s.message("setup with empty non-standard data"));
    }
    {
        Signal s = setup(6);
        s.q931().setElement(Q931::CallingPartyNumber,
                            "\x21\x83"
                            "777");  // octets 3 and 3a
        all.push_back(s.message("setup with calling number octet 3a"));
    }
    for (const Answer& a : kAnswers)
        all.push_back(answerMessage(a));
    for (int n : {1, 2}) {
        Signal s(Q931::Facility, "empty", 0x1100 + n, n == 2);
        s.pdu()["h245Tunneling"].setBool(true);
        Builder::Slot control = s.pdu()["h245Control"];
        control.append().setBytes(fromHex(kTunnelledTerminalCapabilitySet));
        if (n == 2)
            control.append().setBytes(fromHex(kTunnelledOpenLogicalChannel));
        all.push_back(
            s.message(n == 1 ? "empty facility tunnelling one H.245 message" : "empty facility tunnelling two"));
    }
    {
        Signal s(Q931::ReleaseComplete, "releaseComplete", 0x1001, true);
        s.body()["reason"].choose("destinationRejection");
        all.push_back(s.message("release complete without call id"));
    }
    {
        Signal s(Q931::ReleaseComplete, "releaseComplete", 0x1001);
        setCallId(s.body(), 1);
        s.body()["reason"].choose("undefinedReason");
        s.q931().setElement(Q931::Cause, octets({0x80, 0x90}));
        all.push_back(s.message("release complete with call id"));
    }
    {
        Signal s(Q931::ReleaseComplete, "releaseComplete", 0x7fff);
        setCallId(s.body(), 2);
        s.body()["reason"].choose("securityDenied");
        all.push_back(s.message("release complete with extension reason, largest call reference"));
    }
    {
        Signal s = setup(7);
        s.body()["sourceAddress"].append().choose("h323_ID").setText("dave");
        setIpv4(s.body()["h245Address"], "172.16.0.5", 40000);
        s.pdu()["h245Tunneling"].setBool(true);
        setIpv4(s.body()["sourceCallSignalAddress"], "172.16.0.5", 1720);
        s.body()["multipleCalls"].setBool(false);
        s.body()["maintainConnection"].setBool(false);
        all.push_back(s.message("setup with tunnelling and later additions"));
    }
    return all;
}

std::string tpkt(std::string_view pdu) {
    const size_t n = pdu.size() + 4;
    return std::string{char(3), char(0), char(n >> 8), char(n & 0xFF)}.append(pdu);
}

}  // namespace h323::test
