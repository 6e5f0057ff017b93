// Aligned PER (X.691, ALIGNED variant) codec driven by constant type tables.
//
// How to write a table
// --------------------
// Every ASN.1 type is one `const per::Type`, built by the constexpr helpers
// below and written next to the ASN.1 it describes. Constructed types list
// their components in a plain array of `per::Component`, in ASN.1 order:
//
//   // TransportAddress ::= CHOICE {
//   //   ipAddress SEQUENCE { ip OCTET STRING (SIZE(4)), port INTEGER (0..65535) },
//   //   ...,
//   //   ip6Address SEQUENCE { ... } }
//   const Type Octets4 = octetString(fixed(4));
//   const Type Port = integer(0, 65535);
//   const Component TransportAddress_ipAddress_[] = {{"ip", Octets4}, {"port", Port}};
//   const Type TransportAddress_ipAddress = sequence("ipAddress", TransportAddress_ipAddress_);
//   const Component TransportAddress_[] = {
//       {"ipAddress", TransportAddress_ipAddress},
//       {"ip6Address", TransportAddress_ip6Address, Addition},
//   };
//   const Type TransportAddress = choice("TransportAddress", TransportAddress_, Extensible);
//
// Rules:
// - Component and alternative names are written as the ASN.1 identifier with
//   every '-' turned into '_' (`h323_ID`, `url_ID`): that is the text that
//   lookups by name, tag names and the printer use.
// - OPTIONAL and DEFAULT root components are flagged `Optional`. Everything
//   after the extension marker "..." is flagged `Addition` (additions are
//   always optional on the wire). Additions follow all root components.
// - ENUMERATED lists its identifiers as components without a type
//   (`{"e164"}`), additions flagged `Addition`.
// - An inline type gets a name of the form Parent_component; a component may
//   refer to a type defined further down after an `extern const Type X;`
//   declaration (the tables are address constants, so no initialisation
//   order issue arises between translation units).
// - Each table module exports the list of its named types so the generic
//   round-trip test walks all of them.
//
// Decoding fills a `per::Decoder`'s node arena, reused from one message to
// the next; `per::Value` is a cursor into it. Octet and character strings
// are views into the input where the encoding is octet aligned, so the
// decoded value lives as long as both the decoder's next decode and the
// input buffer allow. Decoding never throws and never reads outside the
// given buffer; it reproduces the lenient behaviour of the stacks deployed
// H.323 equipment was tested with (see Decoder).

#ifndef H323_PER_H
#define H323_PER_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "h323/DecodeStatus.h"

namespace h323::per {

enum class Kind : uint8_t {
    Null,
    Boolean,
    Integer,
    Enumerated,
    OctetString,
    BitString,
    ObjectIdentifier,
    IA5String,
    NumericString,
    PrintableString,
    VisibleString,
    GeneralString,  // not a known-multiplier type: length plus octets
    BMPString,
    Sequence,
    Choice,
    SequenceOf,  // also SET OF: both encode alike
    Open,        // an unknown extension kept as its octets
};

enum Extensibility : uint8_t { Closed, Extensible };

enum ComponentFlags : uint8_t {
    Mandatory = 0,
    Optional = 1,  // OPTIONAL or DEFAULT root component
    Addition = 2,  // after the extension marker
};

constexpr int64_t kNoUpperBound = std::numeric_limits<int64_t>::max();
constexpr int64_t kNoLowerBound = std::numeric_limits<int64_t>::min();

// SIZE constraint of strings and lists (and the value range of INTEGER).
struct Range {
    int64_t lower = 0;
    int64_t upper = kNoUpperBound;
    Extensibility extensible = Closed;

    constexpr bool hasUpper() const { return upper != kNoUpperBound; }
    constexpr bool hasLower() const { return lower != kNoLowerBound; }
    constexpr bool isFixed() const { return hasUpper() && lower == upper; }
};

constexpr Range fixed(int64_t n) {
    return {n, n, Closed};
}
constexpr Range size(int64_t lower, int64_t upper, Extensibility e = Closed) {
    return {lower, upper, e};
}
constexpr Range sizeFrom(int64_t lower) {
    return {lower, kNoUpperBound, Closed};
}

struct Type;

struct Component {
    const char* name;
    const Type* type;
    uint8_t flags;

    constexpr Component(const char* n, const Type& t, uint8_t f = Mandatory) : name(n), type(&t), flags(f) {}
    Component(const char*, Type&&, uint8_t = Mandatory) = delete;  // the type must outlive the table
    // An ENUMERATED identifier.
    constexpr explicit Component(const char* n, uint8_t f = Mandatory) : name(n), type(nullptr), flags(f) {}

