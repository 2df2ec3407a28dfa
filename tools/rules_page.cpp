// Writes docs/rules.md: every refusal of an order, from the tables that the library judges by. What a table says of a
// limit's field is tried on a row before it is printed.

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>

#include "limits/limit_rules.h"
#include "limits/row_masks.h"
#include "orderpath/hierarchy.h"
#include "orderpath/product_table.h"
#include "shared/refusal_table.h"

namespace {

using namespace surv;  // NOLINT(google-build-using-namespace): a page about that one namespace

// ---------------------------------------------------------------------------------------------------------------
// Words

/// A text as code, its blanks at the ends visible in the quotes.
std::string Quoted(const char* text) { return std::string("`\"").append(text).append("\"`"); }

/// Fields and bits in a cell, where a bar would end it.
std::string Cell(std::string_view text) {
    std::string cell;
    for (const char letter : text) {
        if (letter == '|') cell += '\\';
        cell += letter;
    }
    return cell;
}

const char* SetName(RuleSet set) {
    switch (set) {
        case RuleSet::kGeneral: return "General";
        case RuleSet::kReport: return "Enquiry";
        case RuleSet::kDelivery: return "Delivery";
        case RuleSet::kMarginPlus: return "Margin+";
        case RuleSet::kMtf: return "MTF";
    }
    return "";
}
constexpr std::array kSets{RuleSet::kGeneral, RuleSet::kReport, RuleSet::kDelivery, RuleSet::kMarginPlus,
                           RuleSet::kMtf};
static_assert(kSets.size() == kRuleSetCount);

const char* RowsOf(On on) {
    switch (on) {
        case On::kNo: return "";
        case On::kYes: return "all";
        case On::kOdd: return "expiry";
        case On::kSettlement: return "settlement";
    }
    return "";
}

const char* ExemptionOf(Exempt exempt) {
    switch (exempt) {
        case Exempt::kNobody: return "none";
        case Exempt::kSquareOff: return "square-off";
        case Exempt::kSquareOffUnlessNoNetting: return "square-off, unless buys and sells don't net";
        case Exempt::kSquareOffUnlessNoNettingOrConversion:
            return "square-off, unless buys and sells don't net or the order is a conversion";
    }
    return "";
}

const char* BreaksOf(Breaks breaks) {
    switch (breaks) {
        case Breaks::kAbove: return "above";
        case Breaks::kBelow: return "below";
        case Breaks::kAlways: return "always";
    }
    return "";
}

const char* NumbersOf(TextNumbers numbers) {
    switch (numbers) {
        case TextNumbers::kNone: return "";
        case TextNumbers::kLimitFigure: return "limit, figure";
        case TextNumbers::kLimitStoredFigure: return "limit, before the order, figure";
        case TextNumbers::kFigureLimit: return "figure, limit";
        case TextNumbers::kFigureLimitStored: return "figure, limit, before the order";
    }
    return "";
}

std::string Masks(std::span<const std::int16_t> masks) {
    std::string list;
    for (const std::int16_t mask : masks) list.append(list.empty() ? "" : ", ").append(std::to_string(mask));
    return list;
}

// ---------------------------------------------------------------------------------------------------------------
// Does a rule compare with the limit that its row of the table names?

struct LimitField {
    std::string_view name;
    void (*set)(BKSurveillanceLimitDefTag& row);
};
constexpr int kProbe = 4711;
// NOLINTNEXTLINE(cppcoreguidelines-macro-usage)
#define LIMIT(field)                                                        \
    LimitField {                                                            \
#field, [](BKSurveillanceLimitDefTag & row) { row.field = kProbe; } \
    }
constexpr std::array kLimitFields{
    LIMIT(grossExposureLimit), LIMIT(netExposureLimit),  LIMIT(netSaleExposureLimit), LIMIT(netPositionLimit),
    LIMIT(turnoverLimit),      LIMIT(pendingOrderLimit), LIMIT(mtmLossLimit),         LIMIT(maxSingleOrderValue),
    LIMIT(maxSingleOrderQty),  LIMIT(marginLimit),       LIMIT(netQuantityLimit),     LIMIT(minSingleOrderValue),
    LIMIT(minSingleOrderQty),
};
#undef LIMIT

bool ComparesWith(const tagLimitRule& rule, const LimitField& field) {
    BKSurveillanceLimitDefTag row{};
    field.set(row);
    const tagOrderInfoForSurv order;
    const ScripTrial trial;
    const RuleInput input{RuleSet::kGeneral, row, row, order, trial, RowShape(row.limitMask)};
    return rule.figures(input).shownLimit == kProbe;
}

void TestLimitField(const tagLimitRule& rule) {
    for (const LimitField& field : kLimitFields) {
        if (ComparesWith(rule, field) == (field.name == rule.words.limitField)) continue;
        std::cerr << "rules_page: the rule \"" << rule.words.name << "\" and its field " << field.name << " differ\n";
        std::exit(1);
    }
}

// ---------------------------------------------------------------------------------------------------------------
// The page

void PrintIntroduction() {
    std::cout << R"(# Rules

Written by `./run rules` from the tables of the library; a test compares. Change the tables, not this page.

An order is refused at the first test or rule that it breaks. The tests run in the order of the sections below. Each
text stands as the library forms it: `%.2f` and `%.2lf` are rupees, `%ld` and `%d` quantities, `%s` a text.

)";
}

