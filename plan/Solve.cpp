// Solving the plan.
#include "plan/CPlan.h"

// Re-solves the plan after a change. The line methods come with the solving driver; until then the
// stored plan stands as it is.
void CPlan::solval() {}
