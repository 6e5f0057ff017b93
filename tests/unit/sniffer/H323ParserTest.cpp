// The call descriptions the sniffer forwards for H.323 signalling, from
// messages built with the toolkit's encoder and framed as on the wire.
#include <arpa/inet.h>
#include <gtest/gtest.h>

#include "ChannelMessages.h"
#include "H323Parser.h"
#include "LogCapture.h"
#include "Messages.h"

using namespace channeltest;
using h323::Q931;
using h323::test::Signal;

namespace {

// guid(1) of the test messages, as text.
const char* const kGuid1 = "112e4b68-85a2-bfdc-f916-33506d8aa7c4";

struct Endpoint {
    const char* ip;
    unsigned port;
};
const Endpoint kCaller{"10.0.0.1", 1720};
const Endpoint kCallee{"10.0.0.2", 40001};
const Endpoint kH245Peer{"10.0.0.1", 33000};   // the caller's end of the separate H.245 connection

class H323ParserTest : public ::testing::Test {
protected:
    // Frames `pdu` as a TCP payload behind the 15 bytes of the forwarded
    // header, as the dissector hands it over, and describes it.
    bool describe(const std::string& pdu, Endpoint from = kCaller, Endpoint to = kCallee) {
        return describeSegment(h323::test::tpkt(pdu), from, to);
    }
    bool describeSegment(const std::string& tcpPayload, Endpoint from = kCaller, Endpoint to = kCallee) {
        std::string segment = std::string(15, '\0') + tcpPayload;
        text.clear();
        return parser.parseH323(reinterpret_cast<u_char*>(segment.data()), int(segment.size()), 15, inet_addr(from.ip),
                                inet_addr(to.ip), from.port, to.port, text);
    }
    static Channel g711Both(unsigned lcn) {
        return {lcn, {"g711Ulaw64k", 20, MediaAddress::ipv4("10.0.0.5", 49170)}, true,
                {"g711Ulaw64k", 20, MediaAddress::ipv4("10.0.0.5", 49172)}};
    }
    // Announces 10.0.0.2:40001 as the H.245 address of call 4097 in a Connect.
    void connectWithH245Address() {
        Signal connect = h323::test::answer(Q931::Connect, "connect", 1);
        h323::test::setIpv4(connect.body()["h245Address"], kCallee.ip, kCallee.port);
        ASSERT_TRUE(describe(connect.encoded()));
    }

