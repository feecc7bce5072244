// Digits of constants from independent software: rows of tests/golden/digits.tsv and hex.tsv.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace znp::testing {

struct GoldenDecimal {
    std::string constant;  // as on the command line
    std::uint64_t dec;
    std::string sha256;  // of the integer part, the point and the digits
    std::string last_digits;
    std::vector<std::uint64_t> counts;  // of the digits 0 to 9
    std::uint64_t residue;              // floor(constant * 10^dec) modulo 2^61 - 1
};

struct GoldenHexadecimal {
    std::string constant;
    std::uint64_t dec, hex;
    std::string sha256;
    std::string last_digits;
};

namespace golden_detail {

inline std::vector<std::string> split(const std::string& line, char separator) {
    std::vector<std::string> fields;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, separator);) fields.push_back(field);
    return fields;
}

// Lines without the heading, cut at tabs.
inline std::vector<std::vector<std::string>> rows(const std::string& name) {
    std::ifstream file(std::string(ZELMAR_TEST_DATA) + "/golden/" + name);
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line[0] != '#') rows.push_back(split(line, '\t'));
    }
    if (rows.empty()) std::abort();
    return rows;
}

}  // namespace golden_detail

inline std::vector<GoldenDecimal> golden_decimal() {
    std::vector<GoldenDecimal> golden;
    for (const std::vector<std::string>& row : golden_detail::rows("digits.tsv")) {
        std::vector<std::uint64_t> counts;
        for (const std::string& count : golden_detail::split(row.at(4), ',')) {
            counts.push_back(std::stoull(count));
        }
        golden.push_back(
            {row.at(0), std::stoull(row.at(1)), row.at(2), row.at(3), counts, std::stoull(row.at(5))});
    }
    return golden;
}

inline std::vector<GoldenHexadecimal> golden_hexadecimal() {
    std::vector<GoldenHexadecimal> golden;
    for (const std::vector<std::string>& row : golden_detail::rows("hex.tsv")) {
        golden.push_back({row.at(0), std::stoull(row.at(1)), std::stoull(row.at(2)), row.at(3), row.at(4)});
    }
    return golden;
}

}  // namespace znp::testing
