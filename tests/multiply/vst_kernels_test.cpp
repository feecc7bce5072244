// The kernels of one prime against the definition: values modulo the tree's polynomials in exact integers.
#include "multiply/vst/vst_kernels.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "foundation/guarded_alloc.hpp"
#include "test_seed.hpp"

namespace znp::vst {
namespace {

using Polynomial = std::vector<s64_t>;

// Integers modulo p, from 0 to p - 1.
struct Field {
    s64_t p;

    s64_t of(double x) const {
        const auto r = static_cast<s64_t>(std::fmod(x, static_cast<double>(p)));
        return r < 0 ? r + p : r;
    }
    s64_t mul(s64_t x, s64_t y) const { return static_cast<s64_t>(static_cast<s128_t>(x) * y % p); }
    s64_t power(s64_t x, u64_t e) const {
        s64_t result = 1;
        for (; e != 0; e >>= 1, x = mul(x, x)) {
            if ((e & 1) != 0) result = mul(result, x);
        }
        return result;
    }
    // f g modulo X^m - w
    Polynomial product(const Polynomial& f, const Polynomial& g, s64_t w) const {
        const upL_t m = f.size();
        Polynomial r(m);
        for (upL_t i = 0; i < m; i++) {
            for (upL_t j = 0; j < m; j++) {
                const s64_t x = mul(f[i], g[j]);
                r[(i + j) % m] = (r[(i + j) % m] + (i + j < m ? x : mul(x, w))) % p;
            }
        }
        return r;
    }
};

// Bits of j reversed behind the binary point of `bits` places.
u64_t reversed(u64_t j, unsigned bits) {
    u64_t r = 0;
    for (unsigned i = 0; i < bits; i++) r |= ((j >> i) & 1) << (bits - 1 - i);
    return r;
}

class VSTKernels : public ::testing::TestWithParam<std::pair<unsigned, unsigned>> {
  protected:
    static constexpr unsigned levels = 3;

    VSTKernels() : g_{GetParam().first, GetParam().second, 14} {
        TablePlan plan;
        plan.require(g_);
        memory_ = make_guarded_array<std::byte>(nullptr, table_bytes(plan), 64);
        EXPECT_EQ(build_tables(holder_, plan, memory_.get()), memory_.get() + table_bytes(plan));
        set_ = holder_->sets[g_.a - 3][g_.b / 2];
        x_ = make_guarded_array<double>(nullptr, doubles());
        y_ = make_guarded_array<double>(nullptr, doubles());
    }

    const PrimeTables& prime(unsigned s) const { return set_->prime[s]; }
    upL_t stride() const { return g_.row() * 4; }
    upL_t doubles() const { return stride() << levels; }
    upL_t points() const { return g_.n() << levels; }

    // A root of order b 2^k.
    s64_t root(unsigned s, unsigned k) const {
        const Field f{static_cast<s64_t>(prime(s).p)};
        return f.power(f.of(set_->set->roots[s]), u64_t{1} << (set_->set->max_c - k));
    }

    // Every residue at the given multiple of p, with random signs, or random residues (0).
    void fill(double* x, unsigned s, double multiple, std::mt19937_64& rng) const {
        const double p = prime(s).p;
        for (upL_t i = 0; i < doubles(); i++) {
            if (multiple == 0) {
                x[i] = std::rint((static_cast<double>(rng() >> 11) * 0x1p-53 - 0.5) * (p - 1));
            } else {
                x[i] = std::floor(multiple * p) * ((rng() & 1) != 0 ? 1 : -1);
            }
        }
    }

    Polynomial polynomial(const double* x, unsigned s) const {
        const Field f{static_cast<s64_t>(prime(s).p)};
        Polynomial all;
        for (upL_t r = 0; r < upL_t{1} << levels; r++) {
            for (upL_t i = 0; i < g_.n(); i++) all.push_back(f.of(x[r * stride() + i]));
        }
        return all;
    }

    // All values below a bound in multiples of p.
    // What a forward step leaves is larger than an inverse takes; between them comes the product, which
    // reduces.
    void reduce(double* x, unsigned s) const {
        const double p = prime(s).p;
        for (upL_t i = 0; i < doubles(); i++) x[i] -= p * std::rint(x[i] / p);
    }

    void expect_bound(const double* x, unsigned s, double bound) const {
        for (upL_t r = 0; r < upL_t{1} << levels; r++) {
            for (upL_t i = 0; i < g_.n(); i++) ASSERT_LE(std::fabs(x[r * stride() + i]), bound * prime(s).p);
        }
    }

    // The largest values that the forward blocks leave.
    double pointwise_multiple() const { return g_.b == 7 ? 4.1 : 2.84; }

