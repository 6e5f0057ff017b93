#include "Rtp.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstring>

namespace recorder {

std::optional<RtpPacket> parseRtp(std::string_view datagram) {
    rtp_header header;
    if (datagram.size() < sizeof header)
        return std::nullopt;
    std::memcpy(&header, datagram.data(), sizeof header);
    const uint8_t payloadType = header.mpt & 0x7f;
    // Payload types 72 to 76 collide with RTCP packet types 200 to 204 and mark RTCP.
    if ((header.vpxcc >> 6) != 2 || (payloadType >= 72 && payloadType <= 76))
        return std::nullopt;

    size_t start = sizeof header + 4u * (header.vpxcc & 0x0f);
    if ((header.vpxcc & 0x10) && datagram.size() >= start + 4) {
        const auto* extension = reinterpret_cast<const uint8_t*>(datagram.data() + start);
        start += 4 + 4u * ((extension[2] << 8) | extension[3]);
    }
    size_t end = datagram.size();
    if ((header.vpxcc & 0x20) && end > start)
        end -= std::min<size_t>(static_cast<uint8_t>(datagram.back()), end - start);
    if (start > end)
        return std::nullopt;

    return RtpPacket{payloadType, ntohs(header.seq), ntohl(header.ts), ntohl(header.ssrc),
                     datagram.substr(start, end - start)};
}

SequenceArrival SequenceCounter::add(uint16_t sequence) {
    if (!started_) {
        started_ = true;
        lowest_ = highest_ = sequence;
        received_ = 1;
        mark(sequence);
        return SequenceArrival::First;
    }
    const int64_t extended = highest_ + static_cast<int16_t>(sequence - static_cast<uint16_t>(highest_));
    if (extended > highest_) {
        // Forget the numbers that leave the window: the slots of highest_+1 to extended.
        if (extended - highest_ >= kWindow)
            seen_.reset();
        else
            for (int64_t number = highest_ + 1; number <= extended; ++number)
                seen_[static_cast<uint64_t>(number) % kWindow] = false;
        highest_ = extended;
        ++received_;
        mark(extended);
        return SequenceArrival::Next;
    }
    const bool inWindow = highest_ - extended < kWindow;
    if (inWindow && seen(extended)) {
        ++duplicates_;
        return SequenceArrival::Duplicate;
    }
    if (inWindow)
        mark(extended);
    ++received_;
    ++outOfOrder_;
    lowest_ = std::min(lowest_, extended);
    return SequenceArrival::Late;
}

uint64_t SequenceCounter::lost() const {
    const int64_t expected = started_ ? highest_ - lowest_ + 1 : 0;
    return expected > static_cast<int64_t>(received_) ? static_cast<uint64_t>(expected) - received_ : 0;
}

}  // namespace recorder

namespace recorder {

bool looksLikeRtcp(std::string_view datagram) {
    if (datagram.size() < 4)
        return false;
    const auto first = static_cast<uint8_t>(datagram[0]), type = static_cast<uint8_t>(datagram[1]);
    return (first >> 6) == 2 && type >= 200 && type <= 204;
}

}  // namespace recorder
