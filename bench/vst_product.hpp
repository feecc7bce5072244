// A product of n by n 64-bit words by the large transform, in memory like that of a run: tables, operands,
// images and result, all of it touched before.
#pragma once

#include <random>

#include "bench/computation_tables.hpp"
#include "foundation/memory.hpp"
#include "multiply/vst/size_plan.hpp"
#include "multiply/vst/vst_transform.hpp"

namespace znp::bench {

class VSTProduct {
  public:
    VSTProduct(upL_t n, u64_t max_threads)
        : n_(n),
          geometry_(vst::find_size(bits()).geometry()),
          tables_(make_guarded_array<std::byte>(nullptr, table_size(bits()), 64)),
          A_(make_guarded_array<c64i>(nullptr, n)),
          B_(make_guarded_array<c64i>(nullptr, n)),
          R_(make_guarded_array<c64i>(nullptr, 2 * n)),
          work_(work_buffer(bp_, find_multiplier<c64i>("VST")->work_bytes(2 * n, max_threads))) {
        build_tables(holder_, bits(), tables_.get());
        bp_.holder = &holder_;
        first_touch(bp_.M, bp_.ML, max_threads);
        first_touch(R_.get(), 16 * n, max_threads);
        std::mt19937_64 rng(2026);
        for (upL_t i = 0; i < n; ++i) A_[i] = rng();
        for (upL_t i = 0; i < n; ++i) B_[i] = rng();
    }

    const vst::Geometry& geometry() const { return geometry_; }
    const c64i* a() const { return A_.get(); }
    const c64i* b() const { return B_.get(); }
    // Working memory in bytes for a byte of the result, of this product alone.
    double work_ratio(u64_t threads) const {
        return static_cast<double>(VST(nullptr, geometry_, threads).product_bytes()) /
               (16.0 * static_cast<double>(n_));
    }

    void multiply(u64_t threads) const {
        const VST vst(&holder_, geometry_, threads);
        vst.product({R_.get(), 0, 2 * n_}, {A_.get(), n_}, {B_.get(), n_}, vst.work_areas(bp_.M));
    }

    // One operand's transform, and the way back from both, on one thread. An inverse takes images that were
    // made by forward.
    void forward(unsigned which) const {
        const VST vst(&holder_, geometry_, 1);
        const auto [T1, T2, scratch] = vst.work_areas(bp_.M);
        vst.forward(which == 0 ? T1 : T2, {which == 0 ? a() : b(), n_}, scratch);
    }
    void inverse() const {
        const VST vst(&holder_, geometry_, 1);
        const auto [T1, T2, scratch] = vst.work_areas(bp_.M);
        vst.inverse_fmul({R_.get(), 0, 2 * n_}, T1, T2, scratch);
    }

  private:
    u64_t bits() const { return u64_t{128} * n_; }

    upL_t n_;
    vst::Geometry geometry_;
    TableHolder holder_;
    BasicParameters bp_;
    GuardedArray<std::byte> tables_;
    GuardedArray<c64i> A_, B_, R_;
    GuardedArray<std::byte> work_;
};

}  // namespace znp::bench
