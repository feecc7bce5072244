#include "numbers/basic_int.hpp"

#include <gmp.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <memory>
#include <new>
#include <string>
#include <type_traits>

#include "console_capture.hpp"
#include "foundation/basic_heap.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/basecase_test_support.hpp"
#include "multiply/kernels/residue.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::dying;
using ::testing::ExitedWithCode;
using testing::GuardedWords;

// A value of the independent library.
class Big {
  public:
    Big() { mpz_init(value); }
    explicit Big(u64_t x) : Big() { mpz_import(value, 1, -1, sizeof x, 0, 0, &x); }
    explicit Big(const std::vector<cdi>& words) : Big() {
        mpz_import(value, words.size(), -1, sizeof(cdi), 0, 0, words.data());
    }
    explicit Big(const BasicInt& x) : Big() {
        mpz_import(value, x.get_L(), -1, sizeof(cdi), 0, 0, x.get_T());
    }
    Big(const Big& other) { mpz_init_set(value, other.value); }
    Big& operator=(const Big&) = delete;
    ~Big() { mpz_clear(value); }

    bool operator==(const Big& other) const { return mpz_cmp(value, other.value) == 0; }
    bool operator<(const Big& other) const { return mpz_cmp(value, other.value) < 0; }
    Big operator+(const Big& other) const { return by(mpz_add, other); }
    Big operator-(const Big& other) const { return by(mpz_sub, other); }
    Big operator*(const Big& other) const { return by(mpz_mul, other); }
    u64_t residue() const {
        Big r;
        mpz_tdiv_r(r.value, value, Big(residue::p).value);
        u64_t words[1] = {0};
        mpz_export(words, nullptr, -1, sizeof(u64_t), 0, 0, r.value);
        return words[0];
    }

  private:
    template <class Operation>
    Big by(Operation operation, const Big& other) const {
        Big r;
        operation(r.value, value, other.value);
        return r;
    }
    mpz_t value;
};

// The object holds the value, in normal form, with the residue of the value.
::testing::AssertionResult holds(const BasicInt& x, const Big& value) {
    if (!(Big(x) == value)) return ::testing::AssertionFailure() << "wrong value";
    if (x.get_L() == 0 || *x.word_ptr(x.get_L() - 1) == 0)
        return ::testing::AssertionFailure() << "top word is zero";
    if (x.get_hash() != value.residue()) return ::testing::AssertionFailure() << "wrong residue";
    if (x.hash_error() != 0) return ::testing::AssertionFailure() << "residue and words differ";
    return ::testing::AssertionSuccess();
}

// L words with a top word that is not zero; the others are random, zero or all ones.
std::vector<cdi> random_value(upL_t L, std::mt19937_64& rng) {
    std::vector<cdi> words(L);
    const u64_t kind = rng() % 4;
    for (cdi& w : words) {
        const bool ones = kind == 1 || (kind == 2 && (rng() & 1) != 0);
        w = ones ? ~cdi{0} : (kind == 2 ? cdi{0} : static_cast<cdi>(rng()));
    }
    if (words.back() == 0) words.back() = 1;
    return words;
}

BasicInt view(const std::vector<cdi>& words) {
    BasicInt x(words.data(), 0, 0);
    x.set_L(words.size());
    return x;
}

// A value at the start of a guarded buffer.
class Held {
  public:
    Held(const std::vector<cdi>& words, upL_t buffer_words)
        : buffer_(buffer_words), x(buffer_.data(), buffer_words) {
        std::copy(words.begin(), words.end(), buffer_.data());
        x.set_L(words.size());
    }

  private:
    GuardedWords<cdi> buffer_;

  public:
    BasicIntR x;
};

class BasicInts : public ::testing::Test {
  protected:
    static constexpr cdi ones = ~cdi{0};
};

// ---- Setting and looking

TEST_F(BasicInts, AreNotVirtual) {
    EXPECT_FALSE(std::is_polymorphic_v<BasicIntO>);
    EXPECT_EQ(sizeof(BasicInt), 3 * sizeof(u64_t));
    EXPECT_EQ(sizeof(BasicIntR), 4 * sizeof(u64_t));
}

TEST_F(BasicInts, FreshObjectIsEmpty) {
    GuardedWords<cdi> buffer(17);
    const BasicIntR x(buffer.data(), 17);
    EXPECT_EQ(x.get_T(), buffer.data());
    EXPECT_EQ(x.get_L(), 0u);
    EXPECT_EQ(x.get_hash(), 0u);
    EXPECT_EQ(x.get_size(), 17u);
}

