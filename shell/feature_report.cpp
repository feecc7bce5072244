// The report of the features, line by line.
#include <array>

#include "shell/console.hpp"
#include "shell/cpu_features.hpp"

namespace znp {
namespace {

using F = CPUFeatures;

struct ReportLine {
    const char* text;
    Feature feature;  // null: the text is the heading of a group
};

constexpr std::array report_lines{
    ReportLine{"CPU Vendor:", nullptr},
    ReportLine{"    AMD         = ", &F::AMD},
    ReportLine{"    Intel       = ", &F::Intel},
    ReportLine{"OS Features:", nullptr},
    ReportLine{"  * 64-bit      = ", &F::OS_x64},
    ReportLine{"  * OS AVX      = ", &F::OS_AVX},
    ReportLine{"    OS AVX512   = ", &F::OS_AVX512},
    ReportLine{"Hardware Features:", nullptr},
    ReportLine{"    MMX         = ", &F::MMX},
    ReportLine{"  * x64         = ", &F::x64},
    ReportLine{"  * ABM         = ", &F::ABM},
    ReportLine{"    RDRAND      = ", &F::RDRAND},
    ReportLine{"    BMI1        = ", &F::BMI1},
    ReportLine{"  * BMI2        = ", &F::BMI2},
    ReportLine{"    ADX         = ", &F::ADX},
    ReportLine{"    PREFETCHWT1 = ", &F::PREFETCHWT1},
    ReportLine{"SIMD: 128-bit", nullptr},
    ReportLine{"  * SSE         = ", &F::SSE},
    ReportLine{"  * SSE2        = ", &F::SSE2},
    ReportLine{"  * SSE3        = ", &F::SSE3},
    ReportLine{"  * SSSE3       = ", &F::SSSE3},
    ReportLine{"    SSE4a       = ", &F::SSE4a},
    ReportLine{"  * SSE4.1      = ", &F::SSE41},
    ReportLine{"  * SSE4.2      = ", &F::SSE42},
    ReportLine{"    AES-NI      = ", &F::AES},
    ReportLine{"    SHA         = ", &F::SHA},
    ReportLine{"SIMD: 256-bit", nullptr},
    ReportLine{"  * AVX         = ", &F::AVX},
    ReportLine{"  * XOP         = ", &F::XOP},
    ReportLine{"  * FMA3        = ", &F::FMA3},
    ReportLine{"  * FMA4        = ", &F::FMA4},
    ReportLine{"  * AVX2        = ", &F::AVX2},
    ReportLine{"SIMD: 512-bit", nullptr},
    ReportLine{"    AVX512-F    = ", &F::AVX512_F},
    ReportLine{"    AVX512-CD   = ", &F::AVX512_CD},
    ReportLine{"    AVX512-PF   = ", &F::AVX512_PF},
    ReportLine{"    AVX512-ER   = ", &F::AVX512_ER},
    ReportLine{"    AVX512-VL   = ", &F::AVX512_VL},
    ReportLine{"    AVX512-BW   = ", &F::AVX512_BW},
    ReportLine{"    AVX512-DQ   = ", &F::AVX512_DQ},
    ReportLine{"    AVX512-IFMA = ", &F::AVX512_IFMA},
    ReportLine{"    AVX512-VBMI = ", &F::AVX512_VBMI},
};

}  // namespace

void print_features(const CPUFeatures& features) {
    for (const ReportLine& line : report_lines) {
        if (line.feature == nullptr) {
            Console::println(line.text);
        } else {
            Console::print(line.text);
            Console::print_yes_no(features.*line.feature != 0);
        }
    }
}

}  // namespace znp