std::string LimitTestOf(const HierarchyTest& test) {
    switch (test.limitTest) {
        case LimitTest::kCheckFlag: return "bit " + std::to_string(test.bit) + " of levelCheckFlags";
        case LimitTest::kMarginFlag: return "bit " + std::to_string(test.bit) + " of levelMarginFlags";
        case LimitTest::kAlways: break;
    }
    return "always";
}

void PrintHierarchy() {
    std::cout << "## Hierarchy\n\nStatus " << status::kNoLimits << ", code " << code::kNoLimits
              << ", each text as `client|text : CODE `. The second test asks for a row of token " << kAllSecurities
              << " that covers the segment.\n\n| The code names no entity | Its entity has no limits for the segment | "
                 "The second is asked by |\n|---|---|---|\n";
    for (const HierarchyTest& test : kHierarchyTests) {
        std::cout << "| " << Quoted(test.unknown) << " | " << Quoted(test.notRelevant) << " | " << LimitTestOf(test)
                  << " |\n";
    }
    std::cout << '\n';
}

void PrintProducts() {
    std::cout << R"(## Products

What a product is called in the texts of the next section, the value that `productFlags` of a scrip and `allowedProducts`
of a preference hold for it, and whether the holder's preference is asked there. For the other products the preferences
of the client and the dealer are asked at their levels.

| productType | Name | For an own account | Value | Preference asked |
|---|---|---|---|---|
)";
    for (const ProductPolicy& policy : kProducts) {
        const char* own = policy.ownAccountName;
        std::cout << "| " << policy.productType << " | " << policy.name << " | " << (own ? own : policy.name) << " | "
                  << policy.flag << " | " << (own ? "yes" : "no") << " |\n";
    }
    std::cout << '\n';
}

const char* CodesOf(CodeUse use) {
    switch (use) {
        case CodeUse::kNone: return "not written";
        case CodeUse::kErrorCode: return "errorCode";
        case CodeUse::kErrorAndHeadCode: return "errorCode, headCode";
    }
    return "";
}

void PrintOrderRefusals(const RefusalGroup& group, const char* about) {
    std::cout << "## " << group.title << "\n\n"
              << about << "\n\n| When | Text | Status | Code | In |\n|---|---|---|---|---|\n";
    for (const RefusalRow* row : group.rows) {
        std::cout << "| " << Cell(row->when) << " | " << Quoted(row->text) << " | " << row->status << " | ";
        if (row->codeUse != CodeUse::kNone) std::cout << row->code;
        std::cout << " | " << CodesOf(row->codeUse) << " |\n";
    }
    std::cout << '\n';
}

void PrintFundRefusals() {
    std::cout
        << "## " << kFundRefusals.title << "\n\n`RMSFundAllocation` returns " << kNotDone
        << " and writes text and `headCode` into the request. A `requestedFund` of 0 or below, and one that is no "
           "finite number, is a withdrawal.\n\n| When | Text | headCode |\n|---|---|---|\n";
    for (const RefusalRow* row : kFundRefusals.rows) {
        std::cout << "| " << Cell(row->when) << " | " << Quoted(row->text) << " | " << row->code << " |\n";
    }
}

void PrintRuleSets() {
    std::cout << R"(## Limit rules: the sets

Each limit row that covers the order is asked by one set of rules, in the order of the table. General: every order but
those below. Enquiry: the same orders with `probe` 1; each broken rule sets its bit. Delivery and MTF: deliveries,
conversions to delivery and margin funding at the level that counts deliveries (the client; a dealer of type 4 or 45), at
other levels the general rules. Margin+: at every level.

Rows: all; expiry: masks with bit 0 set; settlement: masks )"
              << Masks(kSettlementRows) << ". Margin rows are the masks " << Masks(kMarginRows) << ".\n\n| Rule |";
    for (const RuleSet set : kSets) std::cout << ' ' << SetName(set) << " |";
    std::cout << "\n|---|---|---|---|---|---|\n";
    for (const tagLimitRule& rule : LimitRules()) {
        std::cout << "| " << rule.words.name << " |";
        for (const RuleSet set : kSets) std::cout << ' ' << RowsOf(RuleUseOf(set, rule.id)) << " |";
        std::cout << '\n';
    }
    std::cout << '\n';
}

