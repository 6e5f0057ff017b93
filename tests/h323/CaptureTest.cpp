// A real H.323 call: every signalling segment decodes, and reads as tshark
// reads it.

#include <gtest/gtest.h>

#include <fstream>

#include "Bytes.h"
#include "Tshark.h"
#include "h323/H225.h"
#include "h323/Text.h"
#if __has_include("h323/H245.h")
#include "h323/H245.h"
#define H323_HAVE_H245_TABLES 1
#endif

namespace h323::test {
namespace {

const std::string kCall = std::string(H323_CAPTURES_DIR) + "/h323-call-separate-h245.pcap";

struct Segment {
    std::vector<uint8_t> payload;   // behind the TPKT header
    std::vector<std::string> fields;
};

// The TCP payloads tshark recognises as `protocol`, with the given fields.
std::vector<Segment> segments(const std::string& protocol, const std::vector<std::string>& fields) {
    std::vector<std::string> asked = {"tcp.payload"};
    asked.insert(asked.end(), fields.begin(), fields.end());
    std::vector<Segment> out;
    for (auto& row : tsharkFields(kCall, asked, protocol)) {
        std::vector<uint8_t> tcp = bytes(row[0]);
        if (tcp.size() < 4) continue;
        out.push_back({std::vector<uint8_t>(tcp.begin() + 4, tcp.end()), std::vector<std::string>(row.begin() + 1, row.end())});
    }
    return out;
}

void skipUnlessAvailable() {
    if (!std::ifstream(kCall)) GTEST_SKIP() << "the shared captures are not there: " << kCall;
    if (!haveTshark()) GTEST_SKIP() << "tshark is needed to read the capture";
}

TEST(RealCall, EveryQ931MessageDecodesAndReadsAsTsharkReadsIt) {
    skipUnlessAvailable();
    std::vector<Segment> q931s = segments("q931", kSignallingFields);
    ASSERT_EQ(q931s.size(), 4u);   // Setup, CallProceeding, Alerting, Connect
    Q931 q931;
    per::Decoder decoder;
    for (const Segment& s : q931s) {
        ASSERT_TRUE(q931.decode(s.payload.data(), s.payload.size()));
        per::Value info = decoder.decode(h225::H323_UserInformation, q931.element(Q931::UserUser));
        ASSERT_TRUE(info) << hex(s.payload);
        EXPECT_EQ(signallingFields(q931, info), s.fields);
    }
}

#ifdef H323_HAVE_H245_TABLES
const std::vector<std::string> kControlFields = {"h245.pdu_type", "h245.forwardLogicalChannelNumber", "h245.ip4_network",
                                                 "h245.tsapIdentifier"};

std::vector<std::string> controlFields(per::Value message) {
    return {std::to_string(message.tag()),
            joined(message, "forwardLogicalChannelNumber", [](per::Value v) { return std::to_string(v.integer()); }),
            joined(message, "network", [](per::Value v) { return ipv4Text(v.bytes()); }),
            joined(message, "tsapIdentifier", [](per::Value v) { return std::to_string(v.integer()); })};
}

TEST(RealCall, EveryH245MessageDecodesAndReadsAsTsharkReadsIt) {
    skipUnlessAvailable();
    std::vector<Segment> controls = segments("h245", kControlFields);
    ASSERT_EQ(controls.size(), 11u);
    per::Decoder decoder;
    for (const Segment& s : controls) {
        per::Value message = decoder.decode(h245::MultimediaSystemControlMessage, s.payload.data(), s.payload.size());
        ASSERT_TRUE(message) << hex(s.payload);
        std::vector<std::string> ours = controlFields(message);
        // tshark reads on after the first PDU of a segment; only the first one counts here.
        std::vector<std::string> theirs = s.fields;
        theirs[0] = theirs[0].substr(0, theirs[0].find(','));
        EXPECT_EQ(ours, theirs) << hex(s.payload);
    }
}

TEST(RealCall, NoQ931MessageAlsoDecodesAsH245) {
    skipUnlessAvailable();
    per::Decoder decoder;
    for (const Segment& s : segments("q931", {})) {
        EXPECT_FALSE(decoder.decode(h245::MultimediaSystemControlMessage, s.payload.data(), s.payload.size()))
            << hex(s.payload);
    }
}
#endif

}  // namespace
}  // namespace h323::test
