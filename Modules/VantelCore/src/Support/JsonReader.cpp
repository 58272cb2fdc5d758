#include "Support/JsonReader.h"

#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <system_error>

namespace Vantel::JsonReader {
namespace {

using nlohmann::json;

// Deeper documents go to the library's parser, which keeps its own stack instead of recursing.
constexpr int kMaxDepth = 256;

bool IsContinuation(unsigned char byte, unsigned char low = 0x80, unsigned char high = 0xBF) {
    return byte >= low && byte <= high;
}

// The length of the well-formed UTF-8 sequence at `at` (RFC 3629: no overlong forms, no surrogates, nothing
// past U+10FFFF), 0 when there is none.
std::size_t Utf8SequenceLength(const char* at, const char* end) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(at[i]); };
    const std::size_t left = static_cast<std::size_t>(end - at);
    const unsigned char lead = byte(0);
    if (lead >= 0xC2 && lead <= 0xDF) {
        return left >= 2 && IsContinuation(byte(1)) ? 2 : 0;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        const unsigned char low = lead == 0xE0 ? 0xA0 : 0x80;
        const unsigned char high = lead == 0xED ? 0x9F : 0xBF;
        return left >= 3 && IsContinuation(byte(1), low, high) && IsContinuation(byte(2)) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const unsigned char low = lead == 0xF0 ? 0x90 : 0x80;
        const unsigned char high = lead == 0xF4 ? 0x8F : 0xBF;
        return left >= 4 && IsContinuation(byte(1), low, high) && IsContinuation(byte(2)) &&
                       IsContinuation(byte(3))
                   ? 4
                   : 0;
    }
    return 0;
}

