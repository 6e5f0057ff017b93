#include "EmbeddedConnection.h"

#include <cstring>

EmbeddedConnection* EmbeddedConnection::theConnection = nullptr;
log4cxx::LoggerPtr EmbeddedConnection::logger = log4cxx::Logger::getLogger("EmbeddedConnection");

// Dissector side: the host's monitor when one is registered, else the mutex.
class EmbeddedConnection::Guard {
public:
    explicit Guard(EmbeddedConnection& c) : c(c), monitor(c.monitor) {
        if (monitor)
            monitor->enter();
        else
            c.queueLock.lock();
    }
    ~Guard() {
        if (monitor)
            monitor->exit();
        else
            c.queueLock.unlock();
    }

private:
    EmbeddedConnection& c;
    Monitor* const monitor;  // the one entered is the one left
};

EmbeddedConnection* EmbeddedConnection::dft() {
    // Made once, before any capture starts (by the host bridge or set-up).
    if (!theConnection)
        theConnection = new EmbeddedConnection();
    return theConnection;
}

void EmbeddedConnection::setMonitor(Monitor* m) {
    monitor = m;
}

int EmbeddedConnection::sendPacket(u_char* buffer, int length) {
    SnifferPacket packet;
    packet.length = length;
    packet.payload.reset(new u_char[length > 0 ? length : 0]);
    if (length > 0)
        std::memcpy(packet.payload.get(), buffer, length);
    Guard guard(*this);
    packetQueue.push_back(std::move(packet));
    return length;
}

int EmbeddedConnection::receivePacket(char* buffer, int capacity) {
    // Inside a JVM the host holds the monitor here; a C++ host relies on the mutex.
    std::unique_lock<std::mutex> lock(queueLock, std::defer_lock);
    if (!monitor)
        lock.lock();
    if (packetQueue.empty())
        return 0;
    SnifferPacket& front = packetQueue.front();
    const int length = front.length;
    if (length > capacity)
        return 0;
    if (length > 0)
        std::memcpy(buffer, front.payload.get(), length);
    packetQueue.pop_front();
    return length;
}

bool EmbeddedConnection::sendRequest(SnifferRequest& request) {
    std::unique_lock<std::mutex> lock(queueLock, std::defer_lock);
    if (!monitor)
        lock.lock();
    requestQueue.push_back(request);
    return true;
}

bool EmbeddedConnection::receiveRequest(SnifferRequest& request) {
    Guard guard(*this);
    if (requestQueue.empty())
        return false;
    request = requestQueue.front();
    requestQueue.pop_front();
    return true;
}

void EmbeddedConnection::closeConnection() {
    // Dropped frames are freed with their records: an engine started and
    // stopped many times in one host process must not accumulate them.
    Guard guard(*this);
    requestQueue.clear();
    packetQueue.clear();
}
