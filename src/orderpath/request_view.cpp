#include "orderpath/request_view.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace surv {

RequestView ViewRequest(tagSurveillanceInfo& request) {
    constexpr std::uint8_t kOrderInfoFollows = 1 << 7;
    constexpr std::uint8_t kTradeInfoFollows = 1 << 0;
    char* next = reinterpret_cast<char*>(&request) + sizeof request;
    const auto take = [&next]<class Record>(Record*& record) {
        record = reinterpret_cast<Record*>(next);
        next += sizeof(Record);
    };
    RequestView view;
    view.message = FindMessageCode(request.messageCode);
    if (!view.message) return view;
    switch (view.message->primary) {
        case PrimaryRecord::kOrderRequest: take(view.order); break;
        case PrimaryRecord::kTradeCorrection: take(view.correction); break;
        case PrimaryRecord::kTradeInfo: take(view.primaryTrade); break;
        case PrimaryRecord::kNone: break;
    }
    if (request.levelMarginFlags & kOrderInfoFollows) take(view.orderInfo);
    if (request.requestFlags & kTradeInfoFollows) take(view.trade);
    return view;
}

FixedText<32> AccountOf(const char (&accountText)[16]) {
    constexpr std::size_t kHead = 10;
    constexpr std::size_t kTailFrom = 12;
    std::array<char, 14> account{};
    std::memcpy(account.data(), accountText, kHead);
    // A zero in the gap ends the account: what stands behind it is of another.
    if (accountText[kHead] != '\0' && accountText[kHead + 1] != '\0') {
        std::memcpy(account.data() + kHead, accountText + kTailFrom, account.size() - kHead);
    }
    const std::string_view whole{account.data(), ::strnlen(account.data(), account.size())};
    return Trimmed(whole);
}

FixedText<16> ClientTextOf(const char (&clientAccount)[12]) { return FieldText(clientAccount); }

std::int16_t ProductTypeOf(std::int32_t value, std::int16_t messageCode) {
    constexpr std::array<std::int32_t, 6> kProducts{product::kMargin, product::kDelivery,  product::kMarginPlus,
                                                    product::kMtf,    product::kAmoMargin, product::kAmoDelivery};
    constexpr std::array<std::int16_t, 7> kConverting{2000, 2012, 2040, 2150, 2155, 2156, 30160};
    const bool conversion = value == product::kConvertToDelivery || value == product::kConvertToMargin;
    const bool known =
        std::find(kProducts.begin(), kProducts.end(), value) != kProducts.end() ||
        (conversion && std::find(kConverting.begin(), kConverting.end(), messageCode) != kConverting.end());
    return known ? static_cast<std::int16_t>(value) : product::kNone;
}

}  // namespace surv