void AppendUtf8(std::string& text, std::uint32_t codePoint) {
    const auto add = [&text](std::uint32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (codePoint < 0x80) {
        add(codePoint);
    } else if (codePoint < 0x800) {
        add(0xC0 | (codePoint >> 6));
        add(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        add(0xE0 | (codePoint >> 12));
        add(0x80 | ((codePoint >> 6) & 0x3F));
        add(0x80 | (codePoint & 0x3F));
    } else {
        add(0xF0 | (codePoint >> 18));
        add(0x80 | ((codePoint >> 12) & 0x3F));
        add(0x80 | ((codePoint >> 6) & 0x3F));
        add(0x80 | (codePoint & 0x3F));
    }
}

// Reads one document; every step answers false where the text is anything but what it takes for certain,
// and the caller then leaves the whole text to the library's parser.
class Reader {
public:
    explicit Reader(std::string_view text) : at(text.data()), end(text.data() + text.size()) {}

    bool Document(json& document) {
        // A byte order mark is skipped, as the library does; a broken one is no value and fails below.
        if (end - at >= 3 && std::memcmp(at, "\xEF\xBB\xBF", 3) == 0) {
            at += 3;
        }
        SkipSpace();
        if (!Value(document, 0)) {
            return false;
        }
        SkipSpace();
        return at == end;
    }

private:
    bool AtChar(char c) const { return at != end && *at == c; }

    void SkipSpace() {
        while (at != end && (*at == ' ' || *at == '\n' || *at == '\r' || *at == '\t')) {
            ++at;
        }
    }

    bool Value(json& value, int depth) {
        if (at == end) {
            return false;
        }
        switch (*at) {
            case '{':
                return Object(value, depth + 1);
            case '[':
                return Array(value, depth + 1);
            case '"': {
                std::string text;
                if (!String(text)) {
                    return false;
                }
                value = std::move(text);
                return true;
            }
            case 't':
                return Literal("true", value, true);
            case 'f':
                return Literal("false", value, false);
            case 'n':
                return Literal("null", value, nullptr);
            default:
                return Number(value);
        }
    }

    template <typename Result>
    bool Literal(std::string_view word, json& value, Result result) {
        if (static_cast<std::size_t>(end - at) < word.size() ||
            std::memcmp(at, word.data(), word.size()) != 0) {
            return false;
        }
        at += word.size();
        value = result;
        return true;
    }

    // The brackets at `at` and what lies between them: items that `item` reads, separated by commas.
    template <typename ReadItem>
    bool Container(int depth, char close, ReadItem&& item) {
        if (depth > kMaxDepth) {
            return false;
        }
        ++at;
        SkipSpace();
        if (AtChar(close)) {
            ++at;
            return true;
        }
        for (;;) {
            if (!item()) {
                return false;
            }
            SkipSpace();
            if (AtChar(close)) {
                ++at;
                return true;
            }
            if (!AtChar(',')) {
                return false;
            }
            ++at;
            SkipSpace();
        }
    }

    bool Object(json& value, int depth) {
        value = json::object();
        json::object_t& members = value.get_ref<json::object_t&>();
        return Container(depth, '}', [&] {
            std::string key;
            if (!AtChar('"') || !String(key)) {
                return false;
            }
            SkipSpace();
            if (!AtChar(':')) {
                return false;
            }
            ++at;
            SkipSpace();
            // Written files keep members in key order, so the end is the right place nearly always; a key
            // that is there already gets the later value, as with the library's parser.
            return Value(members.insert_or_assign(members.end(), std::move(key), nullptr)->second, depth);
        });
    }

    bool Array(json& value, int depth) {
        value = json::array();
        json::array_t& items = value.get_ref<json::array_t&>();
        return Container(depth, ']', [&] { return Value(items.emplace_back(), depth); });
    }

    // Runs without escapes or multi-byte characters are copied whole.
    bool String(std::string& text) {
        ++at;
        const char* run = at;
        while (at != end) {
            const auto byte = static_cast<unsigned char>(*at);
            if (byte == '"') {
                text.append(run, at);
                ++at;
                return true;
            }
            if (byte == '\\') {
                text.append(run, at);
                if (!Escape(text)) {
                    return false;
                }
                run = at;
            } else if (byte < 0x20) {
                return false;
            } else if (byte < 0x80) {
                ++at;
            } else {
                const std::size_t length = Utf8SequenceLength(at, end);
                if (length == 0) {
                    return false;
                }
                at += length;
            }
        }
        return false;
    }

    bool Escape(std::string& text) {
        ++at;
        if (at == end) {
            return false;
        }
        const char kind = *at++;
        switch (kind) {
            case '"':
            case '\\':
            case '/':
                text.push_back(kind);
                return true;
            case 'b':
                text.push_back('\b');
                return true;
            case 'f':
                text.push_back('\f');
                return true;
            case 'n':
                text.push_back('\n');
                return true;
            case 'r':
                text.push_back('\r');
                return true;
            case 't':
                text.push_back('\t');
                return true;
            case 'u':
                return CodePointEscape(text);
            default:
                return false;
        }
    }

    bool Hex4(std::uint32_t& value) {
        if (end - at < 4) {
            return false;
        }
        const auto [last, error] = std::from_chars(at, at + 4, value, 16);
        if (error != std::errc() || last != at + 4) {
            return false;
        }
        at += 4;
        return true;
    }

    // After "\u": a code point outside the surrogates, or a high and a low surrogate escaped in a row.
    bool CodePointEscape(std::string& text) {
        std::uint32_t codePoint = 0;
        if (!Hex4(codePoint) || (codePoint >= 0xDC00 && codePoint <= 0xDFFF)) {
            return false;
        }
        if (codePoint >= 0xD800 && codePoint <= 0xDBFF) {
            std::uint32_t low = 0;
            if (end - at < 2 || at[0] != '\\' || at[1] != 'u') {
                return false;
            }
            at += 2;
            if (!Hex4(low) || low < 0xDC00 || low > 0xDFFF) {
                return false;
            }
            codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (low - 0xDC00);
        }
        AppendUtf8(text, codePoint);
        return true;
    }

    static bool IsDigit(char c) { return c >= '0' && c <= '9'; }

    // One digit or more; false when there is none.
    bool Digits() {
        if (at == end || !IsDigit(*at)) {
            return false;
        }
        while (at != end && IsDigit(*at)) {
            ++at;
        }
        return true;
    }

    // The number from `start` to here as a `Kind`, when a `Kind` holds it.
    template <typename Kind>
    bool Convert(const char* start, json& value) const {
        Kind number{};
        if (std::from_chars(start, at, number).ec != std::errc()) {
            return false;
        }
        value = number;
        return true;
    }

    // As the library keeps them: an integer that fits as unsigned (no sign) or signed (with one), any other
    // number as a double. One out of a double's range is the library's parser's to decide.
    bool Number(json& value) {
        const char* start = at;
        const bool negative = AtChar('-');
        if (negative) {
            ++at;
        }
        if (AtChar('0')) {
            ++at;
        } else if (!Digits()) {
            return false;
        }
        bool integer = true;
        if (AtChar('.')) {
            ++at;
            if (!Digits()) {
                return false;
            }
            integer = false;
        }
        if (AtChar('e') || AtChar('E')) {
            ++at;
            if (AtChar('+') || AtChar('-')) {
                ++at;
            }
            if (!Digits()) {
                return false;
            }
            integer = false;
        }
        if (integer &&
            (negative ? Convert<std::int64_t>(start, value) : Convert<std::uint64_t>(start, value))) {
            return true;
        }
        return Convert<double>(start, value);
    }

    const char* at;
    const char* end;
};

}  // namespace

nlohmann::json Parse(std::string_view text) {
    json document;
    if (TryRead(text, document)) {
        return document;
    }
    return json::parse(text.begin(), text.end(), nullptr, true, false);
}

bool TryRead(std::string_view text, nlohmann::json& document) {
    return Reader(text).Document(document);
}

}  // namespace Vantel::JsonReader
