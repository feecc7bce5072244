#include "compute/settings/compute_parameters.hpp"

#include <algorithm>

#include "foundation/basic_file.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/memory.hpp"
#include "foundation/threads.hpp"
#include "multiply/table_holder.hpp"

namespace znp {

ComputeParameters::ComputeParameters()
    : hex_(hex_digits_for(dec_)), p_(precision_for(hex_)), memory_limit_(physical_memory() / 32 * 31) {
    set_constant(id_, param_);
    set_threads(logical_cores());
}

void ComputeParameters::set_constant(u32_t new_id, u64_t new_param) {
    constant_ = make_constant(new_id, new_param, p_);
    if (algorithm_ >= constant_->algorithm_count()) algorithm_ = 0;
    id_ = new_id;
    param_ = new_param;
    if (dec_ > constant_->get_max_digits()) set_dec(constant_->get_max_digits());
    if (!constant_->knows_algorithm(algorithm_, p_)) mode_ = ComputeMode::ram_only;
    update_estimates();
}

const char* ComputeParameters::choose_constant(u64_t new_id, u64_t new_param) {
    if (const char* refusal = check_constant(new_id, new_param)) return refusal;
    set_constant(static_cast<u32_t>(new_id), new_param);
    return nullptr;
}

const char* ComputeParameters::set_algorithm(u64_t number) {
    if (number >= static_cast<u64_t>(constant_->algorithm_count())) return "Invalid Algorithm";
    algorithm_ = static_cast<s32_t>(number);
    if (!constant_->knows_algorithm(algorithm_, p_)) mode_ = ComputeMode::ram_only;
    update_estimates();
    return nullptr;
}

const char* ComputeParameters::set_dec(u64_t digits) {
    return set_digits(digits, hex_digits_for(digits));
}

const char* ComputeParameters::set_hex(u64_t digits) {
    if (digits == 0) {
        hex_ = 0;
        return nullptr;
    }
    return set_digits(decimal_digits_for(digits), digits);
}

const char* ComputeParameters::set_digits(u64_t new_dec, u64_t new_hex) {
    const upL_t new_p = precision_for(new_hex);
    if (new_dec < min_digits || new_p < min_precision || new_dec > constant_->get_max_digits()) {
        return "# of digits is out of range";
    }
    dec_ = new_dec;
    hex_ = new_hex;
    p_ = new_p;
    constant_->set_precision(p_);
    if (dec_ < min_digits_keep_swap_mode) mode_ = ComputeMode::ram_only;
    if (too_few_digits_to_compress()) digits_per_file_ = 0;
    update_estimates();
    return nullptr;
}

bool ComputeParameters::too_few_digits_to_compress() const {
    return dec_ < min_digits_to_compress || (hex_ != 0 && hex_ < min_digits_to_compress);
}

void ComputeParameters::set_threads(u64_t threads) {
    tds_ = static_cast<u32_t>(std::clamp<u64_t>(threads, 1, max_threads));
    update_estimates();
}

const char* ComputeParameters::set_path(const std::wstring& folder) {
    if (path_is_writable(folder) != 0) return unable_to_write_text;
    path_ = folder;
    return nullptr;
}

const char* ComputeParameters::set_digits_per_file(u64_t digits) {
    if (digits != 0) {
        if (too_few_digits_to_compress()) return "Too few digits to compress.";
        if (digits < min_digits_per_file) return "Too few digits per file.";
    }
    digits_per_file_ = digits;
    return nullptr;
}

const char* ComputeParameters::set_mode(u64_t number) {
    constexpr const char* invalid_mode_text = "Invalid Mode";
    if (number > static_cast<u64_t>(ComputeMode::swap)) return invalid_mode_text;
    const ComputeMode new_mode = static_cast<ComputeMode>(number);
    if (new_mode == ComputeMode::swap) {
        if (dec_ < min_digits_swap_mode) return "Too few digits for swap mode.";
        if (!constant_->knows_algorithm(algorithm_, p_)) return invalid_mode_text;
    }
    mode_ = new_mode;
    update_estimates();
    return nullptr;
}

void ComputeParameters::set_memory_limit(u64_t bytes) {
    memory_limit_ = bytes;
    ML_ = below_memory_limit(Osize());
    update_estimates();
}

void ComputeParameters::set_min_io(u64_t bytes) {
    minIO_ = bytes;
    swap_.set_min_io(bytes);
    update_estimates();
}

u64_t ComputeParameters::longest_product_bits() const {
    return longest_product(p_) * WordTraits<cdi>::bits;
}

void ComputeParameters::update_estimates() {
    update_memory();
    if (mode_ == ComputeMode::swap) {
        fit_memory_limit();
        update_memory();
    }
}

// A size that the multipliers do not reach, or not in this version, leaves no estimate: the reason is kept
// for whoever wants to run the record, since it may still change.
void ComputeParameters::update_memory() {
    estimate_refusal_.clear();
    try {
        memTW_ = table_size(longest_product_bits());
        if (mode_ == ComputeMode::swap) {
            estimate_swap();
        } else {
            estimate_ram_only();
        }
    } catch (const zn_exception& exception) {
        estimate_refusal_ =
            exception.text.empty() && exception.message != nullptr ? exception.message : exception.text;
        memTW_ = memIO_ = ML_ = Msize_ = Fsize_ = 0;
    }
}

void ComputeParameters::estimate_ram_only() {
    memIO_ = Fsize_ = 0;
    ML_ = Msize_ = memory_of_ram_only();
}

void ComputeParameters::estimate_swap() {
    memIO_ = swap_.raid.total_buffer;
    const SwapNeeds needs = needs_of_swap(ML_);
    Msize_ = needs.memory;
    Fsize_ = needs.disk;
    ML_ = std::max(ML_, Msize_);
}

u64_t ComputeParameters::memory_of_ram_only() const {
    upL_t bytes = 0;
    constant_->get_memory_B(algorithm_, p_, dec_, tds_, bytes);
    return bytes;
}

ComputeParameters::SwapNeeds ComputeParameters::needs_of_swap(u64_t ML) const {
    SwapNeeds needs;
    if (!constant_->runs_S(algorithm_)) return needs;
    constant_->get_memory_S(algorithm_, p_, dec_, ML, minIO_, tds_, needs.disk, needs.memory);
    u64_t least_disk = 0;
    constant_->get_memory_S(algorithm_, p_, dec_, 0, minIO_, tds_, least_disk, needs.memory);
    return needs;
}

std::optional<ComputeParameters::Cost> ComputeParameters::cost_in(ComputeMode mode) const {
    const bool swap = mode == ComputeMode::swap;
    if (swap && !constant_->runs_S(algorithm_)) return std::nullopt;
    try {
        const u64_t tables = table_size(longest_product_bits());
        if (!swap) return Cost{tables + memory_of_ram_only(), 0};
        const u64_t outside = tables + swap_.raid.total_buffer;
        const u64_t ML = below_memory_limit(outside);
        const SwapNeeds needs = needs_of_swap(std::max(ML, needs_of_swap(ML).memory));
        return Cost{outside + needs.memory, needs.disk};
    } catch (const zn_exception&) {
        return std::nullopt;
    }
}

void ComputeParameters::fit_memory_limit() {
    ML_ = std::max(below_memory_limit(Osize()), Msize_);
}

u64_t ComputeParameters::below_memory_limit(u64_t outside) const {
    return memory_limit_ > outside ? memory_limit_ - outside : 0;
}

}  // namespace znp
