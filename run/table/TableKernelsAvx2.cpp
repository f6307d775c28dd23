#include "run/table/TableKernels.h"

#if defined(__x86_64__)

#include "run/table/RowScanner.h"

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

// The functions that use AVX2 say so one by one: a file compiled for AVX2 as a whole would leave its copies of inline
// functions to all the others, which must run without.
#define ORRERY_AVX2 [[gnu::target("avx2,bmi,popcnt")]]
#define ORRERY_AVX2_INLINE [[gnu::target("avx2,bmi,popcnt"), gnu::always_inline]] inline

namespace orrery {

namespace {

// ---- Borders

struct Masks {
    std::uint64_t borders;
    std::uint64_t lineFeeds;
};

/// The white-space characters differ in their low halves, so each byte is compared with the one that its low half
/// selects.
ORRERY_AVX2_INLINE std::uint32_t borderMask(__m256i bytes) {
    const __m256i byLowHalf =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(' ', 0, 0, 0, 0, 0, 0, 0, 0, '\t', '\n', '\v', '\f', '\r', 0, 0));
    return static_cast<std::uint32_t>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi8(_mm256_shuffle_epi8(byLowHalf, bytes), bytes)));
}

ORRERY_AVX2_INLINE std::uint32_t lineFeedMask(__m256i bytes) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(bytes, _mm256_set1_epi8('\n'))));
}

ORRERY_AVX2_INLINE Masks masksOf(const char* text) {
    const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
    const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text + 32));
    return {borderMask(low) | std::uint64_t{borderMask(high)} << 32U,
            lineFeedMask(low) | std::uint64_t{lineFeedMask(high)} << 32U};
}

/// Writes the positions of the mask's bits. Eight at a time, wanted or not: a loop that ends after each bit's number
/// would be mispredicted every time.
ORRERY_AVX2_INLINE void writePositions(std::uint64_t mask, std::uint32_t at, std::size_t count, std::uint32_t* out) {
    for (std::size_t written = 0; written < count; written += 8) {
        for (std::size_t n = 0; n < 8; ++n) {
            out[written + n] = at + static_cast<std::uint32_t>(_tzcnt_u64(mask));
            mask = _blsr_u64(mask);
        }
    }
}

ORRERY_AVX2 BorderCounts findBorders(const TableText& text, std::uint32_t* borders) {
    BorderCounts counts;
    std::uint64_t carry = 1; // whether a border at the next position has a neighbour
    std::uint64_t neighbours = 0;
    for (std::uint32_t at = text.begin; at < text.end; at += 64) {
        Masks masks = masksOf(text.base + at);
        if (text.end - at < 64) {
            const std::uint64_t inside = (1ULL << (text.end - at)) - 1;
            masks = {masks.borders & inside, masks.lineFeeds & inside};
        }
        neighbours |= masks.borders & (masks.borders << 1U | carry);
        carry = masks.borders >> 63U;
        const auto count = static_cast<std::size_t>(_mm_popcnt_u64(masks.borders));
        counts.lineFeeds += static_cast<std::size_t>(_mm_popcnt_u64(masks.lineFeeds));
        writePositions(masks.borders, at, count, borders + counts.borders);
        counts.borders += count;
    }
    counts.neighbours = neighbours != 0;
    return counts;
}

// ---- Numbers: a token of up to 16 characters, digits with at most one point and a "-" before them

constexpr std::size_t longestToken = 16;
using Bytes16 = std::array<std::uint8_t, 16>;

