#include "numbers/product_chain.hpp"

#include <algorithm>
#include <array>
#include <optional>

#include "foundation/fail.hpp"
#include "foundation/repeat_once.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "numbers/transform_helper.hpp"

namespace znp {

namespace {

template <class Product, class Number>
bool enters(const Number& operand, const Product& x) {
    return &x.a == &operand || &x.b == &operand;
}

template <class Product>
bool is_square(const Product& x) {
    return &x.a == &x.b;
}

template <class Product>
bool is_plain(std::span<const Product> chain) {
    return chain.size() == 1 && chain[0].addend == nullptr;
}

// ---- Exact numbers

// x += t for a t that may reach above x.
void add_longer(ExactFloatR& x, const ExactFloat& t) {
    const upL_t L = static_cast<upL_t>(t.get_mag() - x.get_exp());
    const upL_t offset = static_cast<upL_t>(x.get_T() - x.get_base());
    if (offset + L + 1 > x.get_size()) {
        fail(BufferTooSmallException("ExactFloatR::operator+=()", x.get_size(), offset + L + 1));
    }
    cdi* T = x.word_ptr(0);
    std::fill(T + x.get_L(), T + L + 1, cdi{0});
    cdi* at = T + (t.get_exp() - x.get_exp());
    T[L] = add_words(at, at, t.get_T(), t.get_L()) ? 1 : 0;
    x.set_sum(L + 1, t);
}

// x +- t in place; x reaches at least as low as t.
void accumulate(ExactFloatR& x, const ExactFloat& t, bool subtract) {
    if (subtract) {
        x -= t;
    } else if (t.get_mag() > x.get_mag()) {
        add_longer(x, t);
    } else {
        x += t;
    }
}

struct ExactKind {
    using Number = ExactFloat;
    using Product = ExactProduct;
    using Chain = std::span<const Product>;
    using Transform = ExactFloat::Transform;

    static upL_t length(Chain, const Product& x) { return x.a.get_L() + x.b.get_L(); }

    static void alone(const BasicParameters& bp, const Product& x) { x.out.set_mul(bp, x.a, x.b); }

    static Transform forward(Chain, const Number& x, const TransformHelper& helper, Image* image) {
        return Transform(x, helper.algorithm, image, helper.scratch);
    }

    static void inverse(const Product& x, TransformScratch* scratch, Transform& A, const Transform& B) {
        if (x.addend == nullptr) return x.out.set_inverse_fmul(scratch, A, B);
        x.out.set_inverse_fmul(scratch, A, B, x.addend->get_exp());
        accumulate(x.out, *x.addend, x.subtract);
    }

    static void inverse_square(const Product& x, TransformScratch* scratch, Transform& A) {
        x.out.set_inverse_fsqr(scratch, A);
    }
};

// ---- Truncated numbers

struct TruncatedKind {
    using Number = BigFloat;
    using Product = TruncatedProduct;
    using Chain = std::span<const Product>;
    using Transform = BigFloat::Transform;

    static upL_t words(Chain chain, const Number& x) {
        upL_t p = 0;
        for (const Product& product : chain) {
            if (enters(x, product)) p = std::max(p, product.p);
        }
        return p;
    }

    static upL_t length(Chain chain, const Product& x) {
        return x.a.kept_words(words(chain, x.a)) + x.b.kept_words(words(chain, x.b)) + transform_slack;
    }

    static void alone(const BasicParameters& bp, const Product& x) {
        x.out.set_mul(bp, x.a.top_words(x.p, bp.tds), x.b.top_words(x.p, bp.tds), x.p);
    }

    static Transform forward(Chain chain, const Number& x, const TransformHelper& helper, Image* image) {
        return Transform(x, helper.algorithm, image, helper.scratch, words(chain, x));
    }

    static void inverse(const Product& x, TransformScratch* scratch, Transform& A, const Transform& B) {
        BigFloatR& product = x.addend == nullptr ? x.out : *x.product;
        product.set_inverse_fmul(scratch, A, B, A.mag + B.mag, x.p);
        if (x.addend == nullptr) return;
        if (x.subtract) {
            x.out.set_sub(product, *x.addend, x.p);
        } else {
            x.out.set_add(product, *x.addend, x.p);
        }
    }

