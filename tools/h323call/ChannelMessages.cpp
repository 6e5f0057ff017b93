#include "ChannelMessages.h"

#include "Messages.h"
#include "h323/H245.h"
#include "h323/Per.h"

namespace channeltest {

using h323::per::Builder;

namespace {

std::string encoded(const Builder& b) {
    const std::vector<uint8_t> wire = h323::per::encode(b.value());
    return std::string(wire.begin(), wire.end());
}

void setAddress(Builder::Slot transportAddress, const MediaAddress& media) {
    switch (media.kind) {
    case MediaAddress::Ipv4:
    case MediaAddress::Multicast: {
        const char* scope = media.kind == MediaAddress::Ipv4 ? "unicastAddress" : "multicastAddress";
        Builder::Slot ip = transportAddress.choose(scope).choose("iPAddress");
        ip["network"].setBytes(h323::test::ipv4Octets(media.ip.c_str()));
        ip["tsapIdentifier"].setInteger(media.port);
        break;
    }
    case MediaAddress::Ipv6: {
        Builder::Slot ip = transportAddress.choose("unicastAddress").choose("iP6Address");
        ip["network"].setBytes(std::string("\x20\x01\x0d\xb8", 4) + std::string(11, '\0') + "\x01");
        ip["tsapIdentifier"].setInteger(media.port);
        break;
    }
    case MediaAddress::None: break;
    }
}

void setDataType(Builder::Slot dataType, const Direction& d) {
    if (d.codec == "h261") {
        Builder::Slot v = dataType.choose("videoData").choose("h261VideoCapability");
        v["qcifMPI"].setInteger(1);
        v["temporalSpatialTradeOffCapability"].setBool(false);
        v["maxBitRate"].setInteger(3840);
        v["stillImageTransmission"].setBool(false);
        return;
    }
    if (d.codec == "h263") {
        Builder::Slot v = dataType.choose("videoData").choose("h263VideoCapability");
        v["qcifMPI"].setInteger(1);
        v["maxBitRate"].setInteger(3840);
        for (const char* flag : {"unrestrictedVector", "arithmeticCoding", "advancedPrediction", "pbFrames",
                                 "temporalSpatialTradeOffCapability", "errorCompensation"})
            v[flag].setBool(false);
        return;
    }
    Builder::Slot audio = dataType.choose("audioData").choose(d.codec);
    if (d.codec == "g7231") {
        audio["maxAl_sduAudioFrames"].setInteger(d.framesPerPacket);
        audio["silenceSuppression"].setBool(false);
    } else {
        audio.setInteger(d.framesPerPacket);
    }
}

void setH2250(Builder::Slot parameters, unsigned session, const MediaAddress& media) {
    parameters["sessionID"].setInteger(session);
    if (media.kind != MediaAddress::None)
        setAddress(parameters["mediaChannel"], media);
}

void fillChannel(Builder::Slot olc, const Channel& c) {
    olc["forwardLogicalChannelNumber"].setInteger(c.lcn);
    Builder::Slot forward = olc["forwardLogicalChannelParameters"];
    setDataType(forward["dataType"], c.forward);
    setH2250(forward["multiplexParameters"].choose("h2250LogicalChannelParameters"), 1, c.forward.media);
    if (!c.hasReverse)
        return;
    Builder::Slot reverse = olc["reverseLogicalChannelParameters"];
    setDataType(reverse["dataType"], c.reverse);
    setH2250(reverse["multiplexParameters"].choose("h2250LogicalChannelParameters"), 1, c.reverse.media);
}

}  // namespace

std::string openLogicalChannel(const Channel& channel) {
    Builder b(h323::h245::OpenLogicalChannel);
    fillChannel(b.root(), channel);
    return encoded(b);
}

std::string openLogicalChannelRequest(const Channel& channel) {
    Builder b(h323::h245::MultimediaSystemControlMessage);
    fillChannel(b.root().choose("request").choose("openLogicalChannel"), channel);
    return encoded(b);
}

std::string openLogicalChannelAck(unsigned lcn, const MediaAddress& forward, const MediaAddress& reverse) {
    Builder b(h323::h245::MultimediaSystemControlMessage);
    Builder::Slot ack = b.root().choose("response").choose("openLogicalChannelAck");
    ack["forwardLogicalChannelNumber"].setInteger(lcn);
    if (reverse.kind != MediaAddress::None) {
        Builder::Slot r = ack["reverseLogicalChannelParameters"];
        r["reverseLogicalChannelNumber"].setInteger(lcn + 1);
        setH2250(r["multiplexParameters"].choose("h2250LogicalChannelParameters"), 1, reverse);
    }
    if (forward.kind != MediaAddress::None) {
        Builder::Slot p = ack["forwardMultiplexAckParameters"].choose("h2250LogicalChannelAckParameters");
        setAddress(p["mediaChannel"], forward);
    }
    return encoded(b);
}

std::string userInputAlphanumeric(const std::string& digits) {
    Builder b(h323::h245::MultimediaSystemControlMessage);
    b.root().choose("indication").choose("userInput").choose("alphanumeric").setText(digits);
    return encoded(b);
}

std::string masterSlaveDetermination() {
    Builder b(h323::h245::MultimediaSystemControlMessage);
    Builder::Slot msd = b.root().choose("request").choose("masterSlaveDetermination");
    msd["terminalType"].setInteger(50);
    msd["statusDeterminationNumber"].setInteger(12345);
    return encoded(b);
}

}  // namespace channeltest
