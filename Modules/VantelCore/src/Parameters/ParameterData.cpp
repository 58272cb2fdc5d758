#include <Vantel/Parameters/ParameterData.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <climits>
#include <limits>
#include <system_error>
#include <utility>

#include <Vantel/Objects/Object.h>
#include <Vantel/Objects/ObjectCast.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/Parameter.h>

namespace Vantel {
namespace {

std::int64_t TruncateToInt(double value) {
    // Both bounds are exact doubles; NaN fails the test as well.
    if (!(value >= -0x1p63 && value < 0x1p63)) {
        return std::numeric_limits<std::int64_t>::min();
    }
    return static_cast<std::int64_t>(value);
}

std::vector<double> Widen(const std::vector<float>& values) {
    return {values.begin(), values.end()};
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0;  // the library never changes the C locale
}
bool IsWordCharacter(char c) {
    return IsLetter(c) || IsDigit(c) || c == '_';
}
// "," and the white space of the C locale (blank, \t, \n, \v, \f, \r).
bool IsSeparator(char c) {
    return c == ',' || c == ' ' || (c >= '\t' && c <= '\r');
}

// For a number that from_chars matched but a double cannot hold: whether it was too large rather than too
// small, told by the decimal exponent of its first significant digit (at least 308 or below -323).
bool IsTooLarge(std::string_view number) {
    std::size_t i = number.starts_with('-') ? 1 : 0;
    std::int64_t magnitude = 0;
    bool pointSeen = false;
    bool significantSeen = false;
    for (; i < number.size() && (IsDigit(number[i]) || number[i] == '.'); ++i) {
        if (number[i] == '.') {
            pointSeen = true;
        } else if (significantSeen) {
            magnitude += pointSeen ? 0 : 1;
        } else {
            significantSeen = number[i] != '0';
            magnitude -= pointSeen ? 1 : 0;
        }
    }
    std::int64_t exponent = 0;
    bool negative = false;
    if (i < number.size()) {  // "e", then a complete exponent, or from_chars would not have taken the "e"
        negative = number[++i] == '-';
        i += IsDigit(number[i]) ? 0 : 1;
        for (; i < number.size(); ++i) {
            exponent = std::min<std::int64_t>(exponent * 10 + (number[i] - '0'), 1'000'000'000'000);
        }
    }
    return magnitude + (negative ? -exponent : exponent) > 0;
}

// Reads the number that starts at `cursor`: the end of it, or null when none starts there.
const char* ReadNumberAt(std::string_view text, const char* cursor, double& value) {
    const char* end = text.data() + text.size();
    const auto [next, error] = std::from_chars(cursor, end, value, std::chars_format::general);
    if (error != std::errc() && error != std::errc::result_out_of_range) {
        return nullptr;
    }
    // from_chars finds "inf" in "information" and "nan" in "Nancy"; as text those words are no numbers.
    const char* word = *cursor == '-' ? cursor + 1 : cursor;
    if (IsLetter(*word) &&
        ((word != text.data() && IsWordCharacter(word[-1])) || (next != end && IsWordCharacter(*next)))) {
        return nullptr;
    }
    if (error == std::errc::result_out_of_range) {
        const double magnitude = IsTooLarge({cursor, static_cast<std::size_t>(next - cursor)})
                                     ? std::numeric_limits<double>::infinity()
                                     : 0.0;
        value = *cursor == '-' ? -magnitude : magnitude;
    }
    return next;
}

std::vector<double> ReadNumbers(std::string_view text) {
    std::vector<double> numbers;
    const char* end = text.data() + text.size();
    for (const char* cursor = text.data(); cursor < end;) {
        double value = 0.0;
        if (const char* next = ReadNumberAt(text, cursor, value)) {
            numbers.push_back(value);
            cursor = next;
            continue;
        }
        if (!numbers.empty() && !IsSeparator(*cursor)) {
            break;
        }
        ++cursor;
    }
    return numbers;
}

// Shortest round-trip form for doubles, plain decimal for integers.
template <typename T>
std::string JoinNumbers(const std::vector<T>& values) {
    std::string text;
    std::array<char, 32> piece;  // the longest shortest double, "-2.2250738585072014e-308", needs 24
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i != 0) {
            text += ", ";
        }
        const auto [end, error] = std::to_chars(piece.data(), piece.data() + piece.size(), values[i]);
        if (error == std::errc()) {
            text.append(piece.data(), end);
        }
    }
    return text;
}

// The name a reference shows: an operator's or a parameter's own name, any other object's key.
std::string GetDisplayName(const Object& object) {
    if (const auto* op = ObjectCast<Operator>(&object)) {
        return op->GetName();
    }
    if (const auto* parameter = ObjectCast<Parameter>(&object)) {
        return parameter->GetName();
    }
    return object.GetKey();
}

const std::vector<double>& NoFloats() {
    static const std::vector<double> empty;
    return empty;
}

const std::vector<std::int64_t>& NoInts() {
    static const std::vector<std::int64_t> empty;
    return empty;
}

const std::string& NoText() {
    static const std::string empty;
    return empty;
}

}  // namespace

struct ParameterData::Record {
    Type kind = Type::Empty;
    std::vector<double> floats;
    std::vector<std::int64_t> ints;
    // For Floats and Ints a cache that the first GetString fills.
    mutable std::string text;
    Ptr<Object> pointer;
    std::uint64_t columns = 1;
    std::uint64_t rows = 0;

    // The integers are derived from the floats once, here, so that readers never convert.
    static std::unique_ptr<Record> FromFloats(Type kind, std::vector<double> floats, std::uint64_t columns,
                                              std::uint64_t rows) {
        auto record = std::make_unique<Record>();
        record->kind = kind;
        record->ints.resize(floats.size());
        std::transform(floats.begin(), floats.end(), record->ints.begin(), TruncateToInt);
        record->floats = std::move(floats);
        record->columns = columns;
        record->rows = rows;
        return record;
    }
};

