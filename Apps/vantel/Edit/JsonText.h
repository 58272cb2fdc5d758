// JsonText.h: compact JSON text written straight into a string, for replies too large to build as a tree
// first: a large graph's tree costs more to allocate and free than to print.
//
//   JsonText out;
//   out.BeginObject(); out.Key("name"); out.String(op.GetName()); out.EndObject();
//   std::string text = out.Take();
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace VantelHost {

// JsonText
//
// Calls follow the document's order; the writer places the commas. Text that is not valid UTF-8 is written
// with replacement characters, as the protocol's other replies do.
class JsonText {
public:
    void BeginObject();
    void EndObject();
    void BeginArray();
    void EndArray();
    void Key(std::string_view key);

    void String(std::string_view text);
    void Number(double number);
    void Integer(std::int64_t number);
    void Boolean(bool flag);
    void Null();
    // Any value, printed by the JSON library.
    void Value(const nlohmann::json& value);

    std::string Take();

private:
    void BeginValue();
    void Open(char bracket);
    void Close(char bracket);
    void Quoted(std::string_view text);

    std::string text;
    // Per open container: whether a member has been written, so the next one needs a comma.
    std::vector<bool> filled;
    bool afterKey = false;
};

}  // namespace VantelHost
