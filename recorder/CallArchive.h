#pragma once

#include "Call.h"
#include "IndexWriter.h"
#include "SealedFile.h"

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>

namespace recorder {

// The output folder: one sub-folder per call and the index calls.jsonl, one line per finished call.
// Finished calls are written on a thread of the archive's own, in the order they are given: a
// call's audio is decoded from its pcap and call.wav assembled there, and the thread that
// follows calls never waits for it.
class CallArchive {
public:
    explicit CallArchive(std::filesystem::path root) : root_(std::move(root)) {}
    ~CallArchive();
    CallArchive(const CallArchive&) = delete;
    CallArchive& operator=(const CallArchive&) = delete;

    // Finished calls also go to `index`, and its upkeep runs on the writing thread; before prepare().
    void indexTo(IndexWriter* index) { index_ = index; }
    // Each finished call.pcap, call.wav and call.json is then encrypted to `publicKey` as
    // NAME.enc (SealedFile) and the clear file removed; before prepare().
    void encryptTo(const SealedFile::PublicKey& publicKey) { publicKey_ = publicKey; }
    // Creates the folder and starts the writing thread.
    bool prepare();
    const std::filesystem::path& root() const { return root_; }

    // A new, empty folder named after the call's start and its identifier.
    std::filesystem::path newFolder(TimePoint start, std::string_view callId);

    // Takes a closed call: writes call.json and, when it has decoded audio, call.wav; then
    // appends the call to the index.
    void store(std::unique_ptr<Call> call);
    // Returns once every call given is written.
    void finish();

private:
    void writeCalls();
    void write(Call& call);
    // Encrypts one finished file of the call's folder, if asked to.
    void seal(const Call& call, const char* name);
    void addToIndex(const Call& call, const Json& record);
    void upkeep();

    std::filesystem::path root_;
    FileCache audioFiles_{8};  // the writing thread's: one call's audio channels at a time
    IndexWriter* index_ = nullptr;
    std::optional<SealedFile::PublicKey> publicKey_;
    std::thread writer_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::unique_ptr<Call>> queue_;
    bool finishing_ = false;
};

}  // namespace recorder
