#ifndef SNIFFER_TESTS_FAULT_SUPPORT_H
#define SNIFFER_TESTS_FAULT_SUPPORT_H

#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <pcap.h>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

#include "ChildProcess.h"
#include "Frames.h"
#include "Network.h"
#include "Programs.h"
#include "Recorder.h"

// Moves this process into a network namespace of its own with only an
// active loopback, so that the tests capture nothing but their own traffic
// and leave no interface behind. Needs root; false otherwise.
bool enterPrivateNetwork();
bool inPrivateNetwork();

// Tests that capture and connect on loopback: skipped outside a private network.
class PrivateNetworkTest : public testing::Test {
protected:
    void SetUp() override;
};

// The stand-alone `sniffer` run from a properties file written for it, its
// log lines reading "LEVEL message", one per line, in a file of its folder.
class SnifferProgram {
public:
    // `properties` are the file's lines; `prefix` goes before the program's
    // path on the command line (e.g. a command that lowers privileges).
    explicit SnifferProgram(const std::vector<std::string>& properties, const std::vector<std::string>& prefix = {});
    ~SnifferProgram();
    SnifferProgram(const SnifferProgram&) = delete;
    SnifferProgram& operator=(const SnifferProgram&) = delete;

    bool waitForLog(const std::string& text, std::chrono::milliseconds timeout = 5s) const;
    // Lines of the output equal to `line`.
    int countLines(const std::string& line) const;
    std::string output() const { return readFile(outputPath()); }
    // SIGTERM, then the exit status once the program has ended.
    std::optional<int> stop(std::chrono::milliseconds timeout = 10s);
    // The exit status, once the program has ended by itself within `timeout`.
    std::optional<int> wait(std::chrono::milliseconds timeout);
    pid_t pid() const { return process->pid(); }
    // A field of /proc/PID/status, e.g. "Uid" or "VmRSS"; empty once ended.
    std::string status(const std::string& field) const;
    long residentKb() const;

private:
    std::string outputPath() const { return folder.file("output.log"); }

    TempDir folder;
    std::unique_ptr<ChildProcess> process;
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

// Writes frames in libpcap's file format, also to a FIFO that a replaying
// sniffer reads while it is written. Opening a FIFO waits for its reader.
class CaptureWriter {
public:
    explicit CaptureWriter(const std::string& path);
    ~CaptureWriter();
    // A frame whose wire length may differ from the bytes written.
    void write(const Bytes& captured, bpf_u_int32 wireLength);
    void write(const Bytes& frame) { write(frame, static_cast<bpf_u_int32>(frame.size())); }
    void flush();
    void close();

private:
    pcap_t* dead = nullptr;
    pcap_dumper_t* dumper = nullptr;
};

uint16_t unusedPort(int type);
// A UDP socket bound to 127.0.0.1:port, or -1.
int udpSocketOn(uint16_t port);

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
