// What the recorder writes for a call: call.pcap read back by tshark, call.json, call.wav and
// the index calls.jsonl.
#include "RecorderHarness.h"

#include <gtest/gtest.h>

#include <cstring>

namespace recorder::test {
namespace {

constexpr uint8_t kPcmu = 0, kPcma = 8;
constexpr uint8_t kAlawLoudest = 0xaa;  // +32256
constexpr uint8_t kUlawLoudest = 0x80;  // +32124

struct WavFile {
    uint16_t channels = 0;
    uint32_t rate = 0;
    std::vector<int16_t> samples;  // interleaved
};

WavFile readWav(const std::filesystem::path& path)
{
    const std::string bytes = readFile(path);
    WavFile wav;
    if (bytes.size() < 44 || bytes.compare(0, 4, "RIFF") != 0 || bytes.compare(36, 4, "data") != 0)
        return wav;
    std::memcpy(&wav.channels, bytes.data() + 22, 2);
    std::memcpy(&wav.rate, bytes.data() + 24, 4);
    wav.samples.resize((bytes.size() - 44) / 2);
    std::memcpy(wav.samples.data(), bytes.data() + 44, wav.samples.size() * 2);
    return wav;
}

// One call with both media directions, a gap and a swap on the caller's stream, then a
// second call that is refused.
class RecorderFiles : public ::testing::Test {
protected:
    void SetUp() override
    {
        TcpSniffer sniffer(recorder.port());
        const auto sip = [&](const std::string& message, bool fromCaller) {
            sniffer.send(frame(1, fromCaller ? kCallerSip : kCalleeSip, fromCaller ? kCalleeSip : kCallerSip,
                               message));
        };
        sip(sipRequest("INVITE", "call-a@10.0.0.1", sdp("10.0.0.1", 4000, kPcmu)), true);
        sip(sipResponse(180, "INVITE", "call-a@10.0.0.1"), false);
        sip(sipResponse(200, "INVITE", "call-a@10.0.0.1", sdp("10.0.0.2", 5000, kPcma)), false);
        sip(sipRequest("ACK", "call-a@10.0.0.1"), true);

        // Caller to callee, A-law: 102 never comes, 105 overtakes 104.
        for (const uint16_t sequence : {100, 101, 103, 105, 104, 106})
            sniffer.send(frame(2, kCallerRtp, kCalleeRtp,
                               rtp(kPcma, sequence, 160u * (sequence - 100), 0x1111, kAlawLoudest)));
        // Callee to caller, μ-law: one second in order.
        for (uint16_t sequence = 0; sequence < 50; ++sequence)
            sniffer.send(
                frame(2, kCalleeRtp, kCallerRtp, rtp(kPcmu, sequence, 160u * sequence, 0x2222, kUlawLoudest)));

        sip(sipRequest("BYE", "call-a@10.0.0.1"), true);
        sip(sipResponse(200, "BYE", "call-a@10.0.0.1"), false);

        sip(sipRequest("INVITE", "call-b@10.0.0.1", sdp("10.0.0.1", 4002, kPcmu)), true);
        sip(sipResponse(486, "INVITE", "call-b@10.0.0.1"), false);
        sip(sipRequest("ACK", "call-b@10.0.0.1"), true);

        calls = recorder.waitForCalls(2);
        ASSERT_EQ(calls.size(), 2u);
        folder = recorder.output() / calls[0].substr(calls[0].find("\"folder\":\"") + 10);
        folder = folder.string().substr(0, folder.string().find('"'));
    }

