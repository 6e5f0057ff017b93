#include <map>
#include <random>

#include <gtest/gtest.h>

#include "RtpList.h"

namespace {

// Neighbours share an address or a port, so a match on one alone shows.
RtpAddr dest(uint32_t n) {
    return RtpAddr(0x0A000000u + n / 7, static_cast<uint16_t>(10000 + 2 * (n % 7)));
}

TEST(RtpList, AgreesWithACountingMapOverARandomRunOfAddsAndRemoves) {
    RtpList list;
    std::map<uint32_t, unsigned> model;
    std::mt19937 random(7);
    for (int step = 0; step < 200000; ++step) {
        // Few enough for duplicates, removals of what is not listed and long probe runs.
        const uint32_t n = random() % 3000;
        if (random() % 3 == 0) {
            list.remove(dest(n));
            model.erase(n);
        } else {
            list.add(dest(n));
            ++model[n];
        }
    }
    EXPECT_EQ(list.size(), model.size());
    for (uint32_t n = 0; n < 3000; ++n) {
        const auto it = model.find(n);
        ASSERT_EQ(list.count(dest(n)), it == model.end() ? 0u : it->second) << n;
    }
}

}  // namespace
