// The node counts of the benchmark's searches: they change only when search or evaluation behave differently.
#include "bench/search_set.h"

#include <gtest/gtest.h>

#include <iterator>

namespace {

TEST(SearchSignature, IsTheCommittedOne) {
    const ThinkingSink former = thinkingSink;
    testing::internal::CaptureStdout();
    setUpFixedSearches();
    u64 signature = 0;
    for (const FixedSearch& fixed : fixedSearches) {
        SCOPED_TRACE(fixed.name);
        const u64 nodes = runFixedSearch(fixed);
        EXPECT_EQ(nodes, fixed.nodes);
        signature += nodes;
    }
    testing::internal::GetCapturedStdout();
    thinkingSink = former;
    EXPECT_EQ(signature, searchSignature);
}

}  // namespace
