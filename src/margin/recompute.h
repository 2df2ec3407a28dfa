#pragma once

// New risk parameters reach the positions that they concern.

#include <unordered_map>
#include <vector>

#include "categories/category.h"

namespace surv {

class CSurveillanceManager;

/// One run of new parameters over the house. Each contract goes into the accounts that hold it, found by their index,
/// and the sums above them move by differences; the limit rows are written once, at the end, also if the run is cut
/// short. They come out as if they had been written after each contract.
class CMarginRun {
 public:
    explicit CMarginRun(CSurveillanceManager& manager) : manager_(manager) {}
    CMarginRun(const CMarginRun&) = delete;
    CMarginRun& operator=(const CMarginRun&) = delete;
    ~CMarginRun() { Publish(); }

    /// The contract at every category that it has reached.
    void Add(const CRPFUnderlyingWiseInfo& underlying, const CRPFContractWiseInfo& contract);
    /// The contract at one category.
    void AddAt(CSurveillanceCategory& category, const CRPFUnderlyingWiseInfo& underlying,
               const CRPFContractWiseInfo& contract);
    /// Every MCX position of one category, which has no parameters but the rates of the day (commodity_margin.cpp). A
    /// category that has never seen MCX stays as it is.
    void AddCommodities(CSurveillanceCategory& category);
    /// Writes the limit rows of every category touched. Takes no memory.
    void Publish();

 private:
    /// A category's derivatives of one exchange, touched in this run.
    struct Touched {
        CSurveillanceCategory* category;
        std::int16_t exchangeMask;
        std::size_t lastContract;  ///< number of the last contract in the run
        RiskPreference preference;
    };
    struct TouchKey {
        const CSurveillanceCategory* category;
        std::int16_t exchangeMask;
        friend bool operator==(const TouchKey&, const TouchKey&) = default;
    };
    struct TouchHash {
        std::size_t operator()(const TouchKey& key) const {
            return KeyHash<const CSurveillanceCategory*>{}(key.category) + static_cast<std::size_t>(key.exchangeMask);
        }
    };
    /// One account that takes new parameters.
    struct Work {
        std::size_t touched;  ///< number of its category in touched_
        ContractHolder holder;
    };

    void Collect(CSurveillanceCategory& category, const tagOrderInfoForSurv& order);
    /// Notes that the rows of the exchange have to be written; gives the place in touched_.
    std::size_t Touch(CSurveillanceCategory& category, std::int16_t exchangeMask);
    void Replace(tagOrderInfoForSurv& order);

    CSurveillanceManager& manager_;
    std::vector<Work> work_;  ///< of one contract; kept for its memory alone
    std::size_t contracts_ = 0;
    std::vector<Touched> touched_;
    std::unordered_map<TouchKey, std::size_t, TouchHash> places_;  ///< in touched_
};

}  // namespace surv
