// DocumentWriters.h: the two ends the project file's rules write to: a JSON tree, or the file's text itself.
//
//   TextWriter writer(4096);                 // or TreeWriter
//   writer.BeginObject(); writer.Key("key"); writer.String(op.GetKey()); writer.EndObject();
//   std::string text = writer.Take();        // what dump(4) of the tree would print
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace Vantel::Serialization::Detail {

// Both writers take the same calls: values in document order, object members with their keys in ascending
// byte order (the order the JSON library's map keeps), each key a literal named just before its value.

// Builds the document as the JSON library's tree. Members are emplaced at the end of their map, which the key
// order makes the right place, so no insertion searches.
class TreeWriter {
public:
    void BeginObject() { Open(nlohmann::json::value_t::object); }
    void EndObject() { open.pop_back(); }
    void BeginArray(std::size_t expected) {
        Open(nlohmann::json::value_t::array).get_ref<nlohmann::json::array_t&>().reserve(expected);
    }
    void EndArray() { open.pop_back(); }

    template <std::size_t Size>
    void Key(const char (&key)[Size]) {
        pendingKey = std::string_view(key, Size - 1);
    }

    void String(std::string_view text) { Add(text); }
    void Float(double number) { Add(number); }
    void Integer(std::int64_t number) { Add(number); }
    void Boolean(bool flag) { Add(flag); }
    void Null() { Add(nullptr); }
    void Value(nlohmann::json value) { Add(std::move(value)); }

    nlohmann::json Take() { return std::move(document); }

private:
    template <typename Argument>
    nlohmann::json& Add(Argument&& argument) {
        if (open.empty()) {
            document = nlohmann::json(std::forward<Argument>(argument));
            return document;
        }
        nlohmann::json& container = *open.back();
        if (container.is_array()) {
            return container.get_ref<nlohmann::json::array_t&>().emplace_back(
                std::forward<Argument>(argument));
        }
        auto& members = container.get_ref<nlohmann::json::object_t&>();
        return members
            .emplace_hint(members.end(), std::piecewise_construct, std::forward_as_tuple(pendingKey),
                          std::forward_as_tuple(std::forward<Argument>(argument)))
            ->second;
    }

    nlohmann::json& Open(nlohmann::json::value_t kind) {
        nlohmann::json& container = Add(kind);
        open.push_back(&container);
        return container;
    }

    nlohmann::json document;
    // The containers being filled, innermost last. Only the innermost grows, so the others' addresses hold.
    std::vector<nlohmann::json*> open;
    std::string_view pendingKey;
};

// Writes the text that dump(4) of the tree would print (4 blanks of indent, non-ASCII text as it is), without
// building the tree. Numbers are printed with the JSON library's own conversion; values the writer does not
// shape itself (arrays and objects inside a value, unusual strings) go through the library's serializer, so
// every byte and every error is the library's.
class TextWriter {
public:
    // `expectedSize` is reserved up front: growing the text copies all that was written and touches twice
    // the memory, while reserve that stays unused is never touched.
    explicit TextWriter(std::size_t expectedSize)
        : serializer(nlohmann::detail::output_adapter<char, std::string>(text), ' ') {
        text.reserve(expectedSize);
    }
    TextWriter(const TextWriter&) = delete;
    TextWriter& operator=(const TextWriter&) = delete;

    void BeginObject() { Open('{', true); }
    void EndObject() { Close('}'); }
    void BeginArray(std::size_t /*expected*/) { Open('[', false); }
    void EndArray() { Close(']'); }

    template <std::size_t Size>
    void Key(const char (&key)[Size]) {
        pendingKey = std::string_view(key, Size - 1);
    }

    void String(std::string_view value) {
        BeginValue();
        if (IsPlain(value)) {
            MakeRoom(value.size() + 2);
            PutInRoom('"');
            PutInRoom(value);
            PutInRoom('"');
        } else {
            Dump(nlohmann::json(value));
        }
    }
    // As the library's serializer prints a number: no JSON number is NaN or infinite, so those are null.
    void Float(double number) {
        if (!std::isfinite(number)) {
            Null();
            return;
        }
        BeginValue();
        std::array<char, 64> digits;
        const char* end = nlohmann::detail::to_chars(digits.data(), digits.data() + digits.size(), number);
        Put(std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data())));
    }
    void Integer(std::int64_t number) {
        BeginValue();
        PutDigits(number);
    }
    void Boolean(bool flag) {
        BeginValue();
        Put(flag ? std::string_view("true") : std::string_view("false"));
    }
    void Null() {
        BeginValue();
        Put("null");
    }
    void Value(const nlohmann::json& value) {
        switch (value.type()) {
            case nlohmann::json::value_t::number_float:
                Float(value.get<double>());
                return;
            case nlohmann::json::value_t::number_integer:
                Integer(value.get<std::int64_t>());
                return;
            case nlohmann::json::value_t::number_unsigned:
                BeginValue();
                PutDigits(value.get<std::uint64_t>());
                return;
            case nlohmann::json::value_t::boolean:
                Boolean(value.get<bool>());
                return;
            case nlohmann::json::value_t::null:
                Null();
                return;
            case nlohmann::json::value_t::string:
                String(value.get_ref<const std::string&>());
                return;
            default:
                BeginValue();
                Dump(value);
        }
    }

    std::string Take() {
        text.resize(written);
        return std::move(text);
    }

