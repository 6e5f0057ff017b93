// Aligned PER decoding into the node arena.

#include "h323/Per.h"
#include "h323/PerRules.h"

namespace h323::per {

namespace {

using namespace rules;

// Bits of a byte range, most significant first. Every read checks the end;
// nothing past it is ever touched.
class BitReader {
public:
    // `wrapped`: the range is a wrapped value's own octets, so running past
    // its end means the wrapper's length is wrong, not that input is missing.
    BitReader(const uint8_t* data, size_t beginByte, size_t endByte, bool wrapped = false)
        : data_(data), pos_(beginByte * 8), end_(endByte * 8), flags_(wrapped ? kWrapped : 0) {}

    size_t remaining() const { return pos_ < end_ ? end_ - pos_ : 0; }
    size_t position() const { return pos_; }
    // The status of a failure caused by this reader: reading past the end
    // of the input is truncation; anything else is invalid.
    DecodeStatus failure() const { return flags_ == kOverran ? DecodeStatus::Truncated : DecodeStatus::Invalid; }

    bool read(unsigned n, uint64_t& v) {
        if (n > remaining())
            return overrun();
        v = 0;
        while (n > 0) {
            unsigned used = pos_ & 7;
            unsigned avail = 8 - used;
            unsigned take = n < avail ? n : avail;
            unsigned byte = data_[pos_ >> 3];
            v = (v << take) | ((byte >> (avail - take)) & ((1u << take) - 1));
            pos_ += take;
            n -= take;
        }
        return true;
    }

    bool readBit(bool& bit) {
        uint64_t v;
        if (!read(1, v))
            return false;
        bit = v != 0;
        return true;
    }

    void align() { pos_ = (pos_ + 7) & ~size_t(7); }

    bool skip(uint64_t bits) {
        if (bits > remaining())
            return overrun();
        pos_ += size_t(bits);
        return true;
    }

    // Claims `n` whole octets at the (aligned) position.
    bool take(size_t n, size_t& offset) {
        if (n > remaining() / 8)
            return overrun();
        offset = pos_ / 8;
        pos_ += n * 8;
        return true;
    }

private:
    bool overrun() {
        flags_ |= kOverran;
        return false;
    }

    const uint8_t* data_;
    size_t pos_;
    size_t end_;
    // Whole words, like the rest: the reader is copied around every wrapped
    // value, and narrower fields made those copies measurably slower.
    static constexpr size_t kWrapped = 1, kOverran = 2;
    size_t flags_;
};

class PerDecoder {
public:
    PerDecoder(Tree& tree, DecodeStop& stop, const uint8_t* data, size_t size)
        : tree_(tree), stop_(stop), reader_(data, 0, size), data_(data) {}

    // On failure the innermost call records the status and offset, and each
    // constructed value on the way out adds its component to the path.
    bool decode(const Type& t, uint32_t at) {
        if (++depth_ > kMaxDepth)
            return fail(DecodeStatus::TooDeep);
        tree_.nodes[at].type = &t;
        bool ok = decodeKind(t, at) || fail(reader_.failure());
        --depth_;
        return ok;
    }

private:
    // Nesting deeper than any real message gets is refused rather than
    // letting hostile input exhaust the stack.
    static constexpr int kMaxDepth = 100;
    static constexpr size_t kMaxNodes = 1 << 20;

    bool decodeKind(const Type& t, uint32_t at) {
        switch (t.kind) {
        case Kind::Null: return true;
        case Kind::Boolean: return decodeBoolean(at);
        case Kind::Integer: return decodeInteger(t, at);
        case Kind::Enumerated: return decodeEnumerated(t, at);
        case Kind::OctetString: return decodeOctetString(t, at);
        case Kind::BitString: return decodeBitString(t, at);
        case Kind::ObjectIdentifier:
        case Kind::GeneralString:
        case Kind::Open: return decodeLengthPrefixedOctets(at);
        case Kind::Sequence: return decodeSequence(t, at);
        case Kind::Choice: return decodeChoice(t, at);
        case Kind::SequenceOf: return decodeSequenceOf(t, at);
        default: return decodeCharacterString(t, at);
        }
    }

    Node& node(uint32_t at) { return tree_.nodes[at]; }

    // Records the first reason only: the callers unwinding after it add none.
    // Kept out of line so that the decoding paths stay as small as before.
    [[gnu::cold, gnu::noinline]] bool fail(DecodeStatus status) {
        if (stop_.status == DecodeStatus::Ok) {
            stop_.status = status;
            stop_.bit = reader_.position();
        }
        return false;
    }
    [[gnu::cold, gnu::noinline]] bool failedIn(const char* component) {
        stop_.path.push_back({component, 0});
        return false;
    }
    [[gnu::cold, gnu::noinline]] bool failedAt(uint32_t element) {
        stop_.path.push_back({nullptr, element});
        return false;
    }

