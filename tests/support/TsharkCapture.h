#ifndef TESTS_TSHARK_CAPTURE_H
#define TESTS_TSHARK_CAPTURE_H

#include <string>
#include <vector>

// tshark's reading of a capture file: the oracle the engine's output is
// compared with.
namespace tshark {

// The engine's SIP test in display-filter terms: a status line, or a second
// word starting with "sip:" after a first word of at most 15 bytes; any case.
// (The engine counts leading white against those 15 bytes too; messages as
// agents write them have none.)
extern const std::string sipRule;

// For each display filter, the UDP payload (in hex) of every packet it
// selects, in capture order. The filters are run side by side; a tshark
// that fails is a test failure.
std::vector<std::vector<std::string>> udpPayloads(const std::string& capture, const std::vector<std::string>& filters);

// The rows of `tshark -r capture -T fields ARGUMENTS...` that start with a
// digit (a packet's, not a warning's); a tshark that fails is a test failure.
std::vector<std::string> fieldRows(const std::string& capture, const std::vector<std::string>& arguments);

// For every packet, "source>destination" of its last (innermost) IPv4 header.
std::vector<std::string> innermostAddresses(const std::string& capture);

}  // namespace tshark

#endif
