#include "ReliableConnection.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include "AddressText.h"
#include "EngineOptions.h"
#include "EngineStats.h"
#include "SngDissector.h"

log4cxx::LoggerPtr ReliableConnection::logger = log4cxx::Logger::getLogger("SnifferClient");

namespace {
void signalEvent(int fd) {
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t n = write(fd, &one, sizeof one);
}

void clearEvent(int fd) {
    uint64_t count;
    [[maybe_unused]] const ssize_t n = read(fd, &count, sizeof count);
}

// Where the frame that starts at `at` ends. A length below the header's own
// (only a damaged frame) ends the walk at `size`, so no walk can stall.
std::size_t frameEnd(const std::vector<u_char>& frames, std::size_t at) {
    const std::size_t length = std::size_t(frames[at]) << 8 | frames[at + 1];
    if (length < std::size_t(SngDissector::ourHeaderLength) || at + length > frames.size())
        return frames.size();
    return at + length;
}

std::size_t framesFrom(const std::vector<u_char>& frames, std::size_t at) {
    std::size_t count = 0;
    for (; at < frames.size(); at = frameEnd(frames, at))
        ++count;
    return count;
}

void forgetListedDestinations() {
    if (SngDissector* dissector = SngDissector::dft())
        dissector->removeAllRtp();
}
}  // namespace

ReliableConnection::Link::~Link() {
    close(fd);
}

ReliableConnection::ReliableConnection(const char* host, int port, const EngineOptions& options, EngineStats& stats)
    : serverHost(host ? host : ""),
      serverPort(port),
      sendBufferSize(options.sendBufferSize),
      stallTimeoutMs(options.stallTimeoutMs),
      stats(stats) {
    serverAddr.sin_family = AF_INET;
    serverAddr.sin_addr.s_addr = inet_addr(serverHost.c_str());
    serverAddr.sin_port = htons(static_cast<uint16_t>(port));
    readerWakeFd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    writerWakeFd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    writer = std::thread(&ReliableConnection::writerLoop, this);
}

ReliableConnection::~ReliableConnection() {
    drainBeforeClose();
    {
        std::lock_guard<std::mutex> guard(lock);
        stopping = true;
    }
    signalEvent(writerWakeFd);
    workReady.notify_all();
    roomReady.notify_all();
    writer.join();
    link.reset();
    close(readerWakeFd);
    close(writerWakeFd);
}

// ---------------------------------------------------------------- senders

int ReliableConnection::sendPacket(u_char* frame, int length) {
    if (frame == nullptr || length < 1)
        return 0;
    std::unique_lock<std::mutex> guard(lock);
    closed = false;
    roomReady.wait(guard, [&] {
        return stopping || outage || outbox.empty() || outbox.size() + std::size_t(length) <= outboxLimit;
    });
    if (stopping || outage) {
        EngineStats::add(stats.droppedLinkDown);
        return -1;
    }
    outbox.insert(outbox.end(), frame, frame + length);
    const bool wake = idle;
    guard.unlock();
    if (wake)
        workReady.notify_one();
    return length;
}

void ReliableConnection::closeConnection() {
    drainBeforeClose();
    LinkPtr current;
    {
        std::lock_guard<std::mutex> guard(lock);
        closed = true;
        current = link;
    }
    if (current)
        loseLink(current, "closed by the engine", false);
}

// What senders handed over goes out before the link is closed, for as long
// as a stalled recorder may take before it counts as lost.
void ReliableConnection::drainBeforeClose() {
    std::unique_lock<std::mutex> guard(lock);
    roomReady.wait_for(guard, std::chrono::milliseconds(stallTimeoutMs),
                       [&] { return stopping || outage || closed || (idle && outbox.empty()); });
}

bool ReliableConnection::isConnected() const {
    return currentLink() != nullptr;
}

ReliableConnection::LinkPtr ReliableConnection::currentLink() const {
    std::lock_guard<std::mutex> guard(lock);
    return link;
}

// ---------------------------------------------------------------- the writer

