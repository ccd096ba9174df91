#include "core/run_guarded.h"

#include <gtest/gtest.h>

#include <new>

namespace {

TEST(RunGuarded, EndsTheThrowingStepAloneAndRunsTheNext) {
    int reached = 0;
    EXPECT_FALSE(RunGuarded([&reached] {
        ++reached;
        throw std::bad_alloc();
    }));
    EXPECT_TRUE(RunGuarded([&reached] { ++reached; }));
    EXPECT_EQ(reached, 2);
}

}  // namespace
