// The digit conversions by their definition, digit by digit: what the vector kernels are held against.
#pragma once

#include "foundation/types.hpp"

namespace znp::CVN {

void u64_to_raw_reference(char* digits, const cdi* T, upL_t L);
void u64_to_str_reference(char* digits, const cdi* T, upL_t L);
void raw_to_u64_reference(cdi* T, const char* digits, upL_t L);

void cdi_to_raw_reference(char* digits, const cdi* T, upL_t L);
void cdi_to_str_reference(char* digits, const cdi* T, upL_t L);
void raw_to_cdi_reference(cdi* T, const char* digits, upL_t L);

void hex_raw_to_str_reference(char* digits, upL_t count);
void dec_raw_to_str_reference(char* digits, upL_t count);
[[nodiscard]] bool hex_str_to_raw_reference(char* digits, upL_t count);
[[nodiscard]] bool dec_str_to_raw_reference(char* digits, upL_t count);

}  // namespace znp::CVN
