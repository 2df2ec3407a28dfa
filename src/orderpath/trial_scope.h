#pragma once

#include "limits/level_trial.h"
#include "platform/undo_log.h"

namespace surv {

/// The trial state of one call. Until it ends, everything that the call changes may be put back; an exception that cuts
/// the call short puts it back.
class CTrialScope {
 public:
    CTrialScope(CUndoLog& undo, TrialBuffers& buffers) : undo_(undo), buffers_(buffers) {}
    CTrialScope(const CTrialScope&) = delete;
    CTrialScope& operator=(const CTrialScope&) = delete;
    ~CTrialScope() {
        if (ended_) return;
        undo_.Restore(CUndoLog::Mark{}, undo_.Here());
        End();
    }
    /// What stands now stands for good.
    void End() {
        undo_.Clear();
        buffers_.Clear();
        ended_ = true;
    }

 private:
    CUndoLog& undo_;
    TrialBuffers& buffers_;
    bool ended_ = false;
};

}  // namespace surv
