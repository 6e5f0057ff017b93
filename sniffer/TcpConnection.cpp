#include "TcpConnection.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include "AddressText.h"
#include "SngDissector.h"

log4cxx::LoggerPtr TcpConnection::logger = log4cxx::Logger::getLogger("SnifferClient");

TcpConnection::TcpConnection(const char* host, int port) : serverPort(port), serverHost(host) {
    serverAddr.sin_family = AF_INET;
    serverAddr.sin_addr.s_addr = inet_addr(host);
    serverAddr.sin_port = htons(static_cast<uint16_t>(port));
    LOG4CXX_INFO(logger, "Connecting to recorder " << serverHost << ":" << serverPort);
}

TcpConnection::~TcpConnection() {
    closeConnection();
}

int TcpConnection::getSocket() {
    const int sd = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (sd < 0) {
        LOG4CXX_ERROR(logger, "Unable to create TCP connection.");
        return -1;
    }
    fcntl(sd, F_SETFL, fcntl(sd, F_GETFL, 0) | O_NONBLOCK);
    const int reuse = 1;
    setsockopt(sd, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    int size = 0;
    socklen_t sizeLen = sizeof size;
    if (getsockopt(sd, SOL_SOCKET, SO_SNDBUF, &size, &sizeLen) != 0)
        LOG4CXX_WARN(logger, "Error getsockopt");
    size = sendBufferSize;
    if (setsockopt(sd, SOL_SOCKET, SO_SNDBUF, &size, sizeof size) != 0)
        LOG4CXX_WARN(logger, "Error getsockopt");
    LOG4CXX_INFO(logger, "Tcp socket send buffer size=" << sendBufferSize);
    return sd;
}

void TcpConnection::tcpConnect() {
    if (clientSd == -1)
        clientSd = getSocket();
    if (clientSd == -1)
        return;
    // A repeated connect on the same non-blocking socket reports the outcome
    // of the attempt in progress: 0 once it has completed. An attempt that
    // failed (the recorder refused) is reported by the next call, which
    // makes no new attempt; the second round here makes it, so that every
    // call tries the recorder and a returning recorder is found at once.
    for (int round = 0; round < 2; ++round) {
        if (connect(clientSd, reinterpret_cast<const sockaddr*>(&serverAddr), sizeof serverAddr) == 0) {
            connected = true;
            ++linkCount;
            return;
        }
        const int err = errno;
        if (err == EALREADY)
            return;
        if (err == EINPROGRESS) {
            LOG4CXX_DEBUG(logger, "Connecting ...");
            return;
        }
        LOG4CXX_DEBUG(logger, "TCP connect failed with errno=" << err);
    }
}

void TcpConnection::forgetForwardingState() {
    if (SngDissector* dissector = SngDissector::dft()) {
        dissector->removeAllRtp();
        EngineStats::add(dissector->getStats().linkLosses);
    }
}

int TcpConnection::sendPacket(u_char* frame, int length) {
    if (frame == nullptr || length < 1)
        return 0;
    std::lock_guard<std::mutex> guard(sendLock);
    if (!connected) {
        tcpConnect();
        if (clientSd == -1 || !connected) {
            if (connectRetries == 0)
                LOG4CXX_INFO(logger, "Connecting to recorder " << serverHost << ":" << serverPort);
            ++connectRetries;
            if (SngDissector* dissector = SngDissector::dft()) {
                dissector->removeAllRtp();
                dissector->clearQueue();
            }
            rest(1, 0);
            return -1;
        }
        LOG4CXX_INFO(logger, "Connected to recorder " << serverHost << ":" << serverPort);
        connectRetries = 0;
        if (SngDissector* dissector = SngDissector::dft(); dissector && linkCount > 1)
            EngineStats::add(dissector->getStats().reconnects);
    }
    int sent = 0;
    int stop = 0;
    connectRetries = 0;
    while (sent < length && stop == 0) {
        // MSG_NOSIGNAL: a vanished recorder must show as EPIPE here, not as a
        // SIGPIPE that would end the host process.
        const ssize_t n = send(clientSd, frame + sent, length - sent, MSG_NOSIGNAL);
        if (n == -1) {
            stop = checkError(errno);
        } else if (n == length) {
            sent += static_cast<int>(n);
        } else if (length - sent > n) {
            LOG4CXX_WARN(logger, "Sent nSent=" << n << " bytes of " << length);
            sent += static_cast<int>(n);
        }
        // Otherwise the rest of a frame went out in a later send: it is not
        // counted and goes out again. Recorders in the field tolerate this
        // accounting, and it is kept unchanged for them.
    }
    return sent;
}

int TcpConnection::checkError(int errnum) {
    LOG4CXX_WARN(logger, "Send error=" << errnum);
    switch (errnum) {
    case EINTR: LOG4CXX_WARN(logger, "Interrupted while sending - will continue sending."); return 0;
    case EMSGSIZE:
    case ENOBUFS: LOG4CXX_WARN(logger, "Packet too large to send."); return -1;
    case EPIPE: LOG4CXX_WARN(logger, "Connection to recorder lost."); break;
    case EAGAIN:
        // A full send buffer means the recorder stopped reading: treated as a
        // lost link so that the next send reconnects to a fresh reader.
        LOG4CXX_WARN(logger, "Can not send. Connection to recorder lost.");
        break;
    default: LOG4CXX_WARN(logger, "Connection to recorder not working"); break;
    }
    closeLocked();
    forgetForwardingState();
    return -1;
}

void TcpConnection::rest(long seconds, long nanoseconds) {
    const timespec pause{seconds, nanoseconds};
    nanosleep(&pause, nullptr);
}

void TcpConnection::closeConnection() {
    std::lock_guard<std::mutex> guard(sendLock);
    closeLocked();
}

void TcpConnection::closeLocked() {
    // A socket whose connect is still in progress is dropped, not closed:
    // closing it could race with the kernel completing the handshake.
    if (connected)
        close(clientSd);
    connected = false;
    clientSd = -1;
    LOG4CXX_INFO(logger, "Connection to Recorder closed.");
}

bool TcpConnection::receiveRequest(SnifferRequest& request) {
    if (!connected)
        return false;
    ssize_t n;
    {
        // The sender closes the socket on a send error. Receiving under the
        // same lock keeps the descriptor from being closed, and its number
        // taken by the next socket, in the middle of this recv.
        std::lock_guard<std::mutex> guard(sendLock);
        if (!connected || clientSd == -1)
            return false;
        // Part of a command from a link that is gone would put this link's
        // commands out of step: the sender may have closed it on a send
        // error before this reader saw its end.
        if (ringLink != linkCount) {
            discardRing();
            ringLink = linkCount;
        }
        // Never more than the ring has room for: the rest waits in the socket
        // (TCP holds the recorder back) instead of overwriting commands not
        // yet decoded. A full ring holds a whole command, decoded below.
        const int room = std::min(workBufferSize, ringSize - total);
        n = room > 0 ? recv(clientSd, workBuffer, room, 0) : -1;
    }
    if (n < 1 && total < 1) {
        if (n == 0)
            closeOnRecorderEnd();
        return false;
    }
    if (n == 0 && total < SnifferRequest::wireLength) {
        // The recorder closed mid-command: the rest can never arrive, and
        // reporting the partial record as pending would keep the reader
        // repeating the previous command for ever.
        discardRing();
        closeOnRecorderEnd();
        return false;
    }
    if (n > 0) {
        appendToRing(static_cast<int>(n));
        if (total < SnifferRequest::wireLength) {
            offset = newOffset;
            return false;
        }
    }
    // With 1 to 6 bytes pending and nothing new, nothing is decoded and the
    // caller acts again on the record as it stands.
    if (total >= SnifferRequest::wireLength)
        decodeRequest(request);
    if (n > 0)
        offset = newOffset;
    return true;
}

void TcpConnection::closeOnRecorderEnd() {
    closeConnection();
    if (SngDissector* dissector = SngDissector::dft())
        EngineStats::add(dissector->getStats().linkLosses);
}

void TcpConnection::appendToRing(int n) {
    total += n;
    const int room = ringSize - offset;
    if (room >= n) {
        std::memcpy(buffer + offset, workBuffer, n);
        newOffset = offset + n;
    } else {
        std::memcpy(buffer + offset, workBuffer, room);
        std::memcpy(buffer, workBuffer + room, n - room);
        newOffset = n - room;
    }
}

void TcpConnection::discardRing() {
    total = 0;
    requestStart = offset;
}

void TcpConnection::decodeRequest(SnifferRequest& request) {
    u_char wire[SnifferRequest::wireLength];
    for (int i = 0; i < SnifferRequest::wireLength; ++i)
        wire[i] = buffer[(requestStart + i) % ringSize];
    request.request = wire[0];
    if (request.request != 3) {
        request.decodeAddress(wire);
        LOG4CXX_DEBUG(logger, "rx from server cmd=" << request.request << ", ip=" << dottedQuad(request.rtpAddr)
                                                    << ", port=" << request.rtpPort);
    } else {
        LOG4CXX_DEBUG(logger, "Heartbeat request received");
    }
    requestStart = (requestStart + SnifferRequest::wireLength) % ringSize;
    total -= SnifferRequest::wireLength;
}
