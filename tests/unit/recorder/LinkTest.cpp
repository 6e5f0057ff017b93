// The recorder against a test client that plays the sniffer: the commands it sends for the
// signalling it reads, over TCP and UDP.
#include "RecorderHarness.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

namespace recorder::test {
namespace {

Bytes invite(const std::string& callId, const Endpoint& media = kCallerRtp) {
    return sipFrame(sipRequest("INVITE", callId, sdp(formatIp(media.ip), media.port, 8)));
}

Bytes answer(const std::string& callId) {
    return sipFrame(sipResponse(200, "INVITE", callId, sdp("10.0.0.2", 5000, 8)), false);
}

Bytes heartbeatReply() {
    Bytes reply(15, 0);
    reply[1] = 15;
    reply[2] = 3;
    return reply;
}

// An H.323 description; its last line end travels as a zero byte.
Bytes h323(bool fromCaller, const std::string& description) {
    const Endpoint caller{0x0a000005, 1720}, callee{0x0a000006, 1720};
    return frame(4, fromCaller ? caller : callee, fromCaller ? callee : caller, description + '\0');
}

// A frame from the sniffer and the commands it brings back; none means none within 300 ms,
// as after the last step.
struct Step {
    Bytes frame;
    std::vector<Bytes> commands;
};

struct Script {
    std::string name;
    std::vector<Step> steps;
    std::vector<std::string> ended;       // in the log, then in the call's line of calls.jsonl
    std::vector<Bytes> reconnected = {};  // what a sniffer that connects anew is asked for
};

void PrintTo(const Script& script, std::ostream* out) {
    *out << script.name;
}

class RecorderLinkScript : public ::testing::TestWithParam<Script> {};

TEST_P(RecorderLinkScript, CommandsFollowTheSignalling) {
    RecorderProcess recorder({"--linger", "0.1"});
    std::optional<TcpSniffer> sniffer(std::in_place, recorder.port());
    for (size_t i = 0; i < GetParam().steps.size(); ++i) {
        const Step& step = GetParam().steps[i];
        sniffer->send(step.frame);
        for (const Bytes& expected : step.commands) {
            EXPECT_EQ(sniffer->readCommand(), expected) << "step " << i;
        }
        if (step.commands.empty()) {
            EXPECT_EQ(sniffer->readCommand(300ms), Bytes{}) << "step " << i;
        }
    }
    EXPECT_EQ(sniffer->readCommand(300ms), Bytes{}) << "after the last step";
    if (!GetParam().reconnected.empty()) {
        sniffer.emplace(recorder.port());
        for (const Bytes& expected : GetParam().reconnected) {
            EXPECT_EQ(sniffer->readCommand(), expected) << "after reconnecting";
        }
    }
    const std::vector<std::string>& ended = GetParam().ended;
    if (ended.empty())
        return;
    EXPECT_TRUE(recorder.waitForLog(ended[0])) << recorder.log();
    const auto calls = recorder.waitForCalls(1);
    ASSERT_EQ(calls.size(), 1u);
    for (size_t i = 1; i < ended.size(); ++i)
        EXPECT_NE(calls[0].find(ended[i]), std::string::npos) << ended[i] << " in " << calls[0];
}

INSTANTIATE_TEST_SUITE_P(
    RecorderLink, RecorderLinkScript,
    ::testing::Values(
        Script{"SipCallAsksForEachPartysMediaAndStopsItAtBye",
               {{invite("call-1"), {{1, 10, 0, 0, 1, 0x0f, 0xa0}, {1, 10, 0, 0, 1, 0x0f, 0xa1}}},  // RTP, RTCP
                {sipFrame(sipResponse(180, "INVITE", "call-1"), false), {}},
                {answer("call-1"), {{1, 10, 0, 0, 2, 0x13, 0x88}, {1, 10, 0, 0, 2, 0x13, 0x89}}},
                {invite("call-1"), {}},  // a retransmission asks for nothing new
                {sipFrame(sipRequest("BYE", "call-1", "", true), false),
                 {command(2, kCallerRtp), command(2, "10.0.0.1", 4001), command(2, kCalleeRtp),
                  command(2, "10.0.0.2", 5001)}}},
               {"Call call-1 ended: bye", "\"end_reason\":\"bye\""}},
        Script{"ReinviteMovesTheMediaOfThePartyThatSentItAndAReconnectingSnifferIsAskedAgain",
               {{invite("call-2"), {command(1, kCallerRtp), command(1, "10.0.0.1", 4001)}},
                {answer("call-2"), {command(1, kCalleeRtp), command(1, "10.0.0.2", 5001)}},
                {sipFrame(sipRequest("INVITE", "call-2", sdp("10.0.0.2", 5002, 8), true), false),
                 {command(2, kCalleeRtp), command(2, "10.0.0.2", 5001), command(1, "10.0.0.2", 5002),
                  command(1, "10.0.0.2", 5003)}}},
               {},
               {command(1, kCallerRtp), command(1, "10.0.0.1", 4001), command(1, "10.0.0.2", 5002),
                command(1, "10.0.0.2", 5003)}},
        Script{"ChallengeKeepsTheMediaAndRefusalStopsIt",
               {{invite("refused"), {command(1, kCallerRtp), command(1, "10.0.0.1", 4001)}},
                {sipFrame(sipResponse(407, "INVITE", "refused"), false), {}},
                {sipFrame(sipResponse(486, "INVITE", "refused"), false),
                 {command(2, kCallerRtp), command(2, "10.0.0.1", 4001)}}},
               {"Call refused ended: rejected 486", "\"end_reason\":\"rejected 486\""}},
        Script{"CancelStopsTheMedia",
               {{invite("cancelled", Endpoint{0x0a000001, 4100}),
                 {command(1, "10.0.0.1", 4100), command(1, "10.0.0.1", 4101)}},
                {sipFrame(sipRequest("CANCEL", "cancelled")),
                 {command(2, "10.0.0.1", 4100), command(2, "10.0.0.1", 4101)}}},
               {}},
        Script{"H323CallMediaFollowsItsDescriptions",
               {{h323(true,
                      "t:5\nr:42\nc:c0fef93e-cd9e-d611-9ab2-000476222017\ns:alice\nd:bob\nm:1:fcodec:"
                      "g711Alaw64k 20,rtp:10.0.0.5 49170rcodec:g711Alaw64k 20,rtp:10.0.0.6 49172"),
                 {command(1, "10.0.0.5", 49170), command(1, "10.0.0.5", 49171), command(1, "10.0.0.6", 49172),
                  command(1, "10.0.0.6", 49173)}},
                {h323(false, "t:131\nr:42\na:2:rtp:10.0.0.6 49174"),
                 {command(1, "10.0.0.6", 49174), command(1, "10.0.0.6", 49175)}},
                {h323(false, "t:90\nr:42"),
                 {command(2, "10.0.0.5", 49170), command(2, "10.0.0.5", 49171), command(2, "10.0.0.6", 49172),
                  command(2, "10.0.0.6", 49173), command(2, "10.0.0.6", 49174), command(2, "10.0.0.6", 49175)}}},
               {"Call with H.323 reference 42 ended: release complete",
                "\"signalling\":\"h323\",\"call_id\":\"c0fef93e-cd9e-d611-9ab2-000476222017\","
                "\"call_reference\":\"42\",\"caller\":\"alice\",\"callee\":\"bob\"",
                "\"end_reason\":\"release complete\"",
                "{\"address\":\"10.0.0.6:49172\",\"owner\":\"callee\",\"codecs\":[\"g711Alaw64k 20\"]}"}}),
    [](const ::testing::TestParamInfo<Script>& info) { return info.param.name; });

TEST(RecorderLink, IdleCallEndsAfterTheIdleTime) {
    RecorderProcess recorder({"--idle", "0.5", "--linger", "0.1"});
    TcpSniffer sniffer(recorder.port());
    sniffer.send(invite("quiet"));
    ASSERT_EQ(sniffer.readCommand(), command(1, kCallerRtp));
    ASSERT_EQ(sniffer.readCommand(), command(1, "10.0.0.1", 4001));

    EXPECT_EQ(sniffer.readCommand(3s), command(2, kCallerRtp));
    EXPECT_EQ(sniffer.readCommand(), command(2, "10.0.0.1", 4001));
    const auto calls = recorder.waitForCalls(1);
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_NE(calls[0].find("\"end_reason\":\"idle\""), std::string::npos) << calls[0];
}

TEST(RecorderLink, MalformedFrameClosesTheConnectionAndTheNextIsAccepted) {
    RecorderProcess recorder;
    {
        TcpSniffer sniffer(recorder.port());
        sniffer.send({0x00, 0x0a, 0x01});
        EXPECT_TRUE(sniffer.waitForClose());
        EXPECT_TRUE(recorder.waitForLog("Malformed frame from the sniffer 127.0.0.1:"));
        EXPECT_TRUE(recorder.waitForLog(": length 10 is under the 15-byte header; closing the connection"));
    }
    {
        TcpSniffer sniffer(recorder.port());
        Bytes unknown = frame(9, kCallerSip, kCalleeSip, "x");
        sniffer.send(unknown);
        EXPECT_TRUE(sniffer.waitForClose());
        EXPECT_TRUE(recorder.waitForLog(": unknown protocol 9; closing the connection"));
    }
    // A frame cut across two segments is put back together.
    TcpSniffer sniffer(recorder.port());
    const Bytes whole = invite("call-4");
    sniffer.send(Bytes(whole.begin(), whole.begin() + 5));
    std::this_thread::sleep_for(50ms);
    sniffer.send(Bytes(whole.begin() + 5, whole.end()));
    EXPECT_EQ(sniffer.readCommand(), command(1, kCallerRtp));
}

TEST(RecorderLink, HeartbeatReplyIsAcceptedAndAMissingOneIsLoggedAsLate) {
    RecorderProcess recorder({"--heartbeat", "0.3"});
    TcpSniffer sniffer(recorder.port());
    sniffer.send(heartbeatReply());  // the sniffer connects by sending; a stray reply is harmless

    EXPECT_EQ(sniffer.readCommand(), (Bytes{3, 0, 0, 0, 0, 0, 0}));
    sniffer.send(heartbeatReply());
    EXPECT_EQ(sniffer.readCommand(), (Bytes{3, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(recorder.log().find("Heartbeat reply late"), std::string::npos);

    EXPECT_TRUE(recorder.waitForLog("Heartbeat reply late: none "));
    sniffer.send(heartbeatReply());
    EXPECT_TRUE(recorder.waitForLog("Heartbeat reply received "));
}

TEST(RecorderLink, UdpSnifferGetsCommandsFromTheListeningPort) {
    RecorderProcess recorder;
    const UdpSocket sniffer;

    sniffer.sendTo(recorder.port(), Bytes{0x00, 0x30, 0x01});
    EXPECT_TRUE(recorder.waitForLog("Malformed datagram from 127.0.0.1:"));
    EXPECT_TRUE(recorder.waitForLog(": datagram of 3 bytes carries length 48; dropped"));

    uint16_t from = 0;
    sniffer.sendTo(recorder.port(), invite("call-5"));
    EXPECT_EQ(sniffer.receive(2s, &from), command(1, kCallerRtp));
    EXPECT_EQ(from, recorder.port());
    EXPECT_EQ(sniffer.receive(2s), command(1, "10.0.0.1", 4001));
    sniffer.sendTo(recorder.port(), sipFrame(sipRequest("BYE", "call-5")));
    EXPECT_EQ(sniffer.receive(2s), command(2, kCallerRtp));
    EXPECT_EQ(sniffer.receive(2s), command(2, "10.0.0.1", 4001));
}

}  // namespace
}  // namespace recorder::test
