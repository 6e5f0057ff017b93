// The call index in calls.db, the JSON API, the page as a browser shows it, retention, and the
// index's recovery after an outage.
#include "RecorderHarness.h"

#include <httplib.h>
#include <nlohmann/json.hpp>
#include <sqlite3.h>

#include <gtest/gtest.h>

namespace recorder::test {
namespace {

using nlohmann::json;
using Rows = std::vector<std::vector<std::string>>;

const std::string kEvilCallId = "<img src=x onerror=alert(1)>\"';";
const std::string kEvilName = "<script>alert(2)</script>\";";  // written as a quoted string, the quote escaped
const std::string kToken = "s3cret";
const std::string kLatin1Number =
    "47\xe9"
    "11";

// Rows of a query on a calls.db, every column as text ("NULL" for null).
Rows query(const std::filesystem::path& database, const std::string& sql) {
    sqlite3* db = nullptr;
    Rows rows;
    if (sqlite3_open_v2(database.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK) {
        sqlite3_exec(
            db, sql.c_str(),
            [](void* out, int columns, char** values, char**) {
                auto& table = *static_cast<Rows*>(out);
                table.emplace_back();
                for (int i = 0; i < columns; ++i)
                    table.back().emplace_back(values[i] ? values[i] : "NULL");
                return 0;
            },
            &rows, nullptr);
    }
    sqlite3_close(db);
    return rows;
}

std::string rtp(uint16_t sequence, uint32_t ssrc) {
    std::string packet = {'\x80', 0, static_cast<char>(sequence >> 8), static_cast<char>(sequence)};
    const uint32_t timestamp = 160u * sequence;
    for (const uint32_t word : {timestamp, ssrc})
        for (int shift = 24; shift >= 0; shift -= 8)
            packet += static_cast<char>(word >> shift);
    return packet + std::string(160, '\x80');
}

// The refused call: to a number that is not UTF-8, from a caller whose display name is markup.
std::string evil(std::string message) {
    for (size_t at = message.find("sip:bob@"); at != std::string::npos; at = message.find("sip:bob@", at))
        message.replace(at, 7, "sip:" + kLatin1Number);
    const size_t alice = message.find("\"Alice\"");
    return message.replace(alice, 7, "\"<script>alert(2)</script>\\\";\"");
}

// An answered call with a second of audio each way, and a refused one whose Call-ID is markup,
// to a number that is not UTF-8.
void placeCalls(const TcpSniffer& sniffer, const RecorderProcess& recorder) {
    sniffer.send(sipFrame(sipRequest("INVITE", "call-a@10.0.0.1", sdp("10.0.0.1", 4000, 0))));
    sniffer.send(sipFrame(sipResponse(180, "INVITE", "call-a@10.0.0.1"), false));
    sniffer.send(sipFrame(sipResponse(200, "INVITE", "call-a@10.0.0.1", sdp("10.0.0.2", 5000, 0)), false));
    sniffer.send(sipFrame(sipRequest("ACK", "call-a@10.0.0.1")));
    for (uint16_t sequence = 0; sequence < 50; ++sequence) {
        sniffer.send(frame(2, kCallerRtp, kCalleeRtp, rtp(sequence, 0x1111)));
        sniffer.send(frame(2, kCalleeRtp, kCallerRtp, rtp(sequence, 0x2222)));
    }
    sniffer.send(sipFrame(sipRequest("BYE", "call-a@10.0.0.1")));
    sniffer.send(sipFrame(sipResponse(200, "BYE", "call-a@10.0.0.1"), false));
    ASSERT_EQ(recorder.waitForCalls(1).size(), 1u);  // the second call starts later

    sniffer.send(sipFrame(evil(sipRequest("INVITE", kEvilCallId, sdp("10.0.0.1", 4002, 0)))));
    sniffer.send(sipFrame(evil(sipResponse(486, "INVITE", kEvilCallId)), false));
    sniffer.send(sipFrame(evil(sipRequest("ACK", kEvilCallId))));
}

class RecorderWeb : public ::testing::Test {
protected:
    void SetUp() override {
        placeCalls(sniffer, recorder);
        ASSERT_EQ(recorder.waitForCalls(2).size(), 2u);
        ASSERT_TRUE(waitUntil([&] { return calls().value("total", 0) == 2; }, 5s));
        idA = calls({{"call_id", "call-a"}})["calls"][0]["id"];
    }

    httplib::Result get(const std::string& path,
                        const httplib::Headers& headers = {{"Authorization", "Bearer " + kToken}}) {
        httplib::Client client("127.0.0.1", recorder.httpPort());
        return client.Get(path.c_str(), headers);
    }

    json calls(const httplib::Params& params = {}) {
        const auto response = get(httplib::append_query_params("/api/calls", params));
        return response && response->status == 200 ? json::parse(response->body) : json::object();
    }

    // The page as headless Chromium leaves it once its script has fetched what it shows.
    std::string browse(const std::string& path) {
        TempDir profile;
        ChildProcess chromium({"/usr/bin/chromium", "--headless", "--no-sandbox", "--disable-gpu", "--no-first-run",
                               "--disable-background-networking", "--disable-component-update", "--disable-sync",
                               "--user-data-dir=" + profile.file("profile"), "--virtual-time-budget=10000",
                               "--dump-dom", "http://127.0.0.1:" + std::to_string(recorder.httpPort()) + path},
                              profile.file("dom.html"));
        EXPECT_TRUE(chromium.waitFor(60s)) << "chromium did not finish";
        return readFile(profile.file("dom.html"));
    }

    RecorderProcess recorder{{"--linger", "0.3", "--http", "127.0.0.1:0", "--http-token", kToken}};
    TcpSniffer sniffer{recorder.port()};
    int64_t idA = 0;
};

TEST_F(RecorderWeb, IndexHoldsEachCallWithItsMessagesAndStreams) {
    const auto db = recorder.output() / "calls.db";
    EXPECT_EQ(query(db, "SELECT version FROM schema_version"), (Rows{{"1"}, {"2"}}));  // made, then upgraded
    const auto call = query(db,
                            "SELECT signalling, caller, callee, end_reason, signalling_packets, wav, folder, "
                            "start_ms <= end_ms, caller_name FROM calls WHERE call_id = 'call-a@10.0.0.1'");
    ASSERT_EQ(call.size(), 1u);
    EXPECT_EQ(call[0][0], "sip");
    EXPECT_EQ(call[0][1], "sip:alice@10.0.0.1");
    EXPECT_EQ(call[0][2], "sip:bob@10.0.0.2");
    EXPECT_EQ(call[0][3], "bye");
    EXPECT_EQ(call[0][4], "6");
    EXPECT_EQ(call[0][5], "call.wav");
    EXPECT_TRUE(std::filesystem::is_regular_file(recorder.output() / call[0][6] / "call.wav"));
    EXPECT_EQ(call[0][7], "1");
    EXPECT_EQ(call[0][8], "Alice");
    EXPECT_EQ(query(db, "SELECT callee FROM calls WHERE id != " + std::to_string(idA)), (Rows{{"sip:47\xef\xbf\xbd"
                                                                                               "11@10.0.0.2"}}));

    const auto messages =
        query(db, "SELECT direction, source, destination, line FROM messages WHERE call = " + std::to_string(idA) +
                      " ORDER BY position");
    const Rows expected = {
        {"from caller", "10.0.0.1:5060", "10.0.0.2:5060", "INVITE sip:bob@10.0.0.2 SIP/2.0"},
        {"from callee", "10.0.0.2:5060", "10.0.0.1:5060", "SIP/2.0 180 Whatever"},
        {"from callee", "10.0.0.2:5060", "10.0.0.1:5060", "SIP/2.0 200 Whatever"},
        {"from caller", "10.0.0.1:5060", "10.0.0.2:5060", "ACK sip:bob@10.0.0.2 SIP/2.0"},
        {"from caller", "10.0.0.1:5060", "10.0.0.2:5060", "BYE sip:bob@10.0.0.2 SIP/2.0"},
        {"from callee", "10.0.0.2:5060", "10.0.0.1:5060", "SIP/2.0 200 Whatever"},
    };
    EXPECT_EQ(messages, expected);

    const auto streams = query(db,
                               "SELECT source, destination, speaker, codec, packets, bytes, lost, mos > 4 "
                               "FROM streams WHERE call = " +
                                   std::to_string(idA) + " ORDER BY position");
    EXPECT_EQ(streams, (Rows{{"10.0.0.1:4000", "10.0.0.2:5000", "caller", "PCMU/8000", "50", "8600", "0", "1"},
                             {"10.0.0.2:5000", "10.0.0.1:4000", "callee", "PCMU/8000", "50", "8600", "0", "1"}}));
}

TEST_F(RecorderWeb, ApiFindsCallsByTheirPartsAndTakesSearchTextAsText) {
    const auto ids = [&](const httplib::Params& params) {
        std::vector<std::string> found;
        for (const json& call : calls(params).value("calls", json::array()))
            found.push_back(call["call_id"]);
        return found;
    };
    using Ids = std::vector<std::string>;
    EXPECT_EQ(ids({}), (Ids{kEvilCallId, "call-a@10.0.0.1"}));  // newest first
    EXPECT_EQ(ids({{"q", "47"}}), Ids{kEvilCallId});
    EXPECT_EQ(ids({{"q", "bob"}}), Ids{"call-a@10.0.0.1"});
    EXPECT_EQ(ids({{"q", "Alice"}}), Ids{"call-a@10.0.0.1"});  // by display name
    EXPECT_EQ(ids({{"q", "</script>\";"}}), Ids{kEvilCallId});
    EXPECT_EQ(calls({{"q", "alert(2)"}})["calls"][0]["caller_name"], kEvilName);
    EXPECT_EQ(ids({{"call_id", "\"';"}}), Ids{kEvilCallId});
    EXPECT_EQ(ids({{"call_id", "'; \""}}), Ids{});
    EXPECT_EQ(ids({{"q", "' OR 1=1 --"}}), Ids{});
    EXPECT_EQ(ids({{"signalling", "h323"}}), Ids{});
    EXPECT_EQ(ids({{"mos_below", "5"}}), Ids{"call-a@10.0.0.1"});
    EXPECT_EQ(ids({{"mos_below", "3"}}), Ids{});
    EXPECT_EQ(ids({{"from", "2000-01-01T00:00"}, {"to", "2000-01-02T00:00"}}), Ids{});
    EXPECT_EQ(ids({{"per_page", "1"}, {"page", "2"}}), Ids{"call-a@10.0.0.1"});
    EXPECT_EQ(calls({{"per_page", "1"}}).value("total", 0), 2);
    EXPECT_EQ(get("/api/calls?page=0")->status, 400);

    const auto details = json::parse(get("/api/calls/" + std::to_string(idA))->body);
    EXPECT_EQ(details["messages"].size(), 6u);
    EXPECT_EQ(details["streams"][0]["packets"], 50);
    EXPECT_EQ(details["media"][0]["address"], "10.0.0.1:4000");
    EXPECT_EQ(get("/api/calls/999")->status, 404);
}

TEST_F(RecorderWeb, TokenIsAskedOfEveryRequestAndFilesOnlyByCallId) {
    EXPECT_EQ(get("/api/calls", {})->status, 401);
    EXPECT_EQ(get("/", {})->status, 401);
    EXPECT_EQ(get("/api/calls", {{"Authorization", "Bearer wrong"}})->status, 401);
    EXPECT_EQ(get("/api/calls?token=" + kToken, {})->status, 200);

    const auto wav = get("/files/" + std::to_string(idA) + "/call.wav");
    ASSERT_EQ(wav->status, 200);
    EXPECT_EQ(wav->body.substr(0, 4), "RIFF");
    const auto folder =
        query(recorder.output() / "calls.db", "SELECT folder FROM calls WHERE id = " + std::to_string(idA));
    EXPECT_EQ(get("/files/" + std::to_string(idA) + "/call.pcap")->body,
              readFile(recorder.output() / folder.at(0).at(0) / "call.pcap"));
    EXPECT_EQ(get("/files/" + std::to_string(idA) + "/call.json")->status, 404);
    EXPECT_EQ(get("/files/" + std::to_string(idA) + "/../../calls.db")->status, 404);

    const std::string metrics = get("/metrics")->body;
    EXPECT_NE(metrics.find("recorder_frames_received_total{protocol=\"sip\"} 9\n"), std::string::npos) << metrics;
    EXPECT_NE(metrics.find("recorder_frames_received_total{protocol=\"rtp\"} 100\n"), std::string::npos);
    EXPECT_NE(metrics.find("recorder_calls_recorded_total 2\n"), std::string::npos) << metrics;
    EXPECT_NE(metrics.find("recorder_database_write_seconds_count 2\n"), std::string::npos);
    EXPECT_NE(metrics.find("recorder_sniffer_connections_total 1\n"), std::string::npos);
}

TEST_F(RecorderWeb, BrowserShowsTheListSearchesItAndShowsACallWithLadderAndAudio) {
    const auto count = [](const std::string& text, const std::string& what) {
        size_t n = 0;
        for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
            ++n;
        return n;
    };
    const std::string list = browse("/?token=" + kToken);
    EXPECT_EQ(count(list, "<tr class=\"call\">"), 2u) << list;
    EXPECT_NE(list.find("<td>&lt;img src=x onerror=alert(1)&gt;\"';</td>"), std::string::npos) << list;
    EXPECT_NE(list.find("<td>&lt;script&gt;alert(2)&lt;/script&gt;\"; &lt;sip:alice@10.0.0.1&gt;</td>"),
              std::string::npos);
    EXPECT_EQ(list.find("<script>alert"), std::string::npos);
    EXPECT_NE(list.find("<td>Alice &lt;sip:alice@10.0.0.1&gt;</td>"), std::string::npos);
    EXPECT_EQ(list.find("<img"), std::string::npos);
    EXPECT_NE(list.find("2 calls, page 1 of 1"), std::string::npos);

    const std::string searched = browse("/?token=" + kToken + "&q=bob");
    EXPECT_EQ(count(searched, "<tr class=\"call\">"), 1u) << searched;
    EXPECT_NE(searched.find("<td>call-a@10.0.0.1</td>"), std::string::npos);

    const std::string page = browse("/calls/" + std::to_string(idA) + "?token=" + kToken);
    EXPECT_EQ(count(page, "<g class=\"message\">"), 6u) << page;
    EXPECT_NE(page.find("INVITE sip:bob@10.0.0.2 SIP/2.0</text>"), std::string::npos);
    const std::string source = "/files/" + std::to_string(idA) + "/call.wav?token=" + kToken;
    EXPECT_NE(page.find("<audio controls=\"\" preload=\"none\" src=\"" + source + "\">"), std::string::npos) << page;
    EXPECT_EQ(get(source, {})->body.substr(0, 4), "RIFF");
}

// The new call is an H.323 one, whose messages are its descriptions.
TEST(RecorderIndex, RetentionRemovesOldCallsRowsAndFoldersAtStart) {
    RecorderProcess first{{"--linger", "0.3"}};
    const Endpoint caller{0x0a000005, 1720}, callee{0x0a000006, 1720};
    const std::string setup = "t:5\nr:42\nc:new-call\ns:alice\nd:bob";
    {
        TcpSniffer sniffer(first.port());
        sniffer.send(sipFrame(sipRequest("INVITE", "old-call", sdp("10.0.0.1", 4000, 0))));
        sniffer.send(sipFrame(sipResponse(486, "INVITE", "old-call"), false));
        sniffer.send(frame(4, caller, callee, setup + '\0'));
        sniffer.send(frame(4, callee, caller, std::string("t:90\nr:42\0", 10)));
        ASSERT_EQ(first.waitForCalls(2).size(), 2u);
    }
    const auto db = first.output() / "calls.db";
    ASSERT_TRUE(waitUntil([&] { return query(db, "SELECT id FROM calls").size() == 2; }, 5s));
    EXPECT_EQ(first.stop(), 0);
    const auto folders = query(db, "SELECT folder FROM calls ORDER BY call_id");  // new-call, old-call
    query(db, "UPDATE calls SET start_ms = start_ms - 3 * 86400000 WHERE call_id = 'old-call'");

    RecorderProcess second{{"--output", first.output(), "--keep-days", "2"}};
    EXPECT_TRUE(second.waitForLog("Removed 1 calls older than the retention period"));
    EXPECT_EQ(query(db, "SELECT call_id, signalling FROM calls"), (Rows{{"new-call", "h323"}}));
    EXPECT_EQ(query(db, "SELECT direction, source, destination, line FROM messages ORDER BY position"),
              (Rows{{"from caller", "10.0.0.5:1720", "10.0.0.6:1720", setup},
                    {"from callee", "10.0.0.6:1720", "10.0.0.5:1720", "t:90\nr:42"}}));
    EXPECT_TRUE(std::filesystem::exists(first.output() / folders[0][0]));
    EXPECT_FALSE(std::filesystem::exists(first.output() / folders[1][0]));
}

TEST(RecorderIndex, CallsWaitInMemoryWhileTheDatabaseFailsAndAreWrittenOnceItWorks) {
    TempDir place;
    const std::filesystem::path folder = place.file("later");
    RecorderProcess recorder{{"--linger", "0.3", "--database", "sqlite:" + (folder / "calls.db").string()}};
    TcpSniffer sniffer(recorder.port());
    for (const std::string id : {"first", "second"}) {
        sniffer.send(sipFrame(sipRequest("INVITE", id, sdp("10.0.0.1", 4000, 0))));
        sniffer.send(sipFrame(sipResponse(486, "INVITE", id), false));
    }
    ASSERT_EQ(recorder.waitForCalls(2).size(), 2u);
    ASSERT_TRUE(recorder.waitForLog("Cannot write to the call index"));

    std::filesystem::create_directory(folder);
    EXPECT_TRUE(recorder.waitForLog("The call index works again", 10s)) << recorder.log();
    EXPECT_EQ(query(folder / "calls.db", "SELECT call_id FROM calls ORDER BY id"), (Rows{{"first"}, {"second"}}));
    const std::string log = recorder.log();
    const std::string failure = "Cannot write to the call index";
    EXPECT_EQ(log.find(failure), log.rfind(failure)) << log;
}

}  // namespace
}  // namespace recorder::test
