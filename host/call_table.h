#pragma once

// The exported functions as data: a name, the names of its arguments, and the few lines that make the call.
//
// To add a call, add its row to the table in call_table.cpp, with a function of a few lines that
//   1. takes the arguments (Short, Long, Text, Record, AddRows; a RowList frees what is the host's at its end),
//   2. sets answer["result"] first, unless the function returns nothing,
//   3. adds the outputs by Put, which leaves out what is at its default.
// Texts for the window join the answer by themselves.

#include <string_view>

#include "arguments.h"
#include "json_record.h"
#include "session.h"

namespace survhost {

struct Call {
    std::string_view name;
    std::string_view arguments;  ///< parted by blanks
    /// Makes the call and puts "result" and the outputs into the answer. Null: the host can't make it yet.
    void (*run)(Session&, const Arguments&, Json& answer);
};

using LimitRows = RowList<BKSurveillanceLimitDefTag>;
using PositionRows = RowList<BKExposureTag>;
using HoldingRows = RowList<tagDPHolding>;
using BreachRows = RowList<tagBreachRow>;
using PreferenceRows = RowList<tagClientRiskPreferenceInfoForSurv>;

inline LimitRows::Owner LimitRowOwner(const Session& session) {
    return session.LiveRows() ? LimitRows::Owner::kLibrary : LimitRows::Owner::kHost;
}

/// Makes the call of a script line and gives its answer. "@clock" gives null: it has no answer.
Json RunCall(Session& session, const Json& line);

/// Adds an output, unless it is at its default: 0, an empty text, an empty list.
void Put(Json& answer, std::string_view name, Json value);

/// Adds the fields of an error record.
template <class ErrorRecord>
void PutError(Json& answer, const ErrorRecord& error) {
    const Json fields = DecodeRecord(error);
    for (const char* name : {"errorCode", "headCode", "errorText"}) {
        if (fields.contains(name)) answer[name] = fields[name];
    }
}

// The two calls with a request of variable length (order_calls.cpp).
void CallCheckSurveillance(Session& session, const Arguments& arguments, Json& answer);
void CallUpdateSurveillance(Session& session, const Arguments& arguments, Json& answer);

// Risk parameters and margin rates (margin_calls.cpp).
void CallProcessRpf(Session& session, const Arguments& arguments, Json& answer);
void CallAdditionalMargin(Session& session, const Arguments& arguments, Json& answer);

}  // namespace survhost
