// CBR_table: the shape of a conversion with its powers, built once in memory.
//
// Of each power the transform's image is kept, so that a piece of a level costs one forward and one inverse
// transform.
#pragma once

#include "foundation/status_line.hpp"
#include "multiply/basic_parameters.hpp"
#include "multiply/transform.hpp"
#include "numbers/radix_shape.hpp"

namespace znp {

struct CBR_table : CBR_shape {
    upL_t power_start[max_levels] = {};  // where the stripped power begins in the table of the powers
    TransformSlot transforms[max_levels];
    const std::byte* images[max_levels] = {};

    explicit CBR_table(const CBR_shape& shape) : CBR_shape(shape) {}

    const transform* algorithm(unsigned level) const { return transforms[level].operator->(); }

    // Fills in the transforms and images of all levels. powers: powers_words() words, free afterwards;
    // kept: the images of all levels but the top one, one behind the other; bp's work buffer:
    // product_bytes(levels - 1, bp.tds) bytes, where the top level's image stays at the start.
    // Returns 0, or 1 if a power has not the size or the residue that it should have.
    [[nodiscard]] int build(const BasicParameters& bp, cdi* powers, std::byte* kept, StatusLine* status);

    // The fraction of the second piece of a cut of m words at the level, into its place; see CBR_shape. `end`
    // is the end of the piece's region. work: product_bytes(level, threads); the top level's image is its
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
    void add_image(const BasicParameters& bp, unsigned level, const cdi* P, upL_t L, std::byte* image,
                   cdi* square);
    // work as the areas of a fraction: its image is T1, which leaves the level's own where it is.
    WorkAreas fraction_areas(const transform& algorithm, unsigned level, std::byte* work) const;
    upL_t needed_words(unsigned level, upL_t m) const { return fraction_words(m) - overlap[level]; }
    upL_t second_words(unsigned level, upL_t m) const { return fraction_words(m - first_words(level)); }
    cdi* second_place(unsigned level, upL_t m, cdi* end) const;
};

}  // namespace znp
