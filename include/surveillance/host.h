#pragma once

/// @file
/// What a host gives the library besides calls: a window for its texts and, for replay and tests, a clock. And what
/// a host does with the rows it gets.

#include <cstdint>
#include <string_view>

#include "surveillance/containers.h"
#include "surveillance/records.h"
#include "surveillance/surveillance.h"

/// Receives a text: message 1131, wParam 5. It is called on the host's own thread, inside the call that has
/// something to say, and the text is good only until it returns. A function of the library that it calls does nothing
/// and answers its failure, without a text: the call that speaks isn't done yet.
using HostWindowFunction = void (*)(void* context, unsigned message, unsigned wParam, const char* text);

/// A null function drops every text from then on.
SURVEILLANCE_API void SetHostWindow(HostWindowFunction window, void* context) noexcept;

/// Gives calendar seconds (UTC epoch). Like the window's, the function must not call the library.
using HostClockFunction = std::int64_t (*)(void* context);
/// A null function puts the real clock back.
SURVEILLANCE_API void SetHostClock(HostClockFunction clock, void* context) noexcept;

// Rows in lists. Each was made with new of its record type; the host frees them, as here, once it has read them:
//
//   CheckSurveillance     limitRows     BKSurveillanceLimitDefTag, unless live (below); with probe tagBreachRow
//                         rollbackRows  tagBreachRow
//   UpdateSurveillance    limitRows     BKSurveillanceLimitDefTag, unless live
//   AddAndComputeMTM, RecomputeMTM
//                         changedRows   BKSurveillanceLimitDefTag, unless live
//   GetAllSurveillancePositions, CaptureAllSurveillancePositions, DownloadSurvInfo, GetMarketExposure
//                         limit rows    BKSurveillanceLimitDefTag, unless live
//                         position rows BKExposureTag
//   GetNetPositionInfoFromDll           BKExposureTag
//   GetDPPositionInfoFromDll            tagDPHolding
//   GetClientPreferencesInfo            the library's live records: never freed by the host
//
// Live: in positionMode 2 and 3 limit rows in a list are the library's own. Read them before the next call and free
// none; ForgetRows only empties the list.

// The lists of limit and position rows handed to InitializeSurvManager. In positionMode 0 and 1 each row is deleted and
// taken out of its list as it is loaded; after a failed start a list holds the rows not yet taken, the failing one
// first, and they are the host's. In positionMode 2 and 3, or with order-based positions, the rows stay in the list and
// belong to the library from the moment they are loaded until CleanupSurvManager, after which the list's pointers are
// dead: ForgetRows it before a clean-up, and never FreeRows. A start that failed there may be tried again with the same
// lists. No list may hold a row twice.
//
// The lists of securities, holdings and sale-against-receipt shares are read only, in every mode: the host frees their
// rows after the call. They are read once all limit rows are loaded, so a start that failed at a position row is tried
// again without them: holdings of the same ISIN add up.

/// Sets the thirteen limits and eight multipliers of a row to -1, which is none: in a row of zeroes each of them is a
/// limit of 0, which lets nothing pass.
inline void SetNoLimits(BKSurveillanceLimitDefTag& row) {
    row.grossExposureLimit = row.netExposureLimit = row.netSaleExposureLimit = row.netPositionLimit = -1;
    row.turnoverLimit = row.pendingOrderLimit = row.mtmLossLimit = row.marginLimit = -1;
    row.maxSingleOrderValue = row.minSingleOrderValue = -1;
    row.maxSingleOrderQty = row.minSingleOrderQty = row.netQuantityLimit = -1;
    row.grossExposureMultiplier = row.netExposureMultiplier = row.netSaleExposureMultiplier = -1;
    row.netPositionMultiplier = row.turnoverMultiplier = row.pendingOrderMultiplier = -1;
    row.mtmLossMultiplier = row.marginMultiplier = -1;
}

/// A limit row that limits nothing. The host sets those limits that it wants.
inline BKSurveillanceLimitDefTag UnlimitedRow(std::string_view entityCode, std::int32_t token, std::int16_t limitMask) {
    BKSurveillanceLimitDefTag row{};
    entityCode.copy(static_cast<char*>(row.entityCode), sizeof row.entityCode);
    row.token = token;
    row.limitMask = limitMask;
    SetNoLimits(row);
    return row;
}

/// Empties a list and frees its rows.
template <class Row>
void FreeRows(CPtrList& list) {
    while (!list.IsEmpty()) delete static_cast<Row*>(list.RemoveHead());
}

/// Empties a list of live rows.
inline void ForgetRows(CPtrList& list) { list.RemoveAll(); }

/// Enters a record into a map for InitializeAllAdditionalMarginInfo. The map points at it: keep it until after the
/// call.
inline void PutRecord(CMapStringToOb& map, const char* key, tagAdditionalMarginInfo& record) {
    void* const address = &record;
    map.SetAt(key, static_cast<CObject*>(address));
}
