#include "RecorderHarness.h"

#include <arpa/inet.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace recorder::test {
namespace {

bool pollReadable(int fd, std::chrono::milliseconds timeout)
{
    pollfd entry{fd, POLLIN, 0};
    return poll(&entry, 1, static_cast<int>(timeout.count())) == 1;
}

template <class Predicate>
bool waitUntil(Predicate done, std::chrono::milliseconds timeout)
{
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(20ms);
    }
    return true;
}

sockaddr_in loopback(uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

}  // namespace

RecorderProcess::RecorderProcess(std::vector<std::string> extraArguments)
{
    char folder[] = "/tmp/recorder-test-XXXXXX";
    if (!mkdtemp(folder))
        throw std::runtime_error("mkdtemp failed");
    output_ = folder;

    // Heartbeats only where a test asks for them: a later option wins.
    std::vector<std::string> arguments = {RECORDER_BINARY, "--port", "0", "--output", output_.string(),
                                          "--heartbeat", "60"};
    arguments.insert(arguments.end(), extraArguments.begin(), extraArguments.end());
    int fds[2];
    if (pipe(fds) != 0)
        throw std::runtime_error("pipe failed");
    pid_ = fork();
    if (pid_ == 0) {
        dup2(fds[1], STDERR_FILENO);
        close(fds[0]);
        close(fds[1]);
        std::vector<char*> argv;
        for (std::string& argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        execv(argv[0], argv.data());
        _exit(127);
    }
    close(fds[1]);
    logPipe_ = fds[0];
    logReader_ = std::thread([this] {
        char chunk[4096];
        ssize_t n;
        while ((n = read(logPipe_, chunk, sizeof chunk)) > 0) {
            const std::lock_guard<std::mutex> lock(logLock_);
            log_.append(chunk, static_cast<size_t>(n));
        }
    });

    const std::string listening = "Listening for the sniffer on 127.0.0.1:";
    if (!waitUntil([&] {
            const std::string text = log();
            const size_t found = text.find(listening);
            if (found == std::string::npos)
                return false;
            port_ = static_cast<uint16_t>(std::stoi(text.substr(found + listening.size())));
            return true;
        }, 5s))
        throw std::runtime_error("the recorder did not start:\n" + log());
}

RecorderProcess::~RecorderProcess()
{
    stop();
    std::error_code ignored;
    std::filesystem::remove_all(output_, ignored);
}

std::string RecorderProcess::log() const
{
    const std::lock_guard<std::mutex> lock(logLock_);
    return log_;
}

bool RecorderProcess::waitForLog(const std::string& text, std::chrono::milliseconds timeout) const
{
    return waitUntil([&] { return log().find(text) != std::string::npos; }, timeout);
}

std::vector<std::string> RecorderProcess::waitForCalls(size_t count, std::chrono::milliseconds timeout) const
{
    std::vector<std::string> lines;
    waitUntil([&] {
        lines.clear();
        std::istringstream index(readFile(output_ / "calls.jsonl"));
        for (std::string line; std::getline(index, line);)
            lines.push_back(line);
        return lines.size() >= count;
    }, timeout);
    return lines;
}

int RecorderProcess::stop()
{
    if (pid_ <= 0)
        return -1;
    kill(pid_, SIGTERM);
    int status = 0;
    const bool exited = waitUntil([&] { return waitpid(pid_, &status, WNOHANG) == pid_; }, 5s);
    if (!exited) {
        kill(pid_, SIGKILL);
        waitpid(pid_, &status, 0);
    }
    pid_ = -1;
    logReader_.join();
    close(logPipe_);
    return exited && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TcpSniffer::TcpSniffer(uint16_t port)
{
    fd_ = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = loopback(port);
    if (connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("connect failed");
}

TcpSniffer::~TcpSniffer()
{
    close(fd_);
}

void TcpSniffer::send(const Bytes& bytes) const
{
    if (::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("send failed");
}

std::optional<Command> TcpSniffer::readCommand(std::chrono::milliseconds timeout) const
{
    Command command;
    size_t have = 0;
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (have < command.size()) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 || !pollReadable(fd_, left))
            return std::nullopt;
        const ssize_t n = recv(fd_, command.data() + have, command.size() - have, 0);
        if (n <= 0)
            return std::nullopt;
        have += static_cast<size_t>(n);
    }
    return command;
}

bool TcpSniffer::waitForClose(std::chrono::milliseconds timeout) const
{
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    char scratch[256];
    while (std::chrono::steady_clock::now() < deadline) {
        if (!pollReadable(fd_, 50ms))
            continue;
        if (recv(fd_, scratch, sizeof scratch, 0) <= 0)
            return true;  // commands before the close are skipped
    }
    return false;
}

UdpSniffer::UdpSniffer(uint16_t recorderPort) : recorderPort_(recorderPort)
{
    fd_ = socket(AF_INET, SOCK_DGRAM, 0);
    const sockaddr_in local = loopback(0);
    bind(fd_, reinterpret_cast<const sockaddr*>(&local), sizeof local);
}

UdpSniffer::~UdpSniffer()
{
    close(fd_);
}

void UdpSniffer::send(const Bytes& datagram) const
{
    const sockaddr_in recorder = loopback(recorderPort_);
    sendto(fd_, datagram.data(), datagram.size(), 0, reinterpret_cast<const sockaddr*>(&recorder), sizeof recorder);
}

std::optional<std::pair<Command, uint16_t>> UdpSniffer::readCommand(std::chrono::milliseconds timeout) const
{
    if (!pollReadable(fd_, timeout))
        return std::nullopt;
    Command command;
    sockaddr_in from{};
    socklen_t length = sizeof from;
    if (recvfrom(fd_, command.data(), command.size(), 0, reinterpret_cast<sockaddr*>(&from), &length) !=
        static_cast<ssize_t>(command.size()))
        return std::nullopt;
    return std::pair{command, ntohs(from.sin_port)};
}

Endpoint endpoint(const std::string& ip, uint16_t port)
{
    return {*parseIp(ip), port};
}

Bytes frame(uint8_t protocol, const Endpoint& source, const Endpoint& destination, const std::string& payload)
{
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

Command command(uint8_t code, const Endpoint& rtp)
{
    return {code,
            static_cast<uint8_t>(rtp.ip >> 24),
            static_cast<uint8_t>(rtp.ip >> 16),
            static_cast<uint8_t>(rtp.ip >> 8),
            static_cast<uint8_t>(rtp.ip),
            static_cast<uint8_t>(rtp.port >> 8),
            static_cast<uint8_t>(rtp.port)};
}

std::string sdp(const std::string& ip, uint16_t port, int payloadType)
{
    return "v=0\r\no=- 1 1 IN IP4 " + ip + "\r\ns=-\r\nc=IN IP4 " + ip + "\r\nt=0 0\r\nm=audio " +
           std::to_string(port) + " RTP/AVP " + std::to_string(payloadType) + "\r\n";
}

namespace {

std::string sipHeaders(const std::string& callId, const std::string& from, const std::string& to, int cseq,
                       const std::string& method, const std::string& body)
{
    return "Via: SIP/2.0/UDP 10.0.0.1:5060;branch=z9hG4bK-1\r\nFrom: " + from + "\r\nTo: " + to +
           "\r\nCall-ID: " + callId + "\r\nCSeq: " + std::to_string(cseq) + " " + method +
           (body.empty() ? std::string() : "\r\nContent-Type: application/sdp") +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

const std::string kAlice = "\"Alice\" <sip:alice@10.0.0.1>;tag=a1";
const std::string kBob = "<sip:bob@10.0.0.2>;tag=b2";

}  // namespace

std::string sipRequest(const std::string& method, const std::string& callId, const std::string& body,
                       bool fromCallee)
{
    const std::string to = method == "INVITE" && !fromCallee ? "<sip:bob@10.0.0.2>" : kBob;
    return method + " sip:bob@10.0.0.2 SIP/2.0\r\n" +
           (fromCallee ? sipHeaders(callId, kBob, kAlice, 7, method, body)
                       : sipHeaders(callId, kAlice, to, method == "BYE" ? 2 : 1, method, body));
}

std::string sipResponse(int status, const std::string& method, const std::string& callId, const std::string& body)
{
    return "SIP/2.0 " + std::to_string(status) + " Whatever\r\n" +
           sipHeaders(callId, kAlice, kBob, method == "BYE" ? 2 : 1, method, body);
}

std::string rtp(uint8_t payloadType, uint16_t sequence, uint32_t timestamp, uint32_t ssrc, uint8_t fill)
{
    std::string packet = {'\x80', static_cast<char>(payloadType), static_cast<char>(sequence >> 8),
                          static_cast<char>(sequence)};
    for (const uint32_t word : {timestamp, ssrc})
        for (int shift = 24; shift >= 0; shift -= 8)
            packet += static_cast<char>(word >> shift);
    return packet + std::string(160, static_cast<char>(fill));
}

std::string readFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

std::string run(const std::string& shellCommand)
{
    std::string output;
    FILE* pipe = popen(shellCommand.c_str(), "r");
    char chunk[4096];
    size_t n;
    while (pipe && (n = fread(chunk, 1, sizeof chunk, pipe)) > 0)
        output.append(chunk, n);
    if (pipe)
        pclose(pipe);
    return output;
}

}  // namespace recorder::test
