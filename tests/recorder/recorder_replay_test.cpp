// A real call capture played through the recorder by a test client that acts as the sniffer
// does: it forwards every SIP message, and RTP only to the addresses the recorder asked for.
#include "RecorderHarness.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

namespace recorder::test {
namespace {

const std::filesystem::path kCapture = std::filesystem::path(CAPTURES_DIR) / "sip-call-g711.pcap";
const std::string kCallId = "12013223@200.57.7.195";

struct Datagram {
    Endpoint source, destination;
    std::string payload;
};

std::vector<Datagram> udpDatagrams(const std::filesystem::path& capture)
{
    std::istringstream fields(run("tshark -r '" + capture.string() +
                                  "' -Y udp -T fields -E separator=' ' -e ip.src -e udp.srcport -e ip.dst "
                                  "-e udp.dstport -e udp.payload 2>/dev/null"));
    std::vector<Datagram> datagrams;
    std::string sourceIp, destinationIp, hex;
    uint16_t sourcePort, destinationPort;
    while (fields >> sourceIp >> sourcePort >> destinationIp >> destinationPort >> hex) {
        Datagram datagram{endpoint(sourceIp, sourcePort), endpoint(destinationIp, destinationPort), {}};
        for (size_t i = 0; i + 1 < hex.size(); i += 2)
            datagram.payload += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
        datagrams.push_back(std::move(datagram));
    }
    return datagrams;
}

bool looksLikeSip(const std::string& payload)
{
    const std::string firstLine = payload.substr(0, payload.find("\r\n"));
    return firstLine.rfind("SIP/2.0 ", 0) == 0 ||
           (firstLine.size() > 8 && firstLine.compare(firstLine.size() - 8, 8, " SIP/2.0") == 0);
}

size_t countPackets(const std::filesystem::path& capture, const std::string& filter)
{
    const std::string lines = run("tshark -r '" + capture.string() +
                                  "' -d udp.port==8000,rtp -d udp.port==40376,rtp -Y '" + filter + "' 2>/dev/null");
    return static_cast<size_t>(std::count(lines.begin(), lines.end(), '\n'));
}

TEST(RecorderReplay, RealCallKeepsEverySipMessageAndEveryPacketOfItsStreams)
{
    if (!std::filesystem::exists(kCapture))
        GTEST_SKIP() << kCapture << " is not there";
    RecorderProcess recorder;
    {
        TcpSniffer sniffer(recorder.port());
        std::set<Endpoint> forwarded;
        for (const Datagram& datagram : udpDatagrams(kCapture)) {
            const bool sip = looksLikeSip(datagram.payload);
            if (!sip && !forwarded.count(datagram.destination))
                continue;
            sniffer.send(frame(sip ? 1 : 2, datagram.source, datagram.destination, datagram.payload));
            // The sniffer applies commands as they come; here they are read after each SIP message.
            while (sip) {
                const auto command = sniffer.readCommand(50ms);
                if (!command)
                    break;
                const Endpoint address{static_cast<uint32_t>((*command)[1] << 24 | (*command)[2] << 16 |
                                                             (*command)[3] << 8 | (*command)[4]),
                                       static_cast<uint16_t>((*command)[5] << 8 | (*command)[6])};
                if ((*command)[0] == 1)
                    forwarded.insert(address);
                else
                    forwarded.erase(address);
            }
        }
    }
    ASSERT_EQ(recorder.stop(), 0);

    const std::vector<std::string> calls = recorder.waitForCalls(2, 0ms);
    const auto call = std::find_if(calls.begin(), calls.end(), [](const std::string& line) {
        return line.find("\"call_id\":\"" + kCallId + "\"") != std::string::npos;
    });
    ASSERT_NE(call, calls.end()) << recorder.log();
    EXPECT_NE(call->find(R"({"destination":"200.57.7.204:8000","source":"200.57.7.196:40376","speaker":"caller",)"
                         R"("payload_type":8,"codec":"pcma/8000","packets":891,)"),  // as the callee's SDP spells it
              std::string::npos)
        << *call;
    EXPECT_NE(call->find(R"({"destination":"200.57.7.196:40376","source":"200.57.7.204:8000","speaker":"callee",)"
                         R"("payload_type":8,"codec":"PCMA/8000","packets":548,)"),
              std::string::npos);

    const size_t folderStart = call->find("\"folder\":\"") + 10;
    const std::filesystem::path recorded =
        std::filesystem::path(call->substr(folderStart, call->find('"', folderStart) - folderStart)) / "call.pcap";
    const std::string sipOfTheCall = "sip.Call-ID == \"" + kCallId + "\"";
    EXPECT_EQ(countPackets(recorded, sipOfTheCall), countPackets(kCapture, sipOfTheCall));
    EXPECT_EQ(countPackets(recorded, "rtp"), 891u + 548u);
    EXPECT_TRUE(std::filesystem::exists(recorded.parent_path() / "call.wav"));
}

}  // namespace
}  // namespace recorder::test
