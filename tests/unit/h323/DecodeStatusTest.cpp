// Why and where a decode stops: a message cut short, one whose octets
// cannot be a value, and nesting past the decoder's limit each give their
// own status, with the path of components down to where it happened.

#include <gtest/gtest.h>

#include "Bytes.h"
#include "Messages.h"
#include "h323/H225.h"
#include "h323/Q931.h"

namespace h323::per {

// A type that contains itself, for nesting as deep as the input asks.
extern const Type Nest;
const Component Nest_[] = {{"inner", Nest, Optional}};
const Type Nest = sequence("Nest", Nest_);

namespace {

using test::bytes;

std::string userInformation(test::Signal signal) {
    Q931 q;
    EXPECT_TRUE(q.decode(signal.encoded()));
    return std::string(q.element(Q931::UserUser));
}

TEST(DecodeStatus, CutShortIsTruncatedAtTheComponentItStoppedIn) {
    test::Signal s = test::setup(1);
    s.body()["sourceAddress"].append().choose("h323_ID").setText("alice");
    const std::string whole = userInformation(s);
    Decoder d;
    ASSERT_TRUE(d.decode(h225::H323_UserInformation, whole));
    EXPECT_EQ(d.status(), DecodeStatus::Ok);
    // Every cut, wherever it falls, reads as missing input, never as garbage.
    for (size_t cut = 0; cut < whole.size(); ++cut) {
        EXPECT_FALSE(d.decode(h225::H323_UserInformation, whole.substr(0, cut))) << cut;
        EXPECT_EQ(d.status(), DecodeStatus::Truncated) << cut;
        EXPECT_LE(d.stopBit(), cut * 8) << cut;
        EXPECT_EQ(d.stopPath().rfind("H323-UserInformation", 0), 0u) << d.stopPath();
    }
    // Cut inside the alias: stopped at the start of its characters.
    const size_t alias = whole.find(std::string("\0a\0l", 4));
    ASSERT_NE(alias, std::string::npos);
    EXPECT_FALSE(d.decode(h225::H323_UserInformation, whole.substr(0, alias + 4)));
    EXPECT_EQ(d.stopPath(), "H323-UserInformation.h323_uu_pdu.h323_message_body.setup.sourceAddress[0].h323_ID");
    EXPECT_EQ(d.stopBit(), alias * 8);

    const std::string signal = s.encoded();
    Q931 q;
    for (size_t cut : {size_t(3), size_t(6), size_t(12), signal.size() - 1}) {
        EXPECT_FALSE(q.decode(signal.substr(0, cut))) << cut;
        EXPECT_EQ(q.status(), DecodeStatus::Truncated) << cut;
        EXPECT_EQ(q.stopBit(), cut * 8) << cut;
    }
    EXPECT_EQ(q.stopPath(), "Q931.element[0x7e]");
    q.decode(signal.substr(0, 3));
    EXPECT_EQ(q.stopPath(), "Q931.header");
}

// Octets that cannot be the value are invalid, even where more input would
// not help: a wrapped value that runs past its own length is not a cut.
TEST(DecodeStatus, MalformedIsInvalid) {
    const struct {
        const char* wire;
        const char* path;
    } cases[] = {
        {"09 40 00", "H323-UserInformation.h323_uu_pdu.h323_message_body"},              // unknown body, empty
        {"08 00 01 00", "H323-UserInformation.h323_uu_pdu.h323_message_body.progress"},  // 1 octet for a Progress
    };
    Decoder d;
    for (const auto& c : cases) {
        const std::vector<uint8_t> wire = bytes(c.wire);
        EXPECT_FALSE(d.decode(h225::H323_UserInformation, wire.data(), wire.size()));
        EXPECT_EQ(d.status(), DecodeStatus::Invalid) << c.wire;
        EXPECT_EQ(d.stopPath().rfind(c.path, 0), 0u) << d.stopPath();
    }
    Q931 q;
    EXPECT_FALSE(q.decode(bytes("08 03 00 00 01 05").data(), 6));
    EXPECT_EQ(q.status(), DecodeStatus::Invalid);
    EXPECT_EQ(q.stopPath(), "Q931.callReference");
    EXPECT_FALSE(q.decode(bytes("08 02 00 01 05 7e 00 00").data(), 8));
    EXPECT_EQ(q.status(), DecodeStatus::Invalid);
    EXPECT_EQ(q.stopPath(), "Q931.element[0x7e]");
}

// Each presence bit set nests one level deeper; the last one clear ends it.
std::vector<uint8_t> nesting(size_t levels) {
    std::vector<uint8_t> wire(levels / 8 + 1, 0);
    for (size_t i = 0; i < levels; ++i)
        wire[i / 8] |= uint8_t(0x80 >> (i % 8));
    return wire;
}

TEST(DecodeStatus, LimitsAreTooDeepOrTooLarge) {
    Decoder d;
    std::vector<uint8_t> wire = nesting(60);
    EXPECT_TRUE(d.decode(Nest, wire.data(), wire.size()));
    wire = nesting(200);
    EXPECT_FALSE(d.decode(Nest, wire.data(), wire.size()));
    EXPECT_EQ(d.status(), DecodeStatus::TooDeep);
    EXPECT_EQ(d.stopPath().rfind("Nest.inner.inner.", 0), 0u);

    const Type list = sequenceOf(Null, {}, "List");
    const std::vector<uint8_t> elements = {0x80, uint8_t(Decoder::kMaxListElements + 1)};  // two-octet length
    EXPECT_FALSE(d.decode(list, elements.data(), elements.size()));
    EXPECT_EQ(d.status(), DecodeStatus::TooLarge);
    EXPECT_EQ(d.stopPath(), "List");
}

}  // namespace
}  // namespace h323::per