    LogCapture log;
    H323Parser parser;
    std::string text;
};

TEST_F(H323ParserTest, SegmentsThatAreNotTpktFramedAreNotDescribed) {
    std::string framed = h323::test::tpkt(h323::test::setup(1).encoded());
    framed[0] = 2;
    EXPECT_FALSE(describeSegment(framed));
    framed[0] = 3;
    framed[2] = framed[3] = 0;
    EXPECT_FALSE(describeSegment(framed));
    EXPECT_FALSE(describeSegment(""));
    EXPECT_EQ(text, "");
    // A TPKT length that disagrees with the segment is not checked.
    framed[3] = 7;
    EXPECT_TRUE(describeSegment(framed));
}

TEST_F(H323ParserTest, FastStartSetupDescribesCallPartiesAndEachProposal) {
    Signal s = h323::test::setup(1);
    s.body()["sourceAddress"].append().choose("h323_ID").setText("alice");
    s.body()["destinationAddress"].append().choose("dialedDigits").setText("2000");
    h323::test::setIpv4(s.body()["h245Address"], "10.0.0.1", 1721);
    h323::per::Builder::Slot fastStart = s.body()["fastStart"];
    fastStart.append().setBytes(openLogicalChannel(g711Both(1)));
    fastStart.append().setBytes(openLogicalChannel({2, {"g729", 2, MediaAddress::ipv4("10.0.0.5", 49174)}}));
    fastStart.append().setBytes("\xff");  // not an OpenLogicalChannel

    ASSERT_TRUE(describe(s.encoded()));
    EXPECT_EQ(text, std::string("t:5\nr:4097\nc:") + kGuid1 +
                        "\ns:alice\nd:2000\n"
                        "m:1:fcodec:g711Ulaw64k 20,rtp:10.0.0.5 49170rcodec:g711Ulaw64k 20,rtp:10.0.0.5 49172\n"
                        "m:2:fcodec:g729 0,rtp:10.0.0.5 49174\n");
    EXPECT_TRUE(log.contains("DEBUG", std::string("SETUP CallId: ") + kGuid1));
    EXPECT_TRUE(log.contains("DEBUG", "SETUP (H225) Caller: alice"));
    EXPECT_TRUE(log.contains("DEBUG", "SETUP (H225) Callee: 2000"));
    EXPECT_TRUE(log.contains("DEBUG", "H323 fast-start parameter decode failed"));
    // Fast start wins over the H.245 address: the call is not followed.
    EXPECT_TRUE(parser.getCallRefMap().empty());
    EXPECT_TRUE(parser.getH245Map().empty());
}

TEST_F(H323ParserTest, SetupWithoutAliasesNamesThePartiesByTheirQ931Numbers) {
    ASSERT_TRUE(describe(h323::test::setup(1).encoded()));
    EXPECT_EQ(text, std::string("t:5\nr:4097\nc:") + kGuid1 + "\ns:5551000\nd:5552000\n");
    EXPECT_TRUE(log.contains("DEBUG", "SETUP (Q931) Caller: 5551000"));

    Signal bare = h323::test::setup(1);
    bare.q931().clear();
    bare.q931().setMessageType(Q931::Setup);
    bare.q931().setCallReference(0x1001, false);
    ASSERT_TRUE(describe(bare.encoded()));
    EXPECT_EQ(text, std::string("t:5\nr:4097\nc:") + kGuid1 + "\ns:\nd:\n");
}

TEST_F(H323ParserTest, AnnouncedH245AddressTiesSeparateH245ToTheCallUntilTheReleaseNamingIt) {
    // Unknown connection: the channel is dropped and the maps dumped.
    const std::string olc = openLogicalChannelRequest(g711Both(1));
    EXPECT_FALSE(describe(olc, kH245Peer, kCallee));
    EXPECT_TRUE(log.contains("ERROR", "Dropping pkt as received OLC does not match existing session"));
    EXPECT_TRUE(log.contains("DEBUG", "Tx IP:Port=10.0.0.1:33000\nRx IP:Port=10.0.0.2:40001"));
    EXPECT_TRUE(log.contains("DEBUG", "CallRefMap is empty"));

    connectWithH245Address();
    EXPECT_EQ(text, std::string("t:7\nr:4097\nc:") + kGuid1 + "\n");
    EXPECT_TRUE(log.contains("DEBUG", "Inserted 4097 and 10.0.0.2:40001 into Call Reference Map"));
    EXPECT_TRUE(log.contains("DEBUG", "Inserted 10.0.0.2:40001 and 4097 into H245 Map"));

    // Either direction of the H.245 connection finds the call.
    ASSERT_TRUE(describe(olc, kH245Peer, kCallee));
    EXPECT_EQ(text, "t:130\nr:4097\nm:1:fcodec:g711Ulaw64k 20,rtp:10.0.0.5 49170rcodec:g711Ulaw64k 20,rtp:10.0.0.5 49172\n");
    const std::string ack =
        openLogicalChannelAck(1, MediaAddress::ipv4("10.0.0.2", 5000), MediaAddress::ipv4("10.0.0.2", 5002));
    ASSERT_TRUE(describe(ack, kCallee, kH245Peer));
    EXPECT_EQ(text, "t:131\nr:4097\na:1:rtp:10.0.0.2 5000rtp:10.0.0.2 5002\n");

    // A ReleaseComplete without a call id leaves the call in the maps...
    Signal anonymous(Q931::ReleaseComplete, "releaseComplete", 0x1001, true);
    anonymous.body()["reason"].choose("destinationRejection");
    ASSERT_TRUE(describe(anonymous.encoded()));
    EXPECT_EQ(text, "t:90\nr:4097\n");
    EXPECT_EQ(parser.getCallRefMap().size(), 1u);
    EXPECT_EQ(parser.getH245Map().size(), 1u);
    // ... the one that names the call ends its entries.
    Signal release(Q931::ReleaseComplete, "releaseComplete", 0x1001, true);
    h323::test::setCallId(release.body(), 1);
    release.body()["reason"].choose("undefinedReason");
    ASSERT_TRUE(describe(release.encoded()));
    EXPECT_EQ(text, std::string("t:90\nr:4097\nc:") + kGuid1 + "\n");
    EXPECT_TRUE(log.contains("DEBUG", std::string("ReleaseComplete CallId: ") + kGuid1 + " CallRef:4097"));
    EXPECT_TRUE(log.contains("DEBUG", "Erased 4097 and 10.0.0.2:40001 from Call Reference Map"));
    EXPECT_TRUE(log.contains("DEBUG", "Erased 10.0.0.2:40001 and 4097 from H245 Map"));
    EXPECT_TRUE(parser.getH245Map().empty());
}

TEST_F(H323ParserTest, NonIpv4H245AddressIsReportedAndNotFollowed) {
    Signal connect = h323::test::answer(Q931::Connect, "connect", 1);
    connect.body()["h245Address"].choose("netBios").setBytes(std::string(16, 'n'));
    ASSERT_TRUE(describe(connect.encoded()));
    EXPECT_TRUE(log.contains("DEBUG", "CONNECT has h245 address which is not IPv4"));
    EXPECT_TRUE(log.contains("ERROR", "netBios"));
    EXPECT_TRUE(parser.getCallRefMap().empty());
}

TEST_F(H323ParserTest, EmptyFacilityDescribesItsTunnelledChannelsWithoutMapLookup) {
    Signal facility(Q931::Facility, "empty", 0x1002, false);
    facility.pdu()["h245Tunneling"].setBool(true);
    h323::per::Builder::Slot control = facility.pdu()["h245Control"];
    control.append().setBytes(masterSlaveDetermination());
    control.append().setBytes(userInputAlphanumeric("42"));
    control.append().setBytes(openLogicalChannelRequest(g711Both(3)));
    ASSERT_TRUE(describe(facility.encoded()));
    EXPECT_EQ(text, "t:98\nr:4098\ni:42\n"
                    "m:3:fcodec:g711Ulaw64k 20,rtp:10.0.0.5 49170rcodec:g711Ulaw64k 20,rtp:10.0.0.5 49172\n");

    // Tunnelled digits alone are not forwarded.
    Signal digits(Q931::Facility, "empty", 0x1002, false);
    digits.pdu()["h245Control"].append().setBytes(userInputAlphanumeric("7"));
    EXPECT_FALSE(describe(digits.encoded()));
    EXPECT_TRUE(log.contains("DEBUG", "H.245 DTMF Passed: 7"));
}

TEST_F(H323ParserTest, ChannelDescriptionsFollowTheCodecAndMediaRules) {
    connectWithH245Address();
    const struct {
        Direction forward;
        const char* description;
        const char* logged;
    } cases[] = {
        {{"h261", 0, MediaAddress::ipv4("10.0.0.5", 49180)}, "m:4:rtp:10.0.0.5 49180\n", nullptr},
        {{"g7231", 4, {MediaAddress::Ipv6, "", 49182}},
         "m:5:fcodec:g7231 0,\n",
         "MediaChannel address is not IPv4. iP6Address is not supported"},
        {{"g711Alaw64k", 30, {MediaAddress::Multicast, "224.0.1.2", 5004}},
         "m:6:fcodec:g711Alaw64k 30,\n",
         "MediaChannel Address is not Unicast. multicastAddress is not supported"},
    };
    unsigned lcn = 4;
    for (const auto& c : cases) {
        ASSERT_TRUE(describe(openLogicalChannelRequest({lcn++, c.forward}), kH245Peer, kCallee));
        EXPECT_EQ(text, std::string("t:130\nr:4097\n") + c.description);
        if (c.logged) {
            EXPECT_TRUE(log.contains("DEBUG", c.logged));
        }
    }
    ASSERT_TRUE(describe(openLogicalChannelAck(7, {}, {}), kCallee, kH245Peer));
    EXPECT_EQ(text, "t:131\nr:4097\na:7:\n");
}

TEST_F(H323ParserTest, OnlyTheDispatchedMessagesWithTheirOwnBodyAreDescribed) {
    EXPECT_FALSE(describe(h323::test::answer(Q931::Status, "status", 1).encoded()));
    EXPECT_EQ(text, "t:125\nr:4097\n");  // its lines stay, but nothing is forwarded
    EXPECT_FALSE(describe(h323::test::answer(Q931::Setup, "alerting", 1).encoded()));
    const std::vector<uint8_t> noUserUser = h323::test::setup(1).q931().encode();
    EXPECT_FALSE(describe(std::string(noUserUser.begin(), noUserUser.end())));
    // Stand-alone H.245 other than a channel is never described.
    EXPECT_FALSE(describe(masterSlaveDetermination()));
}

TEST_F(H323ParserTest, InformationCarriesTheDialledDigits) {
    Signal info = h323::test::answer(Q931::Information, "information", 1, false);
    info.q931().setPartyNumber(Q931::CalledPartyNumber, "5#", 0, 1);
    ASSERT_TRUE(describe(info.encoded()));
    EXPECT_EQ(text, std::string("t:123\nr:4097\nc:") + kGuid1 + "\ni:5#\n");
    EXPECT_TRUE(log.contains("DEBUG", "Digit: 5#"));
}

TEST_F(H323ParserTest, CallMapsKeepTheirDocumentedAsymmetryAndTextOrder) {
    parser.updateMaps("9", H323Parser::h245Addr("10.0.0.2", 40001));
    parser.updateMaps("10", H323Parser::h245Addr("10.0.0.3", 40001));
    parser.updateMaps("9", H323Parser::h245Addr("10.0.0.2", 40002));
    EXPECT_EQ(parser.getCallRefMap().size(), 2u);
    EXPECT_EQ(parser.getH245Map().size(), 3u);  // the first address of call 9 stays
    log.clear();
    parser.displayCallIdMap();
    const std::vector<std::string> expected = {
        "Call Ref Map --- Key = 10, Value = 10.0.0.3:40001",
        "Call Ref Map --- Key = 9, Value = 10.0.0.2:40002",
        "h245Map --- Key = 10.0.0.2:40001, Value = 9",
        "h245Map --- Key = 10.0.0.2:40002, Value = 9",
        "h245Map --- Key = 10.0.0.3:40001, Value = 10",
    };
    EXPECT_EQ(log.messages("DEBUG"), expected);

    H323Parser empty;
    log.clear();
    empty.displayCallIdMap();
    EXPECT_EQ(log.messages("DEBUG"), (std::vector<std::string>{"CallRefMap is empty", "h245Map is empty"}));
}

TEST_F(H323ParserTest, TraceLogsTheDecodedMessagesAtInfo) {
    parser.setTraceSignalling(true);
    Signal facility(Q931::Facility, "empty", 0x1002, false);
    facility.pdu()["h245Control"].append().setBytes(openLogicalChannelRequest(g711Both(3)));
    ASSERT_TRUE(describe(facility.encoded()));
    const std::vector<std::string> info = log.messages("INFO");
    ASSERT_EQ(info.size(), 2u);
    // The H.245 message at once, then the whole segment's trace.
    EXPECT_EQ(info[0].rfind("\n=== H245 Message ===\nrequest openLogicalChannel {", 0), 0u) << info[0];
    EXPECT_NE(info[1].find("\n=== Q931 Message ===\n"), std::string::npos);
    EXPECT_NE(info[1].find("\n=== H323 Message ===\n{"), std::string::npos);
    EXPECT_NE(info[1].find("h323_message_body = empty"), std::string::npos) << info[1];
    EXPECT_NE(info[1].find("\n=== H245 Message ===\nrequest openLogicalChannel {"), std::string::npos);
    EXPECT_NE(info[1].find("forwardLogicalChannelNumber = 3"), std::string::npos);
}

}  // namespace
