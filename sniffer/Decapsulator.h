#ifndef SNIFFER_DECAPSULATOR_H
#define SNIFFER_DECAPSULATOR_H

#include <cstdint>
#include <sys/types.h>

// Finds the IPv4 packet a frame carries under its VLAN tags, MPLS labels
// and tunnels (GRE, ERSPAN types II and III, VXLAN, IP in IP), so that the
// dissector classifies it as if it had been captured directly.
//
// The frame is read layer by layer from its Ethernet header. Each layer has
// one reader, found in a table by the EtherType or IP protocol that names
// it; a reader checks that its bytes are there, steps past its header and
// says what comes next. A tunnel is added by adding its reader and its row.
class Decapsulator {
public:
    // More layers than any real encapsulation has: a frame that goes deeper
    // is dropped rather than read on.
    static constexpr int maxLayers = 16;

    // True for the EtherTypes read: IPv4 and those that can carry it.
    static bool readsEtherType(uint16_t etherType);
    // Where the innermost IPv4 header of an Ethernet frame of `length`
    // bytes starts; -1 when there is none to reach, or its header is cut.
    static int innerIpOffset(const u_char* frame, int length);
};

#endif
