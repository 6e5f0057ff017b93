#ifndef TESTS_SHARED_CAPTURES_H
#define TESTS_SHARED_CAPTURES_H

// The public captures that some tests replay live beside the source tree, in
// SHARED_CAPTURES_DIR (set once, by tests/CMakeLists.txt). Where they are
// absent such a test is skipped, saying so, except in CI (CI set and not
// "false" in the environment): there a missing capture fails the test, since
// a run that skips them proves less than its summary claims.

#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

inline std::string sharedCapture(const std::string& name) {
    return std::string(SHARED_CAPTURES_DIR) + "/" + name;
}

inline bool sharedCapturesRequired() {
    const char* ci = std::getenv("CI");
    return ci != nullptr && *ci != '\0' && std::string(ci) != "false";
}

#define REQUIRE_SHARED_CAPTURE(path)                                                                 \
    do {                                                                                             \
        if (!std::filesystem::exists(path)) {                                                        \
            if (sharedCapturesRequired())                                                            \
                FAIL() << (path) << " is absent: the shared captures must be beside the tree in CI"; \
            GTEST_SKIP() << (path) << " is absent: the shared captures are not beside the tree";     \
        }                                                                                            \
    } while (false)

#endif
