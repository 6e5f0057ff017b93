// Q.931 call-control messages as H.225.0 carries them: the header (protocol
// discriminator, call reference, message type) and the information
// elements, keyed by identifier.

#ifndef H323_Q931_H
#define H323_Q931_H

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "h323/DecodeStatus.h"

namespace h323 {

class Q931 {
public:
    enum MessageType : uint8_t {
        Alerting = 0x01,
        CallProceeding = 0x02,
        Progress = 0x03,
        Setup = 0x05,
        Connect = 0x07,
        SetupAcknowledge = 0x0d,
        ConnectAcknowledge = 0x0f,
        Notify = 0x6e,
        ReleaseComplete = 0x5a,
        Facility = 0x62,
        Status = 0x7d,
        StatusEnquiry = 0x75,
        Information = 0x7b,
    };

    enum Element : uint8_t {
        BearerCapability = 0x04,
        Cause = 0x08,
        CallState = 0x14,
        FacilityElement = 0x1c,
        ProgressIndicator = 0x1e,
        NotificationIndicator = 0x27,
        Display = 0x28,
        Signal = 0x34,
        KeypadFacility = 0x2c,
        CallingPartyNumber = 0x6c,
        CalledPartyNumber = 0x70,
        RedirectingNumber = 0x74,
        UserUser = 0x7e,
    };

    static constexpr uint8_t kProtocolDiscriminator = 0x08;
    // User-user contents that follow are an X.208/X.209 coded user information.
    static constexpr uint8_t kUserUserProtocol = 0x05;

    // Decodes a message: fails when it is shorter than 5 octets, its call
    // reference is longer than 2 octets, or an element runs past the end.
    // Elements are copied, so the message outlives `data`. A repeated
    // element replaces the earlier one; single-octet elements are kept empty.
    bool decode(const uint8_t* data, size_t size);
    bool decode(std::string_view data) { return decode(reinterpret_cast<const uint8_t*>(data.data()), data.size()); }

    // The wire form: the 2-octet call reference, then the elements in
    // ascending identifier order.
    std::vector<uint8_t> encode() const;

    // Why the last decode failed (Ok when it did not), the bit it stopped
    // at, and the part it was reading: "Q931.header", "Q931.callReference"
    // or "Q931.element[0x7e]". What was read before the failure is kept.
    DecodeStatus status() const { return status_; }
    size_t stopBit() const { return stopOctet_ * 8; }
    std::string stopPath() const;

    unsigned messageType() const { return messageType_; }
    unsigned callReference() const { return callReference_; }  // without the flag
    bool fromDestination() const { return fromDestination_; }  // the call reference flag

    bool has(uint8_t element) const { return find(element) != nullptr; }
    // An element's contents; for the user-user element, those after its
    // protocol discriminator.
    std::string_view element(uint8_t element) const;
    // Digits of Calling / Called Party Number, "" when absent.
    std::string callingPartyNumber() const { return partyDigits(CallingPartyNumber); }
    std::string calledPartyNumber() const { return partyDigits(CalledPartyNumber); }

    // Building, for tests and traffic generation.
    void clear();
    void setMessageType(uint8_t type) { messageType_ = type; }
    void setCallReference(unsigned value, bool fromDestination);
    void setElement(uint8_t element, std::string_view contents);
    // Party numbers with octet 3 (type of number, numbering plan) and, for
    // the calling number, octet 3a (presentation, screening) when given.
    void setPartyNumber(uint8_t element, std::string_view digits, uint8_t typeOfNumber = 0, uint8_t plan = 1,
                        int presentationAndScreening = -1);

    void print(std::ostream& out) const;

private:
    struct Entry {
        uint8_t id;
        uint32_t offset;
        uint32_t length;
    };
    const Entry* find(uint8_t id) const;
    void store(uint8_t id, const uint8_t* contents, size_t length);
    std::string partyDigits(uint8_t element) const;
    [[gnu::cold, gnu::noinline]] bool stop(DecodeStatus status, size_t octet, int element = -1);  // -1: the header

    unsigned messageType_ = 0;
    unsigned callReference_ = 0;
    bool fromDestination_ = false;
    std::vector<Entry> entries_;  // ascending by id
    std::string contents_;        // element contents, referred to by entries_
    DecodeStatus status_ = DecodeStatus::Ok;
    size_t stopOctet_ = 0;
    int stopElement_ = -1;  // the element being read; -1: the header, -2: the call reference
};

}  // namespace h323

#endif
