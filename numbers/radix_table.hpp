// CBR_table: the powers of a radix by which a fraction of n words is converted, and the shape of the
// conversion.
//
// n is halved (rounded up) until at most 15 words are left; these are a leaf's. Level i cuts a piece of more
// than base << i words in two by the power radix^(base << i). Of each power the transform's image is kept, so
// that a piece of a level costs one forward and one inverse transform.
//
// Fractions. A piece of m words needs the fraction to 2^-128 of its last word: the two words beyond it. It is
// worked on in place: the fraction of fraction_words(m) words ends at the end of a region of region_words(m)
// words, the first piece's region is the upper end of it, and the second piece's fraction replaces what is
// left below.
//
// The second piece's fraction is the fraction times the power, without the integer part. Only the middle of
// that product is made:
//
//     power               P words, z zero words left out
//     fraction            f = fraction_words(m) - z words: the top z only reach the integer part
//     product             [f - g, f), g = fraction_words(m - h), which is all that the piece needs
//
// so that a transform of P + g words is enough: what lies above wraps onto the lowest P words.
#pragma once

#include "foundation/status_line.hpp"
#include "multiply/basic_parameters.hpp"
#include "multiply/transform.hpp"

namespace znp {

struct CBR_table {
    static constexpr unsigned max_levels = 44;

    cdi radix;
    double words_per_radix;        // log2(radix) / 64
    double radix_bits;             // log2(radix)
    unsigned levels;               // halvings
    upL_t base;                    // words of a leaf: 8 to 15, or all n
    upL_t length;                  // n
    upL_t sizes[max_levels] = {};  // words of the level's power, zero words included; at most, until built
    upL_t power_start[max_levels] = {};  // where the stripped power begins in the table of the powers
    upL_t overlap[max_levels] = {};      // low words of the power that are zero and left out
    upL_t lengths[max_levels] = {};      // product lengths of the transforms; grow with the level
    TransformSlot transforms[max_levels];
    const void* images[max_levels] = {};

    // The shape alone: what the queries need. radix at least 2, n at least 1.
    CBR_table(cdi radix, upL_t n);

    // ---- Pieces ----
    // At most 15 words are a leaf. A larger piece is cut at the highest level with more than base << level
    // words, which is below `level` for a piece that is the half of a cut at `level`.
    static bool is_leaf(upL_t m) { return m < 16; }
    unsigned cut_level(upL_t m, unsigned level) const;
    upL_t fraction_words(upL_t m) const;
    upL_t region_words(upL_t m) const;

    // ---- Powers ----
    u64_t exponent(unsigned level) const { return u64_t{base} << level; }
    upL_t power_words(unsigned level) const { return sizes[level] - overlap[level]; }
    upL_t product_bytes(unsigned level, u64_t threads) const;  // two images and the transform's work
    upL_t image_bytes(unsigned level) const;
    bool is_direct(unsigned level) const;  // no transform: the image is the power itself
    const transform* algorithm(unsigned level) const { return transforms[level].operator->(); }
    upL_t powers_words() const;  // all powers while they are built

    // Fills in the transforms and images of all levels. powers: powers_words() words, free afterwards;
    // kept: the images of all levels but the top one, one behind the other; bp's work buffer:
    // product_bytes(levels - 1, bp.tds) bytes, where the top level's image stays at the start.
    // Returns 0, or 1 if a power has not the size or the residue that it should have.
    [[nodiscard]] int build(const BasicParameters& bp, cdi* powers, std::byte* kept, StatusLine* status);

    // The fraction of the second piece of a cut of m words at the level, into its place; see above. `end` is
    // the end of the piece's region. work: product_bytes(level, threads); the top level's image is its
    // start. `algorithm` is the level's transform or one equal to it.
    //
    // In two steps: the forward transform, after which the first piece may be converted, and the product.
    void transform_fraction(const transform& algorithm, unsigned level, upL_t m, const cdi* end,
                            std::byte* work) const;
    void multiply_fraction(const transform& algorithm, unsigned level, upL_t m, cdi* end,
                           std::byte* work) const;
    // Where the level has no transform: in one step.
    void multiply_directly(unsigned level, upL_t m, cdi* end, std::byte* work) const;

  private:
    upL_t product_length(unsigned level) const;
    void add_image(const BasicParameters& bp, unsigned level, const cdi* P, upL_t L, std::byte* image,
                   cdi* square);
    std::byte* behind_image(const transform& algorithm, unsigned level, std::byte* work) const;
    upL_t needed_words(unsigned level, upL_t m) const { return fraction_words(m) - overlap[level]; }
    cdi* second_place(unsigned level, upL_t m, cdi* end) const;
};

}  // namespace znp
