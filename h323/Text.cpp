#include "h323/Text.h"

#include "h323/H225.h"

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
    if (octets.size() != 16)
        return {};
    std::string hex = hexText(octets);
    return hex.substr(0, 8) + '-' + hex.substr(8, 4) + '-' + hex.substr(12, 4) + '-' + hex.substr(16, 4) + '-' +
           hex.substr(20);
}

std::string ipv4Text(std::string_view octets) {
    if (octets.size() != 4)
        return {};
    std::string out;
    for (size_t i = 0; i < 4; ++i) {
        if (i)
            out += '.';
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
    if (!address.is(h225::Transport::ipAddress))
        return {};
    per::Value ip = address.chosen();
    std::string_view octets = ip[h225::IpAddress::ip].bytes();
    bool unspecified = octets == std::string_view("\0\0\0\0", 4);
    std::string out = "ip$" + (unspecified ? std::string("*") : ipv4Text(octets));
    if (int64_t port = ip[h225::IpAddress::port].integer())
        out += ':' + std::to_string(port);
    return out;
}

std::string partyNumberText(per::Value number) {
    per::Value v = number.chosen();
    if (number.is(h225::Party::e164Number))
        return "E164:" + v[h225::PublicNumber::publicNumberDigits].text();
    if (number.is(h225::Party::privateNumber))
        return "Private:" + v[h225::PrivateNumber::privateNumberDigits].text();
    if (number.is(h225::Party::dataPartyNumber))
        return "Data:" + v.text();
    if (number.is(h225::Party::telexPartyNumber))
        return "Telex:" + v.text();
    if (number.is(h225::Party::nationalStandardPartyNumber))
        return "NSP:" + v.text();
    return {};
}

}  // namespace

std::string aliasText(per::Value alias) {
    per::Value v = alias.chosen();
    if (alias.is(h225::Alias::dialedDigits) || alias.is(h225::Alias::url_ID) || alias.is(h225::Alias::email_ID))
        return v.text();
    if (alias.is(h225::Alias::h323_ID)) {
        std::string text = v.text();
        if (!text.empty() && text.back() == '\0')
            text.pop_back();
        return text;
    }
    if (alias.is(h225::Alias::transportID))
        return transportText(v);
    if (alias.is(h225::Alias::partyNumber))
        return partyNumberText(v);
    return {};
}

}  // namespace h323
