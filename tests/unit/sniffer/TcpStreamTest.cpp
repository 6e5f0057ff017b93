// Messages taken from reassembled TCP streams: SIP framed by Content-Length
// (SipOverTcp) and H.323 TPKT messages (ReassembleH323), however the
// segments cut or pack them. Frames go through the engine's queue and
// consumer to a real recorder on 127.0.0.1.
#include <gtest/gtest.h>

#include <pcap.h>

#include "CaptureFile.h"
#include "ChildProcess.h"
#include "Frames.h"
#include "LogCapture.h"
#include "Messages.h"
#include "Recorder.h"
#include "SnifferRun.h"
#include "TsharkCapture.h"

namespace {
const Bytes markerPayload = bytesOf("SIP/2.0 200 marker");
const Bytes marker = udpFrame({"10.9.9.9", 5060}, {"10.9.9.8", 5060}, markerPayload);
const Endpoint callee{"10.0.0.2", 5060};

const std::string invite =
    "INVITE sip:2041@10.0.0.2 SIP/2.0\r\nVia: SIP/2.0/TCP 10.0.0.1:40000\r\nCall-ID: tcp@10.0.0.1\r\n"
    "CSeq: 1 INVITE\r\nContent-Type: application/sdp\r\nContent-Length: 28\r\n\r\n"
    "v=0\r\nc=IN IP4 10.0.0.1\r\nm=au";
const std::string ack = "ACK sip:2041@10.0.0.2 SIP/2.0\r\nCall-ID: tcp@10.0.0.1\r\nCSeq: 1 ACK\r\n\r\n";

Bytes segment(Endpoint src, Endpoint dst, uint32_t seq, const std::string& stream, std::size_t from, std::size_t to,
              uint8_t flags = 0x18) {
    FrameOptions options;
    options.tcpSeq = seq + uint32_t(from);
    options.tcpFlags = flags;
    return tcpFrame(src, dst, bytesOf(stream.substr(from, to - from)), options);
}

class TcpStreams : public testing::Test {
protected:
    void start() {
        run = std::make_unique<SnifferRun>(
            std::vector<std::string>{"-d", "", "-h", "127.0.0.1", "-p", std::to_string(recorder.port())}, "TCP");
        ASSERT_EQ(0, run->setupResult());
        capture(marker);
        ASSERT_TRUE(recorder.next());
    }

    // Every frame forwarded for `frames`, up to the marker captured after them.
    std::vector<ForwardedFrame> forwardedFor(const std::vector<Bytes>& frames) {
        for (const Bytes& frame : frames)
            capture(frame);
        capture(marker);
        std::vector<ForwardedFrame> out;
        while (const auto received = recorder.next()) {
            if (received->payload() == markerPayload)
                return out;
            out.push_back(*received);
        }
        ADD_FAILURE() << "the marker did not arrive";
        return out;
    }

