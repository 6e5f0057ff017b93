#pragma once

#include <optional>
#include <string_view>

namespace recorder {

// An estimated MOS (listening and conversational quality, 1 to 4.5) from the ITU-T G.107
// E-model, with the default Ro - Is = 93.2 and no echo, for packet loss, jitter and codec.
class EModel {
public:
    // Equipment impairment of a codec (ITU-T G.113 Appendix I): Ie, and Bpl, its robustness
    // to random packet loss.
    struct Impairment {
        const char* codec;  // name prefix, case ignored: "PCMU" matches "PCMU/8000"
        double ie;
        double bpl;
    };

    // The table row for a codec as the signalling names it; none for a codec not in it.
    static std::optional<Impairment> impairment(std::string_view codecName);

    // The most a jitter buffer is taken to hold: adaptive buffers stop growing at a few hundred
    // milliseconds and drop later packets. It also keeps an implausible reported jitter (a
    // real capture's endpoint reports over a second for a clean stream) from ruling the MOS.
    static constexpr double kMaxJitterBufferMs = 300;

    // Ppl in percent; delays in milliseconds. The one-way delay is estimated as the jitter
    // buffer's, 2 x jitter (at most kMaxJitterBufferMs), plus one packet's packetisation: the
    // network's own delay is not known here, so it is left out.
    static double rating(const Impairment& codec, double lossPercent, double jitterMs, double packetMs);
    // G.107's R to MOS, clamped to 1..4.5 and rounded to 2 decimals.
    static double mos(double rating);
    // None for a codec not in the table.
    static std::optional<double> mos(std::string_view codecName, double lossPercent, double jitterMs, double packetMs);
};

}  // namespace recorder
