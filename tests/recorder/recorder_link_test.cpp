// The recorder against a test client that plays the sniffer: the commands it sends for the
// signalling it reads, over TCP and UDP.
#include "RecorderHarness.h"

#include <gtest/gtest.h>

#include <thread>

namespace recorder::test {
namespace {

Bytes invite(const std::string& callId, const Endpoint& media = kCallerRtp)
{
    return sipFrame(sipRequest("INVITE", callId, sdp(formatIp(media.ip), media.port, 8)));
}

Bytes answer(const std::string& callId)
{
    return sipFrame(sipResponse(200, "INVITE", callId, sdp("10.0.0.2", 5000, 8)), false);
}

// INVITE and 200, and the two commands they bring.
void establish(const TcpSniffer& sniffer, const std::string& callId)
{
    sniffer.send(invite(callId));
    sniffer.send(answer(callId));
    ASSERT_EQ(sniffer.readCommand(), command(1, kCallerRtp));
    ASSERT_EQ(sniffer.readCommand(), command(1, kCalleeRtp));
}

Bytes heartbeatReply()
{
    Bytes reply(15, 0);
    reply[1] = 15;
    reply[2] = 3;
    return reply;
}

TEST(RecorderLink, AsksForEachPartysMediaAndStopsItAtBye)
{
    RecorderProcess recorder({"--linger", "0.2"});
    TcpSniffer sniffer(recorder.port());

    sniffer.send(invite("call-1"));
    EXPECT_EQ(sniffer.readCommand(), (Bytes{1, 10, 0, 0, 1, 0x0f, 0xa0}));
    sniffer.send(sipFrame(sipResponse(180, "INVITE", "call-1"), false));
    sniffer.send(answer("call-1"));
    EXPECT_EQ(sniffer.readCommand(), (Bytes{1, 10, 0, 0, 2, 0x13, 0x88}));
    // The same offer again (a retransmission) asks for nothing new.
    sniffer.send(invite("call-1"));
    sniffer.send(sipFrame(sipRequest("BYE", "call-1", "", true), false));

    EXPECT_EQ(sniffer.readCommand(), command(2, kCallerRtp));
    EXPECT_EQ(sniffer.readCommand(), command(2, kCalleeRtp));
    EXPECT_TRUE(recorder.waitForLog("Call call-1 ended: bye"));
    EXPECT_EQ(sniffer.readCommand(300ms), Bytes{});
}

TEST(RecorderLink, ReinviteMovesTheMediaOfThePartyThatSentIt)
{
    RecorderProcess recorder;
    TcpSniffer sniffer(recorder.port());
    establish(sniffer, "call-2");

    // The callee re-INVITEs with a new port: its old address goes, the caller's stays.
    sniffer.send(sipFrame(sipRequest("INVITE", "call-2", sdp("10.0.0.2", 5002, 8), true), false));
    EXPECT_EQ(sniffer.readCommand(), command(2, kCalleeRtp));
    EXPECT_EQ(sniffer.readCommand(), command(1, "10.0.0.2", 5002));
    EXPECT_EQ(sniffer.readCommand(300ms), Bytes{});
}

TEST(RecorderLink, RefusedAndCancelledCallsStopTheirMediaButChallengesDoNot)
{
    RecorderProcess recorder;
    TcpSniffer sniffer(recorder.port());

    sniffer.send(invite("refused"));
    ASSERT_EQ(sniffer.readCommand(), command(1, kCallerRtp));
    sniffer.send(sipFrame(sipResponse(407, "INVITE", "refused"), false));
    EXPECT_EQ(sniffer.readCommand(300ms), Bytes{});
    sniffer.send(sipFrame(sipResponse(486, "INVITE", "refused"), false));
    EXPECT_EQ(sniffer.readCommand(), command(2, kCallerRtp));
    EXPECT_TRUE(recorder.waitForLog("Call refused ended: rejected 486"));

    sniffer.send(invite("cancelled", Endpoint{0x0a000001, 4100}));
    ASSERT_EQ(sniffer.readCommand(), command(1, "10.0.0.1", 4100));
    sniffer.send(sipFrame(sipRequest("CANCEL", "cancelled")));
    EXPECT_EQ(sniffer.readCommand(), command(2, "10.0.0.1", 4100));
}

TEST(RecorderLink, IdleCallEndsAfterTheIdleTime)
{
    RecorderProcess recorder({"--idle", "0.5", "--linger", "0.1"});
    TcpSniffer sniffer(recorder.port());
    sniffer.send(invite("quiet"));
    ASSERT_EQ(sniffer.readCommand(), command(1, kCallerRtp));

    EXPECT_EQ(sniffer.readCommand(3s), command(2, kCallerRtp));
    const auto calls = recorder.waitForCalls(1);
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_NE(calls[0].find("\"end_reason\":\"idle\""), std::string::npos) << calls[0];
}

TEST(RecorderLink, ReconnectingSnifferIsAskedAgainForTheOpenCalls)
{
    RecorderProcess recorder;
    {
        TcpSniffer sniffer(recorder.port());
        establish(sniffer, "call-3");
    }
    TcpSniffer again(recorder.port());
    EXPECT_EQ(again.readCommand(), command(1, kCallerRtp));
    EXPECT_EQ(again.readCommand(), command(1, kCalleeRtp));
}

TEST(RecorderLink, MalformedFrameClosesTheConnectionAndTheNextIsAccepted)
{
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

TEST(RecorderLink, HeartbeatReplyIsAcceptedAndAMissingOneIsLoggedAsLate)
{
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

TEST(RecorderLink, H323CallMediaFollowsItsDescriptions)
{
    RecorderProcess recorder({"--linger", "0.1"});
    TcpSniffer sniffer(recorder.port());
    const Endpoint caller{0x0a000005, 1720}, callee{0x0a000006, 1720};
    std::string setup = "t:5\nr:42\nc:c0fef93e-cd9e-d611-9ab2-000476222017\ns:alice\nd:bob\n"
                        "m:1:fcodec:g711Alaw64k 20,rtp:10.0.0.5 49170rcodec:g711Alaw64k 20,rtp:10.0.0.6 49172\n";
    setup.back() = '\0';  // the last line end travels as a zero byte
    sniffer.send(frame(4, caller, callee, setup));
    EXPECT_EQ(sniffer.readCommand(), command(1, "10.0.0.5", 49170));
    EXPECT_EQ(sniffer.readCommand(), command(1, "10.0.0.6", 49172));

    std::string ack = "t:131\nr:42\na:2:rtp:10.0.0.6 49174";
    sniffer.send(frame(4, callee, caller, ack + '\0'));
    EXPECT_EQ(sniffer.readCommand(), command(1, "10.0.0.6", 49174));

    sniffer.send(frame(4, callee, caller, std::string("t:90\nr:42") + '\0'));
    EXPECT_EQ(sniffer.readCommand(), command(2, "10.0.0.5", 49170));
    EXPECT_EQ(sniffer.readCommand(), command(2, "10.0.0.6", 49172));
    EXPECT_EQ(sniffer.readCommand(), command(2, "10.0.0.6", 49174));

    const auto calls = recorder.waitForCalls(1);
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_NE(calls[0].find("\"signalling\":\"h323\",\"call_id\":\"c0fef93e-cd9e-d611-9ab2-000476222017\","
                            "\"call_reference\":\"42\",\"caller\":\"alice\",\"callee\":\"bob\""),
              std::string::npos)
        << calls[0];
    EXPECT_NE(calls[0].find("\"end_reason\":\"release complete\""), std::string::npos);
    EXPECT_NE(calls[0].find("{\"address\":\"10.0.0.6:49172\",\"owner\":\"callee\",\"codecs\":[\"g711Alaw64k 20\"]}"),
              std::string::npos);
}

TEST(RecorderLink, UdpSnifferGetsCommandsFromTheListeningPort)
{
    RecorderProcess recorder;
    const UdpSocket sniffer;

    sniffer.sendTo("127.0.0.1", recorder.port(), {0x00, 0x30, 0x01});
    EXPECT_TRUE(recorder.waitForLog("Malformed datagram from 127.0.0.1:"));
    EXPECT_TRUE(recorder.waitForLog(": datagram of 3 bytes carries length 48; dropped"));

    uint16_t from = 0;
    sniffer.sendTo("127.0.0.1", recorder.port(), invite("call-5"));
    EXPECT_EQ(sniffer.receive(2s, &from), command(1, kCallerRtp));
    EXPECT_EQ(from, recorder.port());
    sniffer.sendTo("127.0.0.1", recorder.port(), sipFrame(sipRequest("BYE", "call-5")));
    EXPECT_EQ(sniffer.receive(2s), command(2, kCallerRtp));
}

}  // namespace
}  // namespace recorder::test
