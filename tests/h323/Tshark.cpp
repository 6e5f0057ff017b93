#include "Tshark.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <unistd.h>

#include "Bytes.h"
#include "h323/Text.h"

namespace h323::test {

std::string commandOutput(const std::string& command) {
    std::string out;
    if (FILE* p = popen(command.c_str(), "r")) {
        char buf[4096];
        size_t n;
        while ((n = fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
        pclose(p);
    }
    return out;
}

namespace {

std::string tempDir() {
    static std::string dir = [] {
        char pattern[] = "/tmp/h323-oracle-XXXXXX";
        const char* made = mkdtemp(pattern);
        return std::string(made ? made : "/tmp");
    }();
    return dir;
}

std::string hex4(unsigned v) {
    char buf[8];
    std::snprintf(buf, sizeof buf, "%04x", v);
    return buf;
}

}  // namespace

bool haveTshark() { return std::system("command -v tshark >/dev/null 2>&1 && command -v text2pcap >/dev/null 2>&1") == 0; }

std::string writeCapture(const std::vector<std::vector<uint8_t>>& payloads, const std::string& dissector) {
    static int serial = 0;
    std::string base = tempDir() + "/capture" + std::to_string(serial++);
    {
        std::ofstream text(base + ".txt");
        for (const auto& p : payloads) {   // a packet a line, from offset 0
            text << "000000";
            for (uint8_t b : p) text << ' ' << hex({b});
            text << "\n\n";
        }
    }
    commandOutput("text2pcap -q -P " + dissector + " " + base + ".txt " + base + ".pcap 2>/dev/null");
    return base + ".pcap";
}

std::vector<std::vector<std::string>> tsharkFields(const std::string& pcap, const std::vector<std::string>& fields,
                                                   const std::string& filter) {
    std::string command = "tshark -r " + pcap + " -T fields -E occurrence=a -E aggregator=,";
    for (const std::string& f : fields) command += " -e " + f;
    if (!filter.empty()) command += " -Y '" + filter + "'";
    std::istringstream out(commandOutput(command + " 2>/dev/null"));
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(out, line);) {
        std::vector<std::string> row;
        std::istringstream cells(line);
        for (std::string cell; std::getline(cells, cell, '\t');) row.push_back(cell);
        row.resize(fields.size());
        rows.push_back(row);
    }
    return rows;
}

const std::vector<std::string> kSignallingFields = {
    "q931.call_ref",       "q931.call_ref_flag", "q931.message_type",     "q931.calling_party_number.digits",
    "q931.called_party_number.digits", "h225.h323_message_body", "h225.guid", "h225.h323_ID",
    "h225.dialledDigits",  "h225.h245Tunnelling", "h225.FastStart_item",  "h225.h245Ip",
    "h225.h245IpPort",
};

std::vector<std::string> signallingFields(const Q931& q931, per::Value info) {
    char type[8];
    std::snprintf(type, sizeof type, "0x%02x", q931.messageType());
    std::vector<std::string> row = {hex4(q931.callReference()), q931.fromDestination() ? "1" : "0", type,
                                    q931.callingPartyNumber(), q931.calledPartyNumber()};
    per::Value pdu = info["h323_uu_pdu"];
    per::Value body = pdu["h323_message_body"];
    row.push_back(info ? std::to_string(body.tag()) : "");
    row.push_back(joined(info, "guid", [](per::Value v) { return guidText(v.bytes()); }));
    row.push_back(joined(info, "h323_ID", [](per::Value v) { return v.text(); }));
    row.push_back(joined(info, "dialedDigits", [](per::Value v) { return v.text(); }));
    per::Value tunnelling = pdu["h245Tunneling"];
    row.push_back(tunnelling ? (tunnelling.boolean() ? "1" : "0") : "");
    std::string fastStart;   // tshark gives each proposal's size
    forEachNamed(info, "fastStart", [&](per::Value list) {
        for (size_t i = 0; i < list.size(); ++i)
            fastStart += (fastStart.empty() ? "" : ",") + std::to_string(list.at(i).bytes().size());
    });
    row.push_back(fastStart);
    per::Value h245 = body.chosen()["h245Address"];
    bool ipv4 = h245.is("ipAddress");
    row.push_back(ipv4 ? ipv4Text(h245.chosen()["ip"].bytes()) : "");
    row.push_back(ipv4 ? std::to_string(h245.chosen()["port"].integer()) : "");
    return row;
}

}  // namespace h323::test
