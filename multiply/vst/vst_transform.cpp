#include "multiply/vst/vst_transform.hpp"

#include <algorithm>

#include "foundation/fail.hpp"
#include "foundation/fatal.hpp"
#include "foundation/range_fork.hpp"
#include "multiply/kernels/guard_residue.hpp"
#include "multiply/table_holder.hpp"
#include "multiply/vst/redundancy.hpp"

namespace znp {

namespace {

const vst::Geometry& checked(const vst::Geometry& g) {
    if (!g.long_enough()) fail(InvalidTransformParametersException("Transform length is too small."));
    return g;
}

// Each thread shall have this many points at least.
constexpr u64_t min_thread_points = 2048;

u64_t threads_for_size(const vst::Geometry& g, u64_t threads) {
    return std::clamp<u64_t>(threads, 1,
                             std::min(max_threads, std::max<u64_t>(1, g.points() / min_thread_points)));
}

vst::Result as_bytes(Window<c32i> R) {
    return {reinterpret_cast<std::byte*>(R.T), R.s, R.e};
}
vst::Operand as_bytes(WordSpan<c32i> A) {
    return {reinterpret_cast<const std::byte*>(A.data()), A.size()};
}

double* points(Image* image) {
    return reinterpret_cast<double*>(image);
}
const double* points(const Image* image) {
    return reinterpret_cast<const double*>(image);
}

}  // namespace

VST::VST(const TableHolder* holder_, const vst::Geometry& g, u64_t threads_)
    : transform(holder_, checked(g).capacity(), g.image_bytes(), 0),
      geometry(g),
      capacity(g.capacity()),
      record(holder_ != nullptr && holder_->vst != nullptr ? holder_->vst->sets[g.a - 3][g.b / 2] : nullptr),
      threads(threads_for_size(g, threads_)),
      stages_(g.levels(), g.part_levels(), g.has_gaps() ? 0 : fork_depth(threads), g.max_column_levels()) {
    threads = std::min(threads, stages_.max_threads());
    work_bytes = vst::scratch_bytes(g, stages_, threads);
}

bool VST::equals(const transform& other) const {
    const auto* vst = dynamic_cast<const VST*>(&other);
    return vst != nullptr && vst->geometry == geometry;
}

vst::Frame VST::frame(vst::Ring ring, TransformScratch* scratch) const {
    const unsigned needed = geometry.c + (ring == vst::Ring::negacyclic ? 1 : 0);
    if (record == nullptr || record->geometry.c < geometry.c || record->set->max_c < needed)
        assert_failure(fatal_category::invalid_parameters, L"VST", L"twiddle tables");
    return {record, geometry, stages_, ring, threads, reinterpret_cast<std::byte*>(scratch)};
}

void VST::check_operand(upL_t L) const {
    if (32 * L > capacity) fail(ConvolutionTooSmallException(name(), 32 * L, capacity));
}

void VST::check_window(upL_t s, upL_t e) const {
    if (s > e) assert_failure(fatal_category::invalid_parameters, L"VST", L"window");
    check_operand(e);
}

// The one place where the high parts of an inverse are judged.
bool VST::judged(vst::Ring ring, const vst::Outcome& outcome) const {
    vst::check_redundancy(outcome.high_parts, vst::redundancy_bound(geometry)
                                                  << (ring == vst::Ring::negacyclic ? 1 : 0));
    return outcome.top;
}

void VST::forward_in(vst::Ring ring, Image* image, const vst::Operand& A, TransformScratch* scratch) const {
    check_operand(A.L);
    vst::forward_passes(frame(ring, scratch), points(image), A);
}

bool VST::inverse_in(vst::Ring ring, const vst::Result& result, Image* T1, const Image* T2,
                     TransformScratch* scratch) const {
    check_window(result.s, result.e);
    return judged(ring, vst::inverse_passes(frame(ring, scratch), points(T1), points(T2), result));
}

bool VST::product_in(vst::Ring ring, const vst::Result& result, const vst::Operand& A, const vst::Operand& B,
                     const WorkAreas& work) const {
    check_window(result.s, result.e);
    check_operand(A.L);
    check_operand(B.L);
    const bool square = A.words == B.words && A.L == B.L;
    return judged(ring, vst::product_passes(frame(ring, work.scratch), points(work.T1), points(work.T2), A,
                                            square ? nullptr : &B, result));
}

void VST::forward(Image* image, WordSpan<c32i> A, TransformScratch* scratch) const {
    forward_in(vst::Ring::cyclic, image, as_bytes(A), scratch);
}

void VST::inverse_fsqr(Window<c32i> R, Image* T, TransformScratch* scratch) const {
    inverse_fmul(R, T, T, scratch);
}

void VST::inverse_fmul(Window<c32i> R, Image* T1, const Image* T2, TransformScratch* scratch) const {
    inverse_in(vst::Ring::cyclic, as_bytes(R), T1, T2, scratch);
}

void VST::product(Window<c32i> R, WordSpan<c32i> A, WordSpan<c32i> B, const WorkAreas& work) const {
    product_in(vst::Ring::cyclic, as_bytes(R), as_bytes(A), as_bytes(B), work);
}

void VST::product(Window<c64i> R, WordSpan<c64i> A, WordSpan<c64i> B, const WorkAreas& work) const {
    product(as_c32i(R), as_c32i(A), as_c32i(B), work);
}

CheckedResult VST::checked_fsqr(Window<c64i> R, Image* T, TransformScratch* scratch) const {
    return checked_fmul(R, T, T, scratch);
}

CheckedResult VST::checked_fmul(Window<c64i> R, Image* T1, const Image* T2, TransformScratch* scratch) const {
    const vst::Result result = as_bytes(as_c32i(R));
    inverse_in(vst::Ring::cyclic, result, T1, T2, scratch);
    return vst::checked_result(frame(vst::Ring::cyclic, scratch), points(T1), result);
}

u64_t VST::modulus() const {
    const u64_t bits = u64_t{1} << capacity % 64;
    return guard::sub(guard::shift_words(bits, static_cast<s64_t>(capacity / 64)), 1);
}

}  // namespace znp
