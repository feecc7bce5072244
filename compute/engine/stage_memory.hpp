// Where the stages of a formula take their memory from: the heap of a run, or nothing but a count of bytes.
//
// A stage is written once for both. It takes its arrays in the order in which the heap shall hold them, and
// says in carry_out what is done with them, which a count leaves out: so the memory query of a constant is
// its run without the arithmetic. Hence what a stage takes follows from sizes alone, never from values.
//
// A count has the bytes of the heap, overheads included, of what is alive together. A run needs no more as
// long as no gaps stay behind: a stage frees what it took, but for its result, which it settles.
#pragma once

#include "compute/run/run_time_parameters.hpp"
#include "foundation/guarded_alloc.hpp"
#include "numbers/big_float.hpp"

namespace znp {

struct MemoryCount {
    upL_t alive = 0;
    upL_t peak = 0;
};

// Bytes on a count, taken off at the end. Moving them leaves none behind.
class CountedBytes {
  public:
    CountedBytes() = default;
    CountedBytes(MemoryCount& count, upL_t bytes);
    CountedBytes(CountedBytes&& other) noexcept { *this = std::move(other); }
    CountedBytes& operator=(CountedBytes&& other) noexcept;
    ~CountedBytes() { take_off(); }

  private:
    void take_off();

    MemoryCount* count_ = nullptr;
    upL_t bytes_ = 0;
};

// In the heap or on the count; the other member is empty.
template <class T>
struct StageArray {
    GuardedArray<T> memory;
    CountedBytes counted;
    upL_t size = 0;

    T* get() const { return memory.get(); }
};

// A BigFloat that owns its words. Moving one leaves zero behind.
class HeapFloat : public BigFloatR {
  public:
    HeapFloat() = default;
    explicit HeapFloat(StageArray<cdi> words);
    HeapFloat(HeapFloat&& other) noexcept { *this = std::move(other); }
    HeapFloat& operator=(HeapFloat&& other) noexcept;

    void free() { *this = HeapFloat(); }

    // Moves the words down to the block below, once the buffers of a stage that lay between are free, so that
    // the next stage has all the room in one piece.
    void settle();

  private:
    StageArray<cdi> words_;
};

// Words of a number of p words that stands between two stages: a word of a product or a sum on either end.
constexpr upL_t number_words(upL_t p) {
    return p + extra_precision + 2;
}

class StageMemory {
  public:
    explicit StageMemory(RunTimeParameters& run) : settings_(run.settings), run_(&run) {}
    // Counts, for buffers of so many words more than the precision asks for.
    StageMemory(const RunSettings& settings, upL_t margin) : settings_(settings), margin_(margin) {}
    StageMemory(const StageMemory&) = delete;
    StageMemory& operator=(const StageMemory&) = delete;

    const RunSettings& settings() const { return settings_; }
    u64_t threads() const { return settings_.tds; }
    // The precision for which a stage that works to p words takes its buffers. Plans go by p itself.
    upL_t room(upL_t p) const { return p + margin_; }

    template <class T>
    StageArray<T> array(upL_t size) {
        const upL_t bytes = heap_array_bytes(size, sizeof(T));
        if (run_ == nullptr) return {{}, {count_, bytes}, size};
        return {make_guarded_array<T>(&run_->heap, size), {}, size};
    }
    StageArray<std::byte> work(upL_t bytes) { return array<std::byte>(bytes); }
    // With what settling leaves unused of a gap.
    HeapFloat number(upL_t words);

    // f(run)
    template <class F>
    void carry_out(F f) {
        if (run_ != nullptr) f(*run_);
    }

    upL_t peak_bytes() const { return count_.peak; }  // of a count

  private:
    const RunSettings& settings_;
    RunTimeParameters* const run_ = nullptr;
    const upL_t margin_ = 0;
    MemoryCount count_;
};

// The bytes that stages(memory) needs.
template <class Stages>
upL_t count_bytes(const RunSettings& settings, upL_t margin, Stages stages) {
    StageMemory memory(settings, margin);
    stages(memory);
    return memory.peak_bytes();
}

}  // namespace znp
