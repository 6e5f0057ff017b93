#ifndef SNIFFER_TCP_CONNECTION_H
#define SNIFFER_TCP_CONNECTION_H

#include <atomic>
#include <mutex>
#include <netinet/in.h>

#include <log4cxx/logger.h>

#include "BaseConnection.h"

// Stream link to the recorder. Lazy and self-healing: the socket is made and
// connected by the first send; a lost link is closed and re-established by a
// later send, at most one non-blocking attempt a second. While the recorder
// is away the dissector's RTP list and queue are emptied, so nothing stale is
// forwarded once it returns (it re-sends its add commands then).
class TcpConnection : public BaseConnection {
public:
    static constexpr int sendBufferSize = 60000;
    static constexpr int workBufferSize = 2000;
    static constexpr int ringSize = 4000;

    TcpConnection(const char* host, int port);
    ~TcpConnection() override;

    bool receiveRequest(SnifferRequest& request) override;
    int sendPacket(u_char* buffer, int length) override;
    void closeConnection() override;

    int getSocket();
    void tcpConnect();
    int checkError(int errnum);
    void rest(long seconds, long nanoseconds);
    bool isConnected() const { return connected; }

private:
    void closeLocked();
    void forgetForwardingState();
    void closeOnRecorderEnd();
    void appendToRing(int n);
    void discardRing();
    void decodeRequest(SnifferRequest& request);

    [[maybe_unused]] sockaddr_in clientAddr{};  // kept beside serverAddr; a stream link never binds
    sockaddr_in serverAddr{};
    // The sender and the command reader share the socket; `connected` is
    // read without the lock by the reader, hence atomic.
    std::atomic<int> clientSd{-1};
    int serverPort;
    const char* serverHost;
    std::atomic<bool> connected{false};
    int connectRetries = 0;
    // Links established so far; guarded by sendLock.
    unsigned linkCount = 0;
    // Serialises sends (a heartbeat reply from the command reader must not
    // interleave with a frame of the sender), receives and socket tear-down.
    std::mutex sendLock;

    // Receive ring of undecoded command bytes; used by the command reader only.
    u_char workBuffer[workBufferSize];
    u_char buffer[ringSize];
    int offset = 0;
    int newOffset = 0;
    int requestStart = 0;
    int total = 0;
    unsigned ringLink = 0;  // the link the ring's bytes came from

    static log4cxx::LoggerPtr logger;
};

#endif
