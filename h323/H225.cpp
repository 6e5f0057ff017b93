#include "h323/H225.h"

namespace h323::h225 {
using namespace per;

namespace {
const Type Int0_255 = integer(0, 255);
const Type Int0_65535 = integer(0, 65535);
const Type Octets2 = octetString(fixed(2));
const Type Octets4 = octetString(fixed(4));
const Type Octets6 = octetString(fixed(6));
const Type Octets16 = octetString(fixed(16));
}  // namespace

// H221NonStandard ::= SEQUENCE {
//   t35CountryCode INTEGER(0..255), t35Extension INTEGER(0..255),
//   manufacturerCode INTEGER(0..65535), ... }
const Component H221NonStandard_[] = {
    {"t35CountryCode", Int0_255},
    {"t35Extension", Int0_255},
    {"manufacturerCode", Int0_65535},
};
const Type H221NonStandard = sequence("H221NonStandard", H221NonStandard_, Extensible);

// NonStandardIdentifier ::= CHOICE {
//   object OBJECT IDENTIFIER, h221NonStandard H221NonStandard, ... }
const Component NonStandardIdentifier_[] = {
    {"object", ObjectIdentifier},
    {"h221NonStandard", H221NonStandard},
};
const Type NonStandardIdentifier = choice("NonStandardIdentifier", NonStandardIdentifier_, Extensible);

// NonStandardParameter ::= SEQUENCE {
//   nonStandardIdentifier NonStandardIdentifier, data OCTET STRING }
const Component NonStandardParameter_[] = {
    {"nonStandardIdentifier", NonStandardIdentifier},
    {"data", OctetString},
};
const Type NonStandardParameter = sequence("NonStandardParameter", NonStandardParameter_);

// TransportAddress ::= CHOICE {
//   ipAddress SEQUENCE { ip OCTET STRING(SIZE(4)), port INTEGER(0..65535) },
//   ipSourceRoute SEQUENCE { ip OCTET STRING(SIZE(4)), port INTEGER(0..65535),
//       route SEQUENCE OF OCTET STRING(SIZE(4)),
//       routing CHOICE { strict NULL, loose NULL, ... }, ... },
//   ipxAddress SEQUENCE { node OCTET STRING(SIZE(6)), netnum OCTET STRING(SIZE(4)),
//       port OCTET STRING(SIZE(2)) },
//   ip6Address SEQUENCE { ip OCTET STRING(SIZE(16)), port INTEGER(0..65535), ... },
//   netBios OCTET STRING(SIZE(16)),
//   nsap OCTET STRING(SIZE(1..20)),
//   nonStandardAddress NonStandardParameter, ... }
const Component TransportAddress_ipAddress_[] = {{"ip", Octets4}, {"port", Int0_65535}};
const Type TransportAddress_ipAddress = sequence("ipAddress", TransportAddress_ipAddress_);

const Type TransportAddress_ipSourceRoute_route = sequenceOf(Octets4);
const Component TransportAddress_ipSourceRoute_routing_[] = {{"strict", Null}, {"loose", Null}};
const Type TransportAddress_ipSourceRoute_routing = choice("routing", TransportAddress_ipSourceRoute_routing_, Extensible);
const Component TransportAddress_ipSourceRoute_[] = {
    {"ip", Octets4},
    {"port", Int0_65535},
    {"route", TransportAddress_ipSourceRoute_route},
    {"routing", TransportAddress_ipSourceRoute_routing},
};
const Type TransportAddress_ipSourceRoute = sequence("ipSourceRoute", TransportAddress_ipSourceRoute_, Extensible);

const Component TransportAddress_ipxAddress_[] = {{"node", Octets6}, {"netnum", Octets4}, {"port", Octets2}};
const Type TransportAddress_ipxAddress = sequence("ipxAddress", TransportAddress_ipxAddress_);

const Component TransportAddress_ip6Address_[] = {{"ip", Octets16}, {"port", Int0_65535}};
const Type TransportAddress_ip6Address = sequence("ip6Address", TransportAddress_ip6Address_, Extensible);

const Type TransportAddress_nsap = octetString(size(1, 20));
const Component TransportAddress_[] = {
    {"ipAddress", TransportAddress_ipAddress},
    {"ipSourceRoute", TransportAddress_ipSourceRoute},
    {"ipxAddress", TransportAddress_ipxAddress},
    {"ip6Address", TransportAddress_ip6Address},
    {"netBios", Octets16},
    {"nsap", TransportAddress_nsap},
    {"nonStandardAddress", NonStandardParameter},
};
const Type TransportAddress = choice("TransportAddress", TransportAddress_, Extensible);

const Type* const kTypes[] = {
    &H221NonStandard,
    &NonStandardIdentifier,
    &NonStandardParameter,
    &TransportAddress,
};
const size_t kTypeCount = sizeof(kTypes) / sizeof(kTypes[0]);

}  // namespace h323::h225