TEST_F(BasicInts, MaxLength) {
    const std::vector<cdi> a{1, 2, 3}, b{1};
    EXPECT_EQ(view(a).max_L(view(b)), 3u);
    EXPECT_EQ(view(b).max_L(view(a)), 3u);
}

TEST_F(BasicInts, SliceOfABuffer) {
    GuardedWords<cdi> buffer(20);
    const BasicIntR parent(buffer.data(), 20);
    BasicIntR slice;
    slice.set(7, parent);
    EXPECT_EQ(slice.get_T(), buffer.data() + 7);
    EXPECT_EQ(slice.get_size(), 13u);
    EXPECT_EQ(slice.word_ptr(2), buffer.data() + 9);
    EXPECT_EQ(slice.get_L(), 0u);
}

TEST_F(BasicInts, OneWordValues) {
    GuardedWords<cdi> buffer(1);
    BasicIntR x(buffer.data(), 1);
    for (const cdi w : {cdi{1}, cdi{12345}, this->ones, static_cast<cdi>(residue::p)}) {
        x.set_uW(w);
        EXPECT_EQ(x.get_L(), 1u);
        EXPECT_TRUE(holds(x, Big(u64_t{w})));
        EXPECT_EQ(x.get_hash(), u64_t{w} % residue::p);
    }
}

TEST_F(BasicInts, ResidueOfAMultipleOfThePrimeIsZero) {
    for (u64_t factor : {u64_t{1}, u64_t{2}, u64_t{12345}}) {
        const Big multiple = Big(residue::p) * Big(factor);
        const auto low = factor * residue::p;  // modulo 2^64
        const auto high = static_cast<u64_t>((static_cast<u128_t>(factor) * residue::p) >> 64);
        std::vector<cdi> words;
        for (unsigned bit = 0; bit < 128; bit += WordTraits<cdi>::bits)
            words.push_back(static_cast<cdi>((bit < 64 ? low : high) >> (bit % 64)));
        BasicInt x(words.data(), 0, 0);
        x.set_LN(words.size());
        EXPECT_TRUE(Big(x) == multiple);
        EXPECT_EQ(x.get_hash(), 0u);
    }
}

TEST_F(BasicInts, LengthAsItIsAndWithoutZeroTopWords) {
    auto rng = testing::make_rng(31);
    for (upL_t L = 1; L <= 40; L++) {
        const auto value = random_value(L, rng);
        EXPECT_TRUE(holds(view(value), Big(value)));
        auto padded = value;
        padded.resize(L + rng() % 10);
        BasicInt x(padded.data(), 0, 0);
        x.set_LN(padded.size());
        EXPECT_EQ(x.get_L(), L);
        EXPECT_TRUE(holds(x, Big(value)));
    }
}

TEST_F(BasicInts, RehashAndHashError) {
    std::vector<cdi> words{5, 6, 7};
    auto x = view(words);
    words[0] = 4;
    EXPECT_EQ(x.hash_error(), 1u);  // the residue says one more than the words
    words[0] = 6;
    EXPECT_EQ(x.hash_error(), residue::p - 1);  // canonical
    x.rehash();
    EXPECT_EQ(x.hash_error(), 0u);
    EXPECT_TRUE(holds(x, Big(words)));
}

TEST_F(BasicInts, CopyOfAValue) {
    auto rng = testing::make_rng(32);
    for (upL_t L = 1; L <= 40; L++) {
        const auto value = random_value(L, rng);
        GuardedWords<cdi> buffer(L);
        BasicIntR x(buffer.data(), L);
        x.set_bui(view(value));
        EXPECT_TRUE(holds(x, Big(value)));
    }
}

// The residue travels with the value, right or wrong: it is what the checks rely on.
TEST_F(BasicInts, ResidueIsTakenFromTheOperandsNotTheWords) {
    const std::vector<cdi> a{5, 6}, b{7};
    const BasicInt wrong_a(a.data(), 2, 1000);
    const BasicInt wrong_b(b.data(), 1, 30);
    GuardedWords<cdi> buffer(4);
    BasicIntR x(buffer.data(), 4);
    x.set_bui(wrong_a);
    EXPECT_EQ(x.get_hash(), 1000u);
    x += wrong_b;
    EXPECT_EQ(x.get_hash(), 1030u);
    x -= wrong_b;
    EXPECT_EQ(x.get_hash(), 1000u);
    x.set_mulB(wrong_a, wrong_b);
    EXPECT_EQ(x.get_hash(), 30000u);
    BasicIntO owner;
    owner.add(wrong_a, wrong_b);
    EXPECT_EQ(owner.get_hash(), 1030u);
    owner.sub(wrong_a, wrong_b);
    EXPECT_EQ(owner.get_hash(), 970u);
    owner.mulB(wrong_a, wrong_b);
    EXPECT_EQ(owner.get_hash(), 30000u);
}

