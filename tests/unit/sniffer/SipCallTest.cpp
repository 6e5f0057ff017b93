// A real call on the loopback: SIPp as caller and callee, RTP from SIPp's
// G.711 capture, the engine capturing `lo`, tcpdump and tshark as the
// independent count of what crossed the wire.
#include <gtest/gtest.h>

#include <csignal>
#include <thread>

#include "ChildProcess.h"
#include "LogCapture.h"
#include "Network.h"
#include "Programs.h"
#include "Recorder.h"
#include "SnifferRun.h"
#include "TsharkCapture.h"

namespace {
struct Ports {
    uint16_t callee, caller, media, callerMedia;
};

// Ports no other program holds right now.
Ports freePorts() {
    const UdpSocket a, b, c, d;
    return {a.port(), b.port(), c.port(), d.port()};
}

struct CallCounts {
    std::size_t sip = 0;
    std::size_t rtp = 0;
};

// Places one call from SIPp to SIPp and returns what tshark saw of it.
CallCounts placeCall(const Ports& p, const std::string& filter) {
    const TempDir dir;
    const std::string wire = dir.file("call.pcap");
    ChildProcess tcpdump({onPath("tcpdump"), "-i", "lo", "-U", "-Z", "root", "-w", wire, filter},
                         dir.file("tcpdump.log"));
    EXPECT_TRUE(waitForText(dir.file("tcpdump.log"), "listening on lo", 5s)) << readFile(dir.file("tcpdump.log"));
    ChildProcess callee({onPath("sipp"), "-sn", "uas", "-i", "127.0.0.1", "-p", std::to_string(p.callee), "-mp",
                         std::to_string(p.media), "-m", "1", "-nostdin", "-timeout", "30s"},
                        dir.file("callee.log"));
    EXPECT_TRUE(waitUntil([&] { return udpPortBound(p.callee); }, 5s)) << readFile(dir.file("callee.log"));
    ChildProcess caller(
        {onPath("sipp"), "127.0.0.1:" + std::to_string(p.callee), "-sf", SIPP_CALLER_SCENARIO, "-i", "127.0.0.1", "-p",
         std::to_string(p.caller), "-mp", std::to_string(p.callerMedia), "-m", "1", "-nostdin", "-timeout", "30s"},
        dir.file("caller.log"));
    // The caller ends after the answer to its BYE: the call is over.
    EXPECT_TRUE(caller.waitFor(40s) && caller.exitStatus() == 0) << readFile(dir.file("caller.log")) << "callee:\n"
                                                                 << readFile(dir.file("callee.log"));
    std::this_thread::sleep_for(1500ms);  // libpcap hands packets over within a second
    tcpdump.signal(SIGINT);
    tcpdump.waitFor(5s);

    const auto oracle = tshark::udpPayloads(
        wire, {tshark::sipRule, "udp.dstport==" + std::to_string(p.media) + " && !(" + tshark::sipRule + ")"});
    return {oracle[0].size(), oracle[1].size()};
}
}  // namespace

TEST(SipCall, EveryMessageAndTheListedRtpOfARealCallAreForwarded) {
    if (!runningAsRoot())
        GTEST_SKIP() << "live capture needs root";
    for (const char* program : {"sipp", "tcpdump", "tshark"})
        if (onPath(program).empty())
            GTEST_SKIP() << program << " is not installed";

    LogCapture log;
    TcpRecorder recorder;
    const Ports ports = freePorts();
    const std::string filter = "udp and (port " + std::to_string(ports.callee) + " or port " +
                               std::to_string(ports.caller) + " or port " + std::to_string(ports.media) + ")";
    SnifferRun run({"-d", "lo", "-f", filter, "-h", "127.0.0.1", "-p", std::to_string(recorder.port())}, "TCP");
    ASSERT_EQ(0, run.setupResult());

    // One message before the call brings the link up, so the recorder's
    // commands are in force before the first RTP packet.
    const Bytes probe = bytesOf("OPTIONS sip:probe@127.0.0.1 SIP/2.0\r\n\r\n");
    UdpSocket().sendTo(ports.callee, probe);
    ASSERT_TRUE(recorder.next(3s));
    ASSERT_TRUE(recorder.apply({command(1, "127.0.0.1", ports.media)}));

    const auto forwarded = [&](int protocol) {
        std::size_t n = 0;
        for (const ForwardedFrame& frame : recorder.received())
            n += frame.protocol() == protocol;
        return n;
    };
    const CallCounts listed = placeCall(ports, filter);
    ASSERT_GE(listed.sip, 6u);
    ASSERT_GT(listed.rtp, 100u);
    EXPECT_TRUE(waitUntil([&] { return forwarded(1) == 1 + listed.sip && forwarded(2) == listed.rtp; }, 3s))
        << "SIP " << forwarded(1) - 1 << " of " << listed.sip << ", RTP " << forwarded(2) << " of " << listed.rtp;
}
