#include "multiply/fft/fft_inverse_steps.hpp"
#include "multiply/fft/fft_kernels.hpp"

namespace znp::fft {

void inverse_tree(double* image, const double* B, upL_t N, unsigned C, const FFTTables& tables) {
    inverse_tree(image, B, N, C, tables, Unwatched{});
}

}  // namespace znp::fft