// ---- Products

TEST_F(BasicInts, ProductsOfAllLengths) {
    auto rng = testing::make_rng(33);
    for (upL_t La = 1; La <= 40; La++) {
        for (upL_t Lb = 1; Lb <= 40; Lb++) {
            const auto a = random_value(La, rng);
            const auto b = random_value(Lb, rng);
            GuardedWords<cdi> buffer(La + Lb);
            BasicIntR x(buffer.data(), La + Lb);
            x.set_mulB(view(a), view(b));
            ASSERT_TRUE(holds(x, Big(a) * Big(b))) << La << " x " << Lb;
        }
    }
}

TEST_F(BasicInts, ProductWithAZeroTopWordIsOneWordShorter) {
    const std::vector<cdi> a{3, 1}, b{5, 2};
    GuardedWords<cdi> buffer(4);
    BasicIntR x(buffer.data(), 4);
    x.set_mulB(view(a), view(b));
    EXPECT_EQ(x.get_L(), 3u);
    const std::vector<cdi> c{this->ones, this->ones};
    x.set_mulB(view(c), view(c));
    EXPECT_EQ(x.get_L(), 4u);
}

// ---- In place

TEST_F(BasicInts, AddInPlace) {
    auto rng = testing::make_rng(34);
    for (upL_t La = 1; La <= 40; La++) {
        for (upL_t Lb = 1; Lb <= La; Lb++) {
            const auto a = random_value(La, rng);
            const auto b = random_value(Lb, rng);
            Held held(a, La + 1);
            held.x += view(b);
            ASSERT_TRUE(holds(held.x, Big(a) + Big(b))) << La << " + " << Lb;
        }
    }
}

TEST_F(BasicInts, SubtractInPlace) {
    auto rng = testing::make_rng(35);
    for (upL_t La = 1; La <= 40; La++) {
        for (upL_t Lb = 1; Lb <= La; Lb++) {
            const auto a = random_value(La, rng);
            const auto b = random_value(Lb, rng);
            if (!(Big(b) < Big(a))) continue;
            Held held(a, La + 1);
            held.x -= view(b);
            ASSERT_TRUE(holds(held.x, Big(a) - Big(b))) << La << " - " << Lb;
        }
    }
}

TEST_F(BasicInts, AddToItself) {
    auto rng = testing::make_rng(36);
    const auto a = random_value(9, rng);
    Held held(a, 10);
    held.x += held.x;
    EXPECT_TRUE(holds(held.x, Big(a) + Big(a)));
}

TEST_F(BasicInts, AddOneToAllOnesGrowsByOneWord) {
    for (upL_t L : {upL_t{1}, upL_t{2}, upL_t{33}}) {
        const std::vector<cdi> a(L, this->ones), b{1};
        Held held(a, L + 1);
        held.x += view(b);
        EXPECT_EQ(held.x.get_L(), L + 1);
        EXPECT_TRUE(holds(held.x, Big(a) + Big(u64_t{1})));
    }
}

// Nothing is written beyond the words that were asked for.
TEST_F(BasicInts, SumsAndDifferencesInABufferOfTheirOwnLength) {
    const std::vector<cdi> a{5, 6}, b{7};
    Held held(a, 2);
    held.x += view(b);
    EXPECT_TRUE(holds(held.x, Big(a) + Big(b)));
    held.x -= view(b);
    EXPECT_TRUE(holds(held.x, Big(a)));
    const std::vector<cdi> all(2, this->ones), one{1};
    Held full(all, 2);
    EXPECT_THROW(full.x += view(one), BufferTooSmallException);
}

TEST_F(BasicInts, SubtractStripsTopWords) {
    const std::vector<cdi> a{0, 0, 1}, b{1};
    Held held(a, 4);
    held.x -= view(b);
    EXPECT_EQ(held.x.get_L(), 2u);
    EXPECT_TRUE(holds(held.x, Big(std::vector<cdi>{this->ones, this->ones})));
}

// ---- Owners

