#include "StreamQuality.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace recorder {

void StreamQuality::add(const RtpPacket& packet, TimePoint arrival, int clockRate, bool timed) {
    Source& source = sources_[packet.ssrc];
    const SequenceArrival kind = source.sequences.add(packet.sequence);
    if (!timed || kind == SequenceArrival::Duplicate)
        return;

    // Gaps: the timestamp step from the highest timed packet so far to the one that passes it.
    // A packet that arrives after its successor does not close the gap that successor opened.
    // A step over 10 minutes is taken for a new timestamp base rather than a gap.
    const int64_t extended = source.sequences.highest();
    if (kind == SequenceArrival::Next || kind == SequenceArrival::First) {
        if (source.timed) {
            const int64_t step = static_cast<int32_t>(packet.timestamp - source.highestTimestamp);
            if (step > 0 && step <= int64_t{600} * clockRate) {
                source.longestGap = std::max(source.longestGap, step);
                if (extended - source.highestTimed == 1)
                    source.packetTicks = step;
            }
        }
        source.timed = true;
        source.highestTimestamp = packet.timestamp;
        source.highestTimed = extended;
    }

    // RFC 3550 A.8, in seconds rather than timestamp units. Frames reach the recorder in
    // batches and carry no capture time, so arrival here adds the batching to the network's
    // jitter: this overstates it.
    const double arrived = std::chrono::duration<double>(arrival.time_since_epoch()).count();
    const double transit = arrived - packet.timestamp / static_cast<double>(clockRate);
    if (source.transitKnown) {
        double difference = std::fabs(transit - source.lastTransit);
        // A timestamp that wrapped around makes one huge difference; leave it out.
        if (difference < 60.0)
            source.jitter += (difference - source.jitter) / 16.0;
    }
    source.transitKnown = true;
    source.lastTransit = transit;
}

// Lost before the first packet: an SR says the sender had sent `packetCount` packets when it
// was issued, numbered first..last, so first = last + 1 - packetCount. The SR's RTP timestamp
// places it on the sender's timeline: last is the packet with the highest timestamp not after
// it, estimated from the highest received packet and the packet size in timestamp units (the
// highest received itself while the packet size is unknown). Every packet from that first to
// the lowest number received was sent and never arrived. Silence or an event between the
// highest packet and the SR makes the estimate of last too high, and so the count too low,
// never too high; of several SRs the lowest count is kept. Without an SR, or with an SR before
// any packet of its source, nothing is counted; a packet count that wrapped past 2^32 is not
// followed.
void StreamQuality::addSenderReport(const SenderReport& report) {
    const auto found = sources_.find(report.ssrc);
    if (found == sources_.end() || !found->second.sequences.started())
        return;
    Source& source = found->second;
    int64_t last = source.sequences.highest();
    if (source.timed && source.packetTicks > 0) {
        const int64_t ahead = static_cast<int32_t>(report.rtpTimestamp - source.highestTimestamp);
        const int64_t packets =
            ahead >= 0 ? ahead / source.packetTicks : -((-ahead + source.packetTicks - 1) / source.packetTicks);
        last = source.highestTimed + packets;
    }
    const int64_t first = last + 1 - int64_t{report.packetCount};
    source.firstSent = std::max(source.firstSent.value_or(first), first);
}

void StreamQuality::addReportBlock(const ReportBlock& block) {
    const auto found = sources_.find(block.source);
    if (found == sources_.end())
        return;
    Source& source = found->second;
    source.reportedJitter = std::max(source.reportedJitter.value_or(0), block.jitter);
    source.lastBlock = block;
}

QualitySummary StreamQuality::summary(int clockRate) const {
    const double msPerTick = 1000.0 / clockRate;
    QualitySummary total;
    for (const auto& [ssrc, source] : sources_) {
        const SequenceCounter& sequences = source.sequences;
        const uint64_t before = source.firstSent && *source.firstSent < sequences.lowest()
                                    ? static_cast<uint64_t>(sequences.lowest() - *source.firstSent)
                                    : 0;
        total.received += sequences.received();
        total.lost += sequences.lost() + before;
        total.lostBeforeFirst += before;
        total.duplicates += sequences.duplicates();
        total.outOfOrder += sequences.outOfOrder();
        total.longestGapMs = std::max(total.longestGapMs, source.longestGap * msPerTick);
        if (source.packetTicks > 0)
            total.packetMs = std::max(total.packetMs, source.packetTicks * msPerTick);
        total.jitterAtRecorderMs = std::max(total.jitterAtRecorderMs, source.jitter * 1000.0);
        if (source.reportedJitter)
            total.jitterMs = std::max(total.jitterMs.value_or(0), *source.reportedJitter * msPerTick);
        if (source.lastBlock) {
            total.rtcpFractionLost = std::max(total.rtcpFractionLost.value_or(0), source.lastBlock->fractionLost);
            total.rtcpCumulativeLost = total.rtcpCumulativeLost.value_or(0) + source.lastBlock->cumulativeLost;
        }
    }
    return total;
}

}  // namespace recorder
