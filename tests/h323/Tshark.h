// tshark as the oracle: TPKT payloads go into a capture through text2pcap,
// and tshark's field values come back one line per packet.

#ifndef H323_TESTS_TSHARK_H
#define H323_TESTS_TSHARK_H

#include <string>
#include <vector>

#include "h323/Per.h"
#include "h323/Q931.h"

namespace h323::test {

bool haveTshark();

// Runs tshark with `-T fields -e F...` over a capture and returns, per
// packet, the value of each field (occurrences joined by ',').
std::vector<std::vector<std::string>> tsharkFields(const std::string& pcap, const std::vector<std::string>& fields,
                                                   const std::string& filter = "");

// Writes each payload as one packet, dissected with `dissector`
// (text2pcap -P), into a capture file and returns its path.
std::string writeCapture(const std::vector<std::vector<uint8_t>>& payloads, const std::string& dissector);

// The Q.931 and H.225.0 fields the oracle compares, in tshark's notation.
extern const std::vector<std::string> kSignallingFields;

// The same fields as the toolkit reads them from a decoded message;
// `userInfo` is empty when there is no H.225.0 part.
std::vector<std::string> signallingFields(const Q931& q931, per::Value userInfo);

}  // namespace h323::test

#endif
