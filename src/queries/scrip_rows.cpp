// Positions by scrip: of accounts, of the category, and of whoever holds a token.

#include "platform/host_list.h"
#include "positions/exposure_row.h"
#include "queries/account_forms.h"
#include "queries/category_rows.h"
#include "queries/held_keys.h"

namespace surv {
// ---------------------------------------------------------------------------------------------------------------
// What a walk over all scrips takes

bool CCategoryRows::IsWalked(const PositionKey& key) const {
    const PositionFamily family = WalkFamily(key);
    if (form_.group != ProductGroup::kNormal) return family == form_.family;
    return family == PositionFamily::kPlain || family == PositionFamily::kMarginPlusFirst;
}

bool CCategoryRows::IsNettedWalked(const PositionKey& key) const {
    const PositionFamily family = WalkFamily(key);
    switch (form_.group) {
        case ProductGroup::kNormal: return family != PositionFamily::kDelivery && family != PositionFamily::kMtf;
        case ProductGroup::kMarginPlus: return true;
        case ProductGroup::kDelivery:
        case ProductGroup::kMtf: return family == form_.family;
    }
    return false;
}

bool CCategoryRows::IsHolderWalked(const PositionKey& key) const {
    switch (form_.group) {
        case ProductGroup::kNormal:
        case ProductGroup::kMarginPlus: return key.family == form_.family;
        case ProductGroup::kDelivery: return key.family == form_.family && IsCashExchange(key.exchangeMask);
        case ProductGroup::kMtf: return WalkFamily(key) == form_.family;
    }
    return false;
}

bool CCategoryRows::MeetsSegment(const tagSurvPositionData& data) const {
    return data.scripInfo && (SegmentToBit(data.scripInfo->marketSegment) & mask_ & kSegmentBits) != 0;
}

void CCategoryRows::AddScripRow(CSurvPosition& position, Shown shown, std::string_view account) const {
    if (!position.data.scripInfo) return;
    position.GetMTM(lotWeighting_);
    const tagSurvPositionData data = position.GetPositionData();
    if (shown != Shown::kAlways && !MeetsSegment(data)) return;
    if (!IsShown(data, shown)) return;
    auto row = RowOf(data);
    if (!account.empty()) WriteField(row->accountCode, account);
    HandOver(list_, std::move(row));
}

// ---------------------------------------------------------------------------------------------------------------
// By account

void CCategoryRows::AddHeldPosition(const PositionKey& key, const AccountKey& account, std::string_view code) const {
    const Holders* holders = FindHolders(key);
    CClientPosition* held = holders ? holders->Find(account) : nullptr;
    if (held) AddScripRow(held->position, Shown::kTradedOrOrdered, code);
}

void CCategoryRows::AddPositionRows(std::string_view group, std::string_view account, std::int32_t token) const {
    const AccountKey key = MakeAccountKey(group, account);
    if (token != kAllSecurities) return AddHeldPosition(FamilyKey(token), key, account);
    const CClientExposure* const held = FindAccount(group, account);
    if (!held) return;
    ForEachHeldKey(*held, [&](const PositionKey& scrip) {
        if (IsWalked(scrip)) AddHeldPosition(scrip, key, account);
    });
}

void CCategoryRows::AddAllPositionRows(std::int32_t token) const {
    const CClientBook::Side* side = Side();
    if (!side) return;
    const auto addAll = [this](const Holders& holders) {
        for (const auto& holder : holders) {
            AddScripRow(holder.value->position, Shown::kTradedOrOrdered, SplitAccountKey(holder.key.View()).second);
        }
    };
    if (token != kAllSecurities) {
        if (const Holders* holders = FindHolders(FamilyKey(token))) addAll(*holders);
        return;
    }
    for (const auto& scrip : side->positions.scrips) {
        if (IsWalked(scrip.key)) addAll(*scrip.value);
    }
}

/// The form of an account whose positions are shown; an account may have no code.
std::optional<FixedText<16>> CCategoryRows::ScripRowsForm(std::string_view group, std::string_view account) const {
    using Form = std::optional<FixedText<16>>;
    const FixedText<16> six = SixForm(account);
    const FixedText<16> ten = TenForm(account);
    const auto ifThere = [&](const FixedText<16>& form) {
        return FindAccount(group, form.View()) ? Form{form} : std::nullopt;
    };
    const auto [level, second] = place_;
    const bool dealerOfGroup = level == 0 && second == kGroupPlace;
    const CClientExposure* const plain = FindAccount(group, account);
    if (plain) {
        const std::int16_t client = plain->levelTypes.client;
        if (SumsByDealer()) {
            if (client == 1 || client == 6) return ifThere(six);
            return client == 8 ? ifThere(ten) : Form{account};
        }
        const bool byGroup = dealerOfGroup || level == kGroupPlace;
        return byGroup && client == 1 ? ifThere(ten) : Form{account};
    }
    if (SumsByDealer()) return FindAccount(group, six.View()) ? Form{six} : ifThere(ten);
    return dealerOfGroup || level == kGroupPlace ? ifThere(ten) : std::nullopt;
}

void CCategoryRows::AddAccountScripRows(HolderCodes& codes, std::int32_t token) const {
    const auto [level, second] = place_;
    if (codes.account.View() != kEveryAccount) {
        if (!TrimAccount(codes)) return;
        const auto form = ScripRowsForm(codes.group.View(), codes.account.View());
        if (form) AddPositionRows(codes.group.View(), form->View(), token);
        return;
    }
    if ((level != 1 || second != kDealerPlace) && level != kGroupPlace && !isRoot_) {
        return AddAllPositionRows(token);
    }
    for (const auto& first : category_.Book(period_).accounts.accounts) {  // its sum stands for all
        if (!HoldsAnything(*first.value)) continue;
        const auto [group, account] = SplitAccountKey(first.key.View());
        const FixedText<16> six = SixForm(account);
        if (FindAccount(group, six.View())) AddPositionRows(group, six.View(), token);
        return;
    }
}

// ---------------------------------------------------------------------------------------------------------------
// By category

/// clientLevel: what the category keeps apart of the same scrip; null: nothing, or it doesn't count here.
void CCategoryRows::AddNettedRow(CSurvPosition& position, const CSurvPosition* clientLevel,
                                 std::string_view filter) const {
    position.GetMTM(lotWeighting_);
    tagSurvPositionData data = position.GetPositionData();
    if (clientLevel) {
        CSurvPosition both = *clientLevel;
        both.MergePositionData(data);
        both.GetMTM(lotWeighting_);
        data = both.GetPositionData();
    }
    if (!MeetsSegment(data) || !IsShown(data, Shown::kTraded)) return;
    const bool wanted = filter == kEveryAccount || (data.ownerInfo && data.ownerInfo->accountCode == filter);
    if (wanted) HandOver(list_, RowOf(data));
}

void CCategoryRows::AddCategoryScripRows(std::string_view filter, std::int32_t token) const {
    const PeriodBook& book = category_.Book(period_);
    const CExposureDetails& own = book.exposures;
    const CExposureDetails& clientLevel = book.clientLevelExposures;
    const bool both = place_.level == 0 || place_.level == kDealerPlace;
    const auto find = [](const CExposureDetails& set, const PositionKey& key) {
        CSurvPosition* const position = set.Find(key);
        return position && position->data.scripInfo ? position : nullptr;  // a call that was put back leaves blank ones
    };
    const auto walk = [&](const CExposureDetails& set, auto take) {
        if (token != kAllSecurities) {
            const PositionKey key{exchangeMask_, form_.nettedFamily, token};
            if (CSurvPosition* position = find(set, key)) take(key, *position);
            return;
        }
        for (const auto& position : set.positions) {
            if (position.value->data.scripInfo && IsNettedWalked(position.key)) take(position.key, *position.value);
        }
    };
    walk(own, [&](const PositionKey& key, CSurvPosition& position) {
        AddNettedRow(position, both ? find(clientLevel, key) : nullptr, filter);
    });
    if (!both) return;
    walk(clientLevel, [&](const PositionKey& key, CSurvPosition& position) {
        if (!find(own, key)) AddNettedRow(position, nullptr, filter);
    });
}

// ---------------------------------------------------------------------------------------------------------------
// By token

/// Of a holder that stands under several codes, the others are passed over.
bool CCategoryRows::IsPassedOver(std::string_view account, const tagPositionOwnerInfo* owner) const {
    constexpr std::size_t kLongestPlain = 10;
    const auto [level, second] = place_;
    const std::int16_t client = owner ? owner->clientLevelType : std::int16_t{-1};
    const std::int16_t group = owner ? owner->groupLevelType : std::int16_t{-1};
    const bool byGroup =
        (level == kGroupPlace && (client == 1 || client == 6)) || ((level == 0 || level == 1) && second == kGroupPlace);
    if (!isRoot_ && byGroup) {
        if (account.size() <= kLongestPlain) {
            return IsSixForm(account) && (level == 0 || (level == kGroupPlace && client == 1));
        }
        return (level == kGroupPlace || level == 0) && second == kGroupPlace && !IsTenForm(account);
    }
    if (client != 6 && !(client == 1 && group == 6)) return false;
    const bool ownRows = level == 1 && (second == kGroupPlace || second == kDealerPlace);
    return IsSixForm(account) == ownRows;
}

void CCategoryRows::AddTokenHolderRows(HolderCodes& codes, std::int32_t token) const {
    const CClientBook::Side* side = Side();
    if (!side) return;
    if (token == kAllSecurities) {
        for (const auto& scrip : side->positions.scrips) {
            if (!IsHolderWalked(scrip.key)) continue;
            for (const auto& holder : *scrip.value) AddScripRow(holder.value->position, Shown::kTraded);
        }
        return;
    }
    const Holders* holders = FindHolders(FamilyKey(token));
    if (!holders) return;
    if (codes.account.View() == kEveryAccount) {
        for (const auto& holder : *holders) {
            const std::string_view account = SplitAccountKey(holder.key.View()).second;
            CSurvPosition& position = holder.value->position;
            if (!IsPassedOver(account, position.data.ownerInfo)) AddScripRow(position, Shown::kTraded, account);
        }
        return;
    }
    if (!TrimCodes(codes)) return;
    const std::string_view account = codes.account.View();
    const auto find = [&](std::string_view form) { return holders->Find(MakeAccountKey(codes.group.View(), form)); };
    const auto [level, second] = place_;
    CClientPosition* held = find(account);
    if (!held && !isRoot_ && (level == kGroupPlace || (level == 0 && second == kGroupPlace))) {
        held = find(TenForm(account).View());
    } else if (!held && (isRoot_ || level == kDealerPlace || (level == 0 && second == kDealerPlace))) {
        held = find(SixForm(account).View());
        if (!held) held = find(TenForm(account).View());
    }
    if (held) AddScripRow(held->position, Shown::kAlways);
}

}  // namespace surv
