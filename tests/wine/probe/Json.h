#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "base/Text.h"

/// Writes JSON on one line, piece by piece: the probe's answers are small trees without cycles.
namespace probe {

class Json {
public:
    Json& begin(char bracket) {
        separate();
        out_ += bracket;
        return *this;
    }
    Json& end(char bracket) {
        out_ += bracket;
        return *this;
    }
    Json& key(std::string_view name) {
        quote(name);
        out_ += ':';
        return *this;
    }

    Json& value(base::TextView text) {
        quote(base::toUtf8(text));
        return *this;
    }
    Json& value(std::wstring_view text) { return value(base::Text(text.begin(), text.end())); }
    Json& value(std::string_view utf8) {
        quote(utf8);
        return *this;
    }
    template <class Number>
    requires std::is_arithmetic_v<Number> Json& value(Number number) {
        separate();
        if constexpr (std::is_same_v<Number, bool>) {
            out_ += number ? "true" : "false";
        } else {
            out_ += std::to_string(number);
        }
        return *this;
    }
    Json& null() {
        separate();
        out_ += "null";
        return *this;
    }

    template <class Value>
    Json& field(std::string_view name, const Value& content) {
        return key(name).value(content);
    }

    const std::string& text() const { return out_; }

private:
    /// Adds a comma, except after an opening bracket or a key.
    void separate() {
        if (!out_.empty() && std::string_view("{[:").find(out_.back()) == std::string_view::npos) out_ += ',';
    }

    void quote(std::string_view utf8) {
        static constexpr std::string_view kDigits = "0123456789abcdef";
        separate();
        out_ += '"';
        for (const char c : utf8) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte < 0x20U) {
                out_ += "\\u00";
                out_ += kDigits[byte >> 4U];
                out_ += kDigits[byte & 15U];
                continue;
            }
            if (c == '"' || c == '\\') out_ += '\\';
            out_ += c;
        }
        out_ += '"';
    }

    std::string out_;
};

}  // namespace probe
