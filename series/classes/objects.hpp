// Objects of nodes: their buffers, how an end routine in integers fills them, what a left half leaves of
// them.
#pragma once

#include <algorithm>

#include "foundation/fail.hpp"
#include "numbers/basic_int.hpp"
#include "numbers/big_float.hpp"
#include "numbers/exact_float.hpp"

namespace znp {

inline BigFloat as_float(const ExactFloat& x) {
    return BigFloat(x.get_T(), x.get_L(), x.get_exp(), true, x.get_guard());
}
inline BigFloat as_float(const BigFloat& x) {
    return x;
}

// The whole buffer of an object, for a float.
inline BigFloatR as_buffer(const auto& x) {
    return BigFloatR(x.get_base(), x.get_size());
}

// A number of an end routine lies where the node's object has to be.
inline BasicIntR end_object(const auto& x) {
    return BasicIntR(x.get_base(), x.get_size());
}
inline void adopt(ExactFloatR& x, const BasicIntR& value) {
    x.reset_T();
    x.set_LN(value.get_L(), 0, value.get_hash());
}

// In floats the residue is that of the words, which have to be the integer's.
inline void adopt(BigFloatR& x, const BasicIntR& value) {
    x.set_words(value.get_L(), 0, true);
    if (value.hash_error() != 0) fail(ArithmeticFailure(error_code::numerical_result));
}

// Words of the longest of the results: behind so many each has room for the right half's.
template <class... Numbers>
upL_t longest_of(const Numbers&... results) {
    return std::max({results.get_L()...});
}

inline ExactFloatR rest_of(const ExactFloatR& x, upL_t offset) {
    ExactFloatR rest;
    rest.set_rest_of(offset, x);
    return rest;
}
inline BigFloatR rest_of(const BigFloatR& x, upL_t offset) {
    const upL_t used = static_cast<upL_t>(x.get_T() - x.get_base()) + offset;
    return BigFloatR(x.get_base() + used, x.get_size() - used);
}

}  // namespace znp
