#include "SqliteCallIndex.h"

#include <sqlite3.h>

#include <stdexcept>

namespace recorder {
namespace {

using nlohmann::json;

// Each entry takes the schema from the version before it to its own (entry 0 makes version 1).
const char* const kUpgrades[] = {
    R"(CREATE TABLE calls (
         id INTEGER PRIMARY KEY,
         signalling TEXT NOT NULL,
         call_id TEXT NOT NULL,
         call_reference TEXT,
         caller TEXT NOT NULL,
         callee TEXT NOT NULL,
         start_ms INTEGER NOT NULL,
         end_ms INTEGER NOT NULL,
         start TEXT NOT NULL,
         "end" TEXT NOT NULL,
         duration REAL NOT NULL,
         end_reason TEXT NOT NULL,
         signalling_packets INTEGER NOT NULL,
         folder TEXT NOT NULL,
         pcap TEXT,
         wav TEXT,
         lowest_mos REAL,
         media TEXT NOT NULL,
         dtmf TEXT NOT NULL);
       CREATE INDEX calls_by_start ON calls (start_ms);
       CREATE TABLE messages (
         call INTEGER NOT NULL REFERENCES calls (id) ON DELETE CASCADE,
         position INTEGER NOT NULL,
         time TEXT NOT NULL,
         direction TEXT NOT NULL,
         source TEXT NOT NULL,
         destination TEXT NOT NULL,
         line TEXT NOT NULL,
         PRIMARY KEY (call, position));
       CREATE TABLE streams (
         call INTEGER NOT NULL REFERENCES calls (id) ON DELETE CASCADE,
         position INTEGER NOT NULL,
         destination TEXT NOT NULL,
         source TEXT NOT NULL,
         speaker TEXT NOT NULL,
         codec TEXT NOT NULL,
         packets INTEGER NOT NULL,
         bytes INTEGER NOT NULL,
         lost INTEGER NOT NULL,
         mos REAL,
         quality TEXT NOT NULL,
         PRIMARY KEY (call, position));)",
    R"(ALTER TABLE calls ADD COLUMN caller_name TEXT NOT NULL DEFAULT '';
       ALTER TABLE calls ADD COLUMN callee_name TEXT NOT NULL DEFAULT '';)",
};
static_assert(sizeof kUpgrades / sizeof kUpgrades[0] == SqliteCallIndex::kSchemaVersion);

const char* const kSummaryColumns =
    "id, signalling, call_id, caller, callee, caller_name, callee_name, start, \"end\", duration, end_reason, "
    "lowest_mos, wav";

// Every filter is always there and off when its value is empty or null: the text of the query
// never changes, and what was asked for reaches SQLite as bound values only.
const char* const kFilter = R"( FROM calls WHERE
      (?1 = '' OR instr(caller, ?1) > 0 OR instr(callee, ?1) > 0 OR instr(caller_name, ?1) > 0
          OR instr(callee_name, ?1) > 0)
  AND (?2 = '' OR instr(call_id, ?2) > 0)
  AND (?3 IS NULL OR start_ms >= ?3)
  AND (?4 IS NULL OR start_ms <= ?4)
  AND (?5 = '' OR signalling = ?5)
  AND (?6 IS NULL OR lowest_mos < ?6))";

std::optional<double> lowestMos(const json& streams) {
    std::optional<double> lowest;
    for (const json& stream : streams)
        if (stream.value("mos", json()).is_number() && (!lowest || stream["mos"].get<double>() < *lowest))
            lowest = stream["mos"].get<double>();
    return lowest;
}

std::string textOr(const json& record, const char* key) {
    const auto found = record.find(key);
    return found != record.end() && found->is_string() ? found->get<std::string>() : std::string();
}

}  // namespace

