#ifndef SNIFFER_LINK_LAYER_H
#define SNIFFER_LINK_LAYER_H

#include <cstdint>
#include <pcap.h>

// How the frames of one device begin, chosen from its link type when the
// device is set up.
//
// The dissector reads Ethernet frames. An Ethernet device's frames go to it
// as captured; a frame of the other link types read here has its own link
// header replaced by an Ethernet header naming what it carries, on the
// capture thread, the one place that knows the device. Such a frame that
// carries nothing the dissector reads is dropped there, silently.
class LinkLayer {
public:
    static constexpr int ethernetHeaderLength = 14;
    static constexpr uint16_t etherTypeIpv4 = 0x0800;

    // What the dissector is given in place of a non-Ethernet frame: `header`
    // and the Ethernet header `ethernet`, followed by `rest`.
    struct AsEthernet {
        pcap_pkthdr header;
        u_char ethernet[ethernetHeaderLength];
        const u_char* rest;
    };
    // Says which EtherTypes the dissector reads.
    using Wanted = bool (*)(uint16_t etherType);

    // True for the link types read; any other is refused at set-up.
    static bool reads(int linkType);
    static bool onlyIpv4(uint16_t etherType) { return etherType == etherTypeIpv4; }

    LinkLayer() = default;
    // `linkType` must be one that reads() accepts.
    LinkLayer(int linkType, Wanted wanted);

    bool isEthernet() const { return readHeader == nullptr; }
    // False when the frame is to be dropped: too short for its link header,
    // or carrying something the dissector does not read.
    bool asEthernet(const pcap_pkthdr& header, const u_char* frame, AsEthernet& out) const;

    // Reads a link header: its length and the EtherType of what follows.
    using HeaderReader = bool (*)(const u_char* frame, bpf_u_int32 captured, int& length, uint16_t& etherType);

private:
    HeaderReader readHeader = nullptr;  // none: Ethernet
    Wanted wanted = onlyIpv4;
};

#endif
