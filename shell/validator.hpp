// The Benchmark Validator: checks the validation file of a run.
#pragma once

namespace znp {

void benchmark_validator();

}  // namespace znp