/// Loaded from byte n on, it keeps the last n bytes of 16.
alignas(32) constexpr std::array<std::uint8_t, 32> keepLast = {
    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

/// Row n closes the gap of the point at byte n by moving up all before it; row 16 is for no point. A point at the end,
/// which may be all there is, stays, and the token is not a simple one.
constexpr std::array<Bytes16, longestToken + 1> makeGapClosers() {
    std::array<Bytes16, longestToken + 1> rows{};
    for (std::uint8_t point = 0; point <= longestToken; ++point) {
        for (std::uint8_t byte = 0; byte < longestToken; ++byte) {
            const bool moves = point + 1U < longestToken && byte <= point;
            rows.at(point).at(byte) = !moves ? byte : byte == 0 ? 0x80 : static_cast<std::uint8_t>(byte - 1);
        }
    }
    return rows;
}
alignas(16) constexpr auto gapClosers = makeGapClosers();

/// What the digits are divided by when the point is at byte n, without and with a "-" before them.
using Divisors = std::array<double, longestToken + 1>;
constexpr std::array<Divisors, 2> divisors = {
    Divisors{1e15, 1e14, 1e13, 1e12, 1e11, 1e10, 1e9, 1e8, 1e7, 1e6, 1e5, 1e4, 1e3, 1e2, 1e1, 1e0, 1e0},
    Divisors{-1e15, -1e14, -1e13, -1e12, -1e11, -1e10, -1e9, -1e8, -1e7, -1e6, -1e5, -1e4, -1e3, -1e2, -1e1, -1e0,
             -1e0}};

constexpr double exactDoubles = 9007199254740992.0; // whole numbers below 2^53 are all doubles

/// A token without its sign, its last characters at the end of 16 bytes that are readable.
struct Token {
    const char* end = nullptr;
    std::size_t length = 0;
    std::size_t negative = 0; // 1: a "-" stands before it
};

/// 1 for a "-", else 0. Calculated, because the flag that a comparison leaves would be put into the low byte of a
/// register that holds the last token's result, and every token wait for the one before.
ORRERY_AVX2_INLINE std::uint32_t isMinus(char c) {
    return ((static_cast<std::uint32_t>(static_cast<unsigned char>(c)) ^ '-') - 1U) >> 31U;
}

ORRERY_AVX2_INLINE Token tokenAt(const char* begin, const char* end) {
    const std::size_t negative = isMinus(*begin);
    return {end, static_cast<std::size_t>(end - begin) - negative, negative};
}

ORRERY_AVX2_INLINE bool hasRightLength(const Token& token) {
    return token.length - 1 < longestToken; // 0 is none
}

ORRERY_AVX2_INLINE __m256i bothOf(const void* low, const void* high) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(low))),
                                   _mm_loadu_si128(static_cast<const __m128i*>(high)), 1);
}

/// The characters of two tokens of the right length less "0", one token in each half of a register, 0 in front of it.
ORRERY_AVX2_INLINE __m256i charactersOf(const Token& low, const Token& high) {
    const __m256i text = bothOf(low.end - longestToken, high.end - longestToken);
    return _mm256_and_si256(_mm256_sub_epi8(text, _mm256_set1_epi8('0')),
                            bothOf(keepLast.data() + low.length, keepLast.data() + high.length));
}

/// Where the points stand in both halves: the first one's place among 16, 16 where there is none.
ORRERY_AVX2_INLINE std::uint32_t pointsIn(__m256i characters) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(characters, _mm256_set1_epi8('.' - '0'))));
}
ORRERY_AVX2_INLINE std::size_t firstPoint(std::uint32_t points) {
    return _tzcnt_u32(points | 1U << longestToken);
}

ORRERY_AVX2_INLINE __m256i closeGaps(__m256i characters, std::size_t lowPoint, std::size_t highPoint) {
    return _mm256_shuffle_epi8(characters, bothOf(gapClosers[lowPoint].data(), gapClosers[highPoint].data()));
}

/// 0 where there are digits only.
ORRERY_AVX2_INLINE __m256i above9(__m256i characters) {
    return _mm256_subs_epu8(characters, _mm256_set1_epi8(9));
}

/// The numbers that each four of 16 digits write, in 32 bits.
ORRERY_AVX2_INLINE __m256i foursOf(__m256i digits) {
    return _mm256_madd_epi16(_mm256_maddubs_epi16(digits, _mm256_set1_epi16(0x010A)), _mm256_set1_epi32(0x00010064));
}

