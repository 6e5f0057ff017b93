// Building values to encode.

#include <cstdio>
#include <cstdlib>

#include "h323/Per.h"
#include "h323/Unicode.h"

namespace h323::per {

namespace {

// The builder serves tests and traffic generation: asking it for a
// component the table does not have is a fault in the caller.
[[noreturn]] void misuse(const char* what, std::string_view name) {
    std::fprintf(stderr, "per::Builder: %s '%.*s'\n", what, int(name.size()), name.data());
    std::abort();
}

int findComponent(const Type& t, std::string_view name) {
    for (int i = 0; i < t.count; ++i)
        if (name == t.components[i].name)
            return i;
    return -1;
}

// BER contents octets of a dotted OBJECT IDENTIFIER.
std::string oidContents(std::string_view dotted) {
    std::vector<uint64_t> arcs;
    uint64_t arc = 0;
    for (char c : dotted) {
        if (c == '.') {
            arcs.push_back(arc);
            arc = 0;
        } else {
            arc = arc * 10 + uint64_t(c - '0');
        }
    }
    arcs.push_back(arc);
    if (arcs.size() < 2)
        misuse("object identifier needs two arcs", dotted);
    arcs[1] += 40 * arcs[0];
    std::string out;
    for (size_t i = 1; i < arcs.size(); ++i) {
        char groups[10];
        int n = 0;
        uint64_t v = arcs[i];
        do {
            groups[n++] = char(v & 0x7f);
            v >>= 7;
        } while (v);
        while (n-- > 0)
            out += char(groups[n] | (n ? 0x80 : 0));
    }
    return out;
}

}  // namespace

Builder::Builder(const Type& root) {
    tree_.nodes.resize(1);
    tree_.nodes[0].type = &root;
}

Builder::Slot Builder::Slot::operator[](std::string_view name) {
    const Type& t = *node().type;
    int i = t.kind == Kind::Sequence ? findComponent(t, name) : -1;
    if (i < 0)
        misuse("no component", name);
    present();
    uint32_t child = node().first + uint32_t(i);
    Node& c = builder_->tree_.nodes[child];
    if (!c.type)
        c.type = t.components[i].type;
    return Slot(builder_, child);
}

Builder::Slot& Builder::Slot::present() {
    const Type& t = *node().type;
    if (t.kind == Kind::Sequence && node().length < t.count) {
        uint32_t first = builder_->tree_.allocate(t.count);
        node().first = first;
        node().length = t.count;
    }
    return *this;
}

Builder::Slot Builder::Slot::choose(std::string_view name) {
    const Type& t = *node().type;
    int i = t.kind == Kind::Choice ? findComponent(t, name) : -1;
    if (i < 0)
        misuse("no alternative", name);
    Slot child = chooseUnknown(unsigned(i));
    child.node().type = t.components[i].type;
    return child;
}

Builder::Slot Builder::Slot::chooseUnknown(unsigned tag) {
    uint32_t child = builder_->tree_.allocate(1);
    node().first = child;
    node().number = tag;
    builder_->tree_.nodes[child].type = &OpenType;
    return Slot(builder_, child);
}

Builder::Slot Builder::Slot::chosen() {
    if (node().type->kind != Kind::Choice || node().first == 0)
        misuse("nothing chosen in", node().type->name ? node().type->name : "");
    return Slot(builder_, node().first);
}

Builder::Slot Builder::Slot::addUnknownAddition() {
    present();
    uint32_t child = builder_->tree_.appendChild(index_);
    builder_->tree_.nodes[child].type = &OpenType;
    return Slot(builder_, child);
}

Builder::Slot Builder::Slot::append() {
    const Type& t = *node().type;
    if (t.kind != Kind::SequenceOf)
        misuse("not a list", t.name ? t.name : "");
    uint32_t child = builder_->tree_.appendChild(index_);
    builder_->tree_.nodes[child].type = t.element;
    return Slot(builder_, child);
}

Builder::Slot& Builder::Slot::setInteger(int64_t v) {
    node().number = v;
    return *this;
}

Builder::Slot& Builder::Slot::setEnum(std::string_view identifier) {
    int i = findComponent(*node().type, identifier);
    if (i < 0)
        misuse("no enumeration value", identifier);
    return setInteger(i);
}

Builder::Slot& Builder::Slot::setBytes(std::string_view octets) {
    builder_->tree_.setScratchBytes(index_, octets);
    return *this;
}

Builder::Slot& Builder::Slot::setBits(std::string_view octets, int64_t bits) {
    setBytes(octets);
    return setInteger(bits);
}

Builder::Slot& Builder::Slot::setText(std::string_view utf8) {
    if (node().type->kind == Kind::BMPString)
        return setBytes(utf8ToUcs2(utf8));
    return setBytes(utf8);
}

Builder::Slot& Builder::Slot::setOid(std::string_view dotted) {
    return setBytes(oidContents(dotted));
}

}  // namespace h323::per
