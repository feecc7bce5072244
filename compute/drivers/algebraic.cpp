#include "compute/drivers/algebraic.hpp"

#include <algorithm>

#include "compute/drivers/shared_stages.hpp"

namespace znp {

namespace {

constexpr cdi half = cdi{1} << 63;

// Room for the products with words and the sum that follow in place.
constexpr upL_t extra_words = 3;

}  // namespace

void sqrt_B(HeapFloat& out, RunTimeParameters& run, u64_t n) {
    inv_sqrt_B(out, n, run.p, run, extra_words);
    out.mul_uW(n);
}

void golden_ratio_B(HeapFloat& out, RunTimeParameters& run) {
    sqrt_B(out, run, 5);
    run.events.add("Shifting");
    out.mul_uW(half);
    out.shift_exp(-1);
    out.add_ip(half, -1);
}

upL_t algebraic_memory_B(upL_t p, u64_t dec, u64_t threads) {
    const upL_t P = p + estimate_margin;
    return std::max(inv_sqrt_bytes(P, threads, extra_words),
                    HeapFloat::bytes(inv_sqrt_words(P, extra_words)) + output_bytes(p, dec, threads));
}

}  // namespace znp
