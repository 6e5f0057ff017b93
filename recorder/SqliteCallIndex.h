#pragma once

#include "CallIndex.h"

#include <mutex>

struct sqlite3;
struct sqlite3_stmt;

namespace recorder {

// The call index in one SQLite file. The connection is opened on first use and again after it
// failed, so that a database that comes back is used again; one statement runs at a time.
class SqliteCallIndex : public CallIndex {
public:
    explicit SqliteCallIndex(std::string path) : path_(std::move(path)) {}
    ~SqliteCallIndex() override;

    void open() override;
    void add(const IndexedCall& call) override;
    nlohmann::json search(const CallQuery& query) override;
    std::optional<nlohmann::json> details(int64_t id) override;
    std::optional<std::string> folderOf(int64_t id) override;
    std::vector<std::string> removeStartedBefore(int64_t ms) override;

    static constexpr int kSchemaVersion = 2;

private:
    class Statement;

    void connect();
    void upgradeSchema();
    void execute(const char* sql);
    void insertCall(const IndexedCall& call);
    [[noreturn]] void fail(const std::string& what);

    std::string path_;
    std::mutex mutex_;
    sqlite3* db_ = nullptr;
};

}  // namespace recorder
