// The stages that every constant shares: the line that closes the formula, and the output of the digits.
#pragma once

#include "compute/run_time_parameters.hpp"
#include "numbers/big_float.hpp"
#include "numbers/radix_conversion.hpp"

namespace znp {

// A blank line, the name in green, "  :  " and the time since start in yellow.
void print_stage(const std::string& name, const Time& start);

// The number of the two stages below: positive, its top word next to the point on either side (magnitude 1 or
// 0), and at least run.p - 1 words behind the point, as the formulas deliver it. Another is a fatal error.
// Digits are truncated, never rounded. A file that cannot be written is an exception
// (digits/digit_writer.hpp). Memory is taken from the run's heap in one piece, in the bytes that the queries
// say.

// Hexadecimal digits to their file; nothing if run.hex is 0. Memory: write_hex_bytes.
void write_hex(RunTimeParameters& run, const BigFloat<cdi>& number);
upL_t write_hex_bytes(u64_t hex);

// Converts the fraction to decimal, writes the digits and verifies the conversion against the binary number.
// The conversion's time counts as computation: the stopwatch, stopped before, runs meanwhile. A conversion or
// verification that fails is repeated without limit; digits that disagree with the number are a fatal error.
// Memory: conversion_bytes, besides the number itself. Queries include the overheads of the allocations.
void convert_and_write_B(RunTimeParameters& run, const BigFloat<cdi>& number);
upL_t conversion_bytes(u64_t dec, u64_t threads);

// Bytes of a heap that a guarded allocation of `bytes` aligned to 32 takes, its table entry included.
upL_t heap_bytes(upL_t bytes);

// The arithmetic behind convert_and_write_B. Tests let it fail; nothing else changes it.
struct ConversionCalls {
    decltype(&convert) conversion;
    decltype(&power_check) verification;
};
extern ConversionCalls conversion_calls;

}  // namespace znp
