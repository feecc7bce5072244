// The digit conversions with AVX2.
//
// The conversions of words take four words a step, from the low end of the words and so from the end of the
// digits. What does not fill a step, at the top, goes through a step on the stack.
#include <immintrin.h>

#include "multiply/kernels/digit_conversion.hpp"

namespace znp::CVN {

namespace {

constexpr upL_t step_words = 4;

ZNP_INLINE __m256i load(const void* source) {
    return _mm256_loadu_si256(static_cast<const __m256i_u*>(source));
}
ZNP_INLINE void store(void* target, __m256i x) {
    _mm256_storeu_si256(static_cast<__m256i_u*>(target), x);
}
// The 16 bytes at `low` and the 16 at `high` as one vector, and back.
ZNP_INLINE __m256i load_halves(const char* low, const char* high) {
    return _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i_u*>(low))),
        _mm_loadu_si128(reinterpret_cast<const __m128i_u*>(high)), 1);
}
ZNP_INLINE void store_halves(char* low, char* high, __m256i x) {
    _mm_storeu_si128(reinterpret_cast<__m128i_u*>(low), _mm256_castsi256_si128(x));
    _mm_storeu_si128(reinterpret_cast<__m128i_u*>(high), _mm256_extracti128_si256(x, 1));
}
ZNP_INLINE __m256i bytes_of(int value) {
    return _mm256_set1_epi8(static_cast<char>(value));
}

// L words to digits by Step::run(digits, words), four words each time.
template <class Step>
ZNP_INLINE void words_to_digits(char* digits, const cdi* T, upL_t L) {
    constexpr upL_t D = Step::digits_per_word;
    char* end = digits + L * D;
    for (; L >= step_words; L -= step_words) {
        end -= step_words * D;
        Step::run(end, T);
        T += step_words;
    }
    if (L != 0) {
        cdi words[step_words] = {};
        char text[step_words * D];
        __builtin_memcpy(words, T, L * sizeof(cdi));
        Step::run(text, words);
        __builtin_memcpy(digits, text + (step_words - L) * D, L * D);
    }
}

// The way back.
template <class Step>
ZNP_INLINE void digits_to_words(cdi* T, const char* digits, upL_t L) {
    constexpr upL_t D = Step::digits_per_word;
    const char* end = digits + L * D;
    for (; L >= step_words; L -= step_words) {
        end -= step_words * D;
        Step::run(T, end);
        T += step_words;
    }
    if (L != 0) {
        char text[step_words * D] = {};
        cdi words[step_words];
        __builtin_memcpy(text + (step_words - L) * D, digits, L * D);
        Step::run(words, text);
        __builtin_memcpy(T, words, L * sizeof(cdi));
    }
}

// Every byte by Step::run(bytes), a cache line each time.
template <class Step>
ZNP_INLINE void convert_in_place(char* digits, upL_t count, Step& step) {
    constexpr upL_t line = 64;
    for (; count >= line; count -= line) {
        store(digits, step.run(load(digits)));
        store(digits + 32, step.run(load(digits + 32)));
        digits += line;
    }
    if (count != 0) {
        char rest[line];
        store(rest, bytes_of('0'));
        store(rest + 32, bytes_of('0'));
        __builtin_memcpy(rest, digits, count);
        store(rest, step.run(load(rest)));
        store(rest + 32, step.run(load(rest + 32)));
        __builtin_memcpy(digits, rest, count);
    }
}

// The words 0 1 2 3 in the order 3 1 2 0, or back, and the bytes of each in reverse. In this order the
// 128-bit halves of packs and unpacks leave the bytes where they belong.
constexpr int order_3120 = 0x27;
ZNP_INLINE __m256i reverse_words(__m256i x) {
    return _mm256_shuffle_epi8(x, _mm256_setr_epi8(7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8,  //
                                                   7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8));
}

template <bool as_text>
struct U64ToDigits {
    static constexpr upL_t digits_per_word = hexadecimal_digits;

    ZNP_INLINE static void run(char* digits, const cdi* T) {
        const __m256i low_nibble = bytes_of(15);
        const __m256i x = reverse_words(_mm256_permute4x64_epi64(load(T), order_3120));
        __m256i high = _mm256_and_si256(_mm256_srli_epi16(x, 4), low_nibble);
        __m256i low = _mm256_and_si256(x, low_nibble);
        if constexpr (as_text) {
            const __m256i text = _mm256_broadcastsi128_si256(_mm_setr_epi8(
                '0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'));
            high = _mm256_shuffle_epi8(text, high);
            low = _mm256_shuffle_epi8(text, low);
        }
        store(digits, _mm256_unpacklo_epi8(high, low));
        store(digits + 32, _mm256_unpackhi_epi8(high, low));
    }
};

