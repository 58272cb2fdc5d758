#include "JsonText.h"

#include <charconv>
#include <cmath>

namespace VantelHost {
namespace {

// Plain text needs no escape and no check: printable ASCII other than the quote and the backslash.
bool IsPlain(std::string_view text) {
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte >= 0x80 || c == '"' || c == '\\') {
            return false;
        }
    }
    return true;
}

}  // namespace

void JsonText::BeginObject() {
    Open('{');
}

void JsonText::EndObject() {
    Close('}');
}

void JsonText::BeginArray() {
    Open('[');
}

void JsonText::EndArray() {
    Close(']');
}

void JsonText::Key(std::string_view key) {
    BeginValue();
    Quoted(key);
    text += ':';
    afterKey = true;
}

void JsonText::String(std::string_view value) {
    BeginValue();
    Quoted(value);
}

void JsonText::Number(double number) {
    if (!std::isfinite(number)) {
        Null();  // JSON has no NaN or infinity; the JSON library prints null for them too
        return;
    }
    BeginValue();
    char buffer[32];
    const std::to_chars_result written = std::to_chars(buffer, buffer + sizeof buffer, number);
    text.append(buffer, written.ptr);
}

void JsonText::Integer(std::int64_t number) {
    BeginValue();
    char buffer[24];
    const std::to_chars_result written = std::to_chars(buffer, buffer + sizeof buffer, number);
    text.append(buffer, written.ptr);
}

void JsonText::Boolean(bool flag) {
    BeginValue();
    text += flag ? "true" : "false";
}

void JsonText::Null() {
    BeginValue();
    text += "null";
}

void JsonText::Value(const nlohmann::json& value) {
    BeginValue();
    text += value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string JsonText::Take() {
    filled.clear();
    afterKey = false;
    return std::move(text);
}

void JsonText::BeginValue() {
    if (afterKey) {
        afterKey = false;
        return;
    }
    if (!filled.empty()) {
        if (filled.back()) {
            text += ',';
        }
        filled.back() = true;
    }
}

void JsonText::Open(char bracket) {
    BeginValue();
    text += bracket;
    filled.push_back(false);
}

void JsonText::Close(char bracket) {
    filled.pop_back();
    text += bracket;
}

void JsonText::Quoted(std::string_view value) {
    if (IsPlain(value)) {
        text += '"';
        text += value;
        text += '"';
    } else {
        text += nlohmann::json(value).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    }
}

}  // namespace VantelHost
