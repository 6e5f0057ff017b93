// H.225.0 call-signalling types (module H323-MESSAGES): H323-UserInformation
// and the closure the call-signalling decoder walks. Additions it never looks
// into are described as per::OpenType and kept as their octets.

#ifndef H323_H225_H
#define H323_H225_H

#include "h323/Per.h"

namespace h323::h225 {

extern const per::Type NonStandardParameter;
extern const per::Type NonStandardIdentifier;
extern const per::Type H221NonStandard;
extern const per::Type TransportAddress;

// Every named type of this module, for tests that walk them all.
extern const per::Type* const kTypes[];
extern const size_t kTypeCount;

}  // namespace h323::h225

#endif
