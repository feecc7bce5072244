// HeapFloat: a BigFloat that owns its words in the run's working memory.
//
// The estimators count it as HeapFloat::bytes(size). Moving one leaves zero behind. Belongs to the thread of
// the driver, like the heap.
#pragma once

#include "foundation/basic_heap.hpp"
#include "foundation/guarded_alloc.hpp"
#include "numbers/big_float.hpp"

namespace znp {

class HeapFloat : public BigFloatR<cdi> {
  public:
    HeapFloat() = default;
    HeapFloat(BasicHeap& heap, upL_t size);
    HeapFloat(HeapFloat&& other) noexcept { *this = std::move(other); }
    HeapFloat& operator=(HeapFloat&& other) noexcept;

    void free();

    // Moves the words down to the block below, once the buffers of a stage that lay between are free, so that
    // the next stage has all the room in one piece.
    void settle();

    // Of the heap, with what settling leaves unused.
    static upL_t bytes(upL_t size);

  private:
    GuardedArray<cdi> words_;
};

}  // namespace znp
