// Vantorel. MIT licence, see LICENSE.
// Chunks of server output, and the validation, trimming and splitting of UTF-8 beneath them.
#include "server/relay.h"

#include "platform/portable/text.h"
#include "tests/fuzz/oracle.h"

using namespace vantorel;

namespace {

/// What must hold for any bytes, UTF-8 or not.
void checkPieces(std::string_view text) {
    const std::vector<std::string_view> pieces = splitLines(text);
    fuzz::check(!pieces.empty() && pieces.front().data() == text.data(), "pieces begin where the text does");
    fuzz::check(pieces.back().data() + pieces.back().size() == text.data() + text.size(), "and end where it does");
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        const auto gap = pieces[i].data() - (pieces[i - 1].data() + pieces[i - 1].size());
        fuzz::check(gap >= 1 && gap <= 3, "between two pieces lies one line break");
    }
    for (const std::string_view piece : pieces) {
        fuzz::check(splitLines(piece).size() == 1, "a piece has no line break");
    }
    const std::string_view trimmed = trimWhitespaceAndNewlines(text);
    fuzz::check(trimWhitespaceAndNewlines(trimmed) == trimmed, "trimming twice is trimming once");
    fuzz::check(trimWhitespace(trimmed) == trimmed, "and leaves no blank");
    fuzz::check(text.find(trimmed) != std::string_view::npos, "what is kept is a part of the text");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::textFrom(data, size);
    checkPieces(text);
    const std::optional<std::u32string> characters = fuzz::characters(text);
    fuzz::check(isValidUtf8(text) == characters.has_value(), "both validators agree");
    const std::optional<std::string> line = relayLine(text);
    fuzz::check(line.has_value() == (characters && !text.empty()), "valid chunks that are not empty give an entry");
    if (!line) {
        return 0;
    }
    fuzz::check(fuzz::spelled(*characters) == text, "the oracle spells what it read");
    const std::string kept = fuzz::spelled(fuzz::trimmed(*characters, fuzz::kBlanks + fuzz::kLineBreaks));
    fuzz::check(*line == "🤖 Server: " + kept, "the entry is the prefix and the trimmed chunk");
    fuzz::check(trimWhitespace(text) == fuzz::spelled(fuzz::trimmed(*characters, fuzz::kBlanks)), "both trims agree");
    const std::vector<std::u32string> wanted = fuzz::lines(*characters);
    const std::vector<std::string_view> pieces = splitLines(text);
    fuzz::check(pieces.size() == wanted.size(), "both splits give as many pieces");
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        fuzz::check(pieces[i] == fuzz::spelled(wanted[i]), "both splits give the same pieces");
    }
    return 0;
}
