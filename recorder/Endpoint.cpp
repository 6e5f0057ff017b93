#include "Endpoint.h"

#include <arpa/inet.h>

namespace recorder {

std::string formatIp(uint32_t ip) {
    return std::to_string(ip >> 24) + '.' + std::to_string((ip >> 16) & 0xff) + '.' + std::to_string((ip >> 8) & 0xff) +
           '.' + std::to_string(ip & 0xff);
}

std::string toString(const Endpoint& endpoint) {
    return formatIp(endpoint.ip) + ':' + std::to_string(endpoint.port);
}

std::optional<uint32_t> parseIp(std::string_view text) {
    in_addr address{};
    if (text.size() >= INET_ADDRSTRLEN || inet_pton(AF_INET, std::string(text).c_str(), &address) != 1)
        return std::nullopt;
    return ntohl(address.s_addr);
}

}  // namespace recorder
