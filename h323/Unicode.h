// UCS-2 (the 16-bit characters of BMPString, big-endian on the wire) to and
// from UTF-8.

#ifndef H323_UNICODE_H
#define H323_UNICODE_H

#include <string>
#include <string_view>

namespace h323 {

// Big-endian UCS-2 octets to UTF-8; an odd last octet is ignored.
std::string ucs2ToUtf8(std::string_view ucs2);

// UTF-8 to big-endian UCS-2 octets; characters outside the BMP and
// malformed sequences become U+FFFD.
std::string utf8ToUcs2(std::string_view utf8);

}  // namespace h323

#endif
