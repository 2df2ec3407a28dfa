#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "json_record.h"
#include "script_error.h"
#include "surveillance/host.h"

namespace survhost {

/// A list handed to the library or filled by it, with rows made by new. What is still in the list at the end is freed,
/// unless the rows are the library's.
template <class Row>
class RowList {
 public:
    enum class Owner : std::uint8_t { kHost, kLibrary };

    explicit RowList(Owner owner = Owner::kHost) : owner_(owner) {}
    RowList(const RowList&) = delete;
    RowList& operator=(const RowList&) = delete;
    ~RowList() {
        if (owner_ == Owner::kHost) FreeRows<Row>(list_);
        ForgetRows(list_);
    }

    /// Rows are made one by one, since whoever owns them deletes them one by one.
    void Add(std::unique_ptr<Row> row) { list_.AddTail(row.release()); }
    /// Told after a call that kept the rows it was handed.
    void SetOwner(Owner owner) { owner_ = owner; }
    [[nodiscard]] CPtrList* Get() { return &list_; }

    /// The rows as an array of objects. Live rows must be decoded before the next call.
    [[nodiscard]] Json Decode() const {
        Json rows = Json::array();
        for (CPtrList::Position at = list_.GetHeadPosition(); at;) {
            if (const auto* row = static_cast<const Row*>(list_.GetNext(at))) rows.push_back(DecodeRecord(*row));
        }
        return rows;
    }

 private:
    CPtrList list_;
    Owner owner_;
};

/// The arguments of one script line. A number or text left out is 0 or empty; a record that a call can't do without
/// is asked for with Record.
class Arguments {
 public:
    /// `known`: the names that the call takes, parted by blanks. Any other key of the line but "call" is refused.
    Arguments(const Json& line, std::string_view known);

    // Each reader complains of a value that isn't of its kind, and asserts that the call table names the argument.

    [[nodiscard]] bool Has(std::string_view name) const { return Find(name) != nullptr; }
    [[nodiscard]] std::int16_t Short(std::string_view name) const { return Number<std::int16_t>(name); }
    [[nodiscard]] std::int32_t Long(std::string_view name) const { return Number<std::int32_t>(name); }
    [[nodiscard]] std::string Text(std::string_view name) const;
    /// A text as the buffer of exactly its size that a char* argument wants.
    [[nodiscard]] std::vector<char> Buffer(std::string_view name) const;
    /// The elements of an array of texts; empty when left out.
    [[nodiscard]] std::vector<std::string> Texts(std::string_view name) const;

    /// A record with every field that the line leaves out at its default.
    template <class RecordType>
    [[nodiscard]] RecordType Record(std::string_view name) const {
        RecordType record{};
        Encode(TableOf<RecordType>(), Need(name), name, reinterpret_cast<char*>(&record));
        return record;
    }
    /// Encodes the record into given bytes, all zero before.
    void RecordInto(const RecordTable& table, std::string_view name, char* record) const {
        Encode(table, Need(name), name, record);
    }

    /// Adds a row for each element of the array; none when it is left out.
    template <class Row>
    void AddRows(std::string_view name, RowList<Row>& rows) const {
        const Json* array = FindArray(name);
        for (std::size_t i = 0; array && i < array->size(); ++i) {
            auto row = std::make_unique<Row>();
            Encode(TableOf<Row>(), (*array)[i], ElementName(name, i), reinterpret_cast<char*>(row.get()));
            rows.Add(std::move(row));
        }
    }

    /// The elements of an array of records; empty when left out.
    template <class RecordType>
    [[nodiscard]] std::vector<RecordType> Records(std::string_view name) const {
        const Json* array = FindArray(name);
        std::vector<RecordType> records(array ? array->size() : 0);
        for (std::size_t i = 0; array && i < array->size(); ++i) {
            Encode(TableOf<RecordType>(), (*array)[i], ElementName(name, i), reinterpret_cast<char*>(&records[i]));
        }
        return records;
    }

    /// Null when the line doesn't give it.
    [[nodiscard]] const Json* Find(std::string_view name) const;
    /// Refuses a line that doesn't give it.
    [[nodiscard]] const Json& Need(std::string_view name) const;

 private:
    template <class Value>
    [[nodiscard]] Value Number(std::string_view name) const {
        const Json* value = Find(name);
        return value ? WholeNumber<Value>(*value, name) : Value{0};
    }
    [[nodiscard]] const Json* FindArray(std::string_view name) const;
    /// "limitList[3]", for complaints.
    static std::string ElementName(std::string_view name, std::size_t index);
    /// Puts the argument's name ahead of a complaint about one of its fields.
    static void Encode(const RecordTable& table, const Json& object, std::string_view name, char* record);

    const Json& line_;
    std::string_view known_;
};

/// `word` is one of the words of `words`, which are parted by single blanks.
bool HasWord(std::string_view words, std::string_view word);

}  // namespace survhost