/// The whole numbers that the digits of four tokens write.
ORRERY_AVX2_INLINE __m256d wholeNumbers(__m256i firstTwo, __m256i secondTwo) {
    // Of eight digits each: in the lower half tokens 0 and 2, front and back, in the upper half 1 and 3.
    const __m256i eights =
        _mm256_madd_epi16(_mm256_packus_epi32(foursOf(firstTwo), foursOf(secondTwo)), _mm256_set1_epi32(0x00012710));
    const __m256i ordered = _mm256_permutevar8x32_epi32(eights, _mm256_setr_epi32(0, 4, 2, 6, 1, 5, 3, 7));
    const __m256d front = _mm256_cvtepi32_pd(_mm256_castsi256_si128(ordered));
    const __m256d back = _mm256_cvtepi32_pd(_mm256_extracti128_si256(ordered, 1));
    return _mm256_add_pd(_mm256_mul_pd(front, _mm256_set1_pd(1e8)), back);
}

/// All bits set in a lane whose single is not proved to be the nearest (nearestSingle has the reason).
ORRERY_AVX2_INLINE __m256i unproved(__m256d whole, __m256d quotient) {
    const __m256i cut = _mm256_and_si256(_mm256_castpd_si256(quotient), _mm256_set1_epi64x(0x1FFFFFFF));
    const __m256i halfWay = _mm256_cmpeq_epi64(cut, _mm256_set1_epi64x(0x10000000));
    const __m256d large = _mm256_cmp_pd(whole, _mm256_set1_pd(exactDoubles), _CMP_GE_OQ);
    return _mm256_or_si256(halfWay, _mm256_castpd_si256(large));
}

ORRERY_AVX2_INLINE bool isZero(__m256i bits) {
    return _mm256_testz_si256(bits, bits) != 0;
}

/// One bit for each half that is not all 0.
ORRERY_AVX2_INLINE unsigned nonZeroHalves(__m256i halves) {
    const auto zeros =
        static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(halves, _mm256_setzero_si256())));
    return ((zeros & 0xFFFFU) != 0xFFFFU ? 1U : 0U) | (zeros >> 16U != 0xFFFFU ? 2U : 0U);
}

/// Takes four tokens of the right length as numbers. Returns one bit for each that is none of the simple kind or whose
/// nearest single cannot be proved; its cell does not count.
ORRERY_AVX2_INLINE unsigned takeFour(Token a, Token b, Token c, Token d, float* cells) {
    __m256i ab = charactersOf(a, b);
    __m256i cd = charactersOf(c, d);
    const std::uint32_t pointsOfTwo = pointsIn(ab);
    const std::uint32_t pointsOfOthers = pointsIn(cd);
    const std::size_t points[] = {firstPoint(pointsOfTwo), firstPoint(pointsOfTwo >> 16U), firstPoint(pointsOfOthers),
                                  firstPoint(pointsOfOthers >> 16U)};
    ab = closeGaps(ab, points[0], points[1]);
    cd = closeGaps(cd, points[2], points[3]);
    const __m256d whole = wholeNumbers(ab, cd);
    const __m256d quotient =
        _mm256_div_pd(whole, _mm256_setr_pd(divisors[a.negative][points[0]], divisors[b.negative][points[1]],
                                            divisors[c.negative][points[2]], divisors[d.negative][points[3]]));
    _mm_storeu_ps(cells, _mm256_cvtpd_ps(quotient));
    const __m256i doubtful = unproved(whole, quotient);
    ab = above9(ab);
    cd = above9(cd);
    // Two questions, though both lead to the same: the first is answered long before the division is done.
    if (isZero(_mm256_or_si256(ab, cd)) && isZero(doubtful)) [[likely]] {
        return 0;
    }
    return nonZeroHalves(ab) | nonZeroHalves(cd) << 2U |
           static_cast<unsigned>(_mm256_movemask_pd(_mm256_castsi256_pd(doubtful)));
}

