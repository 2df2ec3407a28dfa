#include "shared/settings.h"

#include <cstddef>

namespace surv {
namespace {

/// Where the two settings of an exchange are kept: the time setting of BSE derivatives shares the place of NSE cash.
struct SquareOffPlace {
    std::int16_t exchangeMask;
    std::array<std::size_t, 2> place;  // by kind
};
constexpr std::array kSquareOffPlaces{
    SquareOffPlace{kMaskNseCash, {0, 0}},
    SquareOffPlace{kMaskBseCash, {1, 1}},
    SquareOffPlace{kMaskNseDerivatives, {2, 2}},
    SquareOffPlace{kMaskBseDerivatives, {0, 3}},
    SquareOffPlace{kMaskMcx, {4, 4}},
    SquareOffPlace{kMaskNcdex, {5, 5}},
};

const SquareOffPlace* FindPlace(std::int16_t exchangeMask) {
    for (const SquareOffPlace& row : kSquareOffPlaces) {
        if (row.exchangeMask == exchangeMask) return &row;
    }
    return nullptr;
}

}  // namespace

void CAutoSquareOffSettings::Set(std::int16_t kind, std::int16_t exchangeMask, std::int16_t value) {
    const SquareOffPlace* place = FindPlace(exchangeMask);
    if (!place || (kind != kTime && kind != kSession)) return;
    const auto row = static_cast<std::size_t>(kind);
    values_[row][place->place[row]] = value;
}

std::int16_t CAutoSquareOffSettings::Get(Kind kind, std::int16_t exchangeMask) const {
    const SquareOffPlace* place = FindPlace(exchangeMask);
    const auto row = static_cast<std::size_t>(kind);
    return place ? values_[row][place->place[row]] : std::int16_t{0};
}

void Settings::WidenMtmClasses(std::int16_t mask) {
    if (mask < 1 || mask > 7) return;
    mtmCashOn |= (mask & 1) != 0;
    mtmFuturesOn |= (mask & 2) != 0;
    mtmOptionsOn |= (mask & 4) != 0;
}

}  // namespace surv
