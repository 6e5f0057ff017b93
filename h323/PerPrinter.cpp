// The indented text form of a value, for the signalling trace.

#include <ostream>
#include <sstream>

#include "h323/Per.h"
#include "h323/Text.h"

namespace h323::per {

namespace {

void spaces(std::ostream& out, int n) {
    for (int i = 0; i < n; ++i)
        out << ' ';
}

void hexOctets(std::ostream& out, std::string_view bytes) {
    out << '\'' << hexText(bytes) << "'H";
}

void bits(std::ostream& out, Value v) {
    std::string_view bytes = v.bytes();
    out << '\'';
    for (int64_t i = 0; i < v.bitLength(); ++i)
        out << ((uint8_t(bytes[size_t(i / 8)]) >> (7 - i % 8)) & 1);
    out << "'B";
}

void sequence(std::ostream& out, Value v, int indent) {
    out << "{\n";
    const Type& t = *v.type();
    for (size_t i = 0; i < v.componentCount(); ++i) {
        Value c = v.component(i);
        if (!c)
            continue;
        spaces(out, indent + 2);
        if (i < t.count)
            out << t.components[i].name;
        else
            out << '<' << i << '>';
        out << " = ";
        print(out, c, indent + 2);
        out << '\n';
    }
    spaces(out, indent);
    out << '}';
}

void list(std::ostream& out, Value v, int indent) {
    out << "{\n";
    for (size_t i = 0; i < v.size(); ++i) {
        spaces(out, indent + 2);
        out << '[' << i << "] = ";
        print(out, v.at(i), indent + 2);
        out << '\n';
    }
    spaces(out, indent);
    out << '}';
}

}  // namespace

void print(std::ostream& out, Value v, int indent) {
    if (!v)
        return;
    switch (v.kind()) {
    case Kind::Null: out << "NULL"; break;
    case Kind::Boolean: out << (v.boolean() ? "TRUE" : "FALSE"); break;
    case Kind::Integer: out << v.integer(); break;
    case Kind::Enumerated: out << v.enumName(); break;
    case Kind::OctetString:
    case Kind::Open: hexOctets(out, v.bytes()); break;
    case Kind::BitString: bits(out, v); break;
    case Kind::ObjectIdentifier: out << v.text(); break;
    case Kind::Sequence: sequence(out, v, indent); break;
    case Kind::SequenceOf: list(out, v, indent); break;
    case Kind::Choice:
        out << v.tagName();
        if (v.chosen().kind() != Kind::Null) {
            out << ' ';
            print(out, v.chosen(), indent);
        }
        break;
    default: out << '"' << v.text() << '"'; break;
    }
}

std::string toText(Value v) {
    std::ostringstream out;
    print(out, v);
    return out.str();
}

}  // namespace h323::per
