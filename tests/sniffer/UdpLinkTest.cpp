// The UDP link: one datagram per frame, one command per datagram, and frames
// redirected to whoever sent the last command.
#include <gtest/gtest.h>

#include "LogCapture.h"
#include "Network.h"
#include "UdpConnection.h"

namespace {
int send(UdpConnection& link, Bytes frame) {
    return link.sendPacket(frame.data(), static_cast<int>(frame.size()));
}

bool receive(UdpConnection& link, SnifferRequest& request) {
    return waitUntil([&] { return link.receiveRequest(request); }, 1s);
}
}  // namespace

// A datagram the socket refuses (over the 65,507 bytes UDP can carry) is
// dropped with the two error lines, and the link goes on with the next frame.
TEST(UdpLink, EachFrameIsOneDatagramAndARefusedOneIsLoggedAndDropped) {
    LogCapture log;
    UdpSocket recorder;
    UdpConnection link("127.0.0.1", recorder.port());
    const Bytes small = {0x00, 0x10, 0x01, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 'x'};
    const Bytes large(1400, 0x5A);
    EXPECT_EQ(16, send(link, small));
    EXPECT_EQ(-1, send(link, Bytes(70000, 0x5A)));
    EXPECT_TRUE(log.contains("ERROR", "len=70000, sent=-1\nError sento on socket"));
    EXPECT_EQ(1400, send(link, large));
    EXPECT_EQ(small, recorder.receive(1s));
    EXPECT_EQ(large, recorder.receive(1s));
}

TEST(UdpLink, CommandDatagramIsDecodedAndLoggedAndFramesGoToItsSender) {
    LogCapture log;
    UdpSocket recorder;
    UdpSocket takeover;
    UdpConnection link("127.0.0.1", recorder.port());
    SnifferRequest request;
    EXPECT_FALSE(link.receiveRequest(request));

    takeover.sendTo(localPort(link.getClientSd()), {0x03, 0x0A, 0x00, 0x00, 0x07, 0x9C, 0x40});
    ASSERT_TRUE(receive(link, request));
    EXPECT_EQ(SnifferRequest(3, 0x0A000007, 40000), request);
    EXPECT_TRUE(log.contains("DEBUG", "rx from server cmd=3, ip=10.0.0.7, port=40000, nRcvd=7"));
    EXPECT_FALSE(link.receiveRequest(request));

    const Bytes frame = {0x00, 0x0F, 0x03, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(15, send(link, frame));
    EXPECT_EQ(frame, takeover.receive(1s));
    EXPECT_TRUE(recorder.receive(100ms).empty());
}
