#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace recorder {

// One archived call as the index keeps it: call.json's record with the call's signalling messages
// added under "messages", the name of its folder under the output folder, and its times.
struct IndexedCall {
    nlohmann::json record;
    std::string folderName;
    int64_t startMs = 0, endMs = 0;  // since the epoch
};

// What the call list asks for; empty or absent fields do not filter.
struct CallQuery {
    std::string party;                    // part of the caller or of the callee
    std::string callId;                   // part of the Call-ID
    std::optional<int64_t> fromMs, toMs;  // the call started within
    std::string signalling;               // "sip" or "h323"
    std::optional<double> mosBelow;       // a stream's MOS under this
    int64_t page = 1, perPage = 50;
};

// Where archived calls are found again. Every method may be called from any thread; each one
// throws std::runtime_error when the database fails.
class CallIndex {
public:
    virtual ~CallIndex() = default;

    // Creates or upgrades the schema if that was not done yet.
    virtual void open() = 0;
    // Writes the call with its messages and streams, all or nothing.
    virtual void add(const IndexedCall& call) = 0;
    // {"total", "page", "per_page", "calls": [summaries, newest first]}
    virtual nlohmann::json search(const CallQuery& query) = 0;
    // The call's record with its "id", "messages" and "streams"; none when there is no such call.
    virtual std::optional<nlohmann::json> details(int64_t id) = 0;
    virtual std::optional<std::string> folderOf(int64_t id) = 0;
    // Forgets the calls that started before `ms`; returns their folder names.
    virtual std::vector<std::string> removeStartedBefore(int64_t ms) = 0;
};

// "sqlite:PATH"; none when the scheme is not known.
std::unique_ptr<CallIndex> makeCallIndex(const std::string& url);

}  // namespace recorder