    static void inverse_square(const Product& x, TransformScratch* scratch, Transform& A) {
        x.out.set_inverse_fsqr(scratch, A, 2 * A.mag, x.p);
    }
};

// ---- The chain, on transforms that are given

// The two images of a transform, and whose they are.
template <class Kind>
class Images {
  public:
    using Number = typename Kind::Number;
    using Product = typename Kind::Product;
    using Chain = typename Kind::Chain;

    Images(const BasicParameters& bp, const transform& algorithm)
        : helper_(bp, algorithm), images_{{{helper_.T1}, {helper_.T2}}} {}

    // Product i of the chain. One that fails its check is made once more from new images.
    void multiply(Chain chain, upL_t i) {
        repeat_once([&] { try_product(chain, i); },
                    [&] {
                        for (Kept& image : images_) image.operand = nullptr;
                        return chain[i].a.hash_error() == 0 && chain[i].b.hash_error() == 0;
                    });
    }

  private:
    // Of its images the one that the next product needs stays.
    void try_product(Chain chain, upL_t i) {
        const Product& x = chain[i];
        const Product* const next = i + 1 < chain.size() ? &chain[i + 1] : nullptr;
        if (is_square(x)) {
            Kept& A = image_of(chain, x.a, x.a);
            Kind::inverse_square(x, helper_.scratch, *A.transformed);
            A.operand = nullptr;
            return;
        }
        const bool a_stays = next != nullptr && enters(x.a, *next);
        const Number& stays = a_stays ? x.a : x.b;
        const Number& goes = a_stays ? x.b : x.a;
        Kept& A = image_of(chain, goes, stays);
        Kept& B = image_of(chain, stays, goes);
        Kind::inverse(x, helper_.scratch, *A.transformed, *B.transformed);
        A.operand = nullptr;
        if (next == nullptr || !enters(stays, *next)) B.operand = nullptr;
    }

    struct Kept {
        Image* place;
        const Number* operand = nullptr;
        std::optional<typename Kind::Transform> transformed{};
    };

    // The image of x: the one that is there, or a new one in a place that `other` does not have.
    Kept& image_of(Chain chain, const Number& x, const Number& other) {
        for (Kept& image : images_) {
            if (image.operand == &x) return image;
        }
        Kept& image = images_[images_[0].operand == &other ? 1 : 0];
        image.transformed.emplace(Kind::forward(chain, x, helper_, image.place));
        image.operand = &x;
        return image;
    }

