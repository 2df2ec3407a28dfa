#pragma once

namespace surv::test {

/// How many more allocations of this program succeed; below 0 memory never runs out.
extern long allocationsLeft;

}  // namespace surv::test
