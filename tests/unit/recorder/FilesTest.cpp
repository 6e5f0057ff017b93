// What the recorder writes for a call: call.pcap read back by tshark, call.json, call.wav and
// the index calls.jsonl.
#include "RecorderHarness.h"
#include "RecordingFiles.h"

#include <gtest/gtest.h>

namespace recorder::test {
namespace {

constexpr uint8_t kPcmu = 0, kPcma = 8;
constexpr uint8_t kAlawLoudest = 0xaa;  // +32256
constexpr uint8_t kUlawLoudest = 0x80;  // +32124

std::string rtp(uint8_t payloadType, uint16_t sequence, uint32_t timestamp, uint32_t ssrc, uint8_t fill) {
    std::string packet = {'\x80', static_cast<char>(payloadType), static_cast<char>(sequence >> 8),
                          static_cast<char>(sequence)};
    for (const uint32_t word : {timestamp, ssrc})
        for (int shift = 24; shift >= 0; shift -= 8)
            packet += static_cast<char>(word >> shift);
    return packet + std::string(160, static_cast<char>(fill));
}

// One call with both media directions, a gap and a swap on the caller's stream, then a
// second call that is refused.
class RecorderFiles : public ::testing::Test {
protected:
    void SetUp() override {
        const auto sip = [&](const std::string& message, bool fromCaller) {
            send(1, fromCaller ? kCallerSip : kCalleeSip, fromCaller ? kCalleeSip : kCallerSip, message);
        };
        sip(sipRequest("INVITE", "call-a@10.0.0.1", sdp("10.0.0.1", 4000, kPcmu)), true);
        sip(sipResponse(180, "INVITE", "call-a@10.0.0.1"), false);
        sip(sipResponse(200, "INVITE", "call-a@10.0.0.1", sdp("10.0.0.2", 5000, kPcma)), false);
        sip(sipRequest("ACK", "call-a@10.0.0.1"), true);

        // Caller to callee, A-law: 102 never comes, 105 overtakes 104.
        for (const uint16_t sequence : {100, 101, 103, 105, 104, 106})
            send(2, kCallerRtp, kCalleeRtp, rtp(kPcma, sequence, 160u * (sequence - 100), 0x1111, kAlawLoudest));
        // Callee to caller, μ-law: one second in order.
        for (uint16_t sequence = 0; sequence < 50; ++sequence)
            send(2, kCalleeRtp, kCallerRtp, rtp(kPcmu, sequence, 160u * sequence, 0x2222, kUlawLoudest));

        sip(sipRequest("BYE", "call-a@10.0.0.1"), true);
        sip(sipResponse(200, "BYE", "call-a@10.0.0.1"), false);

        sip(sipRequest("INVITE", "call-b@10.0.0.1", sdp("10.0.0.1", 4002, kPcmu)), true);
        sip(sipResponse(486, "INVITE", "call-b@10.0.0.1"), false);
        sip(sipRequest("ACK", "call-b@10.0.0.1"), true);

        calls = recorder.waitForCalls(2);
        ASSERT_EQ(calls.size(), 2u);
        folder = jsonValue(calls[0], "folder");
    }

    void send(uint8_t protocol, const Endpoint& source, const Endpoint& destination, const std::string& payload) {
        sniffer.send(frame(protocol, source, destination, payload));
        sent.push_back({toString(source) + " > " + toString(destination), payload});
    }

    RecorderProcess recorder{{"--linger", "0.3"}};
    TcpSniffer sniffer{recorder.port()};
    std::vector<std::pair<std::string, std::string>> sent;  // direction and payload, in order
    std::vector<std::string> calls;
    std::string folder;
};

TEST_F(RecorderFiles, IndexHasOneLinePerCallInTheOrderTheyEndedAndCallJsonTheSameRecord) {
    EXPECT_NE(calls[0].find("\"call_id\":\"call-a@10.0.0.1\",\"caller\":\"sip:alice@10.0.0.1\","
                            "\"callee\":\"sip:bob@10.0.0.2\""),
              std::string::npos)
        << calls[0];
    EXPECT_EQ(jsonValue(calls[0], "end_reason"), "bye");
    EXPECT_EQ(jsonValue(calls[1], "call_id"), "call-b@10.0.0.1");
    EXPECT_EQ(jsonValue(calls[1], "end_reason"), "rejected 486");
    EXPECT_EQ(jsonValue(calls[1], "signalling_packets"), "3");
    EXPECT_NE(calls[1].find("\"files\":{\"pcap\":\"call.pcap\",\"wav\":null}"), std::string::npos);

    // call.json holds the same record laid out over lines.
    const std::string json = readFile(folder + "/call.json");
    EXPECT_EQ(compactJson(json), calls[0]);
    EXPECT_NE(json.find("\"signalling_packets\": 6"), std::string::npos) << json;
    EXPECT_NE(json.find(R"("address": "10.0.0.1:4000",
      "owner": "caller",
      "codecs": [
        "PCMU/8000"
      ])"),
              std::string::npos)
        << json;

    // Each stream counted with its losses and reordering.
    EXPECT_NE(calls[0].find(R"({"destination":"10.0.0.2:5000","source":"10.0.0.1:4000","speaker":"caller",)"
                            R"("payload_type":8,"codec":"PCMA/8000","packets":6,"bytes":1032,"lost":1,)"
                            R"("out_of_order":1,"decoded":true,"wav_channel":0,)"),
              std::string::npos)
        << calls[0];
    EXPECT_NE(calls[0].find(R"({"destination":"10.0.0.1:4000","source":"10.0.0.2:5000","speaker":"callee",)"
                            R"("payload_type":0,"codec":"PCMU/8000","packets":50,"bytes":8600,"lost":0,)"
                            R"("out_of_order":0,"decoded":true,"wav_channel":1,)"),
              std::string::npos)
        << calls[0];
}

TEST_F(RecorderFiles, PcapHoldsEveryPacketOfTheCallByteForByteInArrivalOrder) {
    const std::vector<Packet> packets = readPackets(folder + "/call.pcap", {});
    const size_t callA = 6 + 6 + 50;
    ASSERT_EQ(packets.size(), callA);
    for (size_t i = 0; i < callA; ++i) {
        EXPECT_EQ(packets[i].direction(), sent[i].first) << "packet " << i;
        EXPECT_EQ(packets[i].payload, sent[i].second) << "packet " << i;
    }
}

TEST_F(RecorderFiles, WavHasOneChannelPerDirectionAndTheCallsLength) {
    const Wav wav = readWav(folder + "/call.wav");
    ASSERT_EQ(wav.channels, 2u);
    ASSERT_EQ(wav.rate, 8000u);
    EXPECT_GE(wav.seconds(), 1.0);  // the callee's second of audio...
    EXPECT_LT(wav.seconds(), 1.2);  // ...placed by arrival, which differs by a few milliseconds at most

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

TEST(RecorderShutdown, StopSignalArchivesOpenCallsAndExitsCleanly) {
    RecorderProcess recorder;
    {
        TcpSniffer sniffer(recorder.port());
        sniffer.send(sipFrame(sipRequest("INVITE", "open-call", sdp("10.0.0.1", 4000, 0))));
        ASSERT_FALSE(sniffer.readCommand().empty());
    }
    EXPECT_EQ(recorder.stop(), 0);
    const auto calls = recorder.waitForCalls(1, 0ms);
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(jsonValue(calls[0], "end_reason"), "shutdown") << calls[0];
}

}  // namespace
}  // namespace recorder::test
