#pragma once

#include "Endpoint.h"

#include <sys/types.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace recorder::test {

using namespace std::chrono_literals;
using Bytes = std::vector<uint8_t>;
using Command = std::array<uint8_t, 7>;

// The recorder binary, run on a free port with a temporary output folder; its log is kept.
class RecorderProcess {
public:
    explicit RecorderProcess(std::vector<std::string> extraArguments = {});
    ~RecorderProcess();
    RecorderProcess(const RecorderProcess&) = delete;
    RecorderProcess& operator=(const RecorderProcess&) = delete;

    uint16_t port() const { return port_; }
    const std::filesystem::path& output() const { return output_; }

    std::string log() const;
    bool waitForLog(const std::string& text, std::chrono::milliseconds timeout = 3s) const;
    // The lines of calls.jsonl once there are `count` of them.
    std::vector<std::string> waitForCalls(size_t count, std::chrono::milliseconds timeout = 5s) const;
    // SIGTERM and wait; the exit status, or -1 when it had to be killed.
    int stop();

private:
    std::filesystem::path output_;
    pid_t pid_ = -1;
    int logPipe_ = -1;
    uint16_t port_ = 0;
    mutable std::mutex logLock_;
    std::string log_;
    std::thread logReader_;
};

// Plays the sniffer's part over TCP.
class TcpSniffer {
public:
    explicit TcpSniffer(uint16_t port);
    ~TcpSniffer();
    void send(const Bytes& bytes) const;
    std::optional<Command> readCommand(std::chrono::milliseconds timeout = 2s) const;
    // True once the recorder closed the connection.
    bool waitForClose(std::chrono::milliseconds timeout = 2s) const;

private:
    int fd_ = -1;
};

// Plays the sniffer's part over UDP, from an address of its own.
class UdpSniffer {
public:
    explicit UdpSniffer(uint16_t recorderPort);
    ~UdpSniffer();
    void send(const Bytes& datagram) const;
    // The command and the port it came from.
    std::optional<std::pair<Command, uint16_t>> readCommand(std::chrono::milliseconds timeout = 2s) const;

private:
    int fd_ = -1;
    uint16_t recorderPort_;
};

Endpoint endpoint(const std::string& ip, uint16_t port);
Bytes frame(uint8_t protocol, const Endpoint& source, const Endpoint& destination, const std::string& payload);
Command command(uint8_t code, const Endpoint& rtp);

// The parties of the test calls: signalling, and where each receives RTP.
inline const Endpoint kCallerSip{0x0a000001, 5060};
inline const Endpoint kCalleeSip{0x0a000002, 5060};
inline const Endpoint kCallerRtp{0x0a000001, 4000};
inline const Endpoint kCalleeRtp{0x0a000002, 5000};

// SIP messages of one call between kCallerSip and kCalleeSip.
std::string sdp(const std::string& ip, uint16_t port, int payloadType);
std::string sipRequest(const std::string& method, const std::string& callId, const std::string& body = "",
                       bool fromCallee = false);
std::string sipResponse(int status, const std::string& method, const std::string& callId,
                        const std::string& body = "");
std::string rtp(uint8_t payloadType, uint16_t sequence, uint32_t timestamp, uint32_t ssrc, uint8_t fill);

std::string readFile(const std::filesystem::path& path);
std::string run(const std::string& shellCommand);

}  // namespace recorder::test
