// Messages built with the encoder, the traffic generator's among them, read
// the same through the toolkit and through tshark: every compared field,
// CHOICE alternatives by index and by name, in the order of the message.

#include <gtest/gtest.h>

#include <functional>

#include "Bytes.h"
#include "ChannelMessages.h"
#include "Messages.h"
#include "Tshark.h"
#include "ValueGenerator.h"
#include "h323/H225.h"
#include "h323/H245.h"

namespace h323::test {
namespace {

using Slot = per::Builder::Slot;
using channeltest::MediaAddress;

struct Sample {
    std::string name;
    Pdu pdu;
};

Pdu build(const std::function<void(Slot)>& fill) {
    per::Builder b(h245::MultimediaSystemControlMessage);
    fill(b.root());
    Pdu wire;
    EXPECT_TRUE(per::encode(b.value(), wire));
    return wire;
}

Pdu pdu(const std::string& octets) {
    return Pdu(octets.begin(), octets.end());
}

// An OpenLogicalChannel request for `codec` towards `media`, with a reverse
// direction of the same codec.
Pdu channel(unsigned lcn, const char* codec, int frames, MediaAddress media) {
    return pdu(channeltest::openLogicalChannelRequest(
        {lcn, {codec, frames, media}, true, {codec, frames, MediaAddress::ipv4("10.0.0.5", 49170)}}));
}

Slot openLogicalChannel(Slot message, int channel) {
    Slot olc = message.choose("request").choose("openLogicalChannel");
    olc["forwardLogicalChannelNumber"].setInteger(channel);
    return olc;
}

void terminalCapabilitySet(Slot message) {
    Slot tcs = message.choose("request").choose("terminalCapabilitySet");
    tcs["sequenceNumber"].setInteger(1);
    tcs["protocolIdentifier"].setOid("0.0.8.245.0.7");
    Slot h223 = tcs["multiplexCapability"].choose("h223Capability");
    for (const char* flag : {"transportWithI_frames", "videoWithAL1", "videoWithAL2", "videoWithAL3", "audioWithAL1",
                             "audioWithAL2", "audioWithAL3", "dataWithAL1", "dataWithAL2", "dataWithAL3"})
        h223[flag].setBool(false);
    h223["maximumAl2SDUSize"].setInteger(1024);
    h223["maximumAl3SDUSize"].setInteger(1024);
    h223["maximumDelayJitter"].setInteger(200);
    h223["h223MultiplexTableCapability"].choose("basic").present();
    Slot table = tcs["capabilityTable"];
    auto entry = [&table](int number) {
        Slot e = table.append();
        e["capabilityTableEntryNumber"].setInteger(number);
        return e["capability"];
    };
    entry(1).choose("receiveAudioCapability").choose("g711Alaw64k").setInteger(240);
    entry(2).choose("receiveAudioCapability").choose("g711Ulaw64k").setInteger(240);
    entry(3).choose("receiveAudioCapability").choose("g729AnnexA").setInteger(6);
    entry(4).choose("transmitAudioCapability").choose("g729wAnnexB").setInteger(6);
    Slot h261 = entry(5).choose("receiveVideoCapability").choose("h261VideoCapability");
    h261["cifMPI"].setInteger(1);
    h261["temporalSpatialTradeOffCapability"].setBool(true);
    h261["maxBitRate"].setInteger(6000);
    h261["stillImageTransmission"].setBool(false);
    Slot descriptor = tcs["capabilityDescriptors"].append();
    descriptor["capabilityDescriptorNumber"].setInteger(0);
    Slot simultaneous = descriptor["simultaneousCapabilities"];
    Slot audioSet = simultaneous.append();
    for (int e : {1, 2, 3})
        audioSet.append().setInteger(e);
    simultaneous.append().append().setInteger(5);
}

// The messages of a call, the traffic generator's channel messages among
// them, and one of each other kind the tables describe.
std::vector<Sample> samples() {
    const MediaAddress unicast = MediaAddress::ipv4("192.168.1.20", 5000);
    return {
        {"OLC G.711 A-law, forward only, RTCP only", build([](Slot m) {
             Slot forward = openLogicalChannel(m, 101)["forwardLogicalChannelParameters"];
             forward["dataType"].choose("audioData").choose("g711Alaw64k").setInteger(30);
             Slot p = forward["multiplexParameters"].choose("h2250LogicalChannelParameters");
             p["sessionID"].setInteger(1);
             p["mediaGuaranteedDelivery"].setBool(false);
             Slot rtcp = p["mediaControlChannel"].choose("unicastAddress").choose("iPAddress");
             rtcp["network"].setBytes("\x0a\x01\x03\x8f");
             rtcp["tsapIdentifier"].setInteger(5001);
             p["silenceSuppression"].setBool(true);
         })},
        {"OLC G.711 u-law with reverse", channel(2, "g711Ulaw64k", 20, unicast)},
        {"OLC G.723.1 with reverse", channel(4, "g7231", 1, unicast)},
        {"OLC G.729 Annex A and B, an extension", channel(8, "g729AnnexAwAnnexB", 3, unicast)},
        {"OLC GSM full rate, an extension", build([](Slot m) {
             Slot forward = openLogicalChannel(m, 9)["forwardLogicalChannelParameters"];
             Slot c = forward["dataType"].choose("audioData").choose("gsmFullRate");
             c["audioUnitSize"].setInteger(33);
             c["comfortNoise"].setBool(false);
             c["scrambled"].setBool(false);
             forward["multiplexParameters"].choose("h2250LogicalChannelParameters")["sessionID"].setInteger(1);
         })},
        {"OLC H.261 with reverse", channel(12, "h261", 0, unicast)},
        {"OLC H.263 with reverse", channel(14, "h263", 0, unicast)},
        {"OLC IPv6 media channel with reverse", channel(16, "g711Alaw64k", 20, {MediaAddress::Ipv6, "", 6002})},
        {"OLC multicast media channel with reverse",
         channel(18, "g7231", 1, {MediaAddress::Multicast, "239.1.2.3", 7002})},
        {"OLCAck with forward multiplex ack only", pdu(channeltest::openLogicalChannelAck(101, unicast, {}))},
        {"OLCAck with reverse only", pdu(channeltest::openLogicalChannelAck(101, {}, unicast))},
        {"OLCReject, an extension cause", build([](Slot m) {
             Slot r = m.choose("response").choose("openLogicalChannelReject");
             r["forwardLogicalChannelNumber"].setInteger(3);
             r["cause"].choose("masterSlaveConflict").present();
         })},
        {"UserInputIndication alphanumeric", pdu(channeltest::userInputAlphanumeric("1234#*"))},
        {"TerminalCapabilitySet", build(terminalCapabilitySet)},
        {"TerminalCapabilitySetAck", build([](Slot m) {
             m.choose("response").choose("terminalCapabilitySetAck")["sequenceNumber"].setInteger(1);
         })},
        {"MasterSlaveDetermination", pdu(channeltest::masterSlaveDetermination())},
        {"MasterSlaveDeterminationAck", build([](Slot m) {
             m.choose("response").choose("masterSlaveDeterminationAck")["decision"].choose("slave").present();
         })},
        {"CloseLogicalChannel", build([](Slot m) {
             Slot c = m.choose("request").choose("closeLogicalChannel");
             c["forwardLogicalChannelNumber"].setInteger(101);
             c["source"].choose("lcse").present();
         })},
        {"RequestMode G.711", build([](Slot m) {
             Slot r = m.choose("request").choose("requestMode");
             r["sequenceNumber"].setInteger(7);
             r["requestedModes"].append().append()["type"].choose("audioMode").choose("g711Ulaw64k").present();
         })},
        {"MiscellaneousCommand fast update", build([](Slot m) {
             Slot c = m.choose("command").choose("miscellaneousCommand");
             c["logicalChannelNumber"].setInteger(11);
             c["type"].choose("videoFastUpdatePicture").present();
         })},
        {"EndSessionCommand disconnect",
         build([](Slot m) { m.choose("command").choose("endSessionCommand").choose("disconnect").present(); })},
        {"FunctionNotUnderstood returning a request", build([](Slot m) {
             Slot msd = m.choose("indication")
                            .choose("functionNotUnderstood")
                            .choose("request")
                            .choose("masterSlaveDetermination");
             msd["terminalType"].setInteger(50);
             msd["statusDeterminationNumber"].setInteger(16777215);
         })},
    };
}

// Decodes each sample and expects tshark to read every one as the toolkit does.
void expectReadAlike(const std::vector<Sample>& samples) {
    std::vector<Pdu> pdus;
    std::vector<std::string> toolkit;
    per::Decoder decoder;
    for (const Sample& sample : samples) {
        per::Value decoded = decoder.decode(h245::MultimediaSystemControlMessage, sample.pdu.data(), sample.pdu.size());
        ASSERT_TRUE(decoded) << sample.name;
        FieldCollector fields(kH245Fields);
        fields.collect(decoded);
        toolkit.push_back(fields.text());
        pdus.push_back(sample.pdu);
    }
    std::vector<TsharkPacket> tshark = tsharkRead(writeCapture(pdus, "h245dg"), kH245Fields);
    ASSERT_EQ(tshark.size(), pdus.size());
    for (size_t i = 0; i < pdus.size(); ++i)
        EXPECT_EQ(toolkit[i], tshark[i].fields) << samples[i].name;
}

TEST(H245Oracle, EveryBuiltMessageReadsTheSameThroughTheToolkitAndTshark) {
    if (!haveTshark())
        GTEST_SKIP() << "tshark or text2pcap not installed";
    expectReadAlike(samples());
}

// The media description names a channel's codec by its alternative's name:
// each must be spelt, and numbered, as tshark knows it.
TEST(H245Oracle, EveryCodecAlternativeReadsWithTsharksNameAndIndex) {
    if (!haveTshark())
        GTEST_SKIP() << "tshark or text2pcap not installed";
    std::vector<Sample> samples;
    const std::pair<const char*, const per::Type*> kMedia[] = {{"audioData", &h245::AudioCapability},
                                                               {"videoData", &h245::VideoCapability}};
    for (const auto& media : kMedia) {
        for (size_t i = 0; i < media.second->count; ++i) {
            const per::Component& codec = media.second->components[i];
            if (codec.type->kind == per::Kind::Open)
                continue;
            per::ValueGenerator values(samples.size() + 1);
            samples.push_back({codec.name, build([&](Slot m) {
                                   Slot forward = openLogicalChannel(m, 1)["forwardLogicalChannelParameters"];
                                   Slot chosen = forward["dataType"].choose(media.first).choose(codec.name);
                                   // Mandatory parts only, at random within their constraints.
                                   values.fill(chosen, *codec.type, per::kFullDepth + 1);
                                   Slot h2250 = forward["multiplexParameters"].choose("h2250LogicalChannelParameters");
                                   h2250["sessionID"].setInteger(1);
                               })});
        }
    }
    EXPECT_EQ(samples.size(), 31u);
    expectReadAlike(samples);
}

TEST(SignallingOracle, EveryBuiltMessageReadsTheSameInTheToolkitAndInTshark) {
    if (!haveTshark())
        GTEST_SKIP() << "tshark and text2pcap are needed for the oracle";
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
