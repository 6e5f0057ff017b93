#include "Heartbeat.h"

#include "Log.h"

namespace recorder {
namespace {

long long millisBetween(TimePoint from, TimePoint to) {
    return std::chrono::duration_cast<Milliseconds>(to - from).count();
}

}  // namespace

void Heartbeat::tick(TimePoint now) {
    if (waiting_ && !lateReported_ && now - askedAt_ > interval_) {
        log::warn() << "Heartbeat reply late: none " << millisBetween(askedAt_, now) << " ms after the request";
        lateReported_ = true;
    }
    if (now < nextProbe_)
        return;
    nextProbe_ = now + interval_;
    // An unanswered probe stays the one that is timed: the later ones are only repeats.
    if (sniffer_.send(CommandCode::Heartbeat) && !waiting_) {
        waiting_ = true;
        askedAt_ = now;
    }
}

void Heartbeat::replied(TimePoint now) {
    if (lateReported_)
        log::info() << "Heartbeat reply received " << millisBetween(askedAt_, now) << " ms after the request";
    if (waiting_)
        lastRoundTrip_ = Milliseconds(millisBetween(askedAt_, now));
    reset();
}

void Heartbeat::reset() {
    waiting_ = false;
    lateReported_ = false;
}

}  // namespace recorder
