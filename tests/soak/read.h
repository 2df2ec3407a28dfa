#pragma once

// Fields of calls and records in their text form, as they were sent: one that is left out is 0 or empty.

#include <string>

#include "json_record.h"

namespace soak {

using survhost::Json;

template <class Value>
Value Get(const Json& record, const char* name, Value otherwise = {}) {
    const auto found = record.find(name);
    return found == record.end() ? otherwise : found->get<Value>();
}
inline std::string Get(const Json& record, const char* name, const char* otherwise) {
    return Get<std::string>(record, name, otherwise);
}
inline const Json& Part(const Json& line, const char* name) {
    static const Json kNone = Json::object();
    const auto found = line.find(name);
    return found == line.end() ? kNone : *found;
}

}  // namespace soak
