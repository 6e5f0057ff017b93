#include "SyntheticCall.h"

#include "ChannelMessages.h"
#include "Messages.h"
#include "h323/Q931.h"
#include "h323/Text.h"

namespace h323call {

using channeltest::Channel;
using channeltest::MediaAddress;
using h323::Q931;
using h323::test::Signal;

namespace {

constexpr uint8_t kSeed = 0x45;  // guid and call reference 0x1000 + seed of the test messages

Channel audioChannel(unsigned lcn, const MediaAddress& forward, const MediaAddress& reverse) {
    return {lcn, {"g711Ulaw64k", 20, forward}, true, {"g711Ulaw64k", 20, reverse}};
}

}  // namespace

std::vector<Step> syntheticCall(const Addresses& a) {
    const MediaAddress callerMedia = MediaAddress::ipv4(a.callerIp, a.callerRtpPort);
    const MediaAddress calleeMedia = MediaAddress::ipv4(a.calleeIp, a.calleeRtpPort);
    const std::string ref = std::to_string(0x1000 + kSeed);
    const std::string guid = h323::guidText(h323::test::guid(kSeed));
    const std::string callId = "c:" + guid + "\n";
    std::vector<Step> steps;

    Signal setup = h323::test::setup(kSeed);
    setup.body()["sourceAddress"].append().choose("h323_ID").setText("alice");
    setup.body()["destinationAddress"].append().choose("dialedDigits").setText("2000");
    setup.body()["fastStart"].append().setBytes(openLogicalChannel(audioChannel(1, calleeMedia, callerMedia)));
    steps.push_back({"Setup", Step::Signalling, Step::CallerToCallee, setup.encoded(),
                     "t:5\nr:" + ref + "\n" + callId + "s:alice\nd:2000\n" +
                         "m:1:fcodec:g711Ulaw64k 20,rtp:" + a.calleeIp + " " + std::to_string(a.calleeRtpPort) +
                         "rcodec:g711Ulaw64k 20,rtp:" + a.callerIp + " " + std::to_string(a.callerRtpPort) + "\n"});

    steps.push_back({"Alerting", Step::Signalling, Step::CalleeToCaller,
                     h323::test::answer(Q931::Alerting, "alerting", kSeed).encoded(), "t:1\nr:" + ref + "\n" + callId});

    Signal connect = h323::test::answer(Q931::Connect, "connect", kSeed);
    h323::test::setIpv4(connect.body()["h245Address"], a.calleeIp.c_str(), a.h245Port);
    steps.push_back(
        {"Connect", Step::Signalling, Step::CalleeToCaller, connect.encoded(), "t:7\nr:" + ref + "\n" + callId});

    const std::string olc = channeltest::openLogicalChannelRequest(audioChannel(2, calleeMedia, {}));
    const std::string described2 = "m:2:fcodec:g711Ulaw64k 20,rtp:" + a.calleeIp + " " +
                                   std::to_string(a.calleeRtpPort) + "rcodec:g711Ulaw64k 20,";
    steps.push_back(
        {"OpenLogicalChannel", Step::H245, Step::CallerToCallee, olc, "t:130\nr:" + ref + "\n" + described2 + "\n"});
    steps.push_back({"OpenLogicalChannelAck", Step::H245, Step::CalleeToCaller,
                     channeltest::openLogicalChannelAck(2, calleeMedia, {}),
                     "t:131\nr:" + ref + "\na:2:rtp:" + a.calleeIp + " " + std::to_string(a.calleeRtpPort) + "\n"});

    Signal facility(Q931::Facility, "empty", 0x1000 + kSeed, false);
    facility.pdu()["h245Tunneling"].setBool(true);
    facility.pdu()["h245Control"].append().setBytes(channeltest::userInputAlphanumeric("5"));
    facility.pdu()["h245Control"].append().setBytes(olc);
    steps.push_back({"Facility with tunnelled H.245", Step::Signalling, Step::CallerToCallee, facility.encoded(),
                     "t:98\nr:" + ref + "\ni:5\n" + described2 + "\n"});

    Signal release(Q931::ReleaseComplete, "releaseComplete", 0x1000 + kSeed, true);
    h323::test::setCallId(release.body(), kSeed);
    release.body()["reason"].choose("undefinedReason");
    steps.push_back({"ReleaseComplete", Step::Signalling, Step::CalleeToCaller, release.encoded(),
                     "t:90\nr:" + ref + "\n" + callId});
    return steps;
}

}  // namespace h323call
