#include "service/library.h"

#include "reference/preferences.h"

namespace surv {
namespace {

constexpr const char* kAlreadyInitialized = "Surveillance Manager already initialized";
constexpr const char* kInitializationFailed = "Surveillance Manager initialization Failed";
constexpr const char* kNothingToCleanUp = "Cleanup Failed !!!. Surveillance Manager was not initialized.";
constexpr std::int32_t kFamilyLevelFeature = 0x10;

}  // namespace

std::int16_t Library::RefuseStarted() const {
    context.window.Notify(kAlreadyInitialized);
    return kNotDone;
}

std::int16_t Library::Start(const StartSettings& start, const LoadLists& lists) {
    Settings& settings = context.settings;
    if (settings.started) return RefuseStarted();
    settings.rpfMarginMode = start.rpfMarginMode;
    settings.mtmMode = start.mtmMode;
    settings.limitDetailMessages = start.limitDetailMessages;
    settings.positionMode = start.positionMode;
    settings.marginPlusMinOrderValue = 0;
    settings.tradingDayBase = context.clock.TradingDayBase();
    settings.featureBits = start.featureBits;
    if (start.featureBits & kFamilyLevelFeature) settings.familyLevelEnabled = true;
    if (!manager) manager = std::make_unique<CSurveillanceManager>(context);
    settings.WidenMtmClasses(start.mtmMode);
    return Load(lists);
}

std::int16_t Library::Restart(std::int16_t rpfMarginMode, const LoadLists& lists) {
    if (context.settings.started) return RefuseStarted();
    context.settings.rpfMarginMode = rpfMarginMode;
    return Load(lists);
}

std::int16_t Library::Load(const LoadLists& lists) {
    const bool loaded = manager && manager->Initialize(lists) == kDone;
    context.settings.started = loaded;
    if (!loaded) context.window.Notify(kInitializationFailed);
    return loaded ? kDone : kNotDone;
}

void Library::CleanUp() {
    if (!context.settings.started) {
        context.window.Notify(kNothingToCleanUp);
        return;
    }
    manager.reset();
    context.stores.ClearDay();
    context.products.ClearDay();
    context.risk.Clear();
    context.settings.started = false;
}

std::int16_t Library::SetMtmMode(std::int16_t mode) {
    if (!context.settings.started) return kNotDone;
    context.settings.mtmMode = mode;
    context.settings.WidenMtmClasses(mode);
    return kDone;
}

void Library::LoadAdditionalMargins(const CMapStringToOb& records) {
    for (CMapStringToOb::Position at = records.GetStartPosition(); at != 0;) {
        std::string key;
        CObject* value = nullptr;
        records.GetNextAssoc(at, key, value);
        const void* const address = value;
        if (address) context.stores.AddAdditionalMargin(*static_cast<const tagAdditionalMarginInfo*>(address));
    }
}

void Library::LoadPreferences(const CPtrList& records) {
    surv::LoadPreferences(context.stores, records);
    if (manager) manager->SetDefaultRiskPreference();
}

void Library::AddUpdatePreference(tagClientRiskPreferenceInfoForSurv& record) {
    if (!context.settings.started) return;
    const CodeText code = FieldText(record.preferenceCode);
    const auto* stored = FindPreference(context.stores, code, record.exchange);
    const tagClientRiskPreferenceInfoForSurv old = stored ? *stored : tagClientRiskPreferenceInfoForSurv{};
    const bool isNew = AddOrUpdatePreference(context.stores, record);
    manager->SetDefaultRiskPreference();
    if (isNew) {
        manager->AddClientRiskPreference(code);
    } else {
        // Each takes its own exchanges. A code that names no category has nothing to margin anew.
        static_cast<void>(manager->RecomputeCashVaRMargin(record.exchange, code.View(), record, old));
        static_cast<void>(manager->RecomputeMCXMargin(record.exchange, code.View()));
        static_cast<void>(manager->RecomputeMargin(record.exchange, code.View()));
    }
}

}  // namespace surv
