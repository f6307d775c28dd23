#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Reading and printing numbers. Nothing here depends on the locale.
namespace orrery {

/// A number scanned from the front of a text.
struct ScannedFloat {
    float value = 0;
    std::size_t length = 0; // characters used; 0 when the text does not begin with a number
};

/// Scans one number at the very start of the text: optional sign, digits with an optional "." fraction (at least one
/// digit), optional exponent (taken only when it has digits). No white space, no hexadecimal, no "inf" or "nan".
/// Rounds to the nearest single; beyond the range of a single the value is ±infinity, below it ±0 or a denormal.
[[nodiscard]] ScannedFloat scanFloat(std::string_view text);

/// Lenient conversion of a setup's text: white space is skipped, then the leading number is taken; 0 without one.
[[nodiscard]] float floatValue(std::string_view text);

/// The shortest decimal text that reads back as the same number; "inf", "-inf" or "nan" when it is not finite.
[[nodiscard]] std::string shortestText(float value);
[[nodiscard]] std::string shortestText(double value);

/// The shortest decimal text that reads back as the same single, as a person writes it: without an exponent from
/// 0.00001 to 1,000,000,000.
[[nodiscard]] std::string plainText(float value);

/// A text that a person typed where one number is wanted.
struct TypedNumber {
    std::optional<float> value; // the number, or
    std::string reason;         // a sentence about why there is none
};

/// Takes exactly one number, white space around it allowed, within the range of a single.
[[nodiscard]] TypedNumber typedNumber(std::string_view text);

/// An amount of bytes as "51 GB", "1.2 MB" or "12 bytes", rounded down.
[[nodiscard]] std::string sizeText(std::uint64_t bytes);

/// The number in groups of three digits: "25,000".
[[nodiscard]] std::string groupedThousands(std::uint64_t number);

/// A pair of numbers in braces, "{ 1, 1 }".
struct Point {
    double x = 0;
    double y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

/// Reads the point form: blanks allowed anywhere around the numbers; a single number is the first of the pair; a text
/// without numbers is (0, 0).
[[nodiscard]] Point pointFromString(std::string_view text);

} // namespace orrery