struct RawToU64 {
    static constexpr upL_t digits_per_word = hexadecimal_digits;

    ZNP_INLINE static void run(cdi* T, const char* digits) {
        const __m256i pair = _mm256_set1_epi16(0x0110);  // 16 first + second
        const __m256i top = _mm256_maddubs_epi16(load(digits), pair);
        const __m256i bottom = _mm256_maddubs_epi16(load(digits + 32), pair);
        const __m256i x = reverse_words(_mm256_packus_epi16(top, bottom));
        store(T, _mm256_permute4x64_epi64(x, order_3120));
    }
};

ZNP_INLINE __m256i lanes_of(long long value) {
    return _mm256_set1_epi64x(value);
}

// Groups of 8, 3 and 8 digits of a word below 10^19, in 64-bit lanes.
struct DigitGroups {
    __m256i high8;
    __m256i middle3;
    __m256i low8;
};

ZNP_INLINE DigitGroups split_word(__m256i w) {
    // high8 = floor(w / 10^11), estimated from u = w >> 32 < 2^31.2 as u 2951479051 / 2^36. Cutting w off
    // costs less than 2^32 / 10^11 < 0.043, cutting the factor 2^68 / 10^11 off less than u / 2^36 < 0.036:
    // the estimate is right or one too low.
    __m256i high8 = _mm256_srli_epi64(_mm256_mul_epu32(_mm256_srli_epi64(w, 32), lanes_of(2951479051)), 36);
    // 10^11 = 48828125 2^11.
    __m256i rest = _mm256_sub_epi64(w, _mm256_slli_epi64(_mm256_mul_epu32(high8, lanes_of(48828125)), 11));
    const __m256i too_low = _mm256_cmpgt_epi64(rest, lanes_of(99999999999));
    high8 = _mm256_sub_epi64(high8, too_low);
    rest = _mm256_sub_epi64(rest, _mm256_and_si256(too_low, lanes_of(100000000000)));

    // middle3 = floor(x / 390625) for x = rest >> 8 < 390625000, exactly floor(x 720575941 / 2^48):
    // 720575941 390625 = 2^48 + 242469, and 242469 x < 2^48.
    const __m256i middle3 =
        _mm256_srli_epi64(_mm256_mul_epu32(_mm256_srli_epi64(rest, 8), lanes_of(720575941)), 48);
    const __m256i low8 = _mm256_sub_epi64(rest, _mm256_mul_epu32(middle3, lanes_of(100000000)));
    return {high8, middle3, low8};
}

// Groups of 4 digits from two groups of 8: in 16-bit lanes the two of high8, then the two of low8, for each
// word.
ZNP_INLINE __m256i split_8_digits(__m256i high8, __m256i low8) {
    // floor(x / 10^4) = x 3518437209 >> 45 for x < 10^8: 3518437209 10^4 = 2^45 + 1168, and 1168 x < 2^45.
    const __m256i reciprocal = lanes_of(3518437209);
    const __m256i quotients =
        _mm256_blend_epi32(_mm256_srli_epi64(_mm256_mul_epu32(high8, reciprocal), 45),
                           _mm256_srli_epi64(_mm256_mul_epu32(low8, reciprocal), 13), 0xAA);
    const __m256i both = _mm256_or_si256(high8, _mm256_slli_epi64(low8, 32));
    const __m256i remainders = _mm256_sub_epi32(both, _mm256_madd_epi16(quotients, _mm256_set1_epi32(10000)));
    return _mm256_or_si256(quotients, _mm256_slli_epi32(remainders, 16));
}

// The low 16 bits of x k. The compiler must not know k: for a constant some put four or five shifts and
// additions in the place of one multiplication.
ZNP_INLINE __m256i multiply_16(__m256i x, short k) {
    __m256i factor = _mm256_set1_epi16(k);
    __asm__("" : "+x"(factor));
    return _mm256_mullo_epi16(x, factor);
}

// Two digits in a 16-bit lane to two bytes: tens + (x - 10 tens) 256. floor(x / 10) = x 6554 >> 16 for
// x < 16384, as 6554 10 = 2^16 + 4.
ZNP_INLINE __m256i split_2_digits(__m256i x) {
    const __m256i tens = _mm256_mulhi_epu16(x, _mm256_set1_epi16(6554));
    return _mm256_sub_epi16(_mm256_slli_epi16(x, 8), multiply_16(tens, 2559));
}

