// The one entry behind the host's position screens: which rows a query of a kind gets.

#include "queries/net_position.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "platform/hash_set.h"
#include "queries/category_rows.h"
#include "service/manager.h"

namespace surv {
namespace {

// ---------------------------------------------------------------------------------------------------------------
// The table

/// Builds the rows of one category.
using Builder = void (*)(const CCategoryRows& rows, HolderCodes& codes, std::int32_t token);

/// Products that a way of asking serves, and whether each in its own form or all in the default one.
enum class Serves : std::uint8_t { kEveryForm, kUndelivered };

struct Way {
    Builder build = nullptr;  ///< null: no rows
    Serves serves = Serves::kEveryForm;
};

/// What a category code means to a kind.
enum class Reach : std::uint8_t {
    kNothing,   ///< it isn't looked at
    kCategory,  ///< it names one category
    kLevels,    ///< so it does, but "ALL" stands for every category of some levels
};

struct QueryKind {
    int kind;
    Reach reach = Reach::kNothing;
    Way byList{};
    Way byToken{};
    std::span<const std::int16_t> levels{};  ///< of kLevels, in the order of their rows: level + 10 * second level
    bool ofFamilies = false;                 ///< these look a token up by the form's own shift
};

void Total(const CCategoryRows& rows, HolderCodes&, std::int32_t) { rows.AddTotalRow(); }
void AccountTotals(const CCategoryRows& rows, HolderCodes& codes, std::int32_t) { rows.AddAccountTotalRows(codes); }
void OwnTotals(const CCategoryRows& rows, HolderCodes& codes, std::int32_t) { rows.AddOwnAccountTotalRows(codes); }
void HolderTotals(const CCategoryRows& rows, HolderCodes& codes, std::int32_t token) {
    rows.AddHolderTotalRows(codes, token);
}
void HolderOwnTotals(const CCategoryRows& rows, HolderCodes& codes, std::int32_t token) {
    rows.AddHolderOwnTotalRows(codes, token);
}
void CategoryScrips(const CCategoryRows& rows, HolderCodes& codes, std::int32_t token) {
    rows.AddCategoryScripRows(codes.account.View(), token);
}
void AccountScrips(const CCategoryRows& rows, HolderCodes& codes, std::int32_t token) {
    rows.AddAccountScripRows(codes, token);
}
void AccountScripsIfHeld(const CCategoryRows& rows, HolderCodes& codes, std::int32_t token) {
    if (rows.HoldsToken(token)) rows.AddAccountScripRows(codes, token);
}
void TokenHolders(const CCategoryRows& rows, HolderCodes& codes, std::int32_t token) {
    rows.AddTokenHolderRows(codes, token);
}

constexpr std::array<std::int16_t, 11> kHouseLevels{70, 71, 201, 200, 66, 60, 61, 191, 190, 74, 75};
constexpr std::array<std::int16_t, 2> kFamilyLevels{78, 68};

constexpr Way kTotal{&Total};
constexpr Way kAccountScrips{&AccountScrips};
constexpr Way kAccountScripsIfHeld{&AccountScripsIfHeld, Serves::kUndelivered};

constexpr std::array kQueryKinds{
    QueryKind{0, Reach::kCategory, kTotal, kTotal},
    QueryKind{1, Reach::kLevels, kTotal, kTotal, kHouseLevels},
    QueryKind{2},
    QueryKind{3},
    QueryKind{4, Reach::kCategory, {&AccountTotals}, {&HolderTotals, Serves::kUndelivered}},
    QueryKind{5, Reach::kCategory, {&CategoryScrips}, {&CategoryScrips}},
    QueryKind{6, Reach::kCategory, kAccountScrips, kAccountScripsIfHeld},
    QueryKind{7, Reach::kCategory, {&TokenHolders}, {&TokenHolders}},
    QueryKind{8, Reach::kCategory, kTotal, kTotal},
    QueryKind{9, Reach::kLevels, kTotal, kTotal, kFamilyLevels, true},
    QueryKind{10, Reach::kCategory, kTotal, kTotal},
    QueryKind{11, Reach::kCategory, {&OwnTotals, Serves::kUndelivered}, {&HolderOwnTotals, Serves::kUndelivered}},
    QueryKind{12, Reach::kCategory, kAccountScrips, kAccountScripsIfHeld},
};

constexpr bool KindsAreDense() {
    for (std::size_t i = 0; i < kQueryKinds.size(); ++i) {
        if (kQueryKinds[i].kind != static_cast<int>(i)) return false;
    }
    return true;
}
static_assert(KindsAreDense(), "one row per kind, in order");

const QueryKind* FindKind(int kind) {
    const bool known = kind >= 0 && kind < static_cast<int>(kQueryKinds.size());
    return known ? &kQueryKinds[static_cast<std::size_t>(kind)] : nullptr;
}

// ---------------------------------------------------------------------------------------------------------------
// A query

/// The mask that is read for the mask and product of a query; 0: no rows. Deliveries and two-leg orders have no daily
/// side, so that of equity is read as its settlement side; margin funding has none either.
std::int16_t MaskRead(std::int16_t mask, const ProductForm& form) {
    if (LimitMaskToSegment(mask) == 0) return 0;
    if (form.group == ProductGroup::kNormal || (mask & kExpiryBit)) return mask;
    if (form.group == ProductGroup::kMtf || !IsCashExchange(LimitMaskToExchangeMask(mask))) return 0;
    return static_cast<std::int16_t>(mask | kExpiryBit);
}

/// The form that a way serves a product in; null: it gives it no rows.
const ProductForm* FormServed(const Way& way, const ProductForm& form) {
    if (way.serves == Serves::kEveryForm) return &form;
    const bool delivered = form.group == ProductGroup::kDelivery || form.group == ProductGroup::kMarginPlus;
    return delivered ? nullptr : &kDefaultForm;
}

/// Hands each category of the levels to `take`, once.
template <class Take>
void WalkLevels(const CSurveillanceManager& manager, const QueryKind& kind, const NetPositionQuery& query,
                const ProductForm& form, Take take) {
    HashSet<const CSurveillanceCategory*> seen;  // a scrip files a category whose levels have changed under both
    const auto takeOnce = [&](const CSurveillanceCategory& category) {
        if (seen.Insert(&category)) take(category);
    };
    if (!query.byToken) {
        for (const std::int16_t level : kind.levels) {
            const CategoryGroup* group = manager.categoriesByPeriod.Find(level);
            if (!group) continue;
            for (const auto& category : *group) takeOnce(**category.value);
        }
        return;
    }
    if (query.token < 0 || query.token >= kTokenSpan) return;  // its key could be another exchange's
    const int shift = kind.ofFamilies ? form.levelWalkShift : 0;
    const int exchangeMask = LimitMaskToExchangeMask(query.periodicity) + shift;
    const CBroadcastScrip* scrip =
        manager.broadcastHash.Find(PlainKey(static_cast<std::int16_t>(exchangeMask), query.token));
    if (!scrip) return;
    for (const std::int16_t level : kind.levels) {
        const auto* group = scrip->categoriesByLevel.Find(level);
        if (!group) continue;
        for (const CSurveillanceCategory* category : *group) takeOnce(*category);
    }
}

}  // namespace

std::int16_t CSurveillanceManager::GetNetPositionInfoFromDll(NetPositionQuery query, CPtrList& result) const {
    const QueryKind* const kind = FindKind(query.queryKind);
    const ProductForm& form = FormOf(query.product);
    const std::int16_t mask = MaskRead(query.periodicity, form);
    if (!kind || kind->reach == Reach::kNothing || mask == 0) return kDone;

    const Way& way = query.byToken ? kind->byToken : kind->byList;
    const auto addRows = [&](const CSurveillanceCategory& category) {
        const ProductForm* const served = FormServed(way, form);
        if (!served) return;
        const CCategoryRows rows(category, query.categoryCode, *served, mask, result);
        way.build(rows, query.codes, query.token);
    };
    if (kind->reach == Reach::kLevels && query.categoryCode == "ALL") {
        WalkLevels(*this, *kind, query, form, addRows);
        return kDone;
    }
    const CSurveillanceCategory* const category = FindNamed(query.categoryCode);
    if (!category) return kNotDone;
    addRows(*category);
    return kDone;
}

}  // namespace surv
