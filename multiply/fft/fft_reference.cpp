#include "multiply/fft/fft_reference.hpp"

#include <algorithm>
#include <cmath>

#include "multiply/fft/fft_tables.hpp"

namespace znp::fft::reference {

namespace {

// An angle 2 pi num / 2^log2_den.
struct Angle {
    u64_t num;
    unsigned log2_den;
};

std::complex<double> root(Angle a) {
    const Root r = unit_root(a.num, a.log2_den);
    return {r.c, r.s};
}

// The children of X^(2m) - e^(ia) are X^m - e^(ia/2) and X^m + e^(ia/2).
Angle child(Angle a, unsigned which) {
    return {a.num + (u64_t{which} << a.log2_den), a.log2_den + 1};
}

constexpr Angle right_angle = {1, 2};

void split(std::complex<double>* x, u64_t length, u64_t leaf, Angle a) {
    if (length == leaf) return;
    const u64_t m = length / 2;
    const std::complex<double> e = root(child(a, 0));
    for (u64_t i = 0; i < m; ++i) {
        const std::complex<double> y = x[m + i] * e;
        x[m + i] = x[i] - y;
        x[i] += y;
    }
    split(x, m, leaf, child(a, 0));
    split(x + m, m, leaf, child(a, 1));
}

void join(std::complex<double>* x, u64_t length, u64_t leaf, Angle a) {
    if (length == leaf) return;
    const u64_t m = length / 2;
    join(x, m, leaf, child(a, 0));
    join(x + m, m, leaf, child(a, 1));
    const std::complex<double> e = std::conj(root(child(a, 0)));
    for (u64_t i = 0; i < m; ++i) {
        const std::complex<double> y = (x[i] - x[m + i]) * e * 0.5;
        x[i] = (x[i] + x[m + i]) * 0.5;
        x[m + i] = y;
    }
}

void multiply(std::complex<double>* out, const std::complex<double>* A, const std::complex<double>* B,
              u64_t length, u64_t leaf, Angle a) {
    if (length > leaf) {
        const u64_t m = length / 2;
        multiply(out, A, B, m, leaf, child(a, 0));
        multiply(out + m, A + m, B + m, m, leaf, child(a, 1));
        return;
    }
    for (u64_t t = 0; t < leaf; ++t) {
        std::complex<double> low = 0, high = 0;
        for (u64_t i = 0; i < leaf; ++i)
            if (i <= t)
                low += A[i] * B[t - i];
            else
                high += A[i] * B[leaf + t - i];
        out[t] = low + high * root(a);
    }
}

u64_t digit(const c32i* A, upL_t L, u64_t bit, unsigned w) {
    u64_t x = 0;
    for (unsigned b = 0; b < w; ++b)
        if ((bit + b) / 32 < L) x |= u64_t{A[(bit + b) / 32] >> ((bit + b) % 32) & 1} << b;
    return x;
}

}  // namespace

Points forward(const Size& size, const c32i* A, upL_t L) {
    const u64_t M = size.N / 2;
    Points x(M);
    for (u64_t j = 0; j < M; ++j)
        x[j] = {static_cast<double>(digit(A, L, j * size.w, size.w)),
                static_cast<double>(digit(A, L, (j + M) * size.w, size.w))};
    split(x.data(), M, size.C, right_angle);
    return x;
}

Points pointwise(const Size& size, const Points& A, const Points& B) {
    Points out(A.size());
    multiply(out.data(), A.data(), B.data(), A.size(), size.C, right_angle);
    return out;
}

std::vector<c32i> inverse(const Size& size, Points image, u32_t& flag, double* error) {
    const u64_t M = size.N / 2;
    join(image.data(), M, size.C, right_angle);
    double worst = 0;
    std::vector<s64_t> digits(size.N);
    for (u64_t j = 0; j < size.N; ++j) {
        const double value = j < M ? image[j].real() : image[j - M].imag();
        worst = std::max(worst, std::abs(value - std::nearbyint(value)));
        digits[j] = std::llrint(value);
    }
    if (error != nullptr) *error = worst;

    // Carries around the ring until nothing moves; -1, which is 2^(N w), is the only value that never
    // settles.
    s64_t carry = 0;
    for (unsigned round = 0; round < 4; ++round) {
        for (s64_t& d : digits) {
            const s64_t v = d + carry;
            d = v & ((s64_t{1} << size.w) - 1);
            carry = v >> size.w;
        }
        carry = -carry;
        if (carry == 0) break;
    }
    std::vector<c32i> words(size.N * size.w / 32);
    flag = carry != 0;
    if (flag != 0) return words;
    for (u64_t j = 0; j < size.N; ++j)
        for (unsigned b = 0; b < size.w; ++b)
            words[(j * size.w + b) / 32] |= static_cast<c32i>(digits[j] >> b & 1) << ((j * size.w + b) % 32);
    return words;
}

}  // namespace znp::fft::reference
