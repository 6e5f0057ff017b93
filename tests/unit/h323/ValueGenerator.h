// Values of any described type, filled in at random within its constraints:
// the round trip's input and the oracle's codec samples.

#ifndef H323_TESTS_VALUE_GENERATOR_H
#define H323_TESTS_VALUE_GENERATOR_H

#include <algorithm>
#include <random>
#include <string>

#include "h323/Per.h"

namespace h323::per {

// Past this depth only what a type requires is filled in, so that
// recursive types end.
inline constexpr int kFullDepth = 6;

class ValueGenerator {
public:
    explicit ValueGenerator(uint64_t seed) : rng_(seed) {}

    void fill(Builder::Slot s, const Type& t, int depth) {
        switch (t.kind) {
        case Kind::Null: s.present(); break;
        case Kind::Boolean: s.setBool(pick(2)); break;
        case Kind::Integer: s.setInteger(integer(t.range)); break;
        case Kind::Enumerated: s.setInteger(int64_t(pick(t.count))); break;
        case Kind::OctetString:
        case Kind::GeneralString:
        case Kind::Open: s.setBytes(octets(length(t.range, t.kind == Kind::Open ? 1 : 0))); break;
        case Kind::BitString: {
            size_t bits = length(t.range, 0);
            s.setBits(octets((bits + 7) / 8), int64_t(bits));
            break;
        }
        case Kind::ObjectIdentifier: s.setOid("0.0.8.2250.0." + std::to_string(pick(300))); break;
        case Kind::Sequence: fillSequence(s, t, depth); break;
        case Kind::Choice: fillChoice(s, t, depth); break;
        case Kind::SequenceOf: {
            size_t n = depth > kFullDepth ? size_t(std::max<int64_t>(t.range.lower, 0)) : length(t.range, 0, 3);
            for (size_t i = 0; i < n; ++i)
                fill(s.append(), *t.element, depth + 1);
            break;
        }
        default: s.setText(characters(t)); break;
        }
    }

private:
    uint64_t pick(uint64_t n) { return n ? rng_() % n : 0; }

    int64_t integer(const Range& r) {
        if (r.hasLower() && r.hasUpper()) {
            uint64_t span = uint64_t(r.upper) - uint64_t(r.lower);
            switch (pick(4)) {
            case 0: return r.lower;
            case 1: return r.upper;
            default: return r.lower + int64_t(span == UINT64_MAX ? rng_() : pick(span + 1));
            }
        }
        static const int64_t kEdges[] = {0, 1, -1, 127, 128, -128, -129, 65535, 2147483647, -2147483648LL};
        int64_t v = kEdges[pick(std::size(kEdges))];
        return r.hasLower() ? r.lower + (v < 0 ? -v : v) : v;
    }

    size_t length(const Range& r, int64_t minimum, int64_t spread = 12) {
        int64_t lower = std::max(r.lower, minimum);
        int64_t upper = r.hasUpper() ? std::min(r.upper, lower + spread) : lower + spread;
        return size_t(lower + int64_t(pick(uint64_t(upper - lower + 1))));
    }

    std::string octets(size_t n) {
        std::string out;
        for (size_t i = 0; i < n; ++i)
            out += char(pick(256));
        return out;
    }

    std::string characters(const Type& t) {
        static const char kPlain[] = "abcxyz019 .@";
        const char* alphabet = t.alphabet ? t.alphabet : t.kind == Kind::NumericString ? " 0123456789" : kPlain;
        size_t size = std::char_traits<char>::length(alphabet);
        std::string out;
        for (size_t i = length(t.range, 0); i > 0; --i) {
            if (t.kind == Kind::BMPString && !t.alphabet && pick(4) == 0)
                out += "\xc3\xa9";  // é: beyond one octet
            else
                out += alphabet[pick(size)];
        }
        return out;
    }

    void fillSequence(Builder::Slot s, const Type& t, int depth) {
        s.present();
        for (size_t i = 0; i < t.count; ++i) {
            const Component& c = t.components[i];
            bool required = !c.optional() && !c.addition();
            if (required || (depth <= kFullDepth && pick(2)))
                fill(s[c.name], *c.type, depth + 1);
        }
    }

    void fillChoice(Builder::Slot s, const Type& t, int depth) {
        size_t index = pick(t.count);
        if (depth > kFullDepth)  // prefer an alternative that ends the recursion
            for (size_t i = t.count; i-- > 0;)
                if (isLeaf(*t.components[i].type))
                    index = i;
        fill(s.choose(t.components[index].name), *t.components[index].type, depth + 1);
    }

    static bool isLeaf(const Type& t) {
        return t.kind != Kind::Sequence && t.kind != Kind::Choice && t.kind != Kind::SequenceOf;
    }

    std::mt19937_64 rng_;
};

}  // namespace h323::per

#endif
