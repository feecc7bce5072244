// CBR_shape: how a fraction of n words is converted to a radix. Lengths only: what the queries need.
//
// n is halved (rounded up) until at most 15 words are left; these are a leaf's. Level i cuts a piece of more
// than base << i words in two by the power radix^(base << i).
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

#include "foundation/types.hpp"
#include "numbers/radix_leaf.hpp"

namespace znp {

struct CBR_shape {
    static constexpr unsigned max_levels = 44;

    cdi radix;
    double words_per_radix;        // log2(radix) / 64
    double radix_bits;             // log2(radix)
    unsigned levels;               // halvings
    upL_t base;                    // words of a leaf: 8 to 15, or all n
    upL_t length;                  // n
    upL_t sizes[max_levels] = {};  // words of the level's power, zero words included; a table knows: at most
    upL_t overlap[max_levels] = {};  // low words of the power that are zero and left out
    upL_t lengths[max_levels] = {};  // product lengths of the transforms; grow with the level

    // radix at least 2, n at least 1.
    CBR_shape(cdi radix, upL_t n);

    // ---- Pieces ----
    // At most 15 words are a leaf. A larger piece is cut at the highest level with more than base << level
    // words, which is below `level` for a piece that is the half of a cut at `level`.
    static bool is_leaf(upL_t m) { return m <= radix::max_leaf; }
    unsigned cut_level(upL_t m, unsigned level) const;
    upL_t fraction_words(upL_t m) const;
    upL_t region_words(upL_t m) const;
    // The first piece of a cut: its words, and those of its region.
    upL_t first_words(unsigned level) const { return base << level; }
    upL_t first_region_words(unsigned level) const { return radix::leaf_fraction_words(base) << level; }

    // ---- Powers and products ----
    u64_t exponent(unsigned level) const { return u64_t{base} << level; }
    upL_t power_words(unsigned level) const { return sizes[level] - overlap[level]; }
    upL_t powers_words() const;            // all powers while they are built
    bool is_direct(unsigned level) const;  // no transform: the image is the power itself
    upL_t image_bytes(unsigned level) const;
    upL_t product_bytes(unsigned level, u64_t threads) const;  // two images and the transform's work

  private:
    upL_t product_length(unsigned level) const;
};

}  // namespace znp
