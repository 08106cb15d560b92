// Backward lines: lines solved from their end (a target with its arrival direction) back to their
// start.
#include "plan/CPlan.h"

// Solves the backward line whose end is station i. Backward lines are not solved yet: the stored
// stations stand as they are and no error is reported.
void CPlan::DoBackwards(unsigned& /*i*/) {}
