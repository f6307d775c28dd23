#include "run/table/RowScanner.h"

#include "platform/values/Numbers.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <optional>
#include <string_view>

namespace orrery {

namespace {

enum CharacterClass : std::uint8_t { Skipped = 1, StartsNumber = 2, WhiteSpace = 4 };

constexpr std::array<std::uint8_t, 256> makeCharacterClasses() {
    std::array<std::uint8_t, 256> classes{};
    for (const char c : std::string_view("\t, \r")) {
        classes[static_cast<unsigned char>(c)] |= Skipped;
    }
    for (const char c : std::string_view("0123456789-.")) {
        classes[static_cast<unsigned char>(c)] |= StartsNumber;
    }
    for (const char c : std::string_view(" \t\n\v\f\r")) {
        classes[static_cast<unsigned char>(c)] |= WhiteSpace;
    }
    return classes;
}

constexpr auto characterClasses = makeCharacterClasses();

bool is(CharacterClass wanted, char c) {
    return (characterClasses[static_cast<unsigned char>(c)] & wanted) != 0;
}

bool isDigit(char c) {
    return static_cast<unsigned char>(c - '0') < 10;
}

// ---- The road of the plain number: up to 18 digits with at most one point, and an exponent of up to two.

constexpr std::size_t longestPlainNumber = 40; // bytes that the plain road may look at from a number's start
constexpr unsigned plainDigits = 18;           // that many never overflow 64 bits; more are counted and refused

constexpr int largestPower = 22; // beyond it a power of ten is not an exact double

constexpr std::array<double, largestPower + 1> powersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                              1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                              1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::array<std::uint64_t, 9> wholePowersOfTen = {1,       10,        100,        1'000,      10'000,
                                                           100'000, 1'000'000, 10'000'000, 100'000'000};

std::uint64_t loadLittleEndian(const char* text) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text, sizeof bytes);
    if constexpr (std::endian::native == std::endian::big) {
        bytes = __builtin_bswap64(bytes);
    }
    return bytes;
}

/// Digits at the front of 8 bytes from which '0' was taken off bitwise (a digit leaves 0 … 9).
unsigned leadingDigits(std::uint64_t bytes) {
    const std::uint64_t others = ((bytes + 0x7676767676767676U) | bytes) & 0x8080808080808080U;
    return others == 0 ? 8U : static_cast<unsigned>(std::countr_zero(others)) / 8U;
}

/// The number that 8 digits write, the first in the lowest byte: pairs, then fours, then all eight at once.
std::uint64_t eightDigits(std::uint64_t digits) {
    digits = digits * 10 + (digits >> 8U);
    const std::uint64_t outer = (digits & 0x000000FF000000FFU) * 0x000F424000000064U;
    const std::uint64_t inner = ((digits >> 16U) & 0x000000FF000000FFU) * 0x0000271000000001U;
    return (outer + inner) >> 32U;
}

/// Appends the digits at the text to the number, at most 16. Returns how many there were.
unsigned takeDigits(const char* text, std::uint64_t& number) {
    unsigned count = 0;
    for (unsigned taken = 8; taken == 8 && count < 16; count += taken) {
        const std::uint64_t bytes = loadLittleEndian(text + count) ^ 0x3030303030303030U;
        taken = leadingDigits(bytes);
        if (taken > 0) {
            number = number * wholePowersOfTen[taken] + eightDigits(bytes << (64U - 8U * taken));
        }
    }
    return count;
}

/// Takes the exponent after an "e" or "E", up to two digits with or without a sign. Returns its length.
std::size_t takeExponent(const char* text, int& exponent) {
    const bool negative = *text == '-';
    const std::size_t sign = negative || *text == '+' ? 1 : 0;
    if (!isDigit(text[sign])) {
        return 0;
    }
    exponent = text[sign] - '0';
    const bool two = isDigit(text[sign + 1]);
    exponent = two ? exponent * 10 + (text[sign + 1] - '0') : exponent;
    exponent = negative ? -exponent : exponent;
    return sign + (two ? 2 : 1);
}

bool isExponentSign(char c) {
    return (c | 0x20) == 'e';
}

/// The number at the text by the short road; length 0 where that road cannot prove its result exact.
/// `longestPlainNumber` bytes must be readable.
ScannedFloat scanPlainNumber(const char* text) {
    const bool negative = *text == '-';
    const char* at = text + (negative ? 1 : 0);
    std::uint64_t number = 0;
    unsigned digits = takeDigits(at, number);
    at += digits;
    unsigned fraction = 0;
    if (*at == '.') {
        fraction = takeDigits(at + 1, number);
        at += fraction > 0 ? 1 + fraction : 0;
    }
    digits += fraction;
    int exponent = 0;
    if (isExponentSign(*at) && digits > 0) {
        const std::size_t length = takeExponent(at + 1, exponent);
        at += length > 0 ? 1 + length : 0;
    }
    // What may follow a number and belong to it (more digits, a bare point, an exponent) is not in yet.
    if (digits == 0 || digits > plainDigits || isDigit(*at) || *at == '.' || isExponentSign(*at)) {
        return {};
    }
    const std::optional<float> value = nearestSingle(number, exponent - static_cast<int>(fraction));
    return value ? ScannedFloat{negative ? -*value : *value, static_cast<std::size_t>(at - text)} : ScannedFloat{};
}

// ---- Cells

class Scanner {
public:
    explicit Scanner(const RowText& row) : m_at(row.begin), m_row(row) {}

