// A real call capture played through the recorder by a test client that acts as the sniffer
// does: it forwards every SIP message, and RTP only to the addresses the recorder asked for.
#include "RecorderHarness.h"
#include "SharedCaptures.h"
#include "RecordingFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace recorder::test {
namespace {

const std::string kCapture = sharedCapture("sip-call-g711.pcap");
const std::string kCallId = "12013223@200.57.7.195";
const std::vector<unsigned> kRtpPorts = {8000, 40376};

Endpoint endpoint(const std::string& address) {
    const size_t colon = address.find(':');
    return {*parseIp(address.substr(0, colon)), static_cast<uint16_t>(std::stoi(address.substr(colon + 1)))};
}

size_t count(const std::vector<Packet>& packets, bool (*wanted)(const Packet&)) {
    return static_cast<size_t>(std::count_if(packets.begin(), packets.end(), wanted));
}

TEST(RecorderReplay, RealCallKeepsEverySipMessageAndEveryPacketOfItsStreams) {
    REQUIRE_SHARED_CAPTURE(kCapture);
    const std::vector<Packet> captured = readPackets(kCapture, {});
    RecorderProcess recorder;
    {
        TcpSniffer sniffer(recorder.port());
        std::set<Bytes> forwarded;  // the commands that added an address still in force
        for (const Packet& packet : captured) {
            const bool sip = !packet.cseq.empty();
            if (!sip && !forwarded.count(command(1, endpoint(packet.to))))
                continue;
            sniffer.send(frame(sip ? 1 : 2, endpoint(packet.from), endpoint(packet.to), packet.payload));
            // The sniffer applies commands as they come; here they are read after each SIP message.
            for (Bytes reply; sip && !(reply = sniffer.readCommand(50ms)).empty();) {
                const bool add = reply[0] == 1;
                reply[0] = 1;
                if (add)
                    forwarded.insert(reply);
                else
                    forwarded.erase(reply);
            }
        }
    }
    ASSERT_EQ(recorder.stop(), 0);

    const std::vector<std::string> calls = recorder.waitForCalls(2, 0ms);
    const auto call = std::find_if(calls.begin(), calls.end(),
                                   [](const std::string& line) { return jsonValue(line, "call_id") == kCallId; });
    ASSERT_NE(call, calls.end()) << recorder.log();
    EXPECT_NE(call->find(R"({"destination":"200.57.7.204:8000","source":"200.57.7.196:40376","speaker":"caller",)"
                         R"("payload_type":8,"codec":"pcma/8000","packets":891,)"),  // as the callee's SDP spells it
              std::string::npos)
        << *call;
    EXPECT_NE(call->find(R"({"destination":"200.57.7.196:40376","source":"200.57.7.204:8000","speaker":"callee",)"
                         R"("payload_type":8,"codec":"PCMA/8000","packets":548,)"),
              std::string::npos);

    const std::string folder = jsonValue(*call, "folder");
    const std::vector<Packet> recorded = readPackets(folder + "/call.pcap", kRtpPorts);
    const auto ofTheCall = [](const Packet& packet) { return packet.callId == kCallId; };
    EXPECT_EQ(count(recorded, ofTheCall), count(captured, ofTheCall));
    EXPECT_EQ(count(recorded, [](const Packet& packet) { return packet.rtp; }), 891u + 548u);
    EXPECT_TRUE(std::filesystem::exists(folder + "/call.wav"));
}

}  // namespace
}  // namespace recorder::test
