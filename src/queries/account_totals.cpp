// Totals over all scrips of a mask: of the category, and of its accounts.

#include "platform/hash_set.h"
#include "platform/host_list.h"
#include "positions/exposure_row.h"
#include "queries/account_forms.h"
#include "queries/category_rows.h"
#include "queries/held_keys.h"

namespace surv {
namespace {

bool HasTraded(const tagSurvPositionData& data) { return data.tradedBuyQty >= 1 || data.tradedSellQty >= 1; }

}  // namespace

CCategoryRows::CCategoryRows(const CSurveillanceCategory& category, std::string_view code, const ProductForm& form,
                             std::int16_t mask, CPtrList& list)
    : category_(category),
      isRoot_(code == kRootCode),
      form_(form),
      mask_(mask),
      list_(list),
      settings_(category.Context().settings),
      period_(CSurveillanceCategory::PeriodOfMask(mask)),
      marketSegment_(LimitMaskToSegment(mask)),
      exchangeMask_(LimitMaskToExchangeMask(mask)),
      lotWeighting_(settings_.mcxLotWeightOn == 1 ? LotWeighting::kOn : LotWeighting::kOff),
      place_{EffectiveLevel(category.lastLevel, LevelGroupOf(marketSegment_)), category.secondLevel} {}

const CClientBook::Side* CCategoryRows::Side() const {
    const CClientBook* book = category_.FindClientBook();
    return book ? &book->Of(period_) : nullptr;
}

const CCategoryRows::Holders* CCategoryRows::FindHolders(const PositionKey& key) const {
    const CClientBook::Side* side = Side();
    return side ? side->positions.scrips.Find(key) : nullptr;
}

CClientExposure* CCategoryRows::FindAccount(std::string_view group, std::string_view account) const {
    CClientExposure* const found = category_.Book(period_).accounts.FindAccount(group, account);
    return found && HoldsAnything(*found) ? found : nullptr;
}

bool CCategoryRows::TrimAccount(HolderCodes& codes) {
    codes.account.Trim();
    return codes.account.View().size() <= kLongestAccount;
}

bool CCategoryRows::TrimCodes(HolderCodes& codes) {
    codes.group.Trim();
    return TrimAccount(codes);
}

/// The accounts of the category stand under six forms.
bool CCategoryRows::SumsByDealer() const {
    const bool dealer = place_.level == 0 || place_.level == kDealerPlace;
    return isRoot_ || (dealer && place_.secondLevel == kDealerPlace);
}

bool CCategoryRows::IsShown(const tagSurvPositionData& data, Shown shown) const {
    if (shown == Shown::kAlways || HasTraded(data)) return true;
    return shown == Shown::kTradedOrOrdered && settings_.orderBasedPosition == 1;
}

std::unique_ptr<BKExposureTag> CCategoryRows::RowOf(const tagSurvPositionData& data) const {
    auto row = std::make_unique<BKExposureTag>();
    FillRowFromPosition(data, *row);
    row->limitMask = mask_;
    return row;
}

void CCategoryRows::AddTotalRow() const {
    const CClientBook* book = category_.FindClientBook();
    const CSurvPosition* total = book ? book->totals.Find(form_.group, mask_) : nullptr;
    if (!total) return;
    const tagSurvPositionData data = total->GetPositionData();
    if (!HasTraded(data)) return;
    auto row = RowOf(data);
    row->token = kAllSecurities;
    row->openPositionValue = data.mtmValue - (data.tradedSellValue - data.tradedBuyValue);
    HandOver(list_, std::move(row));
}

void CCategoryRows::AddAccountTotal(const CClientExposure* account, Shown shown) const {
    const CSurvPosition* total = account ? account->FindSegmentPosition(marketSegment_, form_.group) : nullptr;
    if (!total || !total->data.scripInfo) return;
    const tagSurvPositionData data = total->GetPositionData();
    if (!IsShown(data, shown)) return;
    auto row = RowOf(data);
    row->token = kAllSecurities;
    const SegmentFigures* figures = account->FindSegmentFigures(marketSegment_);
    row->mtmValue = figures ? figures->profitSum - figures->lossSum : 0.0;
    row->openPositionValue = figures ? figures->openValueSum : 0.0;
    HandOver(list_, std::move(row));
}

void CCategoryRows::AddAllAccountTotals() const {
    const CClientBook::Side* side = Side();
    if (!side) return;
    const ProductGroup group = ListOf(period_, form_.product);
    for (const CClientExposure* account : side->lists.Of(group)) AddAccountTotal(account, Shown::kTraded);
}

// ---------------------------------------------------------------------------------------------------------------
// One account

CClientExposure* CCategoryRows::FindTotalled(std::string_view group, std::string_view account) const {
    CClientExposure* const plain = FindAccount(group, account);
    if (!plain) return SumsByDealer() ? FindAccount(group, SixForm(account).View()) : nullptr;
    const auto [level, second] = place_;
    const AccountLevelTypes& types = plain->levelTypes;
    const bool summed = types.client == 1 || types.client == 6;
    if (SumsByDealer()) return summed ? FindAccount(group, SixForm(account).View()) : plain;
    if ((level == kGroupPlace && summed) || ((level == 0 || level == 1) && second == kGroupPlace)) {
        const bool byGroup = (level == kGroupPlace || level == 0) && second == kGroupPlace;
        if (!byGroup || (types.client != 1 && types.subClient != 1)) return plain;
        if (summed) return FindAccount(group, TenForm(account).View());
        return IsTenForm(account) ? plain : nullptr;
    }
    if (!summed && types.group != 6) return plain;
    const bool shown = (types.client == 1 && level == 1) || level == kFamilyPlace || IsSixForm(account) ||
                       (level == kGroupPlace && (types.client == 2 || types.client == 3));
    return shown ? plain : nullptr;
}

CClientExposure* CCategoryRows::FindOwn(std::string_view group, std::string_view account) const {
    const auto [level, second] = place_;
    const bool plainly = account == kEverybodyCode || !isRoot_;
    if (plainly && !(level == kDealerPlace && second == kDealerPlace)) {
        CClientExposure* const plain = FindAccount(group, account);
        const bool summed = settings_.positionMode == 3 && level == kGroupPlace;
        return plain || !summed ? plain : FindAccount(group, TenForm(account).View());
    }
    CClientExposure* const six = FindAccount(group, SixForm(account).View());
    return six ? six : FindAccount(group, TenForm(account).View());
}

void CCategoryRows::AddAccountTotalRows(HolderCodes& codes) const {
    if (codes.account.View() == kEveryAccount) return AddAllAccountTotals();
    if (!TrimCodes(codes)) return;
    AddAccountTotal(FindTotalled(codes.group.View(), codes.account.View()), Shown::kTradedOrOrdered);
}

void CCategoryRows::AddOwnAccountTotalRows(HolderCodes& codes) const {
    if (codes.account.View() == kEveryAccount) return AddAllAccountTotals();
    if (!TrimAccount(codes)) return;
    AddAccountTotal(FindOwn(codes.group.View(), codes.account.View()), Shown::kTraded);
}

// ---------------------------------------------------------------------------------------------------------------
// The accounts that hold a token

void CCategoryRows::AddHolderTotals(HolderCodes& codes, std::int32_t token, Finder find) const {
    const Holders* holders = FindHolders(FamilyKey(token));
    if (!holders) return;
    const Shown shown = find == &CCategoryRows::FindOwn ? Shown::kTraded : Shown::kTradedOrOrdered;
    HashSet<const CClientExposure*> seen;  // an account and its sum may both hold the token
    for (const auto& holder : *holders) {
        if (!holder.value->position.data.scripInfo) continue;
        const auto [group, account] = SplitAccountKey(holder.key.View());
        codes.group.Write(Trimmed(group));
        const CClientExposure* const found = (this->*find)(group, account);
        if (found && seen.Insert(found)) AddAccountTotal(found, shown);
    }
}

void CCategoryRows::AddHolderTotalRows(HolderCodes& codes, std::int32_t token) const {
    AddHolderTotals(codes, token, &CCategoryRows::FindTotalled);
}

void CCategoryRows::AddHolderOwnTotalRows(HolderCodes& codes, std::int32_t token) const {
    AddHolderTotals(codes, token, &CCategoryRows::FindOwn);
}

}  // namespace surv