    ScannedCell next() {
        skip();
        const bool group = m_at != m_row.end && !is(StartsNumber, *m_at) && passOverToNumber();
        const Cell cell = group ? sum() : number();
        if (m_row.mayBeCut && cell.found && (m_at == m_row.end || isCutExponent())) {
            return {0, false, m_at};
        }
        return {cell.value, cell.found, m_at};
    }

private:
    struct Cell {
        float value = 0;
        bool found = false;
    };

    void skip() {
        while (m_at != m_row.end && is(Skipped, *m_at)) {
            ++m_at;
        }
    }

    /// Returns whether a "{" was among what was passed over.
    bool passOverToNumber() {
        bool brace = false;
        for (; m_at != m_row.end && !is(StartsNumber, *m_at); ++m_at) {
            brace = brace || *m_at == '{';
        }
        return brace;
    }

    Cell number() {
        ScannedFloat scanned;
        if (m_row.readableEnd - m_at >= static_cast<std::ptrdiff_t>(longestPlainNumber) && m_at != m_row.end) {
            scanned = scanPlainNumber(m_at);
        }
        if (scanned.length == 0) {
            scanned = scanFloat({m_at, m_row.end});
        }
        m_at += scanned.length;
        return {scanned.value, scanned.length != 0};
    }

    Cell sum() {
        Cell total;
        for (Cell part = number(); part.found; part = number()) {
            total.value += part.value;
            total.found = true;
            skip();
        }
        return total;
    }

    /// Whether only the beginning of an exponent is left.
    [[nodiscard]] bool isCutExponent() const {
        const std::string_view rest(m_at, m_row.end);
        return rest == "e" || rest == "E" ||
               (rest.size() == 2 && isExponentSign(rest[0]) && (rest[1] == '+' || rest[1] == '-'));
    }

    const char* m_at;
    RowText m_row;
};

} // namespace

std::size_t scanRow(const RowText& row, std::span<float> cells) {
    Scanner scanner(row);
    std::size_t without = 0;
    for (float& value : cells) {
        const ScannedCell cell = scanner.next();
        value = cell.value;
        without += cell.found ? 0U : 1U;
    }
    return without;
}

ScannedCell scanCell(const RowText& row) {
    return Scanner(row).next();
}

/// Both operands are exact doubles, so the result in double precision is the nearest double. It rounds to the nearest
/// single unless it lies half way between two of them, where it may have come to lie by its own rounding.
std::optional<float> nearestSingle(std::uint64_t number, int power) {
    if (number >= (1ULL << 53U) || power < -largestPower || power > largestPower) {
        return std::nullopt;
    }
    const auto whole = static_cast<double>(number);
    const double value = power < 0 ? whole / powersOfTen[static_cast<std::size_t>(-power)]
                                   : whole * powersOfTen[static_cast<std::size_t>(power)];
    if ((std::bit_cast<std::uint64_t>(value) & 0x1FFFFFFFU) == 0x10000000U) {
        return std::nullopt;
    }
    return static_cast<float>(value);
}

bool isIdle(const char* begin, const char* end) {
    return std::none_of(begin, end, [](char c) { return is(StartsNumber, c) || c == '{'; });
}

const char* passOverFields(const char* begin, const char* end, std::size_t& fields) {
    const char* at = begin;
    while (fields > 0) {
        while (at != end && is(WhiteSpace, *at)) {
            ++at;
        }
        if (at == end) {
            return end;
        }
        while (at != end && !is(WhiteSpace, *at)) {
            ++at;
        }
        --fields;
    }
    return at;
}

} // namespace orrery
