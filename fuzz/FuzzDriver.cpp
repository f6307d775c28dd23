// A driver for builds without libFuzzer: target [-runs=N] [-first=K] [-dump] FILE...
// Takes every file once, then N mutations of the files. Mutation K is the same in every run; with -dump each input is
// kept in the file "fuzz-input" before it is taken, so that the one that ends the program can be looked at.
#include "FuzzTarget.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct Options {
    std::size_t runs = 0;
    std::size_t first = 0;
    bool dump = false;
    std::vector<std::string> seeds; // the files' bytes
};

Options parseOptions(std::span<char*> arguments) {
    Options options;
    const auto number = [](std::string_view text) {
        std::size_t value = 0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    };
    for (const std::string_view argument : arguments) {
        if (argument.starts_with("-runs=")) {
            options.runs = number(argument.substr(6));
        } else if (argument.starts_with("-first=")) {
            options.first = number(argument.substr(7));
        } else if (argument == "-dump") {
            options.dump = true;
        } else {
            std::ifstream file(std::string(argument), std::ios::binary);
            options.seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        }
    }
    return options;
}

/// What tends to sit at the edges of the formats read here.
// clang-format off
const std::vector<std::string> pieces = {
    "<", ">", "&", ";", "\"", "]]>", "<![CDATA[", "<!--", "&e;", "&#0;", "&#13;", "&#10;", "&#60;", "&#xD800;",
    "<a>", "</a>", "<a/>", " x='1'", "<!DOCTYPE a [", "\xEF\xBB\xBF", "\xFF\xFE", std::string(1, '\0'), "\x8E",
    "é", "\r\n", "\n", "\t", ",", "{", "}", "-", ".", "e", "1e999", "0.1", "nan", "<Output>", "</Output>",
    "<GCD>1</GCD>", "2001-02-30 00:00:00 +0000",
};
// clang-format on

std::string mutated(const Options& options, std::size_t index) {
    std::mt19937_64 random(index);
    const auto below = [&random](std::size_t bound) { return static_cast<std::size_t>(random() % bound); };
    std::string bytes = options.seeds[index % options.seeds.size()];
    for (std::size_t changes = 1 + below(3); changes > 0; --changes) {
        const std::size_t at = below(bytes.size() + 1);
        const std::size_t length = std::min(below(1U << below(8)) + 1, bytes.size() - at);
        switch (below(6)) {
        case 0:
            bytes.insert(at, pieces[below(pieces.size())]);
            break;
        case 1:
            bytes.erase(at, length);
            break;
        case 2:
            bytes.insert(below(bytes.size() + 1), bytes.substr(at, length));
            break;
        case 3:
            bytes.replace(at, length, pieces[below(pieces.size())]);
            break;
        case 4:
            if (at < bytes.size()) bytes[at] = static_cast<char>(random());
            break;
        default:
            if (below(8) == 0) bytes.resize(at);
            break;
        }
    }
    return bytes;
}

void take(const std::string& bytes, bool dump) {
    if (dump) std::ofstream("fuzz-input", std::ios::binary) << bytes;
    LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

} // namespace

int main(int count, char** arguments) {
    const Options options = parseOptions(std::span(arguments + 1, static_cast<std::size_t>(count - 1)));
    if (options.seeds.empty()) {
        std::fputs("Give at least one file to start from.\n", stderr);
        return 2;
    }
    for (const std::string& seed : options.seeds)
        take(seed, options.dump);
    for (std::size_t i = options.first; i < options.first + options.runs; ++i)
        take(mutated(options, i), options.dump);
    std::printf("%zu files and %zu mutations taken\n", options.seeds.size(), options.runs);
    return 0;
}
