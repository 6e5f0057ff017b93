#include <gtest/gtest.h>

#include "FaultSupport.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    enterPrivateNetwork();
    return RUN_ALL_TESTS();
}
