#include "CallArchive.h"

#include "Log.h"
#include "Text.h"

#include <cctype>
#include <ctime>
#include <fstream>

namespace recorder {
namespace {

constexpr size_t kMaxIdLength = 40;
// How often the index's upkeep runs while no call comes.
constexpr Milliseconds kUpkeepTick{1000};

// Call-IDs may hold '/', '@' and anything else; folder names keep the safe characters only.
std::string folderSafe(std::string_view id) {
    std::string safe;
    for (const char c : id.substr(0, kMaxIdLength))
        safe += std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '-' ? c : '_';
    return safe;
}

std::string compactTime(TimePoint time) {
    const std::time_t whole = Clock::to_time_t(time);
    std::tm utc{};
    gmtime_r(&whole, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y%m%d-%H%M%S", &utc);
    return text;
}

bool writeText(const std::filesystem::path& path, const std::string& text, std::ios::openmode mode) {
    std::ofstream out(path, mode);
    out << text;
    out.close();
    if (!out)
        log::error() << "Cannot write " << path.string();
    return static_cast<bool>(out);
}

}  // namespace

CallArchive::~CallArchive() {
    finish();
}

bool CallArchive::prepare() {
    std::error_code error;
    std::filesystem::create_directories(root_, error);
    if (error) {
        log::error() << "Cannot create the output folder " << root_.string() << ": " << error.message();
        return false;
    }
    writer_ = std::thread([this] { writeCalls(); });
    return true;
}

std::filesystem::path CallArchive::newFolder(TimePoint start, std::string_view callId) {
    const std::string base = compactTime(start) + '_' + folderSafe(callId);
    std::filesystem::path folder = root_ / base;
    std::error_code error;
    for (int n = 2; !std::filesystem::create_directory(folder, error) && !error; ++n)
        folder = root_ / (base + '-' + std::to_string(n));
    if (error)
        log::error() << "Cannot create " << folder.string() << ": " << error.message();
    return folder;
}

void CallArchive::store(std::unique_ptr<Call> call) {
    std::lock_guard<std::mutex> lock(mutex_);
    queue_.push_back(std::move(call));
    changed_.notify_one();
}

void CallArchive::finish() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        finishing_ = true;
        changed_.notify_one();
    }
    if (writer_.joinable())
        writer_.join();
}

void CallArchive::writeCalls() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        lock.unlock();
        upkeep();
        lock.lock();
        changed_.wait_for(lock, kUpkeepTick, [this] { return finishing_ || !queue_.empty(); });
        if (queue_.empty() && finishing_)
            return;
        if (queue_.empty())
            continue;
        std::unique_ptr<Call> call = std::move(queue_.front());
        queue_.pop_front();
        lock.unlock();
        write(*call);
        log::info() << "Call " << call->name() << " recorded in " << call->folder().string();
        call.reset();
        lock.lock();
    }
}

// The call was closed on the thread that recorded it: its pcap is complete, and call.wav is
// decoded from it here. Each file is encrypted as soon as nothing more reads or writes it.
void CallArchive::write(Call& call) {
    CallAudio audio(audioFiles_, call.folder());
    call.decodeAudio(audio);
    audio.close();
    seal(call, "call.pcap");
    const bool wav = !audio.empty() && audio.writeWav(call.folder() / "call.wav");
    if (wav)
        seal(call, "call.wav");
    const Json json = call.toJson(wav);
    if (writeText(call.folder() / "call.json", json.dump(2) + '\n', std::ios::trunc))
        seal(call, "call.json");
    writeText(root_ / "calls.jsonl", json.dump() + '\n', std::ios::app);
    if (index_)
        addToIndex(call, json);
}

// A file that cannot be encrypted is removed rather than left in clear.
void CallArchive::seal(const Call& call, const char* name) {
    if (!publicKey_)
        return;
    const std::filesystem::path clear = call.folder() / name;
    std::error_code error;
    if (!std::filesystem::exists(clear, error))
        return;
    std::string problem;
    if (!SealedFile::seal(clear, clear.string() + ".enc", *publicKey_, problem))
        log::error() << "Call " << call.name() << ": " << name << " removed, not encrypted: " << problem;
    std::filesystem::remove(clear, error);
}

// The index reads the record back as JSON, which must be UTF-8 whatever the wire brought.
void CallArchive::addToIndex(const Call& call, const Json& record) {
    IndexedCall indexed;
    try {
        indexed.record = nlohmann::json::parse(validUtf8(record.dump()));
        indexed.record["messages"] = nlohmann::json::parse(validUtf8(call.messagesJson().dump()));
    } catch (const nlohmann::json::exception& error) {
        log::error() << "Call " << call.name() << " left out of the index: " << error.what();
        return;
    }
    indexed.folderName = call.folder().filename().string();
    indexed.startMs = std::chrono::duration_cast<Milliseconds>(call.info().start.time_since_epoch()).count();
    indexed.endMs = std::chrono::duration_cast<Milliseconds>(call.info().end.time_since_epoch()).count();
    index_->add(std::move(indexed));
}

void CallArchive::upkeep() {
    if (index_)
        index_->upkeep(Clock::now());
}

}  // namespace recorder