    constexpr bool optional() const { return flags & Optional; }
    constexpr bool addition() const { return flags & Addition; }
};

struct Type {
    Kind kind;
    Extensibility extensible;     // of the type (SEQUENCE, CHOICE, ENUMERATED) or of its constraint
    uint16_t rootCount;           // SEQUENCE, CHOICE, ENUMERATED: components before "..."
    uint16_t count;               // all components, additions included
    uint16_t optionalCount;       // SEQUENCE: root components flagged Optional
    Range range;                  // INTEGER value range; SIZE of strings and lists
    const Component* components;  // SEQUENCE, CHOICE, ENUMERATED
    const Type* element;          // SEQUENCE OF
    const char* alphabet;         // permitted alphabet, ascending; nullptr = the whole character set
    const char* name;             // ASN.1 name of a named type, for diagnostics
};

// ---- building types -----------------------------------------------------

namespace detail {
template <size_t N>
constexpr uint16_t countRoot(const Component (&c)[N]) {
    uint16_t n = 0;
    for (size_t i = 0; i < N; ++i)
        n += c[i].addition() ? 0 : 1;
    return n;
}
template <size_t N>
constexpr uint16_t countOptional(const Component (&c)[N]) {
    uint16_t n = 0;
    for (size_t i = 0; i < N; ++i)
        n += (!c[i].addition() && c[i].optional()) ? 1 : 0;
    return n;
}
constexpr Type leaf(Kind k, Range r = {}, const char* alphabet = nullptr) {
    return Type{k, r.extensible, 0, 0, 0, r, nullptr, nullptr, alphabet, nullptr};
}
}  // namespace detail

template <size_t N>
constexpr Type sequence(const char* name, const Component (&c)[N], Extensibility e = Closed) {
    return Type{Kind::Sequence, e,   detail::countRoot(c), uint16_t(N), detail::countOptional(c), {}, c, nullptr,
                nullptr,        name};
}
// SEQUENCE {} and SEQUENCE { ... }
constexpr Type emptySequence(const char* name, Extensibility e = Closed) {
    return Type{Kind::Sequence, e, 0, 0, 0, {}, nullptr, nullptr, nullptr, name};
}
template <size_t N>
constexpr Type choice(const char* name, const Component (&c)[N], Extensibility e = Closed) {
    return Type{Kind::Choice, e, detail::countRoot(c), uint16_t(N), 0, {}, c, nullptr, nullptr, name};
}
template <size_t N>
constexpr Type enumerated(const char* name, const Component (&c)[N], Extensibility e = Closed) {
    return Type{Kind::Enumerated, e, detail::countRoot(c), uint16_t(N), 0, {}, c, nullptr, nullptr, name};
}
constexpr Type sequenceOf(const Type& element, Range r = {}, const char* name = nullptr) {
    return Type{Kind::SequenceOf, r.extensible, 0, 0, 0, r, nullptr, &element, nullptr, name};
}
Type sequenceOf(Type&&, Range = {}, const char* = nullptr) = delete;  // the element must outlive the table
constexpr Type integer(int64_t lower, int64_t upper, Extensibility e = Closed) {
    return detail::leaf(Kind::Integer, Range{lower, upper, e});
}
constexpr Type integerFrom(int64_t lower) {
    return detail::leaf(Kind::Integer, Range{lower, kNoUpperBound, Closed});
}
constexpr Type unconstrainedInteger() {
    return detail::leaf(Kind::Integer, Range{kNoLowerBound, kNoUpperBound, Closed});
}
constexpr Type octetString(Range r = {}) {
    return detail::leaf(Kind::OctetString, r);
}
constexpr Type bitString(Range r = {}) {
    return detail::leaf(Kind::BitString, r);
}
constexpr Type ia5String(Range r = {}, const char* alphabet = nullptr) {
    return detail::leaf(Kind::IA5String, r, alphabet);
}
constexpr Type numericString(Range r = {}, const char* alphabet = nullptr) {
    return detail::leaf(Kind::NumericString, r, alphabet);
}
constexpr Type printableString(Range r = {}, const char* alphabet = nullptr) {
    return detail::leaf(Kind::PrintableString, r, alphabet);
}
constexpr Type visibleString(Range r = {}, const char* alphabet = nullptr) {
    return detail::leaf(Kind::VisibleString, r, alphabet);
}
constexpr Type generalString(Range r = {}) {
    return detail::leaf(Kind::GeneralString, r);
}
constexpr Type bmpString(Range r = {}) {
    return detail::leaf(Kind::BMPString, r);
}

// Unconstrained leaves that every table uses.
inline constexpr Type Null = detail::leaf(Kind::Null);
inline constexpr Type Boolean = detail::leaf(Kind::Boolean);
inline constexpr Type ObjectIdentifier = detail::leaf(Kind::ObjectIdentifier);
inline constexpr Type OctetString = octetString();
inline constexpr Type UnconstrainedInteger = unconstrainedInteger();
inline constexpr Type OpenType = detail::leaf(Kind::Open);

// A component of one constructed type, checked by the compiler: each table
// module declares one constant per component that code reads (`Setup::
// sourceAddress`), so a misspelt component does not build. The name is
// kept only so that a test can check every index against its table.
struct Ref {
    const Type* owner;
    uint16_t index;
    const char* name;
};

// ---- decoded values -----------------------------------------------------

// One node of a decoded or built value. Constructed values refer to their
// children by index into the same arena; byte values by offset into the
// input or into the owner's scratch buffer.
struct Node {
    const Type* type = nullptr;  // nullptr: absent component
    uint32_t first = 0;          // children / bytes: first child index or byte offset; CHOICE: the chosen child
    uint32_t length = 0;         // children / bytes: count; strings: bytes; BIT STRING: bytes
    int64_t number = 0;          // INTEGER, BOOLEAN, ENUMERATED index, CHOICE tag, BIT STRING bit count
    bool inScratch = false;      // bytes live in the scratch buffer rather than the input
};

struct Tree {
    std::vector<Node> nodes;
    const uint8_t* input = nullptr;
    std::string scratch;  // bytes that had to be converted or realigned

