#pragma once

#include "Call.h"
#include "CallArchive.h"
#include "H323Description.h"
#include "SipMessage.h"
#include "Wire.h"

#include <map>
#include <memory>
#include <string>
#include <unordered_map>

namespace recorder {

// Follows calls through the signalling the sniffer forwards, tells the sniffer which RTP to
// forward (each media address and its RTCP address), hands each packet to its call, and
// archives each call once it is over.
//
// A call that ended (BYE, CANCEL, rejection, release) stops its media at once but stays open
// for `linger` to take the messages that close the exchange (the 200 to BYE, the ACK of a 487).
class CallTracker {
public:
    CallTracker(CommandSink& sniffer, CallArchive& archive, FileCache& files, Milliseconds idle, Milliseconds linger);

    void onFrame(const Frame& frame);
    // Ends calls idle for too long and archives those whose linger is over.
    void tick(TimePoint now);
    // A sniffer that (re)connects forwards no RTP yet: tell it every address again.
    void resendRoutes();
    void finishAll(TimePoint now);

    size_t openCalls() const { return calls_.size(); }
    uint64_t recordedCalls() const { return recorded_; }

private:
    struct Tracked {
        std::unique_ptr<Call> call;
        std::string callerTag;  // SIP: the From tag of the first INVITE
        bool answered = false;  // SIP: a 2xx to INVITE was seen
        uint32_t callerIp = 0;  // H.323: the Setup's source and destination
        uint32_t calleeIp = 0;
    };
    using Calls = std::map<std::string, Tracked>;

    // Where RTP to an address goes, and whether the sniffer was asked to forward it. A media
    // address's RTCP address is routed with it, to the same call, and unrouted with it.
    struct Route {
        Call* call = nullptr;
        bool forwarded = false;
        Endpoint rtcp;  // of a media address; port 0 for none, and on the RTCP address's own route
    };

    void onSip(const Frame& frame);
    void followSip(Tracked& tracked, const SipMessage& message, TimePoint arrival);
    void onH323(const Frame& frame);
    void followH323(Tracked& tracked, const H323Description& description, TimePoint arrival);
    void onRtp(const Frame& frame);

    Calls::iterator open(std::string key, CallInfo info, std::string_view folderId);
    // Routes `address` and, unless its port is 0, `rtcp` with it.
    void route(const Endpoint& address, Call& call, const Endpoint& rtcp = {});
    void unroute(const Endpoint& address, const Call& call);
    std::vector<Endpoint> routesOf(const Call& call) const;
    void end(Call& call, std::string reason, TimePoint when);
    Calls::iterator finish(Calls::iterator found);

    CommandSink& sniffer_;
    CallArchive& archive_;
    FileCache& files_;
    Milliseconds idle_;
    Milliseconds linger_;
    Calls calls_;
    std::unordered_map<Endpoint, Route, EndpointHash> routes_;
    uint64_t recorded_ = 0;
};

}  // namespace recorder
