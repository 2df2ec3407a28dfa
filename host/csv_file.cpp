#include "csv_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "risk_file.h"

namespace survhost {

std::vector<std::string> SplitCells(std::string_view line) {
    std::vector<std::string> cells(1);
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '"' && quoted && i + 1 < line.size() && line[i + 1] == '"') {
            cells.back() += line[++i];
        } else if (line[i] == '"') {
            quoted = !quoted;
        } else if (line[i] == ',' && !quoted) {
            cells.emplace_back();
        } else {
            cells.back() += line[i];
        }
    }
    return cells;
}

CsvFile::CsvFile(const std::string& name, std::span<const std::string_view> columns)
    : name_(name), columns_(columns), text_(ReadWhole(name)) {
    if (!ReadLine()) throw Fault("the file is empty");
    for (const std::string_view column : columns_) {
        const auto found = std::find(cells_.begin(), cells_.end(), column);
        if (found == cells_.end()) throw Fault(fmt::format("no column \"{}\"", column));
        places_.push_back(static_cast<std::size_t>(found - cells_.begin()));
    }
}

bool CsvFile::ReadLine() {
    std::string line;
    if (!std::getline(text_, line)) return false;
    ++line_;
    if (line.ends_with('\r')) line.pop_back();
    cells_ = SplitCells(line);
    return true;
}

bool CsvFile::Next() {
    while (ReadLine()) {
        if (cells_.size() > 1 || !cells_[0].empty()) return true;
    }
    return false;
}

const std::string& CsvFile::Cell(std::size_t column) const {
    if (places_[column] >= cells_.size()) throw Fault(fmt::format("\"{}\" is missing", columns_[column]));
    return cells_[places_[column]];
}

double CsvFile::Percent(std::size_t column) const { return Checked(column, PercentIn(Cell(column))); }
std::int32_t CsvFile::Token(std::size_t column) const { return Checked(column, TokenIn(Cell(column))); }

RunError CsvFile::Fault(std::string_view what) const {
    constexpr std::size_t kFirst = 1;
    return FileFault(name_, std::max(line_, kFirst), what);
}

RunError CsvFile::WillNotDo(std::size_t column) const {
    return Fault(fmt::format("\"{}\": {} will not do", columns_[column], Cell(column)));
}

std::optional<std::int32_t> TokenIn(std::string_view text) {
    std::int32_t token = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), token);
    const bool good = read.ec == std::errc{} && read.ptr == text.data() + text.size() && token > 0;
    return good ? std::optional(token) : std::nullopt;
}

std::optional<double> PercentIn(std::string_view text) {
    const std::optional<double> percent = FiniteNumber(text);
    return percent && *percent >= 0 ? percent : std::nullopt;
}

}  // namespace survhost
