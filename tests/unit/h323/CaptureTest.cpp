// A real H.323 call: every signalling segment and every H.245 PDU decodes,
// and reads as tshark reads it.

#include <gtest/gtest.h>

#include <filesystem>

#include "Bytes.h"
#include "SharedCaptures.h"
#include "Tshark.h"
#include "h323/H225.h"
#include "h323/H245.h"

namespace h323::test {
namespace {

const std::string kCall = sharedCapture("h323-call-separate-h245.pcap");

class RealCall : public ::testing::Test {
protected:
    void SetUp() override {
        REQUIRE_SHARED_CAPTURE(kCall);
        if (!haveTshark())
            GTEST_SKIP() << "tshark is needed to read the capture";
    }
    per::Decoder decoder;
};

TEST_F(RealCall, EveryQ931MessageDecodesReadsAsTsharkReadsItAndIsNoH245) {
    auto packets = tsharkRead(kCall, kSignallingFields, "q931");
    ASSERT_EQ(packets.size(), 4u);  // Setup, CallProceeding, Alerting, Connect
    Q931 q931;
    for (const TsharkPacket& packet : packets) {
        Pdu pdu = splitTpkt(bytes(packet.payload)).at(0);
        ASSERT_TRUE(q931.decode(pdu.data(), pdu.size()));
        per::Value info = decoder.decode(h225::H323_UserInformation, q931.element(Q931::UserUser));
        ASSERT_TRUE(info) << packet.payload;
        EXPECT_EQ(signallingFields(q931, info), packet.fields);
        EXPECT_FALSE(decoder.decode(h245::MultimediaSystemControlMessage, pdu.data(), pdu.size())) << packet.payload;
    }
}

TEST_F(RealCall, EveryH245PduOfTheCallDecodesAsTsharkReadsIt) {
    auto packets = tsharkRead(kCall, kH245Fields, "h245");
    ASSERT_EQ(packets.size(), 11u);
    for (const TsharkPacket& packet : packets) {
        FieldCollector fields(kH245Fields);
        for (const Pdu& pdu : splitTpkt(bytes(packet.payload))) {
            per::Value message = decoder.decode(h245::MultimediaSystemControlMessage, pdu.data(), pdu.size());
            ASSERT_TRUE(message) << packet.payload;
            fields.collect(message);
        }
        EXPECT_EQ(fields.text(), packet.fields) << packet.payload;
    }
}

// Fast start carries OpenLogicalChannels on their own.
TEST_F(RealCall, AnOpenLogicalChannelDecodesOnItsOwnAsInsideItsMessage) {
    auto packets = tsharkRead(kCall, kH245Fields, "h245.openLogicalChannel_element");
    ASSERT_EQ(packets.size(), 2u);
    for (const TsharkPacket& packet : packets) {
        Pdu pdu = splitTpkt(bytes(packet.payload)).at(0);
        // request (2 bits and an extension bit) and openLogicalChannel (4 bits
        // and an extension bit) fill the first octet exactly.
        ASSERT_EQ(pdu.at(0), 0x03);
        per::Value olc = decoder.decode(h245::OpenLogicalChannel, pdu.data() + 1, pdu.size() - 1);
        ASSERT_TRUE(olc);
        FieldCollector fields(kH245Fields);
        fields.add("h245.pdu_type", "request (0)");
        fields.add("h245.request", "openLogicalChannel (3)");
        fields.collect(olc, "/request/openLogicalChannel");
        EXPECT_EQ(fields.text(), packet.fields);
    }
}

}  // namespace
}  // namespace h323::test