// One prepared statement; values are bound from 1 on, in the order they are given.
class SqliteCallIndex::Statement {
public:
    Statement(SqliteCallIndex& index, const std::string& sql) : index_(index) {
        if (sqlite3_prepare_v2(index.db_, sql.c_str(), -1, &statement_, nullptr) != SQLITE_OK)
            index.fail("prepare");
    }
    ~Statement() { sqlite3_finalize(statement_); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    Statement& bind(const std::string& text) {
        check(sqlite3_bind_text(statement_, ++bound_, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT));
        return *this;
    }
    Statement& bind(int64_t value) {
        check(sqlite3_bind_int64(statement_, ++bound_, value));
        return *this;
    }
    Statement& bind(std::optional<double> value) {
        check(value ? sqlite3_bind_double(statement_, ++bound_, *value) : sqlite3_bind_null(statement_, ++bound_));
        return *this;
    }
    Statement& bind(std::optional<int64_t> value) {
        check(value ? sqlite3_bind_int64(statement_, ++bound_, *value) : sqlite3_bind_null(statement_, ++bound_));
        return *this;
    }
    Statement& bindNullable(const json& value) {
        return value.is_string() ? bind(value.get<std::string>()) : bind(std::optional<int64_t>());
    }

    // True while there is a row to read.
    bool step() {
        const int status = sqlite3_step(statement_);
        if (status != SQLITE_ROW && status != SQLITE_DONE)
            index_.fail("step");
        return status == SQLITE_ROW;
    }

    int64_t integer(int column) const { return sqlite3_column_int64(statement_, column); }
    std::string text(int column) const {
        const auto* value = sqlite3_column_text(statement_, column);
        return value ? std::string(reinterpret_cast<const char*>(value),
                                   static_cast<size_t>(sqlite3_column_bytes(statement_, column)))
                     : std::string();
    }
    // The column as JSON: numbers and text as they are, NULL as null.
    json value(int column) const {
        switch (sqlite3_column_type(statement_, column)) {
        case SQLITE_INTEGER: return integer(column);
        case SQLITE_FLOAT: return sqlite3_column_double(statement_, column);
        case SQLITE_NULL: return nullptr;
        default: return text(column);
        }
    }
    // The row as an object whose keys are the column names.
    json row() const {
        json object = json::object();
        for (int i = 0; i < sqlite3_column_count(statement_); ++i)
            object[sqlite3_column_name(statement_, i)] = value(i);
        return object;
    }

private:
    void check(int status) {
        if (status != SQLITE_OK)
            index_.fail("bind");
    }

    SqliteCallIndex& index_;
    sqlite3_stmt* statement_ = nullptr;
    int bound_ = 0;
};

SqliteCallIndex::~SqliteCallIndex() {
    sqlite3_close_v2(db_);
}

void SqliteCallIndex::open() {
    std::lock_guard<std::mutex> lock(mutex_);
    connect();
}

// Drops the connection, so that the next call opens it again, and throws.
void SqliteCallIndex::fail(const std::string& what) {
    std::string problem = path_ + ": " + what + ": " + (db_ ? sqlite3_errmsg(db_) : "cannot open");
    sqlite3_close_v2(db_);
    db_ = nullptr;
    throw std::runtime_error(problem);
}

void SqliteCallIndex::connect() {
    if (db_)
        return;
    if (sqlite3_open_v2(path_.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) != SQLITE_OK)
        fail("open");
    sqlite3_busy_timeout(db_, 5000);
    execute("PRAGMA foreign_keys = ON; PRAGMA journal_mode = WAL;");
    upgradeSchema();
}

void SqliteCallIndex::execute(const char* sql) {
    if (sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        fail("execute");
}

void SqliteCallIndex::upgradeSchema() {
    execute("BEGIN IMMEDIATE; CREATE TABLE IF NOT EXISTS schema_version (version INTEGER NOT NULL);");
    int64_t version = 0;
    {
        Statement current(*this, "SELECT max(version) FROM schema_version");
        if (current.step())
            version = current.integer(0);
    }
    if (version > kSchemaVersion) {
        fail("schema version " + std::to_string(version) + " is newer than this recorder's " +
             std::to_string(kSchemaVersion));
    }
    for (; version < kSchemaVersion; ++version) {
        execute(kUpgrades[version]);
        Statement(*this, "INSERT INTO schema_version (version) VALUES (?)").bind(version + 1).step();
    }
    execute("COMMIT");
}

void SqliteCallIndex::add(const IndexedCall& call) {
    std::lock_guard<std::mutex> lock(mutex_);
    connect();
    // A failure closes the connection, which abandons the transaction.
    execute("BEGIN IMMEDIATE");
    insertCall(call);
    execute("COMMIT");
}

void SqliteCallIndex::insertCall(const IndexedCall& call) {
    const json& record = call.record;
    const json streams = record.value("streams", json::array());
    const json files = record.value("files", json::object());
    Statement insert(*this, R"(INSERT INTO calls (signalling, call_id, call_reference, caller, callee, caller_name,
        callee_name, start_ms, end_ms, start, "end", duration, end_reason, signalling_packets, folder, pcap, wav,
        lowest_mos, media, dtmf) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?))");
    insert.bind(textOr(record, "signalling"))
        .bind(textOr(record, "call_id"))
        .bindNullable(record.value("call_reference", json()))
        .bind(textOr(record, "caller"))
        .bind(textOr(record, "callee"))
        .bind(textOr(record, "caller_name"))
        .bind(textOr(record, "callee_name"))
        .bind(call.startMs)
        .bind(call.endMs)
        .bind(textOr(record, "start"))
        .bind(textOr(record, "end"))
        .bind(std::optional<double>(record.value("duration", 0.0)))
        .bind(textOr(record, "end_reason"))
        .bind(record.value("signalling_packets", int64_t{0}))
        .bind(call.folderName)
        .bindNullable(files.value("pcap", json()))
        .bindNullable(files.value("wav", json()))
        .bind(lowestMos(streams))
        .bind(record.value("media", json::array()).dump())
        .bind(record.value("dtmf", json::array()).dump());
    insert.step();
    const int64_t id = sqlite3_last_insert_rowid(db_);

