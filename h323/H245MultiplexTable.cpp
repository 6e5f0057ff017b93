// H.245 H.223 multiplex table signalling.
#include "h323/H245Tables.h"

namespace h323::h245 {
using namespace per;
using namespace leaf;

const Type MultiplexTableEntryNumber = integer(1, 15);
const Type MultiplexEntrySendAck_multiplexTableEntryNumber = sequenceOf(MultiplexTableEntryNumber, size(1, 15));

// MultiplexElement ::= SEQUENCE {
//   type CHOICE { logicalChannelNumber INTEGER(0..65535),
//                 subElementList SEQUENCE SIZE(2..255) OF MultiplexElement },
//   repeatCount CHOICE { finite INTEGER(1..65535), untilClosingFlag NULL } }
const Type MultiplexElement_type_subElementList = sequenceOf(MultiplexElement, size(2, 255));
const Component MultiplexElement_type_[] = {
    {"logicalChannelNumber", Int0_65535},
    {"subElementList", MultiplexElement_type_subElementList},
};
const Type MultiplexElement_type = choice("type", MultiplexElement_type_);
const Component MultiplexElement_repeatCount_[] = {
    {"finite", Int1_65535},
    {"untilClosingFlag", Null},
};
const Type MultiplexElement_repeatCount = choice("repeatCount", MultiplexElement_repeatCount_);
const Component MultiplexElement_[] = {
    {"type", MultiplexElement_type},
    {"repeatCount", MultiplexElement_repeatCount},
};
const Type MultiplexElement = sequence("MultiplexElement", MultiplexElement_);

const Type MultiplexEntryDescriptor_elementList = sequenceOf(MultiplexElement, size(1, 256));
const Component MultiplexEntryDescriptor_[] = {
    {"multiplexTableEntryNumber", MultiplexTableEntryNumber},
    {"elementList", MultiplexEntryDescriptor_elementList, Optional},
};
const Type MultiplexEntryDescriptor = sequence("MultiplexEntryDescriptor", MultiplexEntryDescriptor_);

const Type MultiplexEntrySend_multiplexEntryDescriptors = sequenceOf(MultiplexEntryDescriptor, size(1, 15));
const Component MultiplexEntrySend_[] = {
    {"sequenceNumber", SequenceNumber},
    {"multiplexEntryDescriptors", MultiplexEntrySend_multiplexEntryDescriptors},
};
const Type MultiplexEntrySend = sequence("MultiplexEntrySend", MultiplexEntrySend_, Extensible);

const Component MultiplexEntrySendAck_[] = {
    {"sequenceNumber", SequenceNumber},
    {"multiplexTableEntryNumber", MultiplexEntrySendAck_multiplexTableEntryNumber},
};
const Type MultiplexEntrySendAck = sequence("MultiplexEntrySendAck", MultiplexEntrySendAck_, Extensible);

const Component MultiplexEntryRejectionDescriptions_cause_[] = {
    {"unspecifiedCause", Null},
    {"descriptorTooComplex", Null},
};
const Type MultiplexEntryRejectionDescriptions_cause =
    choice("cause", MultiplexEntryRejectionDescriptions_cause_, Extensible);
const Component MultiplexEntryRejectionDescriptions_[] = {
    {"multiplexTableEntryNumber", MultiplexTableEntryNumber},
    {"cause", MultiplexEntryRejectionDescriptions_cause},
};
const Type MultiplexEntryRejectionDescriptions =
    sequence("MultiplexEntryRejectionDescriptions", MultiplexEntryRejectionDescriptions_, Extensible);

const Type MultiplexEntrySendReject_rejectionDescriptions =
    sequenceOf(MultiplexEntryRejectionDescriptions, size(1, 15));
const Component MultiplexEntrySendReject_[] = {
    {"sequenceNumber", SequenceNumber},
    {"rejectionDescriptions", MultiplexEntrySendReject_rejectionDescriptions},
};
const Type MultiplexEntrySendReject = sequence("MultiplexEntrySendReject", MultiplexEntrySendReject_, Extensible);

const Component MultiplexEntrySendRelease_[] = {
    {"multiplexTableEntryNumber", MultiplexEntrySendAck_multiplexTableEntryNumber},
};
const Type MultiplexEntrySendRelease = sequence("MultiplexEntrySendRelease", MultiplexEntrySendRelease_, Extensible);

// RequestMultiplexEntry, its Ack and its Release
// ::= SEQUENCE { entryNumbers SET SIZE(1..15) OF MultiplexTableEntryNumber, ... }
const Component EntryNumbersOnly_[] = {{"entryNumbers", MultiplexEntrySendAck_multiplexTableEntryNumber}};
const Type RequestMultiplexEntry = sequence("RequestMultiplexEntry", EntryNumbersOnly_, Extensible);
const Type RequestMultiplexEntryAck = sequence("RequestMultiplexEntryAck", EntryNumbersOnly_, Extensible);
const Type RequestMultiplexEntryRelease = sequence("RequestMultiplexEntryRelease", EntryNumbersOnly_, Extensible);

const Component RequestMultiplexEntryRejectionDescriptions_cause_[] = {{"unspecifiedCause", Null}};
const Type RequestMultiplexEntryRejectionDescriptions_cause =
    choice("cause", RequestMultiplexEntryRejectionDescriptions_cause_, Extensible);
const Component RequestMultiplexEntryRejectionDescriptions_[] = {
    {"multiplexTableEntryNumber", MultiplexTableEntryNumber},
    {"cause", RequestMultiplexEntryRejectionDescriptions_cause},
};
const Type RequestMultiplexEntryRejectionDescriptions =
    sequence("RequestMultiplexEntryRejectionDescriptions", RequestMultiplexEntryRejectionDescriptions_, Extensible);

const Type RequestMultiplexEntryReject_rejectionDescriptions =
    sequenceOf(RequestMultiplexEntryRejectionDescriptions, size(1, 15));
const Component RequestMultiplexEntryReject_[] = {
    {"entryNumbers", MultiplexEntrySendAck_multiplexTableEntryNumber},
    {"rejectionDescriptions", RequestMultiplexEntryReject_rejectionDescriptions},
};
const Type RequestMultiplexEntryReject =
    sequence("RequestMultiplexEntryReject", RequestMultiplexEntryReject_, Extensible);

}  // namespace h323::h245
