// The width of the vectors on which the kernels work. Images, tables and scratch are whole vectors, aligned
// to one.
//
// It belongs to a set of kernel files: one of another width brings its own form of this file, of
// vst_vector.hpp and of the *_kernel.cpp files.
#pragma once

#include "foundation/types.hpp"

namespace znp::vst {

inline constexpr upL_t vector_doubles = 4;
inline constexpr upL_t vector_bytes = vector_doubles * sizeof(double);

// Rounded up to whole vectors.
constexpr upL_t whole_vector_doubles(upL_t doubles) {
    return (doubles + vector_doubles - 1) / vector_doubles * vector_doubles;
}
constexpr upL_t whole_vector_bytes(upL_t bytes) {
    return (bytes + vector_bytes - 1) / vector_bytes * vector_bytes;
}

}  // namespace znp::vst