private:
    struct Level {
        bool isObject;
        bool isEmpty;
    };

    static constexpr unsigned kIndentStep = 4;
    // Room beyond what is written is made this much at a time, blanked once just before it is written over,
    // so that each piece is a copy into place rather than a call that checks and grows the string.
    static constexpr std::size_t kRoomStep = 4096;

    // Text the library writes unchanged: printable ASCII without quote or backslash. Anything else (escapes,
    // UTF-8 that must be checked) is left to the library.
    static bool IsPlain(std::string_view value) {
        for (const char character : value) {
            const auto byte = static_cast<unsigned char>(character);
            if (byte < 0x20 || byte >= 0x80 || byte == '"' || byte == '\\') {
                return false;
            }
        }
        return true;
    }

    unsigned Indent() const { return static_cast<unsigned>(levels.size()) * kIndentStep; }

    // Every value but the first in its container follows a comma; each sits on its own line, indented, after
    // its key inside an object.
    void BeginValue() {
        if (levels.empty()) {
            return;
        }
        Level& level = levels.back();
        // The comma, the line break and the indent in one piece.
        const std::size_t skipComma = level.isEmpty ? 1 : 0;
        level.isEmpty = false;
        BreakLine(skipComma);
        if (level.isObject) {
            MakeRoom(pendingKey.size() + 4);
            PutInRoom('"');
            PutInRoom(pendingKey);
            PutInRoom(std::string_view("\": "));
        }
    }

    // ",\n" and the current indent, from `skip` characters on.
    void BreakLine(std::size_t skip) {
        static constexpr std::string_view kBreaks =
            ",\n                                                                ";
        const std::size_t length = 2 + Indent();
        if (length <= kBreaks.size()) {
            Put(kBreaks.substr(skip, length - skip));
            return;
        }
        Put(kBreaks.substr(skip, 2 - skip));
        for (std::size_t blank = 0; blank < Indent(); ++blank) {
            Put(' ');
        }
    }

    void Open(char bracket, bool isObject) {
        BeginValue();
        Put(bracket);
        levels.push_back({isObject, true});
    }

    // An empty container closes on its own line ("[]"), a filled one on a new line at its own indent.
    void Close(char bracket) {
        const bool isEmpty = levels.back().isEmpty;
        levels.pop_back();
        if (!isEmpty) {
            BreakLine(1);
        }
        Put(bracket);
    }

    template <typename Number>
    void PutDigits(Number number) {
        std::array<char, 24> digits;
        const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
        Put(std::string_view(digits.data(), static_cast<std::size_t>(result.ptr - digits.data())));
    }

    // The text so far is text[0, written); what lies beyond is room, written over next.
    void MakeRoom(std::size_t size) {
        if (text.size() - written < size) {
            text.resize(written + std::max(size, kRoomStep));
        }
    }
    void PutInRoom(std::string_view piece) {
        std::memcpy(text.data() + written, piece.data(), piece.size());
        written += piece.size();
    }
    void PutInRoom(char character) { text[written++] = character; }
    void Put(std::string_view piece) {
        MakeRoom(piece.size());
        PutInRoom(piece);
    }
    void Put(char character) {
        MakeRoom(1);
        PutInRoom(character);
    }

    // The library's serializer appends to the string itself, so the room is given up first.
    void Dump(const nlohmann::json& value) {
        text.resize(written);
        serializer.dump(value, true, false, kIndentStep, Indent());
        written = text.size();
    }

    std::string text;
    std::size_t written = 0;
    nlohmann::detail::serializer<nlohmann::json> serializer;  // appends to `text`, so declared after it
    std::vector<Level> levels;
    std::string_view pendingKey;
};

}  // namespace Vantel::Serialization::Detail
