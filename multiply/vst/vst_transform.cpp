#include "multiply/vst/vst_transform.hpp"

#include <algorithm>

#include "foundation/fail.hpp"
#include "foundation/fatal.hpp"
#include "foundation/range_fork.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/table_holder.hpp"

namespace znp {

namespace {

const vst::Geometry& checked(const vst::Geometry& g) {
    if (g.c < g.t() + 4) fail(InvalidTransformParametersException("Transform length is too small."));
    return g;
}

// Each thread shall have this many points at least.
constexpr u64_t min_thread_points = 2048;

u64_t useful_threads(const vst::Geometry& g, u64_t threads) {
    return std::clamp<u64_t>(threads, 1,
                             std::min(max_threads, std::max<u64_t>(1, g.points() / min_thread_points)));
}

std::byte* bytes(c32i* R) {
    return reinterpret_cast<std::byte*>(R);
}
const std::byte* bytes(const c32i* A) {
    return reinterpret_cast<const std::byte*>(A);
}

}  // namespace

VST::VST(const TableHolder* holder_, const vst::Geometry& geometry, u64_t threads_)
    : transform(holder_, checked(geometry).capacity(), geometry.image_bytes(), 0),
      a(geometry.a),
      b(geometry.b),
      c(geometry.c),
      capacity(geometry.capacity()),
      record(holder_ != nullptr && holder_->vst != nullptr ? holder_->vst->sets[a - 3][b / 2] : nullptr),
      levels(geometry.levels()),
      first_levels(0),
      log2_threads(fork_depth(useful_threads(geometry, threads_))),
      threads(useful_threads(geometry, threads_)),
      carry_bytes(0),
      geometry_(geometry),
      stages_(levels, geometry.part_levels(), geometry.has_gaps() ? 0 : log2_threads,
              geometry.max_column_levels()) {
    first_levels = stages_.part_depth();
    threads = std::min(threads, u64_t{1} << std::min(stages_.part_depth(), stages_.columns_log(0)));
    carry_bytes = vst::carry_bytes(stages_);
    work_bytes = vst::scratch_bytes(geometry_, stages_, threads);
}

bool VST::equals(const transform& other) const {
    const auto* vst = dynamic_cast<const VST*>(&other);
    return vst != nullptr && vst->a == a && vst->b == b && vst->c == c;
}

vst::Frame VST::frame(vst::Ring ring, void* scratch) const {
    const unsigned needed = c + (ring == vst::Ring::negacyclic ? 1 : 0);
    if (record == nullptr || record->geometry.c < c || record->set->max_c < needed)
        assert_failure(fatal_category::invalid_parameters, L"VST", L"twiddle tables");
    return {record, geometry_, stages_, ring, threads, static_cast<std::byte*>(scratch)};
}

void VST::check_operand(upL_t L) const {
    if (32 * L > capacity) fail(ConvolutionTooSmallException(name(), 32 * L, capacity));
}

void VST::check_window(upL_t s, upL_t e) const {
    if (s > e) assert_failure(fatal_category::invalid_parameters, L"VST", L"window");
    check_operand(e);
}

void VST::forward_in(vst::Ring ring, void* image, const c32i* A, upL_t L, void* scratch) const {
    check_operand(L);
    vst::forward_passes(frame(ring, scratch), static_cast<double*>(image), bytes(A), L);
}

u32_t VST::inverse_in(vst::Ring ring, c32i* R, upL_t s, upL_t e, void* T1, const void* T2,
                      void* scratch) const {
    check_window(s, e);
    return vst::inverse_passes(frame(ring, scratch), static_cast<double*>(T1), static_cast<const double*>(T2),
                               {bytes(R), s, e});
}

u32_t VST::product_in(vst::Ring ring, const vst::Result& result, const vst::Operand& A, const vst::Operand& B,
                      void* T1, void* T2, void* scratch) const {
    check_operand(A.L);
    check_operand(B.L);
    const bool square = A.words == B.words && A.L == B.L;
    return vst::product_passes(frame(ring, scratch), static_cast<double*>(T1), static_cast<double*>(T2), A,
                               square ? nullptr : &B, result);
}

void VST::forward(void* image, const c32i* A, upL_t L, void* scratch) const {
    forward_in(vst::Ring::cyclic, image, A, L, scratch);
}

void VST::inverse_fsqr(c32i* R, upL_t s, upL_t e, void* T, void* scratch) const {
    inverse_in(vst::Ring::cyclic, R, s, e, T, T, scratch);
}

void VST::inverse_fmul(c32i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const {
    inverse_in(vst::Ring::cyclic, R, s, e, T1, T2, scratch);
}

void VST::product(c32i* R, upL_t s, upL_t e, const c32i* A, upL_t La, const c32i* B, upL_t Lb, void* T1,
                  void* T2, void* scratch) const {
    check_window(s, e);
    product_in(vst::Ring::cyclic, {bytes(R), s, e}, {bytes(A), La}, {bytes(B), Lb}, T1, T2, scratch);
}

void VST::product(c64i* R, upL_t s, upL_t e, const c64i* A, upL_t La, const c64i* B, upL_t Lb, void* T1,
                  void* T2, void* scratch) const {
    product(reinterpret_cast<c32i*>(R), 2 * s, 2 * e, reinterpret_cast<const c32i*>(A), 2 * La,
            reinterpret_cast<const c32i*>(B), 2 * Lb, T1, T2, scratch);
}

u64_t VST::checked_fsqr(c64i* R, upL_t s, upL_t e, void* T, void* scratch) const {
    return checked_fmul(R, s, e, T, T, scratch);
}

u64_t VST::checked_fmul(c64i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const {
    auto* const words = reinterpret_cast<c32i*>(R);
    inverse_in(vst::Ring::cyclic, words, 2 * s, 2 * e, T1, T2, scratch);
    return vst::hash_result(frame(vst::Ring::cyclic, scratch), static_cast<const double*>(T1),
                            {bytes(words), 2 * s, 2 * e});
}

u64_t VST::modulus() const {
    return residue::sub(residue::mul_power_of_2(1, static_cast<unsigned>(capacity % 61)), 1);
}

void VST::cyclic_forward(void* image, const c32i* A, upL_t L, void* scratch) const {
    forward_in(vst::Ring::cyclic, image, A, L, scratch);
}

void VST::cyclic_inverse_fsqr(c32i* R, void* T, void* scratch) const {
    inverse_in(vst::Ring::cyclic, R, 0, capacity / 32, T, T, scratch);
}

void VST::cyclic_inverse_fmul(c32i* R, void* T1, const void* T2, void* scratch) const {
    inverse_in(vst::Ring::cyclic, R, 0, capacity / 32, T1, T2, scratch);
}

void VST::negacyclic_forward(void* image, const c32i* A, upL_t L, void* scratch) const {
    forward_in(vst::Ring::negacyclic, image, A, L, scratch);
}

u32_t VST::negacyclic_inverse_fsqr(c32i* R, void* T, void* scratch) const {
    return inverse_in(vst::Ring::negacyclic, R, 0, capacity / 32, T, T, scratch);
}

u32_t VST::negacyclic_inverse_fmul(c32i* R, void* T1, const void* T2, void* scratch) const {
    return inverse_in(vst::Ring::negacyclic, R, 0, capacity / 32, T1, T2, scratch);
}

void VST::cyclic_product(c32i* R, const c32i* A, upL_t La, const c32i* B, upL_t Lb, void* T1, void* T2,
                         void* scratch) const {
    product_in(vst::Ring::cyclic, {bytes(R), 0, capacity / 32}, {bytes(A), La}, {bytes(B), Lb}, T1, T2,
               scratch);
}

u32_t VST::negacyclic_product(c32i* R, const c32i* A, upL_t La, const c32i* B, upL_t Lb, void* T1, void* T2,
                              void* scratch) const {
    return product_in(vst::Ring::negacyclic, {bytes(R), 0, capacity / 32}, {bytes(A), La}, {bytes(B), Lb}, T1,
                      T2, scratch);
}

}  // namespace znp
