#include "AudioDecoder.h"

#include "G711.h"
#include "G722Decoder.h"
#include "G729Decoder.h"
#include "OpusAudioDecoder.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace recorder {
namespace {

std::string encodingName(std::string_view codecName) {
    std::string name(codecName.substr(0, codecName.find('/')));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return name;
}

// RFC 3551's static payload types of the codecs decoded here.
std::string staticEncodingName(int payloadType) {
    switch (payloadType) {
    case 0: return "PCMU";
    case 8: return "PCMA";
    case 9: return "G722";
    case 18: return "G729";
    default: return "";
    }
}

}  // namespace

std::vector<int16_t> AudioDecoder::concealLoss(size_t) {
    return {};
}

std::unique_ptr<AudioDecoder> makeAudioDecoder(std::string_view codecName, int payloadType) {
    const std::string name = codecName.empty() ? staticEncodingName(payloadType) : encodingName(codecName);
    if (name == "PCMU")
        return std::make_unique<G711Decoder>(G711Decoder::Law::Mu);
    if (name == "PCMA")
        return std::make_unique<G711Decoder>(G711Decoder::Law::A);
    if (name == "G722")
        return std::make_unique<G722Decoder>();
    // Annex A is a lighter encoder of the same bit stream.
    if (name == "G729" || name == "G729A")
        return std::make_unique<G729Decoder>();
    if (name == "OPUS")
        return std::make_unique<OpusAudioDecoder>();
    return nullptr;
}

}  // namespace recorder
