#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace recorder {

// An IPv4 address and UDP port, both in host order (first octet most significant).
struct Endpoint {
    uint32_t ip = 0;
    uint16_t port = 0;

    friend bool operator==(const Endpoint& a, const Endpoint& b) { return a.ip == b.ip && a.port == b.port; }
    friend bool operator!=(const Endpoint& a, const Endpoint& b) { return !(a == b); }
    friend bool operator<(const Endpoint& a, const Endpoint& b) { return a.ip != b.ip ? a.ip < b.ip : a.port < b.port; }
};

struct EndpointHash {
    size_t operator()(const Endpoint& e) const { return std::hash<uint64_t>()((uint64_t{e.ip} << 16) | e.port); }
};

std::string formatIp(uint32_t ip);
std::string toString(const Endpoint& endpoint);  // "10.0.0.1:4000"
std::optional<uint32_t> parseIp(std::string_view text);

}  // namespace recorder