std::string BitsOf(const tagLimitRule& rule) {
    std::ostringstream bits;
    if (rule.breachBitsA) bits << "A " << int{rule.breachBitsA};
    if (rule.breachBitsB) bits << "B " << int{rule.breachBitsB};
    return bits.str();
}

void PrintRules() {
    std::cout << R"(## Limit rules: figure and limit

A limit of -1 is none. A figure equal to its limit passes; a figure that is no number is refused. Figures are the row's as
they would be with the order in it, in paise; quantities are counts; the margin rules compare rupees with `marginLimit` /
100. Square-off: a buy after which all buys, open ones too, are no more than what was sold is exempt, and a sell the other
way round; on gross basis the account's own position tells. In an enquiry a rule marked "raised" is reported only if the order raises the figure.

| Rule | Figure | Breaks | Limit | Tried on | Exempt | Code | Bit |
|---|---|---|---|---|---|---|---|
)";
    for (const tagLimitRule& rule : LimitRules()) {
        const RuleWords& words = rule.words;
        std::cout << "| " << words.name << " | " << Cell(words.figure) << " | " << BreaksOf(rule.breaks) << " | "
                  << (*words.limitField ? "`" + std::string(words.limitField) + "`" : "") << " | " << Cell(words.when)
                  << " | " << ExemptionOf(rule.exempt) << " | " << rule.code << " | " << BitsOf(rule)
                  << (rule.reportOnlyIfRaised ? ", raised" : "") << " |\n";
    }
    std::cout << '\n';
}

void PrintForm(const char* kind, const char* text) {
    if (text) std::cout << "| " << kind << " | " << Quoted(text) << " |\n";
}

void PrintForms(const char* kind, const RuleText& text) {
    const std::string of = kind;
    const std::string numbers = NumbersOf(text.numbers);
    PrintForm((of + (numbers.empty() ? "" : " (" + numbers + ")")).c_str(), text.plain);
    PrintForm((of + ", option rows").c_str(), text.option);
    PrintForm((of + ", gross basis").c_str(), text.gross);
    PrintForm((of + ", option rows on gross basis").c_str(), text.grossOption);
    PrintForm((of + ", conversion to delivery").c_str(), text.conversion);
}

void PrintRuleTexts() {
    std::cout
        << R"(## Limit rules: texts

Status )"
        << status::kRefused
        << R"(, the code of the rule in `errorCode` and `headCode`. The whole text is `client|text`, then ` across all securities`,
` for the Group NAME` or ` for SYMBOL SERIES` by the row that refuses (a delivery or a conversion says no "across all
securities"), then the label of the row's mask (`kLimitMasks` in `codes.h`; not in an enquiry), then ` of `. The short text stands at the
root, at the entity ADMIN and at entities of level 7 when limitDetailMessages is 0, and always for a conversion to the
margin product (General) or to delivery (Delivery); a rule without one gives its long text there too. The two square-off modes by MTM
are told at length in the Delivery, Margin+ and MTF sets, but for a conversion to delivery. Of the margin
rules' views `(%s)`, I, M, O, T and E stand for the initial, worst, order, traded and exposure margin.

)";
    for (const tagLimitRule& rule : LimitRules()) {
        std::cout << "### " << rule.words.name << "\n\n| Form | Text |\n|---|---|\n";
        PrintForm("short", rule.shortText);
        PrintForms("long", rule.longText);
        PrintForms("enquiry", rule.reportText);
        std::cout << '\n';
    }
}

}  // namespace

int main() {
    for (const tagLimitRule& rule : LimitRules()) TestLimitField(rule);
    PrintIntroduction();
    PrintHierarchy();
    PrintOrderRefusals(kMarketRefusals, "Asked once, before the policy; each text as `client|text`.");
    PrintProducts();
    PrintOrderRefusals(
        kPolicyRefusals,
        "Ten tests in a fixed order (`kPolicyTests` in `src/orderpath/policy.cpp`); the text stands alone. "
        "After-market orders without an overall preference are called AMO.");
    PrintOrderRefusals(
        kPreferenceRefusals,
        "Asked at each of the two levels before its rows. At the client, and after the square-off session, "
        "the text stands alone; at the dealer as `client|text of `.");
    PrintOrderRefusals(kHoldingRefusals,
                       "Asked at the level that counts deliveries, ahead of its rows; each text as `client|text of `.");
    PrintRuleSets();
    PrintRules();
    PrintRuleTexts();
    PrintFundRefusals();
    return std::cout.flush() ? 0 : 1;
}
