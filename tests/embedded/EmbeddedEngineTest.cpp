// An embedded engine driven without a JVM: frames are handed to the capture
// callback and forwarded through the in-process link.

#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "EmbeddedConnection.h"
#include "Frames.h"
#include "SngDissector.h"
#include "Sniffer.h"
#include "SnifferRun.h"

TEST(EmbeddedEngineTest, FramesTheHostDidNotTakeAreDroppedWithTheEngine) {
    EmbeddedConnection* link = EmbeddedConnection::dft();
    link->closeConnection();
    auto run = std::make_unique<SnifferRun>(std::vector<std::string>{"-d", ""}, nullptr);
    ASSERT_EQ(0, run->setupResult());
    capture(udpFrame({"10.0.0.1", 4000}, {"10.0.0.5", 5060}, bytesOf("INVITE sip:bob@example.com SIP/2.0\r\n\r\n")));
    while (!run->sniffer().getDissector()->isDrained())
        std::this_thread::yield();
    run.reset();  // stops the run and deletes the engine, as the host bridge does
    char buffer[256];
    EXPECT_EQ(0, link->receivePacket(buffer, sizeof buffer));
}
