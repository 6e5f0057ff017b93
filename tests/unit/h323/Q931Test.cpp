#include <gtest/gtest.h>

#include <sstream>

#include "Bytes.h"
#include "h323/Q931.h"

namespace h323 {
namespace {

using test::bytes;
using test::hex;

bool decodeHex(Q931& q, const char* h) {
    std::vector<uint8_t> b = bytes(h);
    return q.decode(b.data(), b.size());  // the message keeps copies: `b` may go
}

TEST(Q931Decode, TwoOctetCallReferencesSplitIntoValueAndFlagShortOnesGiveZeroAndMoveTheMessageType) {
    const struct {
        const char* wire;
        unsigned callReference;
        bool fromDestination;
        unsigned messageType;
    } cases[] = {
        {"08 02 f7 f4 02", 0x77f4, true, 2},
        {"08 00 05 a1 a1", 0, false, 5},  // after a flagged reference: nothing stays
        {"08 02 77 f4 05", 0x77f4, false, 5},
        {"08 01 85 07 a1", 0, false, 7},
    };
    Q931 q;
    for (const auto& c : cases) {
        ASSERT_TRUE(decodeHex(q, c.wire)) << c.wire;
        EXPECT_EQ(q.callReference(), c.callReference) << c.wire;
        EXPECT_EQ(q.fromDestination(), c.fromDestination) << c.wire;
        EXPECT_EQ(q.messageType(), c.messageType) << c.wire;
    }
}

TEST(Q931Decode, RefusesShortMessagesLongCallReferencesAndOverrunningElements) {
    Q931 q;
    EXPECT_FALSE(decodeHex(q, "08 02 00 01"));
    EXPECT_FALSE(decodeHex(q, "08 03 00 00 01 05"));
    EXPECT_FALSE(decodeHex(q, "08 02 00 01 05 28 05 41 42"));        // Display claims 5 octets
    EXPECT_FALSE(decodeHex(q, "08 02 00 01 05 28"));                 // no length at all
    EXPECT_FALSE(decodeHex(q, "08 02 00 01 05 7e 00 00"));           // empty user-user
    EXPECT_FALSE(decodeHex(q, "08 02 00 01 05 7e 00 05 05 01 02"));  // user-user claims 5
    EXPECT_TRUE(decodeHex(q, "08 02 00 01 05"));
}

TEST(Q931Decode, KeepsElementsByIdentifierLaterDuplicatesWinAndSingleOctetOnesAreEmpty) {
    Q931 q;
    ASSERT_TRUE(decodeHex(q, "08 02 00 01 05 a1 28 02 41 42 28 01 43 7e 00 03 05 aa bb"));
    EXPECT_TRUE(q.has(0xa1));
    EXPECT_EQ(q.element(0xa1), "");
    EXPECT_EQ(q.element(Q931::Display), "C");
    EXPECT_EQ(hex(std::vector<uint8_t>(q.element(Q931::UserUser).begin(), q.element(Q931::UserUser).end())), "aabb");
    EXPECT_FALSE(q.has(Q931::Cause));
}

TEST(Q931PartyNumber, DigitsFollowOctet3And3aAndForTheCallingNumber3b) {
    Q931 q;
    ASSERT_TRUE(decodeHex(q, "08 02 00 01 05 6c 04 81 31 32 33 70 03 a1 34 35"));
    EXPECT_EQ(q.callingPartyNumber(), "123");
    EXPECT_EQ(q.calledPartyNumber(), "45");
    ASSERT_TRUE(decodeHex(q, "08 02 00 01 05 6c 05 01 80 37 37 37 70 04 01 81 34 35"));
    EXPECT_EQ(q.callingPartyNumber(), "777");
    EXPECT_EQ(q.calledPartyNumber(), "45");  // 3a skipped for the called number too
    ASSERT_TRUE(decodeHex(q, "08 02 00 01 05 6c 05 01 00 80 39 39 70 04 01 01 34 35"));
    EXPECT_EQ(q.callingPartyNumber(), "99");  // 3a and 3b
    EXPECT_EQ(q.calledPartyNumber(), "45");   // no 3b for the called number
    ASSERT_TRUE(decodeHex(q, "08 02 00 01 05 6c 01 81"));
    EXPECT_EQ(q.callingPartyNumber(), "");
    EXPECT_EQ(q.calledPartyNumber(), "");
}

TEST(Q931Encode, WritesHeaderThenElementsInAscendingOrderAndReadsBack) {
    Q931 q;
    q.setMessageType(Q931::Setup);
    q.setCallReference(0x1234, true);
    q.setElement(Q931::UserUser, "\x01\x02");
    q.setPartyNumber(Q931::CalledPartyNumber, "42");
    q.setPartyNumber(Q931::CallingPartyNumber, "7", 1, 1, 0x03);
    q.setElement(Q931::BearerCapability, "\x88\x90\xa5");
    std::vector<uint8_t> wire = q.encode();
    EXPECT_EQ(hex(wire), "080292340504038890a56c0311833770038134327e0003050102");
    Q931 back;
    ASSERT_TRUE(back.decode(wire.data(), wire.size()));
    EXPECT_EQ(back.callReference(), 0x1234u);
    EXPECT_TRUE(back.fromDestination());
    EXPECT_EQ(back.callingPartyNumber(), "7");
    EXPECT_EQ(back.calledPartyNumber(), "42");
    EXPECT_EQ(back.element(Q931::UserUser), "\x01\x02");
}

TEST(Q931Print, ListsHeaderAndElementsInABlock) {
    Q931 q;
    ASSERT_TRUE(decodeHex(q, "08 02 80 07 5a 08 02 80 90 19 01 ff"));
    std::ostringstream out;
    q.print(out);
    EXPECT_EQ(out.str(),
              "{\n"
              "  callReference = 7\n"
              "  fromDestination = TRUE\n"
              "  messageType = ReleaseComplete\n"
              "  IE: Cause = '8090'H\n"
              "  IE: <0x19> = 'ff'H\n"
              "}");
}

}  // namespace
}  // namespace h323