    // The twiddles of a part at the node, in both directions.
    Part part(unsigned s, u64_t node) {
        twiddles_.clear();
        const auto take = [&](upL_t count) {
            twiddles_.push_back(make_guarded_array<double>(nullptr, count));
            return twiddles_.back().get();
        };
        Part part{x_.get(), stride(), g_.b, levels, {}, &prime(s)};
        part.twiddles.nodes = upL_t{8} << levels;
        for (const Direction d : {forward_direction, inverse_direction}) {
            const unsigned depth = levels + block_levels(g_.b);
            double* const t = take((upL_t{1} << depth) + 4);
            local_twiddles(t, prime(s), d, node, depth);
            part.twiddles.twiddles[d] = t;
            if (g_.b == 1) continue;
            double* const v = take((g_.b - 1) * part.twiddles.nodes);
            local_powers(v, prime(s), g_.b, set_->block_nodes, d, node, levels + 3);
            part.twiddles.powers[d] = v;
        }
        if (g_.b > 1) {
            double* const w = take(g_.b * part.twiddles.nodes);
            local_weights(w, prime(s), g_.b, node, levels + 3);
            part.twiddles.weights = w;
        }
        return part;
    }

    // w of a part X^points - w that is the node at depth d.
    s64_t weight(unsigned s, u64_t node, unsigned d) const {
        const Field f{static_cast<s64_t>(prime(s).p)};
        return f.power(root(s, d), g_.b * reversed(node, d));
    }

