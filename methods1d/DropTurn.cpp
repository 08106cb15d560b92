// Drop/turn arcs and constant-toolface lines.
#include "plan/CPlan.h"

// Solves the constant-toolface line after station m_nPrev. Not built yet: the line is left as it is.
void CPlan::meth1c() {}
