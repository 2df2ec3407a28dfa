#pragma once

#include <cstdio>
#include <memory>

#include "mtm/broadcast_scrip.h"
#include "platform/clock.h"

namespace surv {

/// The file BroadcastMTM_*.log of one pass, in the working directory: a line for each scrip, before it is marked. A
/// file that can't be opened loses its lines and stops nothing.
class CMtmLog {
 public:
    explicit CMtmLog(const CClock& clock);
    void Tell(const CBroadcastScrip& scrip) const;

 private:
    const CClock& clock_;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
};

}  // namespace surv
