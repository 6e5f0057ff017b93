// The synthetic H.323 call played on lo, recorded by the recorder through the
// sniffer: the recorder learns the media from the call's descriptions.
#include "Network.h"
#include "Programs.h"
#include "Recording.h"
#include "SyntheticCall.h"
#include "RecordingFiles.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <unistd.h>

namespace {

constexpr unsigned kRtpPackets = 100;

// The value of a description's line that starts with `prefix` ("r:", "c:", ...).
std::string descriptionLine(const std::string& description, const std::string& prefix) {
    std::istringstream lines(description);
    for (std::string line; std::getline(lines, line);)
        if (line.compare(0, prefix.size(), prefix) == 0)
            return line.substr(prefix.size());
    return "";
}

TEST(H323Recording, SyntheticCallIsRecordedWithTheMediaItsDescriptionsAnnounce) {
    if (geteuid() != 0)
        GTEST_SKIP() << "live capture on lo needs root";
    if (onPath("tshark").empty())
        GTEST_SKIP() << "tshark is not installed (scripts/setup installs it)";

    // Signalling and H.245 on ports of this run; the generator's media ports are fixed.
    const unsigned base = portBlock();
    h323call::Addresses addresses;
    addresses.h245Port = base + 1;
    const std::vector<h323call::Step> steps = h323call::syntheticCall(addresses);
    const std::string caller = "127.0.0.1:" + std::to_string(addresses.callerRtpPort);
    const std::string callee = "127.0.0.1:" + std::to_string(addresses.calleeRtpPort);

    TempDir dir;
    Recording recording(dir,
                        "tcp portrange " + std::to_string(base) + "-" + std::to_string(base + 1) + " or udp port " +
                            std::to_string(addresses.callerRtpPort) + " or udp port " +
                            std::to_string(addresses.calleeRtpPort),
                        "TCP");
    ASSERT_TRUE(recording.waitUntilReady(10s)) << recording.logs();
    ChildProcess call({H323CALL_PROGRAM, "--port", std::to_string(base), "--h245-port", std::to_string(base + 1),
                       "--rtp-packets", std::to_string(kRtpPackets), "--media-delay-ms", "2000"},
                      dir.file("call.log"));
    ASSERT_TRUE(call.waitFor(30s));
    ASSERT_EQ(call.exitStatus(), 0) << readFile(dir.file("call.log"));
    recording.waitForCalls(1, 10s);
    recording.stop();

    const std::vector<std::string> calls = recording.calls();
    ASSERT_EQ(calls.size(), 1u) << recording.logs();
    const std::string folder = jsonValue(calls[0], "folder");
    EXPECT_EQ(compactJson(readFile(folder + "/call.json")), calls[0]);

    const std::string& setup = steps.front().description;
    EXPECT_EQ(jsonValue(calls[0], "signalling"), "h323");
    EXPECT_EQ(jsonValue(calls[0], "call_reference"), descriptionLine(setup, "r:"));
    EXPECT_EQ(jsonValue(calls[0], "call_id"), descriptionLine(setup, "c:"));
    EXPECT_EQ(jsonValue(calls[0], "caller"), descriptionLine(setup, "s:"));
    EXPECT_EQ(jsonValue(calls[0], "callee"), descriptionLine(setup, "d:"));
    EXPECT_EQ(jsonValue(calls[0], "end_reason"), "release complete");
    EXPECT_EQ(jsonValue(calls[0], "signalling_packets"), std::to_string(steps.size()));

    const std::map<std::string, uint64_t> expected = {{caller + " > " + callee, kRtpPackets},
                                                      {callee + " > " + caller, kRtpPackets}};
    std::vector<std::string> streams;
    for (const auto& [direction, packets] : expected)
        streams.push_back(streamRecord(direction, "PCMU/8000", packets));
    EXPECT_EQ(streamRecords(calls[0]), streams);

    // call.pcap holds the RTP only: the signalling reaches the recorder as descriptions.
    std::map<std::string, uint64_t> recorded;
    for (const Packet& packet : readPackets(folder + "/call.pcap", {addresses.callerRtpPort, addresses.calleeRtpPort}))
        ++recorded[packet.rtp ? packet.direction() : "not RTP"];
    EXPECT_EQ(recorded, expected);

    const Wav wav = readWav(folder + "/call.wav");
    EXPECT_EQ(wav.channels, 2u);
    EXPECT_GE(wav.seconds(), kRtpPackets * 0.02 - 0.001);
    EXPECT_LE(wav.seconds(), kRtpPackets * 0.02 + 1.1);
}

}  // namespace
