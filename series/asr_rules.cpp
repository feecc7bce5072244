#include "series/asr_rules.hpp"

#include <algorithm>

#include "series/truncated_merge.hpp"

namespace znp {

namespace {

FloatR rest_of(const FloatR& x, upL_t offset) {
    const upL_t used = static_cast<upL_t>(x.get_T() - x.get_base()) + offset;
    return FloatR(x.get_base() + used, x.get_size() - used);
}

}  // namespace

static_assert(RecursionRules<ASRRules>);

void ASRRules::end(Node& node, u64_t a, u64_t b) const {
    std::array<BasicIntR<cdi>, 5> exact;
    for (upL_t i = 0; i < node.size(); i++) exact[i] = {node[i].get_base(), node[i].get_size()};
    series.BSR_End(exact[0], exact[1], exact[2], exact[3], exact[4], a, b);
    for (upL_t i = 0; i < 3; i++) node[i].set_words(exact[i].get_L(), 0, true);
}

ASRRules::Node ASRRules::behind(const Node& results) const {
    const auto& [P, Q, R, x, t] = results;
    const upL_t offset = std::max({P.get_L(), Q.get_L(), R.get_L()});
    return {rest_of(P, offset), rest_of(Q, offset), rest_of(R, offset), FloatR(x.get_base(), x.get_size()),
            FloatR(t.get_base(), t.get_size())};
}

void ASRRules::merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right,
                     bool subtract) const {
    truncated_merge(bp, out[0], out[1], &out[2], out[3], out[4], {left[0], left[1], left[2]},
                    {right[0], right[1], right[2]}, p, p, subtract);
}

}  // namespace znp
