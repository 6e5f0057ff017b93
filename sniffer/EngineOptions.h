#ifndef SNIFFER_ENGINE_OPTIONS_H
#define SNIFFER_ENGINE_OPTIONS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// The engine's opt-in settings: every one of them at its default leaves the
// engine's classic behaviour untouched, byte for byte and line for line.
//
// They are read by key. File mode takes a key from the properties file and,
// where the file has no value for it, from the environment variable
// SNIFFER_<key> (SNIFFER_LinkMode, ...); the command-line program and
// embedded hosts read the environment only, so that their usage text and
// host fields stay as they are.
class EngineOptions {
public:
    enum class LinkMode { Classic, Reliable };
    enum class HepTransport { Udp, Tcp };

    static constexpr const char* environmentPrefix = "SNIFFER_";

    // Delivery.
    LinkMode linkMode = LinkMode::Classic;
    int sendBufferSize = 4 * 1024 * 1024;  // bytes, reliable link
    int stallTimeoutMs = 5000;             // a full send buffer waited out this long, reliable link
    int queueLimitMiB = 256;               // packet queue bound, reliable link
    int captureTimeoutMs = 1000;           // libpcap read time-out of every live device
    int rtpPreRollMs = 0;                  // 0: unlisted datagrams are not held
    int preRollLimitMiB = 64;
    int statsIntervalS = 60;  // 0: counters only at stop

    // Classification.
    bool decapsulate = false;   // read IPv4 under tag stacks, labels and tunnels
    bool reassembleIp = false;  // put fragmented IPv4 datagrams together before classifying them
    int reassemblyLimitMiB = 16;
    bool sipOverTcp = false;  // TCP on sipTcpPorts carries SIP, framed by Content-Length
    std::vector<uint16_t> sipTcpPorts{5060};
    bool reassembleH323 = false;  // H.323 TPKT messages taken from the reassembled TCP stream

    // UDP link: the addresses commands are taken from (host byte order);
    // empty: every sender, which also takes the frames over.
    std::vector<uint32_t> commandSources;

    // Export of SIP to a HEP collector, beside the recorder link.
    std::string hepCollector;  // "a.b.c.d:port"; empty: no export
    HepTransport hepTransport = HepTransport::Udp;
    int hepCaptureId = 2001;
    std::string hepPassword;  // empty: no auth key chunk

    // A key's value as given, empty when it is not given.
    using Lookup = std::function<std::string(const std::string& key)>;

    // Reads every key through `lookup`. False, with an ERROR line naming
    // the key and its value, when a given value is not valid; the options
    // then keep their defaults for the keys not yet read.
    bool load(const Lookup& lookup);
    static std::string fromEnvironment(const std::string& key);

    bool reliable() const { return linkMode == LinkMode::Reliable; }
    bool restrictsCommands() const { return !commandSources.empty(); }
    bool exportsHep() const { return !hepCollector.empty(); }
    // True when any key was given, even at its default value: the counters
    // are logged only then, so that a classic run logs what it always did.
    bool anyKeyGiven() const { return keysGiven; }
    std::size_t queueLimitBytes() const { return std::size_t(queueLimitMiB) << 20; }
    std::size_t preRollLimitBytes() const { return std::size_t(preRollLimitMiB) << 20; }
    std::size_t reassemblyLimitBytes() const { return std::size_t(reassemblyLimitMiB) << 20; }
    bool isSipTcpPort(uint16_t port) const;
    bool reassemblesTcp() const { return sipOverTcp || reassembleH323; }

    // "Key=value" for every key not at its default, comma-separated; empty
    // when all are at their defaults.
    std::string describeChanges() const;

private:
    bool keysGiven = false;
};

#endif
