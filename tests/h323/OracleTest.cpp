// Messages built with the encoder, read back by the toolkit and by tshark:
// every compared field must agree.

#include <gtest/gtest.h>

#include "Bytes.h"
#include "Messages.h"
#include "Tshark.h"
#include "h323/H225.h"

namespace h323::test {
namespace {

TEST(SignallingOracle, EveryBuiltMessageReadsTheSameInTheToolkitAndInTshark) {
    if (!haveTshark()) GTEST_SKIP() << "tshark and text2pcap are needed for the oracle";
    std::vector<Message> messages = signallingMessages();
    std::vector<Pdu> payloads;
    for (const Message& m : messages) {
        std::string framed = tpkt(view(m.bytes));
        payloads.emplace_back(framed.begin(), framed.end());
    }
    auto packets = tsharkRead(writeCapture(payloads, "q931.tpkt"), kSignallingFields);
    ASSERT_EQ(packets.size(), messages.size());

    Q931 q931;
    per::Decoder decoder;
    for (size_t i = 0; i < messages.size(); ++i) {
        ASSERT_TRUE(q931.decode(view(messages[i].bytes))) << messages[i].name;
        per::Value info = decoder.decode(h225::H323_UserInformation, q931.element(Q931::UserUser));
        ASSERT_TRUE(info) << messages[i].name;
        EXPECT_EQ(signallingFields(q931, info), packets[i].fields) << messages[i].name;
    }
}

}  // namespace
}  // namespace h323::test
