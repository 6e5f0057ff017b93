// The call maps of the H.323 parser. What it describes and logs for each
// message is proven by the golden corpus (tests/golden/h323).
#include <gtest/gtest.h>

#include "H323Parser.h"
#include "LogCapture.h"

namespace {

TEST(H323Parser, CallMapsKeepTheirDocumentedAsymmetryAndTextOrder) {
    LogCapture log;
    H323Parser parser;
    parser.updateMaps("9", H323Parser::h245Addr("10.0.0.2", 40001));
    parser.updateMaps("10", H323Parser::h245Addr("10.0.0.3", 40001));
    parser.updateMaps("9", H323Parser::h245Addr("10.0.0.2", 40002));
    EXPECT_EQ(parser.getCallRefMap().size(), 2u);
    EXPECT_EQ(parser.getH245Map().size(), 3u);  // the first address of call 9 stays
    log.clear();
    parser.displayCallIdMap();
    const std::vector<std::string> expected = {
        "Call Ref Map --- Key = 10, Value = 10.0.0.3:40001", "Call Ref Map --- Key = 9, Value = 10.0.0.2:40002",
        "h245Map --- Key = 10.0.0.2:40001, Value = 9",       "h245Map --- Key = 10.0.0.2:40002, Value = 9",
        "h245Map --- Key = 10.0.0.3:40001, Value = 10",
    };
    EXPECT_EQ(log.messages("DEBUG"), expected);

    H323Parser empty;
    log.clear();
    empty.displayCallIdMap();
    EXPECT_EQ(log.messages("DEBUG"), (std::vector<std::string>{"CallRefMap is empty", "h245Map is empty"}));
}

}  // namespace
