#include "CallAudio.h"

#include "Log.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <system_error>

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

// The timeline runs at the wideband rate; narrowband samples take every other place on it.
constexpr int kTimelineRate = kWidebandRate;
constexpr int64_t kNarrowbandStep = kWidebandRate / kNarrowbandRate;
constexpr int64_t kMaxSamples = int64_t{kTimelineRate} * 3600 * 4;
// Consecutive packets further apart than this in RTP time are a jump, not a gap in the audio.
constexpr int64_t kMaxStepSeconds = 10;
// Frames of call.wav assembled at a time: 64 KiB of output.
constexpr size_t kChunkFrames = 16384;

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

File openFile(const std::filesystem::path& path, const char* mode) {
    return File(std::fopen(path.c_str(), mode), std::fclose);
}

// Linear interpolation to twice the rate, each source sample on the odd place after the point
// halfway from its predecessor, so that taking the odd places gives the source back exactly.
std::vector<int16_t> interpolate(const std::vector<int16_t>& narrow, int16_t& last) {
    std::vector<int16_t> wide(narrow.size() * kNarrowbandStep);
    for (size_t i = 0; i < narrow.size(); ++i) {
        wide[2 * i] = static_cast<int16_t>((last + narrow[i]) / 2);
        wide[2 * i + 1] = narrow[i];
        last = narrow[i];
    }
    return wide;
}

// `count` samples from `file` on, zeros where it ends.
void readSamples(FILE* file, std::vector<int16_t>& samples, size_t count) {
    const size_t read = file ? std::fread(samples.data(), sizeof(int16_t), count, file) : 0;
    std::fill(samples.data() + read, samples.data() + count, 0);
}

wav_header wavHeader(int rate, uint32_t dataSize) {
    wav_header header{};
    std::memcpy(header.riff_id, "RIFF", 4);
    header.riff_size = 36 + dataSize;
    std::memcpy(header.wave_id, "WAVE", 4);
    std::memcpy(header.fmt_id, "fmt ", 4);
    header.fmt_size = 16;
    header.audio_format = 1;
    header.num_channels = CallAudio::kChannels;
    header.sample_rate = static_cast<uint32_t>(rate);
    header.byte_rate = static_cast<uint32_t>(rate) * CallAudio::kChannels * sizeof(int16_t);
    header.block_align = CallAudio::kChannels * sizeof(int16_t);
    header.bits_per_sample = 16;
    std::memcpy(header.data_id, "data", 4);
    header.data_size = dataSize;
    return header;
}

}  // namespace

CallAudio::CallAudio(FileCache& files, const std::filesystem::path& folder)
    : channels_{Channel(SampleSpool(files, folder / "channel-0.raw")),
                Channel(SampleSpool(files, folder / "channel-1.raw"))} {}

CallAudio::~CallAudio() {
    close();
}

bool CallAudio::add(int channel, TimePoint arrival, const RtpPacket& packet, std::string_view codecName) {
    if (closed_ || channel < 0 || channel >= kChannels)
        return false;
    Channel& target = channels_[static_cast<size_t>(channel)];
    if (!selectDecoder(target, packet.payloadType, codecName))
        return false;
    if (!origin_)
        origin_ = arrival;

    const bool oneLost = lostOnePacket(target, packet);
    const int64_t index = place(target, arrival, packet);
    if (oneLost)
        put(target, timelineIndex(target, target.nextTimestamp), target.decoder->concealLoss(target.lastCount));
    const std::vector<int16_t> decoded = target.decoder->decode(packet.payload);
    put(target, index, decoded);
    target.lastCount = decoded.size();
    const auto rtpLength =
        static_cast<int64_t>(decoded.size()) * target.decoder->clockRate() / target.decoder->sampleRate();
    target.nextTimestamp = packet.timestamp + static_cast<uint32_t>(rtpLength);
    return true;
}

// The channel's decoder for the payload type, new when the type changes; a payload that is not
// decoded leaves the current one as it is.
bool CallAudio::selectDecoder(Channel& channel, int payloadType, std::string_view codecName) {
    if (channel.decoder && channel.payloadType == payloadType)
        return true;
    std::unique_ptr<AudioDecoder> decoder = makeAudioDecoder(codecName, payloadType);
    if (!decoder)
        return false;
    channel.decoder = std::move(decoder);
    channel.payloadType = payloadType;
    channel.anchored = false;  // the new codec's timestamps may run at another clock
    channel.lastCount = 0;
    return true;
}

