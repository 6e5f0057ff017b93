#include "Call.h"

#include "PcapReader.h"

#include "EModel.h"
#include "Rtcp.h"

#include <algorithm>

namespace recorder {
namespace {

Party otherParty(Party party) {
    switch (party) {
    case Party::Caller: return Party::Callee;
    case Party::Callee: return Party::Caller;
    default: return Party::Unknown;
    }
}

Json::Array texts(const std::vector<std::string>& values) {
    return Json::Array(values.begin(), values.end());
}

Json::Array codecNames(const std::vector<Codec>& codecs) {
    Json::Array names;
    for (const Codec& codec : codecs)
        names.emplace_back(codec.name.empty() ? std::to_string(codec.payloadType) : codec.name);
    return names;
}

}  // namespace

const char* partyName(Party party) {
    switch (party) {
    case Party::Caller: return "caller";
    case Party::Callee: return "callee";
    default: return "unknown";
    }
}

Call::Call(CallInfo info, std::filesystem::path folder, FileCache& files)
    : info_(std::move(info)),
      folder_(std::move(folder)),
      lastActivity_(info_.start),
      pcap_(files, folder_ / "call.pcap") {}

std::string Call::name() const {
    return info_.signalling == Signalling::Sip ? info_.callId : "with H.323 reference " + info_.callReference;
}

void Call::end(std::string reason, TimePoint when) {
    info_.endReason = std::move(reason);
    info_.end = when;
}

std::vector<Endpoint> Call::replaceMedia(Party owner, std::vector<MediaAddress> addresses) {
    std::vector<Endpoint> dropped;
    auto kept = std::remove_if(media_.begin(), media_.end(), [&](const MediaAddress& old) {
        if (old.owner != owner)
            return false;
        const bool stays = std::any_of(addresses.begin(), addresses.end(),
                                       [&](const MediaAddress& now) { return now.address == old.address; });
        if (!stays)
            dropped.push_back(old.address);
        return true;
    });
    media_.erase(kept, media_.end());
    ++mediaVersion_;
    for (MediaAddress& address : addresses) {
        address.owner = owner;
        media_.push_back(std::move(address));
    }
    return dropped;
}

void Call::addMedia(MediaAddress address) {
    const bool known = std::any_of(media_.begin(), media_.end(),
                                   [&](const MediaAddress& old) { return old.address == address.address; });
    if (!known) {
        media_.push_back(std::move(address));
        ++mediaVersion_;
    }
}

void Call::recordSip(const Frame& frame) {
    lastActivity_ = frame.arrival;
    ++signallingPackets_;
    pcap_.write(frame.arrival, frame.source, frame.destination, frame.payload);
    keepMessage(frame, frame.payload.substr(0, frame.payload.find_first_of("\r\n")));
}

void Call::recordH323(const Frame& frame) {
    lastActivity_ = frame.arrival;
    ++signallingPackets_;
    descriptions_.emplace_back(frame.payload.substr(0, frame.payload.find('\0')));
    keepMessage(frame, descriptions_.back());
}

void Call::keepMessage(const Frame& frame, std::string_view line) {
    if (messages_.size() < kMaxMessages)
        messages_.push_back(
            {frame.arrival, frame.source, frame.destination, std::string(line.substr(0, kMaxLineLength))});
}

void Call::recordRtp(const Frame& frame) {
    lastActivity_ = frame.arrival;
    pcap_.write(frame.arrival, frame.source, frame.destination, frame.payload);
    if (looksLikeRtcp(frame.payload)) {
        recordRtcp(frame);  // a packet of the call, but neither a stream nor audio
        return;
    }
    Stream& stream = streamTo(frame);
    ++stream.packets;
    stream.bytes += frame.payload.size();
    if (const auto packet = parseRtp(frame.payload)) {
        const PayloadNames& names = namesOf(stream, packet->payloadType);
        const bool event = names.events && packet->payloadType == names.events->payloadType;
        if (stream.payloadType < 0 && !event)
            stream.payloadType = packet->payloadType;
        stream.quality.add(*packet, frame.arrival, names.clockRate, !event);
        if (event)
            dtmf_.add(*packet, frame.arrival, names.eventClockRate, partyName(stream.speaker));
    }
}

// RTCP reports go to the stream whose SSRC they name, wherever they were sent.
void Call::recordRtcp(const Frame& frame) {
    const RtcpCompound rtcp = parseRtcp(frame.payload);
    for (Stream& stream : streams_) {
        for (const SenderReport& report : rtcp.senderReports)
            if (stream.quality.hasSource(report.ssrc))
                stream.quality.addSenderReport(report);
        for (const ReportBlock& block : rtcp.blocks)
            if (stream.quality.hasSource(block.source))
                stream.quality.addReportBlock(block);
    }
}

Call::Stream* Call::streamAt(const Endpoint& destination) {
    const auto found = std::find_if(streams_.begin(), streams_.end(),
                                    [&](const Stream& stream) { return stream.destination == destination; });
    return found == streams_.end() ? nullptr : &*found;
}

Call::Stream& Call::streamTo(const Frame& frame) {
    if (Stream* known = streamAt(frame.destination))
        return *known;

    // The caller speaks on channel 0, the callee on 1. A stream whose receiver is unknown
    // takes the channel its predecessor left free.
    Stream stream;
    stream.destination = frame.destination;
    stream.source = frame.source;
    stream.speaker = otherParty(ownerOf(frame.destination));
    stream.channel = stream.speaker == Party::Caller   ? 0
                     : stream.speaker == Party::Callee ? 1
                                                       : static_cast<int>(streams_.size() % CallAudio::kChannels);
    streams_.push_back(stream);
    return streams_.back();
}

const Call::PayloadNames& Call::namesOf(Stream& stream, int payloadType) const {
    PayloadNames& names = stream.names;
    if (names.mediaVersion != mediaVersion_ || names.payloadType != payloadType) {
        names.mediaVersion = mediaVersion_;
        names.payloadType = payloadType;
        names.codec = codecName(stream.destination, payloadType);
        names.clockRate = clockRate(names.codec);
        names.events = telephoneEvent(stream);
        names.eventClockRate = names.events ? clockRate(names.events->name) : 8000;
    }
    return names;
}

Party Call::ownerOf(const Endpoint& address) const {
    const auto found =
        std::find_if(media_.begin(), media_.end(), [&](const MediaAddress& media) { return media.address == address; });
    return found == media_.end() ? Party::Unknown : found->owner;
}

std::string Call::codecName(const Stream& stream) const {
    return codecName(stream.destination, stream.payloadType);
}

// The signalling's name for a payload type sent to `destination`, else the name it has without one.
std::string Call::codecName(const Endpoint& destination, int payloadType) const {
    for (const MediaAddress& media : media_)
        if (media.address == destination)
            for (const Codec& codec : media.codecs)
                if (codec.payloadType == payloadType && !codec.name.empty())
                    return codec.name;
    return staticPayloadName(payloadType);
}

// The RFC 4733 event codec that the stream's receiver offered, else that any party offered.
const Codec* Call::telephoneEvent(const Stream& stream) const {
    const Codec* anyone = nullptr;
    for (const MediaAddress& media : media_) {
        const Codec* codec = recorder::telephoneEvent(media.codecs);
        if (codec && media.address == stream.destination)
            return codec;
        if (!anyone)
            anyone = codec;
    }
    return anyone;
}

void Call::close() {
    pcap_.close();
}

// Every RTP packet of a stream is in call.pcap with its arrival time, so the audio comes out as
// it would have from the packets as they came. Payload types are named by the media as the call
// ended.
void Call::decodeAudio(CallAudio& audio) {
    PcapReader pcap;
    if (!pcap.open(folder_ / "call.pcap"))
        return;
    PcapReader::Datagram datagram;
    while (pcap.next(datagram)) {
        Stream* stream = streamAt(datagram.destination);
        const auto packet = stream ? parseRtp(datagram.payload) : std::nullopt;
        if (!packet)
            continue;  // signalling or RTCP
        const PayloadNames& names = namesOf(*stream, packet->payloadType);
        if (names.events && packet->payloadType == names.events->payloadType)
            continue;
        stream->decoded = audio.add(stream->channel, datagram.arrival, *packet, names.codec) || stream->decoded;
    }
}

// New fields follow the older ones, whose order readers rely on.
Json Call::streamJson(const Stream& stream) const {
    const std::string codec = codecName(stream);
    const QualitySummary quality = stream.quality.summary(clockRate(codec));
    const auto optional = [](const auto& value) { return value ? Json(*value) : Json(); };
    // MOS from the receiver's jitter when it reported one; the recorder's own estimate
    // overstates it and is left out. 20 ms per packet unless the timestamps tell.
    const uint64_t expected = quality.received + quality.lost;
    const double lossPercent = expected > 0 ? 100.0 * quality.lost / expected : 0.0;
    const std::optional<double> mos = quality.received > 0
                                          ? EModel::mos(codec, lossPercent, quality.jitterMs.value_or(0),
                                                        quality.packetMs > 0 ? quality.packetMs : 20.0)
                                          : std::nullopt;
    return Json::Object{
        {"destination", toString(stream.destination)},
        {"source", toString(stream.source)},
        {"speaker", partyName(stream.speaker)},
        {"payload_type", stream.payloadType},
        {"codec", codec},
        {"packets", stream.packets},
        {"bytes", stream.bytes},
        {"lost", quality.lost},
        {"out_of_order", quality.outOfOrder},
        {"decoded", stream.decoded},
        {"wav_channel", stream.channel},
        {"duplicates", quality.duplicates},
        {"lost_before_first", quality.lostBeforeFirst},
        {"longest_gap_ms", quality.longestGapMs},
        {"jitter_ms", optional(quality.jitterMs)},
        {"rtcp_fraction_lost", optional(quality.rtcpFractionLost)},
        {"rtcp_cumulative_lost", optional(quality.rtcpCumulativeLost)},
        {"jitter_at_recorder_ms", quality.jitterAtRecorderMs},
        {"mos", optional(mos)},
    };
}

Json Call::toJson(bool wavWritten) const {
    Json::Array media;
    for (const MediaAddress& address : media_)
        media.push_back(Json::Object{
            {"address", toString(address.address)},
            {"owner", partyName(address.owner)},
            {"codecs", codecNames(address.codecs)},
        });
    Json::Array streams;
    for (const Stream& stream : streams_)
        streams.push_back(streamJson(stream));

    const bool sip = info_.signalling == Signalling::Sip;
    Json::Object call{
        {"signalling", sip ? "sip" : "h323"},
        {"call_id", info_.callId},
    };
    if (!sip)
        call.emplace_back("call_reference", info_.callReference);
    call.emplace_back("caller", info_.caller);
    call.emplace_back("callee", info_.callee);
    for (const auto& [key, name] : {std::pair{"caller_name", &info_.callerName}, {"callee_name", &info_.calleeName}})
        if (!name->empty())
            call.emplace_back(key, *name);
    call.insert(call.end(), {
                                {"start", isoTime(info_.start)},
                                {"end", isoTime(info_.end)},
                                {"duration", seconds(info_.end - info_.start)},
                                {"end_reason", info_.endReason},
                                {"folder", folder_.string()},
                                {"signalling_packets", signallingPackets_},
                                {"media", std::move(media)},
                                {"streams", std::move(streams)},
                            });
    call.emplace_back("dtmf", dtmf_.toJson());
    if (!sip)
        call.emplace_back("h323_descriptions", texts(descriptions_));
    call.emplace_back("files", Json::Object{
                                   {"pcap", "call.pcap"},
                                   {"wav", wavWritten ? Json("call.wav") : Json()},
                               });
    return call;
}

Json Call::messagesJson() const {
    Json::Array messages;
    for (const SignallingMessage& message : messages_)
        messages.push_back(Json::Object{
            {"time", isoTime(message.time)},
            {"direction", message.source == messages_.front().source ? "from caller" : "from callee"},
            {"source", toString(message.source)},
            {"destination", toString(message.destination)},
            {"line", message.line},
        });
    return messages;
}

}  // namespace recorder