    bool allocate(uint32_t n, uint32_t& first) {
        if (tree_.nodes.size() + n > kMaxNodes)
            return fail(DecodeStatus::TooLarge);
        first = tree_.allocate(n);
        return true;
    }

    bool appendChild(uint32_t parent, uint32_t& slot) {
        if (tree_.nodes.size() + node(parent).length + 1 > kMaxNodes)
            return fail(DecodeStatus::TooLarge);
        slot = tree_.appendChild(parent);
        return true;
    }

    // ---- numbers and lengths ----

    bool readConstrainedWhole(uint64_t range, uint64_t& v) {
        WholeNumber w = wholeNumber(range);
        switch (w.form) {
        case WholeNumber::Empty: v = 0; return true;
        case WholeNumber::Bits: return reader_.read(w.bits, v);
        case WholeNumber::OneOctet:
        case WholeNumber::TwoOctets: reader_.align(); return reader_.read(w.bits, v);
        case WholeNumber::Lengthed: {
            uint64_t octets;
            if (!reader_.read(w.bits, octets))
                return false;
            reader_.align();
            return reader_.read(unsigned(octets + 1) * 8, v);
        }
        }
        return false;
    }

    // General length determinant; a fragmented length reads as 0, the way
    // deployed stacks treat it.
    bool readUnconstrainedLength(uint64_t& n) {
        reader_.align();
        uint64_t first;
        if (!reader_.read(8, first))
            return false;
        if ((first & 0x80) == 0) {
            n = first;
        } else if ((first & 0x40) == 0) {
            uint64_t second;
            if (!reader_.read(8, second))
                return false;
            n = ((first & 0x3f) << 8) | second;
        } else {
            n = 0;
        }
        return true;
    }

    bool readSize(const Type& t, uint64_t& n) {
        const Range& r = t.range;
        bool outside = false;
        if (t.extensible && !reader_.readBit(outside))
            return false;
        if (outside)
            return readUnconstrainedLength(n);
        switch (lengthForm(r)) {
        case LengthForm::Fixed: n = uint64_t(r.lower); return true;
        case LengthForm::Constrained: {
            uint64_t offset;
            if (!readConstrainedWhole(uint64_t(r.upper - r.lower) + 1, offset))
                return false;
            n = std::min(uint64_t(r.lower) + offset, uint64_t(r.upper));
            return true;
        }
        case LengthForm::Unconstrained: return readUnconstrainedLength(n);
        }
        return false;
    }

    // Normally small non-negative whole number (extension indices); indices
    // that do not fit 32 bits are refused.
    bool readNormallySmall(uint64_t& n) {
        bool large;
        if (!reader_.readBit(large))
            return false;
        if (!large)
            return reader_.read(6, n);
        uint64_t octets;
        if (!readUnconstrainedLength(octets) || octets == 0 || octets > 4)
            return false;
        if (!reader_.read(unsigned(octets) * 8, n))
            return false;
        return n <= UINT32_MAX - 65536 || fail(DecodeStatus::TooLarge);
    }

    // Length-prefixed octets (open types, OBJECT IDENTIFIER, GeneralString).
    bool readOctets(size_t& offset, size_t& length) {
        uint64_t n;
        if (!readUnconstrainedLength(n))
            return false;
        length = size_t(n);
        return reader_.take(length, offset);
    }

    bool readValueOctets(uint64_t octets, bool isSigned, int64_t& v) {
        if (octets > 8)
            return fail(DecodeStatus::TooLarge);
        uint64_t raw = 0;
        if (octets > 0 && !reader_.read(unsigned(octets) * 8, raw))
            return false;
        if (isSigned && octets > 0 && octets < 8 && (raw >> (octets * 8 - 1)) & 1)
            raw |= ~uint64_t(0) << (octets * 8);
        v = int64_t(raw);
        return true;
    }

    // ---- leaves ----

    bool decodeBoolean(uint32_t at) {
        bool b;
        if (!reader_.readBit(b))
            return false;
        node(at).number = b;
        return true;
    }