/// Takes the whole token as a number, or nothing of it where it is none of the simple kind.
ORRERY_AVX2 bool takeToken(const char* begin, const char* end, float& value) {
    const Token token = tokenAt(begin, end);
    if (!hasRightLength(token)) {
        return false;
    }
    std::array<float, 4> same{};
    const bool taken = takeFour(token, token, token, token, same.data()) == 0;
    value = same[0];
    return taken;
}

bool isDigit(char c) {
    return static_cast<unsigned char>(c - '0') < 10;
}

/// The same for a token with an exponent as it is mostly written, "e", a sign and two digits.
ORRERY_AVX2 bool takeExponentToken(const char* begin, const char* end, float& value) {
    constexpr std::size_t exponentLength = 4;
    const bool down = end[-3] == '-';
    if ((end[-4] | 0x20) != 'e' || (!down && end[-3] != '+') || !isDigit(end[-2]) || !isDigit(end[-1])) {
        return false;
    }
    const Token token = tokenAt(begin, end - exponentLength);
    if (!hasRightLength(token)) {
        return false;
    }
    __m256i digits = charactersOf(token, token);
    const std::size_t point = firstPoint(pointsIn(digits));
    digits = closeGaps(digits, point, point);
    if (!isZero(above9(digits))) { // what they would write may be negative
        return false;
    }
    const auto whole = static_cast<std::uint64_t>(_mm256_cvtsd_f64(wholeNumbers(digits, digits)));
    const int exponent = (end[-2] - '0') * 10 + (end[-1] - '0');
    const int fraction = point < longestToken ? static_cast<int>(longestToken - 1 - point) : 0;
    const auto nearest = nearestSingle(whole, (down ? -exponent : exponent) - fraction);
    value = token.negative != 0 ? -nearest.value_or(0) : nearest.value_or(0);
    return nearest.has_value();
}

// ---- Rows

/// How far a row is scanned. Passed by value: where its address was taken it would live in memory, and each token wait
/// for the one before.
struct RowCursor {
    const char* at;
    const std::uint32_t* border; // the first at or after `at`
};

/// Behind the border, unless it is the line feed that ends the row, which is never passed.
ORRERY_AVX2_INLINE RowCursor behindBorder(const char* base, const std::uint32_t* border, const std::uint32_t* last) {
    const std::size_t more = border != last ? 1 : 0;
    return {base + *border + more, border + more};
}

struct ExactCell {
    RowCursor next;
    float value;
    bool found;
};

/// A cell by the exact road, and on to the token after it where what is left between makes no difference.
[[gnu::noinline]] ExactCell takeCellExactly(const TableText& text, RowCursor row, const std::uint32_t* last) {
    const ScannedCell cell = scanCell({row.at, text.base + *last, text.base + text.end + tableSlack});
    row.at = cell.end;
    while (row.border != last && text.base + *row.border < row.at) {
        ++row.border;
    }
    if (row.border != last && isIdle(row.at, text.base + *row.border)) {
        row = {text.base + *row.border + 1, row.border + 1};
    }
    return {row, cell.value, cell.found};
}

/// Takes those of the next tokens whose bit is set in `left`, and stops at one that is not a number with or without an
/// exponent. Returns how many of `count` it has passed.
[[gnu::noinline]] std::size_t takeOneByOne(const char* base, const char* at, const std::uint32_t* border, unsigned left,
                                           std::size_t count, float* cells) {
    for (; left != 0; left &= left - 1) {
        const auto n = static_cast<std::size_t>(std::countr_zero(left));
        const char* const begin = n == 0 ? at : base + border[n - 1] + 1;
        const char* const end = base + border[n];
        if (!takeExponentToken(begin, end, cells[n]) && !takeToken(begin, end, cells[n])) {
            return n;
        }
    }
    return count;
}

