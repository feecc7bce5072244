#include "numbers/basic_int.hpp"

#include <utility>

#include "foundation/fail.hpp"
#include "foundation/fatal.hpp"
#include "multiply/bkt/basecase.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/kernels/word_arrays.hpp"

namespace znp {

// ---- BasicInt

void BasicInt::set_L(upL_t L_) {
    L = L_;
    rehash();
}

void BasicInt::set_LN(upL_t L_) {
    set_L(normalised_length(T, L_));
}

void BasicInt::rehash() {
    hash = residue::hash_words(T, L);
}

u64_t BasicInt::hash_error() const {
    return residue::sub(hash, residue::hash_words(T, L));
}

// ---- BasicIntR

void BasicIntR::set(upL_t offset, const BasicIntR& parent) {
    *this = BasicIntR(parent.T + offset, parent.size - offset);
}

void BasicIntR::check_size(const char* location, upL_t required) const {
    require_words(location, size, required);
}

void BasicIntR::set_uW(cdi x) {
    T[0] = x;
    set_L(1);
}

void BasicIntR::set_bui(const BasicInt& src) {
    check_size("BasicInt::set_bui()", src.get_L());
    std::copy_n(src.get_T(), src.get_L(), T);
    L = src.get_L();
    hash = src.get_hash();
}

void BasicIntR::set_mulB(const BasicInt& a, const BasicInt& b) {
    const upL_t n = a.get_L() + b.get_L();
    check_size("BasicIntR::set_mulB()", n);
    bkt::mulB(T, a.get_T(), a.get_L(), b.get_T(), b.get_L());
    L = product_length(T, n);
    hash = residue::mul(a.get_hash(), b.get_hash());
}

BasicIntR& BasicIntR::operator+=(const BasicInt& b) {
    const upL_t Lb = b.get_L();
    check_size("BasicIntR::operator+=()", L);
    if (Lb > L) assert_failure(fatal_category::invalid_parameters, L"BasicIntR::operator+=()", L"");

    bool carry = add_words(T, T, b.get_T(), Lb);
    carry = copy_add_carry(T + Lb, T + Lb, L - Lb, carry);
    if (carry) {
        check_size("BasicIntR::operator+=()", L + 1);
        T[L++] = 1;
    }
    hash = residue::add(hash, b.get_hash());
    return *this;
}

BasicIntR& BasicIntR::operator-=(const BasicInt& b) {
    constexpr const char* location = "BasicIntR::operator-=()";
    const upL_t Lb = b.get_L();
    check_size(location, L);
    if (Lb > L) fail(UnsupportedValueException::negative(location));

    const bool borrow = sub_words(T, T, b.get_T(), Lb);
    if (copy_sub_borrow(T + Lb, T + Lb, L - Lb, borrow)) fail(UnsupportedValueException::negative(location));
    L = normalised_length(T, L);
    if (L == 0) fail(UnsupportedValueException::zero(location));
    hash = residue::sub(hash, b.get_hash());
    return *this;
}

// ---- BasicIntO

void BasicIntO::add(const BasicInt& a, const BasicInt& b) {
    const bool a_longer = a.get_L() >= b.get_L();
    const BasicInt& x = a_longer ? a : b;
    const BasicInt& y = a_longer ? b : a;
    const upL_t Lx = x.get_L();
    const upL_t Ly = y.get_L();

    BasicIntO sum(heap_, Lx + 2);
    bool carry = add_words(sum.T, x.get_T(), y.get_T(), Ly);
    carry = copy_add_carry(sum.T + Ly, x.get_T() + Ly, Lx - Ly, carry);
    if (carry) sum.T[Lx] = 1;
    sum.L = Lx + (carry ? 1 : 0);
    sum.hash = residue::add(x.get_hash(), y.get_hash());
    *this = std::move(sum);
}

void BasicIntO::sub(const BasicInt& a, const BasicInt& b) {
    constexpr const char* location = "BasicIntO::sub()";
    const upL_t La = a.get_L();
    const upL_t Lb = b.get_L();
    if (La < Lb) fail(UnsupportedValueException::negative(location));

    BasicIntO difference(heap_, La + 2);
    bool borrow = sub_words(difference.T, a.get_T(), b.get_T(), Lb);
    borrow = copy_sub_borrow(difference.T + Lb, a.get_T() + Lb, La - Lb, borrow);
    if (borrow) fail(UnsupportedValueException::negative(location));
    difference.L = normalised_length(difference.T, La);
    if (difference.L == 0) fail(UnsupportedValueException::zero(location));
    difference.hash = residue::sub(a.get_hash(), b.get_hash());
    *this = std::move(difference);
}

void BasicIntO::mulB(const BasicInt& a, const BasicInt& b) {
    BasicIntO product(heap_, a.get_L() + b.get_L() + 2);
    product.set_mulB(a, b);
    *this = std::move(product);
}

BasicIntO& BasicIntO::operator+=(const BasicInt& b) {
    add(*this, b);
    return *this;
}

BasicIntO& BasicIntO::operator-=(const BasicInt& b) {
    sub(*this, b);
    return *this;
}

}  // namespace znp
