// Capture files replayed through "file:" devices: labels behind a cooked
// header, and a link type the engine does not read, which takes its device
// out of the run. That every link type the engine reads forwards its IPv4
// and drops the rest without a word is proven by the golden corpus
// (tests/golden/frames/link-*).
#include <gtest/gtest.h>

#include <pcap.h>

#include "CaptureFile.h"
#include "ChildProcess.h"
#include "Frames.h"
#include "LogCapture.h"
#include "LogSearch.h"
#include "Recorder.h"
#include "SnifferRun.h"

namespace {
const Endpoint phone{"10.1.0.1", 5060}, proxy{"10.1.0.2", 5070};
const Bytes invite = bytesOf("INVITE sip:bob@example.com SIP/2.0\r\n\r\n");
const Bytes ringing = bytesOf("SIP/2.0 180 Ringing\r\n\r\n");

const Bytes inviteIp = withoutEthernet(udpFrame(phone, proxy, invite));
const Bytes ringingIp = withoutEthernet(udpFrame(proxy, phone, ringing));
}  // namespace

class LinkTypes : public testing::Test {
protected:
    // No filter: every frame of the file reaches the engine, which must sort
    // them itself.
    std::unique_ptr<SnifferRun> start(const std::string& devices) {
        return std::make_unique<SnifferRun>(
            std::vector<std::string>{"-d", devices, "-f", "", "-h", "127.0.0.1", "-p", std::to_string(recorder.port())},
            "UDP");
    }

    static void expectSip(const ForwardedFrame& frame, Endpoint src, Endpoint dst, const Bytes& payload) {
        EXPECT_EQ(1, frame.protocol());
        EXPECT_EQ(static_cast<int>(15 + payload.size()), frame.length());
        EXPECT_EQ(std::string(dst.ip) + ":" + std::to_string(dst.port), frame.destination());
        EXPECT_EQ(std::string(src.ip) + ":" + std::to_string(src.port), frame.source());
        EXPECT_EQ(payload, frame.payload());
    }

    LogCapture log;
    UdpRecorder recorder;
    TempDir dir;
};

TEST_F(LinkTypes, CookedFramesCarryingLabelsAreReadOnlyWithDecapsulation) {
    const std::string path = dir.file("labels.pcap");
    writeCapture(path, DLT_LINUX_SLL,
                 {behind(cooked(0x8847), behind({0, 1, 1, 64}, inviteIp)), behind(cooked(0x0800), ringingIp)});
    for (const char* decapsulate : {"no", "yes"}) {
        SCOPED_TRACE(decapsulate);
        const OptionInEnvironment option("Decapsulate", decapsulate);
        const auto run = start("file:" + path);
        ASSERT_EQ(0, run->setupResult());
        const bool labelsRead = std::string(decapsulate) == "yes";
        // Forwarded, the INVITE would come before the 180, the file's last frame.
        const auto got = recorder.next(labelsRead ? 2u : 1u);
        ASSERT_EQ(labelsRead ? 2u : 1u, got.size());
        if (labelsRead)
            expectSip(got.front(), phone, proxy, invite);
        expectSip(got.back(), proxy, phone, ringing);
    }
}

TEST_F(LinkTypes, DeviceOfAnUnsupportedLinkTypeIsSkippedWithAnError) {
    const std::string wireless = dir.file("wireless.pcap"), wired = dir.file("wired.pcap");
    writeCapture(wireless, DLT_IEEE802_11, {udpFrame(phone, proxy, invite)});
    writeCapture(wired, DLT_EN10MB, {udpFrame(proxy, phone, ringing)});
    const auto run = start("file:" + wireless + ";file:" + wired);
    ASSERT_EQ(0, run->setupResult());
    EXPECT_TRUE(
        log.contains("ERROR", "Couldn't use device file:" + wireless + ": link type IEEE802_11 is not supported"));

    // The consumer logs every capture thread it starts before it forwards.
    const auto got = recorder.next(1u);
    ASSERT_EQ(1u, got.size());
    expectSip(got[0], proxy, phone, ringing);
    EXPECT_EQ(1, countPrefix(log, "PCAP thread created "));
}
