#include "h323/Q931.h"

#include "h323/Text.h"

#include <algorithm>
#include <ostream>

namespace h323 {

namespace {

constexpr size_t kMinimumSize = 5;
constexpr unsigned kMaxCallReferenceLength = 2;
// Where a decode stopped, when not inside an element (see Q931::stopPath).
constexpr int kHeaderStep = -1;
constexpr int kCallReferenceStep = -2;

const char* messageTypeName(unsigned type) {
    switch (type) {
    case Q931::Alerting: return "Alerting";
    case Q931::CallProceeding: return "CallProceeding";
    case Q931::Progress: return "Progress";
    case Q931::Setup: return "Setup";
    case Q931::Connect: return "Connect";
    case Q931::SetupAcknowledge: return "SetupAcknowledge";
    case Q931::ConnectAcknowledge: return "ConnectAcknowledge";
    case Q931::Notify: return "Notify";
    case Q931::ReleaseComplete: return "ReleaseComplete";
    case Q931::Facility: return "Facility";
    case Q931::Status: return "Status";
    case Q931::StatusEnquiry: return "StatusEnquiry";
    case Q931::Information: return "Information";
    default: return nullptr;
    }
}

const char* elementName(unsigned id) {
    switch (id) {
    case Q931::BearerCapability: return "Bearer-Capability";
    case Q931::Cause: return "Cause";
    case Q931::CallState: return "Call-State";
    case Q931::FacilityElement: return "Facility";
    case Q931::ProgressIndicator: return "Progress-Indicator";
    case Q931::NotificationIndicator: return "Notification-Indicator";
    case Q931::Display: return "Display";
    case Q931::Signal: return "Signal";
    case Q931::KeypadFacility: return "Keypad-Facility";
    case Q931::CallingPartyNumber: return "Calling-Party-Number";
    case Q931::CalledPartyNumber: return "Called-Party-Number";
    case Q931::RedirectingNumber: return "Redirecting-Number";
    case Q931::UserUser: return "User-User";
    default: return nullptr;
    }
}

}  // namespace

void Q931::clear() {
    messageType_ = 0;
    callReference_ = 0;
    fromDestination_ = false;
    entries_.clear();
    contents_.clear();
}

const Q931::Entry* Q931::find(uint8_t id) const {
    auto it =
        std::lower_bound(entries_.begin(), entries_.end(), id, [](const Entry& e, uint8_t v) { return e.id < v; });
    return it != entries_.end() && it->id == id ? &*it : nullptr;
}

void Q931::store(uint8_t id, const uint8_t* contents, size_t length) {
    Entry entry{id, uint32_t(contents_.size()), uint32_t(length)};
    contents_.append(reinterpret_cast<const char*>(contents), length);
    auto it =
        std::lower_bound(entries_.begin(), entries_.end(), id, [](const Entry& e, uint8_t v) { return e.id < v; });
    if (it != entries_.end() && it->id == id)
        *it = entry;
    else
        entries_.insert(it, entry);
}

bool Q931::decode(const uint8_t* data, size_t size) {
    clear();
    status_ = DecodeStatus::Ok;
    if (size < kMinimumSize)
        return stop(DecodeStatus::Truncated, size);
    if (data[1] > kMaxCallReferenceLength)
        return stop(DecodeStatus::Invalid, 1, kCallReferenceStep);
    unsigned callReferenceLength = data[1];
    if (callReferenceLength == 2) {
        callReference_ = ((data[2] & 0x7fu) << 8) | data[3];
        fromDestination_ = (data[2] & 0x80) != 0;
    }
    size_t pos = 2 + callReferenceLength;
    messageType_ = data[pos++];
    while (pos < size) {
        uint8_t id = data[pos++];
        if (id & 0x80) {  // single-octet element: its value lives in the identifier
            store(id, nullptr, 0);
            continue;
        }
        size_t length;
        if (id == UserUser) {
            if (size - pos < 2)
                return stop(DecodeStatus::Truncated, size, id);
            length = (size_t(data[pos]) << 8) | data[pos + 1];
            pos += 2;
            if (length == 0)
                return stop(DecodeStatus::Invalid, pos - 2, id);
            if (length > size - pos)
                return stop(DecodeStatus::Truncated, size, id);
            store(id, data + pos + 1, length - 1);  // past its protocol discriminator
        } else {
            if (pos >= size)
                return stop(DecodeStatus::Truncated, size, id);
            length = data[pos++];
            if (length > size - pos)
                return stop(DecodeStatus::Truncated, size, id);
            store(id, data + pos, length);
        }
        pos += length;
    }
    return true;
}

bool Q931::stop(DecodeStatus status, size_t octet, int element) {
    status_ = status;
    stopOctet_ = octet;
    stopElement_ = element;
    return false;
}

std::string Q931::stopPath() const {
    if (stopElement_ == kHeaderStep)
        return "Q931.header";
    if (stopElement_ == kCallReferenceStep)
        return "Q931.callReference";
    return "Q931.element[0x" + hexText(std::string(1, char(stopElement_))) + "]";
}

std::vector<uint8_t> Q931::encode() const {
    std::vector<uint8_t> out = {kProtocolDiscriminator, 2,
                                uint8_t((fromDestination_ ? 0x80 : 0) | ((callReference_ >> 8) & 0x7f)),
                                uint8_t(callReference_), uint8_t(messageType_)};
    for (const Entry& e : entries_) {
        out.push_back(e.id);
        if (e.id & 0x80)
            continue;
        std::string_view contents(contents_.data() + e.offset, e.length);
        if (e.id == UserUser) {
            size_t length = contents.size() + 1;
            out.push_back(uint8_t(length >> 8));
            out.push_back(uint8_t(length));
            out.push_back(kUserUserProtocol);
        } else {
            out.push_back(uint8_t(contents.size()));
        }
        out.insert(out.end(), contents.begin(), contents.end());
    }
    return out;
}

std::string_view Q931::element(uint8_t id) const {
    const Entry* e = find(id);
    return e ? std::string_view(contents_.data() + e->offset, e->length) : std::string_view();
}

void Q931::setCallReference(unsigned value, bool fromDestination) {
    callReference_ = value & 0x7fff;
    fromDestination_ = fromDestination;
}

void Q931::setElement(uint8_t id, std::string_view contents) {
    store(id, reinterpret_cast<const uint8_t*>(contents.data()), contents.size());
}

void Q931::setPartyNumber(uint8_t id, std::string_view digits, uint8_t typeOfNumber, uint8_t plan,
                          int presentationAndScreening) {
    std::string contents;
    bool extended = presentationAndScreening >= 0;
    contents += char((extended ? 0 : 0x80) | ((typeOfNumber & 7) << 4) | (plan & 0x0f));
    if (extended)
        contents += char(0x80 | (presentationAndScreening & 0x7f));
    contents += digits;
    setElement(id, contents);
}

// Octet 3 carries type of number and plan; when its extension bit (8) is 0,
// octet 3a follows, and for the calling number octet 3b after a 3a whose
// extension bit is 0 too.
std::string Q931::partyDigits(uint8_t id) const {
    std::string_view c = element(id);
    if (c.empty())
        return {};
    size_t pos = 1;
    if (!(uint8_t(c[0]) & 0x80)) {
        bool octet3bFollows = id == CallingPartyNumber && pos < c.size() && !(uint8_t(c[pos]) & 0x80);
        pos += octet3bFollows ? 2 : 1;
    }
    return pos < c.size() ? std::string(c.substr(pos)) : std::string();
}

void Q931::print(std::ostream& out) const {
    out << "{\n  callReference = " << callReference_
        << "\n  fromDestination = " << (fromDestination_ ? "TRUE" : "FALSE") << "\n  messageType = ";
    if (const char* name = messageTypeName(messageType_))
        out << name;
    else
        out << "<" << messageType_ << ">";
    out << '\n';
    for (const Entry& e : entries_) {
        out << "  IE: ";
        if (const char* name = elementName(e.id))
            out << name;
        else
            out << "<0x" << hexText(std::string_view(reinterpret_cast<const char*>(&e.id), 1)) << ">";
        out << " = '" << hexText(std::string_view(contents_.data() + e.offset, e.length)) << "'H\n";
    }
    out << '}';
}

}  // namespace h323
