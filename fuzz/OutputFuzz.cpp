// An engine's output, any bytes in any pieces, is decoded to the same well-formed text as if it had come at once.
// The first two bytes of an input are the lengths of the pieces, in turns.
#include "FuzzTarget.h"
#include "platform/values/Utf8.h"

#include <algorithm>
#include <string>

namespace {

std::string decodedAtOnce(std::string_view bytes) {
    std::string text;
    for (std::size_t position = 0; position < bytes.size();) {
        orrery::appendUtf8(text, orrery::nextCodePoint(bytes, position));
    }
    return text;
}

std::string decodedInPieces(std::string_view bytes, std::size_t length, std::size_t nextLength) {
    orrery::Utf8Decoder decoder;
    std::string text;
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, length + 1);
        const std::string decoded = decoder.decode(piece);
        orrery::fuzz::require(orrery::isValidUtf8(decoded), "every piece is well-formed by itself");
        text += decoded;
        bytes.remove_prefix(piece.size());
        std::swap(length, nextLength);
    }
    return text + decoder.finish();
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size < 2) return 0;
    const std::string_view bytes = orrery::fuzz::asText(data + 2, size - 2);
    const std::string text = decodedInPieces(bytes, data[0], data[1]);
    orrery::fuzz::require(text == decodedAtOnce(bytes), "the pieces make no difference");
    orrery::fuzz::require(!orrery::isValidUtf8(bytes) || text == bytes, "well-formed text stays as it is");
    const std::string line = orrery::escapedForLine(bytes);
    orrery::fuzz::require(orrery::isValidUtf8(line), "a line is well-formed");
    orrery::fuzz::require(std::ranges::none_of(line, [](char c) { return static_cast<unsigned char>(c) < ' '; }),
                          "a line has no control characters");
    return 0;
}
