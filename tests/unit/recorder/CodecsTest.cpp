// Call audio from RTP to call.wav: each codec's decoder against the codec library's own encoder,
// silence in place of lost packets, and the memory an hour-long call holds.
#include "CallAudio.h"
#include "ChildProcess.h"
#include "G711.h"
#include "RecordingFiles.h"

// The library's headers declare C functions without saying so.
extern "C" {
#include <bcg729/encoder.h>
}
#include <opus.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <string>
#include <vector>
// Last: the library's headers need stdint and its telephony declarations first, and define
// macros over the C library's names.
#include <spandsp/telephony.h>
#include <spandsp/bit_operations.h>
#include <spandsp/g711.h>
#include <spandsp/g722.h>

namespace recorder {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr auto kPacketTime = std::chrono::milliseconds(20);

// A chirp from 200 Hz to 3 kHz, inside every codec's band; unlike a steady tone it matches
// itself at no lag but the right one.
std::vector<int16_t> chirp(int rate, double seconds) {
    constexpr double kFrom = 200, kTo = 3000;
    std::vector<int16_t> samples(static_cast<size_t>(rate * seconds));
    for (size_t i = 0; i < samples.size(); ++i) {
        const double t = static_cast<double>(i) / rate;
        const double phase = 2 * kPi * (kFrom * t + (kTo - kFrom) * t * t / (2 * seconds));
        samples[i] = static_cast<int16_t>(10000 * std::sin(phase));
    }
    return samples;
}

// Normalised cross-correlation of `decoded` against `source`, at the decoder delay (0 to 50 ms)
// that matches best, over the source's second half, past any decoder's settling.
double bestCorrelation(const std::vector<int16_t>& source, const std::vector<int16_t>& decoded, int rate) {
    double best = 0;
    const size_t from = source.size() / 2, to = source.size() - static_cast<size_t>(rate / 20);
    for (size_t lag = 0; lag <= static_cast<size_t>(rate / 20); ++lag) {
        double product = 0, sourceEnergy = 0, decodedEnergy = 0;
        for (size_t i = from; i < to && i + lag < decoded.size(); ++i) {
            const double s = source[i], d = decoded[i + lag];
            product += s * d;
            sourceEnergy += s * s;
            decodedEnergy += d * d;
        }
        if (decodedEnergy > 0)
            best = std::max(best, product / std::sqrt(sourceEnergy * decodedEnergy));
    }
    return best;
}

std::vector<int16_t> channelOf(const Wav& wav, unsigned channel) {
    std::vector<int16_t> samples;
    for (size_t i = channel; i < wav.samples.size(); i += wav.channels)
        samples.push_back(wav.samples[i]);
    return samples;
}

class RecorderCodecs : public testing::Test {
protected:
    // 20 ms RTP packets of one source, arriving 20 ms apart from the call's start.
    bool send(int channel, uint8_t payloadType, const std::string& codec, uint32_t timestamp, uint16_t sequence,
              const std::string& payload) {
        const TimePoint arrival = TimePoint{} + kPacketTime * sequence;
        const RtpPacket packet{payloadType, sequence, timestamp, 1234u + channel, payload};
        return audio.add(channel, arrival, packet, codec);
    }

    // Closes the audio and writes call.wav on another thread, as the archive may.
    Wav writtenWav() {
        audio.close();
        const std::string path = dir.file("call.wav");
        EXPECT_TRUE(std::async(std::launch::async, [this, path] { return audio.writeWav(path); }).get());
        return readWav(path);
    }

