#ifndef SNIFFER_TESTS_FAULT_SUPPORT_H
#define SNIFFER_TESTS_FAULT_SUPPORT_H

#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <pcap.h>
#include <string>
#include <thread>
#include <vector>

#include "Frames.h"
#include "Network.h"
#include "Programs.h"
#include "Recorder.h"

// Moves this process into a network namespace of its own with only an
// active loopback, so that the tests capture nothing but their own traffic
// and leave no interface behind. Needs root; false otherwise.
bool enterPrivateNetwork();

// Tests that capture and connect on loopback: skipped outside a private network.
class PrivateNetworkTest : public testing::Test {
protected:
    void SetUp() override;
};

// Calls `sendOnce` every `interval` on a thread of its own until destroyed.
class Traffic {
public:
    Traffic(std::function<void()> sendOnce, std::chrono::microseconds interval);
    ~Traffic();

private:
    std::atomic<bool> stopping{false};
    std::thread sender;
};

// A recorder that accepts every connection and never reads from it, behind a
// small receive buffer, so the sniffer's send buffer fills at once.
class StalledRecorder {
public:
    explicit StalledRecorder(uint16_t port);
    ~StalledRecorder();
    int accepted() const { return acceptedCount; }

private:
    int listener;
    std::atomic<bool> stopping{false};
    std::atomic<int> acceptedCount{0};
    std::vector<int> connections;
    std::thread acceptor;
};

// A pair of virtual Ethernet interfaces NAMEa and NAMEb in this namespace:
// frames written to NAMEb arrive on NAMEa, where the sniffer captures.
class VethLink {
public:
    explicit VethLink(const std::string& name);
    ~VethLink();
    bool ok() const { return ready; }
    std::string captureSide() const { return name + "a"; }
    void inject(const Bytes& frame) const;
    // Deletes both ends, as when a device is unplugged.
    void remove();

private:
    std::string name;
    int packetSocket = -1;
    int injectIndex = 0;
    bool ready = false;
};

// Writes frames in libpcap's file format.
class CaptureWriter {
public:
    explicit CaptureWriter(const std::string& path);
    ~CaptureWriter();
    // A frame whose wire length may differ from the bytes written.
    void write(const Bytes& captured, bpf_u_int32 wireLength);
    void write(const Bytes& frame) { write(frame, static_cast<bpf_u_int32>(frame.size())); }

private:
    pcap_t* dead = nullptr;
    pcap_dumper_t* dumper = nullptr;
};

Bytes sipInvite(const std::string& callId);
Bytes rtpPacket();

// Waits for the next frame of `protocol` to `destination` ("a.b.c.d:port"),
// passing over any other.
bool awaitFrame(Recorder& recorder, int protocol, const std::string& destination, std::chrono::milliseconds timeout);
// Takes every frame received so far, so that what follows is new.
void discardPending(Recorder& recorder);
// Frames of `protocol` to `destination` that arrive within `window`.
int framesWithin(Recorder& recorder, int protocol, const std::string& destination, std::chrono::milliseconds window);

#endif
