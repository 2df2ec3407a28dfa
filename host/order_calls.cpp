#include "call_table.h"
#include "request.h"
#include "surveillance/host.h"

namespace survhost {
namespace {

/// The fields of the order that a check may write, where it wrote them.
Json ChangedFields(const tagOrderRequest& before, const tagOrderRequest& after) {
    const Json old = DecodeRecord(before);
    const Json now = DecodeRecord(after);
    Json changed = Json::object();
    for (const char* name : {"price", "orderFlags", "rejectionText"}) {
        if (now.contains(name) && (!old.contains(name) || old[name] != now[name])) changed[name] = now[name];
    }
    return changed;
}

}  // namespace

/// What the call may write back (failed level, flags, price) is read from the request that it was given.
void CallCheckSurveillance(Session& session, const Arguments& arguments, Json& answer) {
    Request request(arguments);
    const std::int16_t probe = arguments.Short("probe");
    const std::uint8_t checksBefore = request.Head()->levelCheckFlags;
    tagOrderRequest orderBefore{};
    if (request.Order()) orderBefore = *request.Order();

    // The first list holds limit rows, or breach rows when the call is a probe.
    LimitRows limitRows(LimitRowOwner(session));
    BreachRows probeRows;
    BreachRows breachRows;
    BreachRows rollbackRows;
    tagOrdErrMessage error{};
    short status = 0;
    answer["result"] = ::CheckSurveillance(request.Head(), &error, &status, probe ? probeRows.Get() : limitRows.Get(),
                                           breachRows.Get(), rollbackRows.Get(), probe);

    const tagSurveillanceInfo& head = *request.Head();
    Put(answer, "status", status);
    PutError(answer, error);
    Put(answer, "failedLevelCode", std::string(TextIn(head.failedLevelCode, sizeof head.failedLevelCode)));
    Put(answer, "failedLevelType", std::int16_t{head.failedLevelType});
    Put(answer, "limitRows", probe ? probeRows.Decode() : limitRows.Decode());
    Put(answer, "breachRows", breachRows.Decode());
    Put(answer, "rollbackRows", rollbackRows.Decode());
    if (request.Order()) Put(answer, "order", ChangedFields(orderBefore, *request.Order()));
    if (head.levelCheckFlags != checksBefore) Put(answer, "levelCheckFlags", head.levelCheckFlags);
}

void CallUpdateSurveillance(Session& session, const Arguments& arguments, Json& answer) {
    Request request(arguments);
    LimitRows limitRows(LimitRowOwner(session));
    BreachRows breachRows;
    tagAdminErrMessage error{};
    answer["result"] =
        ::UpdateSurveillance(request.Head(), &error, limitRows.Get(), breachRows.Get(), arguments.Short("dealerOnly"));
    PutError(answer, error);
    Put(answer, "limitRows", limitRows.Decode());
    Put(answer, "breachRows", breachRows.Decode());
}

}  // namespace survhost
