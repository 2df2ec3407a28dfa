#pragma once

#include <cstddef>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "script_error.h"

namespace survhost {

/// The cells of a line, without the blanks around them. One that holds a comma stands in quotes, and a quote inside it
/// stands twice.
std::vector<std::string> SplitCells(std::string_view line);

/// A comma separated file with a line of column names, read row by row. Faults are thrown with the line that they
/// stand in.
class CsvFile {
 public:
    /// Reads the names.
    explicit CsvFile(const std::string& name);

    [[nodiscard]] bool HasColumn(std::string_view column) const;
    /// The place of a column that the file must have.
    [[nodiscard]] std::size_t Column(std::string_view column) const;

    /// Goes to the next row that isn't empty. False at the end.
    bool NextRow();
    /// A cell of the row; a fault when the row ends before it.
    [[nodiscard]] const std::string& Cell(std::size_t column) const;
    /// The value read from a cell, or a complaint about what stands there.
    template <class Value>
    [[nodiscard]] Value Checked(std::size_t column, const std::optional<Value>& value) const {
        if (!value) throw Unfit(column);
        return *value;
    }
    [[nodiscard]] RunError Fault(std::string_view what) const;

 private:
    [[nodiscard]] RunError Unfit(std::size_t column) const;
    bool NextLine(std::string& text);

    std::string name_;
    std::istringstream lines_;
    std::size_t line_ = 0;
    std::vector<std::string> names_;
    std::vector<std::string> cells_;
};

}  // namespace survhost
