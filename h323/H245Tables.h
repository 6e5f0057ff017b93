// Leaf and inline types shared by the H.245 table files (H245*.cpp). Internal
// to the tables: callers use the named types of H245.h.

#ifndef H323_H245_TABLES_H
#define H323_H245_TABLES_H

#include "h323/H245.h"

namespace h323::h245::leaf {

inline constexpr per::Type Int0_2 = per::integer(0, 2);
inline constexpr per::Type Int0_3 = per::integer(0, 3);
inline constexpr per::Type Int0_7 = per::integer(0, 7);
inline constexpr per::Type Int0_15 = per::integer(0, 15);
inline constexpr per::Type Int0_31 = per::integer(0, 31);
inline constexpr per::Type Int0_127 = per::integer(0, 127);
inline constexpr per::Type Int0_255 = per::integer(0, 255);
inline constexpr per::Type Int0_1023 = per::integer(0, 1023);
inline constexpr per::Type Int0_4095 = per::integer(0, 4095);
inline constexpr per::Type Int0_8191 = per::integer(0, 8191);
inline constexpr per::Type Int0_16383 = per::integer(0, 16383);
inline constexpr per::Type Int0_65535 = per::integer(0, 65535);
inline constexpr per::Type Int0_262143 = per::integer(0, 262143);
inline constexpr per::Type Int0_16777215 = per::integer(0, 16777215);
inline constexpr per::Type Int0_1073741823 = per::integer(0, 1073741823);
inline constexpr per::Type Int0_4294967295 = per::integer(0, 4294967295);
inline constexpr per::Type Int1_4 = per::integer(1, 4);
inline constexpr per::Type Int1_32 = per::integer(1, 32);
inline constexpr per::Type Int1_127 = per::integer(1, 127);
inline constexpr per::Type Int1_255 = per::integer(1, 255);
inline constexpr per::Type Int1_256 = per::integer(1, 256);
inline constexpr per::Type Int1_3600 = per::integer(1, 3600);
inline constexpr per::Type Int1_4095 = per::integer(1, 4095);
inline constexpr per::Type Int1_19200 = per::integer(1, 19200);
inline constexpr per::Type Int1_65535 = per::integer(1, 65535);
inline constexpr per::Type Int1_448 = per::integer(1, 448);
inline constexpr per::Type Int1_1130 = per::integer(1, 1130);
inline constexpr per::Type Int96_127 = per::integer(96, 127);

inline constexpr per::Type Octets2 = per::octetString(per::fixed(2));
inline constexpr per::Type Octets4 = per::octetString(per::fixed(4));
inline constexpr per::Type Octets6 = per::octetString(per::fixed(6));
inline constexpr per::Type Octets16 = per::octetString(per::fixed(16));
inline constexpr per::Type Octets1_20 = per::octetString(per::size(1, 20));
inline constexpr per::Type GeneralText = per::generalString();

}  // namespace h323::h245::leaf

namespace h323::h245 {

// Inline types that two named types share.
extern const per::Type DataApplication_nlpid;     // DataApplicationCapability, DataMode
extern const per::Type H223_adaptationLayerType;  // H223LogicalChannelParameters, H223ModeParameters

}  // namespace h323::h245

#endif
