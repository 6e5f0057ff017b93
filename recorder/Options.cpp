#include "Options.h"

#include <getopt.h>

#include <cmath>
#include <cstdlib>
#include <sstream>

namespace recorder {
namespace {

bool parseSeconds(const char* text, Milliseconds& value, bool zeroAllowed = false) {
    char* end = nullptr;
    const double seconds = std::strtod(text, &end);
    if (end == text || *end != '\0' || !(seconds >= 0) || seconds > 86400)
        return false;
    value = Milliseconds(std::llround(seconds * 1000));
    return value.count() > 0 || (zeroAllowed && seconds == 0);
}

bool parseMebibytes(const char* text, size_t& value) {
    char* end = nullptr;
    const long long mebibytes = std::strtoll(text, &end, 10);
    if (end == text || *end != '\0' || mebibytes < 2 || mebibytes > (1 << 20))
        return false;
    value = static_cast<size_t>(mebibytes);
    return true;
}

bool parsePort(const char* text, uint16_t& port) {
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || value < 0 || value > 65535)
        return false;
    port = static_cast<uint16_t>(value);
    return true;
}

// "ADDR:PORT"
bool parseListenAddress(const std::string& text, std::string& address, uint16_t& port) {
    const size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon == 0)
        return false;
    address = text.substr(0, colon);
    return parsePort(text.c_str() + colon + 1, port);
}

bool parseDays(const char* text, double& days) {
    char* end = nullptr;
    days = std::strtod(text, &end);
    return end != text && *end == '\0' && days > 0 && days <= 36500;
}

}  // namespace

std::string databaseUrl(const Options& options) {
    if (options.database == "none")
        return "";
    return options.database.empty() ? "sqlite:" + (options.output / "calls.db").string() : options.database;
}

std::string usage(const std::string& program) {
    const Options defaults;
    std::ostringstream text;
    text << "Usage: " << program << " [options]\n"
         << "Records the calls a sniffer forwards: listens for it on TCP and UDP, asks it for the RTP of\n"
         << "every SIP and H.323 call it reports, and writes each call to a folder of its own.\n\n"
         << "  -a, --address ADDR      IPv4 address to listen on (default " << defaults.address << ")\n"
         << "  -p, --port PORT         TCP and UDP port to listen on, 0 for any free one (default " << defaults.port
         << ")\n"
         << "  -o, --output DIR        folder for the call folders and calls.jsonl (default "
         << defaults.output.string() << ")\n"
         << "  -i, --idle SECONDS      end a call after this long without a packet (default "
         << defaults.idle.count() / 1000.0 << ")\n"
         << "  -b, --heartbeat SECONDS probe the sniffer this often; a later reply is logged as late (default "
         << defaults.heartbeat.count() / 1000.0 << ")\n"
         << "  -l, --linger SECONDS    keep an ended call open this long for its last messages (default "
         << defaults.linger.count() / 1000.0 << ")\n"
         << "  -s, --stats SECONDS     log the recorder's counters this often, 0 only at stop (default "
         << defaults.stats.count() / 1000.0 << ")\n"
         << "  -B, --backlog-limit MIB hold at most this much of what was read and not yet written; past it\n"
         << "                          frames are dropped and counted (default " << defaults.backlogLimitMiB << ")\n"
         << "  -D, --database URL      index the calls in this database: sqlite:PATH, or none (default\n"
         << "                          sqlite:DIR/calls.db)\n"
         << "  -H, --http ADDR:PORT    serve the call list, the calls, a JSON API and /metrics there (default\n"
         << "                          off; PORT 0 for any free one)\n"
         << "  -T, --http-token TOKEN  answer only requests with \"Authorization: Bearer TOKEN\" or ?token=TOKEN\n"
         << "  -k, --keep-days DAYS    remove the calls that started longer ago, their folders and rows\n"
         << "                          (default: keep them)\n"
         << "  -E, --encrypt-to FILE   encrypt call.pcap, call.wav and call.json of each call to the public\n"
         << "                          key in FILE (recorder-decrypt --make-keys makes one); they become\n"
         << "                          *.enc once the call is written\n"
         << "  -v, --verbose           also log each command sent and each RTP packet that belongs to no call\n"
         << "  -h, --help              print this help and exit\n\n"
         << "Each call goes to DIR/<start>_<call id>/: call.pcap (its SIP and RTP), call.json (parties,\n"
         << "times, media, per-stream counts) and call.wav (per direction; 16 kHz with G.722 or Opus, else 8 kHz).\n"
         << "SIGINT or SIGTERM finishes the open calls and exits.\n";
    return text.str();
}