// Three digits in a 64-bit lane to the low three of its 16-bit lanes; the fourth is garbage.
ZNP_INLINE __m256i split_3_digits(__m256i x) {
    const __m256i copies = _mm256_shuffle_epi8(
        x, _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 0, 1, 0, 1, 0, 1, 8, 9, 8, 9, 8, 9, 8, 9)));
    // floor(x / 100) = x 656 >> 16 for x < 1000: 656 100 = 2^16 + 64, and 64 x < 2^16.
    const __m256i reciprocals = lanes_of(6554 << 16 | 656);
    const __m256i prefixes =
        _mm256_blend_epi16(_mm256_mulhi_epu16(copies, reciprocals), copies, 0x44);  // x/100, x/10, x
    return _mm256_sub_epi16(prefixes, multiply_16(_mm256_slli_epi64(prefixes, 16), 10));
}

template <bool as_text>
struct CdiToDigits {
    static constexpr upL_t digits_per_word = decimal_digits;

    ZNP_INLINE static void run(char* digits, const cdi* T) {
        const DigitGroups groups = split_word(load(T));

        // floor(x / 100) = x 5243 >> 19 for x < 10^4: 5243 100 = 2^19 + 12, and 12 x < 2^19.
        const __m256i fours = split_8_digits(groups.high8, groups.low8);
        const __m256i hundreds = _mm256_srli_epi16(_mm256_mulhi_epu16(fours, _mm256_set1_epi16(5243)), 3);
        const __m256i remainders = _mm256_sub_epi16(fours, multiply_16(hundreds, 100));
        __m256i words02 = split_2_digits(_mm256_unpacklo_epi16(hundreds, remainders));
        __m256i words13 = split_2_digits(_mm256_unpackhi_epi16(hundreds, remainders));
        __m256i middle = split_3_digits(groups.middle3);
        if constexpr (as_text) {
            words02 = _mm256_or_si256(words02, bytes_of('0'));
            words13 = _mm256_or_si256(words13, bytes_of('0'));
            middle = _mm256_or_si256(middle, _mm256_set1_epi16('0'));
        }

        // A half now holds the outer 8 + 8 digits of a word. Stored three bytes in, it puts the last 8 digits
        // in place; with the middle 3 moved in, it is the first 16.
        const __m256i make_room =
            _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, -1, -1, -1, 8, 9, 10, 11, 12));
        const __m256i even = _mm256_broadcastsi128_si256(
            _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, 0, 2, 4, -1, -1, -1, -1, -1));
        const __m256i odd = _mm256_broadcastsi128_si256(
            _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, 8, 10, 12, -1, -1, -1, -1, -1));
        const __m256i first02 =
            _mm256_or_si256(_mm256_shuffle_epi8(words02, make_room), _mm256_shuffle_epi8(middle, even));
        const __m256i first13 =
            _mm256_or_si256(_mm256_shuffle_epi8(words13, make_room), _mm256_shuffle_epi8(middle, odd));

        constexpr upL_t D = digits_per_word;
        store_halves(digits + 3 * D + 3, digits + D + 3, words02);
        store_halves(digits + 2 * D + 3, digits + 3, words13);
        store_halves(digits + 3 * D, digits + D, first02);
        store_halves(digits + 2 * D, digits, first13);
    }
};

ZNP_INLINE int load_4_bytes(const char* source) {
    int x;
    __builtin_memcpy(&x, source, sizeof(x));
    return x;
}

struct RawToCdi {
    static constexpr upL_t digits_per_word = decimal_digits;

