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

// Inline types that the component references below belong to.
extern const per::Type MultimediaSystemControlMessage;
extern const per::Type RequestMessage;
extern const per::Type ResponseMessage;
extern const per::Type IndicationMessage;
extern const per::Type UserInputIndication;
extern const per::Type OpenLogicalChannel;
extern const per::Type OpenLogicalChannel_forwardLogicalChannelParameters;
extern const per::Type OpenLogicalChannel_forwardLogicalChannelParameters_multiplexParameters;
extern const per::Type OpenLogicalChannel_reverseLogicalChannelParameters;
extern const per::Type OpenLogicalChannel_reverseLogicalChannelParameters_multiplexParameters;
extern const per::Type OpenLogicalChannelAck;
extern const per::Type OpenLogicalChannelAck_reverseLogicalChannelParameters;
extern const per::Type OpenLogicalChannelAck_reverseLogicalChannelParameters_multiplexParameters;
extern const per::Type OpenLogicalChannelAck_forwardMultiplexAckParameters;
extern const per::Type DataType;
extern const per::Type AudioCapability;
extern const per::Type H2250LogicalChannelParameters;
extern const per::Type H2250LogicalChannelAckParameters;
extern const per::Type TransportAddress;
extern const per::Type UnicastAddress;
extern const per::Type UnicastAddress_iPAddress;

// One reference per component that the signalling decoder reads, grouped
// by the type that holds it (see per::Ref).
namespace Message {
inline constexpr per::Ref request{&MultimediaSystemControlMessage, 0, "request"};
inline constexpr per::Ref response{&MultimediaSystemControlMessage, 1, "response"};
inline constexpr per::Ref indication{&MultimediaSystemControlMessage, 3, "indication"};
}  // namespace Message
namespace Request {
inline constexpr per::Ref openLogicalChannel{&RequestMessage, 3, "openLogicalChannel"};
}
namespace Response {
inline constexpr per::Ref openLogicalChannelAck{&ResponseMessage, 5, "openLogicalChannelAck"};
}
namespace Indication {
inline constexpr per::Ref userInput{&IndicationMessage, 13, "userInput"};
}
namespace UserInput {
inline constexpr per::Ref alphanumeric{&UserInputIndication, 1, "alphanumeric"};
}
namespace Olc {
inline constexpr per::Ref forwardLogicalChannelNumber{&OpenLogicalChannel, 0, "forwardLogicalChannelNumber"};
inline constexpr per::Ref forwardLogicalChannelParameters{&OpenLogicalChannel, 1, "forwardLogicalChannelParameters"};
inline constexpr per::Ref reverseLogicalChannelParameters{&OpenLogicalChannel, 2, "reverseLogicalChannelParameters"};
}  // namespace Olc
namespace OlcForward {
inline constexpr per::Ref dataType{&OpenLogicalChannel_forwardLogicalChannelParameters, 1, "dataType"};
inline constexpr per::Ref multiplexParameters{&OpenLogicalChannel_forwardLogicalChannelParameters, 2,
                                              "multiplexParameters"};
}  // namespace OlcForward
namespace OlcForwardMultiplex {
inline constexpr per::Ref h2250LogicalChannelParameters{
    &OpenLogicalChannel_forwardLogicalChannelParameters_multiplexParameters, 3, "h2250LogicalChannelParameters"};
}
namespace OlcReverse {
inline constexpr per::Ref dataType{&OpenLogicalChannel_reverseLogicalChannelParameters, 0, "dataType"};
inline constexpr per::Ref multiplexParameters{&OpenLogicalChannel_reverseLogicalChannelParameters, 1,
                                              "multiplexParameters"};
}  // namespace OlcReverse
namespace OlcReverseMultiplex {
inline constexpr per::Ref h2250LogicalChannelParameters{
    &OpenLogicalChannel_reverseLogicalChannelParameters_multiplexParameters, 2, "h2250LogicalChannelParameters"};
}
namespace OlcAck {
inline constexpr per::Ref forwardLogicalChannelNumber{&OpenLogicalChannelAck, 0, "forwardLogicalChannelNumber"};
inline constexpr per::Ref reverseLogicalChannelParameters{&OpenLogicalChannelAck, 1, "reverseLogicalChannelParameters"};
inline constexpr per::Ref forwardMultiplexAckParameters{&OpenLogicalChannelAck, 3, "forwardMultiplexAckParameters"};
}  // namespace OlcAck
namespace OlcAckReverse {
inline constexpr per::Ref multiplexParameters{&OpenLogicalChannelAck_reverseLogicalChannelParameters, 2,
                                              "multiplexParameters"};
}
namespace OlcAckReverseMultiplex {
inline constexpr per::Ref h2250LogicalChannelParameters{
    &OpenLogicalChannelAck_reverseLogicalChannelParameters_multiplexParameters, 1, "h2250LogicalChannelParameters"};
}
namespace OlcAckForwardMultiplex {
inline constexpr per::Ref h2250LogicalChannelAckParameters{&OpenLogicalChannelAck_forwardMultiplexAckParameters, 0,
                                                           "h2250LogicalChannelAckParameters"};
}
namespace Data {
inline constexpr per::Ref audioData{&DataType, 3, "audioData"};
}
namespace Audio {
inline constexpr per::Ref g711Alaw64k{&AudioCapability, 1, "g711Alaw64k"};
inline constexpr per::Ref g711Ulaw64k{&AudioCapability, 3, "g711Ulaw64k"};
}  // namespace Audio
namespace H2250Params {
inline constexpr per::Ref mediaChannel{&H2250LogicalChannelParameters, 3, "mediaChannel"};
}
namespace H2250AckParams {
inline constexpr per::Ref mediaChannel{&H2250LogicalChannelAckParameters, 2, "mediaChannel"};
}
namespace Transport {
inline constexpr per::Ref unicastAddress{&TransportAddress, 0, "unicastAddress"};
}
namespace Unicast {
inline constexpr per::Ref iPAddress{&UnicastAddress, 0, "iPAddress"};
}
namespace IpAddress {
inline constexpr per::Ref network{&UnicastAddress_iPAddress, 0, "network"};
inline constexpr per::Ref tsapIdentifier{&UnicastAddress_iPAddress, 1, "tsapIdentifier"};
}  // namespace IpAddress

