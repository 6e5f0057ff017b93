#ifndef SNIFFER_ADDRESS_TEXT_H
#define SNIFFER_ADDRESS_TEXT_H

#include <cstdint>
#include <string>

// Dotted-decimal text of an IPv4 address held in host order
// (first octet most significant).
inline std::string dottedQuad(uint32_t hostOrder) {
    return std::to_string(hostOrder >> 24) + '.' + std::to_string(hostOrder >> 16 & 0xFF) + '.' +
           std::to_string(hostOrder >> 8 & 0xFF) + '.' + std::to_string(hostOrder & 0xFF);
}

#endif
