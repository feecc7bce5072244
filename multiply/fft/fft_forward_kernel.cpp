#include "multiply/fft/fft_forward_steps.hpp"
#include "multiply/fft/fft_kernels.hpp"

namespace znp::fft {

void forward_tree(double* image, upL_t N, unsigned C, const FFTTables& tables) {
    forward_tree(image, N, C, tables, Unwatched{});
}

}  // namespace znp::fft
