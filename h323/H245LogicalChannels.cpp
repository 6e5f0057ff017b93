// H.245 logical channel signalling: OpenLogicalChannel and its answers, the
// multiplex parameters of each channel, and the transport addresses of its
// media.
#include "h323/H245Tables.h"

namespace h323::h245 {
using namespace per;
using namespace leaf;

const Type LogicalChannelNumber = integer(1, 65535);

// ---- OpenLogicalChannel --------------------------------------------------

// Only the H.225.0 alternative of the multiplex parameters, an addition, is
// described in full: it carries the media addresses of the channel.
const Component OpenLogicalChannel_forwardLogicalChannelParameters_multiplexParameters_[] = {
    {"h222LogicalChannelParameters", H222LogicalChannelParameters},
    {"h223LogicalChannelParameters", H223LogicalChannelParameters},
    {"v76LogicalChannelParameters", V76LogicalChannelParameters},
    {"h2250LogicalChannelParameters", H2250LogicalChannelParameters, Addition},
    {"none", Null, Addition},
};
const Type OpenLogicalChannel_forwardLogicalChannelParameters_multiplexParameters =
    choice("multiplexParameters", OpenLogicalChannel_forwardLogicalChannelParameters_multiplexParameters_, Extensible);
const Component OpenLogicalChannel_forwardLogicalChannelParameters_[] = {
    {"portNumber", Int0_65535, Optional},
    {"dataType", DataType},
    {"multiplexParameters", OpenLogicalChannel_forwardLogicalChannelParameters_multiplexParameters},
    {"forwardLogicalChannelDependency", LogicalChannelNumber, Addition},
    {"replacementFor", LogicalChannelNumber, Addition},
};
const Type OpenLogicalChannel_forwardLogicalChannelParameters =
    sequence("forwardLogicalChannelParameters", OpenLogicalChannel_forwardLogicalChannelParameters_, Extensible);

const Component OpenLogicalChannel_reverseLogicalChannelParameters_multiplexParameters_[] = {
    {"h223LogicalChannelParameters", H223LogicalChannelParameters},
    {"v76LogicalChannelParameters", V76LogicalChannelParameters},
    {"h2250LogicalChannelParameters", H2250LogicalChannelParameters, Addition},
};
const Type OpenLogicalChannel_reverseLogicalChannelParameters_multiplexParameters =
    choice("multiplexParameters", OpenLogicalChannel_reverseLogicalChannelParameters_multiplexParameters_, Extensible);
const Component OpenLogicalChannel_reverseLogicalChannelParameters_[] = {
    {"dataType", DataType},
    {"multiplexParameters", OpenLogicalChannel_reverseLogicalChannelParameters_multiplexParameters, Optional},
    {"reverseLogicalChannelDependency", LogicalChannelNumber, Addition},
    {"replacementFor", LogicalChannelNumber, Addition},
};
const Type OpenLogicalChannel_reverseLogicalChannelParameters =
    sequence("reverseLogicalChannelParameters", OpenLogicalChannel_reverseLogicalChannelParameters_, Extensible);

const Component OpenLogicalChannel_[] = {
    {"forwardLogicalChannelNumber", LogicalChannelNumber},
    {"forwardLogicalChannelParameters", OpenLogicalChannel_forwardLogicalChannelParameters},
    {"reverseLogicalChannelParameters", OpenLogicalChannel_reverseLogicalChannelParameters, Optional},
    {"separateStack", OpenType, Addition},
    {"encryptionSync", OpenType, Addition},
    {"genericInformation", OpenType, Addition},
};
const Type OpenLogicalChannel = sequence("OpenLogicalChannel", OpenLogicalChannel_, Extensible);

const Component DataType_[] = {
    {"nonStandard", NonStandardParameter},
    {"nullData", Null},
    {"videoData", VideoCapability},
    {"audioData", AudioCapability},
    {"data", DataApplicationCapability},
    {"encryptionData", EncryptionMode},
    {"h235Control", NonStandardParameter, Addition},
    {"h235Media", OpenType, Addition},
    {"multiplexedStream", OpenType, Addition},
    {"redundancyEncoding", OpenType, Addition},
    {"multiplePayloadStream", OpenType, Addition},
    {"depFec", OpenType, Addition},
    {"fec", OpenType, Addition},
};
const Type DataType = choice("DataType", DataType_, Extensible);

const Component EncryptionMode_[] = {
    {"nonStandard", NonStandardParameter},
    {"h233Encryption", Null},
};
const Type EncryptionMode = choice("EncryptionMode", EncryptionMode_, Extensible);

// ---- multiplex parameters ------------------------------------------------

const Component H222LogicalChannelParameters_[] = {
    {"resourceID", Int0_65535},
    {"subChannelID", Int0_8191},
    {"pcr_pid", Int0_8191, Optional},
    {"programDescriptors", OctetString, Optional},
    {"streamDescriptors", OctetString, Optional},
};
const Type H222LogicalChannelParameters =
    sequence("H222LogicalChannelParameters", H222LogicalChannelParameters_, Extensible);

// adaptationLayerType CHOICE { nonStandard, al1Framed, al1NotFramed,
//   al2WithoutSequenceNumbers, al2WithSequenceNumbers, al3 SEQUENCE {
//   controlFieldOctets INTEGER(0..2), sendBufferSize INTEGER(0..16777215) },
//   ..., al1M, al2M, al3M }, alike in H223LogicalChannelParameters and
// H223ModeParameters.
const Component H223_adaptationLayerType_al3_[] = {
    {"controlFieldOctets", Int0_2},
    {"sendBufferSize", Int0_16777215},
};
const Type H223_adaptationLayerType_al3 = sequence("al3", H223_adaptationLayerType_al3_);
const Component H223_adaptationLayerType_[] = {
    {"nonStandard", NonStandardParameter},
    {"al1Framed", Null},
    {"al1NotFramed", Null},
    {"al2WithoutSequenceNumbers", Null},
    {"al2WithSequenceNumbers", Null},
    {"al3", H223_adaptationLayerType_al3},
    {"al1M", OpenType, Addition},
    {"al2M", OpenType, Addition},
    {"al3M", OpenType, Addition},
};
const Type H223_adaptationLayerType = choice("adaptationLayerType", H223_adaptationLayerType_, Extensible);

const Component H223LogicalChannelParameters_[] = {
    {"adaptationLayerType", H223_adaptationLayerType},
    {"segmentableFlag", Boolean},
};
const Type H223LogicalChannelParameters =
    sequence("H223LogicalChannelParameters", H223LogicalChannelParameters_, Extensible);

const Component V76LogicalChannelParameters_suspendResume_[] = {
    {"noSuspendResume", Null},
    {"suspendResumewAddress", Null},
    {"suspendResumewoAddress", Null},
};
const Type V76LogicalChannelParameters_suspendResume =
    choice("suspendResume", V76LogicalChannelParameters_suspendResume_, Extensible);
const Component V76LogicalChannelParameters_mode_eRM_recovery_[] = {
    {"rej", Null},
    {"sREJ", Null},
    {"mSREJ", Null},
};
const Type V76LogicalChannelParameters_mode_eRM_recovery =
    choice("recovery", V76LogicalChannelParameters_mode_eRM_recovery_, Extensible);
const Component V76LogicalChannelParameters_mode_eRM_[] = {
    {"windowSize", Int1_127},
    {"recovery", V76LogicalChannelParameters_mode_eRM_recovery},
};
const Type V76LogicalChannelParameters_mode_eRM = sequence("eRM", V76LogicalChannelParameters_mode_eRM_, Extensible);
const Component V76LogicalChannelParameters_mode_[] = {
    {"eRM", V76LogicalChannelParameters_mode_eRM},
    {"uNERM", Null},
};
const Type V76LogicalChannelParameters_mode = choice("mode", V76LogicalChannelParameters_mode_, Extensible);
const Component V76LogicalChannelParameters_[] = {
    {"hdlcParameters", V76HDLCParameters},
    {"suspendResume", V76LogicalChannelParameters_suspendResume},
    {"uIH", Boolean},
    {"mode", V76LogicalChannelParameters_mode},
    {"v75Parameters", V75Parameters},
};
const Type V76LogicalChannelParameters =
    sequence("V76LogicalChannelParameters", V76LogicalChannelParameters_, Extensible);

const Component V76HDLCParameters_[] = {
    {"crcLength", CRCLength},
    {"n401", Int1_4095},
    {"loopbackTestProcedure", Boolean},
};
const Type V76HDLCParameters = sequence("V76HDLCParameters", V76HDLCParameters_, Extensible);

const Component CRCLength_[] = {{"crc8bit", Null}, {"crc16bit", Null}, {"crc32bit", Null}};
const Type CRCLength = choice("CRCLength", CRCLength_, Extensible);

const Component V75Parameters_[] = {{"audioHeaderPresent", Boolean}};
const Type V75Parameters = sequence("V75Parameters", V75Parameters_, Extensible);

const Type H2250LogicalChannelParameters_nonStandard = sequenceOf(NonStandardParameter);
const Component H2250LogicalChannelParameters_mediaPacketization_[] = {
    {"h261aVideoPacketization", Null},
    {"rtpPayloadType", OpenType, Addition},
};
const Type H2250LogicalChannelParameters_mediaPacketization =
    choice("mediaPacketization", H2250LogicalChannelParameters_mediaPacketization_, Extensible);
const Component H2250LogicalChannelParameters_[] = {
    {"nonStandard", H2250LogicalChannelParameters_nonStandard, Optional},
    {"sessionID", Int0_255},
    {"associatedSessionID", Int1_255, Optional},
    {"mediaChannel", TransportAddress, Optional},
    {"mediaGuaranteedDelivery", Boolean, Optional},
    {"mediaControlChannel", TransportAddress, Optional},
    {"mediaControlGuaranteedDelivery", Boolean, Optional},
    {"silenceSuppression", Boolean, Optional},
    {"destination", TerminalLabel, Optional},
    {"dynamicRTPPayloadType", Int96_127, Optional},
    {"mediaPacketization", H2250LogicalChannelParameters_mediaPacketization, Optional},
    {"transportCapability", OpenType, Addition},
    {"redundancyEncoding", OpenType, Addition},
    {"source", TerminalLabel, Addition},
};
const Type H2250LogicalChannelParameters =
    sequence("H2250LogicalChannelParameters", H2250LogicalChannelParameters_, Extensible);

// ---- transport addresses -------------------------------------------------

// iPAddress and iP6Address read alike in UnicastAddress and MulticastAddress.
const Component UnicastAddress_iPAddress_[] = {{"network", Octets4}, {"tsapIdentifier", Int0_65535}};
const Type UnicastAddress_iPAddress = sequence("iPAddress", UnicastAddress_iPAddress_, Extensible);
const Component UnicastAddress_iP6Address_[] = {{"network", Octets16}, {"tsapIdentifier", Int0_65535}};
const Type UnicastAddress_iP6Address = sequence("iP6Address", UnicastAddress_iP6Address_, Extensible);

const Component TransportAddress_[] = {
    {"unicastAddress", UnicastAddress},
    {"multicastAddress", MulticastAddress},
};
const Type TransportAddress = choice("TransportAddress", TransportAddress_, Extensible);

const Component UnicastAddress_iPXAddress_[] = {
    {"node", Octets6},
    {"netnum", Octets4},
    {"tsapIdentifier", Octets2},
};
const Type UnicastAddress_iPXAddress = sequence("iPXAddress", UnicastAddress_iPXAddress_, Extensible);
const Component UnicastAddress_iPSourceRouteAddress_routing_[] = {{"strict", Null}, {"loose", Null}};
const Type UnicastAddress_iPSourceRouteAddress_routing =
    choice("routing", UnicastAddress_iPSourceRouteAddress_routing_);
const Type UnicastAddress_iPSourceRouteAddress_route = sequenceOf(Octets4);
const Component UnicastAddress_iPSourceRouteAddress_[] = {
    {"routing", UnicastAddress_iPSourceRouteAddress_routing},
    {"network", Octets4},
    {"tsapIdentifier", Int0_65535},
    {"route", UnicastAddress_iPSourceRouteAddress_route},
};
const Type UnicastAddress_iPSourceRouteAddress =
    sequence("iPSourceRouteAddress", UnicastAddress_iPSourceRouteAddress_, Extensible);
const Component UnicastAddress_[] = {
    {"iPAddress", UnicastAddress_iPAddress},
    {"iPXAddress", UnicastAddress_iPXAddress},
    {"iP6Address", UnicastAddress_iP6Address},
    {"netBios", Octets16},
    {"iPSourceRouteAddress", UnicastAddress_iPSourceRouteAddress},
    {"nsap", Octets1_20, Addition},
    {"nonStandardAddress", NonStandardParameter, Addition},
};
const Type UnicastAddress = choice("UnicastAddress", UnicastAddress_, Extensible);

const Component MulticastAddress_[] = {
    {"iPAddress", UnicastAddress_iPAddress},
    {"iP6Address", UnicastAddress_iP6Address},
    {"nsap", Octets1_20, Addition},
    {"nonStandardAddress", NonStandardParameter, Addition},
};
const Type MulticastAddress = choice("MulticastAddress", MulticastAddress_, Extensible);

const Type McuNumber = integer(0, 192);
const Type TerminalNumber = integer(0, 192);
const Component TerminalLabel_[] = {{"mcuNumber", McuNumber}, {"terminalNumber", TerminalNumber}};
const Type TerminalLabel = sequence("TerminalLabel", TerminalLabel_, Extensible);

// ---- answers to OpenLogicalChannel ---------------------------------------

const Component OpenLogicalChannelAck_reverseLogicalChannelParameters_multiplexParameters_[] = {
    {"h222LogicalChannelParameters", H222LogicalChannelParameters},
    {"h2250LogicalChannelParameters", H2250LogicalChannelParameters, Addition},
};
const Type OpenLogicalChannelAck_reverseLogicalChannelParameters_multiplexParameters = choice(
    "multiplexParameters", OpenLogicalChannelAck_reverseLogicalChannelParameters_multiplexParameters_, Extensible);
const Component OpenLogicalChannelAck_reverseLogicalChannelParameters_[] = {
    {"reverseLogicalChannelNumber", LogicalChannelNumber},
    {"portNumber", Int0_65535, Optional},
    {"multiplexParameters", OpenLogicalChannelAck_reverseLogicalChannelParameters_multiplexParameters, Optional},
    {"replacementFor", LogicalChannelNumber, Addition},
};
const Type OpenLogicalChannelAck_reverseLogicalChannelParameters =
    sequence("reverseLogicalChannelParameters", OpenLogicalChannelAck_reverseLogicalChannelParameters_, Extensible);
const Component OpenLogicalChannelAck_forwardMultiplexAckParameters_[] = {
    {"h2250LogicalChannelAckParameters", H2250LogicalChannelAckParameters},
};
const Type OpenLogicalChannelAck_forwardMultiplexAckParameters =
    choice("forwardMultiplexAckParameters", OpenLogicalChannelAck_forwardMultiplexAckParameters_, Extensible);
const Component OpenLogicalChannelAck_[] = {
    {"forwardLogicalChannelNumber", LogicalChannelNumber},
    {"reverseLogicalChannelParameters", OpenLogicalChannelAck_reverseLogicalChannelParameters, Optional},
    {"separateStack", OpenType, Addition},
    {"forwardMultiplexAckParameters", OpenLogicalChannelAck_forwardMultiplexAckParameters, Addition},
    {"encryptionSync", OpenType, Addition},
    {"genericInformation", OpenType, Addition},
};
const Type OpenLogicalChannelAck = sequence("OpenLogicalChannelAck", OpenLogicalChannelAck_, Extensible);

const Component H2250LogicalChannelAckParameters_[] = {
    {"nonStandard", H2250LogicalChannelParameters_nonStandard, Optional},
    {"sessionID", Int1_255, Optional},
    {"mediaChannel", TransportAddress, Optional},
    {"mediaControlChannel", TransportAddress, Optional},
    {"dynamicRTPPayloadType", Int96_127, Optional},
    {"flowControlToZero", Boolean, Addition},
    {"portNumber", Int0_65535, Addition},
};
const Type H2250LogicalChannelAckParameters =
    sequence("H2250LogicalChannelAckParameters", H2250LogicalChannelAckParameters_, Extensible);

const Component OpenLogicalChannelReject_cause_[] = {
    {"unspecified", Null},
    {"unsuitableReverseParameters", Null},
    {"dataTypeNotSupported", Null},
    {"dataTypeNotAvailable", Null},
    {"unknownDataType", Null},
    {"dataTypeALCombinationNotSupported", Null},
    {"multicastChannelNotAllowed", Null, Addition},
    {"insufficientBandwidth", Null, Addition},
    {"separateStackEstablishmentFailed", Null, Addition},
    {"invalidSessionID", Null, Addition},
    {"masterSlaveConflict", Null, Addition},
    {"waitForCommunicationMode", Null, Addition},
    {"invalidDependentChannel", Null, Addition},
    {"replacementForRejected", Null, Addition},
    {"securityDenied", Null, Addition},
};
const Type OpenLogicalChannelReject_cause = choice("cause", OpenLogicalChannelReject_cause_, Extensible);
const Component OpenLogicalChannelReject_[] = {
    {"forwardLogicalChannelNumber", LogicalChannelNumber},
    {"cause", OpenLogicalChannelReject_cause},
    {"genericInformation", OpenType, Addition},
};
const Type OpenLogicalChannelReject = sequence("OpenLogicalChannelReject", OpenLogicalChannelReject_, Extensible);

const Component OpenLogicalChannelConfirm_[] = {
    {"forwardLogicalChannelNumber", LogicalChannelNumber},
    {"genericInformation", OpenType, Addition},
};
const Type OpenLogicalChannelConfirm = sequence("OpenLogicalChannelConfirm", OpenLogicalChannelConfirm_, Extensible);

// ---- closing channels ----------------------------------------------------

// CloseLogicalChannelAck, RequestChannelCloseAck and RequestChannelCloseRelease
// ::= SEQUENCE { forwardLogicalChannelNumber LogicalChannelNumber, ... }
const Component ChannelNumberOnly_[] = {{"forwardLogicalChannelNumber", LogicalChannelNumber}};

const Component CloseLogicalChannel_source_[] = {{"user", Null}, {"lcse", Null}};
const Type CloseLogicalChannel_source = choice("source", CloseLogicalChannel_source_);
const Component CloseLogicalChannel_[] = {
    {"forwardLogicalChannelNumber", LogicalChannelNumber},
    {"source", CloseLogicalChannel_source},
    {"reason", OpenType, Addition},
};
const Type CloseLogicalChannel = sequence("CloseLogicalChannel", CloseLogicalChannel_, Extensible);
const Type CloseLogicalChannelAck = sequence("CloseLogicalChannelAck", ChannelNumberOnly_, Extensible);

const Component RequestChannelClose_[] = {
    {"forwardLogicalChannelNumber", LogicalChannelNumber},
    {"qosCapability", OpenType, Addition},
    {"reason", OpenType, Addition},
};
const Type RequestChannelClose = sequence("RequestChannelClose", RequestChannelClose_, Extensible);
const Type RequestChannelCloseAck = sequence("RequestChannelCloseAck", ChannelNumberOnly_, Extensible);
const Component RequestChannelCloseReject_cause_[] = {{"unspecified", Null}};
const Type RequestChannelCloseReject_cause = choice("cause", RequestChannelCloseReject_cause_, Extensible);
const Component RequestChannelCloseReject_[] = {
    {"forwardLogicalChannelNumber", LogicalChannelNumber},
    {"cause", RequestChannelCloseReject_cause},
};
const Type RequestChannelCloseReject = sequence("RequestChannelCloseReject", RequestChannelCloseReject_, Extensible);
const Type RequestChannelCloseRelease = sequence("RequestChannelCloseRelease", ChannelNumberOnly_, Extensible);

}  // namespace h323::h245
