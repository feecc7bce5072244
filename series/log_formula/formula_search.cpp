#include "series/log_formula/formula_search.hpp"

#include <algorithm>

#include "foundation/fatal.hpp"
#include "series/log_formula/factorization.hpp"

namespace znp {

namespace {

constexpr upL_t formula_capacity = 16;
constexpr u64_t argument_limit = u64_t{1} << 32;

struct SearchNode {
    MachinFormula formula;
    Factorization queue;  // its logarithm is to be added to the formula
    double cost;          // of the formula
};

// m^exponent, a part of a queue.
struct Cofactor {
    u64_t m;
    s64_t exponent;
};

class FormulaSearch {
  public:
    FormulaSearch(upL_t k, FormulaKind which, double D)
        : k_(k), which_(which), D_(D), least_closing_cost_(least_closing_cost()) {}

    void visit(const SearchNode& node) {
        if (result.nodes >= most_search_nodes) return;
        result.nodes++;
        const FormulaPair* const largest = last_beyond_base(node.queue);
        if (largest == nullptr) return close(node);
        use_relation(node, *largest);
        const Cofactor prime{largest->x, largest->coefficient};
        if (const Cofactor whole = whole_cofactor(node.queue); whole.m != 0 && whole.m != prime.m) {
            use_neighbours(node, whole);
        }
        use_neighbours(node, prime);
    }

    SearchResult result;

  private:
    double least_closing_cost() const {
        const BaseFormulas& base = base_formulas(which_, BaseFormulas::least_k);
        double cost = 0;
        for (upL_t j = 0; j < base.k; j++) cost += term_cost(base.arguments[j], D_);
        double known = 0;
        const FormulaRow& row = *find_known_formula(which_, 2);
        for (upL_t i = 0; i < row.count; i++) known += term_cost(row.arguments[i], D_);
        return std::min(cost, known);
    }

    bool is_beyond_base(u64_t prime) const { return prime > base_primes[k_ - 1]; }

    const FormulaPair* last_beyond_base(const Factorization& queue) const {
        return queue.count != 0 && is_beyond_base(queue.end()[-1].x) ? queue.end() - 1 : nullptr;
    }

    // All primes beyond the base as one power; m = 0 if they are none or too large.
    Cofactor whole_cofactor(const Factorization& queue) const {
        Cofactor whole{1, queue.end()[-1].coefficient};
        for (const auto& [prime, exponent] : queue) {
            if (!is_beyond_base(prime)) continue;
            if (exponent != whole.exponent || whole.m * prime >= argument_limit) return {0, 0};
            whole.m *= prime;
        }
        return whole;
    }

    void use_relation(const SearchNode& node, const FormulaPair& largest) {
        const FormulaRow* const row = find_relation(which_, largest.x, k_);
        if (row == nullptr) return;
        SearchNode next = node;
        const s64_t e = largest.coefficient;
        if (!add_term(next, row->arguments[0], e * row->coefficients[0])) return;
        next.queue.count--;
        for (upL_t i = 1; i < row->count; i++) {
            const FormulaPair pair{row->arguments[i], e * row->coefficients[i]};
            if (!formula_add(next.queue, pair, Factorization::max_pairs)) return;
        }
        go_on(next);
    }

    void use_neighbours(const SearchNode& node, const Cofactor& cofactor) {
        const u64_t m = cofactor.m;
        use_neighbour(node, cofactor, 2 * m + 1, -2, m + 1);
        use_neighbour(node, cofactor, 2 * m - 1, 2, m - 1);
        use_neighbour(node, cofactor, m + 1, -2, m + 2);
        use_neighbour(node, cofactor, m - 1, 2, m - 2);
    }

    // Log(m) = c ArcCoth(x) + Log(neighbour)
    void use_neighbour(const SearchNode& node, const Cofactor& cofactor, u64_t x, s64_t c, u64_t neighbour) {
        if (x >= argument_limit) return;
        const FormulaPair* const place = find_pair(node.formula, x);
        if (place != node.formula.end() && place->x == x) return;
        SearchNode next = node;
        const s64_t e = cofactor.exponent;
        if (!add_term(next, x, e * c)) return;
        for (FormulaPair& pair : next.queue) {
            if (is_beyond_base(pair.x) && cofactor.m % pair.x == 0) pair.coefficient = 0;
        }
        if (!factor_whole(next.queue, neighbour, e)) return;
        go_on(next);
    }

    // False if the sum gets too dear.
    bool add_term(SearchNode& node, u64_t x, s64_t c) const {
        node.cost += term_cost(x, D_);
        return node.cost + least_closing_cost_ < result.cost &&
               formula_add(node.formula, {x, c}, formula_capacity);
    }

    void go_on(SearchNode& node) {
        compact(node.queue);
        visit(node);
    }

    void close(const SearchNode& node) {
        MachinFormula formula = node.formula;
        const double cost = close_formula(formula, node.queue, which_, D_, formula_capacity);
        if (cost >= result.cost) return;
        result.formula = formula;
        result.cost = cost;
    }

    const upL_t k_;
    const FormulaKind which_;
    const double D_;
    const double least_closing_cost_;
};

bool add_row(MachinFormula& formula, const FormulaRow& row, s64_t factor, upL_t capacity) {
    for (upL_t i = 0; i < row.count; i++) {
        if (!formula_add(formula, {row.arguments[i], factor * row.coefficients[i]}, capacity)) return false;
    }
    return true;
}

bool add_base(MachinFormula& formula, const Factorization& queue, const BaseFormulas& base, upL_t capacity) {
    for (const auto& [prime, exponent] : queue) {
        const auto* const position = std::find(base_primes, base_primes + base.k, prime);
        if (position == base_primes + base.k) fatal_exit("Non-base prime found in queue.");
        const s64_t* const coefficients = base.coefficients(static_cast<upL_t>(position - base_primes));
        for (upL_t j = 0; j < base.k; j++) {
            if (!formula_add(formula, {base.arguments[j], exponent * coefficients[j]}, capacity))
                return false;
        }
    }
    return true;
}

}  // namespace

double close_formula(MachinFormula& formula, const Factorization& queue, FormulaKind which, double D,
                     upL_t capacity) {
    if (queue.count == 0) return formula_cost(formula, D);
    const MachinFormula start = formula;
    const u64_t largest = queue.end()[-1].x;
    double cost = cost_of_failure;
    if (add_base(formula, queue, base_formulas(which, base_size_for(largest)), capacity)) {
        cost = formula_cost(formula, D);
    }
    const FormulaRow* const known = queue.count == 1 ? find_known_formula(which, largest) : nullptr;
    if (known == nullptr) return cost;
    MachinFormula other = start;
    if (!add_row(other, *known, queue.begin()->coefficient, capacity)) return cost;
    const double other_cost = formula_cost(other, D);
    if (other_cost >= cost) return cost;
    formula = other;
    return other_cost;
}

SearchResult search_formula(u64_t n, upL_t k, FormulaKind which, double D) {
    FormulaSearch search(k, which, D);
    if (n >= argument_limit) return search.result;
    SearchNode root{};
    if (factor_whole(root.queue, n, 1)) search.visit(root);
    return search.result;
}

}  // namespace znp
