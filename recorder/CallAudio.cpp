#include "CallAudio.h"

#include "G711.h"
#include "Log.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace recorder {
namespace {

// Canonical RIFF/WAVE header for PCM; little-endian like the hosts it runs on.
struct wav_header {
    char riff_id[4];
    uint32_t riff_size;
    char wave_id[4];
    char fmt_id[4];
    uint32_t fmt_size;
    uint16_t audio_format;
    uint16_t num_channels;
    uint32_t sample_rate;
    uint32_t byte_rate;
    uint16_t block_align;
    uint16_t bits_per_sample;
    char data_id[4];
    uint32_t data_size;
} __attribute__((packed));
static_assert(sizeof(wav_header) == 44);

constexpr int64_t kMaxSamples = int64_t{CallAudio::kSampleRate} * 3600 * 4;
// Consecutive packets further apart than this in RTP time are a jump, not a gap in the audio.
constexpr int64_t kMaxStep = int64_t{CallAudio::kSampleRate} * 10;

}  // namespace

void CallAudio::add(int channel, TimePoint arrival, const RtpPacket& packet)
{
    if ((packet.payloadType != kPcmu && packet.payloadType != kPcma) || channel < 0 || channel >= kChannels)
        return;
    if (!origin_)
        origin_ = arrival;
    const int64_t arrivalIndex =
        std::chrono::duration_cast<std::chrono::microseconds>(arrival - *origin_).count() * kSampleRate / 1000000;

    Channel& target = channels_[static_cast<size_t>(channel)];
    const int64_t step = static_cast<int32_t>(packet.timestamp - target.lastTimestamp);
    if (!target.anchored || packet.ssrc != target.ssrc || std::abs(step) > kMaxStep) {
        target.anchored = true;
        target.ssrc = packet.ssrc;
        target.anchorTimestamp = packet.timestamp;
        target.anchorIndex = arrivalIndex;
    }
    target.lastTimestamp = packet.timestamp;
    const int64_t index = target.anchorIndex + static_cast<int32_t>(packet.timestamp - target.anchorTimestamp);
    const int64_t end = index + static_cast<int64_t>(packet.payload.size());
    if (index < 0 || end > kMaxSamples)
        return;

    if (target.samples.size() < static_cast<size_t>(end))
        target.samples.resize(static_cast<size_t>(end));
    const auto decode = packet.payloadType == kPcmu ? ulawToLinear : alawToLinear;
    std::transform(packet.payload.begin(), packet.payload.end(), target.samples.begin() + index,
                   [decode](char code) { return decode(static_cast<uint8_t>(code)); });
}

bool CallAudio::empty() const
{
    return length() == 0;
}

size_t CallAudio::length() const
{
    size_t longest = 0;
    for (const Channel& channel : channels_)
        longest = std::max(longest, channel.samples.size());
    return longest;
}

double CallAudio::duration() const
{
    return static_cast<double>(length()) / kSampleRate;
}

bool CallAudio::writeWav(const std::filesystem::path& path) const
{
    const size_t frames = length();
    std::vector<int16_t> interleaved(frames * kChannels);
    for (size_t c = 0; c < channels_.size(); ++c)
        for (size_t i = 0; i < channels_[c].samples.size(); ++i)
            interleaved[i * kChannels + c] = channels_[c].samples[i];

    const auto dataSize = static_cast<uint32_t>(interleaved.size() * sizeof(int16_t));
    wav_header header{};
    std::memcpy(header.riff_id, "RIFF", 4);
    header.riff_size = 36 + dataSize;
    std::memcpy(header.wave_id, "WAVE", 4);
    std::memcpy(header.fmt_id, "fmt ", 4);
    header.fmt_size = 16;
    header.audio_format = 1;
    header.num_channels = kChannels;
    header.sample_rate = kSampleRate;
    header.byte_rate = kSampleRate * kChannels * sizeof(int16_t);
    header.block_align = kChannels * sizeof(int16_t);
    header.bits_per_sample = 16;
    std::memcpy(header.data_id, "data", 4);
    header.data_size = dataSize;

    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
    if (!file || std::fwrite(&header, sizeof header, 1, file.get()) != 1 ||
        std::fwrite(interleaved.data(), 1, dataSize, file.get()) != dataSize) {
        log::error() << "Cannot write " << path.string();
        return false;
    }
    return true;
}

}  // namespace recorder
