#include "multiply/fft/fft_forward_steps.hpp"
#include "multiply/fft/fft_inverse_steps.hpp"
#include "multiply/fft_watched_trees.hpp"

namespace znp::fft::testing {

namespace {

struct Watch {
    Fault* fault;

    void operator()() const { fault->step(); }
};

}  // namespace

void forward_tree(double* image, upL_t N, unsigned C, const FFTTables& tables, Fault& fault) {
    fft::forward_tree(image, N, C, tables, Watch{&fault});
}

void inverse_tree(double* image, const double* B, upL_t N, unsigned C, const FFTTables& tables,
                  Fault& fault) {
    fft::inverse_tree(image, B, N, C, tables, Watch{&fault});
}

}  // namespace znp::fft::testing
