// The properties reader, the typed settings on top of it and the device list.
//
// Config::dft() lives for the whole process and keeps the first value of a
// key, so the reader's tests use keys of their own and the settings' tests
// (whose keys are fixed) run each case in a fresh process.
#include <gtest/gtest.h>

#include <log4cxx/consoleappender.h>
#include <log4cxx/patternlayout.h>
#include <filesystem>
#include <iostream>

#include "ChildProcess.h"
#include "Config.h"
#include "LogCapture.h"
#include "Sniffer.h"
#include "SnifferConfig.h"

namespace {
// Writes `text` as the file `name` in `dir` and loads it.
Config& loaded(const TempDir& dir, const std::string& name, const std::string& text) {
    dir.write(name, text);
    Config* config = Config::dft();
    config->setCfgFileName(dir.file(name));
    config->loadProperties();
    return *config;
}
}  // namespace

TEST(PropertiesFile, ValuesAreTrimmedKeysAreTakenAsWrittenAndTheFirstKeyWins) {
    const TempDir dir;
    Config& config = loaded(dir, "first.properties",
                            "# a line without an equals sign is a comment\n"
                            "readA.spaced = \t two words \t\r\n"
                            "readA.blank=   \n"
                            "readA.equals=a=b\n"
                            "readA.twice=first\n"
                            "readA.twice=second\n"
                            "readA.last=no line feed");

    EXPECT_EQ("two words", config.getProperty("readA.spaced "));
    EXPECT_EQ("", config.getProperty("readA.spaced"));
    EXPECT_EQ("", config.getProperty("readA.blank"));
    EXPECT_EQ("a=b", config.getProperty("readA.equals"));
    EXPECT_EQ("first", config.getProperty("readA.twice"));
    EXPECT_EQ("no line feed", config.getProperty("readA.last"));
    EXPECT_EQ("", config.getProperty("readA.absent"));

    loaded(dir, "second.properties", "readA.twice=third\nreadA.new=added\n");
    EXPECT_EQ("first", config.getProperty("readA.twice"));
    EXPECT_EQ("added", config.getProperty("readA.new"));
}

TEST(PropertiesFile, OverLongLineIsSkippedWithAWarningAndReadingGoesOn) {
    const std::string longest = "readB.longest=" + std::string(511 - 14, 'y');
    const TempDir dir;
    LogCapture log;
    Config& config =
        loaded(dir, "long.properties",
               "readB.before=1\nreadB.long=" + std::string(600, 'x') + "\n" + longest + "\nreadB.after=2\n");

    EXPECT_TRUE(
        log.contains("WARN", "Skipping line 2 of " + dir.file("long.properties") + ": longer than 511 characters"));
    EXPECT_EQ("", config.getProperty("readB.long"));
    EXPECT_EQ("1", config.getProperty("readB.before"));
    EXPECT_EQ(std::string(497, 'y'), config.getProperty("readB.longest"));
    EXPECT_EQ("2", config.getProperty("readB.after"));
}

TEST(PropertiesFileDeathTest, UnreadableFileEndsTheProcessWithStatus1) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto loadMissing = [] {
        auto layout = std::make_shared<log4cxx::PatternLayout>("%p %m%n");
        log4cxx::Logger::getLogger("SnifferClient")
            ->addAppender(std::make_shared<log4cxx::ConsoleAppender>(layout, "System.err"));
        Config::dft()->setCfgFileName("/nonexistent/sniffer.properties");
        Config::dft()->loadProperties();
    };
    EXPECT_EXIT(loadMissing(), testing::ExitedWithCode(1),
                "ERROR Can't open configuration file /nonexistent/sniffer.properties");
}

// ---------------------------------------------------------------- settings

namespace {
struct SettingsCase {
    const char* name;
    const char* file;
    const char* report;  // what reportSettings writes to standard error, whole
};

void PrintTo(const SettingsCase& settings, std::ostream* os) {
    *os << settings.name;
}

// Runs in the death test's child, which re-runs the test body and ends
// here without unwinding: it removes the folder it made itself.
[[noreturn]] void reportSettings(const TempDir& dir) {
    SnifferConfig settings(dir.file("sniffer.properties"));
    const char* level = settings.getLogLevel();
    std::cerr << "LogLevel=" << level << " TraceSignalling=" << settings.getTraceSignalling()
              << " ServerPort=" << settings.getServerPort() << std::endl;
    std::filesystem::remove_all(dir.path());
    std::exit(0);
}
}  // namespace

class SnifferSettingsDeathTest : public testing::TestWithParam<SettingsCase> {};

TEST_P(SnifferSettingsDeathTest, ReadsLogLevelTraceFlagAndPort) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const TempDir dir;
    dir.write("sniffer.properties", GetParam().file);
    EXPECT_EXIT(reportSettings(dir), testing::ExitedWithCode(0), GetParam().report);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SnifferSettingsDeathTest,
    testing::Values(SettingsCase{"TrimmedLevelAndExactYes",
                                 "LogLevel= \twarn \r\nTraceSignalling=yes\nServerPort=6000x\n",
                                 "^LogLevel=WARN TraceSignalling=0 ServerPort=6000\n$"},
                    SettingsCase{"LowerCaseLevelAndNo", "LogLevel=debug\nTraceSignalling=no\nServerPort=port\n",
                                 "^LogLevel=DEBUG TraceSignalling=1 ServerPort=0\n$"},
                    SettingsCase{"UnknownLevelAndUpperCaseYes", "LogLevel=TRACE\nTraceSignalling=YES\n",
                                 "^Invalid LogLevel, assuming INFO\nLogLevel=INFO TraceSignalling=1 ServerPort=0\n$"},
                    // An absent LogLevel is invalid too; a blank before '=' makes another key.
                    SettingsCase{"AbsentLevelAndKeyWithBlank", "TraceSignalling =yes\n",
                                 "^Invalid LogLevel, assuming INFO\nLogLevel=INFO TraceSignalling=1 ServerPort=0\n$"}),
    [](const testing::TestParamInfo<SettingsCase>& info) { return info.param.name; });

// ---------------------------------------------------------------- device list

TEST(DeviceList, MoreThanTenDevicesOrOverLongNamesAreRejectedWithoutChange) {
    LogCapture log;
    Sniffer sniffer;
    ASSERT_EQ(0, sniffer.setDevice("eth0;eth1"));

    const std::string eleven = "d0;d1;d2;d3;d4;d5;d6;d7;d8;d9;d10";
    EXPECT_EQ(1, sniffer.setDevice(eleven.c_str()));
    EXPECT_TRUE(log.contains("ERROR", "Too many devices in " + eleven + ": at most 10 are supported"));

    const std::string tooLong(256, 'n');
    EXPECT_EQ(1, sniffer.setDevice(("eth0;" + tooLong).c_str()));
    EXPECT_TRUE(log.contains("ERROR", "Device name longer than 255 characters: " + tooLong));
    EXPECT_EQ(2, sniffer.getDeviceCount());
    EXPECT_STREQ("eth1", sniffer.getDevice(1));

    EXPECT_EQ(0, sniffer.setDevice(std::string(255, 'n').c_str()));
}

TEST(DeviceList, OverLongConfigurationFileNameIsRejected) {
    LogCapture log;
    Sniffer sniffer;
    std::string name(4096, 'c');
    char program[] = "sniffer", option[] = "-c";
    char* argv[] = {program, option, name.data(), nullptr};
    EXPECT_EQ(1, sniffer.configureFromFile(3, argv));
    EXPECT_TRUE(log.contains("ERROR", "File name longer than 4095 characters: " + name));
}
