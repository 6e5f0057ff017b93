// Aligned PER encoding of a built (or decoded) value.

#include <algorithm>
#include <cstring>

#include "h323/Per.h"
#include "h323/PerRules.h"

namespace h323::per {

namespace {

using namespace rules;

class BitWriter {
public:
    explicit BitWriter(std::vector<uint8_t>& out) : out_(out) { out_.clear(); }

    void write(uint64_t v, unsigned n) {
        while (n > 0) {
            unsigned used = bits_ & 7;
            if (used == 0)
                out_.push_back(0);
            unsigned take = std::min(n, 8 - used);
            unsigned chunk = unsigned(v >> (n - take)) & ((1u << take) - 1);
            out_.back() |= uint8_t(chunk << (8 - used - take));
            bits_ += take;
            n -= take;
        }
    }

    void align() { bits_ = out_.size() * 8; }

    void writeBytes(std::string_view bytes) {
        align();
        out_.insert(out_.end(), bytes.begin(), bytes.end());
        bits_ = out_.size() * 8;
    }

private:
    std::vector<uint8_t>& out_;
    size_t bits_ = 0;
};

// Minimal octets of a two's-complement number.
unsigned signedOctets(int64_t v) {
    unsigned n = 1;
    while (n < 8) {
        int64_t lo = -(int64_t(1) << (8 * n - 1)), hi = (int64_t(1) << (8 * n - 1)) - 1;
        if (v >= lo && v <= hi)
            break;
        ++n;
    }
    return n;
}

class PerEncoder {
public:
    explicit PerEncoder(std::vector<uint8_t>& out) : w_(out) {}

    bool encode(Value v) {
        const Type* t = v.type();
        if (!t)
            return false;
        switch (t->kind) {
        case Kind::Null: return true;
        case Kind::Boolean: w_.write(v.integer() != 0, 1); return true;
        case Kind::Integer: return encodeInteger(*t, v.integer());
        case Kind::Enumerated: return encodeEnumerated(*t, v.integer());
        case Kind::OctetString: return encodeOctetString(*t, v.bytes());
        case Kind::BitString: return encodeBitString(*t, v.bytes(), v.bitLength());
        case Kind::ObjectIdentifier:
        case Kind::GeneralString:
        case Kind::Open: return writeOctetsWithLength(v.bytes());
        case Kind::Sequence: return encodeSequence(*t, v);
        case Kind::Choice: return encodeChoice(*t, v);
        case Kind::SequenceOf: return encodeSequenceOf(*t, v);
        default: return encodeCharacterString(*t, v.bytes());
        }
    }

private:
    // ---- numbers and lengths ----

    void writeConstrainedWhole(uint64_t range, uint64_t v) {
        WholeNumber form = wholeNumber(range);
        switch (form.form) {
        case WholeNumber::Empty: return;
        case WholeNumber::Bits: w_.write(v, form.bits); return;
        case WholeNumber::OneOctet:
        case WholeNumber::TwoOctets:
            w_.align();
            w_.write(v, form.bits);
            return;
        case WholeNumber::Lengthed: {
            unsigned octets = octetsFor(v);
            w_.write(octets - 1, form.bits);
            w_.align();
            w_.write(v, octets * 8);
            return;
        }
        }
    }

    // A general length determinant below 16K.
    void writeShortLength(uint64_t n) {
        w_.align();
        if (n < 128)
            w_.write(n, 8);
        else
            w_.write(0x8000 | n, 16);
    }

    // General length determinant followed by `n` units, fragmented in
    // chunks of up to 64K units when n reaches 16K (X.691 11.9.3.8).
    template <typename EmitUnits>
    bool writeLengthAndUnits(uint64_t n, EmitUnits emit) {
        uint64_t done = 0;
        while (n - done >= k16K) {
            uint64_t blocks = std::min<uint64_t>((n - done) / k16K, 4);
            w_.align();
            w_.write(0xc0 | blocks, 8);
            if (!emit(done, blocks * k16K))
                return false;
            done += blocks * k16K;
        }
        writeShortLength(n - done);
        return emit(done, n - done);
    }

