// Text forms of H.323 values as the signalling decoder reports them.

#ifndef H323_TEXT_H
#define H323_TEXT_H

#include <cstdint>
#include <string>
#include <string_view>

#include "h323/Per.h"

namespace h323 {

// Lowercase hex digits, two per octet, nothing between them.
std::string hexText(std::string_view octets);

// A 16-octet globally unique identifier in wire order, lowercase hex
// grouped 8-4-4-4-12 ("c0fef93e-cd9e-d611-9ab2-000476222017"); other
// sizes give "".
std::string guidText(std::string_view octets);

// Dotted decimal of 4 octets in wire order ("" for other sizes), or of an
// address held as a 32-bit value in network byte order.
std::string ipv4Text(std::string_view octets);
std::string ipv4Text(uint32_t networkOrder);

// An H.225.0 AliasAddress as text: dialedDigits, url-ID and email-ID as
// they are; h323-ID in UTF-8 without a trailing NUL; transportID as
// "ip$a.b.c.d:port" (no ":port" for port 0, "*" for 0.0.0.0); partyNumber
// as its digits behind "E164:", "Private:", "Data:", "Telex:" or "NSP:";
// anything else "".
std::string aliasText(per::Value alias);

}  // namespace h323

#endif
