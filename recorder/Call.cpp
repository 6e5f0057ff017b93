#include "Call.h"

#include <algorithm>

namespace recorder {
namespace {

Party otherParty(Party party)
{
    switch (party) {
    case Party::Caller: return Party::Callee;
    case Party::Callee: return Party::Caller;
    default: return Party::Unknown;
    }
}

Json::Array texts(const std::vector<std::string>& values)
{
    return Json::Array(values.begin(), values.end());
}

Json::Array codecNames(const std::vector<Codec>& codecs)
{
    Json::Array names;
    for (const Codec& codec : codecs)
        names.emplace_back(codec.name.empty() ? std::to_string(codec.payloadType) : codec.name);
    return names;
}

}  // namespace

const char* partyName(Party party)
{
    switch (party) {
    case Party::Caller: return "caller";
    case Party::Callee: return "callee";
    default: return "unknown";
    }
}

Call::Call(CallInfo info, std::filesystem::path folder, FileCache& files)
    : info_(std::move(info)), folder_(std::move(folder)), lastActivity_(info_.start),
      pcap_(files, folder_ / "call.pcap"), audio_(files, folder_)
{
}

std::string Call::name() const
{
    return info_.signalling == Signalling::Sip ? info_.callId : "with H.323 reference " + info_.callReference;
}

void Call::end(std::string reason, TimePoint when)
{
    info_.endReason = std::move(reason);
    info_.end = when;
}

std::vector<Endpoint> Call::replaceMedia(Party owner, std::vector<MediaAddress> addresses)
{
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
    for (MediaAddress& address : addresses) {
        address.owner = owner;
        media_.push_back(std::move(address));
    }
    return dropped;
}

void Call::addMedia(MediaAddress address)
{
    const bool known = std::any_of(media_.begin(), media_.end(),
                                   [&](const MediaAddress& old) { return old.address == address.address; });
    if (!known)
        media_.push_back(std::move(address));
}

void Call::recordSip(const Frame& frame)
{
    lastActivity_ = frame.arrival;
    ++signallingPackets_;
    pcap_.write(frame.arrival, frame.source, frame.destination, frame.payload);
}

void Call::recordH323(const Frame& frame)
{
    lastActivity_ = frame.arrival;
    ++signallingPackets_;
    descriptions_.emplace_back(frame.payload.substr(0, frame.payload.find('\0')));
}

void Call::recordRtp(const Frame& frame)
{
    lastActivity_ = frame.arrival;
    pcap_.write(frame.arrival, frame.source, frame.destination, frame.payload);
    Stream& stream = streamTo(frame);
    ++stream.packets;
    stream.bytes += frame.payload.size();
    if (const auto packet = parseRtp(frame.payload)) {
        if (stream.payloadType < 0)
            stream.payloadType = packet->payloadType;
        stream.sequences[packet->ssrc].add(packet->sequence);
        const std::string codec = codecName(frame.destination, packet->payloadType);
        stream.decoded = audio_.add(stream.channel, frame.arrival, *packet, codec) || stream.decoded;
    }
}

Call::Stream& Call::streamTo(const Frame& frame)
{
    const auto found = std::find_if(streams_.begin(), streams_.end(),
                                    [&](const Stream& stream) { return stream.destination == frame.destination; });
    if (found != streams_.end())
        return *found;

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

Party Call::ownerOf(const Endpoint& address) const
{
    const auto found = std::find_if(media_.begin(), media_.end(),
                                    [&](const MediaAddress& media) { return media.address == address; });
    return found == media_.end() ? Party::Unknown : found->owner;
}

std::string Call::codecName(const Stream& stream) const
{
    return codecName(stream.destination, stream.payloadType);
}

// The signalling's name for a payload type sent to `destination`, else the name it has without one.
std::string Call::codecName(const Endpoint& destination, int payloadType) const
{
    for (const MediaAddress& media : media_)
        if (media.address == destination)
            for (const Codec& codec : media.codecs)
                if (codec.payloadType == payloadType && !codec.name.empty())
                    return codec.name;
    return staticPayloadName(payloadType);
}

void Call::close()
{
    pcap_.close();
    audio_.close();
}

Json Call::streamJson(const Stream& stream) const
{
    uint64_t lost = 0, outOfOrder = 0;
    for (const auto& [ssrc, sequence] : stream.sequences) {
        lost += sequence.lost();
        outOfOrder += sequence.outOfOrder();
    }
    return Json::Object{
        {"destination", toString(stream.destination)},
        {"source", toString(stream.source)},
        {"speaker", partyName(stream.speaker)},
        {"payload_type", stream.payloadType},
        {"codec", codecName(stream)},
        {"packets", stream.packets},
        {"bytes", stream.bytes},
        {"lost", lost},
        {"out_of_order", outOfOrder},
        {"decoded", stream.decoded},
        {"wav_channel", stream.channel},
    };
}

Json Call::toJson(bool wavWritten) const
{
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
    call.insert(call.end(), {
        {"caller", info_.caller},
        {"callee", info_.callee},
        {"start", isoTime(info_.start)},
        {"end", isoTime(info_.end)},
        {"duration", seconds(info_.end - info_.start)},
        {"end_reason", info_.endReason},
        {"folder", folder_.string()},
        {"signalling_packets", signallingPackets_},
        {"media", std::move(media)},
        {"streams", std::move(streams)},
    });
    if (!sip)
        call.emplace_back("h323_descriptions", texts(descriptions_));
    call.emplace_back("files", Json::Object{
        {"pcap", "call.pcap"},
        {"wav", wavWritten ? Json("call.wav") : Json()},
    });
    return call;
}

}  // namespace recorder
