#include "Json.h"

#include <cstdio>

namespace recorder {
namespace {

void writeString(std::string& out, const std::string& text) {
    out += '"';
    for (const char c : text) {
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                char escaped[8];
                std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
                out += escaped;
            } else {
                out += c;
            }
        }
    }
    out += '"';
}

void newline(std::string& out, int indent, int depth) {
    if (indent >= 0)
        out += '\n' + std::string(static_cast<size_t>(indent * depth), ' ');
}

}  // namespace

std::string Json::dump(int indent) const {
    std::string out;
    write(out, indent, 0);
    return out;
}

void Json::write(std::string& out, int indent, int depth) const {
    const char* separator = indent >= 0 ? ": " : ":";
    std::visit(
        [&](const auto& value) {
            using T = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<T, std::nullptr_t>) {
                out += "null";
            } else if constexpr (std::is_same_v<T, bool>) {
                out += value ? "true" : "false";
            } else if constexpr (std::is_same_v<T, int64_t>) {
                out += std::to_string(value);
            } else if constexpr (std::is_same_v<T, double>) {
                char number[32];
                std::snprintf(number, sizeof number, "%.3f", value);
                out += number;
            } else if constexpr (std::is_same_v<T, std::string>) {
                writeString(out, value);
            } else if constexpr (std::is_same_v<T, Array>) {
                out += '[';
                for (size_t i = 0; i < value.size(); ++i) {
                    out += i ? "," : "";
                    newline(out, indent, depth + 1);
                    value[i].write(out, indent, depth + 1);
                }
                if (!value.empty())
                    newline(out, indent, depth);
                out += ']';
            } else {
                out += '{';
                for (size_t i = 0; i < value.size(); ++i) {
                    out += i ? "," : "";
                    newline(out, indent, depth + 1);
                    writeString(out, value[i].first);
                    out += separator;
                    value[i].second.write(out, indent, depth + 1);
                }
                if (!value.empty())
                    newline(out, indent, depth);
                out += '}';
            }
        },
        value_);
}

}  // namespace recorder
