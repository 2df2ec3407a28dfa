#include "orderpath/hierarchy.h"

#include <algorithm>

#include "service/manager.h"

namespace surv {
namespace {

const HierarchyTest& TestOf(Level level) {
    return *std::find_if(kHierarchyTests.begin(), kHierarchyTests.end(),
                         [level](const HierarchyTest& test) { return test.level == level; });
}

/// In the order of an event's tests.
constexpr std::array kEventTests{Level::kDealer, Level::kGroup,     Level::kFamily,
                                 Level::kClient, Level::kSubClient, Level::kRoot};

/// Where the request keeps the flags of a level.
struct LevelFlags {
    int checkBit;
    int marginBit;
};
LevelFlags FlagsOf(Level level) {
    switch (level) {
        case Level::kSubClient: return {5, 4};
        case Level::kClient: return {4, 3};
        case Level::kFamily: return {3, 2};
        case Level::kDealer: return {2, 1};
        case Level::kGroup: return {1, 0};
        case Level::kRoot: break;
    }
    return {8, 8};  // no such bit in a byte
}

enum class Presence : std::uint8_t { kAbsent, kOptional, kRequired };

Presence PresenceOf(Level level, const tagSurveillanceInfo& request, const tagOrderInfoForSurv& order,
                    bool familiesInForce) {
    const bool ofClient = request.dealerType == level::kClientsDealer && order.proClient != kProClientOwn;
    const int client = request.clientType;
    const int subClient = request.subClientType;
    switch (level) {
        case Level::kSubClient:
            if (!ofClient || subClient == level::kNone) return Presence::kAbsent;
            return familiesInForce && subClient == 2 ? Presence::kOptional : Presence::kRequired;
        case Level::kClient:
            if (!ofClient || client == level::kNone) return Presence::kAbsent;
            return familiesInForce && (client == 2 || client == 3) ? Presence::kOptional : Presence::kRequired;
        case Level::kFamily: return familiesInForce && NamesFamily(request) ? Presence::kRequired : Presence::kAbsent;
        case Level::kDealer:
        case Level::kGroup:
        case Level::kRoot: break;
    }
    return Presence::kRequired;
}

bool WantsLimits(const HierarchyTest& test, const tagSurveillanceInfo& request) {
    switch (test.limitTest) {
        case LimitTest::kCheckFlag: return (request.levelCheckFlags >> test.bit & 1) != 0;
        case LimitTest::kMarginFlag: return (request.levelMarginFlags >> test.bit & 1) != 0;
        case LimitTest::kAlways: break;
    }
    return true;
}

}  // namespace

bool NamesFamily(const tagSurveillanceInfo& request) {
    return FieldText(request.familyCode).substr(0, 5).find_first_not_of(' ') != std::string_view::npos;
}

CodeText LevelCodeOf(Level level, const tagSurveillanceInfo& request) {
    switch (level) {
        case Level::kSubClient: return FieldText(request.subClientCode);
        case Level::kClient: return FieldText(request.clientCode);
        case Level::kFamily: return FieldText(request.familyCode);
        case Level::kDealer: return FieldText(request.dealerCode);
        case Level::kGroup: return FieldText(request.groupCode);
        case Level::kRoot: break;
    }
    return kRootCode;
}

std::int16_t LevelTypeOf(Level level, const tagSurveillanceInfo& request) {
    switch (level) {
        case Level::kSubClient: return request.subClientType;
        case Level::kClient: return request.clientType;
        case Level::kFamily: return level::kFamily;
        case Level::kDealer: return request.dealerType;
        case Level::kGroup: return request.groupType;
        case Level::kRoot: break;
    }
    return -1;
}

bool HasCheckFlag(Level level, const tagSurveillanceInfo& request) {
    return (request.levelCheckFlags >> FlagsOf(level).checkBit & 1) != 0;
}
bool HasMarginFlag(Level level, const tagSurveillanceInfo& request) {
    return (request.levelMarginFlags >> FlagsOf(level).marginBit & 1) != 0;
}

HierarchyRefusal FindEventHierarchy(const CSurveillanceManager& manager, const tagSurveillanceInfo& request,
                                    const tagOrderInfoForSurv& order, bool dealerOnly, CHierarchy& hierarchy) {
    const bool familiesInForce = manager.Context().settings.familyLevelEnabled;
    for (const Level level : kEventTests) {
        const Presence presence = PresenceOf(level, request, order, familiesInForce);
        if (presence == Presence::kAbsent) continue;
        const CodeText code = LevelCodeOf(level, request);
        CSurveillanceCategory* category = manager.FindCategory(code);
        hierarchy.Set(level, category);
        if (!category && presence == Presence::kRequired) return {TestOf(level).unknown, code};
        if (dealerOnly) break;
    }
    return {};
}

HierarchyRefusal FindHierarchy(const CSurveillanceManager& manager, const tagSurveillanceInfo& request,
                               const tagOrderInfoForSurv& order, CHierarchy& hierarchy) {
    const bool familiesInForce = manager.Context().settings.familyLevelEnabled;
    const std::int32_t segmentBit = SegmentToBit(order.marketSegment);
    for (const HierarchyTest& test : kHierarchyTests) {
        const Presence presence = PresenceOf(test.level, request, order, familiesInForce);
        if (presence == Presence::kAbsent) continue;
        const CodeText code = LevelCodeOf(test.level, request);
        CSurveillanceCategory* category = manager.FindCategory(code);
        hierarchy.Set(test.level, category);
        if (presence == Presence::kOptional) continue;
        if (!category) return {test.unknown, code};
        const bool hasLimits = (category->allSecuritiesMask & segmentBit) != 0;
        if (WantsLimits(test, request) && !hasLimits) return {test.notRelevant, code};
    }
    return {};
}

}  // namespace surv