void check_owner_operations(BasicHeap* heap, u64_t stream) {
    auto rng = testing::make_rng(stream);
    BasicIntO sum(heap), difference(heap), product(heap);
    for (upL_t La = 1; La <= 40; La += 3) {
        for (upL_t Lb = 1; Lb <= 40; Lb++) {
            const auto a = random_value(La, rng);
            const auto b = random_value(Lb, rng);
            sum.add(view(a), view(b));
            ASSERT_TRUE(holds(sum, Big(a) + Big(b))) << La << " + " << Lb;
            ASSERT_EQ(sum.get_size(), std::max(La, Lb) + 2);
            product.mulB(view(a), view(b));
            ASSERT_TRUE(holds(product, Big(a) * Big(b))) << La << " x " << Lb;
            ASSERT_EQ(product.get_size(), La + Lb + 2);
            if (!(Big(b) < Big(a))) continue;
            difference.sub(view(a), view(b));
            ASSERT_TRUE(holds(difference, Big(a) - Big(b))) << La << " - " << Lb;
            ASSERT_EQ(difference.get_size(), La + 2);
        }
    }
}

TEST_F(BasicInts, OwnersFromTheGeneralAllocator) {
    check_owner_operations(nullptr, 37);
}

TEST_F(BasicInts, OwnersFromAHeapGiveEverythingBack) {
    alignas(64) static std::byte block[1 << 16];
    BasicHeap heap;
    heap_init(heap, block, sizeof block);
    check_owner_operations(&heap, 38);
    EXPECT_GT(heap.peak_active, 0u);
    EXPECT_EQ(heap.active, 0u);
}

TEST_F(BasicInts, OwnersGrowInPlace) {
    auto rng = testing::make_rng(39);
    const auto a = random_value(5, rng);
    const auto b = random_value(23, rng);
    BasicIntO x(nullptr, 5);
    x.set_bui(view(a));
    x += view(b);  // longer than the accumulator
    EXPECT_TRUE(holds(x, Big(a) + Big(b)));
    EXPECT_EQ(x.get_size(), 25u);
    x -= view(a);
    EXPECT_TRUE(holds(x, Big(b)));
    x += x;
    EXPECT_TRUE(holds(x, Big(b) + Big(b)));
    x.mulB(x, x);
    EXPECT_TRUE(holds(x, (Big(b) + Big(b)) * (Big(b) + Big(b))));
    const std::vector<cdi> all(7, this->ones), one{1};
    x.add(view(one), view(all));  // the carry leaves the top
    EXPECT_EQ(x.get_L(), 8u);
    EXPECT_TRUE(holds(x, Big(all) + Big(one)));
}

TEST_F(BasicInts, OwnersMove) {
    const std::vector<cdi> a{5, 6, 7};
    BasicIntO x(nullptr, 8);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(x.get_T()) % 32, 0u);
    x.set_bui(view(a));
    const cdi* const words = x.get_T();
    BasicIntO y(std::move(x));
    EXPECT_EQ(y.get_T(), words);
    EXPECT_TRUE(holds(y, Big(a)));
    BasicIntO z(nullptr, 2);
    z = std::move(y);
    EXPECT_EQ(z.get_T(), words);
    EXPECT_EQ(z.get_size(), 8u);
    EXPECT_TRUE(holds(z, Big(a)));
    EXPECT_EQ(y.get_T(), nullptr);
    EXPECT_EQ(y.get_L(), 0u);
}

// ---- Failures

TEST_F(BasicInts, ValuesThatDoNotFitThrowAndChangeNothing) {
    const std::vector<cdi> a{1, 2, 3}, b{4, 5};
    GuardedWords<cdi> buffer(4);
    const auto before = buffer.words();
    BasicIntR x(buffer.data(), 4);
    const auto refuses = [](const char* location, u64_t given, u64_t needed, auto action) {
        const std::string output = console_output([&] {
            try {
                action();
                ADD_FAILURE() << "nothing was thrown";
            } catch (const BufferTooSmallException& e) {
                EXPECT_STREQ(e.location, location);
                EXPECT_STREQ(e.title, "Buffer is too small.");
                EXPECT_EQ(e.size_given, given);
                EXPECT_EQ(e.size_needed, needed);
            }
        });
        EXPECT_NE(output.find(location), std::string::npos);
    };
    refuses("BasicIntR::set_mulB()", 4, 5, [&] { x.set_mulB(view(a), view(b)); });
    BasicIntR two(buffer.data(), 2);
    refuses("BasicInt::set_bui()", 2, 3, [&] { two.set_bui(view(a)); });
    refuses("anywhere", 2, 9, [&] { two.check_size("anywhere", 9); });
    EXPECT_EQ(buffer.words(), before);

    BasicIntR beyond(buffer.data(), 2);
    beyond.set_L(3);  // longer than its buffer says
    refuses("BasicIntR::operator+=()", 2, 3, [&] { beyond += view(b); });
    refuses("BasicIntR::operator-=()", 2, 3, [&] { beyond -= view(b); });
    EXPECT_EQ(buffer.words(), before);
}

