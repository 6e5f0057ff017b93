#pragma once

#include "Clock.h"
#include "Rtcp.h"
#include "Rtp.h"

#include <cstdint>
#include <map>
#include <optional>

namespace recorder {

// The quality of one stream, from its packets' sequence numbers and timestamps and from what
// the RTCP of its sender and its receiver said about it.
struct QualitySummary {
    uint64_t received = 0;  // distinct packets
    uint64_t lost = 0;      // lostBeforeFirst included
    uint64_t lostBeforeFirst = 0;
    uint64_t duplicates = 0;
    uint64_t outOfOrder = 0;
    double longestGapMs = 0;                 // media time between packets following each other in sequence
    double packetMs = 0;                     // media time of one packet, 0 when unknown
    std::optional<double> jitterMs;          // the largest the receiver reported
    std::optional<double> rtcpFractionLost;  // the receiver's latest, 0 to 1
    std::optional<int64_t> rtcpCumulativeLost;
    double jitterAtRecorderMs = 0;  // RFC 3550's estimate from arrival at the recorder
};

// Counts of each SSRC of a stream, summed (lost, duplicates...) or the worst of them (gaps,
// jitter) in summary(). Timestamps are kept in RTP units and turned into milliseconds with the
// stream's clock rate.
class StreamQuality {
public:
    // One RTP packet; `timed` is false for packets whose timestamp does not advance with the
    // media (RFC 4733 events), which count for sequence numbers only.
    void add(const RtpPacket& packet, TimePoint arrival, int clockRate, bool timed = true);
    // An SR of the stream's sender (`report.ssrc` is one of the stream's sources).
    void addSenderReport(const SenderReport& report);
    // A report block about one of the stream's sources.
    void addReportBlock(const ReportBlock& block);
    bool hasSource(uint32_t ssrc) const { return sources_.count(ssrc) > 0; }

    QualitySummary summary(int clockRate) const;

private:
    struct Source {
        SequenceCounter sequences;
        bool timed = false;             // a timed packet was the highest so far
        uint32_t highestTimestamp = 0;  // of the highest timed packet
        int64_t highestTimed = 0;       // its extended sequence number
        int64_t longestGap = 0;         // timestamp units
        int64_t packetTicks = 0;        // timestamp step between two consecutive numbers
        // RFC 3550 A.8 at the recorder, in seconds.
        bool transitKnown = false;
        double lastTransit = 0;
        double jitter = 0;
        // The extended number the sender started with, as estimated from its SRs.
        std::optional<int64_t> firstSent;
        std::optional<uint32_t> reportedJitter;  // largest, timestamp units
        std::optional<ReportBlock> lastBlock;
    };

    std::map<uint32_t, Source> sources_;  // by SSRC
};

}  // namespace recorder
