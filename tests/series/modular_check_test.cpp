#include "series/modular_check.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "console_capture.hpp"
#include "foundation/event_log.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/kernels/residue.hpp"
#include "numbers/basic_int.hpp"

namespace znp {
namespace {

using testing::console_output;

// Stands for a number whose residue is off by so much.
struct Number {
    u64_t difference;
    u64_t hash_error() const { return difference; }
};
constexpr Number good{0};

// The text that a failing check throws; the console's output goes to `printed`.
template <class Check>
std::string failure(Check check, std::string& printed) {
    std::string text = "nothing was thrown";
    printed = console_output([&] {
        try {
            check();
        } catch (const zl_BSRModularCheckFailed& e) {
            text = e.text;
            EXPECT_EQ(e.code, 2);
            EXPECT_EQ(e.action, action::throw_silently);
        }
    });
    return text;
}

template <class Check>
std::string failure(Check check) {
    std::string printed;
    return failure(check, printed);
}

TEST(ModularCheck, MatchingNumbersPassInSilence) {
    EventLog log;
    const std::string printed = console_output([&] {
        check2(&log, 1, 2, good, good);
        check3(&log, 1, 2, good, good, good);
        check4(&log, 1, 2, good, good, good, good);
        check2(nullptr, 1, 2, good, good);
    });
    EXPECT_EQ(printed, "");
    EXPECT_EQ(log.text(), "");
}

TEST(ModularCheck, FailureTexts) {
    EXPECT_EQ(failure([] { check2(nullptr, 0, 1000, Number{5}, good); }),
              "Modular Redundancy Check Failed:\na = 0\nb = 1000\nhashA = 5\nhashB = 0\n");
    EXPECT_EQ(failure([] { check3(nullptr, 7, 8, good, Number{1}, Number{residue::p - 1}); }),
              "Modular Redundancy Check Failed:\na = 7\nb = 8\nhashA = 0\nhashB = 1\n"
              "hashC = 2305843009213693950\n");
    EXPECT_EQ(failure([] { check4(nullptr, ~u64_t{0}, 3, good, good, good, Number{9}); }),
              "Modular Redundancy Check Failed:\na = 18446744073709551615\nb = 3\nhashA = 0\nhashB = 0\n"
              "hashC = 0\nhashD = 9\n");
}

TEST(ModularCheck, EveryNumberCounts) {
    for (int wrong = 0; wrong < 4; wrong++) {
        Number numbers[4] = {};
        numbers[wrong].difference = 3;
        EXPECT_NE(failure([&] { check4(nullptr, 1, 2, numbers[0], numbers[1], numbers[2], numbers[3]); }),
                  "nothing was thrown");
        const bool in_three = wrong < 3;
        EXPECT_EQ(failure([&] { check3(nullptr, 1, 2, numbers[0], numbers[1], numbers[2]); }) !=
                      "nothing was thrown",
                  in_three);
    }
}

TEST(ModularCheck, FailureIsPrintedOnceInRed) {
    std::string printed;
    const std::string text = failure([] { check2(nullptr, 1, 2, good, Number{5}); }, printed);
    EXPECT_EQ(printed, "\n\033[01;31m" + text + "\n\033[01;37m");
}

TEST(ModularCheck, FailureGoesToTheEventLog) {
    EventLog log;
    failure([&] { check2(&log, 12, 345, good, Number{5}); });
    const std::string& line = log.text();
    const std::string tail = "\tModular Redundancy Check Failed: 12 - 345";
    const std::size_t found = line.find(tail);
    ASSERT_NE(found, std::string::npos);
    EXPECT_EQ(line.substr(found + tail.size()).find_first_not_of("\r\n"), std::string::npos);
}

TEST(ModularCheck, OneFlippedBitOfABasicIntFails) {
    std::vector<c64i> words(20);
    for (upL_t i = 0; i < 20; i++) words[i] = 0x9E3779B97F4A7C15u * (i + 1);
    BasicIntR x(words.data(), 20);
    x.set_L(20);
    EXPECT_EQ(failure([&] { check2(nullptr, 1, 2, x, x); }), "nothing was thrown");
    for (unsigned bit = 0; bit < 64; bit += 7) {
        words[bit % 20] ^= c64i{1} << bit;
        const std::string first = failure([&] { check2(nullptr, 1, 2, x, good); });
        EXPECT_NE(first.find("\nhashA = "), std::string::npos);
        EXPECT_EQ(first.find("\nhashA = 0\n"), std::string::npos);
        const std::string second = failure([&] { check2(nullptr, 1, 2, good, x); });
        EXPECT_NE(second.find("\nhashA = 0\nhashB = "), std::string::npos);
        EXPECT_EQ(second.find("\nhashB = 0\n"), std::string::npos);
        words[bit % 20] ^= c64i{1} << bit;
    }
}

// The block is computed again after a failure: the exception is one of the family, of its exact class.
TEST(ModularCheck, FailureIsCaughtAsAnExceptionOfTheFamily) {
    bool caught = false;
    console_output([&] {
        try {
            check2(nullptr, 1, 2, Number{1}, good);
        } catch (const zn_exception& e) {
            caught = dynamic_cast<const zl_BSRModularCheckFailed*>(&e) != nullptr;
        }
    });
    EXPECT_TRUE(caught);
}

}  // namespace
}  // namespace znp