    bool writeOctetsWithLength(std::string_view bytes) {
        return writeLengthAndUnits(bytes.size(), [&](uint64_t from, uint64_t count) {
            w_.writeBytes(bytes.substr(from, count));
            return true;
        });
    }

    void writeNormallySmall(uint64_t n) {
        if (n < 64) {
            w_.write(n, 7);
            return;
        }
        w_.write(1, 1);
        unsigned octets = octetsFor(n);
        writeShortLength(octets);
        w_.write(n, octets * 8);
    }

    // The length of a string or list, then its units: constrained, or
    // behind an extension bit when outside an extensible root.
    template <typename EmitUnits>
    bool writeSized(const Type& t, uint64_t n, bool alignContents, EmitUnits emit) {
        const Range& r = t.range;
        bool inRoot = int64_t(n) >= r.lower && (!r.hasUpper() || int64_t(n) <= r.upper);
        if (t.extensible)
            w_.write(!inRoot, 1);
        if (!inRoot) {
            if (!t.extensible)
                return false;
            return writeLengthAndUnits(n, emit);
        }
        switch (lengthForm(r)) {
        case LengthForm::Fixed: break;
        case LengthForm::Constrained: writeConstrainedWhole(uint64_t(r.upper - r.lower) + 1, n - r.lower); break;
        case LengthForm::Unconstrained: return writeLengthAndUnits(n, emit);
        }
        if (alignContents)
            w_.align();
        return emit(0, n);
    }

    // ---- leaves ----

    bool encodeInteger(const Type& t, int64_t v) {
        const Range& r = t.range;
        bool inRoot = (!r.hasLower() || v >= r.lower) && (!r.hasUpper() || v <= r.upper);
        if (t.extensible)
            w_.write(!inRoot, 1);
        if (!inRoot && !t.extensible)
            return false;
        if (inRoot && r.hasLower() && r.hasUpper()) {
            writeConstrainedWhole(spanOf(r), uint64_t(v) - uint64_t(r.lower));
        } else if (inRoot && r.hasLower()) {
            uint64_t offset = uint64_t(v) - uint64_t(r.lower);
            unsigned octets = octetsFor(offset);
            writeShortLength(octets);
            w_.write(offset, octets * 8);
        } else {
            unsigned octets = signedOctets(v);
            writeShortLength(octets);
            w_.write(uint64_t(v), octets * 8);
        }
        return true;
    }

    bool encodeEnumerated(const Type& t, int64_t index) {
        if (index < 0)
            return false;
        bool inRoot = index < t.rootCount;
        if (t.extensible)
            w_.write(!inRoot, 1);
        if (inRoot)
            writeConstrainedWhole(t.rootCount, uint64_t(index));
        else if (t.extensible)
            writeNormallySmall(uint64_t(index - t.rootCount));
        else
            return false;
        return true;
    }

    bool encodeOctetString(const Type& t, std::string_view bytes) {
        bool aligned = contentsAligned(t.range, 8, bytes.size(), false);
        return writeSized(t, bytes.size(), aligned, [&](uint64_t from, uint64_t count) {
            if (aligned)
                w_.writeBytes(bytes.substr(from, count));
            else
                for (uint64_t i = 0; i < count; ++i)
                    w_.write(uint8_t(bytes[from + i]), 8);
            return true;
        });
    }

    bool encodeBitString(const Type& t, std::string_view bytes, int64_t bits) {
        if (uint64_t(bits) > bytes.size() * 8)
            return false;
        bool aligned = contentsAligned(t.range, 1, uint64_t(bits), false);
        return writeSized(t, uint64_t(bits), aligned, [&](uint64_t from, uint64_t count) {
            for (uint64_t i = from; i < from + count; ++i)
                w_.write((uint8_t(bytes[i / 8]) >> (7 - i % 8)) & 1, 1);
            return true;
        });
    }

