#include <immintrin.h>

#include "multiply/vst/vst_kernels.hpp"
#include "multiply/vst/vst_vector.hpp"

namespace znp::vst {

namespace {

double mul_scalar(double x, double y, const PrimeTables& t) {
    const double hi = x * y;
    const double lo = __builtin_fma(x, y, -hi);
    const double q = __builtin_fma(hi, t.inverse, round_magic) - round_magic;
    return __builtin_fma(-q, t.p, hi) + lo;
}

// The product of the entries of the bits set in the node, which stand `shift` further up.
double node_factor(const double* bits, u64_t node, unsigned shift, const PrimeTables& t) {
    double product = 1.0;
    for (; node != 0; node &= node - 1)
        product = mul_scalar(product, bits[static_cast<unsigned>(__builtin_ctzll(node)) + shift], t);
    return product;
}

}  // namespace

void scale_residues(double* out, double factor, const double* x, upL_t count, const PrimeTables& t) {
    const Modulus m = make_modulus(t.p, t.inverse);
    const __m256d f = _mm256_set1_pd(factor);
    for (upL_t i = 0; i < count; i += 4) _mm256_storeu_pd(out + i, mul_mod(_mm256_loadu_pd(x + i), f, m));
}

void multiply_residues(double* out, const double* x, const double* y, upL_t count, const PrimeTables& t) {
    const Modulus m = make_modulus(t.p, t.inverse);
    for (upL_t i = 0; i < count; i += 4)
        _mm256_storeu_pd(out + i, mul_mod(_mm256_loadu_pd(x + i), _mm256_loadu_pd(y + i), m));
}

void local_twiddles(double* out, const PrimeTables& tables, Direction direction, u64_t node,
                    unsigned levels) {
    out[0] = tables.twiddles[direction][1];
    if (levels == 0) return;
    double factors[max_local_levels];
    double factor = node_factor(tables.bits[direction], node, levels - 1, tables);
    for (unsigned e = levels; e-- > 0;) {
        factors[e] = factor;
        factor = mul_scalar(factor, factor, tables);
    }
    // Upwards: what the vectors of the two short levels write too much is written again.
    for (unsigned e = 0; e < levels; e++)
        scale_residues(out + (upL_t{1} << e), factors[e], tables.twiddles[direction], upL_t{1} << e, tables);
}

void local_powers(double* out, const PrimeTables& tables, unsigned b, upL_t block_nodes, Direction direction,
                  u64_t node, unsigned levels) {
    const double factor = node_factor(tables.power_bits[direction], node, levels, tables);
    const upL_t nodes = upL_t{1} << levels;
    double power = factor;
    for (unsigned r = 0; r + 1 < b; r++) {
        scale_residues(out + r * nodes, power, tables.powers[direction] + r * block_nodes, nodes, tables);
        power = mul_scalar(power, factor, tables);
    }
}

void local_weights(double* out, const PrimeTables& tables, unsigned b, u64_t node, unsigned levels) {
    const double factor = node_factor(tables.power_bits[forward_direction], node, levels, tables);
    scale_residues(out, factor, tables.weights, upL_t{b} << levels, tables);
}

void scale_row_offset(double* x, upL_t count, double factor, double offset, const PrimeTables& prime) {
    const Modulus m = make_modulus(prime.p, prime.inverse);
    const __m256d f = _mm256_set1_pd(factor);
    const __m256d o = _mm256_set1_pd(offset);
    for (upL_t i = 0; i < 4 * count; i += 4) {
        const __m256d scaled = mul_mod(_mm256_load_pd(x + i), f, m);
        _mm256_store_pd(x + i, reduce_mod(_mm256_add_pd(scaled, o), m));
    }
}

}  // namespace znp::vst
