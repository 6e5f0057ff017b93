// H.245 commands and indications.
#include "h323/H245Tables.h"

namespace h323::h245 {
using namespace per;
using namespace leaf;

// ---- commands ------------------------------------------------------------

const Type MaintenanceLoopOffCommand = emptySequence("MaintenanceLoopOffCommand", Extensible);

const Type SendTerminalCapabilitySet_specificRequest_capabilityTableEntryNumbers =
    sequenceOf(CapabilityTableEntryNumber, size(1, 65535));
const Type SendTerminalCapabilitySet_specificRequest_capabilityDescriptorNumbers =
    sequenceOf(CapabilityDescriptorNumber, size(1, 256));
const Component SendTerminalCapabilitySet_specificRequest_[] = {
    {"multiplexCapability", Boolean},
    {"capabilityTableEntryNumbers", SendTerminalCapabilitySet_specificRequest_capabilityTableEntryNumbers, Optional},
    {"capabilityDescriptorNumbers", SendTerminalCapabilitySet_specificRequest_capabilityDescriptorNumbers, Optional},
};
const Type SendTerminalCapabilitySet_specificRequest =
    sequence("specificRequest", SendTerminalCapabilitySet_specificRequest_, Extensible);
const Component SendTerminalCapabilitySet_[] = {
    {"specificRequest", SendTerminalCapabilitySet_specificRequest},
    {"genericRequest", Null},
};
const Type SendTerminalCapabilitySet = choice("SendTerminalCapabilitySet", SendTerminalCapabilitySet_, Extensible);

const Component EncryptionCommand_encryptionAlgorithmID_[] = {
    {"h233AlgorithmIdentifier", SequenceNumber},
    {"associatedAlgorithm", NonStandardParameter},
};
const Type EncryptionCommand_encryptionAlgorithmID =
    sequence("encryptionAlgorithmID", EncryptionCommand_encryptionAlgorithmID_);
const Component EncryptionCommand_[] = {
    {"encryptionSE", OctetString},
    {"encryptionIVRequest", Null},
    {"encryptionAlgorithmID", EncryptionCommand_encryptionAlgorithmID},
};
const Type EncryptionCommand = choice("EncryptionCommand", EncryptionCommand_, Extensible);

// scope CHOICE { logicalChannelNumber LogicalChannelNumber,
//   resourceID INTEGER(0..65535), wholeMultiplex NULL }, alike in
// FlowControlCommand and JitterIndication.
const Component FlowControlCommand_scope_[] = {
    {"logicalChannelNumber", LogicalChannelNumber},
    {"resourceID", Int0_65535},
    {"wholeMultiplex", Null},
};
const Type FlowControlCommand_scope = choice("scope", FlowControlCommand_scope_);
const Component FlowControlCommand_restriction_[] = {
    {"maximumBitRate", Int0_16777215},
    {"noRestriction", Null},
};
const Type FlowControlCommand_restriction = choice("restriction", FlowControlCommand_restriction_);
const Component FlowControlCommand_[] = {
    {"scope", FlowControlCommand_scope},
    {"restriction", FlowControlCommand_restriction},
};
const Type FlowControlCommand = sequence("FlowControlCommand", FlowControlCommand_, Extensible);

const Component EndSessionCommand_gstnOptions_[] = {
    {"telephonyMode", Null}, {"v8bis", Null}, {"v34DSVD", Null}, {"v34DuplexFAX", Null}, {"v34H324", Null},
};
const Type EndSessionCommand_gstnOptions = choice("gstnOptions", EndSessionCommand_gstnOptions_, Extensible);
const Component EndSessionCommand_[] = {
    {"nonStandard", NonStandardParameter},          {"disconnect", Null},
    {"gstnOptions", EndSessionCommand_gstnOptions}, {"isdnOptions", OpenType, Addition},
    {"genericInformation", OpenType, Addition},
};
const Type EndSessionCommand = choice("EndSessionCommand", EndSessionCommand_, Extensible);

// type CHOICE { ..., videoFastUpdateGOB SEQUENCE { firstGOB INTEGER(0..17),
//   numberOfGOBs INTEGER(1..18) }, videoTemporalSpatialTradeOff INTEGER(0..31), ... }
const Type Int0_17 = integer(0, 17);
const Type Int1_18 = integer(1, 18);
const Component MiscellaneousCommand_type_videoFastUpdateGOB_[] = {
    {"firstGOB", Int0_17},
    {"numberOfGOBs", Int1_18},
};
const Type MiscellaneousCommand_type_videoFastUpdateGOB =
    sequence("videoFastUpdateGOB", MiscellaneousCommand_type_videoFastUpdateGOB_);
const Component MiscellaneousCommand_type_[] = {
    {"equaliseDelay", Null},
    {"zeroDelay", Null},
    {"multipointModeCommand", Null},
    {"cancelMultipointModeCommand", Null},
    {"videoFreezePicture", Null},
    {"videoFastUpdatePicture", Null},
    {"videoFastUpdateGOB", MiscellaneousCommand_type_videoFastUpdateGOB},
    {"videoTemporalSpatialTradeOff", Int0_31},
    {"videoSendSyncEveryGOB", Null},
    {"videoSendSyncEveryGOBCancel", Null},
    {"videoFastUpdateMB", OpenType, Addition},
    {"maxH223MUXPDUsize", Int1_65535, Addition},
    {"encryptionUpdate", OpenType, Addition},
    {"encryptionUpdateRequest", OpenType, Addition},
    {"switchReceiveMediaOff", Null, Addition},
    {"switchReceiveMediaOn", Null, Addition},
    {"progressiveRefinementStart", OpenType, Addition},
    {"progressiveRefinementAbortOne", Null, Addition},
    {"progressiveRefinementAbortContinuous", Null, Addition},
    {"videoBadMBs", OpenType, Addition},
    {"lostPicture", OpenType, Addition},
    {"lostPartialPicture", OpenType, Addition},
    {"recoveryReferencePicture", OpenType, Addition},
    {"encryptionUpdateCommand", OpenType, Addition},
    {"encryptionUpdateAck", OpenType, Addition},
};
const Type MiscellaneousCommand_type = choice("type", MiscellaneousCommand_type_, Extensible);
const Component MiscellaneousCommand_[] = {
    {"logicalChannelNumber", LogicalChannelNumber},
    {"type", MiscellaneousCommand_type},
    {"direction", OpenType, Addition},
};
const Type MiscellaneousCommand = sequence("MiscellaneousCommand", MiscellaneousCommand_, Extensible);

// ---- indications ---------------------------------------------------------

// Returns a message the terminal did not understand.
const Component FunctionNotUnderstood_[] = {
    {"request", RequestMessage},
    {"response", ResponseMessage},
    {"command", CommandMessage},
};
const Type FunctionNotUnderstood = choice("FunctionNotUnderstood", FunctionNotUnderstood_);

const Component MiscellaneousIndication_type_[] = {
    {"logicalChannelActive", Null},
    {"logicalChannelInactive", Null},
    {"multipointConference", Null},
    {"cancelMultipointConference", Null},
    {"multipointZeroComm", Null},
    {"cancelMultipointZeroComm", Null},
    {"multipointSecondaryStatus", Null},
    {"cancelMultipointSecondaryStatus", Null},
    {"videoIndicateReadyToActivate", Null},
    {"videoTemporalSpatialTradeOff", Int0_31},
    {"videoNotDecodedMBs", OpenType, Addition},
    {"transportCapability", OpenType, Addition},
};
const Type MiscellaneousIndication_type = choice("type", MiscellaneousIndication_type_, Extensible);
const Component MiscellaneousIndication_[] = {
    {"logicalChannelNumber", LogicalChannelNumber},
    {"type", MiscellaneousIndication_type},
};
const Type MiscellaneousIndication = sequence("MiscellaneousIndication", MiscellaneousIndication_, Extensible);

const Component JitterIndication_[] = {
    {"scope", FlowControlCommand_scope},
    {"estimatedReceivedJitterMantissa", Int0_3},
    {"estimatedReceivedJitterExponent", Int0_7},
    {"skippedFrameCount", Int0_15, Optional},
    {"additionalDecoderBuffer", Int0_262143, Optional},
};
const Type JitterIndication = sequence("JitterIndication", JitterIndication_, Extensible);

const Component H223SkewIndication_[] = {
    {"logicalChannelNumber1", LogicalChannelNumber},
    {"logicalChannelNumber2", LogicalChannelNumber},
    {"skew", Int0_4095},
};
const Type H223SkewIndication = sequence("H223SkewIndication", H223SkewIndication_, Extensible);

const Component NewATMVCIndication_aal_aal1_clockRecovery_[] = {
    {"nullClockRecovery", Null},
    {"srtsClockRecovery", Null},
    {"adaptiveClockRecovery", Null},
};
const Type NewATMVCIndication_aal_aal1_clockRecovery =
    choice("clockRecovery", NewATMVCIndication_aal_aal1_clockRecovery_, Extensible);
const Component NewATMVCIndication_aal_aal1_errorCorrection_[] = {
    {"nullErrorCorrection", Null},
    {"longInterleaver", Null},
    {"shortInterleaver", Null},
    {"errorCorrectionOnly", Null},
};
const Type NewATMVCIndication_aal_aal1_errorCorrection =
    choice("errorCorrection", NewATMVCIndication_aal_aal1_errorCorrection_, Extensible);
const Component NewATMVCIndication_aal_aal1_[] = {
    {"clockRecovery", NewATMVCIndication_aal_aal1_clockRecovery},
    {"errorCorrection", NewATMVCIndication_aal_aal1_errorCorrection},
    {"structuredDataTransfer", Boolean},
    {"partiallyFilledCells", Boolean},
};
const Type NewATMVCIndication_aal_aal1 = sequence("aal1", NewATMVCIndication_aal_aal1_, Extensible);
const Component NewATMVCIndication_aal_aal5_[] = {
    {"forwardMaximumSDUSize", Int0_65535},
    {"backwardMaximumSDUSize", Int0_65535},
};
const Type NewATMVCIndication_aal_aal5 = sequence("aal5", NewATMVCIndication_aal_aal5_, Extensible);
const Component NewATMVCIndication_aal_[] = {
    {"aal1", NewATMVCIndication_aal_aal1},
    {"aal5", NewATMVCIndication_aal_aal5},
};
const Type NewATMVCIndication_aal = choice("aal", NewATMVCIndication_aal_, Extensible);
const Component NewATMVCIndication_multiplex_[] = {
    {"noMultiplex", Null},
    {"transportStream", Null},
    {"programStream", Null},
};
const Type NewATMVCIndication_multiplex = choice("multiplex", NewATMVCIndication_multiplex_, Extensible);
const Component NewATMVCIndication_[] = {
    {"resourceID", Int0_65535},
    {"bitRate", Int1_65535},
    {"bitRateLockedToPCRClock", Boolean},
    {"bitRateLockedToNetworkClock", Boolean},
    {"aal", NewATMVCIndication_aal},
    {"multiplex", NewATMVCIndication_multiplex},
    {"reverseParameters", OpenType, Addition},
};
const Type NewATMVCIndication = sequence("NewATMVCIndication", NewATMVCIndication_, Extensible);

// The signalling decoder reports `alphanumeric` user input (DTMF digits).
const Component UserInputIndication_[] = {
    {"nonStandard", NonStandardParameter},
    {"alphanumeric", GeneralText},
    {"userInputSupportIndication", OpenType, Addition},
    {"signal", OpenType, Addition},
    {"signalUpdate", OpenType, Addition},
    {"extendedAlphanumeric", OpenType, Addition},
    {"encryptedAlphanumeric", OpenType, Addition},
    {"genericInformation", OpenType, Addition},
};
const Type UserInputIndication = choice("UserInputIndication", UserInputIndication_, Extensible);

}  // namespace h323::h245
