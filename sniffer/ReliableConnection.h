#ifndef SNIFFER_RELIABLE_CONNECTION_H
#define SNIFFER_RELIABLE_CONNECTION_H

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <netinet/in.h>
#include <string>
#include <thread>
#include <vector>

#include <log4cxx/logger.h>

#include "BaseConnection.h"

class EngineOptions;
struct EngineStats;

// The stream link for a recorder that must not lose a call.
//
// Senders append whole frames to an outbox; a thread of the link's own
// writes them, several at a time and up to `writeLimit` bytes a write, each
// write going on from the byte where the last one stopped. A full socket
// buffer is waited out for the stall time-out before the link counts as
// lost, and the sender is held back meanwhile (so the capture side's
// bounded queue absorbs the pause, not the link). A reachable recorder is
// connected at once, and the frames not yet started go to it; only a
// recorder that refuses or cannot be reached is tried once a second, and
// frames are dropped, and counted, until it answers.
//
// Commands are read by a thread that sleeps in awaitCommands() until bytes
// arrive, instead of polling.
class ReliableConnection : public BaseConnection {
public:
    static constexpr std::size_t writeLimit = 64 * 1024;
    // Frames waiting for the writer; a sender waits for room beyond this.
    static constexpr std::size_t outboxLimit = 1024 * 1024;
    static constexpr int connectTimeoutMs = 1000;
    static constexpr int retryPauseMs = 1000;

    ReliableConnection(const char* host, int port, const EngineOptions& options, EngineStats& stats);
    ~ReliableConnection() override;
    ReliableConnection(const ReliableConnection&) = delete;
    ReliableConnection& operator=(const ReliableConnection&) = delete;

    // Takes one whole command when one has arrived; never blocks.
    bool receiveRequest(SnifferRequest& request) override;
    // Queues the frame for the writer: its length, or -1 when the recorder
    // is away and the frame is dropped.
    int sendPacket(u_char* buffer, int length) override;
    // Drops the current link; the next frame connects again.
    void closeConnection() override;

    // Sleeps until command bytes may be waiting (true), or the link changed,
    // or `timeoutMs` passed (false).
    bool awaitCommands(int timeoutMs);
    // Wakes a thread sleeping in awaitCommands().
    void wakeReader();
    bool isConnected() const;

private:
    // The socket of one link; closed when the last thread using it lets go.
    struct Link {
        int fd;
        unsigned generation;
        ~Link();
        Link(const Link&) = delete;
        Link& operator=(const Link&) = delete;
    };
    using LinkPtr = std::shared_ptr<Link>;
    enum class WriteOutcome { Progress, Lost };

    void writerLoop();
    bool connectLink();
    int openSocket() const;
    bool awaitConnect(int fd) const;
    void linkUp(int fd);
    void enterOutage(std::unique_lock<std::mutex>& guard);
    void loseLink(const LinkPtr& lost, const std::string& why, bool unexpected);
    void waitForWork(std::unique_lock<std::mutex>& guard);
    bool takeWork(std::unique_lock<std::mutex>& guard);
    WriteOutcome writeSome(const LinkPtr& link);
    bool awaitWritable(int fd);
    void dropPartialFrame();
    void drainBeforeClose();
    LinkPtr currentLink() const;
    bool decodeCommand(SnifferRequest& request);

    sockaddr_in serverAddr{};
    const std::string serverHost;
    const int serverPort;
    const int sendBufferSize;
    const int stallTimeoutMs;
    EngineStats& stats;

    mutable std::mutex lock;
    std::condition_variable workReady;  // the writer: frames queued, or stop
    std::condition_variable roomReady;  // senders: room in the outbox, or outage
    std::vector<u_char> outbox;         // whole frames, back to back
    LinkPtr link;
    unsigned generation = 0;  // links made so far
    bool outage = false;      // an attempt failed: frames are dropped until the link is up
    bool closed = false;      // closed by the engine: no new link before the next frame
    bool idle = false;        // the writer has written all it was given
    bool stopping = false;

    // The writer's own: frames taken from the outbox and the bytes of them
    // written so far on the current link.
    std::vector<u_char> inFlight;
    std::size_t inFlightSent = 0;

    // The command reader's own: bytes of a command not yet whole, and the
    // link they came from.
    std::vector<u_char> commandBytes;
    std::size_t commandStart = 0;
    unsigned commandGeneration = 0;

    int readerWakeFd = -1;
    int writerWakeFd = -1;
    std::thread writer;

    static log4cxx::LoggerPtr logger;
};

#endif
