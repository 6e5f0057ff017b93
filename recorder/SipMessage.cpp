#include "SipMessage.h"

#include "Text.h"

#include <algorithm>

namespace recorder {
namespace {

// A header's full name, with the compact forms that SIP allows spelled out.
std::string_view canonicalName(std::string_view name) {
    static constexpr std::pair<std::string_view, std::string_view> compact[] = {
        {"i", "Call-ID"}, {"f", "From"}, {"t", "To"}, {"l", "Content-Length"}, {"c", "Content-Type"}};
    for (const auto& [shortName, longName] : compact)
        if (equalsNoCase(name, shortName))
            return longName;
    return name;
}

bool parseStartLine(std::string_view line, SipMessage& message) {
    static constexpr std::string_view version = "SIP/2.0";
    if (startsWith(line, version) && line.size() > version.size() && line[version.size()] == ' ') {
        message.status = static_cast<int>(leadingNumber(line.substr(version.size() + 1)));
        return message.status >= 100 && message.status <= 699;
    }
    const size_t space = line.find(' ');
    if (space == 0 || space == std::string_view::npos || line.size() < version.size() ||
        line.substr(line.size() - version.size()) != version)
        return false;
    message.isRequest = true;
    message.method = line.substr(0, space);
    return true;
}

// The length of the quoted string `value` starts with (a display name may hold '<'), 0 without one.
size_t quotedPrefixLength(std::string_view value) {
    if (value.empty() || value.front() != '"')
        return 0;
    for (size_t i = 1; i < value.size(); ++i) {
        if (value[i] == '\\')
            ++i;
        else if (value[i] == '"')
            return i + 1;
    }
    return value.size();
}

// A display name as written before the '<': a quoted string loses its quotes and the
// backslashes of its escaped characters; a plain one its surrounding blanks.
std::string displayName(std::string_view text) {
    text = trim(text);
    if (text.size() < 2 || text.front() != '"' || text.back() != '"')
        return std::string(text);
    std::string name;
    for (size_t i = 1; i + 1 < text.size(); ++i) {
        if (text[i] == '\\' && i + 2 < text.size())
            ++i;
        name += text[i];
    }
    return name;
}

// From and To: `"Name" <sip:user@host>;tag=x`, `Name <sip:user@host>` or `sip:user@host;tag=x`.
void parseAddress(std::string_view value, std::string& uri, std::string& name, std::string& tag) {
    std::string_view params;
    const size_t open = value.find('<', quotedPrefixLength(value));
    const size_t close = value.find('>', open);
    if (open != std::string_view::npos && close != std::string_view::npos) {
        name = displayName(value.substr(0, open));
        uri = value.substr(open + 1, close - open - 1);
        params = value.substr(close + 1);
    } else {
        const size_t semicolon = value.find(';');
        uri = trim(value.substr(0, semicolon));
        params = semicolon == std::string_view::npos ? std::string_view{} : value.substr(semicolon);
    }
    while (!params.empty()) {
        params.remove_prefix(1);  // the ';' in front of each parameter
        const size_t end = params.find(';');
        const std::string_view param = trim(params.substr(0, end));
        if (startsWithNoCase(param, "tag="))
            tag = param.substr(4);
        params = end == std::string_view::npos ? std::string_view{} : params.substr(end);
    }
}

}  // namespace

std::optional<SipMessage> parseSip(std::string_view text) {
    size_t headEnd = text.find("\r\n\r\n");
    size_t bodyStart = headEnd + 4;
    if (headEnd == std::string_view::npos) {
        headEnd = text.find("\n\n");
        bodyStart = headEnd + 2;
    }
    if (headEnd == std::string_view::npos)
        headEnd = bodyStart = text.size();

    const std::vector<std::string_view> lines = splitLines(text.substr(0, headEnd));
    SipMessage message;
    if (lines.empty() || !parseStartLine(lines.front(), message))
        return std::nullopt;

    long contentLength = -1;
    bool sdpBody = false;
    for (size_t i = 1; i < lines.size(); ++i) {
        const size_t colon = lines[i].find(':');
        if (colon == std::string_view::npos)
            continue;  // folded continuation lines carry nothing we read
        const std::string_view name = canonicalName(trim(lines[i].substr(0, colon)));
        const std::string_view value = trim(lines[i].substr(colon + 1));
        if (equalsNoCase(name, "Call-ID"))
            message.callId = value;
        else if (equalsNoCase(name, "From"))
            parseAddress(value, message.from, message.fromName, message.fromTag);
        else if (equalsNoCase(name, "To"))
            parseAddress(value, message.to, message.toName, message.toTag);
        else if (equalsNoCase(name, "CSeq"))
            message.cseqMethod = trim(value.substr(std::min(value.find(' '), value.size())));
        else if (equalsNoCase(name, "Content-Length"))
            contentLength = leadingNumber(value);
        else if (equalsNoCase(name, "Content-Type"))
            sdpBody = startsWithNoCase(value, "application/sdp");
    }

    if (sdpBody && bodyStart < text.size()) {
        message.sdp = text.substr(bodyStart);
        if (contentLength >= 0 && static_cast<size_t>(contentLength) < message.sdp.size())
            message.sdp = message.sdp.substr(0, static_cast<size_t>(contentLength));
    }
    return message;
}

}  // namespace recorder
