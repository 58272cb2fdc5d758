// ParameterData.h: the value that parameters of different types exchange.
//
//   ParameterData data("width 12, 3.5");   // kind String
//   data.GetFloats();                       // {12.0, 3.5}
//   data.GetInts();                         // {12, 3}
//   ParameterData(std::vector<double>{0.1, 2}).GetString();  // "0.1, 2"
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Objects/Ptr.h>

namespace Vantel {

// ParameterData
//
// An immutable value that carries one value in several ready-made forms at once: as 64-bit floats, as 64-bit
// integers, as text and, for references, as a weak pointer to an object. A receiver reads whichever form
// suits it without knowing the sender's type; every form is computed at construction except the text of a
// numeric value, which is built on the first GetString and then kept.
//
// It is one pointer wide: the empty value holds no record, so holding or moving one costs nothing. Copies
// duplicate the record and never share state. There is no locking, and because GetString may fill the text
// cache even const use of one value from two threads at once is unsafe; separate copies are independent.
// A Pointer value never keeps its object alive.
//
//   ParameterData transform(values, 4, 4);  // 16 floats, column after column
//   transform.GetFloat(3, 0);                // column 3, row 0: values[12]
class VANTEL_API ParameterData {
public:
    // The numbers are stored and compared as such; they never change.
    enum class Type : std::uint32_t {
        Empty = 0,
        Floats = 1,
        Matrix = 2,
        Ints = 3,
        String = 4,
        Choice = 5,
        Pointer = 6,
    };

    // Empty: no forms at all, 0 x 0.
    ParameterData();
    // Pointer with no referent: a value of its own, not equal to Empty.
    explicit ParameterData(std::nullptr_t);
    // Floats, 1 x count. Each integer is the float truncated toward zero; NaN and floats outside the signed
    // 64-bit range give INT64_MIN (-9223372036854775808).
    explicit ParameterData(const std::vector<float>& values);
    explicit ParameterData(const std::vector<double>& values);
    // Matrix, stored column after column. The counts are kept as given, not checked against the values.
    ParameterData(const std::vector<float>& values, std::uint64_t columns, std::uint64_t rows);
    ParameterData(const std::vector<double>& values, std::uint64_t columns, std::uint64_t rows);
    // Ints, 1 x count.
    explicit ParameterData(const std::vector<std::int64_t>& values);
    // String: the text as given, and the numbers read from it, 1 x count of numbers. Text before the first
    // number is skipped character by character ("width 12" gives 12, "+5" gives 5); after it only "," and
    // white space may separate numbers, and a number may follow another directly ("1-2" gives 1 and -2).
    // Reading stops at any other character ("1;2" gives 1). Numbers are read as std::from_chars reads them in
    // general format: "." as the decimal point, a minus but no plus sign, ".5" allowed. The words "inf",
    // "infinity" and "nan" count only as whole words, so "information" and "Nancy" hold no number. A number
    // too large for a double reads as +-inf, one too small as +-0.
    explicit ParameterData(std::string_view text);
    // Choice: a labelled index, 1 x 1.
    ParameterData(std::string_view text, std::int64_t index);
    // Pointer: the text is the object's display name, taken now. An empty or dead Ptr gives no referent and
    // an empty text.
    explicit ParameterData(const Ptr<Object>& pointer);

    // Copies duplicate the whole record, a text already built included. Copy-assigning the empty value leaves
    // this value unchanged, whereas move-assigning takes the source's record (empty or not) and leaves the
    // source empty.
    ParameterData(const ParameterData& other);
    ParameterData(ParameterData&& other) noexcept;
    ParameterData& operator=(const ParameterData& other);
    ParameterData& operator=(ParameterData&& other) noexcept;
    ~ParameterData();

    Type GetType() const;
    // 0 x 0 for Empty and Pointer. A Matrix count beyond the int range reads as INT_MAX.
    int GetColumnCount() const;
    int GetRowCount() const;

    // The empty value gives one shared empty vector.
    const std::vector<double>& GetFloats() const;
    const std::vector<std::int64_t>& GetInts() const;
    // 0.0 when `index` is not below the number of floats.
    double GetFloat(std::size_t index) const;
    // The float at column * rows + row, 0.0 when that index is not below the number of floats. Only the flat
    // index is checked: a row past the row count reads into the next column.
    double GetFloat(std::uint64_t column, std::uint64_t row) const;
    // 0 when `index` is not below the number of integers.
    std::int64_t GetInt(std::size_t index) const;
    // Floats and Ints build their text here on first use: each value in its shortest round-trip form (plain
    // decimal for Ints), joined by ", ". Matrix never has a text. The empty value gives one shared empty
    // string.
    const std::string& GetString() const;
    // The referenced object for Pointer; an empty Ptr for every other kind.
    Ptr<Object> GetPointer() const;

    // Kinds must match. Floats and Matrix compare their floats as 64-bit floats (NaN never equal, 0.0 equal
    // to -0.0; Matrix also its counts), Ints the integers, String the text, Choice text and index, Pointer
    // the identity of the living referent: once the object died, the value compares like one without
    // referent.
    bool operator==(const ParameterData& other) const;
    bool operator!=(const ParameterData& other) const { return !(*this == other); }

private:
    struct Record;
    explicit ParameterData(std::unique_ptr<Record> record);

    std::unique_ptr<Record> record;
};

}  // namespace Vantel
