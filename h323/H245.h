// H.245 control-channel types (module MULTIMEDIA-SYSTEM-CONTROL):
// MultimediaSystemControlMessage with every type its root alternatives and
// components reach, so that any H.245 message is read to its end or
// rejected, whatever it carries. OpenLogicalChannel is also a top type of
// its own: fast-start proposals carry it outside any message.
//
// Extension additions are described with their own type where that type is
// a leaf or already in these tables, and as per::OpenType (kept as their
// octets) otherwise. Three are described in full because the media
// description reads them: h2250LogicalChannelParameters in the multiplex
// parameters of OpenLogicalChannel and OpenLogicalChannelAck,
// forwardMultiplexAckParameters of OpenLogicalChannelAck, and the
// AudioCapability codecs from g729wAnnexB on.

#ifndef H323_H245_H
#define H323_H245_H

#include "h323/Per.h"

namespace h323::h245 {

extern const per::Type AlternativeCapabilitySet;
extern const per::Type AudioCapability;
extern const per::Type AudioMode;
extern const per::Type CRCLength;
extern const per::Type Capability;
extern const per::Type CapabilityDescriptor;
extern const per::Type CapabilityDescriptorNumber;
extern const per::Type CapabilityIdentifier;
extern const per::Type CapabilityTableEntry;
extern const per::Type CapabilityTableEntryNumber;
extern const per::Type CloseLogicalChannel;
extern const per::Type CloseLogicalChannelAck;
extern const per::Type CommandMessage;
extern const per::Type DataApplicationCapability;
extern const per::Type DataMode;
extern const per::Type DataProtocolCapability;
extern const per::Type DataType;
extern const per::Type EncryptionCommand;
extern const per::Type EncryptionMode;
extern const per::Type EndSessionCommand;
extern const per::Type FlowControlCommand;
extern const per::Type FunctionNotUnderstood;
extern const per::Type G7231AnnexCCapability;
extern const per::Type G729Extensions;
extern const per::Type GSMAudioCapability;
extern const per::Type GenericCapability;
extern const per::Type GenericParameter;
extern const per::Type H222Capability;
extern const per::Type H222LogicalChannelParameters;
extern const per::Type H223Capability;
extern const per::Type H223LogicalChannelParameters;
extern const per::Type H223ModeParameters;
extern const per::Type H223SkewIndication;
extern const per::Type H2250LogicalChannelAckParameters;
extern const per::Type H2250LogicalChannelParameters;
extern const per::Type H261VideoCapability;
extern const per::Type H261VideoMode;
extern const per::Type H262VideoCapability;
extern const per::Type H262VideoMode;
extern const per::Type H263VideoCapability;
extern const per::Type H263VideoMode;
extern const per::Type IS11172AudioCapability;
extern const per::Type IS11172AudioMode;
extern const per::Type IS11172VideoCapability;
extern const per::Type IS11172VideoMode;
extern const per::Type IS13818AudioCapability;
extern const per::Type IS13818AudioMode;
extern const per::Type IndicationMessage;
extern const per::Type JitterIndication;
extern const per::Type LogicalChannelNumber;
extern const per::Type MaintenanceLoopAck;
extern const per::Type MaintenanceLoopOffCommand;
extern const per::Type MaintenanceLoopReject;
extern const per::Type MaintenanceLoopRequest;
extern const per::Type MasterSlaveDetermination;
extern const per::Type MasterSlaveDeterminationAck;
extern const per::Type MasterSlaveDeterminationReject;
extern const per::Type MasterSlaveDeterminationRelease;
extern const per::Type McuNumber;
extern const per::Type MiscellaneousCommand;
extern const per::Type MiscellaneousIndication;
extern const per::Type ModeDescription;
extern const per::Type ModeElement;
extern const per::Type ModeElementType;
extern const per::Type MulticastAddress;
extern const per::Type MultimediaSystemControlMessage;
extern const per::Type MultiplexCapability;
extern const per::Type MultiplexElement;
extern const per::Type MultiplexEntryDescriptor;
extern const per::Type MultiplexEntryRejectionDescriptions;
extern const per::Type MultiplexEntrySend;
extern const per::Type MultiplexEntrySendAck;
extern const per::Type MultiplexEntrySendReject;
extern const per::Type MultiplexEntrySendRelease;
extern const per::Type MultiplexTableEntryNumber;
extern const per::Type NewATMVCIndication;
extern const per::Type NoPTAudioTelephonyEventCapability;
extern const per::Type NoPTAudioToneCapability;
extern const per::Type NonStandardIdentifier;
extern const per::Type NonStandardMessage;
extern const per::Type NonStandardParameter;
extern const per::Type OpenLogicalChannel;
extern const per::Type OpenLogicalChannelAck;
extern const per::Type OpenLogicalChannelConfirm;
extern const per::Type OpenLogicalChannelReject;
extern const per::Type ParameterIdentifier;
extern const per::Type ParameterValue;
extern const per::Type RequestChannelClose;
extern const per::Type RequestChannelCloseAck;
extern const per::Type RequestChannelCloseReject;
extern const per::Type RequestChannelCloseRelease;
extern const per::Type RequestMessage;
extern const per::Type RequestMode;
extern const per::Type RequestModeAck;
extern const per::Type RequestModeReject;
extern const per::Type RequestModeRelease;
extern const per::Type RequestMultiplexEntry;
extern const per::Type RequestMultiplexEntryAck;
extern const per::Type RequestMultiplexEntryReject;
extern const per::Type RequestMultiplexEntryRejectionDescriptions;
extern const per::Type RequestMultiplexEntryRelease;
extern const per::Type ResponseMessage;
extern const per::Type RoundTripDelayRequest;
extern const per::Type RoundTripDelayResponse;
extern const per::Type SendTerminalCapabilitySet;
extern const per::Type SequenceNumber;
extern const per::Type T84Profile;
extern const per::Type TerminalCapabilitySet;
extern const per::Type TerminalCapabilitySetAck;
extern const per::Type TerminalCapabilitySetReject;
extern const per::Type TerminalCapabilitySetRelease;
extern const per::Type TerminalLabel;
extern const per::Type TerminalNumber;
extern const per::Type TransportAddress;
extern const per::Type UnicastAddress;
extern const per::Type UserInputIndication;
extern const per::Type V75Capability;
extern const per::Type V75Parameters;
extern const per::Type V76Capability;
extern const per::Type V76HDLCParameters;
extern const per::Type V76LogicalChannelParameters;
extern const per::Type VBDCapability;
extern const per::Type VCCapability;
extern const per::Type VideoCapability;
extern const per::Type VideoMode;

// Every named type of this module, for tests that walk them all.
extern const per::Type* const kTypes[];
extern const size_t kTypeCount;

}  // namespace h323::h245

#endif
