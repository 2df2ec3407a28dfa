#pragma once

// A comma separated file with a line of column names, read row by row. Every complaint names the file and the line.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "script_error.h"

namespace survhost {

/// The cells of a line. One with a comma in it stands in quotes; a quote inside those stands twice.
std::vector<std::string> SplitCells(std::string_view line);

class CsvFile {
 public:
    /// Reads the file, and its first line: it must have each of the columns, which are numbered as they are given here.
    /// The names must outlive the object.
    CsvFile(const std::string& name, std::span<const std::string_view> columns);

    /// Goes to the next row that isn't empty. False: there is none.
    bool Next();

    // Of the present row; a cell that it lacks, or that holds anything else, is a fault.
    [[nodiscard]] const std::string& Cell(std::size_t column) const;
    /// Finite, and 0 or more.
    [[nodiscard]] double Percent(std::size_t column) const;
    [[nodiscard]] std::int32_t Token(std::size_t column) const;
    /// The value read from a cell, or a complaint about what stands there.
    template <class Value>
    [[nodiscard]] Value Checked(std::size_t column, std::optional<Value> value) const {
        if (!value) throw WillNotDo(column);
        return *value;
    }

    [[nodiscard]] RunError Fault(std::string_view what) const;

 private:
    [[nodiscard]] RunError WillNotDo(std::size_t column) const;
    bool ReadLine();

    std::string name_;
    std::span<const std::string_view> columns_;
    std::istringstream text_;
    std::size_t line_ = 0;
    std::vector<std::string> cells_;
    std::vector<std::size_t> places_;  ///< of each column, among the cells
};

/// Plain digits above 0.
std::optional<std::int32_t> TokenIn(std::string_view text);
/// Finite, and 0 or more.
std::optional<double> PercentIn(std::string_view text);

}  // namespace survhost
