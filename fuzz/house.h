#pragma once

// A broker's house at the exported functions, and the calls that a fuzzer makes on it. An input is a start and a
// row of calls, each a letter and the records that it takes:
//
//   S                 start anew with rows of the input: limits, positions, ISINs, holdings, receipts
//   c p               an order checked, probed               u d   an event at all levels, at the dealer alone
//   t m               a touchline, everything marked         r s   a risk parameter message, live or staged
//   A U R             a limit added, changed, removed        F D   a fund request, a depository upload
//   P I               a preference set, loaded               M Y   a product basket, a delivery series
//   K V X N E         token price, margin rates: cash, MCX, NCDEX, exposure
//
// tools/make_fuzz_corpora writes the same form.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "input.h"
#include "surveillance/host.h"

namespace fuzz {

/// The settings that a start takes from an input.
struct StartOptions {
    std::int16_t positionMode = 0;
    std::int16_t mtmMode = 0;
    std::uint8_t flags = 0;  ///< see kRiskMargin and its like in house.cpp
};

class CHouse {
 public:
    /// Starts the library with rows of its own: the house "-", group G1, dealer D1, family F1, clients C1 and C2, sub
    /// client S1, with limits of every market, two shares of one ISIN that C1 holds, two futures and two
    /// options that have risk parameters.
    explicit CHouse(CInput& input);
    ~CHouse();
    CHouse(const CHouse&) = delete;
    CHouse& operator=(const CHouse&) = delete;

    /// Makes the calls of the input until its end. A byte that is none of `kinds` stands for one of them.
    void Play(CInput& input, std::string_view kinds);

 private:
    struct Lists;

    void Call(char kind, CInput& input);
    void Start(Lists& lists);
    void StartFrom(CInput& input);
    void CleanUp();
    void Order(char kind, CInput& input);
    void RiskMessage(CInput& input, bool staged);
    void SetLimit(char kind, CInput& input);
    void LoadReference(char kind, CInput& input);
    /// Frees rows of a list that an exported call has filled.
    void Drop(CPtrList& limitRows) const;
    /// Every limit row of the house, byte for byte.
    [[nodiscard]] std::string Rows() const;

    StartOptions options_;
    bool started_ = false;
};

}  // namespace fuzz