// True when the packet follows the last one after exactly one packet of the same length.
bool CallAudio::lostOnePacket(const Channel& channel, const RtpPacket& packet) const {
    if (!channel.anchored || packet.ssrc != channel.ssrc || channel.lastCount == 0)
        return false;
    const int64_t lastLength = static_cast<int32_t>(channel.nextTimestamp - channel.lastTimestamp);
    return static_cast<int32_t>(packet.timestamp - channel.nextTimestamp) == lastLength;
}

int64_t CallAudio::place(Channel& channel, TimePoint arrival, const RtpPacket& packet) {
    // On the narrowband grid, so that narrowband samples always fall on the odd places.
    const int64_t arrivalIndex = std::chrono::duration_cast<std::chrono::microseconds>(arrival - *origin_).count() *
                                 kNarrowbandRate / 1000000 * kNarrowbandStep;
    const int64_t step = static_cast<int32_t>(packet.timestamp - channel.lastTimestamp);
    if (!channel.anchored || packet.ssrc != channel.ssrc ||
        std::abs(step) > kMaxStepSeconds * channel.decoder->clockRate()) {
        channel.anchored = true;
        channel.ssrc = packet.ssrc;
        channel.anchorTimestamp = packet.timestamp;
        channel.anchorIndex = arrivalIndex;
        channel.lastCount = 0;
    }
    channel.lastTimestamp = packet.timestamp;
    return timelineIndex(channel, packet.timestamp);
}

int64_t CallAudio::timelineIndex(const Channel& channel, uint32_t timestamp) const {
    const int64_t elapsed = static_cast<int32_t>(timestamp - channel.anchorTimestamp);
    return channel.anchorIndex + elapsed * kTimelineRate / channel.decoder->clockRate();
}

void CallAudio::put(Channel& channel, int64_t index, const std::vector<int16_t>& decoded) {
    const bool wide = channel.decoder->sampleRate() == kWidebandRate;
    const std::vector<int16_t> samples = wide ? decoded : interpolate(decoded, channel.lastSample);
    const int64_t end = index + static_cast<int64_t>(samples.size());
    if (samples.empty() || index < 0 || end > kMaxSamples)
        return;
    wideband_ = wideband_ || wide;
    channel.samples.write(index, samples.data(), samples.size());
}

void CallAudio::close() {
    if (closed_)
        return;
    closed_ = true;
    for (Channel& channel : channels_) {
        channel.samples.close();
        channel.decoder.reset();
    }
}

bool CallAudio::empty() const {
    return length() == 0;
}

int64_t CallAudio::length() const {
    int64_t longest = 0;
    for (const Channel& channel : channels_)
        longest = std::max(longest, channel.samples.length());
    return longest;
}

int CallAudio::sampleRate() const {
    return wideband_ ? kWidebandRate : kNarrowbandRate;
}

double CallAudio::duration() const {
    return static_cast<double>(length()) / kTimelineRate;
}

size_t CallAudio::bufferedSamples() const {
    size_t held = 0;
    for (const Channel& channel : channels_)
        held += channel.samples.bufferedSamples();
    return held;
}

bool CallAudio::writeWav(const std::filesystem::path& path) const {
    const auto step = static_cast<size_t>(kTimelineRate / sampleRate());
    const auto frames = static_cast<uint64_t>(length()) / step;
    const wav_header header = wavHeader(sampleRate(), static_cast<uint32_t>(frames * kChannels * sizeof(int16_t)));
    const File out = openFile(path, "wb");
    bool written = out && std::fwrite(&header, sizeof header, 1, out.get()) == 1;

    std::vector<File> inputs;
    for (const Channel& channel : channels_)
        inputs.push_back(openFile(channel.samples.path(), "rb"));
    std::vector<int16_t> timeline(kChunkFrames * step);
    std::vector<int16_t> interleaved(kChunkFrames * kChannels);
    for (uint64_t done = 0; written && done < frames;) {
        const auto count = static_cast<size_t>(std::min<uint64_t>(kChunkFrames, frames - done));
        for (size_t c = 0; c < inputs.size(); ++c) {
            readSamples(inputs[c].get(), timeline, count * step);
            // The last place of each step: the one a narrowband sample holds.
            for (size_t i = 0; i < count; ++i)
                interleaved[i * kChannels + c] = timeline[i * step + step - 1];
        }
        written = std::fwrite(interleaved.data(), sizeof(int16_t), count * kChannels, out.get()) == count * kChannels;
        done += count;
    }

    inputs.clear();
    for (const Channel& channel : channels_) {
        std::error_code ignored;  // a channel without audio has no file
        std::filesystem::remove(channel.samples.path(), ignored);
    }
    if (!written)
        log::error() << "Cannot write " << path.string();
    return written;
}

}  // namespace recorder
