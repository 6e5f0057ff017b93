// Decoded-value arena, its cursor, and the character layouts of strings.

#include <algorithm>
#include <cstring>

#include "h323/Per.h"
#include "h323/PerRules.h"
#include "h323/Unicode.h"

namespace h323::per {

namespace rules {

namespace {
// The characters each known-multiplier type allows when no FROM narrows it.
constexpr char kNumericAlphabet[] = " 0123456789";

size_t naturalAlphabetSize(Kind k) {
    switch (k) {
    case Kind::NumericString: return sizeof(kNumericAlphabet) - 1;
    case Kind::PrintableString: return 74;
    case Kind::VisibleString: return 95;
    case Kind::BMPString: return 65536;
    default: return 128;  // IA5String
    }
}

unsigned alignedBits(size_t alphabetSize) {
    unsigned bits = bitsFor(alphabetSize);
    unsigned aligned = 1;
    while (aligned < bits)
        aligned *= 2;
    return aligned;
}
}  // namespace

CharLayout charLayout(const Type& t) {
    const char* alphabet = t.alphabet;
    if (!alphabet && t.kind == Kind::NumericString)
        alphabet = kNumericAlphabet;
    size_t size = alphabet ? std::strlen(alphabet) : naturalAlphabetSize(t.kind);
    unsigned bits = alignedBits(size);
    // Characters travel as their own code when every code fits the field.
    bool indexed = alphabet && size > 0 && uint64_t(uint8_t(alphabet[size - 1])) >= (uint64_t(1) << bits);
    return {bits, indexed ? alphabet : nullptr, size};
}

}  // namespace rules

void Tree::reset(const uint8_t* in) {
    nodes.clear();
    scratch.clear();
    input = in;
}

std::string_view Tree::bytesOf(const Node& n) const {
    const char* base = n.inScratch ? scratch.data() : reinterpret_cast<const char*>(input);
    if (!base)
        return {};
    return std::string_view(base + n.first, n.length);
}

uint32_t Tree::allocate(uint32_t n) {
    size_t base = nodes.size();
    nodes.resize(base + n);
    return uint32_t(base);
}

uint32_t Tree::appendChild(uint32_t parent) {
    uint32_t oldFirst = nodes[parent].first, count = nodes[parent].length;
    uint32_t first = allocate(count + 1);
    std::copy(nodes.begin() + oldFirst, nodes.begin() + oldFirst + count, nodes.begin() + first);
    nodes[parent].first = first;
    nodes[parent].length = count + 1;
    return first + count;
}

void Tree::setScratchBytes(uint32_t at, std::string_view bytes) {
    Node& n = nodes[at];
    n.first = uint32_t(scratch.size());
    n.length = uint32_t(bytes.size());
    n.inScratch = true;
    scratch.append(bytes);
}

const Node* Value::node() const {
    if (!tree_ || index_ >= tree_->nodes.size())
        return nullptr;
    const Node& n = tree_->nodes[index_];
    return n.type ? &n : nullptr;
}

Value Value::operator[](std::string_view name) const {
    const Node* n = node();
    if (!n || n->type->kind != Kind::Sequence)
        return {};
    for (size_t i = 0; i < n->type->count; ++i)
        if (name == n->type->components[i].name)
            return component(i);
    return {};
}

Value Value::component(size_t i) const {
    const Node* n = node();
    if (!n || n->type->kind != Kind::Sequence || i >= n->length)
        return {};
    return Value(tree_, n->first + uint32_t(i));
}

size_t Value::componentCount() const {
    const Node* n = node();
    return n && n->type->kind == Kind::Sequence ? n->length : 0;
}

unsigned Value::tag() const {
    const Node* n = node();
    return n && n->type->kind == Kind::Choice ? unsigned(n->number) : 0;
}

static std::string componentName(const Type& t, int64_t index) {
    if (index >= 0 && index < t.count)
        return t.components[index].name;
    return "<" + std::to_string(index) + ">";
}

std::string Value::tagName() const {
    const Node* n = node();
    return n && n->type->kind == Kind::Choice ? componentName(*n->type, n->number) : std::string();
}

bool Value::is(std::string_view alternative) const {
    const Node* n = node();
    return n && n->type->kind == Kind::Choice && n->number < n->type->count &&
           alternative == n->type->components[n->number].name;
}

Value Value::chosen() const {
    const Node* n = node();
    return n && n->type->kind == Kind::Choice ? Value(tree_, n->first) : Value();
}

size_t Value::size() const {
    const Node* n = node();
    return n && n->type->kind == Kind::SequenceOf ? n->length : 0;
}

Value Value::at(size_t i) const {
    const Node* n = node();
    if (!n || n->type->kind != Kind::SequenceOf || i >= n->length)
        return {};
    return Value(tree_, n->first + uint32_t(i));
}

int64_t Value::integer() const {
    const Node* n = node();
    return n ? n->number : 0;
}

std::string Value::enumName() const {
    const Node* n = node();
    return n && n->type->kind == Kind::Enumerated ? componentName(*n->type, n->number) : std::string();
}

static bool holdsBytes(Kind k) {
    return k == Kind::OctetString || k == Kind::BitString || k == Kind::ObjectIdentifier || k == Kind::Open ||
           k == Kind::GeneralString || rules::isCharacterString(k);
}

std::string_view Value::bytes() const {
    const Node* n = node();
    return n && holdsBytes(n->type->kind) ? tree_->bytesOf(*n) : std::string_view();
}

int64_t Value::bitLength() const {
    const Node* n = node();
    return n && n->type->kind == Kind::BitString ? n->number : 0;
}

// OBJECT IDENTIFIER contents octets as dotted arcs; the first octets carry
// two arcs at once (40 * first + second).
static std::string oidText(std::string_view contents) {
    std::string out;
    uint64_t arc = 0;
    bool first = true;
    for (unsigned char c : contents) {
        arc = (arc << 7) | (c & 0x7f);
        if (c & 0x80)
            continue;
        if (first) {
            uint64_t top = arc < 40 ? 0 : arc < 80 ? 1 : 2;
            out = std::to_string(top) + "." + std::to_string(arc - 40 * top);
            first = false;
        } else {
            out += "." + std::to_string(arc);
        }
        arc = 0;
    }
    return out;
}

std::string Value::text() const {
    const Node* n = node();
    if (!n)
        return {};
    std::string_view raw = tree_->bytesOf(*n);
    switch (n->type->kind) {
    case Kind::BMPString: return ucs2ToUtf8(raw);
    case Kind::ObjectIdentifier: return oidText(raw);
    default: return holdsBytes(n->type->kind) ? std::string(raw) : std::string();
    }
}

}  // namespace h323::per
