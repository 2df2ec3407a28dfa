#pragma once

#include <memory>
#include <new>

#include "reference/context.h"
#include "service/manager.h"
#include "surveillance/records.h"

namespace surv {

/// Everything that one loaded library holds. The exports use one static instance; a test makes its own.
class Library {
 public:
    /// Without memory for a manager there is none; a long start tries again.
    Library() : manager(new (std::nothrow) CSurveillanceManager(context)) {}

    SurvContext context;
    std::unique_ptr<CSurveillanceManager> manager;  ///< null between a clean-up and the next long start

    /// The settings of the long start.
    struct StartSettings {
        std::int16_t rpfMarginMode = 0;
        std::int16_t limitDetailMessages = 0;
        std::int16_t mtmMode = 0;
        std::int16_t positionMode = 0;
        std::int32_t featureBits = 0;
    };
    std::int16_t Start(const StartSettings& start, const LoadLists& lists);
    /// Starts with the settings of before. Fails without a manager.
    std::int16_t Restart(std::int16_t rpfMarginMode, const LoadLists& lists);
    void CleanUp();
    std::int16_t SetMtmMode(std::int16_t mode);

    /// One message of a risk parameter file (margin/risk_file.cpp).
    std::int16_t ProcessRPFInfo(const char* message, std::int32_t length, bool toStaging);

    // Margin rates and preferences need no start.
    void LoadAdditionalMargins(const CMapStringToOb& records);
    void LoadPreferences(const CPtrList& records);
    void AddUpdatePreference(tagClientRiskPreferenceInfoForSurv& record);

 private:
    std::int16_t RefuseStarted() const;
    std::int16_t Load(const LoadLists& lists);
};

}  // namespace surv
