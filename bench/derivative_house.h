#pragma once

// A house for benchmarks of derivative margin: clients under dealers, a group and the root, each with positions in some
// of many contracts.

#include <cstdint>
#include <memory>
#include <vector>

#include "service/library.h"
#include "surveillance/surveillance.h"

namespace surv::bench {

class CDerivativeHouse {
 public:
    /// Each client buys `held` contracts out of `contracts`.
    CDerivativeHouse(int clients, int held, int contracts);

    /// One passing order of a client in the first contracts that it holds: check of 4 levels and commit.
    bool CheckAndCommit(int client, int which);
    /// A new whole file waits for its end message.
    void StageFile();
    /// The end message: swap, re-margining, limit rows.
    void Swap();
    /// What re-margining can't do without: the figures of every held contract, formed once from its new parameters.
    double PlainLoop() const;

    [[nodiscard]] int Clients() const { return clients_; }

 private:
    void AddLimits(const char* entity);
    [[nodiscard]] int ContractOf(int client, int which) const;
    void Send(std::int16_t code, const void* body, std::size_t size);

    int clients_;
    int held_;
    int contracts_;
    int files_ = 0;
    std::unique_ptr<Library> library_;
    std::vector<char> request_;
};

}  // namespace surv::bench
