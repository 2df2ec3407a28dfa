#include "csv_file.h"

#include <fmt/format.h>

#include <algorithm>

#include "risk_file.h"

namespace survhost {
namespace {

std::string WithoutBlanks(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

}  // namespace

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
    std::transform(cells.begin(), cells.end(), cells.begin(), WithoutBlanks);
    return cells;
}

CsvFile::CsvFile(const std::string& name) : name_(name), lines_(ReadWhole(name)) {
    std::string text;
    if (!NextLine(text)) throw Fault("the file is empty");
    names_ = SplitCells(text);
}

bool CsvFile::NextLine(std::string& text) {
    if (!std::getline(lines_, text)) return false;
    ++line_;
    if (text.ends_with('\r')) text.pop_back();
    return true;
}

bool CsvFile::HasColumn(std::string_view column) const {
    return std::find(names_.begin(), names_.end(), column) != names_.end();
}

std::size_t CsvFile::Column(std::string_view column) const {
    const auto found = std::find(names_.begin(), names_.end(), column);
    if (found == names_.end()) throw Fault(fmt::format("no column \"{}\"", column));
    return static_cast<std::size_t>(found - names_.begin());
}

bool CsvFile::NextRow() {
    for (std::string text; NextLine(text);) {
        if (text.empty()) continue;
        cells_ = SplitCells(text);
        return true;
    }
    return false;
}

const std::string& CsvFile::Cell(std::size_t column) const {
    if (column >= cells_.size()) throw Fault(fmt::format("\"{}\" is missing", names_[column]));
    return cells_[column];
}

RunError CsvFile::Fault(std::string_view what) const {
    constexpr std::size_t kFirst = 1;
    return FileFault(name_, std::max(line_, kFirst), what);
}

RunError CsvFile::Unfit(std::size_t column) const {
    return Fault(fmt::format("\"{}\": {} will not do", names_[column], Cell(column)));
}

}  // namespace survhost
