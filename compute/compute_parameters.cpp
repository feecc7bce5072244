#include "compute/compute_parameters.hpp"

#include <algorithm>

#include "foundation/basic_file.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/memory.hpp"
#include "foundation/threads.hpp"
#include "multiply/table_holder.hpp"

namespace znp {
namespace {

constexpr double log16_of_10 = 0.8304820237218407;
constexpr upL_t guard_words = 100;  // by which the longest operands exceed the precision, at most
constexpr u64_t bits_per_word = WordTraits<c64i>::bits;

}  // namespace

u64_t hex_digits_for(u64_t decimal_digits) {
    return static_cast<u64_t>(log16_of_10 * static_cast<double>(decimal_digits)) + 1;
}

u64_t decimal_digits_for(u64_t hex_digits) {
    const double digits = static_cast<double>(hex_digits) / log16_of_10;
    if (digits >= 18446744073709551616.0) return ~u64_t{0};
    return static_cast<u64_t>(digits);
}

upL_t precision_for(u64_t hex_digits) {
    return hex_digits / 16 + 2;
}

ComputeParameters::ComputeParameters()
    : id(constant_id::pi),
      param(2),
      algorithm(0),
      mode(ComputeMode::ram_only),
      p(precision_for(hex_digits_for(default_digits))),
      dec(default_digits),
      hex(hex_digits_for(default_digits)),
      digits_per_file(0),
      tds(1),
      minIO(SwapConfiguration::default_min_io),
      memory_limit(physical_memory() / 32 * 31) {
    set_constant(id, param);
    set_threads(logical_cores());
}

void ComputeParameters::set_constant(u32_t new_id, u64_t new_param) {
    constant = make_constant(new_id, new_param, p);
    if (algorithm >= constant->algorithm_count()) algorithm = 0;
    id = new_id;
    param = new_param;
    if (dec > constant->get_max_digits()) set_dec(constant->get_max_digits());
    if (!constant->knows_algorithm(algorithm, p)) mode = ComputeMode::ram_only;
    update_estimates();
}

const char* ComputeParameters::choose_constant(u64_t new_id, u64_t new_param) {
    if (const char* refusal = check_constant(new_id, new_param)) return refusal;
    set_constant(static_cast<u32_t>(new_id), new_param);
    return nullptr;
}

const char* ComputeParameters::set_algorithm(u64_t number) {
    if (number >= static_cast<u64_t>(constant->algorithm_count())) return "Invalid Algorithm";
    algorithm = static_cast<s32_t>(number);
    if (!constant->knows_algorithm(algorithm, p)) mode = ComputeMode::ram_only;
    update_estimates();
    return nullptr;
}

const char* ComputeParameters::set_dec(u64_t digits) {
    return set_digits(digits, hex_digits_for(digits));
}

const char* ComputeParameters::set_hex(u64_t digits) {
    if (digits == 0) {
        hex = 0;
        return nullptr;
    }
    return set_digits(decimal_digits_for(digits), digits);
}

const char* ComputeParameters::set_digits(u64_t new_dec, u64_t new_hex) {
    const upL_t new_p = precision_for(new_hex);
    if (new_dec < min_digits || new_p < min_precision || new_dec > constant->get_max_digits()) {
        return "# of digits is out of range";
    }
    dec = new_dec;
    hex = new_hex;
    p = new_p;
    constant->set_precision(p);
    if (dec < min_digits_keep_swap_mode) mode = ComputeMode::ram_only;
    if (too_few_digits_to_compress()) digits_per_file = 0;
    update_estimates();
    return nullptr;
}

bool ComputeParameters::too_few_digits_to_compress() const {
    return dec < min_digits_to_compress || (hex != 0 && hex < min_digits_to_compress);
}

void ComputeParameters::set_threads(u64_t threads) {
    tds = static_cast<u32_t>(std::clamp<u64_t>(threads, 1, max_threads));
    update_estimates();
}

const char* ComputeParameters::set_path(const std::wstring& folder) {
    if (path_is_writable(folder) != 0) return unable_to_write_text;
    path = folder;
    return nullptr;
}

const char* ComputeParameters::set_digits_per_file(u64_t digits) {
    if (digits != 0) {
        if (too_few_digits_to_compress()) return "Too few digits to compress.";
        if (digits < min_digits_per_file) return "Too few digits per file.";
    }
    digits_per_file = digits;
    return nullptr;
}

const char* ComputeParameters::set_mode(u64_t number) {
    constexpr const char* invalid_mode_text = "Invalid Mode";
    if (number > static_cast<u64_t>(ComputeMode::swap)) return invalid_mode_text;
    const ComputeMode new_mode = static_cast<ComputeMode>(number);
    if (new_mode == ComputeMode::swap) {
        if (dec < min_digits_swap_mode) return "Too few digits for swap mode.";
        if (!constant->knows_algorithm(algorithm, p)) return invalid_mode_text;
    }
    mode = new_mode;
    update_estimates();
    return nullptr;
}

void ComputeParameters::set_memory_limit(u64_t bytes) {
    memory_limit = bytes;
    ML = below_memory_limit();
    update_estimates();
}

void ComputeParameters::set_min_io(u64_t bytes) {
    minIO = bytes;
    swap.set_min_io(bytes);
    update_estimates();
}

u64_t ComputeParameters::longest_product_bits() const {
    return (p + guard_words) * 2 * bits_per_word;
}

void ComputeParameters::update_estimates() {
    update_memory();
    if (mode == ComputeMode::swap) {
        fit_memory_limit();
        update_memory();
    }
}

// A size that the multipliers do not reach, or not in this version, leaves no estimate: the reason is kept
// for whoever wants to run the record, since it may still change.
void ComputeParameters::update_memory() {
    estimate_refusal.clear();
    try {
        memTW = table_size(longest_product_bits());
        if (mode == ComputeMode::swap) {
            estimate_swap();
        } else {
            estimate_ram_only();
        }
    } catch (const zn_exception& exception) {
        estimate_refusal =
            exception.text.empty() && exception.message != nullptr ? exception.message : exception.text;
        memTW = memIO = ML = Msize = Fsize = 0;
    }
    Osize = memIO + memTW;
}

void ComputeParameters::estimate_ram_only() {
    memIO = Fsize = 0;
    upL_t bytes = 0;
    constant->get_memory_B(algorithm, p, dec, tds, bytes);
    ML = Msize = bytes;
}

void ComputeParameters::estimate_swap() {
    memIO = swap.raid.total_buffer;
    Msize = Fsize = 0;
    if (constant->runs_S(algorithm)) {
        constant->get_memory_S(algorithm, p, dec, ML, minIO, tds, Fsize, Msize);
        u64_t least_disk = 0;
        constant->get_memory_S(algorithm, p, dec, 0, minIO, tds, least_disk, Msize);
    }
    ML = std::max(ML, Msize);
}

void ComputeParameters::fit_memory_limit() {
    ML = std::max(below_memory_limit(), Msize);
}

u64_t ComputeParameters::below_memory_limit() const {
    const u64_t outside = memIO + memTW;
    return memory_limit > outside ? memory_limit - outside : 0;
}

}  // namespace znp