    int64_t position = 0;
    for (const json& message : record.value("messages", json::array())) {
        Statement(*this, "INSERT INTO messages VALUES (?, ?, ?, ?, ?, ?, ?)")
            .bind(id)
            .bind(position++)
            .bind(textOr(message, "time"))
            .bind(textOr(message, "direction"))
            .bind(textOr(message, "source"))
            .bind(textOr(message, "destination"))
            .bind(textOr(message, "line"))
            .step();
    }
    position = 0;
    for (const json& stream : streams) {
        const json mos = stream.value("mos", json());
        Statement(*this, "INSERT INTO streams VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
            .bind(id)
            .bind(position++)
            .bind(textOr(stream, "destination"))
            .bind(textOr(stream, "source"))
            .bind(textOr(stream, "speaker"))
            .bind(textOr(stream, "codec"))
            .bind(stream.value("packets", int64_t{0}))
            .bind(stream.value("bytes", int64_t{0}))
            .bind(stream.value("lost", int64_t{0}))
            .bind(mos.is_number() ? std::optional<double>(mos.get<double>()) : std::nullopt)
            .bind(stream.dump())
            .step();
    }
}

json SqliteCallIndex::search(const CallQuery& query) {
    std::lock_guard<std::mutex> lock(mutex_);
    connect();
    const auto bindFilter = [&query](Statement& statement) -> Statement& {
        return statement.bind(query.party)
            .bind(query.callId)
            .bind(query.fromMs)
            .bind(query.toMs)
            .bind(query.signalling)
            .bind(query.mosBelow);
    };
    Statement count(*this, std::string("SELECT count(*)") + kFilter);
    bindFilter(count).step();
    Statement list(*this, std::string("SELECT ") + kSummaryColumns + kFilter +
                              " ORDER BY start_ms DESC, id DESC LIMIT ?7 OFFSET ?8");
    bindFilter(list).bind(query.perPage).bind((query.page - 1) * query.perPage);
    json calls = json::array();
    while (list.step())
        calls.push_back(list.row());
    return {{"total", count.integer(0)}, {"page", query.page}, {"per_page", query.perPage}, {"calls", calls}};
}

std::optional<json> SqliteCallIndex::details(int64_t id) {
    std::lock_guard<std::mutex> lock(mutex_);
    connect();
    Statement call(*this, R"(SELECT id, signalling, call_id, call_reference, caller, callee, caller_name, callee_name,
        start, "end", duration,
        end_reason, signalling_packets, pcap, wav, lowest_mos, media, dtmf FROM calls WHERE id = ?)");
    if (!call.bind(id).step())
        return std::nullopt;
    json details = call.row();
    for (const char* key : {"media", "dtmf"})
        details[key] = json::parse(details[key].get<std::string>(), nullptr, false);

    Statement messages(*this,
                       "SELECT time, direction, source, destination, line FROM messages "
                       "WHERE call = ? ORDER BY position");
    messages.bind(id);
    details["messages"] = json::array();
    while (messages.step())
        details["messages"].push_back(messages.row());

    Statement streams(*this, "SELECT quality FROM streams WHERE call = ? ORDER BY position");
    streams.bind(id);
    details["streams"] = json::array();
    while (streams.step())
        details["streams"].push_back(json::parse(streams.text(0), nullptr, false));
    return details;
}

std::optional<std::string> SqliteCallIndex::folderOf(int64_t id) {
    std::lock_guard<std::mutex> lock(mutex_);
    connect();
    Statement folder(*this, "SELECT folder FROM calls WHERE id = ?");
    if (!folder.bind(id).step())
        return std::nullopt;
    return folder.text(0);
}

std::vector<std::string> SqliteCallIndex::removeStartedBefore(int64_t ms) {
    std::lock_guard<std::mutex> lock(mutex_);
    connect();
    execute("BEGIN IMMEDIATE");
    std::vector<std::string> folders;
    {
        Statement old(*this, "SELECT folder FROM calls WHERE start_ms < ?");
        old.bind(ms);
        while (old.step())
            folders.push_back(old.text(0));
    }
    Statement(*this, "DELETE FROM calls WHERE start_ms < ?").bind(ms).step();
    execute("COMMIT");
    return folders;
}

}  // namespace recorder
