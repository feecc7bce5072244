// Tables with a key, in byte order of the keys, and the option loop that the commands share.
//
// To add an option: write its setter, and add its row at its place in the command's table; a table out of
// order does not compile.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "foundation/types.hpp"
#include "shell/command_line.hpp"

namespace znp {

template <class Table>
constexpr bool is_sorted_by_key(const Table& table) {
    return std::is_sorted(table.begin(), table.end(),
                          [](const auto& a, const auto& b) { return a.key < b.key; });
}

// The row with this key, null if there is none.
template <class Table>
auto find_by_key(const Table& table, std::string_view key) -> const typename Table::value_type* {
    const auto row = std::lower_bound(table.begin(), table.end(), key,
                                      [](const auto& a, std::string_view b) { return a.key < b; });
    return row != table.end() && row->key == key ? &*row : nullptr;
}

// A setter takes its value from the command line's current argument, and further arguments if it wants them.
// A setter that fails prints the reason, leaves the setting as it was, and returns 1; otherwise 0.
template <class Record>
struct OptionRow {
    std::string_view key;
    int (*set)(Record& record, CommandLine& line);
};

// "Skipping unrecognized command: " and the word.
void print_skipped(const std::string& word);

// Applies all options up to the end. A bad option never stops a command: unknown keys are skipped with a
// message, and the results of the setters are ignored.
template <class Table, class Record>
void apply_options(const Table& table, Record& record, CommandLine& line) {
    while (line.has_more()) {
        line.advance();
        if (const auto* row = find_by_key(table, line.key())) {
            row->set(record, line);
        } else {
            print_skipped(line.argument());
        }
    }
}

}  // namespace znp
