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

// What a shell command writes to its standard output.
std::string commandOutput(const std::string& command);

// Runs tshark with `-T fields -e F...` over a capture and returns, per
// packet, the value of each field (occurrences joined by ',').
std::vector<std::vector<std::string>> tsharkFields(const std::string& pcap, const std::vector<std::string>& fields,
                                                   const std::string& filter = "");

// Writes each payload as one packet, dissected with `dissector`
// (text2pcap -P), into a capture file and returns its path.
std::string writeCapture(const std::vector<std::vector<uint8_t>>& payloads, const std::string& dissector);

// Calls `f` with every component or alternative called `name`, in wire order.
template <typename F>
void forEachNamed(per::Value v, std::string_view name, F f) {
    if (!v) return;
    const per::Type* t = v.type();
    switch (t->kind) {
    case per::Kind::Sequence:
        for (size_t i = 0; i < v.componentCount(); ++i) {
            per::Value c = v.component(i);
            if (c && i < t->count && name == t->components[i].name) f(c);
            forEachNamed(c, name, f);
        }
        break;
    case per::Kind::Choice:
        if (v.is(name)) f(v.chosen());
        forEachNamed(v.chosen(), name, f);
        break;
    case per::Kind::SequenceOf:
        for (size_t i = 0; i < v.size(); ++i) forEachNamed(v.at(i), name, f);
        break;
    default: break;
    }
}

// The values `text` gives for every component called `name`, joined by ','.
template <typename Text>
std::string joined(per::Value root, std::string_view name, Text text) {
    std::string out;
    forEachNamed(root, name, [&](per::Value v) {
        if (!out.empty()) out += ',';
        out += text(v);
    });
    return out;
}

// The Q.931 and H.225.0 fields the oracle compares, in tshark's notation.
extern const std::vector<std::string> kSignallingFields;

// The same fields as the toolkit reads them from a decoded message;
// `userInfo` is empty when there is no H.225.0 part.
std::vector<std::string> signallingFields(const Q931& q931, per::Value userInfo);

}  // namespace h323::test

#endif