    Geometry g_;
    const VSTTables* holder_ = nullptr;
    const SetTables* set_;
    GuardedArray<std::byte> memory_;
    GuardedArray<double> x_, y_;
    std::vector<GuardedArray<double>> twiddles_;
};

TEST_P(VSTKernels, TwiddlesOfSubtrees) {
    for (unsigned s = 0; s < g_.a; s++) {
        const Field f{static_cast<s64_t>(prime(s).p)};
        for (const u64_t node : {0u, 1u, 5u, 11u}) {
            const Part p = part(s, node);
            for (unsigned e = 0; e < levels; e++) {
                for (u64_t j = 0; j < u64_t{1} << e; j++) {
                    // Its square is the node's w, and the inverse is one.
                    const double t = p.twiddles.twiddles[forward_direction][(1u << e) + j];
                    const double u = p.twiddles.twiddles[inverse_direction][(1u << e) + j];
                    ASSERT_EQ(f.mul(f.of(t), f.of(t)), weight(s, (node << e) + j, 4 + e));
                    ASSERT_EQ(f.mul(f.of(t), f.of(u)), 1);
                }
            }
        }
    }
}

// Products modulo the polynomial of a part, by way of its leaves.
TEST_P(VSTKernels, PartsAgainstTheDefinition) {
    auto rng = testing::make_rng(511);
    for (const unsigned s : {0u, g_.a - 1}) {
        const Field f{static_cast<s64_t>(prime(s).p)};
        for (const u64_t node : {0u, 1u, 14u}) {
            Part p = part(s, node);
            const s64_t w = weight(s, node, 4);
            fill(x_.get(), s, 0, rng);
            fill(y_.get(), s, 0, rng);
            const Polynomial A = polynomial(x_.get(), s), B = polynomial(y_.get(), s);
            forward_part(p);
            expect_bound(x_.get(), s, 13);
            p.data = y_.get();
            forward_part(p);
            p.data = x_.get();
            inverse_part(p, y_.get());
            expect_bound(x_.get(), s, 1.2);
            // The inverse multiplies by two at each binary level, and by b.
            const s64_t scale = static_cast<s64_t>(g_.b) << (levels + block_levels(g_.b));
            Polynomial C = f.product(A, B, w);
            for (s64_t& c : C) c = f.mul(c, scale);
            ASSERT_EQ(polynomial(x_.get(), s), C) << "prime " << s << " node " << node;
            // The square.
            fill(x_.get(), s, 0, rng);
            const Polynomial D = polynomial(x_.get(), s);
            forward_part(p);
            inverse_part(p, x_.get());
            C = f.product(D, D, w);
            for (s64_t& c : C) c = f.mul(c, scale);
            ASSERT_EQ(polynomial(x_.get(), s), C);
            // There and back: times 1.
            fill(x_.get(), s, 0, rng);
            Polynomial E = polynomial(x_.get(), s);
            forward_part(p);
            std::fill_n(y_.get(), doubles(), 0.0);
            y_[0] = 1;
            p.data = y_.get();
            forward_part(p);
            p.data = x_.get();
            inverse_part(p, y_.get());
            for (s64_t& c : E) c = f.mul(c, scale);
            ASSERT_EQ(polynomial(x_.get(), s), E);
        }
    }
}

// The largest residues of all, and inputs as large as an earlier stage can leave them.
TEST_P(VSTKernels, LargestValues) {
    auto rng = testing::make_rng(512);
    for (const unsigned s : {0u, g_.a - 1}) {
        const Field f{static_cast<s64_t>(prime(s).p)};
        for (const double multiple : {0.4999, 2.5, 10.0}) {
            Part p = part(s, 9);
            fill(x_.get(), s, multiple, rng);
            const Polynomial A = polynomial(x_.get(), s);
            forward_part(p);
            expect_bound(x_.get(), s, pointwise_multiple());
            inverse_part(p, x_.get());
            expect_bound(x_.get(), s, 1.2);
            Polynomial C = f.product(A, A, weight(s, 9, 4));
            for (s64_t& c : C) c = f.mul(c, static_cast<s64_t>(g_.b) << (levels + block_levels(g_.b)));
            ASSERT_EQ(polynomial(x_.get(), s), C) << "prime " << s << " multiple " << multiple;
        }
    }
}

// The pointwise step does not reduce its inputs: any that the forward blocks can leave.
TEST_P(VSTKernels, PointwiseOfTheLargestValues) {
    auto rng = testing::make_rng(514);
    for (const unsigned s : {0u, g_.a - 1}) {
        Part p = part(s, 5);
        for (const bool square : {false, true}) {
            for (unsigned round = 0; round < 4; round++) {
                fill(x_.get(), s, pointwise_multiple(), rng);
                fill(y_.get(), s, pointwise_multiple(), rng);
                if (round == 0) {  // the longest sums
                    for (upL_t i = 0; i < doubles(); i++) {
                        x_[i] = std::fabs(x_[i]);
                        y_[i] = std::fabs(y_[i]);
                    }
                }
                std::vector<double> x(x_.get(), x_.get() + doubles());
                inverse_part(p, square ? x_.get() : y_.get());
                expect_bound(x_.get(), s, 1.2);
                const Polynomial large = polynomial(x_.get(), s);
                std::copy(x.begin(), x.end(), x_.get());
                reduce(x_.get(), s);
                reduce(y_.get(), s);
                inverse_part(p, square ? x_.get() : y_.get());
                ASSERT_EQ(polynomial(x_.get(), s), large) << "prime " << s << " square " << square;
            }
        }
    }
}

// Rows of a column: every count of levels, from the root and from any node.
TEST_P(VSTKernels, LevelsThereAndBack) {
    auto rng = testing::make_rng(513);
    const unsigned s = g_.a - 1;
    const Field f{static_cast<s64_t>(prime(s).p)};
    for (const unsigned depth : {1u, 2u, 3u}) {
        std::vector<double> there((1u << depth) + 8), back((1u << depth) + 8);
        for (const u64_t node : {0u, 3u}) {
            local_twiddles(there.data(), prime(s), forward_direction, node, depth);
            local_twiddles(back.data(), prime(s), inverse_direction, node, depth);
            fill(x_.get(), s, 0.4999, rng);
            Polynomial A = polynomial(x_.get(), s);
            const Rows out{x_.get(), stride(), g_.lanes(), there.data(), &prime(s)};
            const Rows in{x_.get(), stride(), g_.lanes(), back.data(), &prime(s)};
            forward_levels(out, depth, node == 0 && depth > 1 ? Top::root : Top::any);
            reduce(x_.get(), s);
            inverse_levels(in, depth);
            expect_bound(x_.get(), s, 1.2);
            for (upL_t i = 0; i < g_.n() << depth; i++) A[i] = f.mul(A[i], s64_t{1} << depth);
            ASSERT_EQ(polynomial(x_.get(), s), A) << depth << " " << node;
            if (node != 0 || depth == 1) continue;
            fill(x_.get(), s, 0.4999, rng);
            A = polynomial(x_.get(), s);
            forward_levels(out, depth, Top::root);
            reduce(x_.get(), s);
            inverse_levels_root(in, depth, 12345);
            for (upL_t i = 0; i < g_.n() << depth; i++) A[i] = f.mul(A[i], s64_t{12345} << depth);
            ASSERT_EQ(polynomial(x_.get(), s), A) << depth;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, VSTKernels,
                         ::testing::Values(std::pair(4u, 1u), std::pair(5u, 3u), std::pair(6u, 5u),
                                           std::pair(7u, 7u), std::pair(9u, 1u), std::pair(9u, 7u)),
                         [](const auto& sets) {
                             std::string name("a");
                             name += std::to_string(sets.param.first);
                             name += 'b';
                             return name += std::to_string(sets.param.second);
                         });

}  // namespace
}  // namespace znp::vst
