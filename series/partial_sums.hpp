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
//     check                 the residues of the section's results; a section that fails is summed once more
//     keep                  the results of the last section become the sum
//     join                  those of another one are merged with the sum
//     join_words(section)   the longest product of that
//     result_words          of the buffers of the sum, as far as keep or join write them
//
// with_section_rules(series, section, f) calls f with the rules of one section.
#pragma once

#include <string>

#include "foundation/event_log.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/repeat_once.hpp"
#include "foundation/strings.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/table_holder.hpp"
#include "series/modular_check.hpp"
#include "series/recursion.hpp"
#include "series/section.hpp"
#include "shell/console.hpp"

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
        const SectionLayout layout(rules, section, rules.memory(section).words);
        typename Rules::Node node;
        repeat_once(
            [&] {
                node = layout.node(task);
                sum_range(task.bp, rules, node, row.a, row.b, rules.levels(section), progress);
                rules.check(task, row, node);
            },
            [] { return true; },
            [&] {
                Console::print_error("Multiplication Failure Re-attempting current block...");
                if (task.log != nullptr) task.log->add("Multiplication Failure");
                if (task.bp.holder != nullptr) rebuild_tables(*task.bp.holder);
            });
        if (section.is_last()) {
            rules.keep(task, row, node);
        } else {
            rules.join(task, section, node);
            check_sum(task, section);
        }
    }

    static void check_sum(const SumTask& task, const Section& section) {
        const u64_t a = section.row.a, b = section.terms, threads = task.bp.tds;
        if (task.R == nullptr) return check2(task.log, a, b, task.P, task.Q, threads);
        check3(task.log, a, b, task.P, task.Q, *task.R, threads);
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
