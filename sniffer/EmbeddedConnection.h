#ifndef SNIFFER_EMBEDDED_CONNECTION_H
#define SNIFFER_EMBEDDED_CONNECTION_H

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>

#include <log4cxx/logger.h>

#include "BaseConnection.h"

// One frame waiting for the host.
struct SnifferPacket {
    int length = 0;
    std::unique_ptr<u_char[]> payload;
};

// The in-process link used when the sniffer runs inside a host VM: frames
// wait in a queue until the host fetches them, commands from the host wait
// until the dissector polls them. Nothing ever blocks.
//
// Locking: inside a JVM the queues are guarded by the monitor of the host's
// channel object (the host side enters it around getPacket and sendRequest);
// a C++ host that registers no monitor gets an internal mutex on both sides.
class EmbeddedConnection : public BaseConnection {
public:
    class Monitor {
    public:
        virtual void enter() = 0;
        virtual void exit() = 0;
        virtual ~Monitor() = default;
    };

    static EmbeddedConnection* dft();

    bool receiveRequest(SnifferRequest& request) override;
    int sendPacket(u_char* buffer, int length) override;
    void closeConnection() override;

    // Host side. `capacity` bounds the copy: a frame larger than the
    // caller's buffer stays queued and 0 is returned.
    int receivePacket(char* buffer, int capacity);
    bool sendRequest(SnifferRequest& request);

    // Registers the host's monitor (null: fall back to the internal mutex).
    void setMonitor(Monitor* monitor);

private:
    class Guard;
    EmbeddedConnection() = default;

    std::deque<SnifferRequest> requestQueue;
    std::deque<SnifferPacket> packetQueue;
    // Set and cleared by the host's main-loop thread while other host
    // threads may be polling.
    std::atomic<Monitor*> monitor{nullptr};
    std::mutex queueLock;

    static EmbeddedConnection* theConnection;
    static log4cxx::LoggerPtr logger;
};

#endif
