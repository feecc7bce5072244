// BasicParameters: what travels with every call of in-memory arithmetic.
#pragma once

#include "foundation/types.hpp"

namespace znp {

struct TableHolder;

// Parts of a work buffer begin at multiples of this.
inline constexpr upL_t work_alignment = 32;
constexpr upL_t work_aligned(upL_t bytes) {
    return (bytes + (work_alignment - 1)) & ~(work_alignment - 1);
}

// Owns nothing. The caller of an operation owns the work buffer, whose size a query promised beforehand; a
// buffer that turns out too small is a fault of the memory plan and throws. The holder's tables are
// read-only.
struct BasicParameters {
    const TableHolder* holder = nullptr;  // twiddle tables; not needed by BKT
    std::byte* M = nullptr;               // work buffer, aligned to 32 bytes
    upL_t ML = 0;                         // its size in bytes
    u64_t tds = 1;                        // threads that the operation may use
};

[[noreturn]] void work_space_too_small(const char* location);

// A work buffer below so many bytes: the generic exception, code work_space_too_small.
inline void require_work(const BasicParameters& bp, upL_t bytes, const char* location) {
    if (bp.ML < bytes) work_space_too_small(location);
}

}  // namespace znp