    LogCapture log;
    TcpRecorder recorder;
    std::unique_ptr<SnifferRun> run;
};

class SipOverTcp : public TcpStreams {
protected:
    OptionInEnvironment on{"SipOverTcp", "yes"};
};

TEST_F(SipOverTcp, TwoMessagesCutAtEveryByteInOrderOrNotAreForwardedOnceEachByteExact) {
    start();
    const std::string stream = invite + ack;
    for (std::size_t cut = 1; cut < stream.size(); ++cut) {
        const Endpoint caller{"10.0.0.1", uint16_t(20000 + cut)};  // a connection of its own for each cut
        const uint32_t seq = 0xFFFFFF00u;                          // its sequence numbers wrap
        std::vector<Bytes> segments = {segment(caller, callee, seq - 1, "", 0, 0, 0x02),  // SYN
                                       segment(caller, callee, seq, stream, 0, cut),
                                       segment(caller, callee, seq, stream, cut, stream.size())};
        if (cut % 50 == 0)  // the second part first, then the first again over it
            segments = {segments[0], segments[2], segments[1], segment(caller, callee, seq, stream, 0, cut + 1)};
        const std::vector<ForwardedFrame> frames = forwardedFor(segments);
        ASSERT_EQ(2u, frames.size()) << "cut at " << cut;
        EXPECT_EQ(bytesOf(invite), frames[0].payload()) << "cut at " << cut;
        EXPECT_EQ(bytesOf(ack), frames[1].payload()) << "cut at " << cut;
        EXPECT_EQ(1, frames[1].protocol());
        EXPECT_EQ("10.0.0.1:" + std::to_string(caller.port), frames[1].source());
        EXPECT_EQ("10.0.0.2:5060", frames[1].destination());
    }
    run->stop();
    EXPECT_TRUE(log.contains("INFO", "Opt-in settings: SipOverTcp=yes"));
}

TEST_F(SipOverTcp, AStreamPickedUpInsideAMessageFindsTheNextOneAndTsharkReadsTheSame) {
    start();
    const std::string stream = invite + "\r\n\r\n" + ack;  // keep-alives between messages
    const Endpoint caller{"10.0.0.1", 40000};
    const std::vector<Bytes> segments = {segment(caller, callee, 7, stream, 40, 200),
                                         segment(caller, callee, 7, stream, 200, stream.size())};
    const std::vector<ForwardedFrame> frames = forwardedFor(segments);
    ASSERT_EQ(1u, frames.size());
    EXPECT_EQ(bytesOf(ack), frames[0].payload());

    // From its start, the stream gives what tshark finds in it.
    const Endpoint other{"10.0.0.1", 40001};
    const std::string both = invite + ack;
    const std::vector<Bytes> whole = {segment(other, callee, 7, both, 0, 100),
                                      segment(other, callee, 7, both, 100, both.size())};
    const TempDir dir;
    writeCapture(dir.file("sip.pcap"), DLT_EN10MB, whole);
    EXPECT_EQ(std::vector<std::string>{"1 INVITE,1 ACK"},
              tshark::fieldRows(dir.file("sip.pcap"), {"-o", "tcp.desegment_tcp_streams:TRUE", "-e", "sip.CSeq"}));
    const std::vector<ForwardedFrame> fromStart = forwardedFor(whole);
    ASSERT_EQ(2u, fromStart.size());
    EXPECT_EQ(bytesOf(invite), fromStart[0].payload());
}

class ReassemblingH323 : public TcpStreams {
protected:
    const Endpoint terminal{"10.0.0.5", 1720};
    const Endpoint gatekeeper{"10.0.0.6", 40100};
    std::string message(uint8_t seed) { return h323::test::tpkt(h323::test::setup(seed).encoded()); }
};

TEST_F(ReassemblingH323, SeveralMessagesInOneSegmentAndOneOverThreeAreDescribedAsEachAlone) {
    std::vector<Bytes> expected;
    {
        start();  // the classic engine, one message a segment: the descriptions to match
        for (uint8_t seed = 1; seed <= 4; ++seed)
            for (const ForwardedFrame& frame :
                 forwardedFor({segment(gatekeeper, terminal, 1, message(seed), 0, message(seed).size())}))
                expected.push_back(frame.bytes);
        ASSERT_EQ(4u, expected.size());
        run.reset();
    }
    OptionInEnvironment on{"ReassembleH323", "yes"};
    start();
    const std::string three = message(1) + message(2) + message(3);
    std::vector<Bytes> described;
    for (const ForwardedFrame& frame : forwardedFor({segment(gatekeeper, terminal, 1, three, 0, three.size())}))
        described.push_back(frame.bytes);
    const std::string fourth = message(4);
    const uint32_t seq = 1 + uint32_t(three.size());
    for (const ForwardedFrame& frame : forwardedFor({segment(gatekeeper, terminal, seq, fourth, 0, 5),
                                                     segment(gatekeeper, terminal, seq, fourth, 5, 30),
                                                     segment(gatekeeper, terminal, seq, fourth, 30, fourth.size())}))
        described.push_back(frame.bytes);
    EXPECT_EQ(expected, described);
}

}  // namespace
