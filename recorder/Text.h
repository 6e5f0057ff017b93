#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace recorder {

std::string_view trim(std::string_view text);
bool equalsNoCase(std::string_view a, std::string_view b);
bool startsWith(std::string_view text, std::string_view prefix);
bool startsWithNoCase(std::string_view text, std::string_view prefix);

// Lines ended by "\n" or "\r\n", without their ends. A last line without an end counts.
std::vector<std::string_view> splitLines(std::string_view text);

// `text` with each byte that is not part of well-formed UTF-8 replaced by U+FFFD: what the wire
// brings is not always UTF-8, and JSON readers want it to be.
std::string validUtf8(std::string_view text);

// Leading decimal digits of `text` as a number, or -1 when there are none.
long leadingNumber(std::string_view text);

}  // namespace recorder
