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

}  // namespace surv