    TempDir dir;
    FileCache files{8};
    CallAudio audio{files, dir.path()};
};

struct CodecCase {
    const char* name;  // as the signalling names it
    uint8_t payloadType;
    int rate;            // of the source and the wav
    uint32_t clockStep;  // RTP clock per 20 ms packet
    double threshold;
    bool conceals;                                              // a lost packet, else silence
    std::function<std::string(const int16_t*, size_t)> encode;  // one packet's samples
};

TEST_F(RecorderCodecs, EachCodecsAudioMatchesItsSourceInTheWav) {
    g722_encode_state_t* g722 = g722_encode_init(nullptr, 64000, 0);
    bcg729EncoderChannelContextStruct* g729 = initBcg729EncoderChannel(0);
    int error = 0;
    OpusEncoder* opus = opus_encoder_create(16000, 1, OPUS_APPLICATION_VOIP, &error);
    ASSERT_EQ(error, OPUS_OK);

    // Thresholds under what each gives here (about 0.9999, 0.99999, 0.985, 0.999): G.711's
    // quantisation noise lies some 38 dB under the signal and G.722's under that; Opus codes the
    // sweep nearly as well. G.729 rebuilds the wave from a model of the voice, which a single
    // swept tone fits well but not exactly; 0.9 still fails a wrong clock, a misplaced frame or
    // the wrong law, which give far less.
    const CodecCase cases[] = {
        {"PCMA/8000", 8, 8000, 160, 0.999, false,
         [](const int16_t* in, size_t n) {
             std::string out(n, '\0');
             for (size_t i = 0; i < n; ++i)
                 out[i] = static_cast<char>(linear_to_alaw(in[i]));
             return out;
         }},
        {"", 0, 8000, 160, 0.999, false,  // unnamed: PCMU by its static payload type
         [](const int16_t* in, size_t n) {
             std::string out(n, '\0');
             for (size_t i = 0; i < n; ++i)
                 out[i] = static_cast<char>(linear_to_ulaw(in[i]));
             return out;
         }},
        {"g722/8000", 9, 16000, 160, 0.99, false,
         [g722](const int16_t* in, size_t n) {
             std::string out(n / 2, '\0');
             g722_encode(g722, reinterpret_cast<uint8_t*>(out.data()), in, static_cast<int>(n));
             return out;
         }},
        {"G729/8000", 18, 8000, 160, 0.9, true,
         [g729](const int16_t* in, size_t n) {
             std::string out;
             for (size_t at = 0; at < n; at += 80) {
                 uint8_t frame[10];
                 uint8_t length = 0;
                 bcg729Encoder(g729, in + at, frame, &length);
                 out.append(reinterpret_cast<const char*>(frame), length);
             }
             return out;
         }},
        {"opus/48000/2", 111, 16000, 960, 0.95, true,
         [opus](const int16_t* in, size_t n) {
             std::string out(1500, '\0');
             const int length = opus_encode(opus, in, static_cast<int>(n), reinterpret_cast<unsigned char*>(out.data()),
                                            static_cast<opus_int32>(out.size()));
             out.resize(static_cast<size_t>(std::max(length, 0)));
             return out;
         }},
    };
    for (const CodecCase& codec : cases) {
        SCOPED_TRACE(codec.name[0] ? codec.name : "PCMU by payload type");
        TempDir folder;
        CallAudio call(files, folder.path());
        const std::vector<int16_t> source = chirp(codec.rate, 2.0);
        const size_t perPacket = static_cast<size_t>(codec.rate / 50);
        constexpr uint16_t kLost = 10;
        for (uint16_t n = 0; n * perPacket < source.size(); ++n) {
            if (n == kLost)
                continue;
            const std::string payload = codec.encode(&source[n * perPacket], perPacket);
            const RtpPacket packet{codec.payloadType, n, n * codec.clockStep, 99, payload};
            ASSERT_TRUE(call.add(1, TimePoint{} + kPacketTime * n, packet, codec.name));
        }
        call.close();
        ASSERT_TRUE(call.writeWav(folder.file("call.wav")));
        const Wav wav = readWav(folder.file("call.wav"));
        ASSERT_EQ(wav.channels, 2u);
        EXPECT_EQ(wav.rate, static_cast<unsigned>(codec.rate));
        ASSERT_EQ(channelOf(wav, 1).size(), source.size());
        const std::vector<int16_t> decoded = channelOf(wav, 1);
        EXPECT_GT(bestCorrelation(source, decoded, codec.rate), codec.threshold);
        const auto lost = decoded.begin() + kLost * static_cast<std::ptrdiff_t>(perPacket);
        EXPECT_NE(std::all_of(lost, lost + static_cast<std::ptrdiff_t>(perPacket), [](int16_t s) { return s == 0; }),
                  codec.conceals);
    }
    g722_encode_free(g722);
    closeBcg729EncoderChannel(g729);
    opus_encoder_destroy(opus);
}

TEST_F(RecorderCodecs, ALostPacketIsSilenceOfItsLengthAndOtherPayloadsFillNothing) {
    const std::string payload(160, '\xc5');  // A-law for 264
    for (uint16_t n = 0; n < 50; ++n) {
        if (n != 10) {
            EXPECT_TRUE(send(0, kPcma, "PCMA/8000", n * 160u, n, payload));
        }
        EXPECT_TRUE(send(1, kPcma, "PCMA/8000", n * 160u, n, payload));
    }
    // A telephone event and comfort noise where the lost packet was, and a codec without a decoder.
    EXPECT_FALSE(send(0, 101, "telephone-event/8000", 1600, 60, std::string(4, '\x05')));
    EXPECT_FALSE(send(0, 13, "", 1600, 61, std::string(1, '\x40')));
    EXPECT_FALSE(send(1, 97, "iLBC/8000", 1600, 62, std::string(38, '\x11')));

    const Wav wav = writtenWav();
    ASSERT_EQ(wav.rate, 8000u);
    const std::vector<int16_t> caller = channelOf(wav, 0), callee = channelOf(wav, 1);
    ASSERT_EQ(caller.size(), 8000u);
    ASSERT_EQ(callee.size(), 8000u);
    for (size_t i = 0; i < caller.size(); ++i) {
        ASSERT_EQ(caller[i], i >= 1600 && i < 1760 ? 0 : 264) << "sample " << i;
        ASSERT_EQ(callee[i], 264) << "sample " << i;
    }
}

TEST_F(RecorderCodecs, TimestampsPlaceTheAudioWhateverTheArrivalButAJumpIsNotSilence) {
    const std::string payload(160, '\xd5');
    const TimePoint start{};
    // Twenty seconds of RTP time in steps of 5 s, arriving within milliseconds as a fast replay
    // delivers them.
    for (uint16_t i = 0; i <= 4; ++i)
        audio.add(0, start + std::chrono::milliseconds(i), RtpPacket{kPcma, i, 40000u * i - (i ? 160 : 0), 7, payload},
                  "PCMA/8000");
    EXPECT_DOUBLE_EQ(audio.duration(), 20.0);
    // A timestamp an hour on resumes where the packet arrived instead of after an hour of silence.
    audio.add(0, start + std::chrono::milliseconds(500), RtpPacket{kPcma, 5, 160000 + 8000 * 3600, 7, payload},
              "PCMA/8000");
    EXPECT_DOUBLE_EQ(audio.duration(), 20.0);
}

TEST_F(RecorderCodecs, AnHourLongCallHoldsOnlyItsWindowInMemoryAndItsWavIsComplete) {
    constexpr uint16_t kLate = 1000;  // a packet that arrives a second after its successors
    const size_t bound = CallAudio::kChannels * SampleSpool::kWindowSamples;
    const std::string payload(160, '\xc5');  // 264
    uint16_t sequence = 0;
    for (uint32_t n = 0; n < 3600 * 50; ++n, ++sequence) {
        if (n != kLate)
            send(0, kPcma, "PCMA/8000", n * 160, sequence, payload);
        if (n == kLate + 50)
            send(0, kPcma, "PCMA/8000", kLate * 160, kLate, std::string(160, '\xd5'));  // 8
        if (n % 3000 == 0) {
            ASSERT_LE(audio.bufferedSamples(), bound) << "after " << n / 50 << " s";
        }
    }
    ASSERT_LE(audio.bufferedSamples(), bound);
    audio.close();
    EXPECT_EQ(audio.bufferedSamples(), 0u);
    ASSERT_TRUE(audio.writeWav(dir.file("call.wav")));

    // Read where it matters rather than the whole 115 MB.
    EXPECT_EQ(std::filesystem::file_size(dir.file("call.wav")), 44u + 3600u * 8000 * 2 * 2);
    const auto sampleAt = [this](size_t frame) {
        std::ifstream in(dir.file("call.wav"), std::ios::binary);
        in.seekg(static_cast<std::streamoff>(44 + frame * 4));
        int16_t sample = 0;
        in.read(reinterpret_cast<char*>(&sample), sizeof sample);
        return sample;
    };
    EXPECT_EQ(sampleAt(0), 264);
    EXPECT_EQ(sampleAt(kLate * 160 - 1), 264);
    EXPECT_EQ(sampleAt(kLate * 160), 8);
    EXPECT_EQ(sampleAt(kLate * 160 + 159), 8);
    EXPECT_EQ(sampleAt(kLate * 160 + 160), 264);
    EXPECT_EQ(sampleAt(3600u * 8000 - 1), 264);
    // Only the call's own files remain.
    for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
        EXPECT_EQ(entry.path().filename(), "call.wav");
}

}  // namespace
}  // namespace recorder
