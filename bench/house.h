#pragma once

// A house for benchmarks: the root, one group, a dealer for every thousand clients, and clients; each entity carries
// the same limit rows, all limits set and far away.

#include <cstdint>
#include <memory>
#include <vector>

#include "service/library.h"
#include "surveillance/surveillance.h"

namespace surv::bench {

/// What is in force besides limits.
enum class Preferences : std::uint8_t {
    kNone,
    kOwn,       ///< every client and dealer has its own records: of the exchange, and overall
    kFamily,    ///< and families have theirs, which go ahead of the client's
    kFamilies,  ///< and limits of their own: one level more
};

class CHouse {
 public:
    /// rowsPerLevel: 2 or 8 rows cover an NSE cash order at each level.
    CHouse(int rowsPerLevel, int clients, Preferences preferences = Preferences::kNone);

    /// One passing order of a client: check of 4 levels and commit. False: it was refused.
    bool CheckAndCommit(int client);
    /// The same look-ups and the same reads and writes of limit rows, on the same memory, without any logic. Gives a
    /// number that depends on all it has read.
    double Floor(int client);

    [[nodiscard]] int Clients() const { return clients_; }

 private:
    void AddLimits(const char* entity);
    void AddPreferences(const char* code);
    void JoinFamily(int client, const char* code);
    void FloorOfLevel(const CodeText& code, const tagOrderInfoForSurv& order, double& sum);
    tagOrderInfoForSurv OrderOf(int client) const;

    int clients_;
    Preferences preferences_;
    std::vector<std::int16_t> masks_;
    std::unique_ptr<Library> library_;
    std::vector<char> request_;
};

/// The house of these sizes; the one asked for before is torn down first.
CHouse& HouseOf(int rowsPerLevel, int clients, Preferences preferences = Preferences::kNone);

}  // namespace surv::bench
