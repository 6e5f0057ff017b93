// H.245 messages built with the encoder read the same through the toolkit
// and through tshark: every compared field, CHOICE alternatives by index and
// by name, in the order of the message.

#include <gtest/gtest.h>

#include <functional>

#include "H245Oracle.h"
#include "Tshark.h"
#include "h323/H245.h"

namespace h323::test {
namespace {

using Slot = per::Builder::Slot;

std::string octets(std::initializer_list<uint8_t> b) { return std::string(b.begin(), b.end()); }

void ipv4(Slot address, std::initializer_list<uint8_t> ip, int port) {
    Slot a = address.choose("unicastAddress").choose("iPAddress");
    a["network"].setBytes(octets(ip));
    a["tsapIdentifier"].setInteger(port);
}

void ipv6(Slot address, int port) {
    Slot a = address.choose("unicastAddress").choose("iP6Address");
    a["network"].setBytes(octets({0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x05}));
    a["tsapIdentifier"].setInteger(port);
}

void multicastIpv4(Slot address, int port) {
    Slot a = address.choose("multicastAddress").choose("iPAddress");
    a["network"].setBytes(octets({239, 1, 2, 3}));
    a["tsapIdentifier"].setInteger(port);
}

// H.225.0 logical channel parameters with an RTP and an RTCP address.
Slot h2250(Slot multiplexParameters, int session, int rtpPort) {
    Slot p = multiplexParameters.choose("h2250LogicalChannelParameters");
    p["sessionID"].setInteger(session);
    ipv4(p["mediaChannel"], {10, 0, 0, 5}, rtpPort);
    ipv4(p["mediaControlChannel"], {10, 0, 0, 5}, rtpPort + 1);
    return p;
}

void audio(Slot dataType, const char* codec, int framesPerPacket) {
    dataType.choose("audioData").choose(codec).setInteger(framesPerPacket);
}

void g7231(Slot dataType) {
    Slot c = dataType.choose("audioData").choose("g7231");
    c["maxAl_sduAudioFrames"].setInteger(1);
    c["silenceSuppression"].setBool(true);
}

void gsmFullRate(Slot dataType) {
    Slot c = dataType.choose("audioData").choose("gsmFullRate");
    c["audioUnitSize"].setInteger(33);
    c["comfortNoise"].setBool(false);
    c["scrambled"].setBool(false);
}

void h261(Slot dataType) {
    Slot v = dataType.choose("videoData").choose("h261VideoCapability");
    v["qcifMPI"].setInteger(1);
    v["cifMPI"].setInteger(2);
    v["temporalSpatialTradeOffCapability"].setBool(false);
    v["maxBitRate"].setInteger(3840);
    v["stillImageTransmission"].setBool(false);
}

void h263(Slot dataType) {
    Slot v = dataType.choose("videoData").choose("h263VideoCapability");
    v["qcifMPI"].setInteger(2);
    v["maxBitRate"].setInteger(1920);
    for (const char* flag : {"unrestrictedVector", "arithmeticCoding", "advancedPrediction", "pbFrames",
                             "temporalSpatialTradeOffCapability"})
        v[flag].setBool(false);
}

Slot openLogicalChannel(Slot message, int channel) {
    Slot olc = message.choose("request").choose("openLogicalChannel");
    olc["forwardLogicalChannelNumber"].setInteger(channel);
    return olc;
}

// An OpenLogicalChannel whose forward (and, given `reverse`, reverse)
// direction carries `dataType` over H.225.0 with the given media address.
void channel(Slot message, int number, const std::function<void(Slot)>& dataType,
             const std::function<void(Slot)>& mediaChannel, bool reverse) {
    Slot olc = openLogicalChannel(message, number);
    Slot forward = olc["forwardLogicalChannelParameters"];
    dataType(forward["dataType"]);
    Slot params = forward["multiplexParameters"].choose("h2250LogicalChannelParameters");
    params["sessionID"].setInteger(number);
    mediaChannel(params["mediaChannel"]);
    if (!reverse) return;
    Slot back = olc["reverseLogicalChannelParameters"];
    dataType(back["dataType"]);
    h2250(back["multiplexParameters"], number, 49170);
}

auto unicast(int port) {
    return [port](Slot s) { ipv4(s, {192, 168, 1, 20}, port); };
}

auto codec(const char* name, int frames) {
    return [name, frames](Slot s) { audio(s, name, frames); };
}

void openLogicalChannelAck(Slot message, bool forwardAck, bool reverse) {
    Slot ack = message.choose("response").choose("openLogicalChannelAck");
    ack["forwardLogicalChannelNumber"].setInteger(101);
    if (reverse) {
        Slot back = ack["reverseLogicalChannelParameters"];
        back["reverseLogicalChannelNumber"].setInteger(102);
        h2250(back["multiplexParameters"], 1, 40000);
    }
    if (forwardAck) {
        Slot p = ack["forwardMultiplexAckParameters"].choose("h2250LogicalChannelAckParameters");
        p["sessionID"].setInteger(1);
        ipv4(p["mediaChannel"], {10, 1, 6, 18}, 2006);
        ipv4(p["mediaControlChannel"], {10, 1, 6, 18}, 2007);
    }
}

void capabilityEntry(Slot table, int number, const std::function<void(Slot)>& capability) {
    Slot entry = table.append();
    entry["capabilityTableEntryNumber"].setInteger(number);
    capability(entry["capability"]);
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
    capabilityEntry(table, 1, [](Slot c) { c.choose("receiveAudioCapability").choose("g711Alaw64k").setInteger(240); });
    capabilityEntry(table, 2, [](Slot c) { c.choose("receiveAudioCapability").choose("g711Ulaw64k").setInteger(240); });
    capabilityEntry(table, 3, [](Slot c) { c.choose("receiveAudioCapability").choose("g729AnnexA").setInteger(6); });
    capabilityEntry(table, 4, [](Slot c) { c.choose("transmitAudioCapability").choose("g729wAnnexB").setInteger(6); });
    capabilityEntry(table, 5, [](Slot c) {
        Slot h261 = c.choose("receiveVideoCapability").choose("h261VideoCapability");
        h261["cifMPI"].setInteger(1);
        h261["temporalSpatialTradeOffCapability"].setBool(true);
        h261["maxBitRate"].setInteger(6000);
        h261["stillImageTransmission"].setBool(false);
    });
    Slot descriptor = tcs["capabilityDescriptors"].append();
    descriptor["capabilityDescriptorNumber"].setInteger(0);
    Slot simultaneous = descriptor["simultaneousCapabilities"];
    Slot audioSet = simultaneous.append();
    for (int entry : {1, 2, 3}) audioSet.append().setInteger(entry);
    simultaneous.append().append().setInteger(5);
}

struct Sample {
    std::string name;
    std::function<void(Slot)> build;
};

const std::vector<Sample> kSamples = {
    {"OLC G.711 A-law, forward only, RTCP only",
     [](Slot m) {
         Slot forward = openLogicalChannel(m, 101)["forwardLogicalChannelParameters"];
         audio(forward["dataType"], "g711Alaw64k", 30);
         Slot p = forward["multiplexParameters"].choose("h2250LogicalChannelParameters");
         p["sessionID"].setInteger(1);
         p["mediaGuaranteedDelivery"].setBool(false);
         ipv4(p["mediaControlChannel"], {10, 1, 3, 143}, 5001);
         p["silenceSuppression"].setBool(true);
     }},
    {"OLC G.711 A-law, forward only", [](Slot m) { channel(m, 1, codec("g711Alaw64k", 20), unicast(5000), false); }},
    {"OLC G.711 u-law with reverse", [](Slot m) { channel(m, 2, codec("g711Ulaw64k", 20), unicast(5002), true); }},
    {"OLC G.723.1", [](Slot m) { channel(m, 3, g7231, unicast(5004), false); }},
    {"OLC G.723.1 with reverse", [](Slot m) { channel(m, 4, g7231, unicast(5006), true); }},
    {"OLC G.729", [](Slot m) { channel(m, 5, codec("g729", 2), unicast(5008), false); }},
    {"OLC G.729 Annex A", [](Slot m) { channel(m, 6, codec("g729AnnexA", 2), unicast(5010), true); }},
    {"OLC G.729 Annex B, an extension", [](Slot m) { channel(m, 7, codec("g729wAnnexB", 2), unicast(5012), false); }},
    {"OLC G.729 Annex A and B, an extension",
     [](Slot m) { channel(m, 8, codec("g729AnnexAwAnnexB", 3), unicast(5014), true); }},
    {"OLC GSM full rate, an extension", [](Slot m) { channel(m, 9, gsmFullRate, unicast(5016), false); }},
    {"OLC G.722", [](Slot m) { channel(m, 10, codec("g722_64k", 20), unicast(5018), false); }},
    {"OLC H.261", [](Slot m) { channel(m, 11, h261, unicast(5020), false); }},
    {"OLC H.261 with reverse", [](Slot m) { channel(m, 12, h261, unicast(5022), true); }},
    {"OLC H.263", [](Slot m) { channel(m, 13, h263, unicast(5024), false); }},
    {"OLC H.263 with reverse", [](Slot m) { channel(m, 14, h263, unicast(5026), true); }},
    {"OLC IPv6 media channel",
     [](Slot m) { channel(m, 15, codec("g711Ulaw64k", 20), [](Slot s) { ipv6(s, 6000); }, false); }},
    {"OLC IPv6 media channel with reverse",
     [](Slot m) { channel(m, 16, codec("g711Alaw64k", 20), [](Slot s) { ipv6(s, 6002); }, true); }},
    {"OLC multicast media channel",
     [](Slot m) { channel(m, 17, codec("g711Ulaw64k", 20), [](Slot s) { multicastIpv4(s, 7000); }, false); }},
    {"OLC multicast media channel with reverse",
     [](Slot m) { channel(m, 18, g7231, [](Slot s) { multicastIpv4(s, 7002); }, true); }},
    {"OLCAck with forward multiplex ack", [](Slot m) { openLogicalChannelAck(m, true, false); }},
    {"OLCAck without forward multiplex ack", [](Slot m) { openLogicalChannelAck(m, false, false); }},
    {"OLCAck with reverse and forward multiplex ack", [](Slot m) { openLogicalChannelAck(m, true, true); }},
    {"OLCAck with reverse only", [](Slot m) { openLogicalChannelAck(m, false, true); }},
    {"OLCReject, an extension cause",
     [](Slot m) {
         Slot r = m.choose("response").choose("openLogicalChannelReject");
         r["forwardLogicalChannelNumber"].setInteger(3);
         r["cause"].choose("masterSlaveConflict").present();
     }},
    {"UserInputIndication alphanumeric",
     [](Slot m) { m.choose("indication").choose("userInput").choose("alphanumeric").setText("1234#*"); }},
    {"TerminalCapabilitySet", terminalCapabilitySet},
    {"TerminalCapabilitySetAck",
     [](Slot m) { m.choose("response").choose("terminalCapabilitySetAck")["sequenceNumber"].setInteger(1); }},
    {"MasterSlaveDetermination",
     [](Slot m) {
         Slot msd = m.choose("request").choose("masterSlaveDetermination");
         msd["terminalType"].setInteger(60);
         msd["statusDeterminationNumber"].setInteger(16777215);
     }},
    {"MasterSlaveDeterminationAck",
     [](Slot m) { m.choose("response").choose("masterSlaveDeterminationAck")["decision"].choose("slave").present(); }},
    {"CloseLogicalChannel",
     [](Slot m) {
         Slot c = m.choose("request").choose("closeLogicalChannel");
         c["forwardLogicalChannelNumber"].setInteger(101);
         c["source"].choose("lcse").present();
     }},
    {"RequestMode G.711",
     [](Slot m) {
         Slot r = m.choose("request").choose("requestMode");
         r["sequenceNumber"].setInteger(7);
         r["requestedModes"].append().append()["type"].choose("audioMode").choose("g711Ulaw64k").present();
     }},
    {"MiscellaneousCommand fast update",
     [](Slot m) {
         Slot c = m.choose("command").choose("miscellaneousCommand");
         c["logicalChannelNumber"].setInteger(11);
         c["type"].choose("videoFastUpdatePicture").present();
     }},
    {"EndSessionCommand disconnect",
     [](Slot m) { m.choose("command").choose("endSessionCommand").choose("disconnect").present(); }},
    {"FunctionNotUnderstood returning a request",
     [](Slot m) {
         Slot returned = m.choose("indication").choose("functionNotUnderstood");
         Slot msd = returned.choose("request").choose("masterSlaveDetermination");
         msd["terminalType"].setInteger(50);
         msd["statusDeterminationNumber"].setInteger(1);
     }},
};

// Encodes each sample, decodes it again, and expects tshark to read every
// one as the toolkit does.
void expectReadAlike(const std::vector<Sample>& samples) {
    std::vector<Pdu> pdus;
    std::vector<std::string> toolkit;
    per::Decoder decoder;
    for (const Sample& sample : samples) {
        per::Builder b(h245::MultimediaSystemControlMessage);
        sample.build(b.root());
        Pdu wire;
        ASSERT_TRUE(per::encode(b.value(), wire)) << sample.name;
        per::Value decoded = decoder.decode(h245::MultimediaSystemControlMessage, wire.data(), wire.size());
        ASSERT_TRUE(decoded) << sample.name;
        FieldCollector fields;
        fields.collect(decoded);
        toolkit.push_back(fields.text());
        pdus.push_back(std::move(wire));
    }

    std::vector<TsharkPacket> tshark = tsharkReadH245(pdus);
    ASSERT_EQ(tshark.size(), pdus.size());
    for (size_t i = 0; i < pdus.size(); ++i) EXPECT_EQ(toolkit[i], tshark[i].fields) << samples[i].name;
}

// The smallest value of a type: mandatory components only, lower bounds,
// first alternatives.
void fillSmallest(Slot s, const per::Type& t) {
    size_t lower = size_t(std::max<int64_t>(t.range.lower, 0));
    switch (t.kind) {
    case per::Kind::Null: s.present(); break;
    case per::Kind::Boolean: s.setBool(false); break;
    case per::Kind::Integer: s.setInteger(t.range.hasLower() ? t.range.lower : 0); break;
    case per::Kind::ObjectIdentifier: s.setOid("0.0.8.245"); break;
    case per::Kind::OctetString: s.setBytes(std::string(lower, '\0')); break;
    case per::Kind::BitString: s.setBits(std::string((lower + 7) / 8, '\0'), int64_t(lower)); break;
    case per::Kind::Choice: fillSmallest(s.choose(t.components[0].name), *t.components[0].type); break;
    case per::Kind::SequenceOf:
        for (size_t i = 0; i < lower; ++i) fillSmallest(s.append(), *t.element);
        break;
    case per::Kind::Sequence:
        s.present();
        for (size_t i = 0; i < t.count; ++i)
            if (!t.components[i].optional() && !t.components[i].addition())
                fillSmallest(s[t.components[i].name], *t.components[i].type);
        break;
    default: s.setText(std::string(lower, t.alphabet ? t.alphabet[0] : '0')); break;
    }
}

TEST(H245Oracle, EveryBuiltMessageReadsTheSameThroughTheToolkitAndTshark) {
    if (!haveTshark()) GTEST_SKIP() << "tshark or text2pcap not installed";
    expectReadAlike(kSamples);
}

// The media description names a channel's codec by its alternative's name:
// each must be spelt, and numbered, as tshark knows it.
TEST(H245Oracle, EveryCodecAlternativeReadsWithTsharksNameAndIndex) {
    if (!haveTshark()) GTEST_SKIP() << "tshark or text2pcap not installed";
    std::vector<Sample> samples;
    const std::pair<const char*, const per::Type*> kMedia[] = {{"audioData", &h245::AudioCapability},
                                                               {"videoData", &h245::VideoCapability}};
    for (auto [media, codecs] : kMedia) {
        for (const per::Component& codec : std::vector(codecs->components, codecs->components + codecs->count)) {
            if (codec.type->kind == per::Kind::Open) continue;
            samples.push_back({codec.name, [media = media, codec](Slot m) {
                                   Slot forward = openLogicalChannel(m, 1)["forwardLogicalChannelParameters"];
                                   fillSmallest(forward["dataType"].choose(media).choose(codec.name), *codec.type);
                                   Slot h2250 = forward["multiplexParameters"].choose("h2250LogicalChannelParameters");
                                   h2250["sessionID"].setInteger(1);
                               }});
        }
    }
    EXPECT_EQ(samples.size(), 31u);
    expectReadAlike(samples);
}

}  // namespace
}  // namespace h323::test
