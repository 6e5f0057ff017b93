// H.245 top-level messages, non-standard parameters, master-slave
// determination, round-trip delay and maintenance loops; the list of every
// named type of the module.
#include "h323/H245Tables.h"

namespace h323::h245 {
using namespace per;
using namespace leaf;

// ---- top level -----------------------------------------------------------

const Component MultimediaSystemControlMessage_[] = {
    {"request", RequestMessage},
    {"response", ResponseMessage},
    {"command", CommandMessage},
    {"indication", IndicationMessage},
};
const Type MultimediaSystemControlMessage =
    choice("MultimediaSystemControlMessage", MultimediaSystemControlMessage_, Extensible);

const Component RequestMessage_[] = {
    {"nonStandard", NonStandardMessage},
    {"masterSlaveDetermination", MasterSlaveDetermination},
    {"terminalCapabilitySet", TerminalCapabilitySet},
    {"openLogicalChannel", OpenLogicalChannel},
    {"closeLogicalChannel", CloseLogicalChannel},
    {"requestChannelClose", RequestChannelClose},
    {"multiplexEntrySend", MultiplexEntrySend},
    {"requestMultiplexEntry", RequestMultiplexEntry},
    {"requestMode", RequestMode},
    {"roundTripDelayRequest", RoundTripDelayRequest},
    {"maintenanceLoopRequest", MaintenanceLoopRequest},
    {"communicationModeRequest", OpenType, Addition},
    {"conferenceRequest", OpenType, Addition},
    {"multilinkRequest", OpenType, Addition},
    {"logicalChannelRateRequest", OpenType, Addition},
    {"genericRequest", OpenType, Addition},
};
const Type RequestMessage = choice("RequestMessage", RequestMessage_, Extensible);

const Component ResponseMessage_[] = {
    {"nonStandard", NonStandardMessage},
    {"masterSlaveDeterminationAck", MasterSlaveDeterminationAck},
    {"masterSlaveDeterminationReject", MasterSlaveDeterminationReject},
    {"terminalCapabilitySetAck", TerminalCapabilitySetAck},
    {"terminalCapabilitySetReject", TerminalCapabilitySetReject},
    {"openLogicalChannelAck", OpenLogicalChannelAck},
    {"openLogicalChannelReject", OpenLogicalChannelReject},
    {"closeLogicalChannelAck", CloseLogicalChannelAck},
    {"requestChannelCloseAck", RequestChannelCloseAck},
    {"requestChannelCloseReject", RequestChannelCloseReject},
    {"multiplexEntrySendAck", MultiplexEntrySendAck},
    {"multiplexEntrySendReject", MultiplexEntrySendReject},
    {"requestMultiplexEntryAck", RequestMultiplexEntryAck},
    {"requestMultiplexEntryReject", RequestMultiplexEntryReject},
    {"requestModeAck", RequestModeAck},
    {"requestModeReject", RequestModeReject},
    {"roundTripDelayResponse", RoundTripDelayResponse},
    {"maintenanceLoopAck", MaintenanceLoopAck},
    {"maintenanceLoopReject", MaintenanceLoopReject},
    {"communicationModeResponse", OpenType, Addition},
    {"conferenceResponse", OpenType, Addition},
    {"multilinkResponse", OpenType, Addition},
    {"logicalChannelRateAcknowledge", OpenType, Addition},
    {"logicalChannelRateReject", OpenType, Addition},
    {"genericResponse", OpenType, Addition},
};
const Type ResponseMessage = choice("ResponseMessage", ResponseMessage_, Extensible);

const Component CommandMessage_[] = {
    {"nonStandard", NonStandardMessage},
    {"maintenanceLoopOffCommand", MaintenanceLoopOffCommand},
    {"sendTerminalCapabilitySet", SendTerminalCapabilitySet},
    {"encryptionCommand", EncryptionCommand},
    {"flowControlCommand", FlowControlCommand},
    {"endSessionCommand", EndSessionCommand},
    {"miscellaneousCommand", MiscellaneousCommand},
    {"communicationModeCommand", OpenType, Addition},
    {"conferenceCommand", OpenType, Addition},
    {"h223MultiplexReconfiguration", OpenType, Addition},
    {"newATMVCCommand", OpenType, Addition},
    {"mobileMultilinkReconfigurationCommand", OpenType, Addition},
    {"genericCommand", OpenType, Addition},
};
const Type CommandMessage = choice("CommandMessage", CommandMessage_, Extensible);

const Component IndicationMessage_[] = {
    {"nonStandard", NonStandardMessage},
    {"functionNotUnderstood", FunctionNotUnderstood},
    {"masterSlaveDeterminationRelease", MasterSlaveDeterminationRelease},
    {"terminalCapabilitySetRelease", TerminalCapabilitySetRelease},
    {"openLogicalChannelConfirm", OpenLogicalChannelConfirm},
    {"requestChannelCloseRelease", RequestChannelCloseRelease},
    {"multiplexEntrySendRelease", MultiplexEntrySendRelease},
    {"requestMultiplexEntryRelease", RequestMultiplexEntryRelease},
    {"requestModeRelease", RequestModeRelease},
    {"miscellaneousIndication", MiscellaneousIndication},
    {"jitterIndication", JitterIndication},
    {"h223SkewIndication", H223SkewIndication},
    {"newATMVCIndication", NewATMVCIndication},
    {"userInput", UserInputIndication},
    {"h2250MaximumSkewIndication", OpenType, Addition},
    {"mcLocationIndication", OpenType, Addition},
    {"conferenceIndication", OpenType, Addition},
    {"vendorIdentification", OpenType, Addition},
    {"functionNotSupported", OpenType, Addition},
    {"multilinkIndication", OpenType, Addition},
    {"logicalChannelRateRelease", OpenType, Addition},
    {"flowControlIndication", OpenType, Addition},
    {"mobileMultilinkReconfigurationIndication", OpenType, Addition},
    {"genericIndication", OpenType, Addition},
};
const Type IndicationMessage = choice("IndicationMessage", IndicationMessage_, Extensible);

const Type SequenceNumber = integer(0, 255);

// ---- non-standard parameters ---------------------------------------------

// Unlike H.225.0's, H.245's identifier and its h221NonStandard have no
// extension marker.
const Component NonStandardIdentifier_h221NonStandard_[] = {
    {"t35CountryCode", Int0_255},
    {"t35Extension", Int0_255},
    {"manufacturerCode", Int0_65535},
};
const Type NonStandardIdentifier_h221NonStandard = sequence("h221NonStandard", NonStandardIdentifier_h221NonStandard_);
const Component NonStandardIdentifier_[] = {
    {"object", ObjectIdentifier},
    {"h221NonStandard", NonStandardIdentifier_h221NonStandard},
};
const Type NonStandardIdentifier = choice("NonStandardIdentifier", NonStandardIdentifier_);

const Component NonStandardParameter_[] = {
    {"nonStandardIdentifier", NonStandardIdentifier},
    {"data", OctetString},
};
const Type NonStandardParameter = sequence("NonStandardParameter", NonStandardParameter_);

const Component NonStandardMessage_[] = {{"nonStandardData", NonStandardParameter}};
const Type NonStandardMessage = sequence("NonStandardMessage", NonStandardMessage_, Extensible);

// ---- master-slave determination ------------------------------------------

const Component MasterSlaveDetermination_[] = {
    {"terminalType", Int0_255},
    {"statusDeterminationNumber", Int0_16777215},
};
const Type MasterSlaveDetermination = sequence("MasterSlaveDetermination", MasterSlaveDetermination_, Extensible);

const Component MasterSlaveDeterminationAck_decision_[] = {{"master", Null}, {"slave", Null}};
const Type MasterSlaveDeterminationAck_decision = choice("decision", MasterSlaveDeterminationAck_decision_);
const Component MasterSlaveDeterminationAck_[] = {{"decision", MasterSlaveDeterminationAck_decision}};
const Type MasterSlaveDeterminationAck =
    sequence("MasterSlaveDeterminationAck", MasterSlaveDeterminationAck_, Extensible);

const Component MasterSlaveDeterminationReject_cause_[] = {{"identicalNumbers", Null}};
const Type MasterSlaveDeterminationReject_cause = choice("cause", MasterSlaveDeterminationReject_cause_, Extensible);
const Component MasterSlaveDeterminationReject_[] = {{"cause", MasterSlaveDeterminationReject_cause}};
const Type MasterSlaveDeterminationReject =
    sequence("MasterSlaveDeterminationReject", MasterSlaveDeterminationReject_, Extensible);

const Type MasterSlaveDeterminationRelease = emptySequence("MasterSlaveDeterminationRelease", Extensible);

// ---- round-trip delay and maintenance loops ------------------------------

// RoundTripDelayRequest and RoundTripDelayResponse
// ::= SEQUENCE { sequenceNumber SequenceNumber, ... }
const Component SequenceNumberOnly_[] = {{"sequenceNumber", SequenceNumber}};
const Type RoundTripDelayRequest = sequence("RoundTripDelayRequest", SequenceNumberOnly_, Extensible);
const Type RoundTripDelayResponse = sequence("RoundTripDelayResponse", SequenceNumberOnly_, Extensible);

// type CHOICE { systemLoop NULL, mediaLoop, logicalChannelLoop LogicalChannelNumber, ... },
// alike in the three maintenance loop messages.
const Component MaintenanceLoop_type_[] = {
    {"systemLoop", Null},
    {"mediaLoop", LogicalChannelNumber},
    {"logicalChannelLoop", LogicalChannelNumber},
};
const Type MaintenanceLoop_type = choice("type", MaintenanceLoop_type_, Extensible);
const Component MaintenanceLoopTypeOnly_[] = {{"type", MaintenanceLoop_type}};
const Type MaintenanceLoopRequest = sequence("MaintenanceLoopRequest", MaintenanceLoopTypeOnly_, Extensible);
const Type MaintenanceLoopAck = sequence("MaintenanceLoopAck", MaintenanceLoopTypeOnly_, Extensible);

const Component MaintenanceLoopReject_cause_[] = {{"canNotPerformLoop", Null}};
const Type MaintenanceLoopReject_cause = choice("cause", MaintenanceLoopReject_cause_, Extensible);
const Component MaintenanceLoopReject_[] = {
    {"type", MaintenanceLoop_type},
    {"cause", MaintenanceLoopReject_cause},
};
const Type MaintenanceLoopReject = sequence("MaintenanceLoopReject", MaintenanceLoopReject_, Extensible);

const Type* const kTypes[] = {
    &AlternativeCapabilitySet,
    &AudioCapability,
    &AudioMode,
    &CRCLength,
    &Capability,
    &CapabilityDescriptor,
    &CapabilityDescriptorNumber,
    &CapabilityIdentifier,
    &CapabilityTableEntry,
    &CapabilityTableEntryNumber,
    &CloseLogicalChannel,
    &CloseLogicalChannelAck,
    &CommandMessage,
    &DataApplicationCapability,
    &DataMode,
    &DataProtocolCapability,
    &DataType,
    &EncryptionCommand,
    &EncryptionMode,
    &EndSessionCommand,
    &FlowControlCommand,
    &FunctionNotUnderstood,
    &G7231AnnexCCapability,
    &G729Extensions,
    &GSMAudioCapability,
    &GenericCapability,
    &GenericParameter,
    &H222Capability,
    &H222LogicalChannelParameters,
    &H223Capability,
    &H223LogicalChannelParameters,
    &H223ModeParameters,
    &H223SkewIndication,
    &H2250LogicalChannelAckParameters,
    &H2250LogicalChannelParameters,
    &H261VideoCapability,
    &H261VideoMode,
    &H262VideoCapability,
    &H262VideoMode,
    &H263VideoCapability,
    &H263VideoMode,
    &IS11172AudioCapability,
    &IS11172AudioMode,
    &IS11172VideoCapability,
    &IS11172VideoMode,
    &IS13818AudioCapability,
    &IS13818AudioMode,
    &IndicationMessage,
    &JitterIndication,
    &LogicalChannelNumber,
    &MaintenanceLoopAck,
    &MaintenanceLoopOffCommand,
    &MaintenanceLoopReject,
    &MaintenanceLoopRequest,
    &MasterSlaveDetermination,
    &MasterSlaveDeterminationAck,
    &MasterSlaveDeterminationReject,
    &MasterSlaveDeterminationRelease,
    &McuNumber,
    &MiscellaneousCommand,
    &MiscellaneousIndication,
    &ModeDescription,
    &ModeElement,
    &ModeElementType,
    &MulticastAddress,
    &MultimediaSystemControlMessage,
    &MultiplexCapability,
    &MultiplexElement,
    &MultiplexEntryDescriptor,
    &MultiplexEntryRejectionDescriptions,
    &MultiplexEntrySend,
    &MultiplexEntrySendAck,
    &MultiplexEntrySendReject,
    &MultiplexEntrySendRelease,
    &MultiplexTableEntryNumber,
    &NewATMVCIndication,
    &NoPTAudioTelephonyEventCapability,
    &NoPTAudioToneCapability,
    &NonStandardIdentifier,
    &NonStandardMessage,
    &NonStandardParameter,
    &OpenLogicalChannel,
    &OpenLogicalChannelAck,
    &OpenLogicalChannelConfirm,
    &OpenLogicalChannelReject,
    &ParameterIdentifier,
    &ParameterValue,
    &RequestChannelClose,
    &RequestChannelCloseAck,
    &RequestChannelCloseReject,
    &RequestChannelCloseRelease,
    &RequestMessage,
    &RequestMode,
    &RequestModeAck,
    &RequestModeReject,
    &RequestModeRelease,
    &RequestMultiplexEntry,
    &RequestMultiplexEntryAck,
    &RequestMultiplexEntryReject,
    &RequestMultiplexEntryRejectionDescriptions,
    &RequestMultiplexEntryRelease,
    &ResponseMessage,
    &RoundTripDelayRequest,
    &RoundTripDelayResponse,
    &SendTerminalCapabilitySet,
    &SequenceNumber,
    &T84Profile,
    &TerminalCapabilitySet,
    &TerminalCapabilitySetAck,
    &TerminalCapabilitySetReject,
    &TerminalCapabilitySetRelease,
    &TerminalLabel,
    &TerminalNumber,
    &TransportAddress,
    &UnicastAddress,
    &UserInputIndication,
    &V75Capability,
    &V75Parameters,
    &V76Capability,
    &V76HDLCParameters,
    &V76LogicalChannelParameters,
    &VBDCapability,
    &VCCapability,
    &VideoCapability,
    &VideoMode,
};
const size_t kTypeCount = sizeof(kTypes) / sizeof(kTypes[0]);

}  // namespace h323::h245
