#ifndef SNIFFER_STRING_TOKENIZER_H
#define SNIFFER_STRING_TOKENIZER_H

#include <string>

// Splits a text on one separator character, handing the tokens out in order.
// "a;;b" gives "a", "", "b"; a trailing separator adds no empty token.
class StringTokenizer {
public:
    StringTokenizer(const char* text, char separator);
    virtual ~StringTokenizer() = default;

    bool hasMoreTokens() const;
    std::string nextToken();

private:
    std::string buffer;
    char separator;
};

#endif
