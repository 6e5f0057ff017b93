#pragma once

#include "ChildProcess.h"
#include "Endpoint.h"
#include "Network.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace recorder::test {

// The recorder binary on a free port, writing to a temporary folder that also holds its log.
class RecorderProcess {
public:
    explicit RecorderProcess(const std::vector<std::string>& extraArguments = {});

    uint16_t port() const { return port_; }
    std::filesystem::path output() const { return dir_.file("out"); }
    std::string log() const { return readFile(dir_.file("recorder.log")); }
    // The port of the web side, started with "--http 127.0.0.1:0"; 0 when there is none.
    uint16_t httpPort() const;
    bool waitForLog(const std::string& text, std::chrono::milliseconds timeout = 3s) const;
    // The lines of calls.jsonl once there are at least `count`, or those there are after `timeout`.
    std::vector<std::string> waitForCalls(size_t count, std::chrono::milliseconds timeout = 5s) const;
    // SIGTERM and wait; the exit status.
    int stop();

private:
    TempDir dir_;
    ChildProcess process_;
    uint16_t port_ = 0;
};

// Plays the sniffer's part over TCP.
class TcpSniffer {
public:
    explicit TcpSniffer(uint16_t port);
    ~TcpSniffer();
    void send(const Bytes& bytes) const;
    // The next 7-byte command; none when it does not come in time.
    Bytes readCommand(std::chrono::milliseconds timeout = 2s) const;
    // True once the recorder closed the connection.
    bool waitForClose(std::chrono::milliseconds timeout = 2s) const;

private:
    int fd_ = -1;
};

Bytes frame(uint8_t protocol, const Endpoint& source, const Endpoint& destination, const std::string& payload);
// The 7-byte wire form of a command to the sniffer.
Bytes command(uint8_t code, const Endpoint& rtp);
inline Bytes command(uint8_t code, const std::string& ip, uint16_t port) {
    return command(code, {*parseIp(ip), port});
}

// The parties of the test calls: signalling, and where each receives RTP.
inline const Endpoint kCallerSip{0x0a000001, 5060};
inline const Endpoint kCalleeSip{0x0a000002, 5060};
inline const Endpoint kCallerRtp{0x0a000001, 4000};
inline const Endpoint kCalleeRtp{0x0a000002, 5000};

// SIP messages of one call between kCallerSip and kCalleeSip, framed as the sniffer forwards them.
Bytes sipFrame(const std::string& message, bool fromCaller = true);
std::string sdp(const std::string& ip, uint16_t port, int payloadType);
std::string sipRequest(const std::string& method, const std::string& callId, const std::string& body = "",
                       bool fromCallee = false);
std::string sipResponse(int status, const std::string& method, const std::string& callId, const std::string& body = "");

}  // namespace recorder::test
