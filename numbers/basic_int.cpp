#include "numbers/basic_int.hpp"

#include <utility>

#include "foundation/fail.hpp"
#include "foundation/fatal.hpp"
#include "foundation/guarded_alloc.hpp"
#include "multiply/bkt/basecase.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/kernels/word_arrays.hpp"

namespace znp {

// ---- BasicInt

template <class word>
void BasicInt<word>::set_L(upL_t L_) {
    L = L_;
    rehash();
}

template <class word>
void BasicInt<word>::set_LN(upL_t L_) {
    set_L(normalised_length(T, L_));
}

template <class word>
void BasicInt<word>::rehash() {
    hash = residue::hash_words(T, L);
}

template <class word>
u64_t BasicInt<word>::hash_error() const {
    return residue::sub(hash, residue::hash_words(T, L));
}

// ---- BasicIntR

template <class word>
void BasicIntR<word>::set(upL_t offset, const BasicIntR& parent) {
    *this = BasicIntR(parent.T + offset, parent.size - offset);
}

template <class word>
void BasicIntR<word>::check_size(const char* location, upL_t required) const {
    if (size < required) fail(BufferTooSmallException(location, size, required));
}

template <class word>
void BasicIntR<word>::set_uW(word x) {
    T[0] = x;
    this->set_L(1);
}

template <class word>
void BasicIntR<word>::set_bui(const BasicInt<word>& src) {
    check_size("BasicInt::set_bui()", src.get_L());
    std::copy_n(src.get_T(), src.get_L(), T);
    L = src.get_L();
    hash = src.get_hash();
}

template <class word>
void BasicIntR<word>::set_mulB(const BasicInt<word>& a, const BasicInt<word>& b) {
    const upL_t n = a.get_L() + b.get_L();
    check_size("BasicIntR::set_mulB()", n);
    bkt::mulB(T, a.get_T(), a.get_L(), b.get_T(), b.get_L());
    L = n - (T[n - 1] == 0 ? 1 : 0);
    hash = residue::mul(a.get_hash(), b.get_hash());
}

template <class word>
BasicIntR<word>& BasicIntR<word>::operator+=(const BasicInt<word>& b) {
    const upL_t Lb = b.get_L();
    check_size("BasicIntR::operator+=()", L);
    if (Lb > L) assert_failure(fatal_category::invalid_parameters, L"BasicIntR::operator+=()", L"");

    T[L] = 0;
    const bool carry = add_words(T, T, b.get_T(), Lb);
    copy_add_carry(T + Lb, T + Lb, L + 1 - Lb, carry);
    if (T[L] != 0) ++L;
    hash = residue::add(hash, b.get_hash());
    return *this;
}

template <class word>
BasicIntR<word>& BasicIntR<word>::operator-=(const BasicInt<word>& b) {
    constexpr const char* location = "BasicIntR::operator-=()";
    const upL_t Lb = b.get_L();
    check_size(location, L);
    if (Lb > L) fail(UnsupportedValueException::negative(location));

    T[L] = 1;
    const bool borrow = sub_words(T, T, b.get_T(), Lb);
    copy_sub_borrow(T + Lb, T + Lb, L + 1 - Lb, borrow);
    if (T[L] == 0) fail(UnsupportedValueException::negative(location));
    L = normalised_length(T, L);
    if (L == 0) fail(UnsupportedValueException::zero(location));
    hash = residue::sub(hash, b.get_hash());
    return *this;
}

// ---- BasicIntO

template <class word>
BasicIntO<word>::BasicIntO(BasicHeap* heap, upL_t size_)
    : owned_(static_cast<word*>(guarded_alloc(heap, size_ * sizeof(word), 32))), heap_(heap) {
    T = owned_;
    size = size_;
}

template <class word>
BasicIntO<word>::BasicIntO(BasicIntO&& other) noexcept
    : BasicIntR<word>(std::exchange(static_cast<BasicIntR<word>&>(other), {})),
      owned_(std::exchange(other.owned_, nullptr)),
      heap_(other.heap_) {}

template <class word>
BasicIntO<word>& BasicIntO<word>::operator=(BasicIntO&& other) noexcept {
    if (this == &other) return *this;
    guarded_free(owned_);
    BasicIntR<word>::operator=(std::exchange(static_cast<BasicIntR<word>&>(other), {}));
    owned_ = std::exchange(other.owned_, nullptr);
    heap_ = other.heap_;
    return *this;
}

template <class word>
BasicIntO<word>::~BasicIntO() {
    guarded_free(owned_);
}

template <class word>
void BasicIntO<word>::add(const BasicInt<word>& a, const BasicInt<word>& b) {
    const bool a_longer = a.get_L() >= b.get_L();
    const BasicInt<word>& x = a_longer ? a : b;
    const BasicInt<word>& y = a_longer ? b : a;
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

template <class word>
void BasicIntO<word>::sub(const BasicInt<word>& a, const BasicInt<word>& b) {
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

template <class word>
void BasicIntO<word>::mulB(const BasicInt<word>& a, const BasicInt<word>& b) {
    BasicIntO product(heap_, a.get_L() + b.get_L() + 2);
    product.set_mulB(a, b);
    *this = std::move(product);
}

template <class word>
BasicIntO<word>& BasicIntO<word>::operator+=(const BasicInt<word>& b) {
    add(*this, b);
    return *this;
}

template <class word>
BasicIntO<word>& BasicIntO<word>::operator-=(const BasicInt<word>& b) {
    sub(*this, b);
    return *this;
}

template class BasicInt<c32i>;
template class BasicInt<c64i>;
template class BasicIntR<c32i>;
template class BasicIntR<c64i>;
template class BasicIntO<c32i>;
template class BasicIntO<c64i>;

}  // namespace znp
