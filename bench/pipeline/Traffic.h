#ifndef BENCH_PIPELINE_TRAFFIC_H
#define BENCH_PIPELINE_TRAFFIC_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The synthetic traffic of a busy mirror port: `calls` G.711 calls that are
// up for the whole capture (their SIP set-up opens it), each sending 50 RTP
// packets a second per direction, plus SIP keep-alives and unrelated UDP and
// TCP traffic in proportion to the calls.
struct TrafficPlan {
    int calls = 1000;
    double seconds = 8.0;
    // Per second, relative to the number of calls.
    double udpNoisePerCall = 10.0;
    double tcpNoisePerCall = 5.0;
    double sipPerCall = 0.2;
    // Share of all packets that are H.323 call signalling (TPKT, Q.931 with
    // H.225.0) on TCP port 1720.
    double h323Share = 0;
    // Calls start one after the other over the first half of the capture,
    // their media 20 ms after the answer, as real phones send it, instead
    // of all being set up at its head.
    bool staggered = false;
    // SIP over TCP, one connection per direction, instead of UDP; and every
    // n-th SIP message in two IPv4 fragments (0: none).
    bool sipOverTcp = false;
    int sipFragmentEvery = 0;
};

struct Destination {
    uint32_t ip;    // host order
    uint16_t port;  // host order
};

// Where the media of one direction of a call goes: direction 0 is the
// caller's stream (to the callee), 1 the callee's (to the caller).
Destination rtpDestination(int call, int direction);

// Destinations that never appear in the traffic, to fill a list.
Destination absentDestination(int index);

// True for a frame of the calls themselves (their SIP and RTP, between the
// phones), which a recorder that follows every call receives; false for the
// unrelated traffic.
bool isCallFrame(const uint8_t* frame, std::size_t length);

// Frames of the calls themselves (isCallFrame) in the capture file at `path`.
long countCallFrames(const std::string& path);

// Writes the whole capture, set-up first (staggered: each call's set-up
// just before its media), as a pcap file. Returns the
// number of frames written, 0 when the file cannot be written.
long writeCapture(const TrafficPlan& plan, const std::string& path);

// Writes only the SIP set-up of the calls.
long writeSetup(const TrafficPlan& plan, const std::string& path);

#endif
