// TCP segments of four directions through the stream reassembler, framed as
// SIP (directions 0 and 1) or as TPKT messages (2 and 3), as the dissector
// does with SipOverTcp and ReassembleH323; each segment's bytes are given
// exactly as long as they are, so that any read past their end shows.
//
// Input: records of 1 byte of direction (low 2 bits), 4 bytes of sequence
// number and 1 byte of TCP flags, 1 byte of capture time step in tenths of a
// second, 2 bytes (big-endian) of payload length, then the payload.
//
// Checked: every framing consumes something and no more than it is shown,
// a message is never longer than a frame can carry, and the bytes held never
// pass the limit.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "EngineStats.h"
#include "FuzzClock.h"
#include "StreamFraming.h"
#include "TcpStreamReassembler.h"

namespace {
constexpr std::size_t limitBytes = 1 << 20;
constexpr std::size_t maxSipLength = 0xFFFF - 15;
constexpr std::size_t recordHeader = 9;

void require(bool holds) {
    if (!holds)
        std::abort();
}

std::size_t frame(bool sip, const u_char* data, std::size_t length) {
    const Framing framing = sip ? frameSip(data, length, maxSipLength) : frameTpkt(data, length);
    if (framing.kind == Framing::Kind::NeedMore) {
        require(framing.length == 0);
        return 0;
    }
    require(framing.length > 0 && framing.length <= length);
    require(framing.kind != Framing::Kind::Message || framing.length <= maxSipLength || !sip);
    return framing.length;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    EngineStats stats;
    TcpStreamReassembler streams(limitBytes, stats);
    timeval time{1700000000, 0};
    std::size_t at = 0;
    while (at + recordHeader <= size) {
        const uint8_t direction = data[at] & 3;
        const uint32_t seq = uint32_t(data[at + 1]) << 24 | data[at + 2] << 16 | data[at + 3] << 8 | data[at + 4];
        const uint8_t flags = data[at + 5];
        advanceTenths(time, data[at + 6]);
        const std::size_t length = std::min<std::size_t>(data[at + 7] << 8 | data[at + 8], size - at - recordHeader);
        const std::vector<u_char> payload(data + at + recordHeader, data + at + recordHeader + length);
        at += recordHeader + length;
        const bool sip = direction < 2;
        const TcpStreamReassembler::Key key{0x0A000001, uint16_t(40000 + direction), 0x0A000002, 5060};
        streams.take({key, seq, flags, payload.data(), payload.size(), time},
                     [sip](const u_char* bytes, std::size_t held) { return frame(sip, bytes, held); });
        require(streams.heldBytes() <= limitBytes);
    }
    return 0;
}
