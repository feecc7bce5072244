// The stages that every constant shares: the line that closes the formula, and the output of the digits.
#pragma once

#include "compute/run_time_parameters.hpp"
#include "numbers/big_float.hpp"

namespace znp {

// A blank line, the name in green, "  :  " and the time since start in yellow.
void print_stage(const std::string& name, const Time& start);

// Hexadecimal digits to their file; nothing if run.hex is 0. The number is positive with at most one word in
// front of the point; another is a fatal error. Memory: write_hex_bytes of the run's heap.
void write_hex(RunTimeParameters& run, const BigFloat<cdi>& number);
upL_t write_hex_bytes(u64_t hex);

// Converts the fraction to decimal, writes the digits and verifies the conversion against the binary number.
// The conversion's time counts as computation (stopwatch). Memory: conversion_bytes of the run's heap,
// allocation overheads included, besides the number itself.
void convert_and_write_B(RunTimeParameters& run, const BigFloat<cdi>& number);
upL_t conversion_bytes(upL_t p, u64_t dec, u64_t threads);

// Bytes of a heap that a guarded allocation of `bytes` aligned to 32 takes, its table entry included.
upL_t heap_bytes(upL_t bytes);

}  // namespace znp
