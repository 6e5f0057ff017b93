// The encoding decisions of aligned PER that the decoder and the encoder
// share: how a constrained whole number, a length and the contents of a
// string are laid out for a given constraint. Internal to the codec.

#ifndef H323_PER_RULES_H
#define H323_PER_RULES_H

#include "h323/Per.h"

namespace h323::per::rules {

constexpr uint64_t k64K = 65536;
constexpr uint64_t k16K = 16384;

// Smallest number of bits that holds every value below `range`.
inline unsigned bitsFor(uint64_t range) {
    unsigned bits = 0;
    while (bits < 64 && (uint64_t(1) << bits) < range)
        ++bits;
    return bits;
}

// Smallest number of octets that holds `value` as a non-negative binary number.
inline unsigned octetsFor(uint64_t value) {
    unsigned n = 1;
    while (n < 8 && (value >> (8 * n)) != 0)
        ++n;
    return n;
}

// Constrained whole number (X.691 10.5.7, aligned): the layout for a range
// of `range` values (range 0 stands for 2^64, never used by the tables).
struct WholeNumber {
    enum Form : uint8_t { Empty, Bits, OneOctet, TwoOctets, Lengthed } form;
    unsigned bits;  // Bits, OneOctet, TwoOctets: field width; Lengthed: width of the octet count - 1
};

inline WholeNumber wholeNumber(uint64_t range) {
    if (range == 1)
        return {WholeNumber::Empty, 0};
    if (range <= 255)
        return {WholeNumber::Bits, bitsFor(range)};
    if (range == 256)
        return {WholeNumber::OneOctet, 8};
    if (range <= k64K)
        return {WholeNumber::TwoOctets, 16};
    return {WholeNumber::Lengthed, bitsFor(octetsFor(range - 1))};
}

// Values an INTEGER's root range spans, 0 when it has no upper or lower bound.
inline uint64_t spanOf(const Range& r) {
    if (!r.hasLower() || !r.hasUpper())
        return 0;
    return uint64_t(r.upper) - uint64_t(r.lower) + 1;
}

// Where the length of a string or list comes from (X.691 11.9, 16, 20, 27).
enum class LengthForm : uint8_t {
    Fixed,          // fixed size below 64K: no length on the wire
    Constrained,    // upper bound below 64K: a constrained whole number of (n - lower)
    Unconstrained,  // a general length determinant of n
};

inline LengthForm lengthForm(const Range& size) {
    if (size.hasUpper() && uint64_t(size.upper) < k64K)
        return size.isFixed() ? LengthForm::Fixed : LengthForm::Constrained;
    return LengthForm::Unconstrained;
}

// Whether the contents of a string with `unitBits` per unit start on an
// octet boundary. Empty contents add nothing, not even padding; fixed ones of
// 16 bits or less are never aligned; of the variable ones only character
// strings whose longest form stays under 16 bits are not.
inline bool contentsAligned(const Range& size, unsigned unitBits, uint64_t length, bool characters) {
    if (length == 0)
        return false;
    if (!size.hasUpper())
        return true;
    uint64_t maxBits = uint64_t(size.upper) * unitBits;
    if (size.isFixed())
        return maxBits > 16;
    return !characters || maxBits >= 16;
}

// Characters of a known-multiplier string: bits per character on the wire
// and the alphabet through which indices map, if they do.
struct CharLayout {
    unsigned bits;
    const char* alphabet;  // nullptr: characters are sent as their own code
    size_t alphabetSize;
};

CharLayout charLayout(const Type& t);

inline bool isCharacterString(Kind k) {
    return k == Kind::IA5String || k == Kind::NumericString || k == Kind::PrintableString || k == Kind::VisibleString ||
           k == Kind::BMPString;
}

}  // namespace h323::per::rules

#endif