    void reset(const uint8_t* in);
    std::string_view bytesOf(const Node& n) const;
    // Adds `n` absent nodes at the end; returns the first.
    uint32_t allocate(uint32_t n);
    // Moves the children of `parent` to the end with room for one more, so
    // that they stay contiguous; returns the new child's index.
    uint32_t appendChild(uint32_t parent);
    // Puts `bytes` into the scratch buffer as the contents of node `at`.
    void setScratchBytes(uint32_t at, std::string_view bytes);
};

// A cursor on one node. An absent component or a failed lookup gives an
// empty Value, on which every accessor answers "nothing" (0, "", false).
class Value {
public:
    Value() = default;
    Value(const Tree* tree, uint32_t index) : tree_(tree), index_(index) {}

    explicit operator bool() const { return node() != nullptr; }
    const Type* type() const {
        auto* n = node();
        return n ? n->type : nullptr;
    }
    Kind kind() const { return type() ? type()->kind : Kind::Open; }

    // SEQUENCE: a component by name (as in the table) or by position.
    Value operator[](std::string_view component) const;
    Value component(size_t index) const;
    bool has(std::string_view component) const { return bool((*this)[component]); }
    // The component `r` names, or an empty Value when this is not a value of
    // r's type: a lookup by index costs no name comparison.
    Value operator[](Ref r) const { return type() == r.owner ? component(r.index) : Value(); }
    bool has(Ref r) const { return bool((*this)[r]); }
    // Components past the type's own: unknown extension additions, as Open values.
    size_t componentCount() const;

    // CHOICE: the chosen alternative's index (additions follow the root ones),
    // its name (`<N>` for an unknown extension), and its value.
    unsigned tag() const;
    std::string tagName() const;
    bool is(std::string_view alternative) const;
    bool is(Ref alternative) const { return type() == alternative.owner && tag() == alternative.index; }
    Value chosen() const;

    // SEQUENCE OF / SET OF
    size_t size() const;
    Value at(size_t i) const;

    int64_t integer() const;  // INTEGER, ENUMERATED index, BOOLEAN
    bool boolean() const { return integer() != 0; }
    std::string enumName() const;  // ENUMERATED identifier
    // OCTET STRING, OBJECT IDENTIFIER contents, BIT STRING bits (left-aligned),
    // character strings (BMPString: UCS-2 big-endian), Open: the raw octets.
    std::string_view bytes() const;
    int64_t bitLength() const;  // BIT STRING
    std::string text() const;   // character strings as UTF-8; OBJECT IDENTIFIER dotted

