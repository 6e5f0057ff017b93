// Writes the H.323 inputs of the golden corpus (tests/golden/h323/*.segments)
// from messages built with the toolkit's encoder:
//   golden_h323_cases FOLDER
// Each file is a sequence of TCP payloads between two endpoints, one a line.
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "Bytes.h"
#include "ChannelMessages.h"
#include "Messages.h"

using namespace channeltest;
using h323::Q931;
using h323::test::Signal;

namespace {

const char* const kCaller = "10.0.0.1:1720";
const char* const kCallee = "10.0.0.2:40001";
const char* const kH245Peer = "10.0.0.1:33000";  // the caller's end of the separate H.245 connection

class CaseFile {
public:
    CaseFile(const std::string& folder, const std::string& name, const std::string& about)
        : out(folder + "/" + name + ".segments") {
        out << "# " << about << "\n";
    }
    void trace() { out << "trace\n"; }
    // A TCP payload as it is, "-" when empty.
    void segment(const std::string& payload, const char* from = kCaller, const char* to = kCallee) {
        const std::string hex = h323::test::hex(std::vector<uint8_t>(payload.begin(), payload.end()));
        out << from << " " << to << " " << (hex.empty() ? "-" : hex) << "\n";
    }
    // A message framed with TPKT.
    void pdu(const std::string& pdu, const char* from = kCaller, const char* to = kCallee) {
        segment(h323::test::tpkt(pdu), from, to);
    }

private:
    std::ofstream out;
};

Channel g711Both(unsigned lcn) {
    return {lcn,
            {"g711Ulaw64k", 20, MediaAddress::ipv4("10.0.0.5", 49170)},
            true,
            {"g711Ulaw64k", 20, MediaAddress::ipv4("10.0.0.5", 49172)}};
}

// Announces 10.0.0.2:40001 as the H.245 address of call 4097 in a Connect.
std::string connectWithH245Address() {
    Signal connect = h323::test::answer(Q931::Connect, "connect", 1);
    h323::test::setIpv4(connect.body()["h245Address"], "10.0.0.2", 40001);
    return connect.encoded();
}

void notTpkt(const std::string& folder) {
    CaseFile c(folder, "not-tpkt-framed",
               "Segments not framed with TPKT version 3 and a length are not described; "
               "a length that disagrees with the segment is not checked.");
    std::string framed = h323::test::tpkt(h323::test::setup(1).encoded());
    framed[0] = 2;
    c.segment(framed);
    framed[0] = 3;
    framed[2] = framed[3] = 0;
    c.segment(framed);
    c.segment("");
    framed[3] = 7;
    c.segment(framed);
}

void fastStartSetup(const std::string& folder) {
    CaseFile c(folder, "fast-start-setup",
               "A fast-start Setup names the parties and each proposal; an undecodable "
               "proposal is logged; fast start wins over the H.245 address.");
    Signal s = h323::test::setup(1);
    s.body()["sourceAddress"].append().choose("h323_ID").setText("alice");
    s.body()["destinationAddress"].append().choose("dialedDigits").setText("2000");
    h323::test::setIpv4(s.body()["h245Address"], "10.0.0.1", 1721);
    h323::per::Builder::Slot fastStart = s.body()["fastStart"];
    fastStart.append().setBytes(openLogicalChannel(g711Both(1)));
    fastStart.append().setBytes(openLogicalChannel({2, {"g729", 2, MediaAddress::ipv4("10.0.0.5", 49174)}}));
    fastStart.append().setBytes("\xff");  // not an OpenLogicalChannel
    c.pdu(s.encoded());
}

void setupWithoutAliases(const std::string& folder) {
    CaseFile c(folder, "setup-without-aliases",
               "Without aliases the parties are the Q.931 numbers; without those they are empty.");
    c.pdu(h323::test::setup(1).encoded());
    Signal bare = h323::test::setup(1);
    bare.q931().clear();
    bare.q931().setMessageType(Q931::Setup);
    bare.q931().setCallReference(0x1001, false);
    c.pdu(bare.encoded());
}

void separateH245(const std::string& folder) {
    CaseFile c(folder, "separate-h245-follows-the-call",
               "H.245 on an unknown connection is dropped; an announced H.245 address ties the connection (either "
               "direction) to the call until a ReleaseComplete naming the call.");
    const std::string olc = openLogicalChannelRequest(g711Both(1));
    c.pdu(olc, kH245Peer, kCallee);
    c.pdu(connectWithH245Address());
    c.pdu(olc, kH245Peer, kCallee);
    c.pdu(openLogicalChannelAck(1, MediaAddress::ipv4("10.0.0.2", 5000), MediaAddress::ipv4("10.0.0.2", 5002)), kCallee,
          kH245Peer);
    Signal anonymous(Q931::ReleaseComplete, "releaseComplete", 0x1001, true);
    anonymous.body()["reason"].choose("destinationRejection");
    c.pdu(anonymous.encoded());
    Signal release(Q931::ReleaseComplete, "releaseComplete", 0x1001, true);
    h323::test::setCallId(release.body(), 1);
    release.body()["reason"].choose("undefinedReason");
    c.pdu(release.encoded());
}

void nonIpv4H245(const std::string& folder) {
    CaseFile c(folder, "non-ipv4-h245-address", "An H.245 address that is not IPv4 is reported and not followed.");
    Signal connect = h323::test::answer(Q931::Connect, "connect", 1);
    connect.body()["h245Address"].choose("netBios").setBytes(std::string(16, 'n'));
    c.pdu(connect.encoded());
}

void tunnelledFacility(const std::string& folder) {
    CaseFile c(folder, "empty-facility-tunnelled-h245",
               "An empty Facility describes its tunnelled channels and digits; digits alone are not forwarded.");
    Signal facility(Q931::Facility, "empty", 0x1002, false);
    facility.pdu()["h245Tunneling"].setBool(true);
    h323::per::Builder::Slot control = facility.pdu()["h245Control"];
    control.append().setBytes(masterSlaveDetermination());
    control.append().setBytes(userInputAlphanumeric("42"));
    control.append().setBytes(openLogicalChannelRequest(g711Both(3)));
    c.pdu(facility.encoded());
    Signal digits(Q931::Facility, "empty", 0x1002, false);
    digits.pdu()["h245Control"].append().setBytes(userInputAlphanumeric("7"));
    c.pdu(digits.encoded());
}

void channelRules(const std::string& folder) {
    CaseFile c(folder, "channel-codec-and-media-rules",
               "Video has no codec line; media that is IPv6 or multicast is logged and left out; an ack without "
               "addresses is described empty.");
    c.pdu(connectWithH245Address());
    c.pdu(openLogicalChannelRequest({4, {"h261", 0, MediaAddress::ipv4("10.0.0.5", 49180)}}), kH245Peer, kCallee);
    c.pdu(openLogicalChannelRequest({5, {"g7231", 4, {MediaAddress::Ipv6, "", 49182}}}), kH245Peer, kCallee);
    c.pdu(openLogicalChannelRequest({6, {"g711Alaw64k", 30, {MediaAddress::Multicast, "224.0.1.2", 5004}}}), kH245Peer,
          kCallee);
    c.pdu(openLogicalChannelAck(7, {}, {}), kCallee, kH245Peer);
}

void undescribed(const std::string& folder) {
    CaseFile c(folder, "only-dispatched-messages-described",
               "Status, a body that does not match the message type, no user-user element and stand-alone H.245 "
               "other than a channel are not forwarded.");
    c.pdu(h323::test::answer(Q931::Status, "status", 1).encoded());
    c.pdu(h323::test::answer(Q931::Setup, "alerting", 1).encoded());
    const std::vector<uint8_t> noUserUser = h323::test::setup(1).q931().encode();
    c.pdu(std::string(noUserUser.begin(), noUserUser.end()));
    c.pdu(masterSlaveDetermination());
}

void information(const std::string& folder) {
    CaseFile c(folder, "information-digits", "Information carries the dialled digits.");
    Signal info = h323::test::answer(Q931::Information, "information", 1, false);
    info.q931().setPartyNumber(Q931::CalledPartyNumber, "5#", 0, 1);
    c.pdu(info.encoded());
}

void trace(const std::string& folder) {
    CaseFile c(folder, "trace-at-info",
               "With the signalling trace on, the H.245 message is logged at once, then the whole segment.");
    c.trace();
    Signal facility(Q931::Facility, "empty", 0x1002, false);
    facility.pdu()["h245Control"].append().setBytes(openLogicalChannelRequest(g711Both(3)));
    c.pdu(facility.encoded());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: golden_h323_cases FOLDER\n";
        return 2;
    }
    const std::string folder = argv[1];
    for (auto write : {notTpkt, fastStartSetup, setupWithoutAliases, separateH245, nonIpv4H245, tunnelledFacility,
                       channelRules, undescribed, information, trace})
        write(folder);
    return 0;
}
