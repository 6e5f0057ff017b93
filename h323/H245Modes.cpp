// H.245 request mode: the modes a terminal asks the other to transmit.
#include "h323/H245Tables.h"

namespace h323::h245 {
using namespace per;
using namespace leaf;

// ---- request mode messages -----------------------------------------------

const Type RequestMode_requestedModes = sequenceOf(ModeDescription, size(1, 256));
const Component RequestMode_[] = {
    {"sequenceNumber", SequenceNumber},
    {"requestedModes", RequestMode_requestedModes},
};
const Type RequestMode = sequence("RequestMode", RequestMode_, Extensible);

const Component RequestModeAck_response_[] = {
    {"willTransmitMostPreferredMode", Null},
    {"willTransmitLessPreferredMode", Null},
};
const Type RequestModeAck_response = choice("response", RequestModeAck_response_, Extensible);
const Component RequestModeAck_[] = {
    {"sequenceNumber", SequenceNumber},
    {"response", RequestModeAck_response},
};
const Type RequestModeAck = sequence("RequestModeAck", RequestModeAck_, Extensible);

const Component RequestModeReject_cause_[] = {
    {"modeUnavailable", Null},
    {"multipointConstraint", Null},
    {"requestDenied", Null},
};
const Type RequestModeReject_cause = choice("cause", RequestModeReject_cause_, Extensible);
const Component RequestModeReject_[] = {
    {"sequenceNumber", SequenceNumber},
    {"cause", RequestModeReject_cause},
};
const Type RequestModeReject = sequence("RequestModeReject", RequestModeReject_, Extensible);

const Type RequestModeRelease = emptySequence("RequestModeRelease", Extensible);

// ---- mode descriptions ---------------------------------------------------

const Type ModeDescription = sequenceOf(ModeElement, size(1, 256), "ModeDescription");

const Component ModeElementType_[] = {
    {"nonStandard", NonStandardParameter},
    {"videoMode", VideoMode},
    {"audioMode", AudioMode},
    {"dataMode", DataMode},
    {"encryptionMode", EncryptionMode},
    {"h235Mode", OpenType, Addition},
    {"multiplexedStreamMode", OpenType, Addition},
    {"redundancyEncodingDTMode", OpenType, Addition},
    {"multiplePayloadStreamMode", OpenType, Addition},
    {"depFecMode", OpenType, Addition},
    {"fecMode", OpenType, Addition},
};
const Type ModeElementType = choice("ModeElementType", ModeElementType_, Extensible);

const Component ModeElement_[] = {
    {"type", ModeElementType},
    {"h223ModeParameters", H223ModeParameters, Optional},
    {"v76ModeParameters", OpenType, Addition},
    {"h2250ModeParameters", OpenType, Addition},
    {"genericModeParameters", GenericCapability, Addition},
    {"multiplexedStreamModeParameters", OpenType, Addition},
    {"logicalChannelNumber", LogicalChannelNumber, Addition},
};
const Type ModeElement = sequence("ModeElement", ModeElement_, Extensible);

const Component H223ModeParameters_[] = {
    {"adaptationLayerType", H223_adaptationLayerType},
    {"segmentableFlag", Boolean},
};
const Type H223ModeParameters = sequence("H223ModeParameters", H223ModeParameters_, Extensible);

// ---- video modes ---------------------------------------------------------

const Component VideoMode_[] = {
    {"nonStandard", NonStandardParameter},  {"h261VideoMode", H261VideoMode},
    {"h262VideoMode", H262VideoMode},       {"h263VideoMode", H263VideoMode},
    {"is11172VideoMode", IS11172VideoMode}, {"genericVideoMode", GenericCapability, Addition},
};
const Type VideoMode = choice("VideoMode", VideoMode_, Extensible);

const Component H261VideoMode_resolution_[] = {{"qcif", Null}, {"cif", Null}};
const Type H261VideoMode_resolution = choice("resolution", H261VideoMode_resolution_);
const Component H261VideoMode_[] = {
    {"resolution", H261VideoMode_resolution},
    {"bitRate", Int1_19200},
    {"stillImageTransmission", Boolean},
};
const Type H261VideoMode = sequence("H261VideoMode", H261VideoMode_, Extensible);

const Component H262VideoMode_profileAndLevel_[] = {
    {"profileAndLevel_SPatML", Null},   {"profileAndLevel_MPatLL", Null},        {"profileAndLevel_MPatML", Null},
    {"profileAndLevel_MPatH_14", Null}, {"profileAndLevel_MPatHL", Null},        {"profileAndLevel_SNRatLL", Null},
    {"profileAndLevel_SNRatML", Null},  {"profileAndLevel_SpatialatH_14", Null}, {"profileAndLevel_HPatML", Null},
    {"profileAndLevel_HPatH_14", Null}, {"profileAndLevel_HPatHL", Null},
};
const Type H262VideoMode_profileAndLevel = choice("profileAndLevel", H262VideoMode_profileAndLevel_, Extensible);
const Component H262VideoMode_[] = {
    {"profileAndLevel", H262VideoMode_profileAndLevel},
    {"videoBitRate", Int0_1073741823, Optional},
    {"vbvBufferSize", Int0_262143, Optional},
    {"samplesPerLine", Int0_16383, Optional},
    {"linesPerFrame", Int0_16383, Optional},
    {"framesPerSecond", Int0_15, Optional},
    {"luminanceSampleRate", Int0_4294967295, Optional},
};
const Type H262VideoMode = sequence("H262VideoMode", H262VideoMode_, Extensible);

const Component H263VideoMode_resolution_[] = {
    {"sqcif", Null}, {"qcif", Null}, {"cif", Null}, {"cif4", Null}, {"cif16", Null}, {"custom", Null, Addition},
};
const Type H263VideoMode_resolution = choice("resolution", H263VideoMode_resolution_, Extensible);
const Component H263VideoMode_[] = {
    {"resolution", H263VideoMode_resolution}, {"bitRate", Int1_19200},
    {"unrestrictedVector", Boolean},          {"arithmeticCoding", Boolean},
    {"advancedPrediction", Boolean},          {"pbFrames", Boolean},
    {"errorCompensation", Boolean, Addition}, {"enhancementLayerInfo", OpenType, Addition},
    {"h263Options", OpenType, Addition},
};
const Type H263VideoMode = sequence("H263VideoMode", H263VideoMode_, Extensible);

const Component IS11172VideoMode_[] = {
    {"constrainedBitstream", Boolean},
    {"videoBitRate", Int0_1073741823, Optional},
    {"vbvBufferSize", Int0_262143, Optional},
    {"samplesPerLine", Int0_16383, Optional},
    {"linesPerFrame", Int0_16383, Optional},
    {"pictureRate", Int0_15, Optional},
    {"luminanceSampleRate", Int0_4294967295, Optional},
};
const Type IS11172VideoMode = sequence("IS11172VideoMode", IS11172VideoMode_, Extensible);

// ---- audio modes ---------------------------------------------------------

const Component AudioMode_g7231_[] = {
    {"noSilenceSuppressionLowRate", Null},
    {"noSilenceSuppressionHighRate", Null},
    {"silenceSuppressionLowRate", Null},
    {"silenceSuppressionHighRate", Null},
};
const Type AudioMode_g7231 = choice("g7231", AudioMode_g7231_);
const Component AudioMode_[] = {
    {"nonStandard", NonStandardParameter},
    {"g711Alaw64k", Null},
    {"g711Alaw56k", Null},
    {"g711Ulaw64k", Null},
    {"g711Ulaw56k", Null},
    {"g722_64k", Null},
    {"g722_56k", Null},
    {"g722_48k", Null},
    {"g728", Null},
    {"g729", Null},
    {"g729AnnexA", Null},
    {"g7231", AudioMode_g7231},
    {"is11172AudioMode", IS11172AudioMode},
    {"is13818AudioMode", IS13818AudioMode},
    {"g729wAnnexB", Int1_256, Addition},
    {"g729AnnexAwAnnexB", Int1_256, Addition},
    {"g7231AnnexCMode", OpenType, Addition},
    {"gsmFullRate", GSMAudioCapability, Addition},
    {"gsmHalfRate", GSMAudioCapability, Addition},
    {"gsmEnhancedFullRate", GSMAudioCapability, Addition},
    {"genericAudioMode", GenericCapability, Addition},
    {"g729Extensions", G729Extensions, Addition},
    {"vbd", OpenType, Addition},
};
const Type AudioMode = choice("AudioMode", AudioMode_, Extensible);

// audioLayer CHOICE { audioLayer1, audioLayer2, audioLayer3 NULL }, alike in
// both audio modes.
const Component AudioMode_audioLayer_[] = {{"audioLayer1", Null}, {"audioLayer2", Null}, {"audioLayer3", Null}};
const Type AudioMode_audioLayer = choice("audioLayer", AudioMode_audioLayer_);

const Component IS11172AudioMode_audioSampling_[] = {
    {"audioSampling32k", Null},
    {"audioSampling44k1", Null},
    {"audioSampling48k", Null},
};
const Type IS11172AudioMode_audioSampling = choice("audioSampling", IS11172AudioMode_audioSampling_);
const Component IS11172AudioMode_multichannelType_[] = {
    {"singleChannel", Null},
    {"twoChannelStereo", Null},
    {"twoChannelDual", Null},
};
const Type IS11172AudioMode_multichannelType = choice("multichannelType", IS11172AudioMode_multichannelType_);
const Component IS11172AudioMode_[] = {
    {"audioLayer", AudioMode_audioLayer},
    {"audioSampling", IS11172AudioMode_audioSampling},
    {"multichannelType", IS11172AudioMode_multichannelType},
    {"bitRate", Int1_448},
};
const Type IS11172AudioMode = sequence("IS11172AudioMode", IS11172AudioMode_, Extensible);

const Component IS13818AudioMode_audioSampling_[] = {
    {"audioSampling16k", Null}, {"audioSampling22k05", Null}, {"audioSampling24k", Null},
    {"audioSampling32k", Null}, {"audioSampling44k1", Null},  {"audioSampling48k", Null},
};
const Type IS13818AudioMode_audioSampling = choice("audioSampling", IS13818AudioMode_audioSampling_);
const Component IS13818AudioMode_multichannelType_[] = {
    {"singleChannel", Null},       {"twoChannelStereo", Null},    {"twoChannelDual", Null},  {"threeChannels2_1", Null},
    {"threeChannels3_0", Null},    {"fourChannels2_0_2_0", Null}, {"fourChannels2_2", Null}, {"fourChannels3_1", Null},
    {"fiveChannels3_0_2_0", Null}, {"fiveChannels3_2", Null},
};
const Type IS13818AudioMode_multichannelType = choice("multichannelType", IS13818AudioMode_multichannelType_);
const Component IS13818AudioMode_[] = {
    {"audioLayer", AudioMode_audioLayer},
    {"audioSampling", IS13818AudioMode_audioSampling},
    {"multichannelType", IS13818AudioMode_multichannelType},
    {"lowFrequencyEnhancement", Boolean},
    {"multilingual", Boolean},
    {"bitRate", Int1_1130},
};
const Type IS13818AudioMode = sequence("IS13818AudioMode", IS13818AudioMode_, Extensible);

// ---- data modes ----------------------------------------------------------

const Component DataMode_application_[] = {
    {"nonStandard", NonStandardParameter},
    {"t120", DataProtocolCapability},
    {"dsm_cc", DataProtocolCapability},
    {"userData", DataProtocolCapability},
    {"t84", DataProtocolCapability},
    {"t434", DataProtocolCapability},
    {"h224", DataProtocolCapability},
    {"nlpid", DataApplication_nlpid},
    {"dsvdControl", Null},
    {"h222DataPartitioning", DataProtocolCapability},
    {"t30fax", DataProtocolCapability, Addition},
    {"t140", DataProtocolCapability, Addition},
    {"t38fax", OpenType, Addition},
    {"genericDataMode", GenericCapability, Addition},
};
const Type DataMode_application = choice("application", DataMode_application_, Extensible);
const Component DataMode_[] = {
    {"application", DataMode_application},
    {"bitRate", Int0_4294967295},
};
const Type DataMode = sequence("DataMode", DataMode_, Extensible);

}  // namespace h323::h245
