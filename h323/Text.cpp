#include "h323/Text.h"

namespace h323 {

std::string hexText(std::string_view octets) {
    static const char kHex[] = "0123456789abcdef";
    std::string out;
    out.reserve(octets.size() * 2);
    for (unsigned char c : octets) {
        out += kHex[c >> 4];
        out += kHex[c & 15];
    }
    return out;
}

std::string guidText(std::string_view octets) {
    if (octets.size() != 16) return {};
    std::string hex = hexText(octets);
    return hex.substr(0, 8) + '-' + hex.substr(8, 4) + '-' + hex.substr(12, 4) + '-' + hex.substr(16, 4) + '-' +
           hex.substr(20);
}

std::string ipv4Text(std::string_view octets) {
    if (octets.size() != 4) return {};
    std::string out;
    for (size_t i = 0; i < 4; ++i) {
        if (i) out += '.';
        out += std::to_string(uint8_t(octets[i]));
    }
    return out;
}

std::string ipv4Text(uint32_t networkOrder) {
    // The first octet on the wire is the first octet in memory.
    return ipv4Text(std::string_view(reinterpret_cast<const char*>(&networkOrder), 4));
}

namespace {

std::string transportText(per::Value address) {
    if (!address.is("ipAddress")) return {};
    per::Value ip = address.chosen();
    std::string_view octets = ip["ip"].bytes();
    bool unspecified = octets == std::string_view("\0\0\0\0", 4);
    std::string out = "ip$" + (unspecified ? std::string("*") : ipv4Text(octets));
    if (int64_t port = ip["port"].integer()) out += ':' + std::to_string(port);
    return out;
}

std::string partyNumberText(per::Value number) {
    per::Value v = number.chosen();
    if (number.is("e164Number")) return "E164:" + v["publicNumberDigits"].text();
    if (number.is("privateNumber")) return "Private:" + v["privateNumberDigits"].text();
    if (number.is("dataPartyNumber")) return "Data:" + v.text();
    if (number.is("telexPartyNumber")) return "Telex:" + v.text();
    if (number.is("nationalStandardPartyNumber")) return "NSP:" + v.text();
    return {};
}

}  // namespace

std::string aliasText(per::Value alias) {
    per::Value v = alias.chosen();
    if (alias.is("dialedDigits") || alias.is("url_ID") || alias.is("email_ID")) return v.text();
    if (alias.is("h323_ID")) {
        std::string text = v.text();
        if (!text.empty() && text.back() == '\0') text.pop_back();
        return text;
    }
    if (alias.is("transportID")) return transportText(v);
    if (alias.is("partyNumber")) return partyNumberText(v);
    return {};
}

}  // namespace h323
