// JsonReader.h: JSON text into a document, the way nlohmann::json::parse reads it, in about half its time.
//
//   nlohmann::json document = JsonReader::Parse(text);   // throws nlohmann::json::parse_error on bad text
#pragma once

#include <string_view>

#include <nlohmann/json.hpp>

namespace Vantel::JsonReader {

// Parse()
//
// The document `text` holds, equal in every value and number kind to what nlohmann::json::parse(text) makes
// (strict, comments not allowed). The reader is quick because it reads each string in one sweep and inserts
// object members at the end of the map when they come in key order, as written files have them. Anything it
// does not take for certain (malformed text, a number out of range, a lone surrogate escape, a NUL byte, very
// deep nesting) is handed to the library's own parser, which then reads it or throws its own
// parse_error with its own position and message.
nlohmann::json Parse(std::string_view text);

// TryRead()
//
// The quick reader alone: true, with the document in `document`, for text it takes; false for text it leaves
// to the library's parser, `document` then being whatever it had read so far.
bool TryRead(std::string_view text, nlohmann::json& document);

}  // namespace Vantel::JsonReader
