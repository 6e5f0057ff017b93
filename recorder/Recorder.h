#pragma once

#include "CallArchive.h"
#include "CallTracker.h"
#include "Heartbeat.h"
#include "Options.h"
#include "SnifferLink.h"

#include <csignal>

namespace recorder {

// The recorder program: serves one sniffer at a time until told to stop.
class Recorder : private LinkEvents {
public:
    explicit Recorder(const Options& options);

    // Runs until `stop` is set (by a signal that `signalMask` lets through while waiting), then
    // archives every open call. Returns the exit status.
    int run(const volatile std::sig_atomic_t& stop, const sigset_t& signalMask);

private:
    void onSnifferConnected() override;
    void onSnifferLost() override;
    void onFrame(const Frame& frame) override;

    Options options_;
    CallArchive archive_;
    FileCache files_;
    SnifferLink link_;
    CallTracker tracker_;
    Heartbeat heartbeat_;
};

}  // namespace recorder
