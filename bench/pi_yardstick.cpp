// Yardstick of a whole computation: Pi to decimal digits with nothing but GMP, by the same series.
//
//     pi_yardstick DIGITS THREADS [FILE]
//
// Binary splitting of the Chudnovsky series, square root, division, scaling by a power of ten, text. Prints
// the seconds of the stages and the peak of resident memory; FILE receives the digits. bench/pi_run measures
// the program against it. Series: D. and G. Chudnovsky, 1988.
#include <gmp.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>

namespace {

constexpr unsigned long series_a = 13591409;
constexpr unsigned long series_b = 545140134;
constexpr unsigned long c_cubed_24 = 10939058860032000;  // 640320^3 / 24
constexpr double digits_per_term = 14.181647462725477;
constexpr double bits_per_digit = 3.3219280948873626;
constexpr unsigned long guard_bits = 128;

using Clock = std::chrono::steady_clock;

double seconds(Clock::time_point from, Clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

// The sum over terms [a, b): T / Q, and P, the factor that its right neighbour's sum takes.
struct Node {
    mpz_t P, Q, T;
    Node() { mpz_inits(P, Q, T, nullptr); }
    ~Node() { mpz_clears(P, Q, T, nullptr); }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
};

void set_term(Node& node, unsigned long k) {
    if (k == 0) {
        mpz_set_ui(node.P, 1);
        mpz_set_ui(node.Q, 1);
        mpz_set_ui(node.T, series_a);
        return;
    }
    mpz_set_ui(node.P, 6 * k - 5);
    mpz_mul_ui(node.P, node.P, 2 * k - 1);
    mpz_mul_ui(node.P, node.P, 6 * k - 1);
    mpz_set_ui(node.Q, k);
    mpz_mul_ui(node.Q, node.Q, k);
    mpz_mul_ui(node.Q, node.Q, k);
    mpz_mul_ui(node.Q, node.Q, c_cubed_24);
    mpz_set_ui(node.T, k);
    mpz_mul_ui(node.T, node.T, series_b);
    mpz_add_ui(node.T, node.T, series_a);
    mpz_mul(node.T, node.T, node.P);
    if (k % 2 != 0) mpz_neg(node.T, node.T);
}

void sum(Node& node, unsigned long a, unsigned long b, unsigned threads, bool needs_P) {
    if (b - a == 1) {
        set_term(node, a);
        return;
    }
    const unsigned long middle = a + (b - a) / 2;
    Node right;
    if (threads > 1) {
        std::thread other([&] { sum(right, middle, b, threads / 2, needs_P); });
        sum(node, a, middle, threads - threads / 2, true);
        other.join();
    } else {
        sum(node, a, middle, 1, true);
        sum(right, middle, b, 1, needs_P);
    }
    mpz_mul(node.T, node.T, right.Q);
    mpz_mul(right.T, right.T, node.P);
    mpz_add(node.T, node.T, right.T);
    mpz_mul(node.Q, node.Q, right.Q);
    if (needs_P) mpz_mul(node.P, node.P, right.P);
}

struct FreeText {
    void operator()(char* text) const {
        void (*release)(void*, std::size_t) = nullptr;
        mp_get_memory_functions(nullptr, nullptr, &release);
        release(text, std::char_traits<char>::length(text) + 1);
    }
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "pi_yardstick DIGITS THREADS [FILE]\n");
        return 1;
    }
    const unsigned long digits = std::strtoul(argv[1], nullptr, 10);
    const auto threads = static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10));
    const auto terms = static_cast<unsigned long>(static_cast<double>(digits) / digits_per_term) + 2;
    const auto bits = static_cast<unsigned long>(static_cast<double>(digits) * bits_per_digit) + guard_bits;

    // Pi = 426880 sqrt(10005) Q / T, in fixed point.
    const Clock::time_point start = Clock::now();
    mpz_t x;
    Clock::time_point series_end, root_end;
    {
        Node series;
        sum(series, 0, terms, threads, false);
        series_end = Clock::now();
        mpz_init_set_ui(x, 10005);
        mpz_mul_2exp(x, x, 2 * bits);
        mpz_sqrt(x, x);
        root_end = Clock::now();
        mpz_mul(x, x, series.Q);
        mpz_mul_ui(x, x, 426880);
        mpz_tdiv_q(x, x, series.T);
    }
    const Clock::time_point division_end = Clock::now();
    mpz_t power;
    mpz_init(power);
    mpz_ui_pow_ui(power, 10, digits);
    mpz_mul(x, x, power);
    mpz_clear(power);
    mpz_tdiv_q_2exp(x, x, bits);
    const std::unique_ptr<char, FreeText> text(mpz_get_str(nullptr, 10, x));
    const Clock::time_point end = Clock::now();
    mpz_clear(x);

    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    std::printf("series %.6f  root %.6f  division %.6f  conversion %.6f  total %.6f  peak %.1f MiB\n",
                seconds(start, series_end), seconds(series_end, root_end), seconds(root_end, division_end),
                seconds(division_end, end), seconds(start, end), static_cast<double>(usage.ru_maxrss) / 1024);
    if (argc > 3) {
        std::FILE* file = std::fopen(argv[3], "w");
        if (file == nullptr) return 1;
        std::fprintf(file, "%c.%s", text.get()[0], text.get() + 1);
        if (std::fclose(file) != 0) return 1;
    }
    return 0;
}