TEST_F(BasicInts, CheckSizePassesWhenItFits) {
    GuardedWords<cdi> buffer(4);
    const BasicIntR x(buffer.data(), 4);
    EXPECT_NO_THROW(x.check_size("anywhere", 4));
}

// The failures below end the process. Words in shared memory show in what state it left its operand.
class BasicIntsDeathTest : public BasicInts {
  protected:
    void SetUp() override {
        void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        ASSERT_NE(memory, MAP_FAILED);
        words_ = static_cast<cdi*>(memory);
    }
    void TearDown() override { munmap(words_, bytes); }

    BasicIntR shared(const std::vector<cdi>& value) {
        std::copy(value.begin(), value.end(), words_);
        BasicIntR x(words_, 64);
        x.set_L(value.size());
        return x;
    }
    std::vector<cdi> words(upL_t n) const { return {words_, words_ + n}; }

  private:
    static constexpr std::size_t bytes = 4096;
    cdi* words_ = nullptr;
};

const char* const negative = "Value is unsupported.*Error Code: 1.*A negative value was encountered\\.";
const char* const zero = "Value is unsupported.*Error Code: 1.*Zero was encountered\\.";

std::string at(const char* location, const char* report) {
    const std::string text = report;
    const std::size_t code = text.find("Error Code: 1") + 13;
    std::string quoted;
    for (const char c : std::string(location))
        quoted +=
            std::string("().=+-").find(c) == std::string::npos ? std::string(1, c) : std::string("\\") + c;
    return text.substr(0, code) + "\nLocation: " + quoted + text.substr(code);
}

TEST_F(BasicIntsDeathTest, EqualValuesGiveZero) {
    for (upL_t L : {upL_t{1}, upL_t{2}, upL_t{40}}) {
        const std::vector<cdi> a(L, 7);
        auto x = this->shared(a);
        EXPECT_EXIT(dying([&] { x -= view(a); }), ExitedWithCode(1), at("BasicIntR::operator-=()", zero));
        EXPECT_EXIT(dying([&] { x -= x; }), ExitedWithCode(1), at("BasicIntR::operator-=()", zero));
        BasicIntO owner;
        EXPECT_EXIT(dying([&] { owner.sub(view(a), view(a)); }), ExitedWithCode(1),
                    at("BasicIntO::sub()", zero));
    }
}

TEST_F(BasicIntsDeathTest, LongerSubtrahendIsNegativeBeforeAnyWordChanges) {
    const std::vector<cdi> a{1, 2, 3}, b{1, 2, 3, 4};
    auto x = this->shared(a);
    EXPECT_EXIT(dying([&] { x -= view(b); }), ExitedWithCode(1), at("BasicIntR::operator-=()", negative));
    EXPECT_EQ(this->words(4), (std::vector<cdi>{1, 2, 3, 0}));
    BasicIntO owner;
    EXPECT_EXIT(dying([&] { owner.sub(view(a), view(b)); }), ExitedWithCode(1),
                at("BasicIntO::sub()", negative));
}

TEST_F(BasicIntsDeathTest, SmallerOfEqualLengthsIsFoundByTheSentinel) {
    const std::vector<cdi> a{1, 2, 3}, b{1, 2, 4};
    auto x = this->shared(a);
    EXPECT_EXIT(dying([&] { x -= view(b); }), ExitedWithCode(1), at("BasicIntR::operator-=()", negative));
    EXPECT_EQ(this->words(4), (std::vector<cdi>{0, 0, this->ones, 0}));  // overwritten, sentinel consumed
    BasicIntO owner;
    EXPECT_EXIT(dying([&] { owner.sub(view(a), view(b)); }), ExitedWithCode(1),
                at("BasicIntO::sub()", negative));
    owner.add(view(a), view(a));
    const std::vector<cdi> more{3, 4, 6};
    EXPECT_EXIT(dying([&] { owner -= view(more); }), ExitedWithCode(1), at("BasicIntO::sub()", negative));
}

TEST_F(BasicIntsDeathTest, AddingALongerValueIsFatalAndChangesNothing) {
    const std::vector<cdi> a{1, 2, 3}, b{1, 2, 3, 4};
    auto x = this->shared(a);
    EXPECT_EXIT(dying([&] { x += view(b); }), ExitedWithCode(1), "Invalid Function Parameters:   ");
    EXPECT_EQ(this->words(4), (std::vector<cdi>{1, 2, 3, 0}));
}

}  // namespace
}  // namespace znp
