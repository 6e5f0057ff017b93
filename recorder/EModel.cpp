#include "EModel.h"

#include "Text.h"

#include <algorithm>
#include <cmath>

namespace recorder {
namespace {

// One row per codec. G.711 with PLC, G.729(A) and G.723.1 are G.113 Appendix I's values.
// G.722 and opus have no narrowband Ie in G.113; they are rated here as at least as good as
// G.711 on the narrowband scale (Ie 0, their wideband advantage not credited), G.722 with
// G.711's Bpl (its Appendix III PLC is of the same kind) and opus with 30, an assumption
// for its stronger concealment.
constexpr EModel::Impairment kCodecs[] = {
    {"PCMU", 0, 25.1},  {"PCMA", 0, 25.1}, {"g711", 0, 25.1},  // H.323: g711Alaw64k, g711Ulaw64k
    {"G729", 11, 19.0},                                        // G729, G729A, g729AnnexA, ...
    {"G723", 15, 16.1},                                        // G.723.1 at 6.3 kbit/s; H.323's g7231 too
    {"G722", 0, 25.1},  {"opus", 0, 30.0},
};

}  // namespace

std::optional<EModel::Impairment> EModel::impairment(std::string_view codecName) {
    for (const Impairment& row : kCodecs)
        if (startsWithNoCase(codecName, row.codec))
            return row;
    return std::nullopt;
}

double EModel::rating(const Impairment& codec, double lossPercent, double jitterMs, double packetMs) {
    // Id, G.107's simplified form for delay without echo: 0.024 d + 0.11 (d - 177.3) H(d - 177.3).
    const double delay = std::min(2 * jitterMs, kMaxJitterBufferMs) + packetMs;
    const double id = 0.024 * delay + (delay > 177.3 ? 0.11 * (delay - 177.3) : 0.0);
    // Ie,eff = Ie + (95 - Ie) Ppl / (Ppl / BurstR + Bpl), with random loss: BurstR = 1.
    const double ppl = std::clamp(lossPercent, 0.0, 100.0);
    const double ieEff = codec.ie + (95 - codec.ie) * ppl / (ppl + codec.bpl);
    return 93.2 - id - ieEff;
}

double EModel::mos(double r) {
    double value = r <= 0 ? 1.0 : r >= 100 ? 4.5 : 1 + 0.035 * r + r * (r - 60) * (100 - r) * 7e-6;
    value = std::clamp(value, 1.0, 4.5);
    return std::round(value * 100) / 100;
}

std::optional<double> EModel::mos(std::string_view codecName, double lossPercent, double jitterMs, double packetMs) {
    const auto codec = impairment(codecName);
    if (!codec)
        return std::nullopt;
    return mos(rating(*codec, lossPercent, jitterMs, packetMs));
}

}  // namespace recorder
