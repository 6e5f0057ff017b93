#include "CallTracker.h"

#include "Log.h"

#include <algorithm>

namespace recorder {
namespace {

// Requests come from the party named in From, responses from the one in To; the caller is
// the party whose tag was in the From of the first INVITE.
Party sender(const SipMessage& message, const std::string& callerTag) {
    return message.isRequest == (message.fromTag == callerTag) ? Party::Caller : Party::Callee;
}

bool answersInvite(const SipMessage& message) {
    return !message.isRequest && message.cseqMethod == "INVITE";
}

// A final answer that refuses the call. Authentication challenges are not: the caller asks
// again in the same call.
bool rejectsCall(const SipMessage& message) {
    return answersInvite(message) && message.status >= 300 && message.status != 401 && message.status != 407;
}

std::vector<MediaAddress> mediaOf(const std::vector<SdpMedia>& sdp) {
    std::vector<MediaAddress> addresses;
    for (const SdpMedia& media : sdp)
        addresses.push_back({media.address, Party::Unknown, media.codecs});
    return addresses;
}

// H.323 descriptions name the RTP address only; RTCP takes the next port (H.225 and RFC 3550's
// convention).
Endpoint nextPort(const Endpoint& rtp) {
    return rtp.port < 65535 ? Endpoint{rtp.ip, static_cast<uint16_t>(rtp.port + 1)} : Endpoint{};
}

}  // namespace

CallTracker::CallTracker(CommandSink& sniffer, CallArchive& archive, FileCache& files, Milliseconds idle,
                         Milliseconds linger)
    : sniffer_(sniffer), archive_(archive), files_(files), idle_(idle), linger_(linger) {}

void CallTracker::onFrame(const Frame& frame) {
    switch (frame.protocol) {
    case Protocol::Sip: onSip(frame); break;
    case Protocol::Rtp: onRtp(frame); break;
    case Protocol::H323: onH323(frame); break;
    case Protocol::HeartbeatReply: break;
    }
}

void CallTracker::onSip(const Frame& frame) {
    const auto message = parseSip(frame.payload);
    if (!message || message->callId.empty()) {
        log::warn() << "Not a SIP message from " << toString(frame.source) << ", " << frame.payload.size() << " bytes";
        return;
    }
    const std::string key = "sip:" + message->callId;
    auto found = calls_.find(key);
    if (found == calls_.end()) {
        if (!message->isRequest || message->method != "INVITE")
            return;  // outside any call: REGISTER, OPTIONS, or the tail of a call already archived
        CallInfo info;
        info.callId = message->callId;
        info.caller = message->from;
        info.callee = message->to;
        info.callerName = message->fromName;
        info.calleeName = message->toName;
        info.start = frame.arrival;
        found = open(key, std::move(info), message->callId);
        found->second.callerTag = message->fromTag;
    }

    Tracked& tracked = found->second;
    tracked.call->recordSip(frame);
    if (!tracked.call->ended())
        followSip(tracked, *message, frame.arrival);
}

void CallTracker::followSip(Tracked& tracked, const SipMessage& message, TimePoint arrival) {
    Call& call = *tracked.call;
    if (!message.sdp.empty() && (message.isRequest || message.status < 300)) {
        const std::vector<SdpMedia> sdp = parseSdpAudio(message.sdp);
        for (const Endpoint& dropped : call.replaceMedia(sender(message, tracked.callerTag), mediaOf(sdp)))
            unroute(dropped, call);
        for (const SdpMedia& media : sdp)
            route(media.address, call, media.rtcp);
    }

    if (message.isRequest && message.method == "BYE")
        end(call, "bye", arrival);
    else if (message.isRequest && message.method == "CANCEL")
        end(call, "cancel", arrival);
    else if (answersInvite(message) && message.status >= 200 && message.status < 300)
        tracked.answered = true;
    else if (!tracked.answered && rejectsCall(message))
        end(call, "rejected " + std::to_string(message.status), arrival);
}

void CallTracker::onH323(const Frame& frame) {
    const H323Description description = parseH323Description(frame.payload);
    if (description.callReference.empty()) {
        log::warn() << "H.323 description without a call reference from " << toString(frame.source);
        return;
    }
    const std::string key = "h323:" + description.callReference;
    auto found = calls_.find(key);
    if (found == calls_.end()) {
        if (description.type == kH323ReleaseComplete)
            return;
        CallInfo info;
        info.signalling = Signalling::H323;
        info.callReference = description.callReference;
        info.start = frame.arrival;
        found = open(key, std::move(info), "h323-" + description.callReference);
    }

    Tracked& tracked = found->second;
    if (description.type == kH323Setup && tracked.callerIp == 0) {
        tracked.callerIp = frame.source.ip;
        tracked.calleeIp = frame.destination.ip;
    }

    tracked.call->recordH323(frame);
    if (!tracked.call->ended())
        followH323(tracked, description, frame.arrival);
}

void CallTracker::followH323(Tracked& tracked, const H323Description& description, TimePoint arrival) {
    Call& call = *tracked.call;
    CallInfo& info = call.info();
    const auto learn = [](std::string& field, const std::string& value) {
        if (field.empty())
            field = value;
    };
    learn(info.callId, description.callId);
    learn(info.caller, description.caller);
    learn(info.callee, description.callee);

    // A party receives its RTP on its own host; on a single host the owner stays unknown.
    const auto ownerOf = [&tracked](uint32_t ip) {
        if (tracked.callerIp == tracked.calleeIp)
            return Party::Unknown;
        return ip == tracked.callerIp ? Party::Caller : ip == tracked.calleeIp ? Party::Callee : Party::Unknown;
    };
    for (const H323Media& media : description.media) {
        call.addMedia({media.address, ownerOf(media.address.ip), {{-1, media.codec}}});
        route(media.address, call, nextPort(media.address));
    }

    if (description.type == kH323ReleaseComplete)
        end(call, "release complete", arrival);
}

void CallTracker::onRtp(const Frame& frame) {
    const auto found = routes_.find(frame.destination);
    if (found == routes_.end()) {
        log::debug() << "RTP to " << toString(frame.destination) << " belongs to no call";
        return;
    }
    found->second.call->recordRtp(frame);
}

CallTracker::Calls::iterator CallTracker::open(std::string key, CallInfo info, std::string_view folderId) {
    const std::filesystem::path folder = archive_.newFolder(info.start, folderId);
    Tracked tracked;
    tracked.call = std::make_unique<Call>(std::move(info), folder, files_);
    log::info() << "Call " << tracked.call->name() << " started, recording in " << folder.string();
    return calls_.emplace(std::move(key), std::move(tracked)).first;
}

void CallTracker::route(const Endpoint& address, Call& call, const Endpoint& rtcp) {
    auto [found, added] = routes_.try_emplace(address, Route{&call, false, {}});
    Route& route = found->second;
    if (!added && route.call != &call) {
        log::info() << "Media address " << toString(address) << " passes from call " << route.call->name()
                    << " to call " << call.name();
        route.call = &call;
    }
    if (!route.forwarded) {
        log::info() << "Forwarding RTP to " << toString(address) << " for call " << call.name();
        sniffer_.send(CommandCode::AddRtp, address);
        route.forwarded = true;
    }
    // The RTCP address has a route of its own, unless it is a media address itself.
    if (rtcp.port == 0 || rtcp == address)
        return;
    const auto known = routes_.find(rtcp);
    if (known != routes_.end() && known->second.rtcp.port != 0)
        return;
    if (route.rtcp.port != 0 && route.rtcp != rtcp)
        unroute(route.rtcp, call);
    route.rtcp = rtcp;
    this->route(rtcp, call);
}

void CallTracker::unroute(const Endpoint& address, const Call& call) {
    const auto found = routes_.find(address);
    if (found == routes_.end() || found->second.call != &call)
        return;
    if (found->second.forwarded)
        sniffer_.send(CommandCode::RemoveRtp, address);
    const Endpoint rtcp = found->second.rtcp;
    routes_.erase(found);
    if (rtcp.port != 0)
        unroute(rtcp, call);
}

// A call's routes are its media addresses and their RTCP addresses, so ending or finishing it
// costs a look-up per address, not a walk over every route of every call. In address order.
std::vector<Endpoint> CallTracker::routesOf(const Call& call) const {
    std::vector<Endpoint> addresses;
    for (const MediaAddress& media : call.media()) {
        const auto found = routes_.find(media.address);
        if (found == routes_.end() || found->second.call != &call)
            continue;
        addresses.push_back(media.address);
        const Endpoint rtcp = found->second.rtcp;
        const auto control = routes_.find(rtcp);
        if (rtcp.port != 0 && control != routes_.end() && control->second.call == &call)
            addresses.push_back(rtcp);
    }
    std::sort(addresses.begin(), addresses.end());
    return addresses;
}

void CallTracker::end(Call& call, std::string reason, TimePoint when) {
    log::info() << "Call " << call.name() << " ended: " << reason;
    call.end(std::move(reason), when);
    for (const Endpoint& address : routesOf(call)) {
        Route& route = routes_[address];
        if (route.forwarded)
            sniffer_.send(CommandCode::RemoveRtp, address);
        route.forwarded = false;
    }
}

CallTracker::Calls::iterator CallTracker::finish(Calls::iterator found) {
    Call& call = *found->second.call;
    call.close();
    for (const Endpoint& address : routesOf(call))
        routes_.erase(address);
    ++recorded_;
    archive_.store(std::move(found->second.call));
    return calls_.erase(found);
}

void CallTracker::tick(TimePoint now) {
    for (auto found = calls_.begin(); found != calls_.end();) {
        Call& call = *found->second.call;
        if (!call.ended() && now - call.lastActivity() >= idle_)
            end(call, "idle", call.lastActivity());
        const bool over = call.ended() && now - std::max(call.info().end, call.lastActivity()) >= linger_;
        found = over ? finish(found) : std::next(found);
    }
}

void CallTracker::resendRoutes() {
    std::vector<Endpoint> forwarded;
    for (const auto& [address, route] : routes_)
        if (route.forwarded)
            forwarded.push_back(address);
    std::sort(forwarded.begin(), forwarded.end());
    for (const Endpoint& address : forwarded)
        sniffer_.send(CommandCode::AddRtp, address);
    if (!forwarded.empty())
        log::info() << "Asked the sniffer again for RTP to " << forwarded.size() << " addresses";
}

void CallTracker::finishAll(TimePoint now) {
    for (auto& [key, tracked] : calls_)
        if (!tracked.call->ended())
            end(*tracked.call, "shutdown", now);
    for (auto found = calls_.begin(); found != calls_.end();)
        found = finish(found);
}

}  // namespace recorder