ParameterData::ParameterData() = default;

ParameterData::ParameterData(std::unique_ptr<Record> record) : record(std::move(record)) {}

ParameterData::ParameterData(std::nullptr_t) : ParameterData(Ptr<Object>()) {}

ParameterData::ParameterData(const std::vector<float>& values)
    : ParameterData(Record::FromFloats(Type::Floats, Widen(values), 1, values.size())) {}

ParameterData::ParameterData(const std::vector<double>& values)
    : ParameterData(Record::FromFloats(Type::Floats, values, 1, values.size())) {}

ParameterData::ParameterData(const std::vector<float>& values, std::uint64_t columns, std::uint64_t rows)
    : ParameterData(Record::FromFloats(Type::Matrix, Widen(values), columns, rows)) {}

ParameterData::ParameterData(const std::vector<double>& values, std::uint64_t columns, std::uint64_t rows)
    : ParameterData(Record::FromFloats(Type::Matrix, values, columns, rows)) {}

ParameterData::ParameterData(const std::vector<std::int64_t>& values) : record(std::make_unique<Record>()) {
    record->kind = Type::Ints;
    record->floats.assign(values.begin(), values.end());
    record->ints = values;
    record->rows = values.size();
}

ParameterData::ParameterData(std::string_view text)
    : ParameterData(Record::FromFloats(Type::String, ReadNumbers(text), 1, 0)) {
    record->text = text;
    record->rows = record->floats.size();
}

ParameterData::ParameterData(std::string_view text, std::int64_t index)
    : ParameterData(Record::FromFloats(Type::Choice, {static_cast<double>(index)}, 1, 1)) {
    record->ints.front() = index;  // exact, even where the float is not
    record->text = text;
}

ParameterData::ParameterData(const Ptr<Object>& pointer) : record(std::make_unique<Record>()) {
    record->kind = Type::Pointer;
    record->columns = 0;
    if (const Object* object = pointer.Get()) {
        record->pointer = pointer;
        record->text = GetDisplayName(*object);
    }
}

ParameterData::ParameterData(const ParameterData& other)
    : record(other.record != nullptr ? std::make_unique<Record>(*other.record) : nullptr) {}

ParameterData::ParameterData(ParameterData&& other) noexcept = default;

ParameterData& ParameterData::operator=(const ParameterData& other) {
    // Copying the empty value over a value keeps the value, on purpose: the empty value has nothing to give.
    // Moving differs and hands over whatever the source holds.
    if (other.record == nullptr || this == &other) {
        return *this;
    }
    record = std::make_unique<Record>(*other.record);
    return *this;
}

ParameterData& ParameterData::operator=(ParameterData&& other) noexcept = default;

ParameterData::~ParameterData() = default;

ParameterData::Type ParameterData::GetType() const {
    return record != nullptr ? record->kind : Type::Empty;
}

int ParameterData::GetColumnCount() const {
    return record != nullptr ? static_cast<int>(std::min<std::uint64_t>(record->columns, INT_MAX)) : 0;
}

int ParameterData::GetRowCount() const {
    return record != nullptr ? static_cast<int>(std::min<std::uint64_t>(record->rows, INT_MAX)) : 0;
}

const std::vector<double>& ParameterData::GetFloats() const {
    return record != nullptr ? record->floats : NoFloats();
}

const std::vector<std::int64_t>& ParameterData::GetInts() const {
    return record != nullptr ? record->ints : NoInts();
}

double ParameterData::GetFloat(std::size_t index) const {
    if (record == nullptr || index >= record->floats.size()) {
        return 0.0;
    }
    return record->floats[index];
}

double ParameterData::GetFloat(std::uint64_t column, std::uint64_t row) const {
    if (record == nullptr) {
        return 0.0;
    }
    const std::uint64_t rows = record->rows;
    if (rows != 0 && column > (std::numeric_limits<std::uint64_t>::max() - row) / rows) {
        return 0.0;  // the flat index would wrap around
    }
    return GetFloat(static_cast<std::size_t>(column * rows + row));
}

std::int64_t ParameterData::GetInt(std::size_t index) const {
    if (record == nullptr || index >= record->ints.size()) {
        return 0;
    }
    return record->ints[index];
}

const std::string& ParameterData::GetString() const {
    if (record == nullptr) {
        return NoText();
    }
    if (record->text.empty() && record->kind == Type::Floats) {
        record->text = JoinNumbers(record->floats);
    } else if (record->text.empty() && record->kind == Type::Ints) {
        record->text = JoinNumbers(record->ints);
    }
    return record->text;
}

Ptr<Object> ParameterData::GetPointer() const {
    return record != nullptr && record->kind == Type::Pointer ? record->pointer : Ptr<Object>();
}

bool ParameterData::operator==(const ParameterData& other) const {
    if (GetType() != other.GetType()) {
        return false;
    }
    if (record == nullptr) {
        return true;
    }
    const Record& a = *record;
    const Record& b = *other.record;
    switch (a.kind) {
        case Type::Floats:
            return a.floats == b.floats;  // element-wise ==: NaN never equal, 0.0 equal to -0.0
        case Type::Matrix:
            return a.columns == b.columns && a.rows == b.rows && a.floats == b.floats;
        case Type::Ints:
            return a.ints == b.ints;
        case Type::String:
            return a.text == b.text;
        case Type::Choice:
            return a.text == b.text && a.ints == b.ints;
        case Type::Pointer:
            return a.pointer == b.pointer;
        case Type::Empty:
            break;
    }
    return true;
}

}  // namespace Vantel
