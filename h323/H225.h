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

// Every named type of this module, for tests that walk them all.
extern const per::Type* const kTypes[];
extern const size_t kTypeCount;

}  // namespace h323::h225

#endif
