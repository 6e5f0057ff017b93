#include "RecorderHarness.h"

#include "Loopback.h"
#include "Programs.h"
#include "RecordingFiles.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace recorder::test {
namespace {

bool pollReadable(int fd, std::chrono::milliseconds timeout) {
    pollfd entry{fd, POLLIN, 0};
    return poll(&entry, 1, static_cast<int>(timeout.count())) == 1;
}

}  // namespace

// Heartbeats only where a test asks for them: a later option wins.
RecorderProcess::RecorderProcess(const std::vector<std::string>& extraArguments)
    : process_(
          [&] {
              std::vector<std::string> arguments = {RECORDER_BINARY,  "--port",      "0", "--output",
                                                    dir_.file("out"), "--heartbeat", "60"};
              arguments.insert(arguments.end(), extraArguments.begin(), extraArguments.end());
              return arguments;
          }(),
          dir_.file("recorder.log")) {
    const std::string listening = "Listening for the sniffer on 127.0.0.1:";
    if (!waitForLog(listening, 5s))
        throw std::runtime_error("the recorder did not start:\n" + log());
    const std::string text = log();
    port_ = static_cast<uint16_t>(std::stoi(text.substr(text.find(listening) + listening.size())));
}

uint16_t RecorderProcess::httpPort() const {
    const std::string text = log(), serving = "Web page on http://127.0.0.1:";
    const size_t at = text.find(serving);
    return at == std::string::npos ? 0 : static_cast<uint16_t>(std::stoi(text.substr(at + serving.size())));
}

bool RecorderProcess::waitForLog(const std::string& text, std::chrono::milliseconds timeout) const {
    return waitForText(dir_.file("recorder.log"), text, timeout);
}

std::vector<std::string> RecorderProcess::waitForCalls(size_t count, std::chrono::milliseconds timeout) const {
    const std::string index = output() / "calls.jsonl";
    waitUntil([&] { return readLines(index).size() >= count; }, timeout);
    return readLines(index);
}

int RecorderProcess::stop() {
    process_.stop();
    return process_.exitStatus();
}

TcpSniffer::TcpSniffer(uint16_t port) {
    fd_ = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = loopback(port);
    if (connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("connect failed");
}

TcpSniffer::~TcpSniffer() {
    close(fd_);
}

void TcpSniffer::send(const Bytes& bytes) const {
    if (::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("send failed");
}

Bytes TcpSniffer::readCommand(std::chrono::milliseconds timeout) const {
    Bytes command(7);
    size_t have = 0;
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (have < command.size()) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 || !pollReadable(fd_, left))
            return {};
        const ssize_t n = recv(fd_, command.data() + have, command.size() - have, 0);
        if (n <= 0)
            return {};
        have += static_cast<size_t>(n);
    }
    return command;
}

bool TcpSniffer::waitForClose(std::chrono::milliseconds timeout) const {
    char scratch[256];
    // Commands before the close are skipped.
    return waitUntil([&] { return pollReadable(fd_, 0ms) && recv(fd_, scratch, sizeof scratch, 0) <= 0; }, timeout);
}

Bytes frame(uint8_t protocol, const Endpoint& source, const Endpoint& destination, const std::string& payload) {
    const size_t length = 15 + payload.size();
    Bytes bytes = {static_cast<uint8_t>(length >> 8), static_cast<uint8_t>(length), protocol};
    for (const Endpoint& e : {destination, source}) {
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes.push_back(static_cast<uint8_t>(e.ip >> shift));
        bytes.push_back(static_cast<uint8_t>(e.port >> 8));
        bytes.push_back(static_cast<uint8_t>(e.port));
    }
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

Bytes command(uint8_t code, const Endpoint& rtp) {
    return {code,
            static_cast<uint8_t>(rtp.ip >> 24),
            static_cast<uint8_t>(rtp.ip >> 16),
            static_cast<uint8_t>(rtp.ip >> 8),
            static_cast<uint8_t>(rtp.ip),
            static_cast<uint8_t>(rtp.port >> 8),
            static_cast<uint8_t>(rtp.port)};
}

Bytes sipFrame(const std::string& message, bool fromCaller) {
    return frame(1, fromCaller ? kCallerSip : kCalleeSip, fromCaller ? kCalleeSip : kCallerSip, message);
}

std::string sdp(const std::string& ip, uint16_t port, int payloadType) {
    return "v=0\r\no=- 1 1 IN IP4 " + ip + "\r\ns=-\r\nc=IN IP4 " + ip + "\r\nt=0 0\r\nm=audio " +
           std::to_string(port) + " RTP/AVP " + std::to_string(payloadType) + "\r\n";
}

namespace {

std::string sipHeaders(const std::string& callId, const std::string& from, const std::string& to, int cseq,
                       const std::string& method, const std::string& body) {
    return "Via: SIP/2.0/UDP 10.0.0.1:5060;branch=z9hG4bK-1\r\nFrom: " + from + "\r\nTo: " + to +
           "\r\nCall-ID: " + callId + "\r\nCSeq: " + std::to_string(cseq) + " " + method +
           (body.empty() ? std::string() : "\r\nContent-Type: application/sdp") +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

const std::string kAlice = "\"Alice\" <sip:alice@10.0.0.1>;tag=a1";
const std::string kBob = "<sip:bob@10.0.0.2>;tag=b2";

}  // namespace

std::string sipRequest(const std::string& method, const std::string& callId, const std::string& body, bool fromCallee) {
    const std::string to = method == "INVITE" && !fromCallee ? "<sip:bob@10.0.0.2>" : kBob;
    return method + " sip:bob@10.0.0.2 SIP/2.0\r\n" +
           (fromCallee ? sipHeaders(callId, kBob, kAlice, 7, method, body)
                       : sipHeaders(callId, kAlice, to, method == "BYE" ? 2 : 1, method, body));
}

std::string sipResponse(int status, const std::string& method, const std::string& callId, const std::string& body) {
    return "SIP/2.0 " + std::to_string(status) + " Whatever\r\n" +
           sipHeaders(callId, kAlice, kBob, method == "BYE" ? 2 : 1, method, body);
}

}  // namespace recorder::test
