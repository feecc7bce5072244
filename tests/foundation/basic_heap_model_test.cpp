// Random histories of a heap against a naive model of it: a list of blocks that is searched from the start.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "foundation/basic_heap.hpp"
#include "foundation/guarded_alloc.hpp"
#include "foundation/heap_block.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::check_invariants;
using testing::HeapBlock;

// Offsets from the base of the heap.
struct ModelBlock {
    upL_t offset;
    upL_t size;
};

class ModelHeap {
  public:
    explicit ModelHeap(upL_t size_bytes) : size_(size_bytes) {}

    static constexpr upL_t none = ~upL_t{0};

    upL_t top() const { return blocks_.empty() ? 0 : blocks_.back().offset + blocks_.back().size; }
    upL_t limit() const { return size_ - 16 * blocks_.size(); }
    const std::vector<ModelBlock>& blocks() const { return blocks_; }

    // Tries every offset from below.
    upL_t alloc(upL_t size) {
        if (limit() - top() < 16) return none;
        for (upL_t offset = 0; offset + size <= size_; offset += 8) {
            if (!is_free(offset, size)) continue;
            if (offset >= top() && offset + size + 16 > limit()) return none;
            blocks_.push_back({offset, size});
            sort();
            return offset;
        }
        return none;
    }

    void free(upL_t offset) {
        std::erase_if(blocks_, [=](const ModelBlock& block) { return block.offset == offset; });
    }

    // How far the block can move down in steps of alignment.
    upL_t shift(upL_t offset, upL_t alignment) {
        const ModelBlock moved = *std::find_if(
            blocks_.begin(), blocks_.end(), [=](const ModelBlock& block) { return block.offset == offset; });
        free(offset);
        upL_t shift = 0;
        while (shift + alignment <= offset && is_free(offset - shift - alignment, moved.size + shift)) {
            shift += alignment;
        }
        blocks_.push_back({offset - shift, moved.size});
        sort();
        return shift;
    }

  private:
    bool is_free(upL_t offset, upL_t size) const {
        return std::none_of(blocks_.begin(), blocks_.end(), [=](const ModelBlock& block) {
            return block.offset < offset + size && offset < block.offset + block.size;
        });
    }
    void sort() {
        std::sort(blocks_.begin(), blocks_.end(),
                  [](const ModelBlock& a, const ModelBlock& b) { return a.offset < b.offset; });
    }

    upL_t size_;
    std::vector<ModelBlock> blocks_;
};

// A live array of the history, filled with a pattern.
struct Live {
    u64_t* payload;
    upL_t words;
    upL_t alignment;
    u64_t pattern;

    void fill() const {
        for (upL_t i = 0; i < words; ++i) payload[i] = pattern + i;
    }
    bool intact() const {
        for (upL_t i = 0; i < words; ++i) {
            if (payload[i] != pattern + i) return false;
        }
        return true;
    }
};

class History {
  public:
    History(upL_t size_bytes, std::mt19937_64& rng) : rng_(rng), block_(size_bytes), model_(size_bytes) {}

    void step() {
        const u64_t choice = below(100);
        if (choice < 50 || live_.empty()) {
            alloc();
        } else if (choice < 80) {
            free(below(live_.size()));
        } else {
            shift(live_[below(live_.size())]);
        }
        compare();
    }

    void finish() {
        while (!live_.empty()) free(below(live_.size()));
        compare();
        EXPECT_EQ(block_.heap.active, 0u);
    }

  private:
    u64_t below(u64_t bound) { return rng_() % bound; }
    upL_t offset_of(const Live& live) {
        return static_cast<upL_t>(guarded_back_pointer(live.payload) - block_.heap.base);
    }

    void alloc() {
        const upL_t words = below(10) == 0 ? below(60) : below(12);
        const upL_t alignment = upL_t{8} << below(6);
        const upL_t raw_bytes = 8 * words + alignment + 40;
        const upL_t offset = model_.alloc(raw_bytes);
        if (offset == ModelHeap::none) {
            EXPECT_EQ(heap_alloc(block_.heap, raw_bytes), nullptr);
            return;
        }
        auto* const payload = static_cast<u64_t*>(guarded_alloc(&block_.heap, 8 * words, alignment));
        live_.push_back({payload, words, alignment, rng_()});
        EXPECT_EQ(address_of(payload) % alignment, 0u);
        EXPECT_EQ(offset_of(live_.back()), offset);
        live_.back().fill();
    }

    void free(u64_t index) {
        model_.free(offset_of(live_[index]));
        guarded_free(live_[index].payload);
        live_.erase(live_.begin() + static_cast<std::ptrdiff_t>(index));
    }

    void shift(Live& live) {
        const upL_t expected = model_.shift(offset_of(live), live.alignment);
        auto* const shifted = static_cast<u64_t*>(heap_shift_down(live.payload, live.alignment));
        EXPECT_EQ(address_of(live.payload) - address_of(shifted), expected);
        live.payload = shifted;
    }

    void compare() {
        check_invariants(block_.heap);
        const auto table = testing::table_of(block_.heap);
        ASSERT_EQ(table.size(), model_.blocks().size());
        for (upL_t i = 0; i < table.size(); ++i) {
            EXPECT_EQ(table[i].address, block_.at(model_.blocks()[i].offset));
            EXPECT_EQ(table[i].size, model_.blocks()[i].size);
        }
        for (const Live& live : live_) EXPECT_TRUE(live.intact());
    }

    std::mt19937_64& rng_;
    HeapBlock block_;
    ModelHeap model_;
    std::vector<Live> live_;
};

TEST(BasicHeapModel, RandomHistoriesAgree) {
    std::mt19937_64 rng = testing::make_rng(8201);
    for (int round = 0; round < 20 && !::testing::Test::HasFailure(); ++round) {
        History history(1024 + 8 * (rng() % 400), rng);
        for (int i = 0; i < 150 && !::testing::Test::HasFailure(); ++i) history.step();
        history.finish();
    }
}

// The same allocations through a pair and its join: what is alive stays intact and releasable.
TEST(BasicHeapModel, RandomSurvivorsOfPairs) {
    std::mt19937_64 rng = testing::make_rng(8202);
    for (int round = 0; round < 50; ++round) {
        HeapBlock block(16384 + 8 * (rng() % 100));
        std::vector<Live> live;
        for (int split = 0; split < 4; ++split) {
            heap_split(block.heap, 8);
            for (u64_t n = rng() % 12; n > 0; --n) {
                const upL_t words = rng() % 10;
                auto* payload =
                    static_cast<u64_t*>(guarded_alloc(&block.heap.child_pair[rng() % 2], 8 * words, 32));
                live.push_back({payload, words, 32, rng()});
                live.back().fill();
            }
            heap_join(block.heap);
            check_invariants(block.heap);
            std::shuffle(live.begin(), live.end(), rng);
            while (live.size() > 3) {
                guarded_free(live.back().payload);
                live.pop_back();
            }
            for (const Live& array : live) EXPECT_TRUE(array.intact());
        }
        for (const Live& array : live) guarded_free(array.payload);
        EXPECT_EQ(block.heap.active, 0u);
    }
}

}  // namespace
}  // namespace znp