    bool encodeCharacterString(const Type& t, std::string_view raw) {
        CharLayout layout = charLayout(t);
        unsigned width = t.kind == Kind::BMPString ? 2 : 1;
        uint64_t n = raw.size() / width;
        bool aligned = contentsAligned(t.range, layout.bits, n, true);
        return writeSized(t, n, aligned, [&](uint64_t from, uint64_t count) {
            for (uint64_t i = from; i < from + count; ++i) {
                unsigned c = uint8_t(raw[i * width]);
                if (width == 2)
                    c = (c << 8) | uint8_t(raw[i * width + 1]);
                if (layout.alphabet) {
                    const void* hit = c <= 0xff ? std::memchr(layout.alphabet, int(c), layout.alphabetSize) : nullptr;
                    if (!hit)
                        return false;
                    c = unsigned(static_cast<const char*>(hit) - layout.alphabet);
                }
                w_.write(c, layout.bits);
            }
            return true;
        });
    }

    // ---- constructed ----

    // The complete encoding of `v` on its own, as an open type carries it.
    static bool encodeAlone(Value v, std::vector<uint8_t>& out) {
        if (v.type()->kind == Kind::Open) {
            std::string_view b = v.bytes();
            out.assign(b.begin(), b.end());
            return true;
        }
        PerEncoder inner(out);
        if (!inner.encode(v))
            return false;
        if (out.empty())
            out.push_back(0);  // an empty encoding still takes one octet
        return true;
    }

    bool writeOpen(Value v) {
        std::vector<uint8_t> inner;
        if (!encodeAlone(v, inner))
            return false;
        return writeOctetsWithLength(std::string_view(reinterpret_cast<const char*>(inner.data()), inner.size()));
    }

    bool encodeSequence(const Type& t, Value v) {
        size_t total = v.componentCount();
        size_t lastAddition = 0;  // one past the last present addition
        for (size_t i = t.rootCount; i < total; ++i)
            if (v.component(i))
                lastAddition = i + 1;
        bool extended = lastAddition > 0;
        if (t.extensible)
            w_.write(extended, 1);
        else if (extended)
            return false;
        for (size_t i = 0; i < t.rootCount; ++i)
            if (t.components[i].optional())
                w_.write(bool(v.component(i)), 1);
        for (size_t i = 0; i < t.rootCount; ++i) {
            Value c = v.component(i);
            if (!c) {
                if (t.components[i].optional())
                    continue;
                return false;
            }
            if (!encode(c))
                return false;
        }
        if (!extended)
            return true;
        uint64_t count = lastAddition - t.rootCount;
        if (count <= 64) {
            w_.write(count - 1, 7);
        } else {
            w_.write(1, 1);
            writeShortLength(count);
        }
        for (size_t i = t.rootCount; i < lastAddition; ++i)
            w_.write(bool(v.component(i)), 1);
        for (size_t i = t.rootCount; i < lastAddition; ++i)
            if (Value c = v.component(i); c && !writeOpen(c))
                return false;
        return true;
    }

    bool encodeChoice(const Type& t, Value v) {
        Value chosen = v.chosen();
        if (!chosen)
            return false;
        unsigned tag = v.tag();
        bool inRoot = tag < t.rootCount;
        if (t.extensible)
            w_.write(!inRoot, 1);
        if (inRoot) {
            writeConstrainedWhole(t.rootCount, tag);
            return encode(chosen);
        }
        if (!t.extensible)
            return false;
        writeNormallySmall(tag - t.rootCount);
        return writeOpen(chosen);
    }

    bool encodeSequenceOf(const Type& t, Value v) {
        return writeSized(t, v.size(), false, [&](uint64_t from, uint64_t count) {
            for (uint64_t i = from; i < from + count; ++i)
                if (!encode(v.at(i)))
                    return false;
            return true;
        });
    }

    BitWriter w_;
};

}  // namespace

bool encode(Value value, std::vector<uint8_t>& out) {
    PerEncoder encoder(out);
    return encoder.encode(value);
}

std::vector<uint8_t> encode(Value value) {
    std::vector<uint8_t> out;
    if (!encode(value, out))
        out.clear();
    return out;
}

}  // namespace h323::per
