// Vantorel. MIT licence, see LICENSE.
// Many messages in one text: the form in which a flood of them leaves a page.
#include "platform/linux/script_bundle.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <utility>

#include "platform/portable/script_value_limits.h"

namespace vantorel::gtk {

namespace {

/// Bytes of the UTF-8 character that begins with `lead`.
std::size_t characterSize(char lead) {
    const auto byte = static_cast<unsigned char>(lead);
    return byte < 0x80U ? 1 : byte < 0xE0U ? 2 : byte < 0xF0U ? 3 : 4;
}

class Reader {
public:
    explicit Reader(std::string_view rest) : rest_(rest) {}

    bool atEnd() const { return rest_.empty(); }

    std::optional<ScriptValue> value(std::size_t depth) {
        if (rest_.empty() || valuesLeft_ == 0) {
            return std::nullopt;
        }
        --valuesLeft_;
        const char kind = rest_.front();
        rest_.remove_prefix(1);
        switch (kind) {
        case 'z':
            return ScriptValue{};
        case 't':
        case 'f':
            return ScriptValue{kind == 't'};
        case 'n':
            return number();
        case 's':
            if (auto found = text()) {
                return ScriptValue{cutScriptText(std::move(*found))};
            }
            return std::nullopt;
        case 'l':
            return list(depth);
        case 'd':
            return dictionary(depth);
        default:
            return std::nullopt;
        }
    }

private:
    /// What comes before `end`, which is taken too.
    std::optional<std::string_view> until(char end) {
        const std::size_t position = rest_.find(end);
        if (position == std::string_view::npos) {
            return std::nullopt;
        }
        const std::string_view found = rest_.substr(0, position);
        rest_.remove_prefix(position + 1);
        return found;
    }

    std::optional<std::size_t> count() {
        const auto digits = until(':');
        std::size_t number = 0;
        if (!digits || std::from_chars(digits->data(), digits->data() + digits->size(), number).ec != std::errc{}) {
            return std::nullopt;
        }
        return number;
    }

    std::optional<ScriptValue> number() {
        const auto digits = until(';');
        if (!digits) {
            return std::nullopt;
        }
        double number = std::numeric_limits<double>::quiet_NaN();
        if (*digits == "Infinity" || *digits == "-Infinity") {
            number = digits->front() == '-' ? -HUGE_VAL : HUGE_VAL;
        } else {
            std::from_chars(digits->data(), digits->data() + digits->size(), number);
        }
        return ScriptValue{number};
    }

    std::optional<std::string> text() {
        const auto units = count();
        std::size_t size = 0;
        std::size_t passed = 0;
        while (units && passed < *units && size < rest_.size()) {
            const std::size_t bytes = characterSize(rest_[size]);
            passed += bytes == 4 ? 2 : 1;
            size += bytes;
        }
        if (!units || passed != *units || size > rest_.size()) {
            return std::nullopt;
        }
        std::string found(rest_.substr(0, size));
        rest_.remove_prefix(size);
        return found;
    }

    std::optional<ScriptValue> list(std::size_t depth) {
        const auto size = count();
        ScriptValue::List members;
        for (std::size_t i = 0; size && i < *size; ++i) {
            auto member = depth > 0 ? value(depth - 1) : std::nullopt;
            if (!member) {
                return std::nullopt;
            }
            members.push_back(std::move(*member));
        }
        return size ? std::optional<ScriptValue>(ScriptValue{std::move(members)}) : std::nullopt;
    }

    std::optional<ScriptValue> dictionary(std::size_t depth) {
        const auto size = count();
        ScriptValue::Dictionary members;
        for (std::size_t i = 0; size && i < *size; ++i) {
            auto key = text();
            auto member = key && depth > 0 ? value(depth - 1) : std::nullopt;
            if (!member) {
                return std::nullopt;
            }
            members.insert_or_assign(std::move(*key), std::move(*member));
        }
        return size ? std::optional<ScriptValue>(ScriptValue{std::move(members)}) : std::nullopt;
    }

    std::string_view rest_;
    std::size_t valuesLeft_ = kMaxBundleValues;
};

} // namespace

std::string makeBundleMark() {
    constexpr std::string_view kDigits = "0123456789abcdef";
    constexpr int kDigitCount = 32;
    std::string mark = "vantorel messages ";
    std::random_device source;
    std::uniform_int_distribution<std::size_t> digit(0, kDigits.size() - 1);
    for (int i = 0; i < kDigitCount; ++i) {
        mark += kDigits[digit(source)];
    }
    return mark + ":";
}

std::vector<ScriptValue> messagesFromBundle(std::string_view bundle) {
    std::vector<ScriptValue> messages;
    Reader reader(bundle);
    while (!reader.atEnd()) {
        auto message = reader.value(kMaxScriptValueDepth + 1);
        if (!message) {
            break;
        }
        messages.push_back(std::move(*message));
    }
    return messages;
}

} // namespace vantorel::gtk