OptionsResult parseOptions(int argc, char* argv[], Options& options, std::string& problem) {
    static const option longOptions[] = {
        {"address", required_argument, nullptr, 'a'},    {"port", required_argument, nullptr, 'p'},
        {"output", required_argument, nullptr, 'o'},     {"idle", required_argument, nullptr, 'i'},
        {"heartbeat", required_argument, nullptr, 'b'},  {"linger", required_argument, nullptr, 'l'},
        {"stats", required_argument, nullptr, 's'},      {"backlog-limit", required_argument, nullptr, 'B'},
        {"verbose", no_argument, nullptr, 'v'},          {"help", no_argument, nullptr, 'h'},
        {"database", required_argument, nullptr, 'D'},   {"http", required_argument, nullptr, 'H'},
        {"http-token", required_argument, nullptr, 'T'}, {"keep-days", required_argument, nullptr, 'k'},
        {"encrypt-to", required_argument, nullptr, 'E'}, {nullptr, 0, nullptr, 0},
    };
    optind = 1;
    opterr = 0;
    int option;
    while ((option = getopt_long(argc, argv, "a:p:o:i:b:l:s:B:vhD:H:T:k:E:", longOptions, nullptr)) != -1) {
        switch (option) {
        case 'a': options.address = optarg; break;
        case 'p':
            if (!parsePort(optarg, options.port)) {
                problem = std::string("invalid port: ") + optarg;
                return OptionsResult::Invalid;
            }
            break;
        case 'o': options.output = optarg; break;
        case 'i':
        case 'b':
        case 'l':
        case 's': {
            Milliseconds& value = option == 'i'   ? options.idle
                                  : option == 'b' ? options.heartbeat
                                  : option == 'l' ? options.linger
                                                  : options.stats;
            if (!parseSeconds(optarg, value, option == 's')) {  // only the statistics may be off
                problem = std::string("invalid number of seconds: ") + optarg;
                return OptionsResult::Invalid;
            }
            break;
        }
        case 'B':
            if (!parseMebibytes(optarg, options.backlogLimitMiB)) {
                problem = std::string("invalid backlog limit (2 to 1048576 MiB): ") + optarg;
                return OptionsResult::Invalid;
            }
            break;
        case 'v': options.verbose = true; break;
        case 'D': options.database = optarg; break;
        case 'H':
            if (!parseListenAddress(optarg, options.httpAddress, options.httpPort)) {
                problem = std::string("invalid address, ADDR:PORT expected: ") + optarg;
                return OptionsResult::Invalid;
            }
            break;
        case 'T': options.httpToken = optarg; break;
        case 'E': options.encryptTo = optarg; break;
        case 'k':
            if (!parseDays(optarg, options.keepDays)) {
                problem = std::string("invalid number of days: ") + optarg;
                return OptionsResult::Invalid;
            }
            break;
        case 'h': return OptionsResult::Help;
        default:
            problem = std::string("unknown or incomplete option: ") + argv[optind - 1];
            return OptionsResult::Invalid;
        }
    }
    if (optind < argc) {
        problem = std::string("unexpected argument: ") + argv[optind];
        return OptionsResult::Invalid;
    }
    return OptionsResult::Run;
}

}  // namespace recorder
