#pragma once

#include "Backlog.h"
#include "CallArchive.h"
#include "CallTracker.h"
#include "FileCache.h"
#include "Heartbeat.h"
#include "IndexWriter.h"
#include "Options.h"
#include "RecorderMetrics.h"
#include "Retention.h"
#include "SnifferLink.h"
#include "WebServer.h"

#include <memory>

#include <signal.h>

namespace recorder {

// The recorder program: serves one sniffer at a time until told to stop. The link reads on a
// thread of its own into the backlog; this one follows the calls and writes their files.
class Recorder {
public:
    explicit Recorder(const Options& options);

    // Runs until a signal of `stopSignals` (blocked in every thread) arrives, then handles what
    // was read before it and archives every open call. Returns the exit status.
    int run(const sigset_t& stopSignals);

private:
    void handle(LinkEvent event, const Frame& frame);
    void logStats() const;
    // Reads the public key of --encrypt-to, if given, for the archive.
    bool startEncryption();
    bool startIndex();
    void openIndex();
    bool startWeb();

    Options options_;
    // Before the archive, whose thread writes to them until it finishes.
    std::unique_ptr<CallIndex> index_;
    std::unique_ptr<Retention> retention_;
    std::unique_ptr<IndexWriter> indexWriter_;
    CallArchive archive_;
    FileCache files_;
    Backlog backlog_;
    SnifferLink link_;
    CallTracker tracker_;
    Heartbeat heartbeat_;
    RecorderMetrics metrics_;
    std::unique_ptr<WebServer> web_;
};

}  // namespace recorder
