// Text forms of decoded H.225.0 values: aliases, identifiers, addresses,
// tag names and the trace printer.

#include <gtest/gtest.h>

#include <cstring>

#include "Bytes.h"
#include "Messages.h"
#include "h323/H225.h"
#include "h323/Text.h"

namespace h323 {
namespace {

using per::Builder;

// Encodes an alias built by `fill` and reads it back.
template <typename Fill>
std::string aliasOf(Fill fill) {
    Builder b(h225::AliasAddress);
    fill(b.root());
    std::vector<uint8_t> wire = per::encode(b.value());
    per::Decoder d;
    per::Value v = d.decode(h225::AliasAddress, wire.data(), wire.size());
    EXPECT_TRUE(v);
    return aliasText(v);
}

TEST(AliasText, StringAliasesAreThemselvesAndH323IdLosesATrailingNul) {
    EXPECT_EQ(aliasOf([](Builder::Slot a) { a.choose("dialedDigits").setText("12#*"); }), "12#*");
    EXPECT_EQ(aliasOf([](Builder::Slot a) { a.choose("url_ID").setText("h323:bob@x"); }), "h323:bob@x");
    EXPECT_EQ(aliasOf([](Builder::Slot a) { a.choose("email_ID").setText("bob@x"); }), "bob@x");
    EXPECT_EQ(aliasOf([](Builder::Slot a) { a.choose("h323_ID").setText("Jos\xc3\xa9"); }), "Jos\xc3\xa9");
    EXPECT_EQ(aliasOf([](Builder::Slot a) { a.choose("h323_ID").setText(std::string("bob\0", 4)); }), "bob");
}

TEST(AliasText, TransportIdIsIpDollarAddressColonPortWithoutZeroPortAndWithStarForAnyAddress) {
    EXPECT_EQ(aliasOf([](Builder::Slot a) { test::setIpv4(a.choose("transportID"), "10.1.2.3", 1720); }),
              "ip$10.1.2.3:1720");
    EXPECT_EQ(aliasOf([](Builder::Slot a) { test::setIpv4(a.choose("transportID"), "10.1.2.3", 0); }), "ip$10.1.2.3");
    EXPECT_EQ(aliasOf([](Builder::Slot a) { test::setIpv4(a.choose("transportID"), "0.0.0.0", 1719); }), "ip$*:1719");
}

TEST(AliasText, PartyNumbersCarryTheirPlanPrefixAndMobileIdentitiesGiveNothing) {
    EXPECT_EQ(aliasOf([](Builder::Slot a) {
                  Builder::Slot n = a.choose("partyNumber").choose("e164Number");
                  n["publicTypeOfNumber"].choose("unknown");
                  n["publicNumberDigits"].setText("4930");
              }),
              "E164:4930");
    EXPECT_EQ(aliasOf([](Builder::Slot a) {
                  Builder::Slot n = a.choose("partyNumber").choose("privateNumber");
                  n["privateTypeOfNumber"].choose("localNumber");
                  n["privateNumberDigits"].setText("17");
              }),
              "Private:17");
    EXPECT_EQ(aliasOf([](Builder::Slot a) { a.choose("partyNumber").choose("dataPartyNumber").setText("1"); }),
              "Data:1");
    EXPECT_EQ(aliasOf([](Builder::Slot a) { a.choose("partyNumber").choose("telexPartyNumber").setText("2"); }),
              "Telex:2");
    EXPECT_EQ(
        aliasOf([](Builder::Slot a) { a.choose("partyNumber").choose("nationalStandardPartyNumber").setText("3"); }),
        "NSP:3");
    EXPECT_EQ(aliasOf([](Builder::Slot a) { a.choose("mobileUIM").choose("gsm_uim")["imsi"].setText("2620"); }), "");
}

TEST(Identifiers, GuidIsWireOrderLowercaseGroupedAndAddressesAreDotted) {
    std::vector<uint8_t> g = test::bytes("c0fef93ecd9ed6119ab2000476222017");
    EXPECT_EQ(guidText(test::view(g)), "c0fef93e-cd9e-d611-9ab2-000476222017");
    EXPECT_EQ(guidText("short"), "");
    EXPECT_EQ(ipv4Text(std::string_view("\x0a\x01\x06\x12", 4)), "10.1.6.18");
    const uint8_t wire[4] = {192, 168, 0, 255};
    uint32_t networkOrder;
    std::memcpy(&networkOrder, wire, 4);
    EXPECT_EQ(ipv4Text(networkOrder), "192.168.0.255");
}

TEST(TagNames, AreTheIdentifiersWithUnderscoresAndUnknownOnesAreNumbered) {
    Builder b(h225::AliasAddress);
    b.root().choose("h323_ID").setText("x");
    EXPECT_EQ(b.value().tagName(), "h323_ID");
    Builder unknown(h225::AliasAddress);
    unknown.root().chooseUnknown(12).setBytes("\x01");
    std::vector<uint8_t> wire = per::encode(unknown.value());
    per::Decoder d;
    per::Value v = d.decode(h225::AliasAddress, wire.data(), wire.size());
    ASSERT_TRUE(v);
    EXPECT_EQ(v.tag(), 12u);
    EXPECT_EQ(v.tagName(), "<12>");
}

TEST(TracePrinter, WritesNestedBlocksTwoSpacesDeeperPerLevelWithChoicesAsTagNames) {
    Builder b(h225::H323_UserInformation);
    Builder::Slot rc = b.root()["h323_uu_pdu"]["h323_message_body"].choose("releaseComplete");
    rc["protocolIdentifier"].setOid("0.0.8.2250.0.4");
    rc["reason"].choose("undefinedReason");
    rc["callIdentifier"]["guid"].setBytes(std::string(16, '\x11'));
    Builder::Slot busy = rc["busyAddress"];
    busy.append().choose("h323_ID").setText("bob");
    busy.append().choose("transportID").choose("ipAddress")["ip"].setBytes(std::string("\x0a\0\0\x01", 4));
    b.root()["h323_uu_pdu"]["h245Tunneling"].setBool(false);
    EXPECT_EQ(per::toText(b.value()),
              "{\n"
              "  h323_uu_pdu = {\n"
              "    h323_message_body = releaseComplete {\n"
              "      protocolIdentifier = 0.0.8.2250.0.4\n"
              "      reason = undefinedReason\n"
              "      callIdentifier = {\n"
              "        guid = '11111111111111111111111111111111'H\n"
              "      }\n"
              "      busyAddress = {\n"
              "        [0] = h323_ID \"bob\"\n"
              "        [1] = transportID ipAddress {\n"
              "          ip = '0a000001'H\n"
              "        }\n"
              "      }\n"
              "    }\n"
              "    h245Tunneling = FALSE\n"
              "  }\n"
              "}");
}

TEST(DecodedValues, WalkByNameAndPositionAndAbsentComponentsAnswerNothing) {
    test::Message setup = test::signallingMessages().front();
    Q931 q;
    ASSERT_TRUE(q.decode(test::view(setup.bytes)));
    per::Decoder d;
    per::Value info = d.decode(h225::H323_UserInformation, q.element(Q931::UserUser));
    ASSERT_TRUE(info);
    per::Value body = info["h323_uu_pdu"]["h323_message_body"];
    EXPECT_TRUE(body.is("setup"));
    EXPECT_EQ(body.tag(), 0u);
    per::Value s = body.chosen();
    EXPECT_EQ(s.component(0).text(), "0.0.8.2250.0.4");
    EXPECT_TRUE(s.has("h245Address"));
    EXPECT_FALSE(s.has("fastStart"));
    EXPECT_FALSE(s["fastStart"].at(0));
    EXPECT_EQ(s["fastStart"].size(), 0u);
    EXPECT_EQ(s["noSuchComponent"].integer(), 0);
    EXPECT_EQ(s["h245Address"].chosen()["port"].integer(), 32804);
    EXPECT_EQ(aliasText(s["sourceAddress"].at(0)), "alice");
    EXPECT_EQ(aliasText(s["destinationAddress"].at(0)), "2000");
    EXPECT_EQ(guidText(s["callIdentifier"]["guid"].bytes()), guidText(test::guid(1)));
}

}  // namespace
}  // namespace h323
