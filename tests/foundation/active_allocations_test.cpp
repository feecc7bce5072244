#include "foundation/active_allocations.hpp"

#include <gtest/gtest.h>

#include "console_capture.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

using testing::console_output;

const std::string white = Console::color_sequence('w');
const std::string yellow = Console::color_sequence('Y');

TEST(ActiveAllocations, ListsTheNamesInOrder) {
    ActiveAllocations list;
    EXPECT_TRUE(list.empty());
    list.add(L"zlr_b.sf");
    list.add(L"zlr_a.sf");
    list.add(L"zlr_b.sf");
    EXPECT_FALSE(list.empty());
    EXPECT_EQ(console_output([&] { list.print('Y'); }), white + "List of Active Allocations:\n" + yellow +
                                                            "    zlr_a.sf\n" + yellow + "    zlr_b.sf\n" +
                                                            yellow + "    zlr_b.sf\n" + white);
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
    EXPECT_EQ(console_output([&] { list.print(); }), white + "List of Active Allocations:\n" + white);
}

}  // namespace
}  // namespace znp
