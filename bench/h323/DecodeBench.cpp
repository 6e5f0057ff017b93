// Decoding real messages of one H.323 call, as the signalling decoder does
// it for every segment: Q.931 with its H.225.0 user information, and H.245.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "h323/H225.h"
#include "h323/Q931.h"
#if __has_include("h323/H245.h")
#include "h323/H245.h"
#define H323_HAVE_H245_TABLES 1
#endif

namespace {

std::vector<uint8_t> fromHex(const char* hex) {
    std::vector<uint8_t> out;
    for (const char* p = hex; p[0] && p[1]; p += 2)
        out.push_back(uint8_t(std::stoi(std::string(p, 2), nullptr, 16)));
    return out;
}

// Behind the TPKT header, from a call between two desk endpoints.
const std::vector<uint8_t> kSetup = fromHex(
    "080277f40504038090a528086d2e6a656d6563007e00850520a8060008914a0004014006006d002e006a0065006d0065006322c00900003d"
    "1443616c6c67656e33323320706f67616373616d00000a302e39616c706861340000000a01061206b800f8fdf93ecd9ed6119ab20004762220"
    "17005d0d8007000a01038f80231100c0fef93ecd9ed6119ab2000476222017010001000100010002800100");
const std::vector<uint8_t> kConnect = fromHex(
    "0802f7f40728074d2e4a454d45437e004c0522c0060008914a0003000a01061204d022c0000000000333313069005200f8fdf93ecd9ed6119a"
    "b2000476222017170c001100c0fef93ecd9ed6119ab20004762220170100010008800100");

void decodeSignalling(benchmark::State& state, const std::vector<uint8_t>& message) {
    h323::Q931 q931;
    h323::per::Decoder decoder;
    for (auto _ : state) {
        bool ok = q931.decode(message.data(), message.size());
        std::string_view uu = q931.element(h323::Q931::UserUser);
        h323::per::Value info = decoder.decode(h323::h225::H323_UserInformation, uu);
        benchmark::DoNotOptimize(ok);
        benchmark::DoNotOptimize(info);
        if (!info)
            state.SkipWithError("does not decode");
    }
}

void Q931AndH225Setup(benchmark::State& state) {
    decodeSignalling(state, kSetup);
}
void Q931AndH225Connect(benchmark::State& state) {
    decodeSignalling(state, kConnect);
}
BENCHMARK(Q931AndH225Setup);
BENCHMARK(Q931AndH225Connect);

#ifdef H323_HAVE_H245_TABLES
// The first H.245 messages of the same call.
const std::vector<uint8_t> kOpenLogicalChannel = fromHex("0000640c201d800b0d0001000a01038f138980");
const std::vector<uint8_t> kTerminalCapabilitySet =
    fromHex("027001060008817500078013800032000100000100000100000cc001000180008000002040ef00800100000000");

void decodeControl(benchmark::State& state, const h323::per::Type& type, const std::vector<uint8_t>& message) {
    h323::per::Decoder decoder;
    for (auto _ : state) {
        h323::per::Value v = decoder.decode(type, message.data(), message.size());
        benchmark::DoNotOptimize(v);
        if (!v)
            state.SkipWithError("does not decode");
    }
}

void H245OpenLogicalChannel(benchmark::State& state) {
    decodeControl(state, h323::h245::OpenLogicalChannel, kOpenLogicalChannel);
}
void H245TerminalCapabilitySet(benchmark::State& state) {
    decodeControl(state, h323::h245::MultimediaSystemControlMessage, kTerminalCapabilitySet);
}
BENCHMARK(H245OpenLogicalChannel);
BENCHMARK(H245TerminalCapabilitySet);
#endif

}  // namespace
