#include "StringTokenizer.h"

StringTokenizer::StringTokenizer(const char* text, char separator) : buffer(text ? text : ""), separator(separator) {}

bool StringTokenizer::hasMoreTokens() const {
    return !buffer.empty();
}

std::string StringTokenizer::nextToken() {
    const auto at = buffer.find(separator);
    if (at == std::string::npos) {
        std::string token;
        token.swap(buffer);
        return token;
    }
    std::string token = buffer.substr(0, at);
    buffer.erase(0, at + 1);
    return token;
}
