#include "Recorder.h"

#include "Log.h"

namespace recorder {
namespace {

// How often timers are looked at when no traffic comes.
constexpr Milliseconds kTick{100};

}  // namespace

Recorder::Recorder(const Options& options)
    : options_(options),
      archive_(options.output),
      files_(FileCache::defaultCapacity()),
      link_(*this),
      tracker_(link_, archive_, files_, options.idle, options.linger),
      heartbeat_(link_, options.heartbeat, Clock::now())
{
}

int Recorder::run(const volatile std::sig_atomic_t& stop, const sigset_t& signalMask)
{
    if (!archive_.prepare() || !link_.listen(options_.address, options_.port))
        return 1;
    log::info() << "Writing calls to " << std::filesystem::absolute(archive_.root()).string();
    while (!stop) {
        link_.service(kTick, signalMask);
        const TimePoint now = Clock::now();
        tracker_.tick(now);
        heartbeat_.tick(now);
    }
    log::info() << "Stopping";
    tracker_.finishAll(Clock::now());
    return 0;
}

void Recorder::onSnifferConnected()
{
    tracker_.resendRoutes();
}

void Recorder::onSnifferLost()
{
    heartbeat_.reset();
}

void Recorder::onFrame(const Frame& frame)
{
    if (frame.protocol == Protocol::HeartbeatReply)
        heartbeat_.replied(frame.arrival);
    else
        tracker_.onFrame(frame);
}

}  // namespace recorder
