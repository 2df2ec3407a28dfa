#pragma once

// Day files of an exchange (bhavcopies): what each scrip cost through a day.

#include <array>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "risk_file.h"

namespace survhost {

/// The prices of a day, in the order in which a script plays them.
enum DayPrice : std::uint8_t { kPreviousClose, kOpen, kHigh, kLow, kClose, kDayPriceCount };

struct DayOfScrip {
    std::string name;      ///< a security's "SYMBOL EQ"; a contract's description
    ContractKey contract;  ///< of a future
    std::int32_t token = 0;
    std::array<std::int32_t, kDayPriceCount> prices{};  ///< paise; an open of 0: no one has traded
};

struct Bhavcopy {
    std::int16_t exchangeMask = 0;
    std::vector<DayOfScrip> scrips;
};

/// Reads a day file of NSE equity (SYMBOL, SERIES, PREV_CLOSE, OPEN_PRICE, HIGH_PRICE, LOW_PRICE, CLOSE_PRICE) or of
/// its futures (CONTRACT_D, PREVIOUS_S, OPEN_PRICE, HIGH_PRICE, LOW_PRICE, CLOSE_PRIC). Tokens are numbers in file
/// order: securities from 1, contracts from 100001.
Bhavcopy ReadBhavcopy(const std::string& name);

/// The touchlines of the options' file: the previous close of every scrip, then the open, the high, the low and the
/// close of every one that has traded. With a master, tokens are its own; what it lacks is left out, and `notes` is
/// told.
std::string ImportBhavcopy(const ImportOptions& options, std::ostream& notes);

/// The InitializeTokenInfo call that loads the securities of the options' file, a master, with the closes of a day file
/// if one is given.
std::string ImportMaster(const ImportOptions& options, std::ostream& notes);

}  // namespace survhost