    RecorderProcess recorder{{"--linger", "0.3"}};
    std::vector<std::string> calls;
    std::filesystem::path folder;
};

TEST_F(RecorderFiles, IndexHasOneLinePerCallInTheOrderTheyEnded)
{
    EXPECT_NE(calls[0].find("\"call_id\":\"call-a@10.0.0.1\",\"caller\":\"sip:alice@10.0.0.1\","
                            "\"callee\":\"sip:bob@10.0.0.2\""),
              std::string::npos)
        << calls[0];
    EXPECT_NE(calls[0].find("\"end_reason\":\"bye\""), std::string::npos);
    EXPECT_NE(calls[1].find("\"call_id\":\"call-b@10.0.0.1\""), std::string::npos) << calls[1];
    EXPECT_NE(calls[1].find("\"end_reason\":\"rejected 486\""), std::string::npos);
    EXPECT_NE(calls[1].find("\"signalling_packets\":3"), std::string::npos);
    EXPECT_NE(calls[1].find("\"files\":{\"pcap\":\"call.pcap\",\"wav\":null}"), std::string::npos);
}

TEST_F(RecorderFiles, CallJsonCountsEachStreamWithItsLossesAndReordering)
{
    const std::string json = readFile(folder / "call.json");
    EXPECT_NE(json.find("\"signalling_packets\": 6"), std::string::npos) << json;
    EXPECT_NE(json.find(R"("address": "10.0.0.1:4000",
      "owner": "caller",
      "codecs": [
        "PCMU/8000"
      ])"), std::string::npos) << json;

    // The index holds the same record on one line.
    EXPECT_NE(calls[0].find(R"({"destination":"10.0.0.2:5000","source":"10.0.0.1:4000","speaker":"caller",)"
                            R"("payload_type":8,"codec":"PCMA/8000","packets":6,"bytes":1032,"lost":1,)"
                            R"("out_of_order":1,"wav_channel":0})"),
              std::string::npos)
        << calls[0];
    EXPECT_NE(calls[0].find(R"({"destination":"10.0.0.1:4000","source":"10.0.0.2:5000","speaker":"callee",)"
                            R"("payload_type":0,"codec":"PCMU/8000","packets":50,"bytes":8600,"lost":0,)"
                            R"("out_of_order":0,"wav_channel":1})"),
              std::string::npos)
        << calls[0];
}

TEST_F(RecorderFiles, PcapHoldsEverySipAndRtpPacketWithItsAddresses)
{
    const std::string fields =
        run("tshark -r '" + (folder / "call.pcap").string() +
            "' -d udp.port==4000,rtp -d udp.port==5000,rtp -T fields -E separator=' ' "
            "-e ip.src -e udp.srcport -e ip.dst -e udp.dstport -e sip.Method -e sip.Status-Code -e rtp.seq "
            "2>/dev/null");
    std::vector<std::string> lines;
    std::istringstream in(fields);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    ASSERT_EQ(lines.size(), 6u + 6u + 50u) << fields;
    EXPECT_EQ(lines[0], "10.0.0.1 5060 10.0.0.2 5060 INVITE  ");
    EXPECT_EQ(lines[2], "10.0.0.2 5060 10.0.0.1 5060  200 ");
    EXPECT_EQ(lines[4], "10.0.0.1 4000 10.0.0.2 5000   100");
    EXPECT_EQ(lines[7], "10.0.0.1 4000 10.0.0.2 5000   105");
    EXPECT_EQ(lines[10], "10.0.0.2 5000 10.0.0.1 4000   0");
    EXPECT_EQ(lines[60], "10.0.0.1 5060 10.0.0.2 5060 BYE  ");
    EXPECT_EQ(lines[61], "10.0.0.2 5060 10.0.0.1 5060  200 ");
}

TEST_F(RecorderFiles, WavHasOneChannelPerDirectionAndTheCallsLength)
{
    const WavFile wav = readWav(folder / "call.wav");
    ASSERT_EQ(wav.channels, 2);
    ASSERT_EQ(wav.rate, 8000u);
    const double seconds = static_cast<double>(wav.samples.size()) / 2 / 8000;
    EXPECT_GE(seconds, 1.0);  // the callee's second of audio...
    EXPECT_LT(seconds, 1.2);  // ...placed by arrival, which differs by a few milliseconds at most

    // The caller speaks on channel 0 (A-law), the callee on 1 (μ-law).
    const auto firstSound = [&](size_t channel) {
        for (size_t i = channel; i < wav.samples.size(); i += 2)
            if (wav.samples[i] != 0)
                return wav.samples[i];
        return int16_t{0};
    };
    EXPECT_EQ(firstSound(0), 32256);
    EXPECT_EQ(firstSound(1), 32124);
    EXPECT_NE(calls[0].find("\"files\":{\"pcap\":\"call.pcap\",\"wav\":\"call.wav\"}"), std::string::npos);
}

TEST(RecorderShutdown, StopSignalArchivesOpenCallsAndExitsCleanly)
{
    RecorderProcess recorder;
    {
        TcpSniffer sniffer(recorder.port());
        sniffer.send(frame(1, kCallerSip, kCalleeSip, sipRequest("INVITE", "open-call", sdp("10.0.0.1", 4000, 0))));
        ASSERT_TRUE(sniffer.readCommand());
    }
    EXPECT_EQ(recorder.stop(), 0);
    const auto calls = recorder.waitForCalls(1, 0ms);
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_NE(calls[0].find("\"end_reason\":\"shutdown\""), std::string::npos) << calls[0];
}

}  // namespace
}  // namespace recorder::test
