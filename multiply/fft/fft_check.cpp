#include "multiply/fft/fft_check.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/strings.hpp"
#include "multiply/fft/fft_tables.hpp"
#include "multiply/redundancy_failure.hpp"

namespace znp::fft {

namespace {

// The eight outputs of the step at one position: real and imaginary parts of a, b, c, d.
struct StepOutputs {
    double r[4], i[4];
};

StepOutputs root_step(const double* x, upL_t quarter, double scale) {
    const auto re = [&](unsigned q) { return x[q * quarter]; };
    const auto im = [&](unsigned q) { return x[q * quarter + 4]; };
    const double er = re(0) + re(1), ei = im(0) + im(1), pr = re(0) - re(1), pi = im(0) - im(1);
    const double dr = re(2) + re(3), di = im(2) + im(3), qr = re(2) - re(3), qi = im(2) - im(3);
    StepOutputs out = {{scale * (er + dr)}, {scale * (ei + di)}};
    const auto conjugate_product = [&](unsigned at, double xr, double xi, double wr, double wi) {
        out.r[at] = scale * std::fma(xr, wr, xi * wi);
        out.i[at] = scale * std::fma(xi, wr, -(xr * wi));
    };
    conjugate_product(1, pr + qi, pi - qr, root_c, root_s);
    conjugate_product(2, er - dr, ei - di, root_half, root_half);
    conjugate_product(3, pr - qi, pi + qr, root_s, root_c);
    return out;
}

// Calls f(position, outputs) for all.
template <class F>
void for_each_step(const double* image, upL_t N, double scale, const F& f) {
    for (upL_t j = 0; j < N / 8; ++j) f(j, root_step(image + (j / 4 * 8 + j % 4), N / 4, scale));
}

double distance(double point) {
    return std::abs(point) < 0x1p49 ? std::abs(point - std::nearbyint(point)) : 1;
}

}  // namespace

double distance_limit(upL_t N, unsigned w) {
    const double points = static_cast<double>(N), digit = std::ldexp(1.0, static_cast<int>(w)) - 1;
    const double sigma = 0.6 * 0x1p-53 * std::sqrt(std::log2(points / 2)) * points * digit * digit;
    return std::clamp(10 * sigma, 0.125, 0.453125);
}

double largest_distance(const double* image, upL_t N, double scale) {
    double largest = 0;
    for_each_step(image, N, scale, [&](upL_t, const StepOutputs& out) {
        for (unsigned q = 0; q < 4; ++q)
            largest = std::max({largest, distance(out.r[q]), distance(out.i[q])});
    });
    return largest;
}

bool has_strays(const double* image, upL_t N, double scale) {
    // Both halves of the ulp around 1/8 round away from it, to a multiple of 1/2.
    const auto strays = [](double x) { return distance(x) > 0.125; };
    bool any = false;
    for_each_step(image, N, scale, [&](upL_t j, const StepOutputs& out) {
        const bool odd = j / 4 % 2 != 0;
        const unsigned at = odd ? 3 : 1;
        any = any || strays(out.r[at]) || strays(out.i[at]) || strays(odd ? out.i[2] : out.r[2]);
    });
    return any;
}

void check_distances(const double* image, upL_t N, unsigned w, double scale) {
    const double found = largest_distance(image, N, scale), limit = distance_limit(N, w);
    if (found > limit)
        redundancy_failure("FFT", format_printf(16, "%.4f", found), format_printf(16, "%.4f", limit));
}

}  // namespace znp::fft
