// Files for bench/compare-peers: makeBenchData table PATH ROWS FIELDS VALUES, or makeBenchData model PATH PARTS
// OUTPUTS.

#include "bench/BenchData.h"

#include <charconv>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>
#include <vector>

int main(int count, char** arguments) {
    using namespace orrery;
    const std::vector<std::string_view> words(arguments + 1, arguments + count);
    const auto number = [&words](std::size_t n) {
        std::uint32_t value = 0;
        std::from_chars(words[n].data(), words[n].data() + words[n].size(), value);
        return value;
    };
    if (words.size() == 5 && words[0] == "table") {
        bench::makeOnce(std::string(words[1]), [&](std::ostream& file) {
            bench::writeTable(file, {.rows = number(2), .leadingFields = number(3), .columns = number(4)});
        });
    } else if (words.size() == 4 && words[0] == "model") {
        bench::makeOnce(std::string(words[1]),
                        [&](std::ostream& file) { bench::writeModel(file, number(2), number(3)); });
    } else {
        std::fputs("usage: makeBenchData table PATH ROWS FIELDS VALUES | model PATH PARTS OUTPUTS\n", stderr);
        return 2;
    }
    return 0;
}