    bool decodeInteger(const Type& t, uint32_t at) {
        const Range& r = t.range;
        bool outside = false;
        if (t.extensible && !reader_.readBit(outside))
            return false;
        uint64_t octets;
        int64_t v = 0;
        if (!outside && r.hasLower() && r.hasUpper()) {
            uint64_t offset;
            if (!readConstrainedWhole(spanOf(r), offset))
                return false;
            v = r.lower + int64_t(offset);
            if (v > r.upper)
                v = r.upper;  // clamped, not refused
        } else if (!outside && r.hasLower()) {
            if (!readUnconstrainedLength(octets) || !readValueOctets(octets, false, v))
                return false;
            v += r.lower;
        } else {
            if (!readUnconstrainedLength(octets) || !readValueOctets(octets, true, v))
                return false;
        }
        node(at).number = v;
        return true;
    }

    bool decodeEnumerated(const Type& t, uint32_t at) {
        bool outside = false;
        if (t.extensible && !reader_.readBit(outside))
            return false;
        uint64_t index;
        if (outside) {
            if (!readNormallySmall(index))
                return false;
            index += t.rootCount;
        } else {
            if (!readConstrainedWhole(t.rootCount, index))
                return false;
            if (t.rootCount > 0 && index >= t.rootCount)
                index = t.rootCount - 1;
        }
        node(at).number = int64_t(index);
        return true;
    }

    void setBytes(uint32_t at, size_t offset, size_t length, bool inScratch) {
        Node& n = node(at);
        n.first = uint32_t(offset);
        n.length = uint32_t(length);
        n.inScratch = inScratch;
    }

    // Contents that are not octet aligned are copied, realigned, to scratch.
    bool copyBits(uint32_t at, uint64_t bits) {
        size_t offset = tree_.scratch.size();
        for (; bits > 0; bits -= std::min<uint64_t>(bits, 8)) {
            unsigned n = unsigned(std::min<uint64_t>(bits, 8));
            uint64_t v;
            if (!reader_.read(n, v))
                return false;
            tree_.scratch += char(v << (8 - n));
        }
        setBytes(at, offset, tree_.scratch.size() - offset, true);
        return true;
    }

    bool decodeOctetString(const Type& t, uint32_t at) {
        uint64_t n;
        if (!readSize(t, n))
            return false;
        if (n > Decoder::kMaxStringLength)
            return fail(DecodeStatus::TooLarge);
        if (!contentsAligned(t.range, 8, n, false))
            return copyBits(at, n * 8);
        reader_.align();
        size_t offset;
        if (!reader_.take(size_t(n), offset))
            return false;
        setBytes(at, offset, size_t(n), false);
        return true;
    }

    bool decodeBitString(const Type& t, uint32_t at) {
        uint64_t bits;
        if (!readSize(t, bits))
            return false;
        if (bits > Decoder::kMaxStringLength * 8)
            return fail(DecodeStatus::TooLarge);
        node(at).number = int64_t(bits);
        if (contentsAligned(t.range, 1, bits, false))
            reader_.align();
        return copyBits(at, bits);
    }

    bool decodeLengthPrefixedOctets(uint32_t at) {
        size_t offset, length;
        if (!readOctets(offset, length))
            return false;
        if (length > Decoder::kMaxStringLength)
            return fail(DecodeStatus::TooLarge);
        setBytes(at, offset, length, false);
        return true;
    }

    bool decodeCharacterString(const Type& t, uint32_t at) {
        CharLayout layout = charLayout(t);
        uint64_t n;
        if (!readSize(t, n))
            return false;
        if (n > Decoder::kMaxStringLength)
            return fail(DecodeStatus::TooLarge);
        bool aligned = contentsAligned(t.range, layout.bits, n, true);
        if (aligned)
            reader_.align();
        unsigned width = t.kind == Kind::BMPString ? 2 : 1;
        if (aligned && !layout.alphabet && layout.bits == width * 8) {
            size_t offset;
            if (!reader_.take(size_t(n) * width, offset))
                return false;
            setBytes(at, offset, size_t(n) * width, false);
            return true;
        }
        size_t offset = tree_.scratch.size();
        for (uint64_t i = 0; i < n; ++i) {
            uint64_t c;
            if (!reader_.read(layout.bits, c))
                return false;
            if (layout.alphabet)
                c = uint8_t(layout.alphabet[std::min<uint64_t>(c, layout.alphabetSize - 1)]);
            if (width == 2)
                tree_.scratch += char(c >> 8);
            tree_.scratch += char(c);
        }
        setBytes(at, offset, tree_.scratch.size() - offset, true);
        return true;
    }

    // ---- constructed ----