    uint32_t index() const { return index_; }

private:
    const Node* node() const;
    const Tree* tree_ = nullptr;
    uint32_t index_ = 0;
};

// ---- decoding ----------------------------------------------------------

// Where a decode stopped: why, the input bit it had reached, and the
// components it was inside, innermost first (a list element as its
// position). Names point into the tables, so recording one costs no
// allocation once warmed up; the text is built only when asked for.
struct DecodeStop {
    struct Step {
        const char* name;  // nullptr: the list element at `element`
        uint32_t element;
    };
    DecodeStatus status = DecodeStatus::Ok;
    size_t bit = 0;
    const Type* root = nullptr;
    std::vector<Step> path;

    // "H323-UserInformation.h323_uu_pdu.h323_message_body.setup.sourceAddress[0]"
    std::string pathText() const;
};

// Decodes aligned PER. Reused from one message to the next: its arena keeps
// its capacity, so decoding allocates nothing once warmed up.
//
// Lenient where deployed stacks are: bytes left after the value are not an
// error; an INTEGER, ENUMERATED, CHOICE index or SIZE above its bound is
// clamped to it; a fragmented length (16K or more) reads as 0; more than 128
// list elements or a string longer than 16K fails; unknown SEQUENCE
// extension additions are kept as Open values; an unknown CHOICE extension
// becomes an Open value but fails when its length is 0; a known addition
// that fails to decode fails the whole value.
class Decoder {
public:
    static constexpr size_t kMaxListElements = 128;
    static constexpr size_t kMaxStringLength = 16 * 1024;

    // The root value, or an empty Value when the input does not decode.
    // It stays valid until the next decode and while `data` lives.
    Value decode(const Type& type, const uint8_t* data, size_t size);
    Value decode(const Type& type, std::string_view data) {
        return decode(type, reinterpret_cast<const uint8_t*>(data.data()), data.size());
    }

    // Why the last decode failed (status Ok when it did not) and where.
    const DecodeStop& stop() const { return stop_; }
    DecodeStatus status() const { return stop_.status; }
    size_t stopBit() const { return stop_.bit; }
    std::string stopPath() const { return stop_.pathText(); }

private:
    Tree tree_;
    DecodeStop stop_;
};

// ---- building and encoding ---------------------------------------------

// Builds a value to encode, for tests and traffic generation.
//
//   per::Builder b(h225::H323_UserInformation);
//   auto setup = b.root()["h323_uu_pdu"]["h323_message_body"].choose("setup");
//   setup["protocolIdentifier"].setOid("0.0.8.2250.0.4");
//   std::vector<uint8_t> wire = per::encode(b.value());
class Builder {
public:
    class Slot {
    public:
        Slot operator[](std::string_view component);  // SEQUENCE: makes it present
        Slot choose(std::string_view alternative);    // CHOICE
        Slot chooseUnknown(unsigned tag);             // CHOICE: an extension alternative the table lacks
        Slot chosen();                                // CHOICE: the alternative chosen before
        Slot addUnknownAddition();                    // SEQUENCE: an addition the table lacks
        Slot append();                                // SEQUENCE OF

        Slot& present();              // NULL, or a SEQUENCE with nothing set
        Slot& setInteger(int64_t v);  // INTEGER, BOOLEAN, ENUMERATED index
        Slot& setBool(bool v) { return setInteger(v); }
        Slot& setEnum(std::string_view identifier);
        Slot& setBytes(std::string_view octets);  // OCTET STRING, Open, raw string bytes
        Slot& setBits(std::string_view octets, int64_t bits);
        Slot& setText(std::string_view utf8);  // character strings (BMPString converted to UCS-2)
        Slot& setOid(std::string_view dotted);

        Value value() const { return Value(&builder_->tree_, index_); }

    private:
        friend class Builder;
        Slot(Builder* b, uint32_t i) : builder_(b), index_(i) {}
        Node& node() const { return builder_->tree_.nodes[index_]; }
        Builder* builder_;
        uint32_t index_;
    };

    explicit Builder(const Type& root);
    Slot root() { return Slot(this, 0); }
    Value value() const { return Value(&tree_, 0); }

private:
    Tree tree_;
};

// Encodes `value` as aligned PER. Fails (returns false) when the value does
// not fit its type: a mandatory component left out, a CHOICE not chosen, a
// value outside a closed constraint.
bool encode(Value value, std::vector<uint8_t>& out);
std::vector<uint8_t> encode(Value value);

// ---- printing ------------------------------------------------------------

// Writes a value as nested blocks: `{`, one `name = value` line per present
// component indented two more spaces per level, `}`; a CHOICE as its tag
// name followed by its value.
void print(std::ostream& out, Value value, int indent = 0);
std::string toText(Value value);

}  // namespace h323::per

#endif
