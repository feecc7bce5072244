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
    template <class word>
    explicit Big(const std::vector<word>& words) : Big() {
        mpz_import(value, words.size(), -1, sizeof(word), 0, 0, words.data());
    }
    template <class word>
    explicit Big(const BasicInt<word>& x) : Big() {
        mpz_import(value, x.get_L(), -1, sizeof(word), 0, 0, x.get_T());
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
template <class word>
::testing::AssertionResult holds(const BasicInt<word>& x, const Big& value) {
    if (!(Big(x) == value)) return ::testing::AssertionFailure() << "wrong value";
    if (x.get_L() == 0 || *x.word_ptr(x.get_L() - 1) == 0)
        return ::testing::AssertionFailure() << "top word is zero";
    if (x.get_hash() != value.residue()) return ::testing::AssertionFailure() << "wrong residue";
    if (x.hash_error() != 0) return ::testing::AssertionFailure() << "residue and words differ";
    return ::testing::AssertionSuccess();
}

// L words with a top word that is not zero; the others are random, zero or all ones.
template <class word>
std::vector<word> random_value(upL_t L, std::mt19937_64& rng) {
    std::vector<word> words(L);
    const u64_t kind = rng() % 4;
    for (word& w : words) {
        const bool ones = kind == 1 || (kind == 2 && (rng() & 1) != 0);
        w = ones ? static_cast<word>(~word{0}) : (kind == 2 ? word{0} : static_cast<word>(rng()));
    }
    if (words.back() == 0) words.back() = 1;
    return words;
}

template <class word>
BasicInt<word> view(const std::vector<word>& words) {
    BasicInt<word> x(words.data(), 0, 0);
    x.set_L(words.size());
    return x;
}

// A value at the start of a guarded buffer.
template <class word>
class Held {
  public:
    Held(const std::vector<word>& words, upL_t buffer_words)
        : buffer_(buffer_words), x(buffer_.data(), buffer_words) {
        std::copy(words.begin(), words.end(), buffer_.data());
        x.set_L(words.size());
    }

  private:
    GuardedWords<word> buffer_;

  public:
    BasicIntR<word> x;
};

template <class word>
class BasicInts : public ::testing::Test {
  protected:
    static constexpr word ones = static_cast<word>(~word{0});
};
TYPED_TEST_SUITE(BasicInts, testing::Words);

// ---- Setting and looking

TYPED_TEST(BasicInts, AreNotVirtual) {
    EXPECT_FALSE(std::is_polymorphic_v<BasicIntO<TypeParam>>);
    EXPECT_EQ(sizeof(BasicInt<TypeParam>), 3 * sizeof(u64_t));
    EXPECT_EQ(sizeof(BasicIntR<TypeParam>), 4 * sizeof(u64_t));
}

TYPED_TEST(BasicInts, FreshObjectIsEmpty) {
    GuardedWords<TypeParam> buffer(17);
    const BasicIntR<TypeParam> x(buffer.data(), 17);
    EXPECT_EQ(x.get_T(), buffer.data());
    EXPECT_EQ(x.get_L(), 0u);
    EXPECT_EQ(x.get_hash(), 0u);
    EXPECT_EQ(x.get_size(), 17u);
}

TYPED_TEST(BasicInts, MaxLength) {
    const std::vector<TypeParam> a{1, 2, 3}, b{1};
    EXPECT_EQ(view(a).max_L(view(b)), 3u);
    EXPECT_EQ(view(b).max_L(view(a)), 3u);
}

TYPED_TEST(BasicInts, SliceOfABuffer) {
    GuardedWords<TypeParam> buffer(20);
    const BasicIntR<TypeParam> parent(buffer.data(), 20);
    BasicIntR<TypeParam> slice;
    slice.set(7, parent);
    EXPECT_EQ(slice.get_T(), buffer.data() + 7);
    EXPECT_EQ(slice.get_size(), 13u);
    EXPECT_EQ(slice.word_ptr(2), buffer.data() + 9);
    EXPECT_EQ(slice.get_L(), 0u);
}

TYPED_TEST(BasicInts, OneWordValues) {
    GuardedWords<TypeParam> buffer(1);
    BasicIntR<TypeParam> x(buffer.data(), 1);
    for (const TypeParam w :
         {TypeParam{1}, TypeParam{12345}, this->ones, static_cast<TypeParam>(residue::p)}) {
        x.set_uW(w);
        EXPECT_EQ(x.get_L(), 1u);
        EXPECT_TRUE(holds(x, Big(u64_t{w})));
        EXPECT_EQ(x.get_hash(), u64_t{w} % residue::p);
    }
}

TYPED_TEST(BasicInts, ResidueOfAMultipleOfThePrimeIsZero) {
    for (u64_t factor : {u64_t{1}, u64_t{2}, u64_t{12345}}) {
        const Big multiple = Big(residue::p) * Big(factor);
        const auto low = factor * residue::p;  // modulo 2^64
        const auto high = static_cast<u64_t>((static_cast<u128_t>(factor) * residue::p) >> 64);
        std::vector<TypeParam> words;
        for (unsigned bit = 0; bit < 128; bit += WordTraits<TypeParam>::bits)
            words.push_back(static_cast<TypeParam>((bit < 64 ? low : high) >> (bit % 64)));
        BasicInt<TypeParam> x(words.data(), 0, 0);
        x.set_LN(words.size());
        EXPECT_TRUE(Big(x) == multiple);
        EXPECT_EQ(x.get_hash(), 0u);
    }
}

TYPED_TEST(BasicInts, LengthAsItIsAndWithoutZeroTopWords) {
    auto rng = testing::make_rng(31);
    for (upL_t L = 1; L <= 40; L++) {
        const auto value = random_value<TypeParam>(L, rng);
        EXPECT_TRUE(holds(view(value), Big(value)));
        auto padded = value;
        padded.resize(L + rng() % 10);
        BasicInt<TypeParam> x(padded.data(), 0, 0);
        x.set_LN(padded.size());
        EXPECT_EQ(x.get_L(), L);
        EXPECT_TRUE(holds(x, Big(value)));
    }
}

TYPED_TEST(BasicInts, RehashAndHashError) {
    std::vector<TypeParam> words{5, 6, 7};
    auto x = view(words);
    words[0] = 4;
    EXPECT_EQ(x.hash_error(), 1u);  // the residue says one more than the words
    words[0] = 6;
    EXPECT_EQ(x.hash_error(), residue::p - 1);  // canonical
    x.rehash();
    EXPECT_EQ(x.hash_error(), 0u);
    EXPECT_TRUE(holds(x, Big(words)));
}

TYPED_TEST(BasicInts, CopyOfAValue) {
    auto rng = testing::make_rng(32);
    for (upL_t L = 1; L <= 40; L++) {
        const auto value = random_value<TypeParam>(L, rng);
        GuardedWords<TypeParam> buffer(L);
        BasicIntR<TypeParam> x(buffer.data(), L);
        x.set_bui(view(value));
        EXPECT_TRUE(holds(x, Big(value)));
    }
}

// The residue travels with the value, right or wrong: it is what the checks rely on.
TYPED_TEST(BasicInts, ResidueIsTakenFromTheOperandsNotTheWords) {
    const std::vector<TypeParam> a{5, 6}, b{7};
    const BasicInt<TypeParam> wrong_a(a.data(), 2, 1000);
    const BasicInt<TypeParam> wrong_b(b.data(), 1, 30);
    GuardedWords<TypeParam> buffer(4);
    BasicIntR<TypeParam> x(buffer.data(), 4);
    x.set_bui(wrong_a);
    EXPECT_EQ(x.get_hash(), 1000u);
    x += wrong_b;
    EXPECT_EQ(x.get_hash(), 1030u);
    x -= wrong_b;
    EXPECT_EQ(x.get_hash(), 1000u);
    x.set_mulB(wrong_a, wrong_b);
    EXPECT_EQ(x.get_hash(), 30000u);
    BasicIntO<TypeParam> owner;
    owner.add(wrong_a, wrong_b);
    EXPECT_EQ(owner.get_hash(), 1030u);
    owner.sub(wrong_a, wrong_b);
    EXPECT_EQ(owner.get_hash(), 970u);
    owner.mulB(wrong_a, wrong_b);
    EXPECT_EQ(owner.get_hash(), 30000u);
}

// ---- Products

TYPED_TEST(BasicInts, ProductsOfAllLengths) {
    auto rng = testing::make_rng(33);
    for (upL_t La = 1; La <= 40; La++) {
        for (upL_t Lb = 1; Lb <= 40; Lb++) {
            const auto a = random_value<TypeParam>(La, rng);
            const auto b = random_value<TypeParam>(Lb, rng);
            GuardedWords<TypeParam> buffer(La + Lb);
            BasicIntR<TypeParam> x(buffer.data(), La + Lb);
            x.set_mulB(view(a), view(b));
            ASSERT_TRUE(holds(x, Big(a) * Big(b))) << La << " x " << Lb;
        }
    }
}

TYPED_TEST(BasicInts, ProductWithAZeroTopWordIsOneWordShorter) {
    const std::vector<TypeParam> a{3, 1}, b{5, 2};
    GuardedWords<TypeParam> buffer(4);
    BasicIntR<TypeParam> x(buffer.data(), 4);
    x.set_mulB(view(a), view(b));
    EXPECT_EQ(x.get_L(), 3u);
    const std::vector<TypeParam> c{this->ones, this->ones};
    x.set_mulB(view(c), view(c));
    EXPECT_EQ(x.get_L(), 4u);
}

// ---- In place

TYPED_TEST(BasicInts, AddInPlace) {
    auto rng = testing::make_rng(34);
    for (upL_t La = 1; La <= 40; La++) {
        for (upL_t Lb = 1; Lb <= La; Lb++) {
            const auto a = random_value<TypeParam>(La, rng);
            const auto b = random_value<TypeParam>(Lb, rng);
            Held<TypeParam> held(a, La + 1);
            held.x += view(b);
            ASSERT_TRUE(holds(held.x, Big(a) + Big(b))) << La << " + " << Lb;
        }
    }
}

TYPED_TEST(BasicInts, SubtractInPlace) {
    auto rng = testing::make_rng(35);
    for (upL_t La = 1; La <= 40; La++) {
        for (upL_t Lb = 1; Lb <= La; Lb++) {
            const auto a = random_value<TypeParam>(La, rng);
            const auto b = random_value<TypeParam>(Lb, rng);
            if (!(Big(b) < Big(a))) continue;
            Held<TypeParam> held(a, La + 1);
            held.x -= view(b);
            ASSERT_TRUE(holds(held.x, Big(a) - Big(b))) << La << " - " << Lb;
        }
    }
}

TYPED_TEST(BasicInts, AddToItself) {
    auto rng = testing::make_rng(36);
    const auto a = random_value<TypeParam>(9, rng);
    Held<TypeParam> held(a, 10);
    held.x += held.x;
    EXPECT_TRUE(holds(held.x, Big(a) + Big(a)));
}

TYPED_TEST(BasicInts, AddOneToAllOnesGrowsByOneWord) {
    for (upL_t L : {upL_t{1}, upL_t{2}, upL_t{33}}) {
        const std::vector<TypeParam> a(L, this->ones), b{1};
        Held<TypeParam> held(a, L + 1);
        held.x += view(b);
        EXPECT_EQ(held.x.get_L(), L + 1);
        EXPECT_TRUE(holds(held.x, Big(a) + Big(u64_t{1})));
    }
}

TYPED_TEST(BasicInts, AddEndsWithAZeroWordAboveTheValue) {
    const std::vector<TypeParam> a{5, 6}, b{7};
    Held<TypeParam> held(a, 3);
    held.x += view(b);
    EXPECT_EQ(held.x.get_L(), 2u);
    EXPECT_EQ(*held.x.word_ptr(2), 0u);
}

TYPED_TEST(BasicInts, SubtractLeavesTheSentinelAndStripsTopWords) {
    const std::vector<TypeParam> a{0, 0, 1}, b{1};
    Held<TypeParam> held(a, 4);
    held.x -= view(b);
    EXPECT_EQ(held.x.get_L(), 2u);
    EXPECT_EQ(*held.x.word_ptr(3), 1u);
    EXPECT_TRUE(holds(held.x, Big(std::vector<TypeParam>{this->ones, this->ones})));
}

// A value may fill its size when the buffer has the word for the sentinel behind it.
TYPED_TEST(BasicInts, SizeNeedNotCountTheWordOfTheSentinel) {
    const std::vector<TypeParam> a{5, 6}, b{7, 1};
    GuardedWords<TypeParam> buffer(3);
    BasicIntR<TypeParam> x(buffer.data(), 2);
    x.set_bui(view(a));
    x += view(b);
    EXPECT_TRUE(holds(x, Big(a) + Big(b)));
    x -= view(b);
    EXPECT_TRUE(holds(x, Big(a)));
}

// ---- Owners

template <class word>
void check_owner_operations(BasicHeap* heap, u64_t stream) {
    auto rng = testing::make_rng(stream);
    BasicIntO<word> sum(heap), difference(heap), product(heap);
    for (upL_t La = 1; La <= 40; La += 3) {
        for (upL_t Lb = 1; Lb <= 40; Lb++) {
            const auto a = random_value<word>(La, rng);
            const auto b = random_value<word>(Lb, rng);
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

TYPED_TEST(BasicInts, OwnersFromTheGeneralAllocator) {
    check_owner_operations<TypeParam>(nullptr, 37);
}

TYPED_TEST(BasicInts, OwnersFromAHeapGiveEverythingBack) {
    alignas(64) static std::byte block[1 << 16];
    BasicHeap heap;
    heap_init(heap, block, sizeof block);
    check_owner_operations<TypeParam>(&heap, 38);
    EXPECT_GT(heap.peak_active, 0u);
    EXPECT_EQ(heap.active, 0u);
}

TYPED_TEST(BasicInts, OwnersGrowInPlace) {
    auto rng = testing::make_rng(39);
    const auto a = random_value<TypeParam>(5, rng);
    const auto b = random_value<TypeParam>(23, rng);
    BasicIntO<TypeParam> x(nullptr, 5);
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
    const std::vector<TypeParam> all(7, this->ones), one{1};
    x.add(view(one), view(all));  // the carry leaves the top
    EXPECT_EQ(x.get_L(), 8u);
    EXPECT_TRUE(holds(x, Big(all) + Big(one)));
}

TYPED_TEST(BasicInts, OwnersMove) {
    const std::vector<TypeParam> a{5, 6, 7};
    BasicIntO<TypeParam> x(nullptr, 8);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(x.get_T()) % 32, 0u);
    x.set_bui(view(a));
    const TypeParam* const words = x.get_T();
    BasicIntO<TypeParam> y(std::move(x));
    EXPECT_EQ(y.get_T(), words);
    EXPECT_TRUE(holds(y, Big(a)));
    BasicIntO<TypeParam> z(nullptr, 2);
    z = std::move(y);
    EXPECT_EQ(z.get_T(), words);
    EXPECT_EQ(z.get_size(), 8u);
    EXPECT_TRUE(holds(z, Big(a)));
    EXPECT_EQ(y.get_T(), nullptr);
    EXPECT_EQ(y.get_L(), 0u);
}

// ---- Failures

TYPED_TEST(BasicInts, ValuesThatDoNotFitThrowAndChangeNothing) {
    const std::vector<TypeParam> a{1, 2, 3}, b{4, 5};
    GuardedWords<TypeParam> buffer(4);
    const auto before = buffer.words();
    BasicIntR<TypeParam> x(buffer.data(), 4);
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
    BasicIntR<TypeParam> two(buffer.data(), 2);
    refuses("BasicInt::set_bui()", 2, 3, [&] { two.set_bui(view(a)); });
    refuses("anywhere", 2, 9, [&] { two.check_size("anywhere", 9); });
    EXPECT_EQ(buffer.words(), before);

    BasicIntR<TypeParam> beyond(buffer.data(), 2);
    beyond.set_L(3);  // longer than its buffer says
    refuses("BasicIntR::operator+=()", 2, 3, [&] { beyond += view(b); });
    refuses("BasicIntR::operator-=()", 2, 3, [&] { beyond -= view(b); });
    EXPECT_EQ(buffer.words(), before);
}

TYPED_TEST(BasicInts, CheckSizePassesWhenItFits) {
    GuardedWords<TypeParam> buffer(4);
    const BasicIntR<TypeParam> x(buffer.data(), 4);
    EXPECT_NO_THROW(x.check_size("anywhere", 4));
}

// The failures below end the process. Words in shared memory show in what state it left its operand.
template <class word>
class BasicIntsDeathTest : public BasicInts<word> {
  protected:
    void SetUp() override {
        void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        ASSERT_NE(memory, MAP_FAILED);
        words_ = static_cast<word*>(memory);
    }
    void TearDown() override { munmap(words_, bytes); }

    BasicIntR<word> shared(const std::vector<word>& value) {
        std::copy(value.begin(), value.end(), words_);
        BasicIntR<word> x(words_, 64);
        x.set_L(value.size());
        return x;
    }
    std::vector<word> words(upL_t n) const { return {words_, words_ + n}; }

  private:
    static constexpr std::size_t bytes = 4096;
    word* words_ = nullptr;
};
TYPED_TEST_SUITE(BasicIntsDeathTest, testing::Words);

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

TYPED_TEST(BasicIntsDeathTest, EqualValuesGiveZero) {
    for (upL_t L : {upL_t{1}, upL_t{2}, upL_t{40}}) {
        const std::vector<TypeParam> a(L, 7);
        auto x = this->shared(a);
        EXPECT_EXIT(dying([&] { x -= view(a); }), ExitedWithCode(1), at("BasicIntR::operator-=()", zero));
        EXPECT_EXIT(dying([&] { x -= x; }), ExitedWithCode(1), at("BasicIntR::operator-=()", zero));
        BasicIntO<TypeParam> owner;
        EXPECT_EXIT(dying([&] { owner.sub(view(a), view(a)); }), ExitedWithCode(1),
                    at("BasicIntO::sub()", zero));
    }
}

TYPED_TEST(BasicIntsDeathTest, LongerSubtrahendIsNegativeBeforeAnyWordChanges) {
    const std::vector<TypeParam> a{1, 2, 3}, b{1, 2, 3, 4};
    auto x = this->shared(a);
    EXPECT_EXIT(dying([&] { x -= view(b); }), ExitedWithCode(1), at("BasicIntR::operator-=()", negative));
    EXPECT_EQ(this->words(4), (std::vector<TypeParam>{1, 2, 3, 0}));
    BasicIntO<TypeParam> owner;
    EXPECT_EXIT(dying([&] { owner.sub(view(a), view(b)); }), ExitedWithCode(1),
                at("BasicIntO::sub()", negative));
}

TYPED_TEST(BasicIntsDeathTest, SmallerOfEqualLengthsIsFoundByTheSentinel) {
    const std::vector<TypeParam> a{1, 2, 3}, b{1, 2, 4};
    auto x = this->shared(a);
    EXPECT_EXIT(dying([&] { x -= view(b); }), ExitedWithCode(1), at("BasicIntR::operator-=()", negative));
    EXPECT_EQ(this->words(4),
              (std::vector<TypeParam>{0, 0, this->ones, 0}));  // overwritten, sentinel consumed
    BasicIntO<TypeParam> owner;
    EXPECT_EXIT(dying([&] { owner.sub(view(a), view(b)); }), ExitedWithCode(1),
                at("BasicIntO::sub()", negative));
    owner.add(view(a), view(a));
    const std::vector<TypeParam> more{3, 4, 6};
    EXPECT_EXIT(dying([&] { owner -= view(more); }), ExitedWithCode(1), at("BasicIntO::sub()", negative));
}

TYPED_TEST(BasicIntsDeathTest, AddingALongerValueIsFatalAndChangesNothing) {
    const std::vector<TypeParam> a{1, 2, 3}, b{1, 2, 3, 4};
    auto x = this->shared(a);
    EXPECT_EXIT(dying([&] { x += view(b); }), ExitedWithCode(1), "Invalid Function Parameters:   ");
    EXPECT_EQ(this->words(4), (std::vector<TypeParam>{1, 2, 3, 0}));
}

}  // namespace
}  // namespace znp
