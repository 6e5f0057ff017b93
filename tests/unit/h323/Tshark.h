// tshark as the oracle: the fields tshark reads from a capture, and the same
// fields read from the toolkit's decoded values, written alike so that a
// test compares two texts.

#ifndef H323_TESTS_TSHARK_H
#define H323_TESTS_TSHARK_H

#include <cstdint>
#include <string>
#include <vector>

#include "h323/Per.h"
#include "h323/Q931.h"

namespace h323::test {

using Pdu = std::vector<uint8_t>;

enum class Format { Tag, Integer, Boolean, IPv4, IPv6, Text, Guid, Size };

// A tshark field and where the same value sits in a decoded value: the
// trailing component names of its path ("" is the value itself, nullptr
// a field only tshark has). Tag fields (CHOICE alternatives) read
// "alternative (index)", with the ASN.1 spelling of the name.
struct Field {
    std::string tshark;
    const char* path;
    Format format;
};
using Fields = std::vector<Field>;

// The compared fields of a MultimediaSystemControlMessage, and of a Q.931
// message with its H323-UserInformation.
extern const Fields kH245Fields;
extern const Fields kSignallingFields;

bool haveTshark();

// Writes each payload as one packet, dissected with `dissector`
// (text2pcap -P), into a capture file and returns its path.
std::string writeCapture(const std::vector<Pdu>& payloads, const std::string& dissector);

// One packet as tshark dissected it: one line per compared field that
// occurs, "name: value|value|...", in the order of the packet.
struct TsharkPacket {
    std::string fields;
    std::string payload;  // the TCP payload, hex, when read from a capture
};

// The packets of a capture file that match `filter`.
std::vector<TsharkPacket> tsharkRead(const std::string& capture, const Fields& fields, const std::string& filter = "");

// The compared fields of decoded values, written as tsharkRead writes them.
// A part of a message is collected with the path of component names that
// leads to it.
class FieldCollector {
public:
    explicit FieldCollector(const Fields& fields) : fields_(fields), values_(fields.size()) {}
    void collect(per::Value v, const std::string& path = "");
    void add(const std::string& tshark, const std::string& value);  // a value from outside the PER tree
    std::string text() const;

private:
    const Fields& fields_;
    std::vector<std::vector<std::string>> values_;
};

// The signalling fields of a Q.931 message and its decoded user information.
std::string signallingFields(const Q931& q931, per::Value userInfo);

// The PDUs of TPKT-framed TCP payload octets.
std::vector<Pdu> splitTpkt(const Pdu& payload);

}  // namespace h323::test

#endif