    bool decodeSequence(const Type& t, uint32_t at) {
        bool extended = false;
        if (t.extensible && !reader_.readBit(extended))
            return false;
        uint64_t presence = 0;
        if (t.optionalCount > 64 || !reader_.read(t.optionalCount, presence))
            return false;
        uint32_t first = 0;
        if (!allocate(t.count, first))
            return false;
        node(at).first = first;
        node(at).length = t.count;
        unsigned optionalSeen = 0;
        for (uint32_t i = 0; i < t.rootCount; ++i) {
            const Component& c = t.components[i];
            if (c.optional() && !((presence >> (t.optionalCount - 1 - optionalSeen++)) & 1))
                continue;
            if (!decode(*c.type, first + i))
                return failedIn(c.name);
        }
        return !extended || decodeAdditions(t, at);
    }

    bool decodeAdditions(const Type& t, uint32_t at) {
        bool large;
        uint64_t count;
        if (!reader_.readBit(large))
            return false;
        if (large ? !readUnconstrainedLength(count) : !reader_.read(6, count))
            return false;
        if (!large)
            ++count;
        BitReader bitmap = reader_;
        if (!reader_.skip(count))
            return false;
        for (uint64_t i = 0; i < count; ++i) {
            bool present = false;
            bitmap.readBit(present);
            if (!present)
                continue;
            size_t offset, length;
            if (!readOctets(offset, length))
                return false;
            uint64_t index = t.rootCount + i;
            uint32_t slot = 0;
            if (index < t.count) {
                slot = node(at).first + uint32_t(index);
                if (!decodeOpen(*t.components[index].type, slot, offset, length))
                    return failedIn(t.components[index].name);
            } else {
                if (!appendChild(at, slot))
                    return false;
                node(slot).type = &OpenType;
                setBytes(slot, offset, length, false);
            }
        }
        return true;
    }

    // A known value wrapped in an open type: decoded from exactly its octets.
    bool decodeOpen(const Type& t, uint32_t at, size_t offset, size_t length) {
        if (t.kind == Kind::Open) {
            node(at).type = &t;
            setBytes(at, offset, length, false);
            return true;
        }
        BitReader outer = reader_;
        reader_ = BitReader(data_, offset, offset + length, true);
        bool ok = decode(t, at);
        reader_ = outer;
        return ok;
    }

    bool decodeChoice(const Type& t, uint32_t at) {
        bool extended = false;
        if (t.extensible && !reader_.readBit(extended))
            return false;
        uint32_t child = 0;
        if (!allocate(1, child))
            return false;
        node(at).first = child;
        uint64_t index;
        if (!extended) {
            if (t.rootCount == 0 || !readConstrainedWhole(t.rootCount, index))
                return false;
            index = std::min<uint64_t>(index, t.rootCount - 1);
            node(at).number = int64_t(index);
            return decode(*t.components[index].type, child) || failedIn(t.components[index].name);
        }
        size_t offset, length;
        if (!readNormallySmall(index) || !readOctets(offset, length))
            return false;
        index += t.rootCount;
        node(at).number = int64_t(index);
        if (index < t.count)
            return decodeOpen(*t.components[index].type, child, offset, length) || failedIn(t.components[index].name);
        if (length == 0)
            return false;
        node(child).type = &OpenType;
        setBytes(child, offset, length, false);
        return true;
    }

    bool decodeSequenceOf(const Type& t, uint32_t at) {
        uint64_t n;
        if (!readSize(t, n))
            return false;
        if (n > Decoder::kMaxListElements)
            return fail(DecodeStatus::TooLarge);
        uint32_t first = 0;
        if (!allocate(uint32_t(n), first))
            return false;
        node(at).first = first;
        node(at).length = uint32_t(n);
        for (uint32_t i = 0; i < n; ++i)
            if (!decode(*t.element, first + i))
                return failedAt(i);
        return true;
    }

    Tree& tree_;
    DecodeStop& stop_;
    BitReader reader_;
    const uint8_t* data_;
    int depth_ = 0;
};

}  // namespace

Value Decoder::decode(const Type& type, const uint8_t* data, size_t size) {
    tree_.reset(data);
    tree_.nodes.resize(1);
    stop_.status = DecodeStatus::Ok;
    stop_.bit = 0;
    stop_.root = &type;
    stop_.path.clear();
    PerDecoder decoder(tree_, stop_, data, size);
    if (!decoder.decode(type, 0))
        return {};
    return Value(&tree_, 0);
}

std::string DecodeStop::pathText() const {
    std::string text = root && root->name ? root->name : "value";
    for (auto step = path.rbegin(); step != path.rend(); ++step)
        text += step->name ? "." + std::string(step->name) : "[" + std::to_string(step->element) + "]";
    return text;
}

}  // namespace h323::per
