// H.225.0 call-signalling types (module H323-MESSAGES, with the H.235 tokens
// the messages carry): H323-UserInformation and the closure the
// call-signalling decoder walks. Extension additions it never looks into
// are described as per::OpenType and kept as their octets.

#ifndef H323_H225_H
#define H323_H225_H

#include "h323/Per.h"

namespace h323::h225 {

extern const per::Type H323_UserInformation;
extern const per::Type H323_UU_PDU;
extern const per::Type Setup_UUIE;
extern const per::Type CallProceeding_UUIE;
extern const per::Type Connect_UUIE;
extern const per::Type Alerting_UUIE;
extern const per::Type Information_UUIE;
extern const per::Type ReleaseComplete_UUIE;
extern const per::Type Facility_UUIE;
extern const per::Type Progress_UUIE;
extern const per::Type SetupAcknowledge_UUIE;
extern const per::Type TransportAddress;
extern const per::Type AliasAddress;
extern const per::Type PartyNumber;
extern const per::Type EndpointType;
extern const per::Type NonStandardParameter;
extern const per::Type NonStandardIdentifier;
extern const per::Type H221NonStandard;
extern const per::Type CallIdentifier;

// Inline types that the component references below belong to.
extern const per::Type H323_UserInformation;
extern const per::Type H323_UU_PDU;
extern const per::Type H323_UU_PDU_h323_message_body;
extern const per::Type Setup_UUIE;
extern const per::Type CallProceeding_UUIE;
extern const per::Type Connect_UUIE;
extern const per::Type Alerting_UUIE;
extern const per::Type Information_UUIE;
extern const per::Type ReleaseComplete_UUIE;
extern const per::Type Facility_UUIE;
extern const per::Type Progress_UUIE;
extern const per::Type SetupAcknowledge_UUIE;
extern const per::Type CallIdentifier;
extern const per::Type TransportAddress;
extern const per::Type TransportAddress_ipAddress;
extern const per::Type AliasAddress;
extern const per::Type PartyNumber;
extern const per::Type PublicPartyNumber;
extern const per::Type PrivatePartyNumber;

// One reference per component that the signalling decoder reads, grouped
// by the type that holds it (see per::Ref).
namespace UserInformation {
inline constexpr per::Ref h323_uu_pdu{&H323_UserInformation, 0, "h323_uu_pdu"};
}
namespace UUPDU {
inline constexpr per::Ref h323_message_body{&H323_UU_PDU, 0, "h323_message_body"};
inline constexpr per::Ref h245Control{&H323_UU_PDU, 4, "h245Control"};
}  // namespace UUPDU
namespace MessageBody {
inline constexpr per::Ref setup{&H323_UU_PDU_h323_message_body, 0, "setup"};
inline constexpr per::Ref callProceeding{&H323_UU_PDU_h323_message_body, 1, "callProceeding"};
inline constexpr per::Ref connect{&H323_UU_PDU_h323_message_body, 2, "connect"};
inline constexpr per::Ref alerting{&H323_UU_PDU_h323_message_body, 3, "alerting"};
inline constexpr per::Ref information{&H323_UU_PDU_h323_message_body, 4, "information"};
inline constexpr per::Ref releaseComplete{&H323_UU_PDU_h323_message_body, 5, "releaseComplete"};
inline constexpr per::Ref facility{&H323_UU_PDU_h323_message_body, 6, "facility"};
inline constexpr per::Ref progress{&H323_UU_PDU_h323_message_body, 7, "progress"};
inline constexpr per::Ref empty{&H323_UU_PDU_h323_message_body, 8, "empty"};
inline constexpr per::Ref setupAcknowledge{&H323_UU_PDU_h323_message_body, 11, "setupAcknowledge"};
}  // namespace MessageBody
namespace Setup {
inline constexpr per::Ref h245Address{&Setup_UUIE, 1, "h245Address"};
inline constexpr per::Ref sourceAddress{&Setup_UUIE, 2, "sourceAddress"};
inline constexpr per::Ref destinationAddress{&Setup_UUIE, 4, "destinationAddress"};
inline constexpr per::Ref callIdentifier{&Setup_UUIE, 15, "callIdentifier"};
inline constexpr per::Ref fastStart{&Setup_UUIE, 19, "fastStart"};
}  // namespace Setup
namespace CallProceeding {
inline constexpr per::Ref callIdentifier{&CallProceeding_UUIE, 3, "callIdentifier"};
inline constexpr per::Ref fastStart{&CallProceeding_UUIE, 7, "fastStart"};
}  // namespace CallProceeding
namespace Connect {
inline constexpr per::Ref h245Address{&Connect_UUIE, 1, "h245Address"};
inline constexpr per::Ref callIdentifier{&Connect_UUIE, 4, "callIdentifier"};
inline constexpr per::Ref fastStart{&Connect_UUIE, 8, "fastStart"};
}  // namespace Connect
namespace Alerting {
inline constexpr per::Ref h245Address{&Alerting_UUIE, 2, "h245Address"};
inline constexpr per::Ref callIdentifier{&Alerting_UUIE, 3, "callIdentifier"};
inline constexpr per::Ref fastStart{&Alerting_UUIE, 7, "fastStart"};
}  // namespace Alerting
namespace Information {
inline constexpr per::Ref callIdentifier{&Information_UUIE, 1, "callIdentifier"};
inline constexpr per::Ref fastStart{&Information_UUIE, 4, "fastStart"};
}  // namespace Information
namespace ReleaseComplete {
inline constexpr per::Ref callIdentifier{&ReleaseComplete_UUIE, 2, "callIdentifier"};
}
namespace Facility {
inline constexpr per::Ref callIdentifier{&Facility_UUIE, 5, "callIdentifier"};
inline constexpr per::Ref fastStart{&Facility_UUIE, 12, "fastStart"};
}  // namespace Facility
namespace Progress {
inline constexpr per::Ref callIdentifier{&Progress_UUIE, 3, "callIdentifier"};
inline constexpr per::Ref fastStart{&Progress_UUIE, 7, "fastStart"};
}  // namespace Progress
namespace SetupAcknowledge {
inline constexpr per::Ref callIdentifier{&SetupAcknowledge_UUIE, 1, "callIdentifier"};
}
namespace CallId {
inline constexpr per::Ref guid{&CallIdentifier, 0, "guid"};
}
namespace Transport {
inline constexpr per::Ref ipAddress{&TransportAddress, 0, "ipAddress"};
}
namespace IpAddress {
inline constexpr per::Ref ip{&TransportAddress_ipAddress, 0, "ip"};
inline constexpr per::Ref port{&TransportAddress_ipAddress, 1, "port"};
}  // namespace IpAddress
namespace Alias {
inline constexpr per::Ref dialedDigits{&AliasAddress, 0, "dialedDigits"};
inline constexpr per::Ref h323_ID{&AliasAddress, 1, "h323_ID"};
inline constexpr per::Ref url_ID{&AliasAddress, 2, "url_ID"};
inline constexpr per::Ref transportID{&AliasAddress, 3, "transportID"};
inline constexpr per::Ref email_ID{&AliasAddress, 4, "email_ID"};
inline constexpr per::Ref partyNumber{&AliasAddress, 5, "partyNumber"};
}  // namespace Alias
namespace Party {
inline constexpr per::Ref e164Number{&PartyNumber, 0, "e164Number"};
inline constexpr per::Ref dataPartyNumber{&PartyNumber, 1, "dataPartyNumber"};
inline constexpr per::Ref telexPartyNumber{&PartyNumber, 2, "telexPartyNumber"};
inline constexpr per::Ref privateNumber{&PartyNumber, 3, "privateNumber"};
inline constexpr per::Ref nationalStandardPartyNumber{&PartyNumber, 4, "nationalStandardPartyNumber"};
}  // namespace Party
namespace PublicNumber {
inline constexpr per::Ref publicNumberDigits{&PublicPartyNumber, 1, "publicNumberDigits"};
}
namespace PrivateNumber {
inline constexpr per::Ref privateNumberDigits{&PrivatePartyNumber, 1, "privateNumberDigits"};
}

// Every reference above, for the test that checks each against its table.
inline constexpr const per::Ref* kRefs[] = {
    &UserInformation::h323_uu_pdu,
    &UUPDU::h323_message_body,
    &UUPDU::h245Control,
    &MessageBody::setup,
    &MessageBody::callProceeding,
    &MessageBody::connect,
    &MessageBody::alerting,
    &MessageBody::information,
    &MessageBody::releaseComplete,
    &MessageBody::facility,
    &MessageBody::progress,
    &MessageBody::empty,
    &MessageBody::setupAcknowledge,
    &Setup::h245Address,
    &Setup::sourceAddress,
    &Setup::destinationAddress,
    &Setup::callIdentifier,
    &Setup::fastStart,
    &CallProceeding::callIdentifier,
    &CallProceeding::fastStart,
    &Connect::h245Address,
    &Connect::callIdentifier,
    &Connect::fastStart,
    &Alerting::h245Address,
    &Alerting::callIdentifier,
    &Alerting::fastStart,
    &Information::callIdentifier,
    &Information::fastStart,
    &ReleaseComplete::callIdentifier,
    &Facility::callIdentifier,
    &Facility::fastStart,
    &Progress::callIdentifier,
    &Progress::fastStart,
    &SetupAcknowledge::callIdentifier,
    &CallId::guid,
    &Transport::ipAddress,
    &IpAddress::ip,
    &IpAddress::port,
    &Alias::dialedDigits,
    &Alias::h323_ID,
    &Alias::url_ID,
    &Alias::transportID,
    &Alias::email_ID,
    &Alias::partyNumber,
    &Party::e164Number,
    &Party::dataPartyNumber,
    &Party::telexPartyNumber,
    &Party::privateNumber,
    &Party::nationalStandardPartyNumber,
    &PublicNumber::publicNumberDigits,
    &PrivateNumber::privateNumberDigits,
};

// Every named type of this module, for tests that walk them all.
extern const per::Type* const kTypes[];
extern const size_t kTypeCount;

}  // namespace h323::h225

#endif
