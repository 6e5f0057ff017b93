// The call maps of the H.323 parser. What it describes and logs for each
// message is proven by the golden corpus (tests/golden/h323).
#include <arpa/inet.h>
#include <gtest/gtest.h>

#include "H323Parser.h"
#include "LogCapture.h"
#include "Messages.h"

namespace {

TEST(H323Parser, CallMapsKeepTheirDocumentedAsymmetryAndTextOrder) {
    LogCapture log;
    H323Parser parser;
    parser.updateMaps("9", H323Parser::h245Addr("10.0.0.2", 40001));
    parser.updateMaps("10", H323Parser::h245Addr("10.0.0.3", 40001));
    parser.updateMaps("9", H323Parser::h245Addr("10.0.0.2", 40002));
    EXPECT_EQ(parser.getCallRefMap().size(), 2u);
    EXPECT_EQ(parser.getH245Map().size(), 3u);  // the first address of call 9 stays
    log.clear();
    parser.displayCallIdMap();
    const std::vector<std::string> expected = {
        "Call Ref Map --- Key = 10, Value = 10.0.0.3:40001", "Call Ref Map --- Key = 9, Value = 10.0.0.2:40002",
        "h245Map --- Key = 10.0.0.2:40001, Value = 9",       "h245Map --- Key = 10.0.0.2:40002, Value = 9",
        "h245Map --- Key = 10.0.0.3:40001, Value = 10",
    };
    EXPECT_EQ(log.messages("DEBUG"), expected);

    H323Parser empty;
    log.clear();
    empty.displayCallIdMap();
    EXPECT_EQ(log.messages("DEBUG"), (std::vector<std::string>{"CallRefMap is empty", "h245Map is empty"}));
}

// A failed decode is counted by its reason and named, with where it stopped,
// in one DEBUG line; the H.245 attempt that precedes every Q.931 message is
// not a failure.
TEST(H323Parser, DecodeFailuresAreCountedByReasonAndLoggedWithWhereTheyStopped) {
    LogCapture log;
    H323Parser parser;
    auto describe = [&parser](const std::string& q931) {
        std::string segment = std::string(15, '\0') + h323::test::tpkt(q931);
        std::string text;
        return parser.parseH323(reinterpret_cast<u_char*>(segment.data()), int(segment.size()), 15,
                                inet_addr("10.0.0.1"), inet_addr("10.0.0.2"), 1720, 40001, text);
    };
    const std::string whole = h323::test::setup(1).encoded();
    const std::string cut = whole.substr(0, whole.size() - 3);
    EXPECT_FALSE(describe(cut));
    EXPECT_EQ(parser.decodeFailures(h323::DecodeStatus::Truncated), 1u);
    EXPECT_TRUE(log.contains("DEBUG", "Q.931 message decode failed: truncated at Q931.element[0x7e], bit " +
                                          std::to_string(cut.size() * 8)));

    h323::Q931 q931;
    q931.setMessageType(h323::Q931::Setup);
    q931.setCallReference(1, false);
    q931.setElement(h323::Q931::UserUser, std::string("\x09\x40\x00", 3));  // an unknown body of no octets
    const std::vector<uint8_t> wire = q931.encode();
    EXPECT_FALSE(describe(std::string(wire.begin(), wire.end())));
    EXPECT_EQ(parser.decodeFailures(h323::DecodeStatus::Invalid), 1u);
    EXPECT_EQ(parser.decodeFailures(h323::DecodeStatus::Truncated), 1u);
    EXPECT_TRUE(log.contains("DEBUG",
                             "H323 user information decode failed: invalid at "
                             "H323-UserInformation.h323_uu_pdu.h323_message_body, bit 24"));
}

}  // namespace
