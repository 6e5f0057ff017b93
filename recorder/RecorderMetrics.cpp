#include "RecorderMetrics.h"

#include <sstream>

namespace recorder {
namespace {

class Exposition {
public:
    // Starts a metric family.
    Exposition& family(const char* name, const char* type, const char* help) {
        out_ << "# HELP " << name << ' ' << help << "\n# TYPE " << name << ' ' << type << '\n';
        return *this;
    }
    template <class T>
    Exposition& sample(const std::string& name, T value) {
        out_ << name << ' ' << value << '\n';
        return *this;
    }
    std::string text() const { return out_.str(); }

private:
    std::ostringstream out_;
};

const std::pair<Protocol, const char*> kProtocolNames[] = {
    {Protocol::Sip, "sip"}, {Protocol::Rtp, "rtp"}, {Protocol::H323, "h323"}, {Protocol::HeartbeatReply, "heartbeat"}};

}  // namespace

std::string RecorderMetrics::text() const {
    Exposition out;
    const auto perProtocol = [&](const char* name, const auto& counters) {
        for (const auto& [protocol, label] : kProtocolNames)
            out.sample(std::string(name) + "{protocol=\"" + label + "\"}",
                       counters[static_cast<size_t>(protocol)].load(std::memory_order_relaxed));
    };
    out.family("recorder_frames_received_total", "counter", "Frames received from the sniffer, by protocol.");
    perProtocol("recorder_frames_received_total", link_.frames);
    out.family("recorder_bytes_received_total", "counter", "Frame bytes received from the sniffer, by protocol.");
    perProtocol("recorder_bytes_received_total", link_.bytes);
    out.family("recorder_calls_open", "gauge", "Calls being recorded.")
        .sample("recorder_calls_open", openCalls_.load(std::memory_order_relaxed));
    out.family("recorder_calls_recorded_total", "counter", "Calls finished and archived.")
        .sample("recorder_calls_recorded_total", recordedCalls_.load(std::memory_order_relaxed));
    out.family("recorder_commands_sent_total", "counter", "Commands sent to the sniffer.")
        .sample("recorder_commands_sent_total", link_.commands.load(std::memory_order_relaxed));
    out.family("recorder_sniffer_connections_total", "counter", "Sniffer connections accepted.")
        .sample("recorder_sniffer_connections_total", link_.connections.load(std::memory_order_relaxed));
    out.family("recorder_backlog_bytes", "gauge", "Bytes read from the sniffer and not yet handled.")
        .sample("recorder_backlog_bytes", backlog_.queuedBytes());
    out.family("recorder_backlog_dropped_frames_total", "counter", "Frames dropped because the backlog was full.")
        .sample("recorder_backlog_dropped_frames_total", backlog_.droppedFrames());
    const int64_t heartbeat = heartbeatMs_.load(std::memory_order_relaxed);
    if (heartbeat >= 0)
        out.family("recorder_heartbeat_round_trip_seconds", "gauge", "The last heartbeat's round trip.")
            .sample("recorder_heartbeat_round_trip_seconds", heartbeat / 1000.0);
    if (index_) {
        out.family("recorder_database_write_seconds", "summary", "Time taken to write a call to the index.")
            .sample("recorder_database_write_seconds_sum", index_->writeMicros() / 1e6)
            .sample("recorder_database_write_seconds_count", index_->written());
        out.family("recorder_database_write_failures_total", "counter", "Failed attempts to write to the index.")
            .sample("recorder_database_write_failures_total", index_->failures());
        out.family("recorder_database_pending_calls", "gauge", "Calls waiting in memory for the index.")
            .sample("recorder_database_pending_calls", index_->pending());
    }
    return out.text();
}

}  // namespace recorder