void ReliableConnection::writerLoop() {
    std::unique_lock<std::mutex> guard(lock);
    while (!stopping) {
        if (!link) {
            if (closed && outbox.empty()) {
                waitForWork(guard);
                continue;
            }
            guard.unlock();
            const bool up = connectLink();
            guard.lock();
            if (!up)
                enterOutage(guard);
            continue;
        }
        if (!takeWork(guard))
            continue;
        const LinkPtr current = link;
        guard.unlock();
        const WriteOutcome outcome = writeSome(current);
        guard.lock();
        if (outcome == WriteOutcome::Lost)
            dropPartialFrame();
    }
}

void ReliableConnection::waitForWork(std::unique_lock<std::mutex>& guard) {
    idle = true;
    roomReady.notify_all();
    workReady.wait(guard);
    idle = false;
}

// True with bytes to write in `inFlight`; false after a wait, for the loop
// to look at the link again.
bool ReliableConnection::takeWork(std::unique_lock<std::mutex>& guard) {
    if (inFlightSent < inFlight.size())
        return true;
    if (outbox.empty()) {
        waitForWork(guard);
        return false;
    }
    inFlight.swap(outbox);
    outbox.clear();
    inFlightSent = 0;
    roomReady.notify_all();
    return true;
}

ReliableConnection::WriteOutcome ReliableConnection::writeSome(const LinkPtr& current) {
    const std::size_t length = std::min(writeLimit, inFlight.size() - inFlightSent);
    for (;;) {
        const ssize_t n = send(current->fd, inFlight.data() + inFlightSent, length, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (n > 0) {
            inFlightSent += std::size_t(n);
            return WriteOutcome::Progress;
        }
        const int err = n < 0 ? errno : EPIPE;
        if (err == EINTR)
            continue;
        if (err != EAGAIN && err != EWOULDBLOCK) {
            loseLink(current, std::strerror(err), true);
            return WriteOutcome::Lost;
        }
        if (!awaitWritable(current->fd)) {
            loseLink(current, "the recorder read nothing for " + std::to_string(stallTimeoutMs) + " ms", true);
            return WriteOutcome::Lost;
        }
    }
}

// A full send buffer: waits for room, the stall time-out at the most.
bool ReliableConnection::awaitWritable(int fd) {
    pollfd fds[2] = {{fd, POLLOUT, 0}, {writerWakeFd, POLLIN, 0}};
    const int n = poll(fds, 2, stallTimeoutMs);
    return n > 0 && fds[0].revents != 0;
}

// The new link must start at a frame's first byte: the rest of a frame the
// old link carried in part is dropped; the frames after it are kept.
void ReliableConnection::dropPartialFrame() {
    if (inFlightSent == 0 || inFlightSent >= inFlight.size())
        return;
    std::size_t end = 0;
    while (end < inFlightSent)
        end = frameEnd(inFlight, end);
    if (end > inFlightSent)
        EngineStats::add(stats.droppedLinkDown);
    inFlightSent = end;
}

// ---------------------------------------------------------------- the link

int ReliableConnection::openSocket() const {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP);
    if (fd < 0) {
        LOG4CXX_ERROR(logger, "Unable to create TCP connection.");
        return -1;
    }
    // The forced size passes the system's cap on send buffers where the
    // engine may (it holds CAP_NET_ADMIN to capture); elsewhere the cap holds.
    if (setsockopt(fd, SOL_SOCKET, SO_SNDBUFFORCE, &sendBufferSize, sizeof sendBufferSize) != 0 &&
        setsockopt(fd, SOL_SOCKET, SO_SNDBUF, &sendBufferSize, sizeof sendBufferSize) != 0)
        LOG4CXX_WARN(logger, "Error setsockopt SO_SNDBUF: " << std::strerror(errno));
    LOG4CXX_INFO(logger, "Tcp socket send buffer size=" << sendBufferSize);
    return fd;
}

bool ReliableConnection::connectLink() {
    const int fd = openSocket();
    if (fd < 0)
        return false;
    const int rc = connect(fd, reinterpret_cast<const sockaddr*>(&serverAddr), sizeof serverAddr);
    if ((rc == 0 || (errno == EINPROGRESS && awaitConnect(fd)))) {
        linkUp(fd);
        return true;
    }
    close(fd);
    return false;
}

bool ReliableConnection::awaitConnect(int fd) const {
    pollfd fds[2] = {{fd, POLLOUT, 0}, {writerWakeFd, POLLIN, 0}};
    if (poll(fds, 2, connectTimeoutMs) < 1 || fds[0].revents == 0)
        return false;
    int error = 0;
    socklen_t length = sizeof error;
    if (getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length) != 0 || error != 0) {
        LOG4CXX_DEBUG(logger, "TCP connect failed with errno=" << error);
        return false;
    }
    return true;
}

