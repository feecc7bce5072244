#include "foundation/active_allocations.hpp"

#include <gtest/gtest.h>

#include "console_capture.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::sent::W;
using testing::sent::Y;

TEST(ActiveAllocations, ListsTheNamesInOrder) {
    ActiveAllocations list;
    EXPECT_TRUE(list.empty());
    list.add(L"zlr_b.sf");
    list.add(L"zlr_a.sf");
    list.add(L"zlr_b.sf");
    EXPECT_FALSE(list.empty());
    EXPECT_EQ(console_output([&] { list.print('Y'); }), W + "List of Active Allocations:\n" + Y +
                                                            "    zlr_a.sf\n" + Y + "    zlr_b.sf\n" + Y +
                                                            "    zlr_b.sf\n" + W);
}

TEST(ActiveAllocations, RemovesOneOfANameAtATime) {
    ActiveAllocations list;
    list.add(L"a");
    list.add(L"a");
    list.remove(L"b");
    list.remove(L"a");
    EXPECT_FALSE(list.empty());
    list.remove(L"a");
    EXPECT_TRUE(list.empty());
    list.remove(L"a");
    EXPECT_EQ(console_output([&] { list.print(); }), W + "List of Active Allocations:\n" + W);
}

}  // namespace
}  // namespace znp
