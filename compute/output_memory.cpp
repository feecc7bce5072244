// What the output stages take from the run's heap.
#include <algorithm>

#include "compute/digit_output.hpp"
#include "compute/stages.hpp"
#include "foundation/fail.hpp"
#include "foundation/heap_words.hpp"
#include "multiply/kernels/digit_conversion.hpp"

namespace znp {

upL_t heap_bytes(upL_t bytes) {
    constexpr upL_t alignment = 32;
    constexpr upL_t guarded_overhead = 40;  // five words around the payload
    constexpr upL_t table_entry = 16;
    return round_up_to_word(bytes) + alignment + guarded_overhead + table_entry;
}

upL_t write_hex_bytes(u64_t hex) {
    return hex == 0 ? 0 : heap_bytes(CVN::hexadecimal_digits * hexadecimal_words(hex));
}

// Work buffer and digits come one after the other beside the decimal words, the verification alone.
upL_t conversion_bytes(u64_t dec, u64_t threads) {
    const upL_t w = decimal_words(dec);
    const upL_t work = conversion_work_bytes(w, threads);
    const upL_t digits = CVN::decimal_digits * w;
    return std::max(heap_bytes(sizeof(cdi) * w) + heap_bytes(std::max(work, digits)),
                    heap_bytes(verification_work_bytes(dec, threads)));
}

upL_t conversion_work_bytes(upL_t w, u64_t threads) {
    const upL_t bytes = cbr_table_size(CVN::decimal_base, w, threads);
    if (bytes == ~upL_t{0}) fail(zn_exception(error_code::size_beyond_tables));
    return bytes;
}

upL_t verification_work_bytes(u64_t dec, u64_t threads) {
    return power_check_size(10, dec, threads);
}

}  // namespace znp