    TransformHelper helper_;
    std::array<Kept, 2> images_;
};

template <class Kind>
void multiply_by(const BasicParameters& bp, typename Kind::Chain chain,
                 std::span<const transform* const> transforms) {
    std::optional<Images<Kind>> images;
    for (upL_t i = 0; i < chain.size(); i++) {
        const bool shared =
            i != 0 && (transforms[i] == transforms[i - 1] || transforms[i]->equals(*transforms[i - 1]));
        if (!shared) images.emplace(bp, *transforms[i]);
        images->multiply(chain, i);
    }
}

// ---- The transforms of a chain

// The lengths of the transforms. With one shared operand a product that joins those before it saves a forward
// transform, and all of them take the longest one's length.
template <class Kind>
std::array<upL_t, longest_chain> transform_lengths(typename Kind::Chain chain, ChainTransforms which) {
    std::array<upL_t, longest_chain> lengths{};
    for (upL_t i = 0; i < chain.size(); i++) lengths[i] = Kind::length(chain, chain[i]);
    if (which == ChainTransforms::one) {
        lengths.fill(*std::max_element(lengths.begin(), lengths.end()));
        return lengths;
    }
    const auto transforms_of = [](const auto& x) -> upL_t { return is_square(x) ? 2 : 3; };
    upL_t first = 0;
    upL_t count = 0;  // transforms from the first product on
    for (upL_t i = 0; i < chain.size(); i++) {
        const upL_t own = transforms_of(chain[i]);
        const upL_t longer = std::max(lengths[first], lengths[i]);
        const bool joins = i != 0 && (count + own - 1) * longer <= count * lengths[first] + own * lengths[i];
        if (joins) {
            std::fill(lengths.begin() + first, lengths.begin() + i + 1, longer);
            count += own - 1;
        } else {
            first = i;
            count = own;
        }
    }
    return lengths;
}

template <class Kind>
void multiply_planned(const BasicParameters& bp, typename Kind::Chain chain, ChainTransforms which) {
    const auto lengths = transform_lengths<Kind>(chain, which);
    std::array<TransformSlot, longest_chain> slots;
    std::array<const transform*, longest_chain> transforms;
    for (upL_t i = 0; i < chain.size(); i++) {
        const bool same = i != 0 && lengths[i] == lengths[i - 1];
        transforms[i] = same ? transforms[i - 1] : &make_transform<cdi>(bp, slots[i], lengths[i]);
    }
    multiply_by<Kind>(bp, chain, std::span(transforms).first(chain.size()));
}

// ---- Short exact products

bool overlap(const ExactFloatR& out, const ExactFloat& x) {
    return x.get_T() < out.get_base() + out.get_size() && out.get_base() < x.get_T() + x.get_L();
}

// A copy of the operand that two neighbours share, where the first one's result lies over it.
class KeptOperand {
  public:
    void keep(const ExactFloat& x) {
        copy_.set_efp(x);
        original_ = &x;
    }
    const ExactFloat& of(const ExactFloat& x) const { return original_ == &x ? copy_ : x; }

  private:
    cdi words_[direct_product_words];
    ExactFloatR copy_{words_, direct_product_words};
    const ExactFloat* original_ = nullptr;
};

void multiply_directly(const BasicParameters& bp, std::span<const ExactProduct> chain) {
    cdi words[direct_product_words];
    ExactFloatR product(words, direct_product_words);
    KeptOperand kept;
    for (upL_t i = 0; i < chain.size(); i++) {
        const ExactProduct& x = chain[i];
        const ExactFloat& a = kept.of(x.a);
        const ExactFloat& b = kept.of(x.b);
        const bool over_a = overlap(x.out, a);
        const bool over_b = overlap(x.out, b);
        if (!over_a && !over_b && x.addend == nullptr) {
            x.out.set_mul(bp, a, b);
            continue;
        }
        product.set_mul(bp, a, b);
        if (i + 1 < chain.size()) {
            if (over_a && enters(x.a, chain[i + 1])) kept.keep(x.a);
            if (over_b && enters(x.b, chain[i + 1])) kept.keep(x.b);
        }
        if (x.addend == nullptr) {
            x.out.set_efp(product);
        } else if (x.subtract) {
            x.out.set_sub(product, *x.addend);
        } else {
            x.out.set_add(product, *x.addend);
        }
    }
}

}  // namespace

void multiply_chain(const BasicParameters& bp, std::span<const ExactProduct> chain, ChainTransforms which) {
    if (is_plain(chain)) return ExactKind::alone(bp, chain[0]);
    upL_t longest = 0;
    for (const ExactProduct& x : chain) longest = std::max(longest, ExactKind::length(chain, x));
    if (longest <= direct_product_words) return multiply_directly(bp, chain);
    multiply_planned<ExactKind>(bp, chain, which);
}

void multiply_chain(const BasicParameters& bp, std::span<const TruncatedProduct> chain,
                    ChainTransforms which) {
    if (is_plain(chain)) return TruncatedKind::alone(bp, chain[0]);
    multiply_planned<TruncatedKind>(bp, chain, which);
}

void multiply_chain(const BasicParameters& bp, std::span<const ExactProduct> chain,
                    std::span<const transform* const> transforms) {
    multiply_by<ExactKind>(bp, chain, transforms);
}

void multiply_chain(const BasicParameters& bp, std::span<const TruncatedProduct> chain,
                    std::span<const transform* const> transforms) {
    multiply_by<TruncatedKind>(bp, chain, transforms);
}

}  // namespace znp
