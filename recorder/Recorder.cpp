#include "Recorder.h"

#include "KeyFile.h"
#include "Log.h"

namespace recorder {
namespace {

// How often timers are looked at when no traffic comes.
constexpr Milliseconds kTick{100};
constexpr size_t kMiB = size_t{1} << 20;

}  // namespace

Recorder::Recorder(const Options& options)
    : options_(options),
      archive_(options.output),
      files_(FileCache::defaultCapacity()),
      backlog_(options.backlogLimitMiB * kMiB),
      link_(backlog_),
      tracker_(link_, archive_, files_, options.idle, options.linger),
      heartbeat_(link_, options.heartbeat, Clock::now()),
      metrics_(link_.counters(), backlog_) {}

bool Recorder::startIndex() {
    const std::string url = databaseUrl(options_);
    if (url.empty() && options_.keepDays > 0)
        log::error() << "--keep-days needs the call index: --database none leaves it out";
    if (url.empty())
        return options_.keepDays == 0;
    index_ = makeCallIndex(url);
    if (!index_) {
        log::error() << "Unknown database " << url << ": sqlite:PATH or none expected";
        return false;
    }
    if (options_.keepDays > 0)
        retention_ = std::make_unique<Retention>(*index_, options_.output, options_.keepDays);
    indexWriter_ = std::make_unique<IndexWriter>(*index_, retention_.get());
    archive_.indexTo(indexWriter_.get());
    metrics_.watchIndex(indexWriter_.get());
    return true;
}

// Once the output folder, where the database usually is, exists.
void Recorder::openIndex() {
    try {
        if (index_)
            index_->open();
    } catch (const std::runtime_error& error) {
        log::error() << "Cannot open the call index, trying again with each call: " << error.what();
    }
}

bool Recorder::startWeb() {
    if (options_.httpAddress.empty())
        return true;
    if (!index_) {
        log::error() << "The web page needs the call index: --database none leaves it out";
        return false;
    }
    web_ =
        std::make_unique<WebServer>(*index_, options_.output, options_.httpToken, [this] { return metrics_.text(); });
    return web_->start(options_.httpAddress, options_.httpPort);
}

bool Recorder::startEncryption() {
    if (options_.encryptTo.empty())
        return true;
    KeyFile::Key key;
    std::string problem;
    if (!KeyFile::read(options_.encryptTo, key, problem)) {
        log::error() << "Cannot encrypt the recordings: " << problem;
        return false;
    }
    archive_.encryptTo(key);
    return true;
}

int Recorder::run(const sigset_t& stopSignals) {
    if (!startEncryption() || !startIndex() || !archive_.prepare())
        return 1;
    openIndex();
    if (!startWeb() || !link_.listen(options_.address, options_.port) || !link_.start(stopSignals))
        return 1;
    log::info() << "Writing calls to " << std::filesystem::absolute(archive_.root()).string();
    TimePoint nextStats = Clock::now() + options_.stats;
    const auto handler = [this](LinkEvent event, const Frame& frame) { handle(event, frame); };
    for (;;) {
        // Everything the link read before it stopped is in the backlog once it says so.
        const bool stopping = link_.stopped();
        backlog_.consume(stopping ? Milliseconds(0) : kTick, handler);
        if (stopping)
            break;
        const TimePoint now = Clock::now();
        tracker_.tick(now);
        heartbeat_.tick(now);
        metrics_.publishCalls(tracker_.openCalls(), tracker_.recordedCalls());
        metrics_.publishHeartbeat(heartbeat_.lastRoundTrip());
        if (options_.stats.count() > 0 && now >= nextStats) {
            logStats();
            nextStats = now + options_.stats;
        }
    }
    link_.join();
    log::info() << "Stopping";
    if (web_)
        web_->stop();
    tracker_.finishAll(Clock::now());
    archive_.finish();
    logStats();
    return 0;
}

void Recorder::handle(LinkEvent event, const Frame& frame) {
    switch (event) {
    case LinkEvent::Connected: tracker_.resendRoutes(); break;
    case LinkEvent::Lost: heartbeat_.reset(); break;
    case LinkEvent::Frame:
        if (frame.protocol == Protocol::HeartbeatReply)
            heartbeat_.replied(frame.arrival);
        else
            tracker_.onFrame(frame);
        break;
    }
}

void Recorder::logStats() const {
    const LinkCounters& link = link_.counters();
    const auto count = [&link](Protocol protocol) {
        const auto index = static_cast<size_t>(protocol);
        return std::to_string(link.frames[index].load()) + " frames/" + std::to_string(link.bytes[index].load()) +
               " bytes";
    };
    log::info() << "Stats: received sip " << count(Protocol::Sip) << ", rtp " << count(Protocol::Rtp) << ", h323 "
                << count(Protocol::H323) << ", heartbeat " << count(Protocol::HeartbeatReply) << "; backlog "
                << backlog_.queuedBytes() << " bytes (peak " << backlog_.peakBytes() << ", limit "
                << backlog_.limitBytes() << "), dropped " << backlog_.droppedFrames() << " frames; calls open "
                << tracker_.openCalls() << ", recorded " << tracker_.recordedCalls() << "; commands sent "
                << link.commands.load() << "; sniffer connections " << link.connections.load();
}

}  // namespace recorder
