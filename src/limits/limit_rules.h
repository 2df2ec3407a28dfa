#pragma once

// The limit rules. A rule is a row of data: which figure, against which limit, how it breaks, who is exempt, the code
// and the texts. A rule set is an ordered list of rules; the order is the order of judgement.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "categories/limit_entry.h"
#include "limits/row_masks.h"
#include "limits/scrip_trial.h"

namespace surv {

/// In the order of judgement.
enum class RuleId : std::uint8_t {
    kNetQuantity,
    kMaxValue,
    kMaxQuantity,
    kMinValue,
    kMinQuantity,
    kIsin,
    kNriDelivery,
    kDeliveryMargin,
    kDeliverySell,
    kMarginPlusMargin,
    kMtfMargin,
    kGross,
    kNet,
    kNetSale,
    kNetPosition,
    kPendingOrder,
    kTurnover,
    kMtmLoss,
    kSquareOffMode,
    kPreAutoSquareOff,
    kAutoSquareOff,
    kMargin,
    kInitialMargin,
    kSpanMargin,
    kNriConversion,
};

/// What a rule may look at for one row.
struct RuleInput {
    RuleSet set;
    const BKSurveillanceLimitDefTag& stored;  ///< the row before the order
    const BKSurveillanceLimitDefTag& now;     ///< the row as it would be after it; its limits are rebuilt
    const tagOrderInfoForSurv& order;
    const ScripTrial& trial;
    RowShape shape;
    double tradedMargin = 0;  ///< rupees, of the row with the order in it; the other two views stand in `now`

    [[nodiscard]] bool GrossBasis() const { return (now.limitOptions & kGrossBasis) != 0; }
};

/// The numbers of one rule at one row: quantities, paise, or for the margin rules rupees.
struct RuleFigures {
    double figure = 0;
    double limit = 0;       ///< what the figure is compared with
    double stored = 0;      ///< what was used before
    double shownLimit = 0;  ///< the limit as the row holds it
};

enum class Breaks : std::uint8_t { kAbove, kBelow, kAlways };
enum class Unit : std::uint8_t { kQuantity, kMoney };
enum class Exempt : std::uint8_t {
    kNobody,
    kSquareOff,
    kSquareOffUnlessNoNetting,
    kSquareOffUnlessNoNettingOrConversion,
};
/// Which numbers a text takes, in its order.
enum class TextNumbers : std::uint8_t { kNone, kLimitFigure, kLimitStoredFigure, kFigureLimit, kFigureLimitStored };

/// A text in its forms: on option scopes, on rows of gross basis and in conversions to delivery the words differ. A
/// null form takes the plain one.
struct RuleText {
    TextNumbers numbers = TextNumbers::kNone;
    const char* plain = nullptr;
    const char* option = nullptr;
    const char* gross = nullptr;
    const char* grossOption = nullptr;
    const char* conversion = nullptr;
};

/// A rule as the page of rules tells it; no order reads this.
struct RuleWords {
    const char* name;
    const char* figure;      ///< what is judged: fields of the row as it would be with the order in it
    const char* limitField;  ///< of the row; empty: none
    const char* when;        ///< beyond the rows and the exemption; empty: always
};

struct tagLimitRule {
    RuleId id;
    RuleWords words;
    std::int16_t code;
    Breaks breaks;
    Unit unit;
    Exempt exempt;
    bool (*applies)(const RuleInput&);  ///< null: always
    RuleFigures (*figures)(const RuleInput&);
    const char* shortText;  ///< null: the long text in every case
    RuleText longText;
    // The report set:
    bool reportOnlyIfRaised;  ///< a row already over its limit isn't reported unless the order raises it
    std::uint8_t breachBitsA;
    std::uint8_t breachBitsB;
    RuleText reportText;
    /// The numbers of the long text where they aren't those of the figures: fills the form. Null: they are.
    std::string (*wordOf)(const RuleInput&, const char* form) = nullptr;
};

/// On which rows a set has a rule.
enum class On : std::uint8_t {
    kNo,
    kYes,         ///< wherever the rule applies
    kOdd,         ///< rows of expiry and settlement
    kSettlement,  ///< rows of cash settlement, alone or with others
};
/// The whole table, in the order of judgement, and where a set has a rule: for the page of rules.
[[nodiscard]] std::span<const tagLimitRule> LimitRules();
[[nodiscard]] On RuleUseOf(RuleSet set, RuleId rule);

// Judging. A figure equal to its limit passes; a figure that isn't a number refuses, and a limit that isn't finite
// counts as exceeded.

/// The first rule of the input's set that the order breaks at the row; null when it breaks none.
[[nodiscard]] const tagLimitRule* FirstBrokenRule(const RuleInput& input);
/// Every rule of the report set that it breaks, in order.
[[nodiscard]] std::vector<const tagLimitRule*> BrokenReportRules(const RuleInput& input);

enum class Wording : std::uint8_t { kShort, kLong };
/// What the set says of a broken rule. `row`: the wording of the row; a set may have its own for a rule.
[[nodiscard]] std::string RefusalText(const tagLimitRule& rule, const RuleInput& input, Wording row);

}  // namespace surv
