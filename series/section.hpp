// A section of a sum: what is known of it before it is summed, and where the objects of its node lie.
//
// The layout is a value. The query of a sum's memory adds its words up, and the run places the objects by it.
#pragma once

#include <algorithm>

#include "numbers/big_float.hpp"
#include "series/bss.hpp"
#include "series/memory_plan.hpp"
#include "series/psr_plan.hpp"

namespace znp {

struct Section {
    const zl_BSS& series;
    const SectionRow& row;
    u64_t terms;  // of the whole plan
    u64_t threads;

    // Nothing stands right of it.
    bool is_last() const { return row.b == terms; }
    // From so many words on the topmost merge is worth a line of its own on the status line; below, its
    // halves run at the same time.
    u64_t levels() const { return row.length >= level_min_words ? 1 : 0; }
    // What its sum takes.
    MemoryPlan memory() const;
    // Words of the sum on its right that it joins: all that it was made with, so that the words by which the
    // estimate of its weight may be wrong cost no precision.
    upL_t joined_words() const { return row.next_precision + extra_precision; }

  private:
    static constexpr upL_t level_min_words = 1 << 18;
};

// An object of a section's node: its words, and the buffer of a result if it lies in one.
enum class ObjectBuffer { nodes, P, Q };
struct ObjectPlace {
    upL_t words = 0;
    ObjectBuffer buffer = ObjectBuffer::nodes;
};

template <class Rules>
class SectionLayout {
  public:
    using Node = typename Rules::Node;
    using Places = typename Rules::template Objects<ObjectPlace>;

    // words: of an object in the sum of the section.
    SectionLayout(const Rules& rules, const Section& section, upL_t words)
        : places_(rules.layout(section, words)) {
        for (ObjectPlace* place : Places::all(places_)) place->words = aligned_words(place->words);
    }

    // Of all objects that lie in the buffer.
    upL_t words_in(ObjectBuffer buffer) const {
        upL_t words = 0;
        for (const ObjectPlace* place : Places::all(places_)) {
            if (place->buffer == buffer) words += place->words;
        }
        return words;
    }

    Node node(const SumTask& task) const {
        Node node;
        const auto objects = Node::all(node);
        const auto places = Places::all(places_);
        cdi* at = task.nodes;
        for (upL_t i = 0; i < objects.size(); i++) {
            const auto [words, buffer] = *places[i];
            if (buffer == ObjectBuffer::nodes) {
                objects[i]->set_base(at, words);
                at += words;
            } else {
                objects[i]->set_base((buffer == ObjectBuffer::P ? task.P : task.Q).get_base(), words);
            }
        }
        return node;
    }

  private:
    // The next object starts aligned.
    static constexpr upL_t aligned_words(upL_t words) { return (words + 3) & ~upL_t{3}; }

    Places places_;
};

}  // namespace znp