void ReliableConnection::linkUp(int fd) {
    {
        std::lock_guard<std::mutex> guard(lock);
        link = LinkPtr(new Link{fd, ++generation});  // no temporary: its end would close fd
        if (generation > 1)
            EngineStats::add(stats.reconnects);
        outage = false;
    }
    LOG4CXX_INFO(logger, "Connected to recorder " << serverHost << ":" << serverPort);
    roomReady.notify_all();
    wakeReader();
}

// The recorder refused or did not answer: what waits for it is dropped, and
// so is every frame until it answers; it is tried again once a second.
void ReliableConnection::enterOutage(std::unique_lock<std::mutex>& guard) {
    if (!outage) {
        outage = true;
        LOG4CXX_INFO(logger, "Connecting to recorder " << serverHost << ":" << serverPort);
        EngineStats::add(stats.droppedLinkDown, framesFrom(outbox, 0) + framesFrom(inFlight, inFlightSent));
        outbox.clear();
        inFlight.clear();
        inFlightSent = 0;
        roomReady.notify_all();
        guard.unlock();
        forgetListedDestinations();
        guard.lock();
    }
    workReady.wait_for(guard, std::chrono::milliseconds(retryPauseMs), [&] { return stopping; });
}

// Either thread may find the link gone; the first to say so closes it. The
// recorder forgets what it asked for with the link, and asks again on the
// next one.
void ReliableConnection::loseLink(const LinkPtr& lost, const std::string& why, bool unexpected) {
    {
        std::lock_guard<std::mutex> guard(lock);
        if (link != lost)
            return;
        shutdown(lost->fd, SHUT_RDWR);
        link.reset();
        if (unexpected)
            EngineStats::add(stats.linkLosses);
    }
    if (unexpected)
        LOG4CXX_WARN(logger, "Connection to recorder lost: " << why);
    LOG4CXX_INFO(logger, "Connection to Recorder closed.");
    workReady.notify_all();
    wakeReader();
    forgetListedDestinations();
}

// ---------------------------------------------------------------- commands

void ReliableConnection::wakeReader() {
    signalEvent(readerWakeFd);
}

bool ReliableConnection::awaitCommands(int timeoutMs) {
    const LinkPtr current = currentLink();
    pollfd fds[2] = {{readerWakeFd, POLLIN, 0}, {current ? current->fd : -1, POLLIN, 0}};
    if (poll(fds, 2, timeoutMs) < 1)
        return false;
    if (fds[0].revents != 0)
        clearEvent(readerWakeFd);
    return fds[1].revents != 0;
}

bool ReliableConnection::receiveRequest(SnifferRequest& request) {
    if (decodeCommand(request))
        return true;
    const LinkPtr current = currentLink();
    if (!current)
        return false;
    // Part of a command from an earlier link would put this one's out of step.
    if (current->generation != commandGeneration) {
        commandBytes.clear();
        commandStart = 0;
        commandGeneration = current->generation;
    }
    u_char received[2048];
    const ssize_t n = recv(current->fd, received, sizeof received, MSG_DONTWAIT);
    if (n == 0) {
        commandBytes.clear();
        commandStart = 0;
        loseLink(current, "the recorder closed the link", true);
        return false;
    }
    if (n < 0)
        return false;
    commandBytes.erase(commandBytes.begin(), commandBytes.begin() + long(commandStart));
    commandStart = 0;
    commandBytes.insert(commandBytes.end(), received, received + n);
    return decodeCommand(request);
}

bool ReliableConnection::decodeCommand(SnifferRequest& request) {
    if (commandBytes.size() - commandStart < std::size_t(SnifferRequest::wireLength))
        return false;
    request.decode(commandBytes.data() + commandStart);
    commandStart += SnifferRequest::wireLength;
    if (request.request == 3)
        LOG4CXX_DEBUG(logger, "Heartbeat request received");
    else
        LOG4CXX_DEBUG(logger, "rx from server cmd=" << request.request << ", ip=" << dottedQuad(request.rtpAddr)
                                                    << ", port=" << request.rtpPort);
    return true;
}
