// Recordings encrypted at rest: what the recorder leaves on disk with --encrypt-to, the tool that
// restores it, the web side's answer, and the chunked format on a file of many chunks.
#include "RecorderHarness.h"
#include "SealedFile.h"
#include "RecordingFiles.h"

#include <gtest/gtest.h>
#include <httplib.h>
#include <nlohmann/json.hpp>
#include <sodium.h>
#include <sys/resource.h>

#include <fstream>

namespace recorder::test {
namespace {

namespace fs = std::filesystem;

constexpr uint8_t kPcmu = 0;
constexpr uint8_t kUlawLoudest = 0x80;  // +32124

// recorder-decrypt with `arguments`: its exit status, and what it printed in `output`.
int runTool(const TempDir& dir, const std::vector<std::string>& arguments, std::string* output = nullptr) {
    std::vector<std::string> argv{RECORDER_DECRYPT_BINARY};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    ChildProcess tool(argv, dir.file("tool.out"));
    EXPECT_TRUE(tool.waitFor(20s));
    if (output)
        *output = readFile(dir.file("tool.out"));
    return tool.exitStatus();
}

std::string rtp(uint16_t sequence) {
    std::string packet = {'\x80', static_cast<char>(kPcmu), static_cast<char>(sequence >> 8),
                          static_cast<char>(sequence)};
    const uint32_t timestamp = 160u * sequence;
    for (const uint32_t word : {timestamp, 0x2222u})
        for (int shift = 24; shift >= 0; shift -= 8)
            packet += static_cast<char>(word >> shift);
    return packet + std::string(160, static_cast<char>(kUlawLoudest));
}

bool sameFiles(const fs::path& a, const fs::path& b) {
    std::ifstream first(a, std::ios::binary), second(b, std::ios::binary);
    std::vector<char> blockA(1 << 20), blockB(1 << 20);
    while (first && second) {
        first.read(blockA.data(), static_cast<std::streamsize>(blockA.size()));
        second.read(blockB.data(), static_cast<std::streamsize>(blockB.size()));
        if (first.gcount() != second.gcount() ||
            !std::equal(blockA.begin(), blockA.begin() + first.gcount(), blockB.begin()))
            return false;
    }
    return first.eof() && second.eof();
}

long peakResidentKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

}  // namespace

TEST(RecorderEncryption, ACallLeavesOnlyEncryptedFilesThatTheSecretKeyRestoresAndNoOtherKeyOpens) {
    TempDir keys, otherKeys, work;
    ASSERT_EQ(runTool(work, {"--make-keys", keys.path()}), 0);
    ASSERT_EQ(runTool(work, {"--make-keys", otherKeys.path()}), 0);
    EXPECT_EQ(fs::status(keys.file("recording.key")).permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(runTool(work, {"--make-keys", keys.path()}), 1) << "an existing pair is never overwritten";

    RecorderProcess recorder{{"--linger", "0.3", "--encrypt-to", keys.file("recording.pub"), "--http", "127.0.0.1:0"}};
    TcpSniffer sniffer{recorder.port()};
    std::vector<std::string> sent;
    const auto sip = [&](const std::string& message, bool fromCaller) {
        sniffer.send(sipFrame(message, fromCaller));
        sent.push_back(message);
    };
    sip(sipRequest("INVITE", "call-e@10.0.0.1", sdp("10.0.0.1", 4000, kPcmu)), true);
    sip(sipResponse(200, "INVITE", "call-e@10.0.0.1", sdp("10.0.0.2", 5000, kPcmu)), false);
    sip(sipRequest("ACK", "call-e@10.0.0.1"), true);
    for (uint16_t sequence = 0; sequence < 50; ++sequence) {
        sniffer.send(frame(2, kCalleeRtp, kCallerRtp, rtp(sequence)));
        sent.push_back(rtp(sequence));
    }
    sip(sipRequest("BYE", "call-e@10.0.0.1"), true);
    sip(sipResponse(200, "BYE", "call-e@10.0.0.1"), false);
    const std::vector<std::string> calls = recorder.waitForCalls(1);
    ASSERT_EQ(calls.size(), 1u);
    const fs::path folder = jsonValue(calls[0], "folder");

    for (const char* name : {"call.pcap", "call.wav", "call.json"}) {
        EXPECT_FALSE(fs::exists(folder / name)) << name;
        const std::string sealed = readFile((folder / name).string() + ".enc");
        EXPECT_EQ(sealed.substr(0, 6), std::string("RSEAL\x01", 6)) << name;
        EXPECT_EQ(sealed.find("call-e@10.0.0.1"), std::string::npos) << name;
        ASSERT_EQ(runTool(work, {keys.file("recording.key"), (folder / name).string() + ".enc", work.file(name)}), 0);
    }
    const std::vector<Packet> packets = readPackets(work.file("call.pcap"), {});
    ASSERT_EQ(packets.size(), sent.size());
    for (size_t i = 0; i < sent.size(); ++i)
        EXPECT_EQ(packets[i].payload, sent[i]) << "packet " << i;
    const Wav wav = readWav(work.file("call.wav"));
    EXPECT_EQ(wav.channels, 2u);
    EXPECT_EQ(wav.rate, 8000u);
    EXPECT_EQ(compactJson(readFile(work.file("call.json"))), calls[0]);

    std::string output;
    EXPECT_EQ(
        runTool(work, {otherKeys.file("recording.key"), (folder / "call.wav.enc").string(), work.file("x")}, &output),
        1);
    EXPECT_EQ(output, std::string(RECORDER_DECRYPT_BINARY) + ": " + (folder / "call.wav.enc").string() +
                          " was not encrypted to this key\n");
    EXPECT_FALSE(fs::exists(work.file("x")));

    // The page cannot play what it cannot read: the file route says why instead of a bare 404.
    httplib::Client web("127.0.0.1", recorder.httpPort());
    ASSERT_TRUE(
        waitUntil([&] { return nlohmann::json::parse(web.Get("/api/calls")->body).value("total", 0) == 1; }, 5s));
    const int id = nlohmann::json::parse(web.Get("/api/calls")->body)["calls"][0]["id"];
    const auto answer = web.Get(("/files/" + std::to_string(id) + "/call.wav").c_str());
    EXPECT_EQ(answer->status, 409);
    EXPECT_EQ(nlohmann::json::parse(answer->body)["error"],
              "the recording is encrypted: call.wav.enc opens with recorder-decrypt");
}

// 20 MiB is 320 chunks: the size says each went out with its own tag, the peak memory that none
// was held past its turn; a file cut at a chunk's end or altered in one byte is refused.
TEST(SealedFileFormat, ManyChunksRoundTripInBoundedMemoryAndACutOrAlteredFileIsRefused) {
    TempDir dir;
    const fs::path clear = dir.file("big"), sealed = dir.file("big.enc"), restored = dir.file("restored");
    {
        std::ofstream out(clear, std::ios::binary);
        std::vector<char> block(1 << 20);
        for (int mebibyte = 0; mebibyte < 20; ++mebibyte) {
            for (size_t i = 0; i < block.size(); ++i)
                block[i] = static_cast<char>(i * 7 + mebibyte);
            out.write(block.data(), static_cast<std::streamsize>(block.size()));
        }
    }
    ASSERT_GE(sodium_init(), 0);
    SealedFile::PublicKey publicKey;
    SealedFile::SecretKey secretKey;
    crypto_box_keypair(publicKey.data(), secretKey.data());
    std::string problem;
    const long before = peakResidentKiB();
    ASSERT_TRUE(SealedFile::seal(clear, sealed, publicKey, problem)) << problem;
    ASSERT_TRUE(SealedFile::open(sealed, restored, secretKey, problem)) << problem;
    EXPECT_LT(peakResidentKiB() - before, 4 * 1024);
    EXPECT_EQ(fs::file_size(sealed), 6u + 80 + 24 + (20u << 20) + 320 * 17);
    EXPECT_TRUE(sameFiles(clear, restored));

    fs::copy_file(sealed, dir.file("cut.enc"));
    fs::resize_file(dir.file("cut.enc"), fs::file_size(sealed) - (65536 + 17));
    EXPECT_FALSE(SealedFile::open(dir.file("cut.enc"), restored, secretKey, problem));
    EXPECT_EQ(problem, dir.file("cut.enc") + " is cut short or has bytes past its end");
    EXPECT_FALSE(fs::exists(restored));

    std::fstream altered(sealed, std::ios::binary | std::ios::in | std::ios::out);
    altered.seekp(10 << 20);
    altered.put('\0');
    altered.close();
    EXPECT_FALSE(SealedFile::open(sealed, restored, secretKey, problem));
    EXPECT_EQ(problem, sealed.string() + " is damaged");
}

}  // namespace recorder::test
