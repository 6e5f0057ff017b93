// H.245 capability exchange: TerminalCapabilitySet and the capabilities it
// carries.
#include "h323/H245Tables.h"

namespace h323::h245 {
using namespace per;
using namespace leaf;

// ---- capability exchange messages ---------------------------------------

const Type CapabilityTableEntryNumber = integer(1, 65535);
const Type CapabilityDescriptorNumber = integer(0, 255);
const Type AlternativeCapabilitySet = sequenceOf(CapabilityTableEntryNumber, size(1, 256), "AlternativeCapabilitySet");

const Component CapabilityTableEntry_[] = {
    {"capabilityTableEntryNumber", CapabilityTableEntryNumber},
    {"capability", Capability, Optional},
};
const Type CapabilityTableEntry = sequence("CapabilityTableEntry", CapabilityTableEntry_);

const Type CapabilityDescriptor_simultaneousCapabilities = sequenceOf(AlternativeCapabilitySet, size(1, 256));
const Component CapabilityDescriptor_[] = {
    {"capabilityDescriptorNumber", CapabilityDescriptorNumber},
    {"simultaneousCapabilities", CapabilityDescriptor_simultaneousCapabilities, Optional},
};
const Type CapabilityDescriptor = sequence("CapabilityDescriptor", CapabilityDescriptor_);

const Type TerminalCapabilitySet_capabilityTable = sequenceOf(CapabilityTableEntry, size(1, 256));
const Type TerminalCapabilitySet_capabilityDescriptors = sequenceOf(CapabilityDescriptor, size(1, 256));
const Component TerminalCapabilitySet_[] = {
    {"sequenceNumber", SequenceNumber},
    {"protocolIdentifier", ObjectIdentifier},
    {"multiplexCapability", MultiplexCapability, Optional},
    {"capabilityTable", TerminalCapabilitySet_capabilityTable, Optional},
    {"capabilityDescriptors", TerminalCapabilitySet_capabilityDescriptors, Optional},
    {"genericInformation", OpenType, Addition},
};
const Type TerminalCapabilitySet = sequence("TerminalCapabilitySet", TerminalCapabilitySet_, Extensible);

const Component TerminalCapabilitySetAck_[] = {
    {"sequenceNumber", SequenceNumber},
    {"genericInformation", OpenType, Addition},
};
const Type TerminalCapabilitySetAck = sequence("TerminalCapabilitySetAck", TerminalCapabilitySetAck_, Extensible);

// cause CHOICE { unspecified, undefinedTableEntryUsed, descriptorCapacityExceeded NULL,
//   tableEntryCapacityExceeded CHOICE { highestEntryNumberProcessed
//     CapabilityTableEntryNumber, noneProcessed NULL }, ... }
const Component TerminalCapabilitySetReject_cause_tableEntryCapacityExceeded_[] = {
    {"highestEntryNumberProcessed", CapabilityTableEntryNumber},
    {"noneProcessed", Null},
};
const Type TerminalCapabilitySetReject_cause_tableEntryCapacityExceeded =
    choice("tableEntryCapacityExceeded", TerminalCapabilitySetReject_cause_tableEntryCapacityExceeded_);
const Component TerminalCapabilitySetReject_cause_[] = {
    {"unspecified", Null},
    {"undefinedTableEntryUsed", Null},
    {"descriptorCapacityExceeded", Null},
    {"tableEntryCapacityExceeded", TerminalCapabilitySetReject_cause_tableEntryCapacityExceeded},
};
const Type TerminalCapabilitySetReject_cause = choice("cause", TerminalCapabilitySetReject_cause_, Extensible);
const Component TerminalCapabilitySetReject_[] = {
    {"sequenceNumber", SequenceNumber},
    {"cause", TerminalCapabilitySetReject_cause},
    {"genericInformation", OpenType, Addition},
};
const Type TerminalCapabilitySetReject =
    sequence("TerminalCapabilitySetReject", TerminalCapabilitySetReject_, Extensible);

const Component TerminalCapabilitySetRelease_[] = {{"genericInformation", OpenType, Addition}};
const Type TerminalCapabilitySetRelease =
    sequence("TerminalCapabilitySetRelease", TerminalCapabilitySetRelease_, Extensible);

// ---- Capability ----------------------------------------------------------

const Component Capability_h233EncryptionReceiveCapability_[] = {{"h233IVResponseTime", Int0_255}};
const Type Capability_h233EncryptionReceiveCapability =
    sequence("h233EncryptionReceiveCapability", Capability_h233EncryptionReceiveCapability_, Extensible);
const Component Capability_[] = {
    {"nonStandard", NonStandardParameter},
    {"receiveVideoCapability", VideoCapability},
    {"transmitVideoCapability", VideoCapability},
    {"receiveAndTransmitVideoCapability", VideoCapability},
    {"receiveAudioCapability", AudioCapability},
    {"transmitAudioCapability", AudioCapability},
    {"receiveAndTransmitAudioCapability", AudioCapability},
    {"receiveDataApplicationCapability", DataApplicationCapability},
    {"transmitDataApplicationCapability", DataApplicationCapability},
    {"receiveAndTransmitDataApplicationCapability", DataApplicationCapability},
    {"h233EncryptionTransmitCapability", Boolean},
    {"h233EncryptionReceiveCapability", Capability_h233EncryptionReceiveCapability},
    {"conferenceCapability", OpenType, Addition},
    {"h235SecurityCapability", OpenType, Addition},
    {"maxPendingReplacementFor", Int0_255, Addition},
    {"receiveUserInputCapability", OpenType, Addition},
    {"transmitUserInputCapability", OpenType, Addition},
    {"receiveAndTransmitUserInputCapability", OpenType, Addition},
    {"genericControlCapability", GenericCapability, Addition},
    {"receiveMultiplexedStreamCapability", OpenType, Addition},
    {"transmitMultiplexedStreamCapability", OpenType, Addition},
    {"receiveAndTransmitMultiplexedStreamCapability", OpenType, Addition},
    {"receiveRTPAudioTelephonyEventCapability", OpenType, Addition},
    {"receiveRTPAudioToneCapability", OpenType, Addition},
    {"depFecCapability", OpenType, Addition},
    {"multiplePayloadStreamCapability", OpenType, Addition},
    {"fecCapability", OpenType, Addition},
    {"redundancyEncodingCap", OpenType, Addition},
    {"oneOfCapabilities", AlternativeCapabilitySet, Addition},
};
const Type Capability = choice("Capability", Capability_, Extensible);

// ---- multiplex capabilities ----------------------------------------------

const Component MultiplexCapability_[] = {
    {"nonStandard", NonStandardParameter},   {"h222Capability", H222Capability},
    {"h223Capability", H223Capability},      {"v76Capability", V76Capability},
    {"h2250Capability", OpenType, Addition}, {"genericMultiplexCapability", GenericCapability, Addition},
};
const Type MultiplexCapability = choice("MultiplexCapability", MultiplexCapability_, Extensible);

const Type H222Capability_vcCapability = sequenceOf(VCCapability);
const Component H222Capability_[] = {
    {"numberOfVCs", Int1_256},
    {"vcCapability", H222Capability_vcCapability},
};
const Type H222Capability = sequence("H222Capability", H222Capability_, Extensible);

const Component VCCapability_aal1_[] = {
    {"nullClockRecovery", Boolean},   {"srtsClockRecovery", Boolean},      {"adaptiveClockRecovery", Boolean},
    {"nullErrorCorrection", Boolean}, {"longInterleaver", Boolean},        {"shortInterleaver", Boolean},
    {"errorCorrectionOnly", Boolean}, {"structuredDataTransfer", Boolean}, {"partiallyFilledCells", Boolean},
};
const Type VCCapability_aal1 = sequence("aal1", VCCapability_aal1_, Extensible);
const Component VCCapability_aal5_[] = {
    {"forwardMaximumSDUSize", Int0_65535},
    {"backwardMaximumSDUSize", Int0_65535},
};
const Type VCCapability_aal5 = sequence("aal5", VCCapability_aal5_, Extensible);
// availableBitRates SEQUENCE { type CHOICE { singleBitRate INTEGER(1..65535),
//   rangeOfBitRates SEQUENCE { lowerBitRate, higherBitRate INTEGER(1..65535) } }, ... }
const Component VCCapability_availableBitRates_type_rangeOfBitRates_[] = {
    {"lowerBitRate", Int1_65535},
    {"higherBitRate", Int1_65535},
};
const Type VCCapability_availableBitRates_type_rangeOfBitRates =
    sequence("rangeOfBitRates", VCCapability_availableBitRates_type_rangeOfBitRates_);
const Component VCCapability_availableBitRates_type_[] = {
    {"singleBitRate", Int1_65535},
    {"rangeOfBitRates", VCCapability_availableBitRates_type_rangeOfBitRates},
};
const Type VCCapability_availableBitRates_type = choice("type", VCCapability_availableBitRates_type_);
const Component VCCapability_availableBitRates_[] = {{"type", VCCapability_availableBitRates_type}};
const Type VCCapability_availableBitRates = sequence("availableBitRates", VCCapability_availableBitRates_, Extensible);
const Component VCCapability_[] = {
    {"aal1", VCCapability_aal1, Optional},
    {"aal5", VCCapability_aal5, Optional},
    {"transportStream", Boolean},
    {"programStream", Boolean},
    {"availableBitRates", VCCapability_availableBitRates},
    {"aal1ViaGateway", OpenType, Addition},
};
const Type VCCapability = sequence("VCCapability", VCCapability_, Extensible);

// h223MultiplexTableCapability CHOICE { basic NULL, enhanced SEQUENCE {
//   maximumNestingDepth INTEGER(1..15), maximumElementListSize,
//   maximumSubElementListSize INTEGER(2..255), ... } }
const Type Int1_15 = integer(1, 15);
const Type Int2_255 = integer(2, 255);
const Component H223Capability_h223MultiplexTableCapability_enhanced_[] = {
    {"maximumNestingDepth", Int1_15},
    {"maximumElementListSize", Int2_255},
    {"maximumSubElementListSize", Int2_255},
};
const Type H223Capability_h223MultiplexTableCapability_enhanced =
    sequence("enhanced", H223Capability_h223MultiplexTableCapability_enhanced_, Extensible);
const Component H223Capability_h223MultiplexTableCapability_[] = {
    {"basic", Null},
    {"enhanced", H223Capability_h223MultiplexTableCapability_enhanced},
};
const Type H223Capability_h223MultiplexTableCapability =
    choice("h223MultiplexTableCapability", H223Capability_h223MultiplexTableCapability_);
const Component H223Capability_[] = {
    {"transportWithI_frames", Boolean},
    {"videoWithAL1", Boolean},
    {"videoWithAL2", Boolean},
    {"videoWithAL3", Boolean},
    {"audioWithAL1", Boolean},
    {"audioWithAL2", Boolean},
    {"audioWithAL3", Boolean},
    {"dataWithAL1", Boolean},
    {"dataWithAL2", Boolean},
    {"dataWithAL3", Boolean},
    {"maximumAl2SDUSize", Int0_65535},
    {"maximumAl3SDUSize", Int0_65535},
    {"maximumDelayJitter", Int0_1023},
    {"h223MultiplexTableCapability", H223Capability_h223MultiplexTableCapability},
    {"maxMUXPDUSizeCapability", Boolean, Addition},
    {"nsrpSupport", Boolean, Addition},
    {"mobileOperationTransmitCapability", OpenType, Addition},
    {"h223AnnexCCapability", OpenType, Addition},
    {"bitRate", Int1_19200, Addition},
    {"mobileMultilinkFrameCapability", OpenType, Addition},
};
const Type H223Capability = sequence("H223Capability", H223Capability_, Extensible);

const Component V75Capability_[] = {{"audioHeader", Boolean}};
const Type V75Capability = sequence("V75Capability", V75Capability_, Extensible);

const Type Int2_8191 = integer(2, 8191);
const Component V76Capability_[] = {
    {"suspendResumeCapabilitywAddress", Boolean},
    {"suspendResumeCapabilitywoAddress", Boolean},
    {"rejCapability", Boolean},
    {"sREJCapability", Boolean},
    {"mREJCapability", Boolean},
    {"crc8bitCapability", Boolean},
    {"crc16bitCapability", Boolean},
    {"crc32bitCapability", Boolean},
    {"uihCapability", Boolean},
    {"numOfDLCS", Int2_8191},
    {"twoOctetAddressFieldCapability", Boolean},
    {"loopBackTestCapability", Boolean},
    {"n401Capability", Int1_4095},
    {"maxWindowSizeCapability", Int1_127},
    {"v75Capability", V75Capability},
};
const Type V76Capability = sequence("V76Capability", V76Capability_, Extensible);

// ---- video capabilities --------------------------------------------------

const Component VideoCapability_[] = {
    {"nonStandard", NonStandardParameter},
    {"h261VideoCapability", H261VideoCapability},
    {"h262VideoCapability", H262VideoCapability},
    {"h263VideoCapability", H263VideoCapability},
    {"is11172VideoCapability", IS11172VideoCapability},
    {"genericVideoCapability", GenericCapability, Addition},
    {"extendedVideoCapability", OpenType, Addition},
};
const Type VideoCapability = choice("VideoCapability", VideoCapability_, Extensible);

const Component H261VideoCapability_[] = {
    {"qcifMPI", Int1_4, Optional}, {"cifMPI", Int1_4, Optional},        {"temporalSpatialTradeOffCapability", Boolean},
    {"maxBitRate", Int1_19200},    {"stillImageTransmission", Boolean}, {"videoBadMBsCap", Boolean, Addition},
};
const Type H261VideoCapability = sequence("H261VideoCapability", H261VideoCapability_, Extensible);

const Component H262VideoCapability_[] = {
    {"profileAndLevel_SPatML", Boolean},
    {"profileAndLevel_MPatLL", Boolean},
    {"profileAndLevel_MPatML", Boolean},
    {"profileAndLevel_MPatH_14", Boolean},
    {"profileAndLevel_MPatHL", Boolean},
    {"profileAndLevel_SNRatLL", Boolean},
    {"profileAndLevel_SNRatML", Boolean},
    {"profileAndLevel_SpatialatH_14", Boolean},
    {"profileAndLevel_HPatML", Boolean},
    {"profileAndLevel_HPatH_14", Boolean},
    {"profileAndLevel_HPatHL", Boolean},
    {"videoBitRate", Int0_1073741823, Optional},
    {"vbvBufferSize", Int0_262143, Optional},
    {"samplesPerLine", Int0_16383, Optional},
    {"linesPerFrame", Int0_16383, Optional},
    {"framesPerSecond", Int0_15, Optional},
    {"luminanceSampleRate", Int0_4294967295, Optional},
    {"videoBadMBsCap", Boolean, Addition},
};
const Type H262VideoCapability = sequence("H262VideoCapability", H262VideoCapability_, Extensible);

const Type Int1_192400 = integer(1, 192400);
const Type Int0_524287 = integer(0, 524287);
const Component H263VideoCapability_[] = {
    {"sqcifMPI", Int1_32, Optional},
    {"qcifMPI", Int1_32, Optional},
    {"cifMPI", Int1_32, Optional},
    {"cif4MPI", Int1_32, Optional},
    {"cif16MPI", Int1_32, Optional},
    {"maxBitRate", Int1_192400},
    {"unrestrictedVector", Boolean},
    {"arithmeticCoding", Boolean},
    {"advancedPrediction", Boolean},
    {"pbFrames", Boolean},
    {"temporalSpatialTradeOffCapability", Boolean},
    {"hrd_B", Int0_524287, Optional},
    {"bppMaxKb", Int0_65535, Optional},
    {"slowSqcifMPI", Int1_3600, Addition},
    {"slowQcifMPI", Int1_3600, Addition},
    {"slowCifMPI", Int1_3600, Addition},
    {"slowCif4MPI", Int1_3600, Addition},
    {"slowCif16MPI", Int1_3600, Addition},
    {"errorCompensation", Boolean, Addition},
    {"enhancementLayerInfo", OpenType, Addition},
    {"h263Options", OpenType, Addition},
};
const Type H263VideoCapability = sequence("H263VideoCapability", H263VideoCapability_, Extensible);

const Component IS11172VideoCapability_[] = {
    {"constrainedBitstream", Boolean},
    {"videoBitRate", Int0_1073741823, Optional},
    {"vbvBufferSize", Int0_262143, Optional},
    {"samplesPerLine", Int0_16383, Optional},
    {"linesPerFrame", Int0_16383, Optional},
    {"pictureRate", Int0_15, Optional},
    {"luminanceSampleRate", Int0_4294967295, Optional},
    {"videoBadMBsCap", Boolean, Addition},
};
const Type IS11172VideoCapability = sequence("IS11172VideoCapability", IS11172VideoCapability_, Extensible);

// ---- audio capabilities --------------------------------------------------

// The INTEGER alternatives count audio frames per packet on an H.225.0
// multiplex. The additions are described in full: the media description
// reports their tag names.
const Component AudioCapability_g7231_[] = {
    {"maxAl_sduAudioFrames", Int1_256},
    {"silenceSuppression", Boolean},
};
const Type AudioCapability_g7231 = sequence("g7231", AudioCapability_g7231_);
const Component AudioCapability_[] = {
    {"nonStandard", NonStandardParameter},
    {"g711Alaw64k", Int1_256},
    {"g711Alaw56k", Int1_256},
    {"g711Ulaw64k", Int1_256},
    {"g711Ulaw56k", Int1_256},
    {"g722_64k", Int1_256},
    {"g722_56k", Int1_256},
    {"g722_48k", Int1_256},
    {"g7231", AudioCapability_g7231},
    {"g728", Int1_256},
    {"g729", Int1_256},
    {"g729AnnexA", Int1_256},
    {"is11172AudioCapability", IS11172AudioCapability},
    {"is13818AudioCapability", IS13818AudioCapability},
    {"g729wAnnexB", Int1_256, Addition},
    {"g729AnnexAwAnnexB", Int1_256, Addition},
    {"g7231AnnexCCapability", G7231AnnexCCapability, Addition},
    {"gsmFullRate", GSMAudioCapability, Addition},
    {"gsmHalfRate", GSMAudioCapability, Addition},
    {"gsmEnhancedFullRate", GSMAudioCapability, Addition},
    {"genericAudioCapability", GenericCapability, Addition},
    {"g729Extensions", G729Extensions, Addition},
    {"vbd", VBDCapability, Addition},
    {"audioTelephonyEvent", NoPTAudioTelephonyEventCapability, Addition},
    {"audioTone", NoPTAudioToneCapability, Addition},
};
const Type AudioCapability = choice("AudioCapability", AudioCapability_, Extensible);

const Component G729Extensions_[] = {
    {"audioUnit", Int1_256, Optional},
    {"annexA", Boolean},
    {"annexB", Boolean},
    {"annexD", Boolean},
    {"annexE", Boolean},
    {"annexF", Boolean},
    {"annexG", Boolean},
    {"annexH", Boolean},
};
const Type G729Extensions = sequence("G729Extensions", G729Extensions_, Extensible);

// g723AnnexCAudioMode SEQUENCE { highRateMode0, highRateMode1 INTEGER(27..78),
//   lowRateMode0, lowRateMode1 INTEGER(23..66), sidMode0, sidMode1 INTEGER(6..17), ... }
const Type Int27_78 = integer(27, 78);
const Type Int23_66 = integer(23, 66);
const Type Int6_17 = integer(6, 17);
const Component G7231AnnexCCapability_g723AnnexCAudioMode_[] = {
    {"highRateMode0", Int27_78}, {"highRateMode1", Int27_78}, {"lowRateMode0", Int23_66},
    {"lowRateMode1", Int23_66},  {"sidMode0", Int6_17},       {"sidMode1", Int6_17},
};
const Type G7231AnnexCCapability_g723AnnexCAudioMode =
    sequence("g723AnnexCAudioMode", G7231AnnexCCapability_g723AnnexCAudioMode_, Extensible);
const Component G7231AnnexCCapability_[] = {
    {"maxAl_sduAudioFrames", Int1_256},
    {"silenceSuppression", Boolean},
    {"g723AnnexCAudioMode", G7231AnnexCCapability_g723AnnexCAudioMode, Optional},
};
const Type G7231AnnexCCapability = sequence("G7231AnnexCCapability", G7231AnnexCCapability_, Extensible);

const Component IS11172AudioCapability_[] = {
    {"audioLayer1", Boolean},      {"audioLayer2", Boolean},       {"audioLayer3", Boolean},
    {"audioSampling32k", Boolean}, {"audioSampling44k1", Boolean}, {"audioSampling48k", Boolean},
    {"singleChannel", Boolean},    {"twoChannels", Boolean},       {"bitRate", Int1_448},
};
const Type IS11172AudioCapability = sequence("IS11172AudioCapability", IS11172AudioCapability_, Extensible);

const Component IS13818AudioCapability_[] = {
    {"audioLayer1", Boolean},
    {"audioLayer2", Boolean},
    {"audioLayer3", Boolean},
    {"audioSampling16k", Boolean},
    {"audioSampling22k05", Boolean},
    {"audioSampling24k", Boolean},
    {"audioSampling32k", Boolean},
    {"audioSampling44k1", Boolean},
    {"audioSampling48k", Boolean},
    {"singleChannel", Boolean},
    {"twoChannels", Boolean},
    {"threeChannels2_1", Boolean},
    {"threeChannels3_0", Boolean},
    {"fourChannels2_0_2_0", Boolean},
    {"fourChannels2_2", Boolean},
    {"fourChannels3_1", Boolean},
    {"fiveChannels3_0_2_0", Boolean},
    {"fiveChannels3_2", Boolean},
    {"lowFrequencyEnhancement", Boolean},
    {"multilingual", Boolean},
    {"bitRate", Int1_1130},
};
const Type IS13818AudioCapability = sequence("IS13818AudioCapability", IS13818AudioCapability_, Extensible);

const Component GSMAudioCapability_[] = {
    {"audioUnitSize", Int1_256},
    {"comfortNoise", Boolean},
    {"scrambled", Boolean},
};
const Type GSMAudioCapability = sequence("GSMAudioCapability", GSMAudioCapability_, Extensible);

// VBDCapability ::= SEQUENCE { type AudioCapability, ... }  -- never "vbd" itself
const Component VBDCapability_[] = {{"type", AudioCapability}};
const Type VBDCapability = sequence("VBDCapability", VBDCapability_, Extensible);

const Component NoPTAudioTelephonyEventCapability_[] = {{"audioTelephoneEvent", GeneralText}};
const Type NoPTAudioTelephonyEventCapability =
    sequence("NoPTAudioTelephonyEventCapability", NoPTAudioTelephonyEventCapability_, Extensible);

const Type NoPTAudioToneCapability = emptySequence("NoPTAudioToneCapability", Extensible);

// ---- data capabilities ---------------------------------------------------

// nlpid SEQUENCE { nlpidProtocol DataProtocolCapability, nlpidData OCTET STRING },
// alike in DataApplicationCapability and DataMode.
const Component DataApplication_nlpid_[] = {
    {"nlpidProtocol", DataProtocolCapability},
    {"nlpidData", OctetString},
};
const Type DataApplication_nlpid = sequence("nlpid", DataApplication_nlpid_);

const Component DataApplicationCapability_application_t84_[] = {
    {"t84Protocol", DataProtocolCapability},
    {"t84Profile", T84Profile},
};
const Type DataApplicationCapability_application_t84 = sequence("t84", DataApplicationCapability_application_t84_);
const Component DataApplicationCapability_application_[] = {
    {"nonStandard", NonStandardParameter},
    {"t120", DataProtocolCapability},
    {"dsm_cc", DataProtocolCapability},
    {"userData", DataProtocolCapability},
    {"t84", DataApplicationCapability_application_t84},
    {"t434", DataProtocolCapability},
    {"h224", DataProtocolCapability},
    {"nlpid", DataApplication_nlpid},
    {"dsvdControl", Null},
    {"h222DataPartitioning", DataProtocolCapability},
    {"t30fax", DataProtocolCapability, Addition},
    {"t140", DataProtocolCapability, Addition},
    {"t38fax", OpenType, Addition},
    {"genericDataCapability", GenericCapability, Addition},
};
const Type DataApplicationCapability_application =
    choice("application", DataApplicationCapability_application_, Extensible);
const Component DataApplicationCapability_[] = {
    {"application", DataApplicationCapability_application},
    {"maxBitRate", Int0_4294967295},
};
const Type DataApplicationCapability = sequence("DataApplicationCapability", DataApplicationCapability_, Extensible);

const Component DataProtocolCapability_[] = {
    {"nonStandard", NonStandardParameter},
    {"v14buffered", Null},
    {"v42lapm", Null},
    {"hdlcFrameTunnelling", Null},
    {"h310SeparateVCStack", Null},
    {"h310SingleVCStack", Null},
    {"transparent", Null},
    {"segmentationAndReassembly", Null, Addition},
    {"hdlcFrameTunnelingwSAR", Null, Addition},
    {"v120", Null, Addition},
    {"separateLANStack", Null, Addition},
    {"v76wCompression", OpenType, Addition},
    {"tcp", Null, Addition},
    {"udp", Null, Addition},
};
const Type DataProtocolCapability = choice("DataProtocolCapability", DataProtocolCapability_, Extensible);

const Component T84Profile_t84Restricted_[] = {
    {"qcif", Boolean},
    {"cif", Boolean},
    {"ccir601Seq", Boolean},
    {"ccir601Prog", Boolean},
    {"hdtvSeq", Boolean},
    {"hdtvProg", Boolean},
    {"g3FacsMH200x100", Boolean},
    {"g3FacsMH200x200", Boolean},
    {"g4FacsMMR200x100", Boolean},
    {"g4FacsMMR200x200", Boolean},
    {"jbig200x200Seq", Boolean},
    {"jbig200x200Prog", Boolean},
    {"jbig300x300Seq", Boolean},
    {"jbig300x300Prog", Boolean},
    {"digPhotoLow", Boolean},
    {"digPhotoMedSeq", Boolean},
    {"digPhotoMedProg", Boolean},
    {"digPhotoHighSeq", Boolean},
    {"digPhotoHighProg", Boolean},
};
const Type T84Profile_t84Restricted = sequence("t84Restricted", T84Profile_t84Restricted_, Extensible);
const Component T84Profile_[] = {
    {"t84Unrestricted", Null},
    {"t84Restricted", T84Profile_t84Restricted},
};
const Type T84Profile = choice("T84Profile", T84Profile_);

// ---- generic capabilities ------------------------------------------------

const Type GenericCapability_collapsing = sequenceOf(GenericParameter);
const Component GenericCapability_[] = {
    {"capabilityIdentifier", CapabilityIdentifier},
    {"maxBitRate", Int0_4294967295, Optional},
    {"collapsing", GenericCapability_collapsing, Optional},
    {"nonCollapsing", GenericCapability_collapsing, Optional},
    {"nonCollapsingRaw", OctetString, Optional},
    {"transport", DataProtocolCapability, Optional},
};
const Type GenericCapability = sequence("GenericCapability", GenericCapability_, Extensible);

const Type CapabilityIdentifier_domainBased = ia5String(size(1, 64));
const Component CapabilityIdentifier_[] = {
    {"standard", ObjectIdentifier},
    {"h221NonStandard", NonStandardParameter},
    {"uuid", Octets16},
    {"domainBased", CapabilityIdentifier_domainBased},
};
const Type CapabilityIdentifier = choice("CapabilityIdentifier", CapabilityIdentifier_, Extensible);

const Type GenericParameter_supersedes = sequenceOf(ParameterIdentifier);
const Component GenericParameter_[] = {
    {"parameterIdentifier", ParameterIdentifier},
    {"parameterValue", ParameterValue},
    {"supersedes", GenericParameter_supersedes, Optional},
};
const Type GenericParameter = sequence("GenericParameter", GenericParameter_, Extensible);

const Component ParameterIdentifier_[] = {
    {"standard", Int0_127},
    {"h221NonStandard", NonStandardParameter},
    {"uuid", Octets16},
    {"domainBased", CapabilityIdentifier_domainBased},
};
const Type ParameterIdentifier = choice("ParameterIdentifier", ParameterIdentifier_, Extensible);

const Component ParameterValue_[] = {
    {"logical", Null},
    {"booleanArray", Int0_255},
    {"unsignedMin", Int0_65535},
    {"unsignedMax", Int0_65535},
    {"unsigned32Min", Int0_4294967295},
    {"unsigned32Max", Int0_4294967295},
    {"octetString", OctetString},
    {"genericParameter", GenericCapability_collapsing},
};
const Type ParameterValue = choice("ParameterValue", ParameterValue_, Extensible);

}  // namespace h323::h245