ORRERY_AVX2_INLINE bool haveRightLength(const Token& a, const Token& b, const Token& c, const Token& d) {
    return ((a.length - 1) | (b.length - 1) | (c.length - 1) | (d.length - 1)) < longestToken;
}

/// The n-th token from the border on; not for the first, which may begin anywhere.
ORRERY_AVX2_INLINE Token tokenBehind(const char* base, const std::uint32_t* border, std::size_t n) {
    return tokenAt(base + border[n - 1] + 1, base + border[n]);
}

/// Takes as many of the next four cells as are simple tokens; 0 where the next one is not.
ORRERY_AVX2_INLINE std::size_t takeNextFour(const char* base, RowCursor row, float* cells) {
    const Token a = tokenAt(row.at, base + row.border[0]);
    const Token b = tokenBehind(base, row.border, 1);
    const Token c = tokenBehind(base, row.border, 2);
    const Token d = tokenBehind(base, row.border, 3);
    if (!haveRightLength(a, b, c, d)) [[unlikely]] {
        return takeOneByOne(base, row.at, row.border, 1, 1, cells);
    }
    const unsigned left = takeFour(a, b, c, d, cells);
    return left == 0 ? 4 : takeOneByOne(base, row.at, row.border, left, 4, cells);
}

/// The same for the last cells of a row, at most three.
ORRERY_AVX2_INLINE std::size_t takeLast(const char* base, const char* at, const std::uint32_t* border,
                                        std::size_t count, float* cells) {
    const Token a = tokenAt(at, base + border[0]);
    const Token b = count > 1 ? tokenBehind(base, border, 1) : a;
    const Token c = count > 2 ? tokenBehind(base, border, 2) : a;
    if (!haveRightLength(a, b, c, a)) [[unlikely]] {
        return takeOneByOne(base, at, border, 1, 1, cells);
    }
    std::array<float, 4> four; // NOLINT(cppcoreguidelines-pro-type-member-init): all are written
    const unsigned left = takeFour(a, b, c, a, four.data()) & ((1U << count) - 1);
    std::copy_n(four.data(), count, cells);
    return left == 0 ? count : takeOneByOne(base, at, border, left, count, cells);
}

ORRERY_AVX2_INLINE std::size_t fillRow(const TableText& text, const std::uint32_t* border, const std::uint32_t* last,
                                       std::span<float> cells) {
    RowCursor row = behindBorder(text.base, border, last);
    std::size_t without = 0;
    for (std::size_t cell = 0; cell < cells.size();) {
        const std::size_t count = std::min(cells.size() - cell, static_cast<std::size_t>(last - row.border) + 1);
        const std::size_t taken = count >= 4 ? takeNextFour(text.base, row, &cells[cell])
                                             : takeLast(text.base, row.at, row.border, count, &cells[cell]);
        if (taken > 0) [[likely]] {
            row = behindBorder(text.base, row.border + taken - 1, last);
            cell += taken;
        } else {
            const ExactCell exact = takeCellExactly(text, row, last);
            cells[cell++] = exact.value;
            without += exact.found ? 0U : 1U;
            row = exact.next;
        }
    }
    return without;
}

ORRERY_AVX2 std::size_t fillRows(const TableText& text, const std::uint32_t* borders, std::span<const RowPlace> rows,
                                 std::span<float> cells, std::size_t& firstWithout) {
    const std::size_t columns = cells.size() / rows.size();
    std::size_t without = 0;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const std::size_t count =
            fillRow(text, borders + rows[row].first, borders + rows[row].last, cells.subspan(row * columns, columns));
        firstWithout = count > 0 && without == 0 ? row : firstWithout;
        without += count;
    }
    return without;
}

} // namespace

const TableKernels* avx2TableKernels() {
    static constexpr TableKernels kernels{"AVX2", findBorders, fillRows};
    static const bool here =
        __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("popcnt");
    return here ? &kernels : nullptr;
}

} // namespace orrery

#else

namespace orrery {

const TableKernels* avx2TableKernels() {
    return nullptr;
}

} // namespace orrery

#endif
