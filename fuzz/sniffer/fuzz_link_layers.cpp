// Captured frames of every link type the engine reads, through the link
// layer and the decapsulator, as the capture thread and the consumer read
// them; the frame is given exactly as long as it is, so that any read past
// its end shows.
//
// Input: 1 byte choosing the link type (in the order of linkTypes, modulo
// their number), then the captured bytes.
//
// Checked: a frame given an Ethernet header keeps all its bytes behind it,
// and an inner IPv4 header found lies wholly within the frame.
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <vector>

#include "Decapsulator.h"
#include "LinkLayer.h"

namespace {
const int linkTypes[] = {DLT_EN10MB, DLT_LINUX_SLL, DLT_LINUX_SLL2, DLT_RAW, DLT_IPV4, DLT_NULL, DLT_LOOP};
constexpr int minimumIpHeaderLength = 20;

void require(bool holds) {
    if (!holds)
        std::abort();
}

// False when the link layer drops the frame.
bool asEthernet(const LinkLayer& link, const pcap_pkthdr& header, const u_char* captured, std::vector<u_char>& frame) {
    if (link.isEthernet()) {
        frame.assign(captured, captured + header.caplen);
        return true;
    }
    LinkLayer::AsEthernet normalised;
    if (!link.asEthernet(header, captured, normalised))
        return false;
    const u_char* end = captured + header.caplen;
    require(normalised.header.caplen == LinkLayer::ethernetHeaderLength + (end - normalised.rest));
    require(normalised.header.len == normalised.header.caplen);
    frame.assign(normalised.ethernet, normalised.ethernet + LinkLayer::ethernetHeaderLength);
    frame.insert(frame.end(), normalised.rest, end);
    return true;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1)
        return 0;
    const LinkLayer link(linkTypes[data[0] % std::size(linkTypes)], Decapsulator::readsEtherType);
    pcap_pkthdr header{};
    header.caplen = header.len = static_cast<bpf_u_int32>(size - 1);
    std::vector<u_char> frame;
    if (!asEthernet(link, header, data + 1, frame))
        return 0;
    const int length = static_cast<int>(frame.size());
    const int at = Decapsulator::innerIpOffset(frame.data(), length);
    if (at < 0)
        return 0;
    require(at + minimumIpHeaderLength <= length);
    require(frame[at] >> 4 == 4 && at + (frame[at] & 0x0F) * 4 <= length);
    return 0;
}
