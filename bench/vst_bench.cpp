// Products of the large transform from 10^4 to 10^8 words by as many, on one and on two threads, against
// mpn_mul_n of GMP; and its transforms alone:
//
//     vst_bench [n ...]
//
// Prints the rows of a table: milliseconds of a product on one thread; nanoseconds a word of an operand of
// that product, of the transform of one operand and of the inverse with the pointwise product; the peer's
// milliseconds, and how many times faster the product is; the product on two threads, and how many times
// faster than on one; working memory in bytes for a byte of the result.
//
// All times are medians of calls in a row: some calls on one thread, then as many on two and some of the
// peer, in several rounds, so that a disturbance of the machine does not hit a single column. Without
// arguments it takes two minutes and 14 GiB; the peer is left out above 10^7 words.
#include <gmp.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench/measurement.hpp"
#include "bench/vst_product.hpp"

namespace znp {
namespace {

constexpr upL_t largest_of_peer = 10'000'000;

struct Times {
    std::vector<double> one, two, peer, forward, inverse;
};

// Calls in a row that take so many seconds, of calls that take `each`.
unsigned calls_in(double budget, double each) {
    return static_cast<unsigned>(std::clamp(budget / each, 1.0, 1000.0));
}

Times measure(const bench::VSTProduct& product, upL_t n) {
    const auto record = [](std::vector<double>& times, unsigned calls, const auto& routine) {
        for (unsigned i = 0; i < calls; ++i) times.push_back(bench::seconds_of(routine));
    };
    std::vector<c64i> P(n <= largest_of_peer ? 2 * n : 0);
    const auto peer = [&] { mpn_mul_n(P.data(), product.a(), product.b(), static_cast<mp_size_t>(n)); };

    const double first = bench::seconds_of([&] { product.multiply(1); });
    const unsigned rounds = first > 0.3 ? 3 : 5;
    const unsigned calls = calls_in(0.15, first);
    Times times;
    product.forward(1);
    for (unsigned round = 0; round < rounds; ++round) {
        record(times.one, calls, [&] { product.multiply(1); });
        if (calls > 1) product.multiply(2);
        record(times.two, calls > 1 ? 2 * calls : 1, [&] { product.multiply(2); });
        if (!P.empty() && (n < largest_of_peer || round == 0))
            record(times.peer, calls_in(0.15, 4 * first), peer);
        product.forward(1);
        for (unsigned i = 0; i < calls; ++i) {
            record(times.forward, 1, [&] { product.forward(0); });
            record(times.inverse, 1, [&] { product.inverse(); });
        }
    }
    return times;
}

void print_row(upL_t n) {
    const bench::VSTProduct product(n, 2);
    const Times times = measure(product, n);
    const double one = bench::median(times.one), two = bench::median(times.two);
    const double ns_of_word = 1e9 / static_cast<double>(n);
    char peer[40] = " | ";
    if (!times.peer.empty()) {
        const double median = bench::median(times.peer);
        std::snprintf(peer, sizeof peer, "%.4g | %.2f", median * 1e3, median / one);
    }
    std::printf("| %s | %.3g | %.1f | %.1f | %.1f | %s | %.3g | %.2f | %.2f |\n",
                bench::with_commas(n).c_str(), one * 1e3, one * ns_of_word,
                bench::median(times.forward) * ns_of_word, bench::median(times.inverse) * ns_of_word, peer,
                two * 1e3, one / two, product.work_ratio(1));
    std::fflush(stdout);
}

void run(const std::vector<upL_t>& sizes) {
    std::puts(
        "| n | ms | ns a word | forward | inverse | GMP, ms | times faster | two threads, ms | speed-up | "
        "memory |");
    std::puts("| --- | --- | --- | --- | --- | --- | --- | --- | --- | --- |");
    for (const upL_t n : sizes) print_row(n);
}

}  // namespace
}  // namespace znp

int main(int argc, char** argv) {
    std::vector<znp::upL_t> sizes;
    for (int i = 1; i < argc; ++i) sizes.push_back(std::strtoull(argv[i], nullptr, 10));
    if (sizes.empty()) {
        sizes = {10'000,    20'000,    30'000,     50'000,     100'000,    300'000,
                 1'000'000, 3'000'000, 10'000'000, 30'000'000, 100'000'000};
    }
    znp::run(sizes);
    return 0;
}