    ZNP_INLINE static void run(cdi* T, const char* digits) {
        constexpr upL_t D = digits_per_word;
        const char* const w0 = digits + 3 * D;
        const char* const w1 = digits + 2 * D;
        const char* const w2 = digits + D;
        const char* const w3 = digits;

        // The low 16 digits: neighbours by 10, 100, 10^4 and 10^8.
        const __m256i tens = _mm256_set1_epi16(0x010A);
        const __m256i hundreds = _mm256_set1_epi32(0x00010064);
        const __m256i words02 =
            _mm256_madd_epi16(_mm256_maddubs_epi16(load_halves(w0 + 3, w2 + 3), tens), hundreds);
        const __m256i words13 =
            _mm256_madd_epi16(_mm256_maddubs_epi16(load_halves(w1 + 3, w3 + 3), tens), hundreds);
        const __m256i eights =
            _mm256_madd_epi16(_mm256_packus_epi32(words02, words13), _mm256_set1_epi32(0x00012710));
        const __m256i low =
            _mm256_add_epi64(_mm256_mul_epu32(eights, lanes_of(100000000)), _mm256_srli_epi64(eights, 32));

        // The top three digits by 100, 10, 1, the byte behind them by 0; then by 10^16 = 390625^2 2^16.
        const __m128i top =
            _mm_setr_epi32(load_4_bytes(w0), load_4_bytes(w1), load_4_bytes(w2), load_4_bytes(w3));
        const __m128i threes =
            _mm_madd_epi16(_mm_maddubs_epi16(top, _mm_set1_epi32(0x00010A64)), _mm_set1_epi16(1));
        const __m256i scale = lanes_of(390625);
        const __m256i high = _mm256_mul_epu32(_mm256_mul_epu32(_mm256_cvtepu32_epi64(threes), scale), scale);
        store(T, _mm256_add_epi64(_mm256_slli_epi64(high, 16), low));
    }
};

struct HexRawToStr {
    ZNP_INLINE static __m256i run(__m256i x) {
        const __m256i above_9 = _mm256_cmpeq_epi8(_mm256_max_epu8(x, bytes_of(10)), x);
        return _mm256_add_epi8(_mm256_add_epi8(x, bytes_of(48)), _mm256_and_si256(above_9, bytes_of(39)));
    }
};

struct DecRawToStr {
    ZNP_INLINE static __m256i run(__m256i x) { return _mm256_add_epi8(x, bytes_of(48)); }
};

struct HexStrToRaw {
    __m256i invalid;

    ZNP_INLINE __m256i run(__m256i x) {
        // Moved so that "a" is the least signed byte: the six letters are the bytes below -122.
        const __m256i is_letter = _mm256_cmpgt_epi8(bytes_of(-122), _mm256_sub_epi8(x, bytes_of('a' + 128)));
        const __m256i digit = _mm256_sub_epi8(x, bytes_of(48));
        const __m256i above_9 = _mm256_subs_epu8(digit, bytes_of(9));
        invalid = _mm256_or_si256(invalid, _mm256_andnot_si256(is_letter, above_9));
        return _mm256_sub_epi8(digit, _mm256_and_si256(is_letter, bytes_of(39)));
    }
};

struct DecStrToRaw {
    __m256i invalid;

    ZNP_INLINE __m256i run(__m256i x) {
        const __m256i digit = _mm256_sub_epi8(x, bytes_of(48));
        invalid = _mm256_or_si256(invalid, _mm256_subs_epu8(digit, bytes_of(9)));
        return digit;
    }
};

template <class Step>
ZNP_INLINE void raw_to_str(char* digits, upL_t count) {
    Step step;
    convert_in_place(digits, count, step);
}

template <class Step>
ZNP_INLINE bool str_to_raw(char* digits, upL_t count) {
    Step step{_mm256_setzero_si256()};
    convert_in_place(digits, count, step);
    return _mm256_testz_si256(step.invalid, step.invalid) == 0;
}

}  // namespace

void u64_to_raw(char* digits, const cdi* T, upL_t L) {
    words_to_digits<U64ToDigits<false>>(digits, T, L);
}

void u64_to_str(char* digits, const cdi* T, upL_t L) {
    words_to_digits<U64ToDigits<true>>(digits, T, L);
}

void raw_to_u64(cdi* T, const char* digits, upL_t L) {
    digits_to_words<RawToU64>(T, digits, L);
}

void cdi_to_raw(char* digits, const cdi* T, upL_t L) {
    words_to_digits<CdiToDigits<false>>(digits, T, L);
}

void cdi_to_str(char* digits, const cdi* T, upL_t L) {
    words_to_digits<CdiToDigits<true>>(digits, T, L);
}

void raw_to_cdi(cdi* T, const char* digits, upL_t L) {
    digits_to_words<RawToCdi>(T, digits, L);
}

void hex_raw_to_str(char* digits, upL_t count) {
    raw_to_str<HexRawToStr>(digits, count);
}

void dec_raw_to_str(char* digits, upL_t count) {
    raw_to_str<DecRawToStr>(digits, count);
}

bool hex_str_to_raw(char* digits, upL_t count) {
    return str_to_raw<HexStrToRaw>(digits, count);
}

bool dec_str_to_raw(char* digits, upL_t count) {
    return str_to_raw<DecStrToRaw>(digits, count);
}

}  // namespace znp::CVN
