// Every H.245 PDU of a real call, the second PDU of a segment included,
// decodes as tshark reads it, field for field and name for name; so do its
// OpenLogicalChannels read on their own, as fast start carries them.

#include <gtest/gtest.h>

#include <filesystem>

#include "Bytes.h"
#include "H245Oracle.h"
#include "Tshark.h"
#include "h323/H245.h"

namespace h323::test {
namespace {

const std::string kCall = std::string(H323_CAPTURES_DIR) + "/h323-call-separate-h245.pcap";

std::vector<TsharkPacket> readCall(const char* filter) {
    if (!std::filesystem::exists(kCall) || !haveTshark()) return {};
    return tsharkReadCapture(kCall, filter);
}

#define SKIP_WITHOUT(packets) \
    if ((packets).empty()) GTEST_SKIP() << "needs tshark and " << kCall

// tshark's fields without the lines that belong to the enclosing message.
std::string withoutMessageLines(const std::string& fields) {
    std::string out;
    size_t start = 0;
    for (size_t end; (end = fields.find('\n', start)) != std::string::npos; start = end + 1) {
        std::string line = fields.substr(start, end - start + 1);
        if (line.rfind("h245.pdu_type:", 0) != 0 && line.rfind("h245.request:", 0) != 0) out += line;
    }
    return out;
}

TEST(H245Capture, EveryPduOfTheCallDecodesAsTsharkReadsIt) {
    auto packets = readCall("h245");
    SKIP_WITHOUT(packets);
    ASSERT_EQ(packets.size(), 11u);

    per::Decoder decoder;
    for (const TsharkPacket& packet : packets) {
        FieldCollector fields;
        for (const Pdu& pdu : splitTpkt(bytes(packet.payload))) {
            per::Value message = decoder.decode(h245::MultimediaSystemControlMessage, pdu.data(), pdu.size());
            ASSERT_TRUE(message) << packet.payload;
            fields.collect(message);
        }
        EXPECT_EQ(fields.text(), packet.fields) << packet.payload;
    }
}

TEST(H245Capture, AnOpenLogicalChannelDecodesOnItsOwnAsInsideItsMessage) {
    auto packets = readCall("h245.openLogicalChannel_element");
    SKIP_WITHOUT(packets);
    ASSERT_EQ(packets.size(), 2u);

    per::Decoder decoder;
    for (const TsharkPacket& packet : packets) {
        Pdu pdu = splitTpkt(bytes(packet.payload)).at(0);
        // request (2 bits and an extension bit) and openLogicalChannel (4 bits
        // and an extension bit) fill the first octet exactly.
        ASSERT_EQ(pdu.at(0), 0x03);
        per::Value olc = decoder.decode(h245::OpenLogicalChannel, pdu.data() + 1, pdu.size() - 1);
        ASSERT_TRUE(olc);
        FieldCollector fields;
        fields.collect(olc, "/request/openLogicalChannel");
        EXPECT_EQ(fields.text(), withoutMessageLines(packet.fields));
    }
}

}  // namespace
}  // namespace h323::test
