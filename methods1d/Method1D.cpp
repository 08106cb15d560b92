// First-family lines.
#include "plan/CPlan.h"

// Solves the first-family line after station m_nPrev. Not built yet: the line is left as it is.
void CPlan::meth1d() {}
