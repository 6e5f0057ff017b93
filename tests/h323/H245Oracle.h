// tshark as the oracle of the H.245 tables: the fields tshark reads from a
// set of H.245 PDUs, and the same fields read from the toolkit's decoded
// values, written alike so that a test compares two texts.

#ifndef H323_TESTS_H245_ORACLE_H
#define H323_TESTS_H245_ORACLE_H

#include <cstdint>
#include <string>
#include <vector>

#include "h323/Per.h"

namespace h323::test {

using Pdu = std::vector<uint8_t>;

// One packet as tshark dissected it: the compared fields, one line per
// field that occurs, "name: value|value|..." in the order of the packet.
// Tag fields (CHOICE alternatives) read "alternative (index)", with the
// ASN.1 spelling of the name.
struct TsharkPacket {
    std::string fields;
    std::string payload;   // the TCP payload, hex, when read from a capture
};

// Writes each PDU as one frame for tshark's raw H.245 dissector and
// returns what tshark reads in each, in order.
std::vector<TsharkPacket> tsharkReadH245(const std::vector<Pdu>& pdus);

// The packets of a capture file that match `filter`.
std::vector<TsharkPacket> tsharkReadCapture(const std::string& path, const std::string& filter);

// The compared fields of a decoded MultimediaSystemControlMessage (or of
// several, appended), written as tsharkReadH245 writes them. A part of a
// message is collected with the path of component names that leads to it.
class FieldCollector {
public:
    void collect(per::Value message, const std::string& path = "");
    std::string text() const;

private:
    void visit(per::Value v, const std::string& path);
    std::vector<std::vector<std::string>> values_ = std::vector<std::vector<std::string>>(fieldCount());
    static size_t fieldCount();
};

// The H.245 PDUs of TPKT-framed TCP payload octets.
std::vector<Pdu> splitTpkt(const Pdu& payload);

}  // namespace h323::test

#endif
