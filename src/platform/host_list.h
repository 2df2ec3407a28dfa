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

/// Hands each row of a host's list to `take`, in order. No list is an empty one, and null elements are passed over.
template <class Row, class Take>
void ForEachRow(const CPtrList* list, Take take) {
    for (CPtrList::Position at = list ? list->GetHeadPosition() : nullptr; at;) {
        if (const auto* row = static_cast<const Row*>(list->GetNext(at))) take(*row);
    }
}

}  // namespace surv
