// The quality the recorder measures per stream: sequence counts and gaps, RTCP reports, the
// E-model's MOS and RFC 4733 digits; then all of it through the recorder process.
#include "Dtmf.h"
#include "EModel.h"
#include "RecorderHarness.h"
#include "Rtcp.h"
#include "Sdp.h"
#include "StreamQuality.h"
#include "RecordingFiles.h"

#include <gtest/gtest.h>

namespace recorder::test {
namespace {

std::string be(uint32_t value, int bytes) {
    std::string out;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        out += static_cast<char>(value >> shift);
    return out;
}

std::string rtp(uint8_t type, uint16_t sequence, uint32_t timestamp, uint32_t ssrc, const std::string& payload) {
    return "\x80" + be(type, 1) + be(sequence, 2) + be(timestamp, 4) + be(ssrc, 4) + payload;
}

std::string audio(uint16_t sequence, uint32_t timestamp, uint32_t ssrc = 0x1111) {
    return rtp(8, sequence, timestamp, ssrc, std::string(160, '\xd5'));
}

// RFC 4733: event, end bit, volume 10, duration.
std::string dtmf(uint16_t sequence, uint32_t timestamp, uint8_t event, uint16_t duration, bool end) {
    return rtp(101, sequence, timestamp, 0x1111, be(event, 1) + be(end ? 0x8a : 0x0a, 1) + be(duration, 2));
}

std::string senderReport(uint32_t ssrc, uint32_t timestamp, uint32_t packets) {
    return "\x80\xc8" + be(6, 2) + be(ssrc, 4) + be(0xe0000000, 4) + be(0, 4) + be(timestamp, 4) + be(packets, 4) +
           be(packets * 160, 4);
}

std::string receiverReport(uint32_t reporter, uint32_t source, uint8_t fraction, int32_t lost, uint32_t jitter) {
    return "\x81\xc9" + be(7, 2) + be(reporter, 4) + be(source, 4) + be(fraction, 1) + be(lost & 0xffffff, 3) +
           be(1017, 4) + be(jitter, 4) + be(0, 4) + be(0, 4);
}

// SDES with one CNAME item, and BYE; both are skipped.
const std::string kSdesAndBye = std::string("\x81\xca\x00\x03", 4) + be(0x2222, 4) +
                                std::string("\x01\x02hi\0\0\0\0", 8) + std::string("\x81\xcb\x00\x01", 4) +
                                be(0x2222, 4);

RtpPacket packet(const std::string& bytes) {
    return *parseRtp(bytes);
}

TEST(RecorderQuality, SequenceCountsAndTheLongestGapInMediaTime) {
    StreamQuality quality;
    const TimePoint now{};
    // 12 comes after 13 (out of order), 13 twice (duplicate), 15 to 17 never (lost): the
    // longest gap is 14 to 18, 4 x 160 samples = 80 ms at 8000 Hz.
    for (const uint16_t sequence : {10, 11, 13, 12, 13, 14, 18, 19})
        quality.add(packet(audio(sequence, 160u * (sequence - 10))), now, 8000);
    QualitySummary summary = quality.summary(8000);
    EXPECT_EQ(summary.received, 7u);
    EXPECT_EQ(summary.lost, 3u);
    EXPECT_EQ(summary.duplicates, 1u);
    EXPECT_EQ(summary.outOfOrder, 1u);
    EXPECT_DOUBLE_EQ(summary.longestGapMs, 80.0);
    EXPECT_DOUBLE_EQ(summary.packetMs, 20.0);
    EXPECT_EQ(summary.lostBeforeFirst, 0u);  // no SR
    EXPECT_FALSE(summary.jitterMs);
    EXPECT_DOUBLE_EQ(quality.summary(48000).longestGapMs, 640 / 48.0);

    // A repeat is known within the last 1024 numbers only; an older one counts as late.
    SequenceCounter counter;
    for (const uint16_t sequence : {1, 2000, 1000, 1000, 1})
        counter.add(sequence);
    EXPECT_EQ(counter.duplicates(), 1u);
    EXPECT_EQ(counter.outOfOrder(), 2u);

    EXPECT_EQ(clockRate("opus/48000/2"), 48000);
    EXPECT_EQ(clockRate("G722/16000"), 8000);  // RFC 3551's G.722 clock, whatever the name says
    EXPECT_EQ(clockRate("L16/16000"), 16000);
    EXPECT_EQ(clockRate("g711Alaw64k 20"), 8000);
}

TEST(RecorderQuality, RtcpCompoundGivesTheReceiversJitterAndWhatWasLostBeforeTheFirstPacket) {
    // The sender's SR and SDES, then its receiver's RR, SDES, BYE and a truncated SR.
    const RtcpCompound fromSender = parseRtcp(senderReport(0x1111, 2720, 18) + kSdesAndBye);
    const RtcpCompound fromReceiver =
        parseRtcp(receiverReport(0x2222, 0x1111, 64, -2, 80) + kSdesAndBye + senderReport(0x2222, 0, 1).substr(0, 20));
    ASSERT_EQ(fromSender.senderReports.size(), 1u);
    EXPECT_EQ(fromSender.senderReports[0].packetCount, 18u);
    EXPECT_TRUE(fromSender.blocks.empty());
    EXPECT_TRUE(fromReceiver.senderReports.empty());
    ASSERT_EQ(fromReceiver.blocks.size(), 1u);
    EXPECT_EQ(fromReceiver.blocks[0].reporter, 0x2222u);
    EXPECT_EQ(fromReceiver.blocks[0].cumulativeLost, -2);
    EXPECT_TRUE(parseRtcp(audio(1, 1)).blocks.empty());
    EXPECT_TRUE(looksLikeRtcp(senderReport(1, 1, 1)));
    EXPECT_FALSE(parseRtp(senderReport(1, 1, 1)));

    // Received: 1005 to 1017 but 1010. The SR, sent after 1017, counts 18 packets: the sender
    // began at 1017 + 1 - 18 = 1000, so 1000 to 1004 were sent before the first received.
    StreamQuality quality;
    for (uint16_t sequence = 1005; sequence <= 1017; ++sequence)
        if (sequence != 1010)
            quality.add(packet(audio(sequence, 160u * (sequence - 1000))), TimePoint{}, 8000);
    quality.addSenderReport(fromSender.senderReports[0]);
    // An SR sent after 1012 (timestamp 1920 + 80) that arrives late: its timestamp places it
    // 5 packets before 1017, and 1012 + 1 - 13 gives 1000 again.
    quality.addSenderReport({0x1111, 2000, 13, 0});
    // One with a count that would put the first packet at 995: the lowest count is kept.
    quality.addSenderReport({0x1111, 2720, 23, 0});
    quality.addReportBlock(fromReceiver.blocks[0]);
    const QualitySummary summary = quality.summary(8000);
    EXPECT_EQ(summary.lostBeforeFirst, 5u);
    EXPECT_EQ(summary.lost, 6u);
    EXPECT_DOUBLE_EQ(*summary.jitterMs, 10.0);  // 80 timestamp units at 8000 Hz
    EXPECT_DOUBLE_EQ(*summary.rtcpFractionLost, 0.25);
    EXPECT_EQ(*summary.rtcpCumulativeLost, -2);
}

TEST(RecorderQuality, MosFromTheEModel) {
    // G.711, no loss, no jitter, 20 ms packets: Id = 0.024 x 20 = 0.48, Ie,eff = 0, R = 92.72,
    // MOS = 1 + 0.035 R + R (R - 60)(100 - R) 7e-6 = 1 + 3.2452 + 0.1546 = 4.40.
    EXPECT_DOUBLE_EQ(*EModel::mos("PCMA/8000", 0, 0, 20), 4.40);
    // G.711, 5 % lost: Ie,eff = 95 x 5 / (5 + 25.1) = 15.78, R = 76.94, MOS = 3.90.
    EXPECT_DOUBLE_EQ(*EModel::mos("PCMU/8000", 5, 0, 20), 3.90);
    // G.729, 2 % lost, 10 ms jitter: delay 2 x 10 + 20 = 40, Id = 0.96,
    // Ie,eff = 11 + 84 x 2 / (2 + 19) = 19, R = 73.24, MOS = 3.745..., 3.75.
    EXPECT_NEAR(EModel::rating(*EModel::impairment("G729/8000"), 2, 10, 20), 73.24, 1e-9);
    // 100 ms jitter: delay 220, Id = 5.28 + 0.11 x 42.7 = 9.977, R = 83.223, MOS = 4.14.
    EXPECT_DOUBLE_EQ(*EModel::mos("g711Alaw64k 20", 0, 100, 20), 4.14);
    // A jitter buffer holds 300 ms at most: 1 s of jitter rates as 150 ms, delay 320,
    // Id = 7.68 + 0.11 x 142.7 = 23.377, R = 69.823, MOS = 3.589, 3.59.
    EXPECT_DOUBLE_EQ(*EModel::mos("PCMA/8000", 0, 1000, 20), 3.59);
    EXPECT_DOUBLE_EQ(EModel::mos(-5), 1.0);
    EXPECT_FALSE(EModel::mos("speex/8000", 0, 0, 20));
}

TEST(RecorderQuality, Rfc4733DigitsOncePerEvent) {
    DtmfEvents digits;
    const TimePoint start = Clock::from_time_t(1700000000);
    int sequence = 0;
    const auto add = [&](uint32_t timestamp, uint8_t event, uint16_t duration, bool end, int ms) {
        digits.add(packet(dtmf(++sequence, timestamp, event, duration, end)), start + Milliseconds(ms), 8000, "caller");
    };
    // "5": 100 ms, its end packet three times; "#": still going when the call ends; event 16
    // (flash) is no digit.
    for (const uint16_t duration : {160, 320, 480})
        add(1000, 5, duration, false, duration / 8);
    for (int i = 0; i < 3; ++i)
        add(1000, 5, 800, true, 100 + i);
    add(5000, 11, 160, false, 500);
    add(9000, 16, 160, false, 900);
    EXPECT_EQ(Json(digits.toJson()).dump(),
              R"([{"digit":"5","start":"2023-11-14T22:13:20.020Z","duration_ms":100,"speaker":"caller"},)"
              R"({"digit":"#","start":"2023-11-14T22:13:20.500Z","duration_ms":20,"speaker":"caller"}])");
}

// The offer names its RTCP port, the answer leaves it to the RTP port + 1.
std::string offer(uint16_t port, const std::string& rtcp) {
    return "v=0\r\no=- 1 1 IN IP4 10.0.0.1\r\ns=-\r\nc=IN IP4 10.0.0.1\r\nt=0 0\r\nm=audio " + std::to_string(port) +
           " RTP/AVP 8 101\r\na=rtpmap:101 telephone-event/8000\r\n" + rtcp;
}

TEST(RecorderQuality, RecorderAsksForRtcpAndWritesTheQualityOfEachStream) {
    RecorderProcess recorder({"--linger", "0.1"});
    TcpSniffer sniffer(recorder.port());
    const Endpoint callerRtcp{kCallerRtp.ip, 4005}, calleeRtcp{kCalleeRtp.ip, 5001};
    sniffer.send(sipFrame(sipRequest("INVITE", "q-1", offer(4000, "a=rtcp:4005\r\n"))));
    EXPECT_EQ(sniffer.readCommand(), command(1, kCallerRtp));
    EXPECT_EQ(sniffer.readCommand(), command(1, callerRtcp));
    std::string answer = offer(5000, "");
    answer.replace(answer.find("10.0.0.1"), 8, "10.0.0.2").replace(answer.find("10.0.0.1"), 8, "10.0.0.2");
    sniffer.send(sipFrame(sipResponse(200, "INVITE", "q-1", answer), false));
    EXPECT_EQ(sniffer.readCommand(), command(1, kCalleeRtp));
    EXPECT_EQ(sniffer.readCommand(), command(1, calleeRtcp));

    // The caller's audio as in the RTCP test, with the digit 5 as 1011 to 1015 in place of
    // audio; 1016 resumes 100 ms after the digit began.
    const auto send = [&](const Endpoint& from, const Endpoint& to, const std::string& payload) {
        sniffer.send(frame(2, from, to, payload));
    };
    for (uint16_t sequence = 1005; sequence <= 1009; ++sequence)
        send(kCallerRtp, kCalleeRtp, audio(sequence, 160u * (sequence - 1000)));
    send(kCallerRtp, kCalleeRtp, dtmf(1011, 1760, 5, 160, false));
    send(kCallerRtp, kCalleeRtp, dtmf(1012, 1760, 5, 320, false));
    for (uint16_t sequence = 1013; sequence <= 1015; ++sequence)
        send(kCallerRtp, kCalleeRtp, dtmf(sequence, 1760, 5, 800, true));
    send(kCallerRtp, kCalleeRtp, audio(1016, 2560));
    send(kCallerRtp, kCalleeRtp, audio(1017, 2720));
    send(callerRtcp, calleeRtcp, senderReport(0x1111, 2720, 18) + kSdesAndBye);
    send(calleeRtcp, callerRtcp, receiverReport(0x2222, 0x1111, 64, 6, 80) + kSdesAndBye);
    sniffer.send(sipFrame(sipRequest("BYE", "q-1")));
    for (const Endpoint& address : {kCallerRtp, callerRtcp, kCalleeRtp, calleeRtcp})
        EXPECT_EQ(sniffer.readCommand(), command(2, address));

    const auto calls = recorder.waitForCalls(1);
    ASSERT_EQ(calls.size(), 1u);
    // One stream: RTCP makes none. 12 packets of 1000 to 1017 came, 1010 did not and 1000 to 1004
    // came before the first: 6 of 18 lost. MOS: PCMA, 33.3 % lost, the receiver's 10 ms jitter,
    // 20 ms packets: Ie,eff = 95 x 33.3 / (33.3 + 25.1) = 54.19, Id = 0.96, R = 38.05, MOS = 1.97.
    EXPECT_NE(calls[0].find(R"("streams":[{"destination":"10.0.0.2:5000","source":"10.0.0.1:4000",)"
                            R"("speaker":"caller","payload_type":8,"codec":"PCMA/8000","packets":12,)"
                            R"("bytes":1284,"lost":6,"out_of_order":0,"decoded":true,"wav_channel":0,"duplicates":0,)"
                            R"("lost_before_first":5,"longest_gap_ms":140.000,"jitter_ms":10.000,)"
                            R"("rtcp_fraction_lost":0.250,"rtcp_cumulative_lost":6,"jitter_at_recorder_ms":)"),
              std::string::npos)
        << calls[0];
    EXPECT_NE(calls[0].find(R"("mos":1.970}],"dtmf":[{"digit":"5","start":")"), std::string::npos) << calls[0];
    EXPECT_NE(calls[0].find(R"("duration_ms":100,"speaker":"caller"}])"), std::string::npos) << calls[0];

    // RTCP is in call.pcap all the same: 3 SIP messages, 12 RTP and 2 RTCP packets.
    EXPECT_EQ(readPackets(jsonValue(calls[0], "folder") + "/call.pcap", {}).size(), 17u);
}

}  // namespace
}  // namespace recorder::test
