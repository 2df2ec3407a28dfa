#pragma once

#include <memory>

#include "surveillance/containers.h"

namespace surv {

/// Puts a row into a list of the host, which owns it from then on.
template <class Row>
void HandOver(CPtrList& list, std::unique_ptr<Row> row) {
    list.AddTail(row.get());
    static_cast<void>(row.release());
}

/// Hands each record of a host's list to `take`, in order; null elements are passed over.
template <class Record, class Take>
void ForEachRecord(const CPtrList& records, Take take) {
    for (CPtrList::Position at = records.GetHeadPosition(); at;) {
        if (const auto* record = static_cast<const Record*>(records.GetNext(at))) take(*record);
    }
}

}  // namespace surv
