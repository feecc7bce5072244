// The sum by a plan, the same for every class of series.
//
// Rows are handled from the last to the first: the section is summed by the recursion, checked, and joins the
// sum on its right. What classes differ in stands with the rules of their sections:
//
//     Objects<T>            the objects of a node by their names, as T each; Node is Objects of numbers
//     memory(section)       what its sum takes
//     levels(section)       see sum_range
//     layout(section, n)    Objects<ObjectPlace>: where they lie and their words; n for the sum, and what
//                           those need that serve again when the section joins
//     check                 the residues of the section's results
//     keep                  the results of the last section become the sum
//     join                  those of another one are merged with the sum
//     join_words(section)   the longest product of that
//     result_words          of the buffers of the sum, as far as keep or join write them
//
// with_section_rules(series, section, f) calls f with the rules of one section.
#pragma once

#include <string>

#include "foundation/exceptions.hpp"
#include "foundation/strings.hpp"
#include "multiply/dispatch.hpp"
#include "series/recursion.hpp"
#include "series/section.hpp"

namespace znp {

template <class Series>
class PartialSums {
  public:
    PartialSums(const Series& series, const PSRPlan& plan, u64_t threads)
        : series_(series), plan_(plan), threads_(std::max<u64_t>(1, threads)) {}

    SumSizes sizes() const {
        SumSizes sizes{};
        for (const SectionRow& row : plan_) {
            const Section section = section_of(row);
            with_section_rules(series_, section, [&](const auto& rules) {
                const MemoryPlan need = rules.memory(section);
                const SectionLayout layout(rules, section, need.words);
                const upL_t results = rules.result_words(section);
                sizes.P = std::max({sizes.P, results, layout.words_in(ObjectBuffer::P)});
                sizes.Q = std::max({sizes.Q, results, layout.words_in(ObjectBuffer::Q)});
                sizes.nodes = std::max(sizes.nodes, layout.words_in(ObjectBuffer::nodes));
                sizes.work_bytes = std::max(sizes.work_bytes, need.bytes);
                if (section.is_last()) return;
                sizes.work_bytes =
                    std::max(sizes.work_bytes, work_bytes_for<cdi>(rules.join_words(section), threads_));
            });
        }
        return sizes;
    }

    void sum(const SumTask& task) const {
        double all = 0;
        for (const SectionRow& row : plan_) all += static_cast<double>(row.length);
        double done = 0;
        for (upL_t i = plan_.size(); i-- != 0;) {
            const Section section = section_of(plan_[i]);
            const double share = static_cast<double>(section.row.length) / all;
            const std::string heading = plan_.size() == 1 ? "" : "Series: " + to_string_u64(i) + "  ";
            const RecursionProgress progress(task.status, heading.c_str(), done, done + share);
            with_section_rules(series_, section, [&](const auto& rules) {
                sum_logged(task, section, rules, progress.part(0, 0.9));
            });
            done += share;
        }
    }

  private:
    Section section_of(const SectionRow& row) const { return {series_, row, plan_.back().b, threads_}; }

    template <class Rules>
    static void sum_section(const SumTask& task, const Section& section, const Rules& rules,
                            const RecursionProgress& progress) {
        const SectionRow& row = section.row;
        typename Rules::Node node = SectionLayout(rules, section, rules.memory(section).words).node(task);
        sum_range(task.bp, rules, node, row.a, row.b, rules.levels(section), progress);
        rules.check(task.log, row, node);
        if (section.is_last()) {
            rules.keep(task, row, node);
        } else {
            rules.join(task, section, node);
        }
    }

    // A failed check has its own line in the log.
    template <class Rules>
    static void sum_logged(const SumTask& task, const Section& section, const Rules& rules,
                           const RecursionProgress& progress) {
        try {
            sum_section(task, section, rules, progress);
        } catch (const zl_BSRModularCheckFailed&) {
            throw;
        } catch (...) {
            if (task.log != nullptr) {
                task.log->add("BSR Merge Failure: " + to_string_u64(section.row.a) + " : " +
                              to_string_u64(section.row.b));
            }
            throw;
        }
    }

    const Series& series_;
    const PSRPlan& plan_;
    const u64_t threads_;
};

}  // namespace znp
