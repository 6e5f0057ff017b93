// IPv4 packets through the reassembler one after another, as the dissector
// hands them on with ReassembleIp=yes; each packet is given exactly as long
// as it is, so that any read past its end shows.
//
// Input: records of 2 bytes (big-endian) of packet length, 1 byte of capture
// time step in tenths of a second, then the packet's bytes.
//
// Checked: the memory held never passes the limit, and a completed datagram
// is at most 65,535 bytes long, behind an IPv4 header that states its length.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "EngineStats.h"
#include "FuzzClock.h"
#include "IpReassembler.h"

namespace {
constexpr std::size_t limitBytes = 1 << 20;

void require(bool holds) {
    if (!holds)
        std::abort();
}

void checkCompleted(IpReassembler& reassembler) {
    const int length = reassembler.datagramLength();
    require(length >= 20 && length <= int(IpReassembler::maxDatagramLength));
    const u_char* datagram = reassembler.datagram();
    require(datagram[0] == 0x45 && (datagram[2] << 8 | datagram[3]) == length);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    EngineStats stats;
    IpReassembler reassembler(limitBytes, stats);
    timeval time{1700000000, 0};
    std::size_t at = 0;
    while (at + 3 <= size) {
        const std::size_t length = std::min<std::size_t>(data[at] << 8 | data[at + 1], size - at - 3);
        advanceTenths(time, data[at + 2]);
        const std::vector<u_char> packet(data + at + 3, data + at + 3 + length);
        at += 3 + length;
        if (reassembler.take(packet.data(), int(packet.size()), time) == IpReassembler::Outcome::Complete)
            checkCompleted(reassembler);
        require(reassembler.heldBytes() <= limitBytes);
    }
    return 0;
}