// Every reference above, for the test that checks each against its table.
inline constexpr const per::Ref* kRefs[] = {
    &Message::request,
    &Message::response,
    &Message::indication,
    &Request::openLogicalChannel,
    &Response::openLogicalChannelAck,
    &Indication::userInput,
    &UserInput::alphanumeric,
    &Olc::forwardLogicalChannelNumber,
    &Olc::forwardLogicalChannelParameters,
    &Olc::reverseLogicalChannelParameters,
    &OlcForward::dataType,
    &OlcForward::multiplexParameters,
    &OlcForwardMultiplex::h2250LogicalChannelParameters,
    &OlcReverse::dataType,
    &OlcReverse::multiplexParameters,
    &OlcReverseMultiplex::h2250LogicalChannelParameters,
    &OlcAck::forwardLogicalChannelNumber,
    &OlcAck::reverseLogicalChannelParameters,
    &OlcAck::forwardMultiplexAckParameters,
    &OlcAckReverse::multiplexParameters,
    &OlcAckReverseMultiplex::h2250LogicalChannelParameters,
    &OlcAckForwardMultiplex::h2250LogicalChannelAckParameters,
    &Data::audioData,
    &Audio::g711Alaw64k,
    &Audio::g711Ulaw64k,
    &H2250Params::mediaChannel,
    &H2250AckParams::mediaChannel,
    &Transport::unicastAddress,
    &Unicast::iPAddress,
    &IpAddress::network,
    &IpAddress::tsapIdentifier,
};

// Every named type of this module, for tests that walk them all.
extern const per::Type* const kTypes[];
extern const size_t kTypeCount;

}  // namespace h323::h245

#endif
